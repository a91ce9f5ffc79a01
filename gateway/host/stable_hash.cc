#include "gateway/host/stable_hash.h"

namespace gateway {

// FNV-1a, then mixed, since names that differ at their end alone would stay close to each other.
uint64_t StableHash(const std::string& name) {
  uint64_t hash = 0xcbf29ce484222325;
  for (const char c : name) {
    hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  }
  hash = (hash ^ (hash >> 33)) * 0xff51afd7ed558ccd;
  return hash ^ (hash >> 33);
}

}  // namespace gateway
