// Scripts, pipes and signals, through the real program with a component that needs no cloud.
#include "tests/program.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <regex>
#include <utility>

#include "gateway/descriptor.h"

namespace gateway {
namespace {

using programs::Ended;
using programs::RunProgram;
using programs::TerminalProgram;

class ProgramTest : public testing::Test {
 protected:
  ProgramTest() { mkfifo(pipe_.c_str(), 0600); }

  // The audit file without its times.
  std::string Audit() const {
    static const std::regex kTime("\"time\":\"20[0-9-]{8}T[0-9:.]{12}Z\",");
    return std::regex_replace(programs::ReadFile(folder_.Path("audit")), kTime, "");
  }

  const programs::TestFolder folder_;
  // The component's long operation lasts until the test closes it.
  const std::string pipe_ = folder_.Path("pipe");
  const std::string command_ = "qorn-gateway --config " +
                               folder_.Write("config.xml", "<config></config>") + " --component " +
                               programs::Library("libqorn_gateway_fake_component.so") + " --log " +
                               folder_.Path("log") + " ";
};

TEST_F(ProgramTest, RunsAScriptToItsEndWithEventsBeforeAnswers) {
  const std::string script = folder_.Write("good.qorn",
                                           "# comment\r\n\n"
                                           "say 'First step'\n"
                                           "create-user alice secret-code\r\n"
                                           "expect 5 check-session-validation 5\n"
                                           "get-session-info $user_uuid");
  const Ended ended =
      RunProgram(command_ + "--audit " + folder_.Path("audit") + " --script " + script);
  EXPECT_EQ(ended.status, 0);
  EXPECT_EQ(ended.errors, "");
  EXPECT_EQ(
      Audit(),
      "{\"type\":\"command\",\"command\":\"say\",\"message\":\"done\"}\n"
      "{\"type\":\"event\",\"event\":\"kEventAccountCreateUser\",\"user_uuid\":\"o1\","
      "\"user_id\":\"alice\"}\n"
      "{\"type\":\"command\",\"command\":\"create-user\",\"user_uuid\":\"o1\","
      "\"user_id\":\"alice\",\"result\":1,\"message\":\"Success\"}\n"
      "{\"type\":\"command\",\"command\":\"check-session-validation\",\"result\":5,\"message\":"
      "\"There is no user who has this user ID in the account DB\"}\n"
      "{\"type\":\"command\",\"command\":\"get-session-info\",\"result\":1,"
      "\"message\":\"Success\"}\n");
  EXPECT_EQ(ended.output,
            "First step\n"
            "event kEventAccountCreateUser\n  user_uuid: o1\n  user_id: alice\n  code: secr…\n"
            "create-user: 1 Success\n  user_uuid: o1\n"
            "check-session-validation: 5 There is no user who has this user ID in the account DB\n"
            "get-session-info: 1 Success\n  user_id: o1\n");
}

TEST_F(ProgramTest, StopsAtTheFirstFailureUnlessItKeepsGoing) {
  for (const char* failure : {"nonsense", "sign-out", "check-session-validation 2",
                              "expect 1 check-session-validation 2", "say $nothing"}) {
    const std::string script =
        folder_.Write("bad.qorn", std::string("say one\n") + failure + "\nsay two\n");
    const Ended stopping = RunProgram(command_ + "--script " + script);
    EXPECT_EQ(stopping.status, 1) << failure;
    EXPECT_EQ(stopping.errors.find("qorn-gateway: " + script + ":2: "), 0U) << stopping.errors;
    EXPECT_EQ(stopping.output.find("two"), std::string::npos) << failure;
    const Ended going = RunProgram(command_ + "--keep-going --script " + script);
    EXPECT_EQ(going.status, 1) << failure;
    EXPECT_EQ(going.errors, stopping.errors);
    EXPECT_NE(going.output.find("two"), std::string::npos) << failure;
  }
}

TEST_F(ProgramTest, TakesAPipeAsAScriptAndNoEndlessLine) {
  const std::string place = "qorn-gateway: standard input:1: ";
  const struct {
    std::string input;
    int status;
    std::string output, errors;
  } cases[] = {
      {"say one\nquit\nsay two\n", 0, "one\n", ""},
      {"nonsense", 1, "", place + "unknown command \"nonsense\"; \"help\" lists them all\n"},
      {std::string(9 << 20, 'a') + "\nsay next\n", 1, "next\n", place + "the line is too long\n"},
  };
  for (const auto& c : cases) {
    const Ended ended = RunProgram(command_ + "--keep-going", c.input);
    EXPECT_EQ(ended.status, c.status);
    EXPECT_EQ(ended.output, c.output);
    EXPECT_EQ(ended.errors, c.errors);
  }
}

TEST_F(ProgramTest, SaysThatItsOutputIsLost) {
  const Ended ended = RunProgram(command_ + " >/dev/full; exit $?; #", "say one\n");
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.output, "");
}

TEST_F(ProgramTest, RefusesAScriptThatIsAFolder) {
  const std::string script = folder_.Path(".");
  const Ended ended = RunProgram(command_ + "--script " + script);
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.errors, "qorn-gateway: " + script + ": cannot be read: Is a directory\n");
}

