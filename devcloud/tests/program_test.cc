#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "devcloud/tests/client.h"

namespace devcloud {
namespace {

// The program with its standard output and error in one pipe.
class Program {
 public:
  explicit Program(std::vector<std::string> arguments) {
    int ends[2];
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    std::vector<char*> argv;
    arguments.insert(arguments.begin(), QORN_DEVCLOUD_PROGRAM);
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    pid_ = fork();
    if (pid_ == 0) {
      dup2(ends[1], STDOUT_FILENO);
      dup2(ends[1], STDERR_FILENO);
      execv(argv[0], argv.data());
      _exit(127);
    }
    close(ends[1]);
    output_ = fdopen(ends[0], "r");
  }
  ~Program() {
    fclose(output_);
    if (is_running_) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
  }

  std::string ReadLine() {
    std::string line;
    for (int c = fgetc(output_); c != EOF && c != '\n'; c = fgetc(output_)) {
      line += static_cast<char>(c);
    }
    return line;
  }

  void Signal(int number) { kill(pid_, number); }

  // The exit status, or -1 when it did not exit by itself. What it still writes is dropped.
  int Wait() {
    while (fgetc(output_) != EOF) continue;
    is_running_ = false;
    int status = 0;
    waitpid(pid_, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  pid_t pid_;
  FILE* output_;
  bool is_running_ = true;
};

TEST(ProgramTest, PrintsItsUrlsAndRunsUntilASignal) {
  for (const int signal : {SIGINT, SIGTERM}) {
    Program program({"--print-urls", "--gateway", "AABB", "--gateway", "CCDD"});
    const std::string http = program.ReadLine();
    const std::string https = program.ReadLine();
    const std::string api = program.ReadLine();
    ASSERT_TRUE(http.starts_with("http http://127.0.0.1:")) << http;
    ASSERT_TRUE(https.starts_with("https https://127.0.0.1:")) << https;
    ASSERT_TRUE(api.starts_with("api http://127.0.0.1:")) << api;
    EXPECT_EQ(Send("GET", https.substr(6) + "/authorize").status, 200);
    const std::string state = Send("GET", http.substr(5) + "/api/state").text;
    EXPECT_NE(state.find("CCDD"), state.npos);
    program.Signal(signal);
    EXPECT_EQ(program.ReadLine(), "");
    EXPECT_EQ(program.Wait(), 0);
  }
}

TEST(ProgramTest, BadOptionsGetOneLine) {
  const auto cloud = StartCloud();
  const std::string taken = cloud->http_url().substr(cloud->http_url().rfind(':') + 1);
  const std::vector<std::string> kCases[] = {
      {"--port", taken}, {"--port", "70000"},      {"--port"},
      {"--nothing"},     {"--address", "nowhere"}, {"stray"},
  };
  for (const auto& arguments : kCases) {
    Program program(arguments);
    EXPECT_TRUE(program.ReadLine().starts_with("qorn-devcloud: ")) << arguments[0];
    EXPECT_EQ(program.ReadLine(), "") << arguments[0];
    EXPECT_GT(program.Wait(), 0) << arguments[0];
  }
}

}  // namespace
}  // namespace devcloud
