#include "gateway/console/request_code.h"

#include <curl/curl.h>

#include <memory>

#include "base/json_reader.h"
#include "base/values.h"
#include "gateway/process/curl_options.h"

namespace gateway {
namespace {

constexpr long kTransferSeconds = 30;
constexpr size_t kMaxAnswerBytes = size_t{64} * 1024;

// libcurl calls it. Taking fewer bytes than it was given aborts the transfer.
size_t AppendAnswer(char* bytes, size_t, size_t count, void* answer_text) {
  auto* answer = static_cast<std::string*>(answer_text);
  if (answer->size() + count > kMaxAnswerBytes) return 0;
  answer->append(bytes, count);
  return count;
}

// libcurl calls it at least once a second; 1 ends the transfer.
int CheckStopped(void* stopped, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  return (*static_cast<const std::function<bool()>*>(stopped))() ? 1 : 0;
}

void SetOptions(CURL* curl, const std::string& url, const std::string& body,
                const std::function<bool()>& stopped, std::string* answer) {
  SetCommonOptions(curl, url, kTransferSeconds, false);
  curl_easy_setopt(curl, CURLOPT_COPYPOSTFIELDS, body.c_str());
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, AppendAnswer);
  curl_easy_setopt(curl, CURLOPT_WRITEDATA, answer);
  curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(curl, CURLOPT_XFERINFOFUNCTION, CheckStopped);
  curl_easy_setopt(curl, CURLOPT_XFERINFODATA, &stopped);
}

std::string DescribeFailure(CURLcode result) {
  if (result == CURLE_ABORTED_BY_CALLBACK) return "told to stop";
  if (result == CURLE_WRITE_ERROR) return "the answer is too long";
  return curl_easy_strerror(result);
}

bool ReadCode(const std::string& answer, std::string* code) {
  const std::unique_ptr<base::Value> value = base::JSONReader::Read(answer);
  const base::DictionaryValue* members = nullptr;
  std::string found;
  if (!value || !value->GetAsDictionary(&members) || !members->GetString("code", &found) ||
      found.empty()) {
    return false;
  }
  *code = found;
  return true;
}

}  // namespace

bool RequestCode(const std::string& server_url, const std::string& user,
                 const std::function<bool()>& stopped, std::string* code, std::string* error) {
  const std::string url = server_url + "/authorize";
  const std::unique_ptr<CURL, CurlDeleter> curl(curl_easy_init());
  const std::unique_ptr<char, CurlDeleter> escaped(
      curl_easy_escape(curl.get(), user.data(), static_cast<int>(user.size())));
  if (!curl || !escaped) {
    *error = url + ": no memory for the request";
    return false;
  }
  std::string answer;
  SetOptions(curl.get(), url, std::string("user=") + escaped.get(), stopped, &answer);
  const CURLcode result = curl_easy_perform(curl.get());
  if (result != CURLE_OK) {
    *error = url + ": " + DescribeFailure(result);
    return false;
  }
  long status = 0;
  curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &status);
  if (status != 200) {
    *error = url + ": status " + std::to_string(status);
    return false;
  }
  if (!ReadCode(answer, code)) {
    *error = url + ": the answer holds no code";
    return false;
  }
  return true;
}

}  // namespace gateway
