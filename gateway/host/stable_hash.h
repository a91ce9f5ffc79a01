// A hash of a name that is the same in each version and on each machine, unlike std::hash.
#ifndef QORN_GATEWAY_HOST_STABLE_HASH_H_
#define QORN_GATEWAY_HOST_STABLE_HASH_H_

#include <cstdint>
#include <string>

namespace gateway {

// Spreads evenly over all numbers, also for names that differ only at their end. It keeps no
// secret. Any thread.
uint64_t StableHash(const std::string& name);

}  // namespace gateway

#endif  // QORN_GATEWAY_HOST_STABLE_HASH_H_
