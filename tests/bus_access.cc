#include <stdexcept>

#include "client/include/qorn_client.h"
#include "evt/event_manager.h"
#include "gateway/service/bus_service.h"
#include "gateway/tests/private_bus.h"
#include "tests/scenario_runner.h"

namespace scenarios {
namespace {

constexpr int kPlenty = 1'000'000;

class BusAccess {
 public:
  explicit BusAccess(AccountManager* accounts) {
    std::string error;
    service_ = gateway::BusService::Start(
        {.address = bus_.address(), .limits = {kPlenty, kPlenty, kPlenty, kPlenty, kPlenty}},
        {.accounts = accounts,
         .audit = &audit_,
         .seen_ids = &seen_ids_,
         .flush_events = [] { evt::EventManager::GetInstance()->Flush(); },
         .report = [](const std::string&) {}},
        &error);
    client_ = qorn::Client::Connect({.address = bus_.address()}, &error);
    if (service_ == nullptr || client_ == nullptr) throw std::runtime_error(error);
  }

  AccountManager* accounts() const { return client_->accounts(); }

 private:
  gateway::PrivateBus bus_;
  gateway::Audit audit_;
  gateway::SeenIds seen_ids_;
  std::unique_ptr<gateway::BusService> service_;
  std::unique_ptr<qorn::Client> client_;
};

}  // namespace

std::shared_ptr<AccountManager> MakeBusAccess(AccountManager* accounts) {
  const auto access = std::make_shared<BusAccess>(accounts);
  return {access, access->accounts()};
}

}  // namespace scenarios
