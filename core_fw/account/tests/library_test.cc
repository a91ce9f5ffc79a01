// The built library, loaded as the runtime loads it: exports, table of operations, life cycle.
#include <dlfcn.h>

#include <array>
#include <bit>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "base/logging.h"
#include "core_fw/account/include/account_manager.h"
#include "core_fw/account/tests/test_support.h"
#include "core_fw/runtime/component.h"
#include "runtime/runtime.h"

namespace account {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class LibraryTest : public AccountTest {
 protected:
  ~LibraryTest() override {
    if (component_ != nullptr) Unload();
    runtime::Runtime::Destroy();
    log_.Take();
  }

  // The component as the runtime gets it.
  Component* Load() {
    handle_ = dlopen(LibraryPath().c_str(), RTLD_NOW | RTLD_LOCAL);
    EXPECT_NE(handle_, nullptr) << dlerror();
    get_component_ = reinterpret_cast<Component* (*)()>(dlsym(handle_, "GetComponent"));
    EXPECT_NE(get_component_, nullptr);
    return component_ = get_component_();
  }

  // The service, asked for as others do.
  AccountManager* Ask() {
    void* found = nullptr;
    EXPECT_TRUE(component_->QueryInterface("account_interface", &found));
    return static_cast<AccountManager*>(found);
  }

