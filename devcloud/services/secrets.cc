#include "devcloud/services/secrets.h"

#include <openssl/evp.h>
#include <openssl/rand.h>
#include <openssl/sha.h>

#include <array>
#include <cstddef>
#include <stdexcept>

namespace devcloud {
namespace {

std::string Hex(const unsigned char* bytes, std::size_t size) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (std::size_t i = 0; i < size; ++i) {
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 15];
  }
  return text;
}

std::string RandomHex() {
  std::array<unsigned char, 16> bytes;
  if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1) {
    throw std::runtime_error("no random bytes");
  }
  return Hex(bytes.data(), bytes.size());
}

}  // namespace

std::string NewSecret() { return RandomHex(); }

std::string Shorten(const std::string& secret) { return secret.substr(0, 4) + "…"; }

std::string NewGuid() {
  std::string guid = RandomHex();
  for (const std::size_t position : {8u, 13u, 18u, 23u}) guid.insert(position, 1, '-');
  return guid;
}

// A hash and not a counter: the peer ID must survive a restart without a state file.
std::string PeerIdOf(const std::string& physical_address) {
  std::array<unsigned char, SHA256_DIGEST_LENGTH> digest;
  SHA256(reinterpret_cast<const unsigned char*>(physical_address.data()), physical_address.size(),
         digest.data());
  return "PEER-" + physical_address + "-" + Hex(digest.data(), 4);
}

std::string Base64(const std::string& bytes) {
  // Four characters for every three bytes, and one for the zero that OpenSSL appends.
  std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
  const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                                     reinterpret_cast<const unsigned char*>(bytes.data()),
                                     static_cast<int>(bytes.size()));
  text.resize(static_cast<std::size_t>(length));
  return text;
}

}  // namespace devcloud
