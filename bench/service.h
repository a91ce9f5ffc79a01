// An account service in this process, as the runtime's component makes it.
#ifndef QORN_BENCH_SERVICE_H_
#define QORN_BENCH_SERVICE_H_

#include "core_fw/account/src/account_manager_impl.h"

namespace bench {

// Needs the runtime; one at a time.
class Service {
 public:
  Service() { service_.Init(); }
  ~Service() { service_.Shutdown(); }
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;

  AccountManager& accounts() { return service_; }

 private:
  account::AccountManagerImpl service_;
};

}  // namespace bench

#endif  // QORN_BENCH_SERVICE_H_
