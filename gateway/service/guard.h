// How much each user may ask for, so that nobody takes the gateway's time from the others.
#ifndef QORN_GATEWAY_SERVICE_GUARD_H_
#define QORN_GATEWAY_SERVICE_GUARD_H_

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <unordered_map>

namespace gateway {

// For each user; root has ten times as much.
struct GuardLimits {
  int calls_per_second = 20;
  int burst = 40;  // calls at once after a pause
  int calls_in_flight = 8;
  int all_calls_in_flight = 32;  // of all users but root together
  int sign_ins_per_minute = 10;
};

// Not thread-safe.
class Guard {
 public:
  using Clock = std::chrono::steady_clock;

  explicit Guard(const GuardLimits& limits) : limits_(limits) {}

  // Admits a call, at whose end Leave must be called, or gives the whole seconds after which to try
  // again.
  std::optional<int> Enter(uid_t user, bool signs_in, Clock::time_point now);
  void Leave(uid_t user);

 private:
  // Fills up with time, to `most`.
  struct Allowance {
    double left = 0;
    Clock::time_point at{};

    void Refill(double per_second, double most, Clock::time_point now);
  };
  struct User {
    Allowance calls, sign_ins;
    int in_flight = 0;
  };

  // Forgets users who have nothing in flight and whose allowances have been refilled.
  void ForgetIdle(Clock::time_point now);

  const GuardLimits limits_;
  std::unordered_map<uid_t, User> users_;
  int in_flight_ = 0;  // of all users but root
};

}  // namespace gateway

#endif  // QORN_GATEWAY_SERVICE_GUARD_H_
