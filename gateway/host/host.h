// The runtime with its components, and what else is known of their files: the storage folder's
// lock, the database's path and its state.
#ifndef QORN_GATEWAY_HOST_HOST_H_
#define QORN_GATEWAY_HOST_HOST_H_

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core_fw/account/include/account_manager.h"
#include "gateway/host/storage_lock.h"

namespace gateway {

// At most one exists in a process. Create and destroy it on the same thread; use it from any.
class Host {
 public:
  // Waits this long before components are loaded; false when the program is to stop instead.
  using StartWait = std::function<bool(std::chrono::seconds)>;

  // Reads the configuration, locks the storage folder, makes storage durable if the configuration
  // says so, loads each component and asks for the account interface. Null with one line in `error`
  // when one of these fails. If the configuration spreads starts, `wait` is called with the lock
  // held, and its false gives null with an empty `error`; without `wait` nothing waits.
  static std::unique_ptr<Host> Start(const std::string& config_file,
                                     const std::vector<std::string>& components, std::string* error,
                                     const StartWait& wait = {});
  // Finalises the components, and so waits for any cloud request that the component's worker makes.
  ~Host();
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  // Valid while the host lives. No operation may be running when the host is destroyed.
  AccountManager* accounts() const { return accounts_; }

  // Asks all components, as for the account interface; null when none has this one.
  void* FindInterface(const std::string& name) const;

  // What was wrong with the database at the start, one line each. The host runs nevertheless: most
  // operations work, and the faults may be mended meanwhile.
  const std::vector<std::string>& storage_faults() const { return storage_faults_; }

  // "" for a key that is absent.
  std::string ConfigOption(const std::string& key) const;

  // The path of the database's file, as the account component finds it; "" when the configuration
  // names none.
  std::string DatabasePath() const;

 private:
  Host() = default;

  // False with a line in `error` when the key's value is wrong.
  bool ReadStartDelay(std::chrono::seconds* delay, std::string* error) const;

  StorageLock lock_;
  std::vector<std::string> storage_faults_;
  AccountManager* accounts_ = nullptr;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_HOST_HOST_H_
