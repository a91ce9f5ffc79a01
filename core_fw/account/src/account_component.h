#ifndef QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_COMPONENT_H_
#define QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_COMPONENT_H_

#include <string>

#include "core_fw/runtime/component.h"

namespace account {

// The component shell: the object that the runtime holds, and through which other components find
// the account service. QueryInterface may be called from any thread once Init has returned;
// everything else is called on the runtime's thread.
class AccountComponent : public Component {
 public:
  AccountComponent() = default;
  // Finalises, and also destroys the component that GetComponent made, if that is another object.
  ~AccountComponent() override;

  // True for "account_interface" only; `*out` is then the service as an AccountManager*. False with
  // `*out` null if the service could not be made. A log handler may ask while the service is being
  // made: it gets the service, but must not call its operations before Init has returned.
  bool QueryInterface(const std::string& name, void** out) override;
  // Makes the service, which starts its worker thread. Always true: problems are only logged, so
  // that the rest of the gateway starts.
  bool Init(void* runtime) override;
  const char* GetName() override;
  // Shuts the service down, but only if its interface was ever handed out. Otherwise the worker
  // thread deliberately keeps running.
  bool Finalize() override;
};

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_COMPONENT_H_
