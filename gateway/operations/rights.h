// What a caller from outside the process may do. Each operation names the one right that it needs.
#ifndef QORN_GATEWAY_OPERATIONS_RIGHTS_H_
#define QORN_GATEWAY_OPERATIONS_RIGHTS_H_

namespace gateway {

enum class Right {
  kLook,     // read everything but tokens
  kSignIn,   // open, keep and close sessions
  kManage,   // change users, friends and the lifetime of sessions
  kSecrets,  // read tokens
  kReset,    // delete everything
};

// "look", "sign-in", ...: as polkit's actions end.
constexpr const char* RightName(Right right) {
  switch (right) {
    case Right::kLook:
      return "look";
    case Right::kSignIn:
      return "sign-in";
    case Right::kManage:
      return "manage";
    case Right::kSecrets:
      return "secrets";
    case Right::kReset:
      break;
  }
  return "reset";
}

}  // namespace gateway

#endif  // QORN_GATEWAY_OPERATIONS_RIGHTS_H_
