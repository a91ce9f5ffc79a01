#ifndef QORN_DEVCLOUD_HTTP_CERTIFICATE_H_
#define QORN_DEVCLOUD_HTTP_CERTIFICATE_H_

#include <string>

namespace devcloud {

struct Certificate {
  std::string certificate_pem;
  std::string private_key_pem;
};

// Makes a self-signed certificate for "localhost" and the given IP address, with a new P-256 key,
// valid for a year. False, with one line in `error`, if the address is not an IP address or OpenSSL
// fails.
bool MakeSelfSigned(const std::string& ip_address, Certificate* certificate, std::string* error);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_CERTIFICATE_H_
