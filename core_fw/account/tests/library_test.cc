// The built library, loaded as the runtime loads it: exports, table of operations, life cycle.
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <utility>

#include "base/logging.h"
#include "core_fw/account/include/account_manager.h"
#include "core_fw/runtime/component.h"
#include "runtime/runtime.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

std::string LibraryPath() {
  const auto program = std::filesystem::read_symlink("/proc/self/exe");
  return (program.parent_path().parent_path() / "lib" / QORN_ACCOUNT_LIBRARY).string();
}

std::string Maps() {
  std::ifstream file("/proc/self/maps");
  return std::string(std::istreambuf_iterator<char>(file), {});
}

class LibraryTest : public testing::Test {
 protected:
  LibraryTest() {
    std::string name =
        std::string(std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : "/tmp") +
        "/qorn-library-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) std::abort();
    folder_ = name;
    logging::SetLogMessageHandler(
        [this](int severity, const char* file, int, size_t start, const std::string& text) {
          const std::lock_guard<std::mutex> guard(mutex_);
          lines_.push_back(std::to_string(severity) + " " + file + text.substr(start));
          return true;
        });
  }
  ~LibraryTest() override {
    if (component_ != nullptr) Unload();
    runtime::Runtime::Destroy();
    logging::SetLogMessageHandler(nullptr);
    std::filesystem::remove_all(folder_);
  }

  void StartRuntime(const std::string& more_keys = "") {
    const std::string file = folder_ + "/config.xml";
    std::ofstream(file) << "<config><qorn_storage_path>" << folder_
                        << "/</qorn_storage_path><account_db_path>a.db</account_db_path>"
                        << more_keys << "</config>";
    std::string error;
    ASSERT_NE(runtime::Runtime::Create(file, &error), nullptr) << error;
  }

  // The component as the runtime gets it.
  Component* Load() {
    handle_ = dlopen(LibraryPath().c_str(), RTLD_NOW | RTLD_LOCAL);
    EXPECT_NE(handle_, nullptr) << dlerror();
    get_component_ = reinterpret_cast<Component* (*)()>(dlsym(handle_, "GetComponent"));
    EXPECT_NE(get_component_, nullptr);
    component_ = get_component_();
    return component_;
  }

  // Ends worker and component, as a runtime does that handed the interface out, and unmaps.
  void Unload() {
    void* found = nullptr;
    component_->QueryInterface("account_interface", &found);
    delete std::exchange(component_, nullptr);
    EXPECT_EQ(dlclose(handle_), 0);
  }

  // The lines whose text holds `part`.
  std::vector<std::string> Lines(const std::string& part) {
    const std::lock_guard<std::mutex> guard(mutex_);
    std::vector<std::string> found;
    for (const std::string& line : std::exchange(lines_, {})) {
      if (line.find(part) != std::string::npos) found.push_back(line);
    }
    return found;
  }

  std::string folder_;
  Component* (*get_component_)() = nullptr;

 private:
  void* handle_ = nullptr;
  Component* component_ = nullptr;
  std::mutex mutex_;
  std::vector<std::string> lines_;
};

TEST_F(LibraryTest, ExportsGetComponentAlone) {
  const std::string command = "nm -D --defined-only '" + LibraryPath() + "' | awk '{print $NF}'";
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  std::vector<std::string> symbols;
  char line[512];
  while (std::fgets(line, sizeof(line), pipe.get()) != nullptr) symbols.push_back(line);
  EXPECT_THAT(symbols, ElementsAre("GetComponent\n"));
}

using S = const std::string&;
using O = std::string*;
using L = std::vector<std::string>*;

// Calls what stands at a place of the object's table, not what the compiler believes to be there.
template <typename... Args>
int CallSlot(AccountManager* service, std::size_t slot, Args... args) {
  void* const* const table = *reinterpret_cast<void***>(service);
  auto* const function = reinterpret_cast<int (*)(AccountManager*, Args...)>(table[slot]);
  return function(service, args...);
}

