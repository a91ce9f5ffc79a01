// What the platform's tests share.
#ifndef QORN_PLATFORM_TESTS_TEST_SUPPORT_H_
#define QORN_PLATFORM_TESTS_TEST_SUPPORT_H_

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <utility>

#include "base/lock.h"
#include "base/logging.h"
#include "base/simple_thread.h"

// A folder of the test's own, in memory where there is such a place, gone at the end.
class TestFolder {
 public:
  TestFolder() {
    namespace fs = std::filesystem;
    const fs::path parent = fs::exists("/dev/shm") ? "/dev/shm" : fs::temp_directory_path();
    path_ = (parent / "qorn_platform_test_XXXXXX").string();
    if (mkdtemp(path_.data()) == nullptr) abort();
  }
  ~TestFolder() { std::filesystem::remove_all(path_); }
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;

  std::string File(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

inline std::string ReadFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

inline void WriteFile(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

// Takes all log lines while it lives.
class LogCapture {
 public:
  LogCapture() {
    logging::SetLogMessageHandler(
        [kept = kept_](int, const char*, int, size_t message_start, const std::string& text) {
          base::AutoLock hold(kept->lock);
          kept->text += text.substr(message_start);
          return true;
        });
  }
  ~LogCapture() { logging::SetLogMessageHandler({}); }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  // The texts of the lines since the last call, one behind the other.
  std::string TakeText() {
    base::AutoLock hold(kept_->lock);
    return std::exchange(kept_->text, {});
  }

 private:
  struct Kept {
    base::Lock lock;
    std::string text GUARDED_BY(lock);
  };

  const std::shared_ptr<Kept> kept_ = std::make_shared<Kept>();
};

// Runs a function on a thread of the platform; joined at the end.
template <typename Function>
class TestThread : public base::SimpleThread {
 public:
  explicit TestThread(Function function, const std::string& name = "TestThread")
      : SimpleThread(name), function_(std::move(function)) {
    Start();
  }
  ~TestThread() override { Join(); }
  void Run() override { function_(); }

 private:
  Function function_;
};

#endif  // QORN_PLATFORM_TESTS_TEST_SUPPORT_H_
