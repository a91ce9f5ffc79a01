// A service on a bus of the test's own, whose accounts answer from memory, and a client of it.
#ifndef QORN_GATEWAY_TESTS_BUS_SERVICE_FIXTURE_H_
#define QORN_GATEWAY_TESTS_BUS_SERVICE_FIXTURE_H_

#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <atomic>
#include <condition_variable>
#include <future>
#include <latch>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "bus/connection.h"
#include "bus/names.h"
#include "client/include/qorn_client.h"
#include "gateway/service/bus_service.h"
#include "gateway/tests/fake_account_manager.h"
#include "gateway/tests/private_bus.h"

namespace gateway {

using Texts = std::vector<std::string>;
inline constexpr char kSessions[] = "org.qorn.Accounts1.Sessions";
inline constexpr int kPlenty = 1'000'000;
inline constexpr uid_t kStranger = 65534;  // Debian's nobody, and the number of its group.

class Accounts : public FakeAccountManager {
 public:
  AccountResult SignIn(Text a, Text b, Out x, Out y, bool* failed) override {
    if (stalled != nullptr && a != "quick") {
      if (!arrived->try_wait()) arrived->count_down();
      stalled->wait();
    }
    const std::lock_guard<std::mutex> hold(mutex_);
    return FakeAccountManager::SignIn(a, b, x, y, failed);
  }
  AccountResult GetAllUsersUUID(List x) override {
    FakeAccountManager::GetAllUsersUUID(x);
    while (static_cast<int>(x->size()) < users) x->push_back("u" + std::to_string(x->size()));
    return result;
  }
  // The properties read it whenever they like.
  int GetNetworkSettingStatus() override { return 1; }
  AccountResult SetSessionLifetime(int minutes) override { return lifetime = minutes, 1; }
  AccountResult GetSessionLifetime(int* minutes) override { return *minutes = lifetime, 1; }

  std::latch* arrived = nullptr;
  std::latch* stalled = nullptr;
  int users = 2;
  std::atomic<int> lifetime{30};

 private:
  std::mutex mutex_;
};

class BusServiceTest : public testing::Test {
 protected:
  void Start(GuardLimits limits = {kPlenty, kPlenty, kPlenty, kPlenty, kPlenty}) {
    std::string error;
    service_ = BusService::Start({.address = bus_.address(), .group = group_, .limits = limits},
                                 {.accounts = &accounts_,
                                  .audit = &audit_,
                                  .seen_ids = &seen_ids_,
                                  .flush_events = [] {},
                                  .report = [this](const std::string& line) { Report(line); },
                                  .metrics = [] { return std::string("counts"); },
                                  .on_refusal = [this](Refusal why) { NoteRefusal(why); }},
                                 &error);
    ASSERT_NE(service_, nullptr) << error;
    client_ = qorn::Client::Connect({.address = bus_.address()}, &error);
    ASSERT_NE(client_, nullptr) << error;
    raw_ = bus::Connect(bus_.address(), &error);
  }

  // Calls over raw_, with a number for each "i". The error's name and text; "" for none.
  std::string Call(const std::string& interface, const char* member, const std::string& types,
                   const Texts& texts) {
    sd_bus_message* made = nullptr;
    sd_bus_message_new_method_call(raw_.get(), &made, bus::kService, bus::kObject,
                                   interface.c_str(), member);
    const bus::MessagePtr call(made);
    const int number = 30;
    for (size_t i = 0; i < types.size(); ++i) {
      const void* const value =
          types[i] == 'i' ? static_cast<const void*>(&number) : texts[i].c_str();
      sd_bus_message_append_basic(made, types[i], value);
    }
    sd_bus_error error{};
    sd_bus_call(raw_.get(), made, 0, &error, nullptr);
    const std::string found =
        error.name == nullptr ? "" : std::string(error.name) + ": " + error.message;
    sd_bus_error_free(&error);
    return found;
  }

  // A connection of another user.
  bus::ConnectionPtr ConnectAsStranger() {
    return std::async(std::launch::async,
                      [this] {
                        std::string error;
                        const gid_t groups[] = {kStranger};
                        // The kernel's calls are for this thread alone, unlike the library's.
                        syscall(SYS_setgroups, 1, groups);
                        syscall(SYS_setresgid, -1, kStranger, -1);
                        syscall(SYS_setresuid, -1, kStranger, -1);
                        bus::ConnectionPtr connection = bus::Connect(bus_.address(), &error);
                        if (connection == nullptr) throw std::runtime_error(error);
                        return connection;
                      })
        .get();
  }

  void Report(const std::string& line) {
    const std::lock_guard<std::mutex> hold(mutex_);
    reports_.push_back(line);
    reported_.notify_all();
  }
  void WaitForReports(size_t count) {
    std::unique_lock<std::mutex> hold(mutex_);
    reported_.wait(hold, [&] { return reports_.size() >= count; });
  }

  void NoteRefusal(Refusal refusal) {
    const std::lock_guard<std::mutex> hold(mutex_);
    refusals_.push_back(refusal);
  }
  std::vector<Refusal> Refusals() {
    const std::lock_guard<std::mutex> hold(mutex_);
    return refusals_;
  }

  PrivateBus bus_;
  std::string group_ = "qorn";
  Accounts accounts_;
  Audit audit_;
  SeenIds seen_ids_;
  std::mutex mutex_;
  std::condition_variable reported_;
  Texts reports_;
  std::vector<Refusal> refusals_;
  std::unique_ptr<BusService> service_;
  std::unique_ptr<qorn::Client> client_;
  bus::ConnectionPtr raw_;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_TESTS_BUS_SERVICE_FIXTURE_H_