// A script in the middle of a long operation.
class BusyProgramTest : public ProgramTest {
 protected:
  BusyProgramTest() {
    program_ = std::make_unique<TerminalProgram>(
        command_ + "--script " +
        folder_.Write("busy.qorn", "search-user " + pipe_ + " x\nsay later\n"));
    writer_ = open(pipe_.c_str(), O_WRONLY | O_CLOEXEC);  // returns once the command reads
  }
  ~BusyProgramTest() override {
    if (writer_ >= 0) close(writer_);
  }

  std::unique_ptr<TerminalProgram> program_;
  int writer_ = -1;
};

TEST_F(BusyProgramTest, FinishesTheRunningCommandAfterASignal) {
  program_->Signal(SIGTERM);
  ASSERT_TRUE(program_->WaitFor("qorn-gateway: stopping: waiting for search-user\r\n"));
  close(std::exchange(writer_, -1));
  const Ended ended = program_->Finish();
  EXPECT_EQ(ended.status, 0);
  EXPECT_EQ(ended.output,
            "qorn-gateway: stopping: waiting for search-user\r\n"
            "search-user: 1 Success\r\n"
            "qorn-gateway: stopping: waiting for the components to finish\r\n");
}

TEST_F(BusyProgramTest, EndsAtOnceAtASecondSignal) {
  program_->Signal(SIGINT);
  ASSERT_TRUE(program_->WaitFor("waiting for search-user\r\n"));
  program_->Signal(SIGTERM);
  EXPECT_EQ(program_->Finish().status, -SIGTERM);
}

// The prompt, and a person at it.
class TerminalTest : public ProgramTest {
 protected:
  TerminalTest() : program_(command_ + "--audit " + folder_.Path("audit"), environment_) {
    EXPECT_TRUE(program_.WaitFor("qorn> "));
  }

  void Run(TerminalProgram* program, const std::string& keys) {
    program->Type(keys);
    EXPECT_TRUE(program->WaitFor("qorn> ")) << keys;
  }

  const std::string environment_ = "XDG_STATE_HOME=" + folder_.Path("state");
  const std::string history_ = folder_.Path("state/qorn/history");
  TerminalProgram program_;
};

TEST_F(TerminalTest, EditsLinesKeepsHistoryAndGoesOnAfterAFailure) {
  const std::pair<const char*, const char*> steps[] = {
      // One digit taken back.
      {"check-session-validation 22\b\n", "answered 2 (Invalid Session ID)"},
      {"say \xc3\xa9\xed\x95\x9c\n", "\né한\r\n"},
      // Two lines up, and another digit.
      {"\x10\x10\x7f\x35\n", "check-session-validation answered 5"},
  };
  for (const auto& [keys, shown] : steps) {
    program_.Type(keys);
    ASSERT_TRUE(program_.WaitFor(shown));
    ASSERT_TRUE(program_.WaitFor("qorn> "));
  }
  program_.Type("\x04");
  EXPECT_EQ(program_.Finish().status, 0);
}

TEST_F(TerminalTest, StopsInOrderWithoutRunningTheUnfinishedLine) {
  program_.Type("say never\x03");
  const Ended ended = program_.Finish();
  EXPECT_EQ(ended.status, 0);
  EXPECT_NE(ended.output.find("qorn-gateway: stopping\r\n"), std::string::npos);
  EXPECT_NE(ended.output.find("waiting for the components to finish"), std::string::npos);
  EXPECT_EQ(ended.output.find("\nnever"), std::string::npos);
}

