// What the platform's tests share.
#ifndef QORN_PLATFORM_TESTS_TEST_SUPPORT_H_
#define QORN_PLATFORM_TESTS_TEST_SUPPORT_H_

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "evt/event_manager.h"

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

  const std::string& path() const { return path_; }
  std::string File(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

inline std::string ReadFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// Whether the thread sleeps until another one wakes it.
inline bool IsAsleep(int thread_id) {
  const std::string stat = ReadFile("/proc/self/task/" + std::to_string(thread_id) + "/stat");
  return stat.substr(stat.rfind(')') + 1).starts_with(" S");
}

inline void WriteFile(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

// Publishes an event that holds one text.
inline void Publish(int type, const std::string& text) {
  evt::EventManager* const bus = evt::EventManager::GetInstance();
  evt::Event* const event = bus->CreateEvent(type);
  Pickle data;
  data.WriteString(text);
  event->SetData(data);
  bus->Publish(event);
  bus->ReleaseEvent(event);
}

// The pairs of words in a data file of the tests. `Words` between backquotes may hold blanks.
inline std::vector<std::pair<std::string, std::string>> ReadCases(const std::string& path) {
  std::ifstream stream(path);
  std::vector<std::pair<std::string, std::string>> cases;
  std::string first;
  std::string second;
  while (stream >> std::quoted(first, '`') >> std::quoted(second, '`')) {
    cases.emplace_back(first, second);
  }
  EXPECT_FALSE(cases.empty()) << path;
  return cases;
}

#endif  // QORN_PLATFORM_TESTS_TEST_SUPPORT_H_
