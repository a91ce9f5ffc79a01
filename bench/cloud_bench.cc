// Operations that go to the development cloud, beside the same requests with bare libcurl and the
// statements that the operation must run.
#include <curl/curl.h>

#include <optional>

#include "base/logging.h"
#include "bench/compare.h"
#include "bench/home.h"
#include "bench/service.h"
#include "bench/stored_users.h"
#include "core_fw/account/src/account_log.h"
#include "core_fw/account/src/oauth_token_client.h"
#include "core_fw/account/src/session_table.h"
#include "core_fw/account/src/user_portal_client.h"
#include "devcloud/cloud.h"
#include "gateway/process/proxies.h"

namespace bench {
namespace {

std::size_t Append(char* data, std::size_t size, std::size_t count, void* response) {
  static_cast<std::string*>(response)->append(data, size * count);
  return size * count;
}

// A POST with the options that the component sets, on a handle of its own.
std::string Post(const std::string& url, const std::vector<std::string>& headers,
                 const std::string& body) {
  std::string response;
  char error[CURL_ERROR_SIZE] = "";
  CURL* handle = curl_easy_init();
  curl_slist* list = nullptr;
  for (const std::string& header : headers) list = curl_slist_append(list, header.c_str());
  curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, error);
  curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
  curl_easy_setopt(handle, CURLOPT_HEADER, 1L);
  curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &Append);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, &response);
  curl_easy_setopt(handle, CURLOPT_HTTPHEADER, list);
  curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT, 5L);
  curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 0L);
  curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, 0L);
  curl_easy_setopt(handle, CURLOPT_SSL_SESSIONID_CACHE, 0L);
  curl_easy_setopt(handle, CURLOPT_CUSTOMREQUEST, "POST");
  curl_easy_setopt(handle, CURLOPT_POSTFIELDS, body.c_str());
  Expect(curl_easy_perform(handle) == CURLE_OK);
  long status = 0;
  curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status);
  Expect(status == 200);
  curl_easy_cleanup(handle);
  curl_slist_free_all(list);
  return response;
}

// A string of a token answer, without a JSON library.
std::string Token(const std::string& answer, const std::string& name) {
  const std::size_t begin = answer.find("\"" + name + "\":\"") + name.size() + 4;
  return answer.substr(begin, answer.find('"', begin) - begin);
}

std::unique_ptr<devcloud::Cloud> StartCloud() {
  std::string error;
  auto cloud = devcloud::Cloud::Start({}, &error);
  if (cloud == nullptr) Die(error);
  return cloud;
}

class Pair {
 public:
  // The argument is 1 for HTTPS.
  explicit Pair(const benchmark::State& state)
      : url_(state.range(0) == 0 ? cloud_->http_url() : cloud_->https_url()),
        settings_{url_, "gateway-client", "gateway-secret", "AABBCC"},
        home_({{"account_zep_auth_url", url_}, {"account_user_portal_url", url_}}),
        raw_(home_.Path("floor.db")) {
    account::SetComponentLogLevel(logging::LOG_ERROR);
    raw_.Run(kCreateUsers);
    raw_.Run(kCreateFriends);
    service_.emplace();
  }

  // What the cloud answers for a token request of the floor.
  std::string PostToken(const std::string& body) {
    return Post(url_ + "/token", {"Accept: application/json"}, body);
  }
  // An account in the service's store and the same row in the floor's.
  account::UserInfo MakeUser(const std::string& user_id) {
    std::string uuid;
    Expect(accounts().CreateUser(user_id, cloud_->IssueCode(user_id), &uuid) == 1);
    account::UserInfo user = UserNumber(users_++);
    user.userId = user_id;
    user.userGuid = cloud_->UserGuid(user_id);
    InsertUser(raw_, user);
    return user;
  }
  AccountManager& accounts() { return service_->accounts(); }
  devcloud::Cloud& cloud() { return *cloud_; }
  RawDatabase& raw() { return raw_; }
  const std::string& url() const { return url_; }
  const account::TokenSettings& settings() const { return settings_; }

 private:
  const std::unique_ptr<devcloud::Cloud> cloud_ = StartCloud();
  const std::string url_;
  const account::TokenSettings settings_;
  Home home_;
  RawDatabase raw_;
  std::optional<Service> service_;
  long users_ = 0;
};