  // Ends worker and component, as a runtime does that handed the interface out, and unmaps.
  void Unload() {
    Ask();
    delete std::exchange(component_, nullptr);
    EXPECT_EQ(dlclose(handle_), 0);
    EXPECT_EQ(dlopen(LibraryPath().c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr);
  }

  Component* (*get_component_)() = nullptr;

 private:
  void* handle_ = nullptr;
  Component* component_ = nullptr;
};

// What `nm` with these options says of the library, a symbol a line.
std::vector<std::string> Symbols(const std::string& options) {
  const std::string command =
      "nm -C --defined-only --format=posix " + options + " '" + LibraryPath() + "'";
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  std::vector<std::string> symbols;
  char line[4096];
  while (std::fgets(line, sizeof(line), pipe.get()) != nullptr) symbols.push_back(line);
  return symbols;
}

TEST_F(LibraryTest, ExportsGetComponentAlone) {
  EXPECT_THAT(Symbols("-D"), ElementsAre(testing::StartsWith("GetComponent T")));
}

// Objects with code of this library that the platform could still hold when it is unmapped: shared
// ones, and functions other than the worker's tasks, which end with the worker.
TEST_F(LibraryTest, MakesNothingThatThePlatformDestroys) {
  const std::vector<std::string> symbols = Symbols("");
  ASSERT_THAT(symbols, Contains(HasSubstr("vtable for account::AccountManagerImpl")));
  EXPECT_THAT(symbols, Not(Contains(HasSubstr("std::_Sp_counted_"))));
  EXPECT_THAT(symbols, Not(Contains(testing::ContainsRegex("_Function_handler<[^(]*\\([^)]"))));
}

// Expects the operations from the first place of the table of virtual functions on. A pointer to a
// virtual function holds its offset in bytes, on some processors with the lowest bit set.
template <typename... Operations>
void ExpectInOrder(Operations... operations) {
  using Parts = std::array<size_t, 2>;
  size_t next = 0;
  for (const size_t offset : {std::bit_cast<Parts>(operations)[0]...}) {
    EXPECT_EQ(offset / sizeof(void*), next++);
  }
}

TEST_F(LibraryTest, OperationsStandAtTheirPlaces) {
  StartRuntime();
  Component* component = Load();
  ASSERT_TRUE(component->Init(runtime::Runtime::GetInstance()));
  using A = AccountManager;
  ExpectInOrder(&A::CreateUser, &A::CreateUserRequest, &A::GetUserCreationRequest, &A::RemoveUser,
                &A::RemoveUserRequest, &A::SearchUser, &A::GetUserUUIDFromUserID,
                &A::GetFriendUUIDFromFriendIDAndFriendPeerID, &A::SignIn, &A::SignInAlt,
                &A::SignOut, &A::GetAllUsersUUID, &A::GetUserInfoByType, &A::SetUserInfoByType,
                &A::GetUserInformation, &A::AddFriendToDB, &A::AddFriendCandidate,
                &A::AddFriendRequest, &A::RemoveFriendFromDB, &A::RemoveFriendRequest,
                &A::GetAllFriendsUUID, &A::GetFriendInformation, &A::DoFactoryReset,
                &A::GetSessionInfo, &A::CheckSessionValidation, &A::ResetCountForSessionMaintenance,
                &A::GetSessionLifetime, &A::SetSessionLifetime, &A::GetNetworkSettingStatus,
                &A::GetNTSServerInfoAndPeerID, &A::ParseAccountMessage, &A::RefreshAccessToken);
  // Two places belong to the destructor; the shell's two operations follow.
  AccountManager* const service = Ask();
  auto* const table = *reinterpret_cast<void***>(service);
  EXPECT_TRUE(reinterpret_cast<bool (*)(AccountManager*)>(table[35])(service));  // Shutdown
  EXPECT_TRUE(reinterpret_cast<bool (*)(AccountManager*)>(table[34])(service));  // Init
  EXPECT_TRUE(component->Finalize());
}

// Without a runtime it starts all the same and says what is missing.
TEST_F(LibraryTest, OneComponentAndOneService) {
  Component* component = Load();
  EXPECT_EQ(get_component_(), component);
  EXPECT_STREQ(component->GetName(), "account");
  EXPECT_TRUE(component->Init(nullptr));
  const std::vector<std::string> lines = log_.Take();
  EXPECT_THAT(lines, Contains(HasSubstr("failed as there is no")).Times(2));
  EXPECT_THAT(lines, Contains(HasSubstr("no db file name in config.xml")));
  EXPECT_THAT(lines, Contains(HasSubstr("no OAuth_AsClient_app_name in config.xml")));
  EXPECT_TRUE(component->Start());
  EXPECT_EQ(component->QueryState(), 0);
  int marker = 0;
  void* out = &marker;
  for (const char* name : {"Account_interface", "account_interfacE", "account_interface ", ""}) {
    EXPECT_FALSE(component->QueryInterface(name, &out));
    EXPECT_EQ(out, &marker);
  }
  AccountManager* service = Ask();
  EXPECT_EQ(Ask(), service);
  std::vector<std::string> list;
  EXPECT_EQ(service->GetAllUsersUUID(&list), 3);
  EXPECT_TRUE(component->Finalize());
  EXPECT_TRUE(component->Finalize());
  EXPECT_EQ(Ask(), service);
}

TEST_F(LibraryTest, ALogHandlerMayAskForTheServiceThatIsBeingMade) {
  config_.erase("account_service");
  StartRuntime();
  Component* component = Load();
  const AccountManager* found = nullptr;
  log_.OnLine([&](const std::string& line) {
    if (line.find("no account_service") != std::string::npos) found = Ask();
  });
  EXPECT_TRUE(component->Init(runtime::Runtime::GetInstance()));
  EXPECT_NE(found, nullptr);
  EXPECT_EQ(found, Ask());
}

TEST_F(LibraryTest, FinalizeKeepsTheWorkerWhileNobodyAskedForTheInterface) {
  StartRuntime();
  Component* component = Load();
  component->Init(runtime::Runtime::GetInstance());
  // The name is cut to the kernel's 15 characters.
  const auto has_worker = [] {
    bool found = false;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
      found |= ReadFile(task.path() / "comm") == "AccountCheckThr\n";
    }
    return found;
  };
  void* out = nullptr;
  EXPECT_FALSE(component->QueryInterface("Account_interface", &out));  // That is not asking.
  EXPECT_TRUE(component->Finalize());
  EXPECT_TRUE(has_worker());
  Ask();
  EXPECT_TRUE(component->Finalize());
  // The system may list a thread for a moment after it was joined.
  EXPECT_TRUE(WaitUntil([&] { return !has_worker(); }));
}

TEST_F(LibraryTest, ItIsDestroyedOnceAndUnmapped) {
  // The last line obeys the platform's level alone. The component's level holds from the start.
  config_["account_log_level"] = "LOG_FATAL";
  config_.erase("account_service");
  for (const int level : {4, 5}) {
    StartRuntime();
    Load()->Init(runtime::Runtime::GetInstance());
    EXPECT_THAT(log_.Take(), Not(Contains(HasSubstr("failed as there is no"))));
    logging::SetMinLogLevel(level);
    Unload();
    const auto destruction =
        HasSubstr("4 core_fw/runtime/component.cc: COMPONENT_DESTROY is called\t");
    EXPECT_THAT(log_.Take(), Contains(destruction).Times(level == 4 ? 1 : 0));
    logging::SetMinLogLevel(0);
  }
}

}  // namespace
}  // namespace account
