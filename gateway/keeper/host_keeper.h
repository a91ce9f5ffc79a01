#ifndef QORN_GATEWAY_KEEPER_HOST_KEEPER_H_
#define QORN_GATEWAY_KEEPER_HOST_KEEPER_H_

#include <memory>

#include "gateway/host/host.h"
#include "gateway/keeper/keeper.h"

namespace gateway {

// What the program does with the keeper's news: as in Keeper::Parts.
struct KeeperListener {
  std::function<void(const keeper::User& user, int result, const char* what)> on_refresh;
  std::function<void(const keeper::User& user, bool needed)> on_sign_in_needed;
  std::function<void(const std::string& line)> report;
};

// A keeper of the host's accounts, borrowed, by the system's clocks, with its state beside the
// database. Not started.
std::unique_ptr<Keeper> MakeKeeper(const Host& host, int hours, const KeeperListener& listener);

}  // namespace gateway

#endif  // QORN_GATEWAY_KEEPER_HOST_KEEPER_H_
