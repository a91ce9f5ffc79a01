#ifndef QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_COMPONENT_H_
#define QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_COMPONENT_H_

#include <string>

#include "core_fw/runtime/component.h"

namespace account {

// The library's component: what the runtime holds, and through which others find the service.
// QueryInterface may be called from any thread once Init is over; the rest comes from the
// runtime's.
class AccountComponent : public Component {
 public:
  AccountComponent() = default;
  // Finalises, and ends the component that GetComponent made if it is another one.
  ~AccountComponent() override;

  // True for "account_interface" alone: `*out` is then the service as an AccountManager*. False,
  // with `*out` null, when the service could not be made.
  bool QueryInterface(const std::string& name, void** out) override;
  // Always true; what the service finds wrong is logged. Makes the service and starts its worker
  // thread.
  bool Init(void* runtime) override;
  const char* GetName() override;
  // Shuts the service down if its interface was ever handed out; otherwise the worker thread goes
  // on deliberately, since nobody is known to be done with it.
  bool Finalize() override;
};

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_COMPONENT_H_