TEST_F(LibraryTest, OperationsStandAtTheirPlaces) {
  StartRuntime();
  Component* component = Load();
  ASSERT_TRUE(component->Init(runtime::Runtime::GetInstance()));
  void* found = nullptr;
  ASSERT_TRUE(component->QueryInterface("account_interface", &found));
  auto* const service = static_cast<AccountManager*>(found);
  const std::string s = "x";
  std::string o;
  std::vector<std::string> l;
  bool flag = false;
  int number = 0;
  const auto slot = [&](std::size_t index, const std::string& name, int result) {
    EXPECT_THAT(Lines("#" + name + "#  " + name), Not(IsEmpty())) << index << " " << name;
    EXPECT_TRUE(result >= 1 && result <= 19) << name << " " << result;
  };
  Lines("");
  slot(0, "CreateUser", CallSlot<S, S, O>(service, 0, s, s, &o));
  slot(1, "CreateUserRequest", CallSlot<S, S>(service, 1, s, s));
  slot(2, "GetUserCreationRequest", CallSlot<S, S>(service, 2, s, s));
  slot(3, "RemoveUser", CallSlot<S, S>(service, 3, s, s));
  slot(4, "RemoveUserRequest", CallSlot<S, S>(service, 4, s, s));
  slot(5, "SearchUser", CallSlot<S, S>(service, 5, s, s));
  slot(6, "GetUserUUIDFromUserID", CallSlot<S, O>(service, 6, s, &o));
  slot(7, "GetFriendUUIDFromFriendIDAndFriendPeerID",
       CallSlot<S, S, S, O>(service, 7, s, s, s, &o));
  slot(8, "SignIn", CallSlot<S, S, O, O, bool*>(service, 8, s, s, &o, &o, &flag));
  slot(9, "SignInAlt", CallSlot<S, S, O, O>(service, 9, s, s, &o, &o));
  slot(10, "SignOut", CallSlot<S>(service, 10, s));
  slot(11, "GetAllUsersUUID", CallSlot<L>(service, 11, &l));
  slot(12, "GetUserInfoByType", CallSlot<S, int, O>(service, 12, s, 100, &o));
  slot(13, "SetUserInfoByType", CallSlot<S, int, S>(service, 13, s, 201, s));
  slot(14, "GetUserInformation",
       CallSlot<S, O, O, O, O, O, O, O, O, O>(service, 14, s, &o, &o, &o, &o, &o, &o, &o, &o, &o));
  slot(15, "AddFriendToDB", CallSlot<S, S, S, S, S, S, O>(service, 15, s, s, s, s, s, s, &o));
  slot(16, "AddFriendCandidate", CallSlot<S, S, S, O>(service, 16, s, s, s, &o));
  slot(17, "AddFriendRequest", CallSlot<S, S, S, S, S, S, O>(service, 17, s, s, s, s, s, s, &o));
  slot(18, "RemoveFriendFromDB", CallSlot<S, S, S>(service, 18, s, s, s));
  slot(19, "RemoveFriendRequest", CallSlot<S, S, S>(service, 19, s, s, s));
  slot(20, "GetAllFriendsUUID", CallSlot<S, L>(service, 20, s, &l));
  slot(21, "GetFriendInformation",
       CallSlot<S, O, O, O, O, O, O>(service, 21, s, &o, &o, &o, &o, &o, &o));
  slot(22, "DoFactoryReset", CallSlot<>(service, 22));
  slot(23, "GetSessionInfo", CallSlot<S, O>(service, 23, s, &o));
  slot(24, "CheckSessionValidation", CallSlot<S>(service, 24, s));
  slot(25, "ResetCountForSessionMaintenance", CallSlot<S>(service, 25, s));
  slot(26, "GetSessionLifetime", CallSlot<int*>(service, 26, &number));
  slot(27, "SetSessionLifetime", CallSlot<int>(service, 27, 30));
  EXPECT_EQ(CallSlot<>(service, 28), 0);
  EXPECT_THAT(Lines("#GetNetworkSettingStatus#"), Not(IsEmpty()));
  slot(29, "GetNTSServerInfoAndPeerID",
       CallSlot<O, O, O, O, O, O>(service, 29, &o, &o, &o, &o, &o, &o));
  EXPECT_EQ(CallSlot<S>(service, 30, s), 19);
  EXPECT_THAT(Lines("#ParseAccountMessage#  Failure"), Not(IsEmpty()));
  slot(31, "RefreshAccessToken", CallSlot<S>(service, 31, s));
  // Two places belong to the destructor; the shell's two operations follow.
  auto* const table = *reinterpret_cast<void***>(service);
  auto* const shutdown = reinterpret_cast<bool (*)(AccountManager*)>(table[35]);
  auto* const init = reinterpret_cast<bool (*)(AccountManager*)>(table[34]);
  EXPECT_TRUE(shutdown(service));
  EXPECT_TRUE(init(service));
  EXPECT_EQ(service->GetSessionLifetime(&number), 1);
  EXPECT_TRUE(component->Finalize());
}

TEST_F(LibraryTest, OneComponentAndOneService) {
  StartRuntime();
  Component* component = Load();
  EXPECT_EQ(get_component_(), component);
  EXPECT_STREQ(component->GetName(), "account");
  EXPECT_TRUE(component->Init(nullptr));  // A null runtime object is no failure.
  EXPECT_TRUE(component->Start());
  EXPECT_EQ(component->QueryState(), 0);
  int marker = 0;
  void* out = &marker;
  for (const char* name : {"Account_interface", "account_interfacE", "account_interface ", ""}) {
    EXPECT_FALSE(component->QueryInterface(name, &out));
    EXPECT_EQ(out, &marker);
  }
  void* again = nullptr;
  EXPECT_TRUE(component->QueryInterface("account_interface", &out));
  EXPECT_TRUE(component->QueryInterface("account_interface", &again));
  EXPECT_EQ(out, again);
  EXPECT_TRUE(component->Finalize());
  EXPECT_TRUE(component->Finalize());
  EXPECT_TRUE(component->QueryInterface("account_interface", &again));
  EXPECT_EQ(out, again);
}

