#ifndef QORN_GATEWAY_PROCESS_SHA256_H_
#define QORN_GATEWAY_PROCESS_SHA256_H_

#include <string>

namespace gateway {

// In lower-case hexadecimal.
std::string Sha256(const std::string& bytes);

}  // namespace gateway

#endif  // QORN_GATEWAY_PROCESS_SHA256_H_
