// consumer CONFIG COMPONENT: prints the session lifetime that the component answers with.
#include <iostream>

#include "core_fw/account/include/account_manager.h"
#include "runtime/runtime.h"

int main(int argc, char** argv) {
  std::string error;
  runtime::Runtime* runtime = argc == 3 ? runtime::Runtime::Create(argv[1], &error) : nullptr;
  void* found = nullptr;
  if (runtime == nullptr || !runtime->LoadComponent(argv[2], &error) ||
      !runtime->QueryInterface("account_interface", &found)) {
    std::cerr << "consumer: " << error << "\n";
    return 1;
  }
  int minutes = 0;
  const AccountResult result = static_cast<AccountManager*>(found)->GetSessionLifetime(&minutes);
  std::cout << "result " << result << " minutes " << minutes << "\n";
  runtime::Runtime::Destroy();
  return result == kAccountSuccess ? 0 : 1;
}
