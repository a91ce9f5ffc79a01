#ifndef QORN_DEVCLOUD_SERVICES_DEVICES_H_
#define QORN_DEVCLOUD_SERVICES_DEVICES_H_

#include <string>
#include <vector>

#include "base/lock.h"
#include "base/thread_annotations.h"

namespace devcloud {

struct Device {
  std::string physical_address;
  std::vector<std::string> users;  // GUIDs, in the order of their registration
};

// The known gateways, in the order in which they were added, and the users registered on each.
// Thread-safe.
class Devices {
 public:
  // Does nothing if the device is known.
  void Add(const std::string& physical_address);

  // Adds the device if it is not known. Does nothing if the user is registered on it.
  void Register(const std::string& guid, const std::string& physical_address);

  // False if there was no such registration. The device stays known.
  bool Unregister(const std::string& guid, const std::string& physical_address);

  bool IsRegistered(const std::string& guid, const std::string& physical_address) const;

  std::vector<std::string> AddressesOf(const std::string& guid) const;
  std::vector<Device> devices() const;
  void Restore(std::vector<Device> devices);

 private:
  // Null if the device is not known.
  const Device* Find(const std::string& physical_address) const EXCLUSIVE_LOCKS_REQUIRED(lock_);
  Device& FindOrAdd(const std::string& physical_address) EXCLUSIVE_LOCKS_REQUIRED(lock_);

  mutable base::Lock lock_;
  std::vector<Device> devices_ GUARDED_BY(lock_);
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_SERVICES_DEVICES_H_
