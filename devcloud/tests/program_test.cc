#include "tests/program.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>

#include "devcloud/tests/client.h"

namespace devcloud {
namespace {

TEST(ProgramTest, PrintsItsUrlsAndRunsUntilASignal) {
  for (const int signal : {SIGINT, SIGTERM}) {
    programs::TerminalProgram program("qorn-devcloud --print-urls --gateway AABB --gateway CCDD");
    std::string http, https, api;
    ASSERT_TRUE(program.WaitFor("http http://127.0.0.1:"));
    ASSERT_TRUE(program.WaitFor("\r\nhttps https://127.0.0.1:", &http));
    ASSERT_TRUE(program.WaitFor("\r\napi http://127.0.0.1:", &https));
    ASSERT_TRUE(program.WaitFor("\r\n", &api));
    EXPECT_EQ(Send("GET", "https://127.0.0.1:" + https + "/authorize").status, 200);
    for (const std::string& port : {http, api}) {
      const std::string state = Send("GET", "http://127.0.0.1:" + port + "/api/state").text;
      EXPECT_NE(state.find("CCDD"), state.npos);
    }
    program.Signal(signal);
    const programs::Ended ended = program.Finish();
    EXPECT_EQ(ended.status, 0);
    EXPECT_TRUE(ended.output.ends_with(":" + api + "\r\n")) << ended.output;
  }
}

TEST(ProgramTest, BadOptionsGetOneLine) {
  for (const char* arguments :
       {"--port 70000", "--port", "--nothing", "--address nowhere", "stray"}) {
    const programs::Ended ended = programs::RunProgram(std::string("qorn-devcloud ") + arguments);
    EXPECT_GT(ended.status, 0) << arguments;
    EXPECT_EQ(ended.output, "");
    EXPECT_TRUE(ended.errors.starts_with("qorn-devcloud: ")) << ended.errors;
    EXPECT_EQ(std::count(ended.errors.begin(), ended.errors.end(), '\n'), 1) << ended.errors;
  }
}

}  // namespace
}  // namespace devcloud
