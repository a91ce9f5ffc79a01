// What the gateway is called on D-Bus. Service and client library share these names; never change
// them.
#ifndef QORN_BUS_NAMES_H_
#define QORN_BUS_NAMES_H_

#include <cstddef>

namespace bus {

inline constexpr char kService[] = "org.qorn.Accounts1";
inline constexpr char kObject[] = "/org/qorn/Accounts1";
// Before a group's name: "org.qorn.Accounts1.Users".
inline constexpr char kInterfacePrefix[] = "org.qorn.Accounts1.";
// Before a result's name without "kAccount": "org.qorn.Accounts1.Error.NoUserWithUserUuid".
inline constexpr char kErrorPrefix[] = "org.qorn.Accounts1.Error.";
// A SignIn whose connection to the account server failed.
inline constexpr char kUnreachable[] = "org.qorn.Accounts1.Error.AccountServerUnreachable";
inline constexpr char kStopping[] = "org.qorn.Accounts1.Error.Stopping";
inline constexpr char kAccessDenied[] = "org.freedesktop.DBus.Error.AccessDenied";
inline constexpr char kInvalidArgs[] = "org.freedesktop.DBus.Error.InvalidArgs";
inline constexpr char kLimitsExceeded[] = "org.freedesktop.DBus.Error.LimitsExceeded";

// The bytes of all strings of a call.
inline constexpr std::size_t kMaxArgumentBytes = std::size_t{64} * 1024;

}  // namespace bus

#endif  // QORN_BUS_NAMES_H_
