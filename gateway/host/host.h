// The platform's runtime with the components that it holds.
#ifndef QORN_GATEWAY_HOST_HOST_H_
#define QORN_GATEWAY_HOST_HOST_H_

#include <memory>
#include <string>
#include <vector>

#include "core_fw/account/include/account_manager.h"
#include "gateway/host/storage_lock.h"

namespace gateway {

// One at a time in a process. Made and destroyed on one thread; in between usable from any.
class Host {
 public:
  // Reads the configuration, takes the storage folder, loads each component and asks for the
  // account interface. Null with one line in `error` when one of these fails.
  static std::unique_ptr<Host> Start(const std::string& config_file,
                                     const std::vector<std::string>& components,
                                     std::string* error);
  // Finalises the components. Waits for a cloud exchange that the component's worker is in.
  ~Host();
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  // Valid while the host lives; the caller has left all operations before it is destroyed.
  AccountManager* accounts() const { return accounts_; }

  // What was wrong with the database when the host started, a line each; the host runs all the
  // same.
  const std::vector<std::string>& storage_faults() const { return storage_faults_; }

  // "" for a key that is absent.
  std::string ConfigOption(const std::string& key) const;

  // The path of the database's file, as the account component finds it; "" when the configuration
  // names none.
  std::string DatabasePath() const;

 private:
  Host() = default;

  StorageLock lock_;
  std::vector<std::string> storage_faults_;
  AccountManager* accounts_ = nullptr;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_HOST_HOST_H_
