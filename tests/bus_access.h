// The account interface over a bus of its own, for scenarios.
#ifndef QORN_TESTS_BUS_ACCESS_H_
#define QORN_TESTS_BUS_ACCESS_H_

#include <memory>

#include "core_fw/account/include/account_manager.h"

namespace scenarios {

// While it lives, a service offers the accounts on the bus and a client calls it.
class BusAccess {
 public:
  virtual ~BusAccess() = default;
  virtual AccountManager* accounts() = 0;
};

std::shared_ptr<BusAccess> MakeBusAccess(AccountManager* accounts);

}  // namespace scenarios

#endif  // QORN_TESTS_BUS_ACCESS_H_
