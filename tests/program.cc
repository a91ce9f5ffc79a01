#include "tests/program.h"

#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

namespace programs {
namespace {

std::string ProgramFolder() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

int DecodeStatus(int status) { return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status); }

}  // namespace

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string Replace(std::string text, const std::string& from, const std::string& to) {
  for (size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

TestFolder::TestFolder() {
  const bool in_memory = std::filesystem::is_directory("/dev/shm");
  std::string name =
      (in_memory ? "/dev/shm" : std::filesystem::temp_directory_path().string()) + "/qornXXXXXX";
  path_ = mkdtemp(name.data());
}

TestFolder::~TestFolder() { std::filesystem::remove_all(path_); }

std::string TestFolder::Write(const std::string& name, const std::string& text) const {
  std::ofstream(Path(name), std::ios::binary) << text;
  return Path(name);
}

std::string Library(const std::string& name) { return ProgramFolder() + "/../lib/" + name; }

Ended RunProgram(const std::string& command, const std::string& input) {
  const TestFolder folder;
  const std::string output = folder.Path("output");
  const std::string errors = folder.Path("errors");
  const int status = std::system(("cat " + folder.Write("input", input) + " | " + ProgramFolder() +
                                  "/" + command + " >" + output + " 2>" + errors)
                                     .c_str());
  return Ended{DecodeStatus(status), ReadFile(output), ReadFile(errors)};
}

TerminalProgram::TerminalProgram(const std::string& command, const std::string& environment) {
  pid_ = forkpty(&terminal_, nullptr, nullptr, nullptr);
  if (pid_ == 0) {
    execl("/bin/sh", "sh", "-c",
          ("TERM=dumb " + environment + " exec " + ProgramFolder() + "/" + command).c_str(),
          nullptr);
    _exit(127);
  }
}

TerminalProgram::~TerminalProgram() {
  if (pid_ > 0) {
    Signal(SIGKILL);
    Finish();
  }
  close(terminal_);
}

void TerminalProgram::Type(const std::string& keys) {
  if (write(terminal_, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) abort();
}

void TerminalProgram::Signal(int number) { kill(pid_, number); }

bool TerminalProgram::ReadMore() {
  char bytes[4096];
  const ssize_t count = read(terminal_, bytes, sizeof(bytes));
  if (count <= 0) return false;
  output_.append(bytes, static_cast<size_t>(count));
  return true;
}

bool TerminalProgram::WaitFor(const std::string& text, std::string* before) {
  size_t at = output_.find(text, found_);
  while (at == std::string::npos) {
    if (!ReadMore()) return false;
    at = output_.find(text, found_);
  }
  if (before != nullptr) *before = output_.substr(found_, at - found_);
  found_ = at + text.size();
  return true;
}

Ended TerminalProgram::Finish(const std::string& keys) {
  Type(keys);
  while (ReadMore()) continue;
  int status = 0;
  waitpid(std::exchange(pid_, -1), &status, 0);
  return Ended{DecodeStatus(status), output_, ""};
}

}  // namespace programs
