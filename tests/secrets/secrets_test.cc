// What a gateway's run leaves in files and prints, searched for the run's true secrets, which the
// cloud knows.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <regex>
#include <set>
#include <sstream>
#include <thread>

#include "core_fw/account/src/account_records.h"
#include "core_fw/account/tests/test_support.h"
#include "runtime/runtime.h"
#include "tests/program.h"

namespace {

using programs::Ended;
using programs::ReadFile;

class SecretsTest : public account::AccountTest {
 protected:
  SecretsTest() {
    config_["OAuth_AsClient_app_secret"] = "the-client-secret";
    config_["account_log_level"] = "LOG_VERBOSE";
    config_["account_enable_MIRLO_network_setting"] = "on";
    cloud_->AddGateway(account::kGatewayAddress);
    StartRuntime();  // Writes the configuration.
    runtime::Runtime::Destroy();
    log_.Take();
  }

  std::string Command() const {
    return "qorn-gateway --config " + folder_ + "/config.xml --log " + folder_ + "/log --audit " +
           folder_ + "/audit ";
  }

  // The codes and tokens that went over the wire, the client secret and the fixed password.
  std::set<std::string> Secrets() const {
    static const std::regex kSecret(
        "(?:code|refresh_token|access_token|oauth_token)\"?[=:] *\"?([A-Za-z0-9_-]{10,})");
    std::set<std::string> secrets{config_.at("OAuth_AsClient_app_secret"),
                                  account::kSystemAccountPassword};
    for (const devcloud::RecordedRequest& request : cloud_->requests()) {
      const std::string text = request.raw + "\n" + request.answer.value_or("");
      for (std::sregex_iterator found(text.begin(), text.end(), kSecret), end; found != end;
           ++found) {
        secrets.insert((*found)[1]);
      }
    }
    return secrets;
  }

  // Looks in each line for each secret, and for each piece of one too long to be there by chance.
  static void ExpectNone(const std::string& what, const std::string& text,
                         const std::set<std::string>& secrets) {
    constexpr size_t kPiece = 10;
    EXPECT_NE(text, "") << what;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      for (const std::string& secret : secrets) {
        bool found = false;
        for (size_t at = 0; at == 0 || at + kPiece <= secret.size(); ++at) {
          found = found || line.find(secret.substr(at, kPiece)) != std::string::npos;
        }
        EXPECT_FALSE(found) << secret << " in " << what << ": " << line;
      }
    }
  }

  const std::string database_ = folder_ + "/account.db";
};

TEST_F(SecretsTest, AreInNoOutputLogOrAuditOfScripts) {
  std::string printed;
  const auto run = [&](const std::string& command, const std::string& input) {
    const Ended ended = programs::RunProgram(command, input);
    printed += ended.output + ended.errors;
    return ended.status;
  };
  ASSERT_EQ(run(Command() + "--script " QORN_TOUR, ""), 0) << printed;
  std::string wrong =
      "request-code ann@x\nset held $code\nrequest-code ann@x\ncreate-user ann@x $code\n";
  for (const char* line : {"users",
                           "status",
                           "friends",
                           "get-user-information $user_uuid",
                           "get-user-info-by-type $user_uuid 104",
                           "get-user-info-by-type $user_uuid 105",
                           "say $held $refresh_token",
                           "sign-in $held",
                           "$held",
                           "get-session-info $held",
                           "expect 1 create-user ann@x $held",
                           "sign-in ann@x $code",
                           "set 1 $access_token",
                           "get-user-info-by-type $held $held",
                           "help $held",
                           "friends $held",
                           "watch $held",
                           "expect $held say x",
                           "say \"$held",
                           "sign-in-alt qornsystem mivu5830",
                           "add-friend-candidate $user_uuid bob@x peer",
                           "set invitation $friend_auth_code",
                           "add-friend-candidate $user_uuid ben@x peer",
                           "say $invitation",
                           "add-friend-request bob@x $invitation $held m d a",
                           "refresh-access-token ann@x"}) {
    wrong += std::string(line) + "\n";
  }
  for (const auto& [path, kind] :
       {std::pair("/token", devcloud::Fault::Kind::kTruncateAfter),
        std::pair("/token", devcloud::Fault::Kind::kResetAfter),
        std::pair("/device/adduserdevice", devcloud::Fault::Kind::kStatus)}) {
    devcloud::Fault fault;
    fault.path = path;
    fault.kind = kind;
    fault.bytes = 250;
    cloud_->AddFault(fault);
    wrong += "request-code eve@x\ncreate-user eve@x $code\n";
  }
  for (const char* format : {"", "--json "})
    EXPECT_EQ(run(Command() + format + "--keep-going", wrong), 1);
  run("qorn-gateway doctor --config " + folder_ + "/config.xml", "");
  EXPECT_FALSE(std::regex_search(printed, std::regex("4[0-9a-f]{7}-[0-9a-f]{4}-4.*peer")))
      << printed;
  ExpectNone("what was printed", printed, Secrets());
  ExpectNone("the log", ReadFile(folder_ + "/log"), Secrets());
  ExpectNone("the audit", ReadFile(folder_ + "/audit"), Secrets());
}

