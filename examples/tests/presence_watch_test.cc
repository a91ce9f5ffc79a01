// The example beside the account component, in the real program on a development cloud.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "devcloud/cloud.h"
#include "tests/program.h"

namespace {

class PresenceWatchTest : public testing::Test {
 protected:
  programs::Ended Run(const std::string& first, const std::string& second,
                      const std::string& script) {
    return programs::RunProgram("qorn-gateway --config " + config_ + " --component " +
                                    programs::Library(first) + " --component " +
                                    programs::Library(second) + " --log " + folder_.Path("log"),
                                script);
  }

  // The log's lines that hold `part`, each from there on.
  std::string Log(const std::string& part) const {
    std::ifstream log(folder_.Path("log"));
    std::string lines;
    for (std::string line; std::getline(log, line);) {
      const size_t text = line.find(part);
      if (text != std::string::npos) lines += line.substr(text) + "\n";
    }
    return lines;
  }

  std::string Config() const {
    std::string text = "<config><qorn_storage_path>" + folder_.Path("") +
                       "</qorn_storage_path><account_db_path>account.db</account_db_path>"
                       "<account_zep_auth_url>" +
                       cloud_->http_url() +
                       "</account_zep_auth_url>"
                       "<account_user_portal_url>" +
                       cloud_->http_url() + "</account_user_portal_url>";
    for (const std::string key :
         {"OAuth_AsClient_app_name", "OAuth_AsClient_app_id", "OAuth_AsClient_app_secret",
          "account_device_type_code", "account_device_model_id", "account_service",
          "account_device_physical_address_text", "account_server_type",
          "account_qor_device_name"}) {
      text += "<" + key + ">x</" + key + ">";
    }
    return text + "</config>";
  }

  std::string error_;
  const std::unique_ptr<devcloud::Cloud> cloud_ =
      devcloud::Cloud::Start(devcloud::Options(), &error_);
  const programs::TestFolder folder_;
  const std::string config_ = folder_.Write("config.xml", Config());
};

TEST_F(PresenceWatchTest, CountsTheOpenSessionsOfEachUser) {
  const programs::Ended ended = Run("libqorn_account.so", "libpresence_watch.so", R"(
request-code alice@example.com
create-user alice@example.com $code
set alice $user_uuid
request-code alice@example.com
sign-in alice@example.com $code
set first $session_id
sign-in-alt alice@example.com ""
set second $session_id
sign-in-alt qornsystem mivu5830
sign-out $first
set-user-info-by-type $alice 200 alice@example.org
sign-out $second
do-factory-reset
sign-in-alt qornsystem mivu5830
)");
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(Log("presence: "),
            "presence: alice@example.com is home (1 session)\n"
            "presence: alice@example.com is home (2 sessions)\n"
            "presence: qornsystem is home (1 session)\n"
            "presence: alice@example.com is home (1 session)\n"
            "presence: alice@example.org has left (0 sessions)\n"
            "presence: qornsystem is home (1 session)\n");
  // Only of the session that the reset ended it had to ask.
  EXPECT_EQ(Log("CheckSessionValidationEndI"), "CheckSessionValidationEndInvalid Session ID\n");
}

TEST_F(PresenceWatchTest, DoesNotStartBeforeTheAccountComponent) {
  const programs::Ended ended = Run("libpresence_watch.so", "libqorn_account.so", "");
  EXPECT_EQ(ended.status, 2);
  EXPECT_EQ(ended.errors,
            "qorn-gateway: " + programs::Library("libpresence_watch.so") + ": did not start\n");
}

}  // namespace