void SignIn(benchmark::State& state) {
  Pair pair(state);
  const std::string user_id = "ann@example.com";
  account::UserInfo read = pair.MakeUser(user_id);
  std::string ours_code, body, uuid, session_id;
  bool failed = false;
  Compare(
      state, 1,
      [&] { Expect(pair.accounts().SignIn(user_id, ours_code, &uuid, &session_id, &failed) == 1); },
      [&] {
        const std::string answer = pair.PostToken(body);
        pair.raw().Read(kUserById, {user_id}, [&](sqlite3_stmt* row) { TakeUser(row, &read); });
        read.accessToken = Token(answer, "access_token");
        read.refreshToken = Token(answer, "refresh_token");
        UpdateUser(pair.raw(), read);
      },
      [&] {
        ours_code = pair.cloud().IssueCode(user_id);
        body = MakeAuthCodeBody(pair.settings(), pair.cloud().IssueCode(user_id));
        account::SessionTable::GetInstance()->RemoveAllSessions();
      });
}

void RefreshAccessToken(benchmark::State& state) {
  Pair pair(state);
  const std::string user_id = "ann@example.com", floor_id = "bob@example.com";
  pair.MakeUser(user_id);
  account::UserInfo read = pair.MakeUser(floor_id);
  read.refreshToken =
      Token(pair.PostToken(MakeAuthCodeBody(pair.settings(), pair.cloud().IssueCode(floor_id))),
            "refresh_token");
  std::string body;
  Compare(
      state, 1, [&] { Expect(pair.accounts().RefreshAccessToken(user_id) == 1); },
      [&] {
        pair.raw().Read(kUserById, {floor_id}, [&](sqlite3_stmt* row) { TakeUser(row, &read); });
        const std::string answer = pair.PostToken(body);
        read.accessToken = Token(answer, "access_token");
        read.refreshToken = Token(answer, "refresh_token");
        UpdateUser(pair.raw(), read);
      },
      [&] { body = MakeRefreshBody(pair.settings(), read.refreshToken); });
}

void CreateUser(benchmark::State& state) {
  Pair pair(state);
  const account::PortalDevice device{"HGW", "QG-1", "AABBCC"};
  const account::PortalSettings portal{pair.url(), "gateway-client", "AABBCC"};
  account::UserInfo user = UserNumber(0);
  std::string ours_id, ours_code, body, register_body, uuid;
  std::vector<std::string> headers;
  long number = 0;
  Compare(
      state, 1, [&] { Expect(pair.accounts().CreateUser(ours_id, ours_code, &uuid) == 1); },
      [&] {
        const std::string answer = pair.PostToken(body);
        headers =
            MakePortalHeaders(portal, {user.userId, user.userGuid, Token(answer, "access_token")},
                              "1700000000", "5c1f7c2e-90ab-4d6f-8123-00112233abcd");
        benchmark::DoNotOptimize(
            Post(pair.url() + "/device/adduserdevice", headers, register_body));
        Expect(pair.raw().Run(kUserById, {user.userId}) == 0);
        Expect(pair.raw().Run(kUserByGuid, {user.userGuid}) == 0);
        InsertUser(pair.raw(), user);
        std::vector<std::string> uuids;
        pair.raw().Read(kAllUsers, {}, [&](sqlite3_stmt* row) {
          RawDatabase::Take(row, 0, &uuids.emplace_back());
        });
      },
      [&] {
        user = UserNumber(++number);
        user.userId = "floor" + user.userId;
        ours_id = "ours1" + UserNumber(number).userId;
        ours_code = pair.cloud().IssueCode(ours_id);
        body = MakeAuthCodeBody(pair.settings(), pair.cloud().IssueCode(user.userId));
        user.userGuid = pair.cloud().UserGuid(user.userId);
        register_body = MakeAddUserBody(user.userGuid, device, "ACCOUNT");
      });
}

BENCHMARK(SignIn)->Name("cloud/SignIn")->ArgName("https")->Arg(0)->Arg(1)->UseManualTime();
BENCHMARK(RefreshAccessToken)
    ->Name("cloud/RefreshAccessToken")
    ->ArgName("https")
    ->Arg(0)
    ->Arg(1)
    ->UseManualTime();
BENCHMARK(CreateUser)->Name("cloud/CreateUser")->ArgName("https")->Arg(0)->Arg(1)->UseManualTime();

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  gateway::ForgetProxies();
  return bench::RunBenchmarks(argc, argv);
}
