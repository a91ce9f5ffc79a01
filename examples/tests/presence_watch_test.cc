// The example beside the account component, in the real program on a development cloud.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>

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
    std::istringstream log(programs::ReadFile(folder_.Path("log")));
    std::string lines;
    for (std::string line; std::getline(log, line);) {
      const size_t text = line.find(part);
      if (text != std::string::npos) lines += line.substr(text) + "\n";
    }
    return lines;
  }

  std::string Config() const {
    std::string text = programs::ReadFile(QORN_SOURCE "gateway/tests/doctor_config.xml");
    for (const auto& [from, to] : {std::pair{"LOG_FATAL", std::string("LOG_INFO")},
                                   {"$data", folder_.Path("")},
                                   {"$cloud", cloud_->http_url()}}) {
      text = programs::Replace(text, from, to);
    }
    return text;
  }

  std::string error_;
  const std::unique_ptr<devcloud::Cloud> cloud_ =
      devcloud::Cloud::Start(devcloud::Options(), &error_);
  const programs::TestFolder folder_;
  const std::string config_ = folder_.Write("config.xml", Config());
};

TEST_F(PresenceWatchTest, CountsTheOpenSessionsOfEachUser) {
  const std::string script = programs::ReadFile(QORN_SOURCE "examples/tests/presence.qorn");
  std::string expected;
  std::istringstream lines(script);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("#> ")) expected += line.substr(3) + "\n";
  }
  const programs::Ended ended = Run("libqorn_account.so", "libpresence_watch.so", script);
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_NE(expected, "");
  EXPECT_EQ(Log("presence: "), expected);
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
