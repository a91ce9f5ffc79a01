// What a dying program leaves in a test's output: the stack of every thread. Test programs link
// this library; programs that tests start get it by LD_PRELOAD.
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

// Of the sanitizers' runtime, where there is one.
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());

namespace {

void Say(const char* text) {
  if (write(STDERR_FILENO, text, std::strlen(text)) < 0) return;
}

[[noreturn]] void RunDebugger(pid_t program) {
  dup2(STDERR_FILENO, STDOUT_FILENO);
  unsetenv("LD_PRELOAD");
  // ThreadSanitizer runs a handler with all signals blocked, and gdb would wait for its SIGCHLD.
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  const std::string id = std::to_string(program);
  execlp("gdb", "gdb", "-nx", "-batch", "-p", id.c_str(), "-ex", "thread apply all backtrace 40",
         static_cast<char*>(nullptr));
  char folder[4096] = "?";
  Say("gdb is not installed; see the core file, if the limit (ulimit -c) allows one, in ");
  Say(getcwd(folder, sizeof(folder)) != nullptr ? folder : "?");
  Say(", or where /proc/sys/kernel/core_pattern says\n");
  _exit(0);
}

void PrintStacks() {
  static std::sig_atomic_t begun = 0;
  if (begun++ != 0) return;
  // Yama, where it is on, lets only a parent trace a process, unless that one says otherwise.
  prctl(PR_SET_PTRACER, PR_SET_PTRACER_ANY);
  const pid_t program = getpid();
  const pid_t debugger = fork();
  if (debugger == 0) RunDebugger(program);
  if (debugger > 0) waitpid(debugger, nullptr, 0);
}

void Die(int signal) {
  char line[128];
  std::snprintf(line, sizeof(line), "\n== process %d: %s\n", getpid(),
                signal == SIGALRM ? "hangs" : strsignal(signal));
  Say(line);
  PrintStacks();
  std::signal(signal, SIG_DFL);
  raise(signal);
}

// CTest names in QORN_TEST_SECONDS how long a test may take, and kills it soon after.
[[gnu::constructor]] void Install() {
  if (__sanitizer_set_death_callback != nullptr) __sanitizer_set_death_callback(PrintStacks);
  // Sanitizers report these signals themselves, and then call back.
  if (__sanitizer_set_death_callback == nullptr) {
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL}) std::signal(signal, Die);
  }
  std::signal(SIGABRT, Die);
  const char* const seconds = std::getenv("QORN_TEST_SECONDS");
  if (seconds == nullptr) return;
  std::signal(SIGALRM, Die);
  alarm(static_cast<unsigned>(std::atoi(seconds)));
}

}  // namespace
