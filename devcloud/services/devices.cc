#include "devcloud/services/devices.h"

#include <algorithm>
#include <utility>

namespace devcloud {
namespace {

bool HasUser(const Device& device, const std::string& guid) {
  return std::find(device.users.begin(), device.users.end(), guid) != device.users.end();
}

}  // namespace

void Devices::Add(const std::string& physical_address) {
  base::AutoLock lock(lock_);
  FindOrAdd(physical_address);
}

void Devices::Register(const std::string& guid, const std::string& physical_address) {
  base::AutoLock lock(lock_);
  Device& device = FindOrAdd(physical_address);
  if (!HasUser(device, guid)) device.users.push_back(guid);
}

bool Devices::Unregister(const std::string& guid, const std::string& physical_address) {
  base::AutoLock lock(lock_);
  // A list and not a map: the page shows devices in the order in which they came.
  for (Device& device : devices_) {
    if (device.physical_address == physical_address) return std::erase(device.users, guid) > 0;
  }
  return false;
}

bool Devices::IsRegistered(const std::string& guid, const std::string& physical_address) const {
  base::AutoLock lock(lock_);
  const Device* device = Find(physical_address);
  return device != nullptr && HasUser(*device, guid);
}

std::vector<std::string> Devices::AddressesOf(const std::string& guid) const {
  base::AutoLock lock(lock_);
  std::vector<std::string> addresses;
  for (const Device& device : devices_) {
    if (HasUser(device, guid)) addresses.push_back(device.physical_address);
  }
  return addresses;
}

std::vector<Device> Devices::devices() const {
  base::AutoLock lock(lock_);
  return devices_;
}

void Devices::Restore(std::vector<Device> devices) {
  base::AutoLock lock(lock_);
  devices_ = std::move(devices);
}

const Device* Devices::Find(const std::string& physical_address) const {
  for (const Device& device : devices_) {
    if (device.physical_address == physical_address) return &device;
  }
  return nullptr;
}

Device& Devices::FindOrAdd(const std::string& physical_address) {
  for (Device& device : devices_) {
    if (device.physical_address == physical_address) return device;
  }
  devices_.push_back({physical_address, {}});
  return devices_.back();
}

}  // namespace devcloud
