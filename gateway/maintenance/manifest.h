#ifndef QORN_GATEWAY_MAINTENANCE_MANIFEST_H_
#define QORN_GATEWAY_MAINTENANCE_MANIFEST_H_

#include <cstddef>
#include <ctime>
#include <string>

namespace gateway {

// What a copy of the database says about itself: its file manifest.json.
struct Manifest {
  std::time_t time = 0;        // when the copy was made
  std::string device_address;  // of the gateway that it was made on
  size_t users = 0;
  size_t friends = 0;
  bool tokens = false;  // whether the users' tokens are in it
};

// The manifest as JSON, with the SHA-256 of `database` and one of its own text, which is computed
// while its place holds "". The same arguments always give the same bytes.
std::string EncodeManifest(const Manifest& manifest, const std::string& database);

// False, with a reason in `error`, if the text is no manifest or one of a newer format. Does not
// look at the hashes: compare the text with what EncodeManifest makes.
bool DecodeManifest(const std::string& text, Manifest* manifest, std::string* error);

// "2 users, 1 friend, without tokens".
std::string DescribeContent(const Manifest& manifest);

}  // namespace gateway

#endif  // QORN_GATEWAY_MAINTENANCE_MANIFEST_H_
