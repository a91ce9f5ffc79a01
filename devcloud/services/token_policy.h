#ifndef QORN_DEVCLOUD_SERVICES_TOKEN_POLICY_H_
#define QORN_DEVCLOUD_SERVICES_TOKEN_POLICY_H_

#include <chrono>

namespace devcloud {

// How long tokens live, and what happens to a refresh token that is used. Lifetimes hold for tokens
// issued from then on; the rest holds at once.
struct TokenPolicy {
  enum class Rotation {
    kAlways,  // a refresh token works once; each use gives a new one
    kGrace,   // it works again for `grace` after its first use; each use gives a new one
    kNever,   // it works until it expires; each use gives the same one
  };
  // What the use of a refresh token that was replaced and works no longer means (RFC 9700 section
  // 4.14.2).
  enum class Reuse {
    kIgnore,      // it is refused
    kRevokeUser,  // it is refused, and the user's tokens end: a thief may have one of them
  };

  std::chrono::seconds access_lifetime = std::chrono::hours(1);
  std::chrono::seconds refresh_lifetime = std::chrono::seconds(0);  // 0: they do not expire
  Rotation rotation = Rotation::kAlways;
  std::chrono::seconds grace = std::chrono::seconds(0);
  Reuse reuse = Reuse::kIgnore;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_SERVICES_TOKEN_POLICY_H_
