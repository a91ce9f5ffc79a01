#ifndef QORN_GATEWAY_HOST_FREE_SPACE_H_
#define QORN_GATEWAY_HOST_FREE_SPACE_H_

#include <cstdint>
#include <optional>
#include <string>

namespace gateway {

// The bytes that this process may still write to the folder's file system; none when that is not
// known.
std::optional<uint64_t> FreeBytes(const std::string& folder);

}  // namespace gateway

#endif  // QORN_GATEWAY_HOST_FREE_SPACE_H_
