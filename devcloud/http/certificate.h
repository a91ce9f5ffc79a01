#ifndef QORN_DEVCLOUD_HTTP_CERTIFICATE_H_
#define QORN_DEVCLOUD_HTTP_CERTIFICATE_H_

#include <string>

namespace devcloud {

struct Certificate {
  std::string certificate_pem;
  std::string private_key_pem;
};

// A self-signed certificate with a fresh P-256 key, good for a year, for "localhost" and the given
// IP address. False, with one line in `error`, when the address is none or the library refuses.
bool MakeSelfSigned(const std::string& ip_address, Certificate* certificate, std::string* error);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_CERTIFICATE_H_
