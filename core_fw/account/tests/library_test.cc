// The built library, loaded as the runtime loads it: exports, table of operations, life cycle.
#include <dlfcn.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <thread>
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
  }

  // The lines that hold `part`.
  std::vector<std::string> Lines(const std::string& part) {
    std::vector<std::string> found;
    for (const std::string& line : log_.Take()) {
      if (line.find(part) != std::string::npos) found.push_back(line);
    }
    return found;
  }

  // Whether the place of the table holds the operation of that name.
  template <typename... Parameters>
  void CheckSlot(size_t slot, const std::string& name,
                 AccountResult (AccountManager::*operation)(Parameters...));
  template <typename... Operations>
  void CheckSlots(const std::pair<const char*, Operations>&... operations) {
    size_t slot = 0;
    (CheckSlot(slot++, operations.first, operations.second), ...);
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

// Something to pass for a parameter: "x", 100, or a place that outlives the call.
template <typename Parameter>
Parameter Argument() {
  static std::remove_cvref_t<std::remove_pointer_t<Parameter>> value{};
  if constexpr (std::is_pointer_v<Parameter>) {
    return &value;
  } else {
    if constexpr (std::is_same_v<Parameter, int>) value = 100;
    if constexpr (std::is_same_v<Parameter, const std::string&>) value = "x";
    return value;
  }
}

// Calls what stands in the object's table, not what the compiler believes to be there.
template <typename... Parameters>
void LibraryTest::CheckSlot(size_t slot, const std::string& name,
                            AccountResult (AccountManager::* /*operation*/)(Parameters...)) {
  AccountManager* const service = Ask();
  void* const* const table = *reinterpret_cast<void***>(service);
  auto* const call = reinterpret_cast<int (*)(AccountManager*, Parameters...)>(table[slot]);
  log_.Take();
  const int result = call(service, Argument<Parameters>()...);
  const std::vector<std::string> lines = log_.Take();
  ASSERT_FALSE(lines.empty()) << slot << " " << name;
  EXPECT_THAT(lines.front(), HasSubstr("#" + name + "#  ")) << slot;
  EXPECT_TRUE(name == "GetNetworkSettingStatus" ? result == 0 : result >= 1 && result <= 19)
      << name << " " << result;
}

TEST_F(LibraryTest, OperationsStandAtTheirPlaces) {
  StartRuntime();
  Component* component = Load();
  ASSERT_TRUE(component->Init(runtime::Runtime::GetInstance()));
#define OPERATION(name) std::pair(#name, &AccountManager::name)
  CheckSlots(OPERATION(CreateUser), OPERATION(CreateUserRequest), OPERATION(GetUserCreationRequest),
             OPERATION(RemoveUser), OPERATION(RemoveUserRequest), OPERATION(SearchUser),
             OPERATION(GetUserUUIDFromUserID), OPERATION(GetFriendUUIDFromFriendIDAndFriendPeerID),
             OPERATION(SignIn), OPERATION(SignInAlt), OPERATION(SignOut),
             OPERATION(GetAllUsersUUID), OPERATION(GetUserInfoByType), OPERATION(SetUserInfoByType),
             OPERATION(GetUserInformation), OPERATION(AddFriendToDB), OPERATION(AddFriendCandidate),
             OPERATION(AddFriendRequest), OPERATION(RemoveFriendFromDB),
             OPERATION(RemoveFriendRequest), OPERATION(GetAllFriendsUUID),
             OPERATION(GetFriendInformation), OPERATION(DoFactoryReset), OPERATION(GetSessionInfo),
             OPERATION(CheckSessionValidation), OPERATION(ResetCountForSessionMaintenance),
             OPERATION(GetSessionLifetime), OPERATION(SetSessionLifetime),
             OPERATION(GetNetworkSettingStatus), OPERATION(GetNTSServerInfoAndPeerID),
             OPERATION(ParseAccountMessage), OPERATION(RefreshAccessToken));
#undef OPERATION
  // Two places belong to the destructor; the shell's two operations follow.
  AccountManager* const service = Ask();
  auto* const table = *reinterpret_cast<void***>(service);
  EXPECT_TRUE(reinterpret_cast<bool (*)(AccountManager*)>(table[35])(service));  // Shutdown
  EXPECT_TRUE(reinterpret_cast<bool (*)(AccountManager*)>(table[34])(service));  // Init
  int lifetime = 0;
  EXPECT_EQ(service->GetSessionLifetime(&lifetime), 1);
  EXPECT_EQ(lifetime, 30);
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
  const AccountManager* service = Ask();
  EXPECT_EQ(Ask(), service);
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

TEST_F(LibraryTest, WithoutARuntimeItStartsAndSaysWhatIsMissing) {
  Component* component = Load();
  EXPECT_TRUE(component->Init(nullptr));
  EXPECT_THAT(Lines("failed as there is no"),
              ElementsAre(HasSubstr("no db file name in config.xml"),
                          HasSubstr("no OAuth_AsClient_app_name in config.xml")));
  std::vector<std::string> list;
  EXPECT_EQ(Ask()->GetAllUsersUUID(&list), 3);
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
  void* out = nullptr;
  EXPECT_FALSE(component->QueryInterface("Account_interface", &out));  // That is not asking.
  EXPECT_TRUE(component->Finalize());
  EXPECT_THAT(threads(), HasSubstr("AccountCheckThr;"));  // Cut to the kernel's 15 characters.
  Ask();
  EXPECT_TRUE(component->Finalize());
  // The system may list a thread for a moment after it was joined.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (threads().find("AccountCheckThr;") != std::string::npos &&
         std::chrono::steady_clock::now() < deadline) {
    std::this_thread::yield();
  }
  EXPECT_THAT(threads(), Not(HasSubstr("AccountCheckThr;")));
}

TEST_F(LibraryTest, ItIsDestroyedOnceAndUnmapped) {
  // The last line obeys the platform's level alone. The component's level holds from the start.
  config_["account_log_level"] = "LOG_FATAL";
  config_.erase("account_service");
  for (const int level : {4, 5}) {
    StartRuntime();
    Load()->Init(runtime::Runtime::GetInstance());
    EXPECT_THAT(Lines("failed as there is no"), IsEmpty());
    logging::SetMinLogLevel(level);
    EXPECT_THAT(Maps(), HasSubstr(QORN_ACCOUNT_LIBRARY));
    Unload();
    EXPECT_THAT(Maps(), Not(HasSubstr(QORN_ACCOUNT_LIBRARY)));
    EXPECT_EQ(Lines("4 core_fw/runtime/component.cc: COMPONENT_DESTROY is called\t").size(),
              level == 4 ? 1u : 0u);
    logging::SetMinLogLevel(0);
  }
}

}  // namespace
}  // namespace account
