#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core_fw/account/src/account_controller.h"
#include "core_fw/account/tests/test_support.h"

namespace account {

class AccountControllerPeer {
 public:
  // The configuration in the order in which it is read, then the network setting's switch.
  static std::vector<std::string> Configuration(const AccountController& c) {
    return {c.app_name_,        c.app_id_,
            c.app_secret_,      c.device_type_code_,
            c.device_model_id_, c.device_physical_address_text_,
            c.service_,         c.server_type_,
            c.auth_url_,        c.user_portal_url_,
            c.device_name_,     c.network_setting_enabled_ ? "enabled" : "disabled"};
  }
  static std::size_t Candidates(AccountController& c) {
    base::AutoLock guard(c.lock_);
    return c.friend_candidates_.size();
  }
};

namespace {

using testing::ElementsAre;

constexpr const char* kKeys[] = {
    "OAuth_AsClient_app_name",  "OAuth_AsClient_app_id",   "OAuth_AsClient_app_secret",
    "account_device_type_code", "account_device_model_id", "account_device_physical_address_text",
    "account_service",          "account_server_type",     "account_zep_auth_url",
    "account_user_portal_url",  "account_qor_device_name"};
constexpr char kNetworkKey[] = "account_enable_MIRLO_network_setting";

std::string Missing(const std::string& key) {
  return Line(4, "Init",
              "Account Component Initialization failed as there is no " + key + " in config.xml");
}

using ControllerTest = AccountTest;

TEST_F(ControllerTest, InitStopsAtTheFirstMissingKey) {
  for (const char* key : kKeys) config_[key] = std::string("v-") + key;
  const auto all = config_;
  for (std::size_t missing = 0; missing < std::size(kKeys); ++missing) {
    for (const bool present_but_empty : {false, true}) {
      config_ = all;
      config_.erase(kKeys[missing]);
      if (present_but_empty) config_[kKeys[missing]] = "";
      StartRuntime();
      AccountController controller;
      EXPECT_FALSE(controller.Init());
      EXPECT_THAT(log_.Take(), ElementsAre(Missing(kKeys[missing])));
      std::vector<std::string> expected(std::size(kKeys) + 1);
      for (std::size_t i = 0; i < missing; ++i) expected[i] = std::string("v-") + kKeys[i];
      expected.back() = "disabled";
      EXPECT_EQ(AccountControllerPeer::Configuration(controller), expected);
    }
  }
}

TEST_F(ControllerTest, TheNetworkSwitchIsOptionalAndExact) {
  for (const std::string value : {"on", "On", "ON", "yes", "1", "off", "", "absent"}) {
    config_[kNetworkKey] = value;
    if (value == "absent") config_.erase(kNetworkKey);
    StartRuntime();
    AccountController controller;
    EXPECT_TRUE(controller.Init());
    EXPECT_EQ(AccountControllerPeer::Configuration(controller).back(),
              value == "on" ? "enabled" : "disabled");
    std::vector<std::string> lines;
    if (value.empty() || value == "absent") lines = {Missing(kNetworkKey)};
    EXPECT_EQ(log_.Take(), lines);
  }
}

TEST_F(ControllerTest, ASecondInitKeepsWhatIsAbsentAndForgetsTheCandidates) {
  StartRuntime();
  AccountController controller;
  ASSERT_TRUE(controller.Init());
  std::string code;
  ASSERT_EQ(controller.AddFriendCandidate("u", "f", "p", &code), 1);
  ASSERT_EQ(AccountControllerPeer::Candidates(controller), 1u);
  config_.erase("OAuth_AsClient_app_id");
  config_["OAuth_AsClient_app_secret"] = "other";
  StartRuntime();
  EXPECT_TRUE(controller.Init());
  EXPECT_EQ(AccountControllerPeer::Candidates(controller), 0u);
  EXPECT_EQ(AccountControllerPeer::Configuration(controller)[1], "app-id");
  EXPECT_EQ(AccountControllerPeer::Configuration(controller)[2], "other");
}

TEST_F(ControllerTest, AFailedInitIsTolerated) {
  config_.erase("account_service");
  StartRuntime();
  AccountController* controller = AccountController::GetInstance();
  EXPECT_EQ(controller, AccountController::GetInstance());
  EXPECT_THAT(log_.Take(), ElementsAre(Missing("account_service")));
  std::string uuid;
  EXPECT_EQ(controller->SignInLocalUser("nobody", &uuid), 5);  // The store is there.
  AccountController::DestroyInstance();
  AccountController::DestroyInstance();
}

}  // namespace
}  // namespace account
