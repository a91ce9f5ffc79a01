// How the program starts, and how it refuses to.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <utility>
#include <vector>

#include "tests/program.h"

namespace gateway {
namespace {

using programs::Ended;
using programs::Library;
using programs::TestFolder;

Ended RunGateway(const std::string& arguments) {
  return programs::RunProgram("qorn-gateway " + arguments);
}

TEST(Start, AnswersVersionAndHelp) {
  const Ended version = RunGateway("--version");
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output, "qorn-gateway 0.1.0\n");
  EXPECT_NE(RunGateway("--help").output.find("Exit status"), std::string::npos);
}

TEST(Start, NamesWhatIsWrongInOneLineAndExitsWith2) {
  const TestFolder folder;
  const std::string config = folder.Write("config.xml", "<config></config>");
  const std::string broken = folder.Write("broken.xml", "<config>\n<a>1</b>\n</config>");
  const std::string wrong_root = folder.Write("root.xml", "<settings/>");
  const std::string no_library = folder.Write("text.so", "no library");
  const std::string nowhere = folder.Path("nowhere");
  const std::string pipe = folder.Path("pipe");  // nobody reads it
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  // Arguments, and what the line names.
  const std::pair<std::string, std::vector<std::string>> cases[] = {
      {"--config " + nowhere, {nowhere}},
      {"--config " + broken, {broken, "2"}},
      {"--config " + wrong_root, {wrong_root, "config"}},
      {"--config " + config + " --component " + nowhere, {nowhere}},
      {"--config " + config + " --component " + no_library, {no_library}},
      {"--config " + config + " --component " + Library("libqorn_gateway_no_component.so"),
       {"libqorn_gateway_no_component.so", "GetComponent"}},
      {"--config " + config + " --script " + nowhere, {nowhere, "cannot be opened"}},
      {"--config " + config + " --log " + nowhere + "/log", {nowhere, "log"}},
      {"--config " + config + " --log " + pipe, {pipe, "log"}},
      {"--config " + config + " --audit " + pipe, {pipe, "audit"}},
      {"--config " + config + " --audit " + nowhere + "/audit", {nowhere, "audit"}},
      {"--daemon --script a", {"--daemon", "--script"}},
      {"--config", {"--config"}},
      {"--config a --config b", {"--config"}},
      {"--bogus", {"--bogus"}},
      {"script.qorn", {"script.qorn"}},
  };
  for (const auto& [arguments, words] : cases) {
    const Ended ended = RunGateway(arguments);
    EXPECT_EQ(ended.status, 2) << arguments;
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(ended.errors.find("qorn-gateway: "), 0U) << ended.errors;
    EXPECT_EQ(std::count(ended.errors.begin(), ended.errors.end(), '\n'), 1) << ended.errors;
    for (const std::string& word : words) {
      EXPECT_NE(ended.errors.find(word), std::string::npos) << word << ": " << ended.errors;
    }
  }
}

TEST(Start, SaysWhatIsWrongWithTheDatabaseAndRuns) {
  const TestFolder folder;
  folder.Write("text", "no database, and longer than a header: " + std::string(100, 'x'));
  folder.Write("empty", "");
  std::filesystem::create_directory(folder.Path("folder"));
  // Folder, file, and what the one line begins with.
  const std::vector<std::string> cases[] = {
      {folder.Path(""), "none", ""},
      {folder.Path(""), "empty", ""},
      {folder.Path("nowhere/"), "a",
       "database.folder " + folder.Path("nowhere") + ": is not there"},
      {folder.Path("text/"), "a", "database.folder " + folder.Path("text") + ": is not a folder"},
      {folder.Path(""), "folder", "database.file " + folder.Path("folder") + ": is not a file"},
      {folder.Path(""), "text", "database.integrity " + folder.Path("text") + ": cannot be read"}};
  for (const auto& c : cases) {
    const std::string config =
        folder.Write("config.xml", "<config><qorn_storage_path>" + c[0] +
                                       "</qorn_storage_path><account_db_path>" + c[1] +
                                       "</account_db_path></config>");
    const Ended ended = RunGateway("--config " + config + " --log " + folder.Path("log") +
                                   " --component " + Library("libqorn_gateway_fake_component.so"));
    EXPECT_EQ(ended.status, 0);
    const std::string line = c[2].empty() ? "" : "qorn-gateway: " + c[2];
    EXPECT_EQ(ended.errors.substr(0, line.size()), line);
    EXPECT_EQ(std::count(ended.errors.begin(), ended.errors.end(), '\n'), line.empty() ? 0 : 1)
        << ended.errors;
  }
}

TEST(Start, ReadsTheShippedConfigurationAndAppendsToALogThatNobodyElseReads) {
  const TestFolder folder;
  const std::string log = folder.Path("log");
  umask(0);
  std::uintmax_t size = 0;
  for (int round = 0; round < 2; ++round) {
    const Ended ended =
        RunGateway("--log " + log + " --component " + Library("libqorn_gateway_fake_component.so"));
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.errors, "");
    EXPECT_GT(std::filesystem::file_size(log), size);
    size = std::filesystem::file_size(log);
  }
  EXPECT_EQ(std::filesystem::status(log).permissions(), std::filesystem::perms(0600));
}

}  // namespace
}  // namespace gateway
