#include "gateway/service/bus_keys.h"

#include "gateway/operations/result_names.h"

namespace gateway {

constexpr int kMostOfALimit = 1'000'000;

bool ParseBusLimit(const std::string& text, int* limit) {
  int number = 0;
  if (!ParseInt(text, &number) || number < 1 || number > kMostOfALimit) return false;
  *limit = number;
  return true;
}

bool ReadBusKeys(const std::function<std::string(const std::string& key)>& option,
                 BusService::Options* options, std::string* error) {
  const std::string group = option(kBusGroupKey);
  if (!group.empty()) options->group = group;
  for (const BusLimitKey& key : kBusLimitKeys) {
    const std::string value = option(key.name);
    if (value.empty() || ParseBusLimit(value, &(options->limits.*key.limit))) continue;
    *error = std::string(key.name) + ": \"" + value + "\" is no number from 1 to 1000000";
    return false;
  }
  return true;
}

}  // namespace gateway