TEST_F(LibraryTest, WithoutARuntimeItStartsAndSaysWhatIsMissing) {
  Component* component = Load();
  EXPECT_TRUE(component->Init(nullptr));
  EXPECT_THAT(Lines("failed as there is no"),
              ElementsAre(HasSubstr("no db file name in config.xml"),
                          HasSubstr("no OAuth_AsClient_app_name in config.xml")));
  void* found = nullptr;
  ASSERT_TRUE(component->QueryInterface("account_interface", &found));
  std::vector<std::string> list;
  EXPECT_EQ(static_cast<AccountManager*>(found)->GetAllUsersUUID(&list), 3);
  EXPECT_TRUE(component->Finalize());
}

TEST_F(LibraryTest, FinalizeKeepsTheWorkerWhileNobodyAskedForTheInterface) {
  StartRuntime();
  Component* component = Load();
  component->Init(runtime::Runtime::GetInstance());
  const auto threads = [] {
    std::string names;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
      std::string name;
      std::getline(std::ifstream(task.path() / "comm"), name);
      names += name + ";";
    }
    return names;
  };
  EXPECT_TRUE(component->Finalize());
  EXPECT_THAT(threads(), HasSubstr("AccountCheckThr;"));  // Cut to the kernel's 15 characters.
  void* found = nullptr;
  component->QueryInterface("account_interface", &found);
  EXPECT_TRUE(component->Finalize());
  EXPECT_THAT(threads(), Not(HasSubstr("AccountCheckThr;")));
}

TEST_F(LibraryTest, TheLogLevelIsReadFromTheConfiguration) {
  const struct {
    const char* value;
    bool progress;
    bool failures;
  } cases[] = {{"LOG_VERBOSE", true, true},
               {"LOG_INTERNAL_DETAILED_INFO", true, true},
               {"LOG_INTERNAL_INFO", true, true},
               {"LOG_INFO", true, true},
               {"LOG_WARNING", false, true},
               {"LOG_ERROR", false, true},
               {"LOG_ERROR_REPORT", false, false},
               {"LOG_FATAL", false, false},
               {"log_error", false, false},  // Matches none: the level stays.
               {"", false, false}};
  Component* component = Load();
  void* found = nullptr;
  component->QueryInterface("account_interface", &found);
  auto* const service = static_cast<AccountManager*>(found);
  for (const auto& c : cases) {
    runtime::Runtime::Destroy();
    StartRuntime("<account_log_level>" + std::string(c.value) + "</account_log_level>");
    component->Init(runtime::Runtime::GetInstance());
    Lines("");
    service->SignOut("x");
    const std::vector<std::string> lines = Lines("#SignOut#");
    EXPECT_EQ(testing::Value(lines, Contains(HasSubstr("SignOutStart"))), c.progress) << c.value;
    EXPECT_EQ(testing::Value(lines, Contains(HasSubstr("SignOutEnd"))), c.failures) << c.value;
  }
  EXPECT_TRUE(component->Finalize());
}

TEST_F(LibraryTest, ItIsDestroyedOnceAndUnmapped) {
  for (int round = 0; round < 2; ++round) {
    // The last line obeys the platform's level alone.
    StartRuntime("<account_log_level>LOG_FATAL</account_log_level>");
    Component* component = Load();
    component->Init(runtime::Runtime::GetInstance());
    logging::SetMinLogLevel(round == 0 ? 4 : 5);
    Lines("");
    EXPECT_THAT(Maps(), HasSubstr(QORN_ACCOUNT_LIBRARY));
    Unload();
    EXPECT_THAT(Maps(), Not(HasSubstr(QORN_ACCOUNT_LIBRARY)));
    const std::vector<std::string> lines = Lines(": COMPONENT_DESTROY is called");
    EXPECT_EQ(lines.size(), round == 0 ? 1u : 0u);
    if (round == 0) {
      EXPECT_THAT(lines.at(0), testing::StartsWith(
                                   "4 core_fw/runtime/component.cc: COMPONENT_DESTROY is called"));
    }
    logging::SetMinLogLevel(0);
    runtime::Runtime::Destroy();
  }
}

TEST_F(LibraryTest, TheRuntimeLoadsAndEndsIt) {
  StartRuntime();
  std::string error;
  ASSERT_TRUE(runtime::Runtime::GetInstance()->LoadComponent(LibraryPath(), &error)) << error;
  void* found = nullptr;
  ASSERT_TRUE(runtime::Runtime::GetInstance()->QueryInterface("account_interface", &found));
  std::vector<std::string> list;
  EXPECT_EQ(static_cast<AccountManager*>(found)->GetAllUsersUUID(&list), 1);
  EXPECT_THAT(list, ElementsAre("qornsystem"));
  Lines("");
  runtime::Runtime::Destroy();
  EXPECT_EQ(Lines("COMPONENT_DESTROY").size(), 1u);
}

}  // namespace
