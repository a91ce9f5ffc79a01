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

// The gateways that the portal knows, in the order in which it came to know them, and who is
// registered on each. Thread-safe.
class Devices {
 public:
  // Nothing happens when the device is known.
  void Add(const std::string& physical_address);

  // Adds a device that is not known. Registering twice is the same as once.
  void Register(const std::string& guid, const std::string& physical_address);

  // False when there was no such registration. The device stays known.
  bool Unregister(const std::string& guid, const std::string& physical_address);

  bool IsRegistered(const std::string& guid, const std::string& physical_address) const;

  std::vector<std::string> AddressesOf(const std::string& guid) const;
  std::vector<Device> devices() const;
  void Restore(std::vector<Device> devices);

 private:
  // Null when the device is not known.
  const Device* Find(const std::string& physical_address) const EXCLUSIVE_LOCKS_REQUIRED(lock_);
  Device& FindOrAdd(const std::string& physical_address) EXCLUSIVE_LOCKS_REQUIRED(lock_);

  mutable base::Lock lock_;
  std::vector<Device> devices_ GUARDED_BY(lock_);
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_SERVICES_DEVICES_H_
