// When each user's tokens are refreshed next, and who must sign in. No clock, no thread, no file.
#ifndef QORN_GATEWAY_KEEPER_SCHEDULE_H_
#define QORN_GATEWAY_KEEPER_SCHEDULE_H_

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace gateway {

// Times are in seconds of a clock that never jumps and counts while the machine sleeps.
namespace keeper {

inline constexpr int64_t kSecond = 1;
inline constexpr int64_t kMinute = 60;
inline constexpr int64_t kHour = 60 * kMinute;
inline constexpr int64_t kDay = 24 * kHour;

// One attempt to refresh.
enum class Outcome {
  kRefreshed,
  kRenewedByAnother,  // the operation failed, but the token is another one
  kRefused,           // or the answer was lost on its way
  kLost,              // the operation succeeded, but the new token was not stored
  kNotSent,           // the cloud was not asked
};

// A stored user with a refresh token.
struct User {
  std::string uuid;
  std::string id;
  std::string token_hash;
};

// What is known of a user's refreshes, and outlives the program.
struct History {
  std::string token_hash;
  int64_t tried = 0;          // the latest attempt that was sent
  int64_t first_refused = 0;  // of those since the latest success; meaningless without refusals
  int refusals = 0;
  bool sign_in_needed = false;
};
using Histories = std::map<std::string, History>;  // by UUID

}  // namespace keeper

// Not thread-safe.
class Schedule {
 public:
  // `device` tells gateways apart; `random` gives numbers from 0 to 1.
  Schedule(int64_t interval, std::string device, std::function<double()> random);

  // The state at the program's start, before the first SetUsers.
  void Load(const keeper::Histories& histories);

  // Who is stored now; the others are forgotten. At the first call overdue users are spread over an
  // hour; those who come later have just been created.
  void SetUsers(const std::vector<keeper::User>& users, int64_t now);

  // The user whose turn is next and when that is; none without users.
  std::optional<std::pair<int64_t, keeper::User>> Next() const;

  // `token_hash` is that of the token after the attempt.
  void NoteOutcome(const std::string& uuid, keeper::Outcome outcome, const std::string& token_hash,
                   int64_t now);
  void NoteSignIn(const std::string& uuid, int64_t now);

  std::vector<keeper::User> SignInNeeded() const;

  // The state to be saved, at most once for each user and day; none while nothing is to be saved.
  std::optional<keeper::Histories> TakeUnsaved(int64_t now);

 private:
  struct Entry {
    keeper::User user;
    keeper::History history;
    int64_t due = 0;
    std::optional<int64_t> refreshed = {};  // the latest success of this run
    int unsent = 0;                         // attempts in a row
    bool unsaved = false;
    std::optional<int64_t> saved = {};
  };

  int64_t FirstDue(const Entry& entry, int64_t now) const;
  void Heal(Entry* entry, int64_t now);
  void NoteRefusal(Entry* entry, int64_t now);
  void JudgeRefused(Entry* entry);

  const int64_t interval_;
  const std::string device_;
  const std::function<double()> random_;
  keeper::Histories loaded_;
  bool started_ = false;
  std::map<std::string, Entry> entries_;  // by UUID
};

}  // namespace gateway

#endif  // QORN_GATEWAY_KEEPER_SCHEDULE_H_
