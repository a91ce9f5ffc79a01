#include "devcloud/state_file.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "devcloud/tests/client.h"

namespace devcloud {
namespace {

class TestFolder {
 public:
  TestFolder() : path_(mkdtemp((testing::TempDir() + "stateXXXXXX").data())) {}
  ~TestFolder() { std::filesystem::remove_all(path_); }
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;

  std::string Path(const std::string& name) const { return path_ + "/" + name; }
  std::string Write(const std::string& name, const std::string& text) const {
    std::ofstream(Path(name)) << text;
    return Path(name);
  }

 private:
  const std::string path_;
};

TEST(StateFileTest, AccountsAndGatewaysSurviveARestart) {
  const TestFolder folder;
  Options options;
  options.state_file = folder.Path("state");
  std::string code, guid;
  {
    const auto cloud = StartCloud(options);
    code = cloud->IssueCode("ann");
    guid = cloud->UserGuid("ann");
    cloud->AddGateway("AABB");
  }
  EXPECT_EQ(std::filesystem::status(options.state_file).permissions(),
            std::filesystem::perms(0600));
  const auto cloud = StartCloud(options);
  EXPECT_EQ(cloud->UserGuid("ann"), guid);
  EXPECT_NE(Send("GET", cloud->api_url() + "/api/state").text.find(cloud->PeerId("AABB")),
            std::string::npos);
  const std::string form = "grant_type=authorization_code&client_id=a&client_secret=b&code=" + code;
  EXPECT_EQ(Send("POST", cloud->http_url() + "/token", form).status, 200);
}

TEST(StateFileTest, StartSaysInOneLineWhatIsWrong) {
  const TestFolder folder;
  const auto running = StartCloud();
  Options taken, unknown, foreign, broken, cut_off, folder_itself, nowhere;
  broken.state_file = folder.Write("state", "{}");
  cut_off.state_file = folder.Write("cut", "{\"users\": {\n\"a");
  folder_itself.state_file = folder.Path("");
  nowhere.state_file = folder.Path("none/state");
  taken.http_port = static_cast<std::uint16_t>(
      std::stoi(running->http_url().substr(running->http_url().rfind(':') + 1)));
  unknown.address = "nowhere";
  foreign.address = "192.0.2.1";
  const std::pair<Options, const char*> kCases[] = {
      {taken, "Address already in use"},
      {unknown, "nowhere: not an IP address"},
      {foreign, "Cannot assign requested address"},
      {broken, "/state: not a state file"},
      {cut_off, "/cut: not a state file"},
      {folder_itself, "/: Is a directory"},
      {nowhere, "/none/state: No such file or directory"},
  };
  for (const auto& [options, expected] : kCases) {
    std::string error;
    EXPECT_EQ(Cloud::Start(options, &error), nullptr) << expected;
    EXPECT_NE(error.find(expected), error.npos) << error;
    EXPECT_EQ(error.find('\n'), error.npos) << error;
  }
  EXPECT_EQ(std::filesystem::file_size(broken.state_file), 2u) << "overwritten";
}

}  // namespace
}  // namespace devcloud
