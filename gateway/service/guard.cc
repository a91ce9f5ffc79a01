#include "gateway/service/guard.h"

#include <algorithm>
#include <cmath>

namespace gateway {
namespace {

constexpr size_t kManyUsers = 1024;
constexpr std::chrono::minutes kRefilled{1};

// Until one more is there.
int SecondsUntilOne(double left, double per_second) {
  return std::max(1, static_cast<int>(std::ceil((1 - left) / per_second)));
}

}  // namespace

void Guard::Allowance::Refill(double per_second, double most, Clock::time_point now) {
  const std::chrono::duration<double> passed = now - at;
  left = std::min(most, left + passed.count() * per_second);
  at = now;
}

std::optional<int> Guard::Enter(uid_t user, bool signs_in, Clock::time_point now) {
  const int factor = user == 0 ? 10 : 1;
  if (users_.size() >= kManyUsers) ForgetIdle(now);
  const auto [found, is_new] = users_.try_emplace(user);
  User& known = found->second;
  const double per_second = factor * limits_.calls_per_second;
  const double sign_ins = factor * limits_.sign_ins_per_minute;
  if (is_new)
    known = {.calls = {factor * static_cast<double>(limits_.burst), now},
             .sign_ins = {sign_ins, now}};
  known.calls.Refill(per_second, factor * limits_.burst, now);
  known.sign_ins.Refill(sign_ins / 60, sign_ins, now);
  if (known.in_flight >= factor * limits_.calls_in_flight ||
      (user != 0 && in_flight_ >= limits_.all_calls_in_flight)) {
    return 1;
  }
  if (known.calls.left < 1) return SecondsUntilOne(known.calls.left, per_second);
  if (signs_in && known.sign_ins.left < 1) {
    return SecondsUntilOne(known.sign_ins.left, sign_ins / 60);
  }
  known.calls.left -= 1;
  if (signs_in) known.sign_ins.left -= 1;
  ++known.in_flight;
  if (user != 0) ++in_flight_;
  return std::nullopt;
}

void Guard::Leave(uid_t user) {
  --users_.at(user).in_flight;
  if (user != 0) --in_flight_;
}

void Guard::ForgetIdle(Clock::time_point now) {
  std::erase_if(users_, [now](const auto& each) {
    return each.second.in_flight == 0 && each.second.calls.at + kRefilled < now;
  });
}

}  // namespace gateway
