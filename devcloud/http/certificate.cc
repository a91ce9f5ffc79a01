#include "devcloud/http/certificate.h"

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <cstdint>
#include <memory>

namespace devcloud {
namespace {

struct OpenSslDeleter {
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
  void operator()(X509* certificate) const { X509_free(certificate); }
  void operator()(X509_EXTENSION* extension) const { X509_EXTENSION_free(extension); }
  void operator()(BIO* bio) const { BIO_free(bio); }
  void operator()(ASN1_OCTET_STRING* text) const { ASN1_OCTET_STRING_free(text); }
};

using Key = std::unique_ptr<EVP_PKEY, OpenSslDeleter>;
using Bio = std::unique_ptr<BIO, OpenSslDeleter>;

constexpr long kYearSeconds = 365L * 24 * 3600;

// Clients tell certificates apart by issuer and serial number. The issuer is always the same, so
// each start needs another serial number.
bool SetSerial(X509* certificate) {
  std::int64_t serial = 0;
  if (RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof(serial)) != 1) return false;
  return ASN1_INTEGER_set_int64(X509_get_serialNumber(certificate), serial & INT64_MAX) == 1;
}

bool SetNames(X509* certificate, const std::string& ip_address) {
  X509_NAME* name = X509_get_subject_name(certificate);
  const auto* common_name = reinterpret_cast<const unsigned char*>("localhost");
  if (X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, common_name, -1, -1, 0) != 1 ||
      X509_set_issuer_name(certificate, name) != 1) {
    return false;
  }
  // Clients match these names and ignore the common name (RFC 6125 section 6.4.4).
  const std::string names = "DNS:localhost,IP:" + ip_address;
  const std::unique_ptr<X509_EXTENSION, OpenSslDeleter> extension(
      X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, names.c_str()));
  return extension != nullptr && X509_add_ext(certificate, extension.get(), -1) == 1;
}

bool FillAndSign(X509* certificate, EVP_PKEY* key, const std::string& ip_address) {
  return X509_set_version(certificate, X509_VERSION_3) == 1 && SetSerial(certificate) &&
         X509_gmtime_adj(X509_getm_notBefore(certificate), 0) != nullptr &&
         X509_gmtime_adj(X509_getm_notAfter(certificate), kYearSeconds) != nullptr &&
         SetNames(certificate, ip_address) && X509_set_pubkey(certificate, key) == 1 &&
         X509_sign(certificate, key, EVP_sha256()) != 0;
}

std::string TextOf(BIO* bio) {
  char* text = nullptr;
  const long size = BIO_get_mem_data(bio, &text);
  return {text, static_cast<std::size_t>(size)};
}

}  // namespace

bool MakeSelfSigned(const std::string& ip_address, Certificate* certificate, std::string* error) {
  if (std::unique_ptr<ASN1_OCTET_STRING, OpenSslDeleter>(a2i_IPADDRESS(ip_address.c_str())) ==
      nullptr) {
    *error = ip_address + ": not an IP address";
    return false;
  }
  const Key key(EVP_EC_gen("P-256"));
  const std::unique_ptr<X509, OpenSslDeleter> x509(X509_new());
  const Bio certificate_text(BIO_new(BIO_s_mem()));
  const Bio key_text(BIO_new(BIO_s_mem()));
  if (!key || !x509 || !certificate_text || !key_text ||
      !FillAndSign(x509.get(), key.get(), ip_address) ||
      PEM_write_bio_X509(certificate_text.get(), x509.get()) != 1 ||
      PEM_write_bio_PrivateKey(key_text.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr) !=
          1) {
    *error = ip_address + ": no certificate can be made";
    return false;
  }
  *certificate = {TextOf(certificate_text.get()), TextOf(key_text.get())};
  return true;
}

}  // namespace devcloud
