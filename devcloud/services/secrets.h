#ifndef QORN_DEVCLOUD_SERVICES_SECRETS_H_
#define QORN_DEVCLOUD_SERVICES_SECRETS_H_

#include <string>

namespace devcloud {

// 32 random hexadecimal digits, so that two secrets differ in what Shorten shows too. Throws
// std::runtime_error when the system has no random bytes.
std::string NewSecret();

// The first four characters and "…", as secrets are shown to people.
std::string Shorten(const std::string& secret);

// Random, in the form of a UUID.
std::string NewGuid();

// "PEER-", the address, "-" and eight digits of the address's SHA-256.
std::string PeerIdOf(const std::string& physical_address);

// RFC 4648 section 4, with padding and without line breaks.
std::string Base64(const std::string& bytes);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_SERVICES_SECRETS_H_
