// The programs of the build as child processes.
#ifndef QORN_TESTS_PROGRAM_H_
#define QORN_TESTS_PROGRAM_H_

#include <sys/types.h>

#include <string>

namespace programs {

// A folder that is gone with the object.
class TestFolder {
 public:
  TestFolder();
  ~TestFolder();
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;

  // The path of `name` inside; Write makes the file.
  std::string Path(const std::string& name) const { return path_ + "/" + name; }
  std::string Write(const std::string& name, const std::string& text) const;

 private:
  std::string path_;
};

// All of a file; "" when it cannot be read.
std::string ReadFile(const std::string& path);

// The text with each `from` in it replaced.
std::string Replace(std::string text, const std::string& from, const std::string& to);

// A library of the build.
std::string Library(const std::string& name);

struct Ended {
  int status;  // the exit status, or minus the signal that ended it
  std::string output;
  std::string errors;
};

// Runs a program of the build to its end: "qorn-gateway --version". A shell reads the line.
Ended RunProgram(const std::string& command, const std::string& input = "");

// A program on a pseudo-terminal, where output and errors are one stream.
class TerminalProgram {
 public:
  // `environment` is put before the command: "HOME=/nowhere".
  explicit TerminalProgram(const std::string& command, const std::string& environment = "");
  ~TerminalProgram();  // kills it if it still runs
  TerminalProgram(const TerminalProgram&) = delete;
  TerminalProgram& operator=(const TerminalProgram&) = delete;

  void Type(const std::string& keys);
  void Signal(int number);
  // Reads until the text stands behind what the last call found, and stores what stood before it;
  // false at the end of the output.
  bool WaitFor(const std::string& text, std::string* before = nullptr);
  // Types the keys and reads to the end.
  Ended Finish(const std::string& keys = "");

 private:
  bool ReadMore();

  pid_t pid_ = -1;
  int terminal_ = -1;
  std::string output_;
  size_t found_ = 0;
};

}  // namespace programs

#endif  // QORN_TESTS_PROGRAM_H_
