#ifndef QORN_DEVCLOUD_SERVICES_SECRETS_H_
#define QORN_DEVCLOUD_SERVICES_SECRETS_H_

#include <string>

namespace devcloud {

// Returns 32 random hexadecimal digits, so that even shortened secrets differ. Throws
// std::runtime_error if the system has no random bytes.
std::string NewSecret();

// The first four characters and "…", the form in which secrets are displayed.
std::string Shorten(const std::string& secret);

// Returns a random text in the format of a UUID.
std::string NewGuid();

// "PEER-", the address, "-" and eight digits of the address's SHA-256.
std::string PeerIdOf(const std::string& physical_address);

// RFC 4648 section 4, with padding and without line breaks.
std::string Base64(const std::string& bytes);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_SERVICES_SECRETS_H_