TEST_F(TerminalTest, DrawsThePromptAgainBelowAnEventThatComesByItself) {
  program_.Type("sign-out " + pipe_ + "\n");
  ASSERT_TRUE(program_.WaitFor("sign-out: 1 Success"));
  ASSERT_TRUE(program_.WaitFor("qorn> "));
  close(open(pipe_.c_str(), O_WRONLY | O_CLOEXEC));
  ASSERT_TRUE(program_.WaitFor("session_id: ended\r\n"));
  EXPECT_TRUE(program_.WaitFor("qorn> "));
}

TEST_F(TerminalTest, KeepsItsHistoryWithoutSecretsAndReadsABrokenOne) {
  Run(&program_, "say one two\n");
  Run(&program_, "sign-in alice secret-code\n");
  Run(&program_, "request-cod alice\n");
  program_.Type("\x04");
  program_.Finish();
  EXPECT_EQ(programs::ReadFile(history_), "say one two\n");
  EXPECT_EQ(std::filesystem::status(history_).permissions(), std::filesystem::perms(0600));
  std::ofstream(history_, std::ios::app) << "\x1b[2J\n" << std::string(1 << 20, '\0') << "\n";
  TerminalProgram next(command_, environment_);
  ASSERT_TRUE(next.WaitFor("qorn> "));
  next.Type("\x10\n");
  // The line is drawn with its prompt when it is fetched from the history.
  ASSERT_TRUE(next.WaitFor("\none two\r\nqorn> "));
  EXPECT_EQ(next.Finish("\x04").status, 0);
}

TEST_F(TerminalTest, CompletesCommandsAndSeenIds) {
  program_.Type("check-s\t1\n");
  ASSERT_TRUE(program_.WaitFor("check-session-validation: 1 Success"));
  program_.Type("sign-in\t");
  EXPECT_TRUE(program_.WaitFor("  sign-in\r\n  sign-in-alt\r\n"));
  program_.Type("-alt alice x\n");
  ASSERT_TRUE(program_.WaitFor("session_id: o2"));
  program_.Type("get-session-info o\t\n");
  EXPECT_TRUE(program_.WaitFor("get-session-info: 1 Success"));
}

TEST_F(TerminalTest, WatchesUntilEnter) {
  program_.Type("watch\n");
  ASSERT_TRUE(program_.WaitFor("press Enter to end.\r\n"));
  Run(&program_, "\n");
  program_.Type("say on\n");
  EXPECT_TRUE(program_.WaitFor("\non\r\n"));
}

TEST_F(TerminalTest, OpensLogAndAuditAnewAtAHangup) {
  for (const char* file : {"log", "audit"}) {
    std::filesystem::rename(folder_.Path(file), folder_.Path(file + std::string(".1")));
  }
  program_.Signal(SIGHUP);
  while (Audit().empty()) Run(&program_, "say on\n");
  EXPECT_TRUE(std::filesystem::exists(folder_.Path("log")));
}

TEST_F(ProgramTest, LeavesAStorageFolderToTheGatewayThatWorksInIt) {
  folder_.Write("config.xml", "<config><qorn_storage_path>" + folder_.Path("") +
                                  "</qorn_storage_path><account_db_path>a.db</account_db_path>"
                                  "</config>");
  TerminalProgram first(command_, "XDG_STATE_HOME=" + folder_.Path("state"));
  ASSERT_TRUE(first.WaitFor("qorn> "));
  const Ended second = RunProgram(command_);
  EXPECT_EQ(second.status, 2);
  EXPECT_EQ(second.errors,
            "qorn-gateway: another gateway works in the storage folder " + folder_.Path("") + "\n");
  first.Finish("\x04");
  EXPECT_EQ(RunProgram(command_).status, 0);
}

TEST_F(ProgramTest, TellsTheServiceManagerAndRunsWithoutInputUntilASignal) {
  sockaddr_un address{AF_UNIX, {}};
  folder_.Path("notify").copy(address.sun_path, sizeof(address.sun_path) - 1);
  const Descriptor manager(socket(AF_UNIX, SOCK_DGRAM, 0));
  ASSERT_EQ(bind(manager.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
  TerminalProgram program(command_ + "--daemon", "NOTIFY_SOCKET=" + folder_.Path("notify"));
  char text[64]{};
  ASSERT_GT(recv(manager.get(), text, sizeof(text) - 1, 0), 0);
  EXPECT_STREQ(text, "READY=1");
  program.Signal(SIGTERM);
  EXPECT_EQ(program.Finish().status, 0);
}

}  // namespace
}  // namespace gateway