// Typed in full at a console that also shows them in full.
TEST_F(SecretsTest, AreInNoFileOfAConsoleAndFilesAreTheOwnersAlone) {
  programs::TerminalProgram console(Command() + "--show-secrets", "XDG_STATE_HOME=" + folder_);
  const auto type = [&](const std::string& line, const std::string& answer) {
    console.Type(line + "\n");
    std::string shown;
    EXPECT_TRUE(console.WaitFor(answer) && console.WaitFor("qorn> ", &shown)) << line;
    return shown;
  };
  ASSERT_TRUE(console.WaitFor("qorn> "));
  for (const std::string user : {"ann@x", "bob@x"}) {
    type("create-user " + user + " " + cloud_->IssueCode(user), "create-user: 1");
    type("sign-in " + user + " " + cloud_->IssueCode(user), "sign-in: 1");
    type("refresh-access-token " + user, "refresh-access-token: 1");
    type("sign-in-alt qornsystem mivu5830", "sign-in-alt: 1");
    type("creat " + user + " " + cloud_->IssueCode(user), "unknown command");
  }
  const std::string invitation =
      type("add-friend-candidate $user_uuid f@x p", "friend_auth_code: ").substr(0, 36);
  type("add-friend-request f@x " + invitation + " code m d a", "add-friend-request");
  type("remove-user bob@x bob@x", "remove-user: 1");
  type("get-user-uuid-from-user-id ann@x", "id: 1");

  sqlite3* reader = nullptr;
  sqlite3_open(database_.c_str(), &reader);
  sqlite3_exec(reader, "BEGIN; SELECT * FROM Users", nullptr, nullptr, nullptr);
  console.Type("set-user-info-by-type $user_uuid 201 Other\n");  // waits for the reader
  while (!std::filesystem::exists(database_ + "-journal")) std::this_thread::yield();
  EXPECT_EQ(std::filesystem::status(database_ + "-journal").permissions(),
            std::filesystem::perms(0600));
  sqlite3_close(reader);
  EXPECT_TRUE(console.WaitFor("type: 1") && console.WaitFor("qorn> "));
  EXPECT_EQ(console.Finish("\x04").status, 0);

  std::set<std::string> secrets = Secrets();
  secrets.insert(invitation);
  for (const std::string name : {"log", "audit", "qorn/history", "account.db"}) {
    const std::string path = folder_ + "/" + name;
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0600)) << name;
    if (name != "account.db") ExpectNone(name, ReadFile(path), secrets);
  }
  // The database holds the tokens that count, and none of those before them or of removed users.
  for (const std::string column : {"accessToken", "refreshToken"}) {
    EXPECT_EQ(secrets.erase(Sql("SELECT " + column + " FROM Users").at(0)), 1U);
  }
  ExpectNone("the database", ReadFile(database_), secrets);
}

}  // namespace
