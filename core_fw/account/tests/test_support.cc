#include "core_fw/account/tests/test_support.h"

#include <sqlite3.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>
#include <utility>

#include "base/logging.h"
#include "base/pickle.h"
#include "evt/event_manager.h"
#include "runtime/runtime.h"

namespace account {

LogCapture::LogCapture() {
  logging::SetLogMessageHandler([this](int severity, const char* file, int /*line*/,
                                       size_t message_start, const std::string& text) {
    const bool component = text.compare(message_start, 2, " #") == 0;
    std::string line = std::to_string(severity) + (component ? "" : std::string(" ") + file) +
                       text.substr(message_start);
    if (!line.empty() && line.back() == '\n') line.pop_back();
    std::function<void(const std::string&)> action;
    {
      const std::lock_guard<std::mutex> hold(mutex_);
      action = action_;
    }
    if (action) action(line);
    const std::lock_guard<std::mutex> hold(mutex_);
    lines_.push_back(std::move(line));
    return true;
  });
}

LogCapture::~LogCapture() { logging::SetLogMessageHandler(nullptr); }

std::vector<std::string> LogCapture::Take() {
  const std::lock_guard<std::mutex> hold(mutex_);
  return std::exchange(lines_, {});
}

void LogCapture::OnLine(std::function<void(const std::string&)> action) {
  const std::lock_guard<std::mutex> hold(mutex_);
  action_ = std::move(action);
}

std::string Line(int severity, const std::string& function, const std::string& text) {
  return std::to_string(severity) + " #account#" + function + "#  " + text;
}

std::string Message(int code) {
  std::ifstream file(QORN_RESULT_MESSAGES);  // A line for each code from 0 on.
  std::string line;
  for (int i = code >= 1 && code <= 19 ? code : 0; i >= 0; --i) std::getline(file, line);
  return line;
}

long CountEntries(const std::string& folder) {
  return std::distance(std::filesystem::directory_iterator(folder), {});
}

bool WaitUntil(const std::function<bool()>& holds) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!holds() && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
  return holds();
}

bool WaitForEntries(const char* folder, long count) {
  return WaitUntil([=] { return CountEntries(folder) <= count; });
}

std::string LibraryPath() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path() /
         "../lib/libqorn_account.so";
}

EventCapture::EventCapture() {
  for (int type = 1; type <= 8; ++type) {
    listeners_.push_back(
        evt::EventManager::GetInstance()->AddListener(type, [this](int number, const Pickle& data) {
          std::string event = std::to_string(number);
          PickleIterator strings(data);
          std::string text;
          for (char separator = ' '; strings.ReadString(&text); separator = '|') {
            event += separator + text;
          }
          const std::lock_guard<std::mutex> hold(mutex_);
          events_.push_back(event);
        }));
  }
}

EventCapture::~EventCapture() {
  for (int listener : listeners_) evt::EventManager::GetInstance()->RemoveListener(listener);
}

std::vector<std::string> EventCapture::Take() {
  evt::EventManager::GetInstance()->Flush();
  const std::lock_guard<std::mutex> hold(mutex_);
  return std::exchange(events_, {});
}

AccountTest::AccountTest()
    : config_{{"qorn_storage_path", folder_ + "/"},
              {"account_db_path", "account.db"},
              {"OAuth_AsClient_app_name", "name"},
              {"OAuth_AsClient_app_id", "app-id"},
              {"OAuth_AsClient_app_secret", "s3cret"},
              {"account_device_type_code", "HGW"},
              {"account_device_model_id", "QG-1"},
              {"account_device_physical_address_text", kGatewayAddress},
              {"account_service", "ACCOUNT"},
              {"account_server_type", "NTS"},
              {"account_qor_device_name", "Home"},
              {"account_enable_MIRLO_network_setting", "off"}} {
  std::string error;
  devcloud::Options options;
  options.certificate_address = "127.0.0.9";  // Names are not checked either.
  cloud_ = devcloud::Cloud::Start(options, &error);
  EXPECT_NE(cloud_, nullptr) << error;
  config_["account_zep_auth_url"] = cloud_->http_url();
  config_["account_user_portal_url"] = cloud_->http_url();
}

AccountTest::~AccountTest() {
  runtime::Runtime::Destroy();
  EXPECT_THAT(log_.Take(), testing::Each(testing::Lt("4")));
}

void AccountTest::StartRuntime() {
  runtime::Runtime::Destroy();
  const std::string file = folder_ + "/config.xml";
  std::string text, error;
  for (const auto& [key, value] : config_) {
    text += "<" + key + "><![CDATA[" + value + "]]></" + key + ">\n";
  }
  WriteFile(file, "<config>\n" + text + "</config>\n");
  ASSERT_NE(runtime::Runtime::Create(file, &error), nullptr) << error;
}

std::vector<std::string> AccountTest::Sql(const std::string& statement) const {
  sqlite3* database = nullptr;
  EXPECT_EQ(sqlite3_open(database_path().c_str(), &database), SQLITE_OK);
  std::vector<std::string> rows;
  const auto add = [](void* data, int count, char** values, char** /*names*/) {
    std::string row;
    for (int i = 0; i < count; ++i) {
      row += (i == 0 ? "" : "|") + std::string(values[i] == nullptr ? "" : values[i]);
    }
    static_cast<std::vector<std::string>*>(data)->push_back(row);
    return 0;
  };
  EXPECT_EQ(sqlite3_exec(database, statement.c_str(), add, &rows, nullptr), SQLITE_OK)
      << sqlite3_errmsg(database);
  sqlite3_close(database);
  return rows;
}

}  // namespace account
