#include "gateway/keeper/schedule.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "gateway/host/stable_hash.h"

namespace gateway {

using namespace keeper;  // NOLINT: this file is about nothing else

namespace {

constexpr int64_t kSpread = kHour;
constexpr int64_t kSoon = 10 * kSecond;
constexpr int64_t kFirstPause = kMinute;
constexpr int64_t kLongestPause = 6 * kHour;
constexpr double kJitter = 0.2;
// Another user's success this close to a refusal shows that the account server works.
constexpr int64_t kRound = kHour;
constexpr int kConclusiveRefusals = 3;

int64_t SpreadOf(const std::string& device, const std::string& user) {
  return static_cast<int64_t>(StableHash(device + "/" + user) % static_cast<uint64_t>(kSpread));
}

}  // namespace

Schedule::Schedule(int64_t interval, std::string device, std::function<double()> random)
    : interval_(interval), device_(std::move(device)), random_(std::move(random)) {}

void Schedule::Load(const Histories& histories) { loaded_ = histories; }

int64_t Schedule::FirstDue(const Entry& entry, int64_t now) const {
  if (started_ && entry.history.refusals == 0) return now + interval_;
  const int64_t due = entry.history.tried + (entry.history.refusals == 0 ? interval_ : kDay);
  return entry.saved && due > now ? due : now + SpreadOf(device_, entry.user.id);
}

void Schedule::SetUsers(const std::vector<User>& users, int64_t now) {
  std::map<std::string, Entry> entries;
  for (const User& user : users) {
    Entry& entry = entries[user.uuid];
    if (const auto known = entries_.find(user.uuid); known != entries_.end()) {
      entry = known->second;
      entry.user = user;
      // A token that somebody else renewed. Whoever was refused is well again.
      if (std::exchange(entry.history.token_hash, user.token_hash) != user.token_hash &&
          entry.history.refusals > 0) {
        Heal(&entry, now);
      }
      continue;
    }
    entry.user = user;
    entry.history.token_hash = user.token_hash;
    const auto loaded = loaded_.find(user.uuid);
    if (loaded != loaded_.end() && loaded->second.token_hash == user.token_hash) {
      entry.history = loaded->second;
      entry.saved = entry.history.tried;
    }
    entry.due = FirstDue(entry, now);
  }
  entries_ = std::move(entries);
  loaded_.clear();
  started_ = true;
}

std::optional<std::pair<int64_t, User>> Schedule::Next() const {
  const auto next =
      std::min_element(entries_.begin(), entries_.end(),
                       [](const auto& a, const auto& b) { return a.second.due < b.second.due; });
  if (next == entries_.end()) return std::nullopt;
  return std::pair(next->second.due, next->second.user);
}

void Schedule::NoteOutcome(const std::string& uuid, Outcome outcome, const std::string& token_hash,
                           int64_t now) {
  const auto found = entries_.find(uuid);
  if (found == entries_.end()) return;
  Entry& entry = found->second;
  if (outcome == Outcome::kNotSent) {
    const int64_t pause = std::min(kFirstPause << std::min(entry.unsent++, 10), kLongestPause);
    const double factor = 1 - kJitter + 2 * kJitter * random_();
    entry.due = now + std::lround(static_cast<double>(pause) * factor);
    return;
  }
  entry.unsent = 0;
  entry.history.token_hash = entry.user.token_hash = token_hash;
  if (outcome == Outcome::kRefused || outcome == Outcome::kLost) {
    NoteRefusal(&entry, now);
    return;
  }
  Heal(&entry, now);
  if (outcome != Outcome::kRefreshed) return;
  entry.refreshed = now;
  for (auto& [other, refused] : entries_) JudgeRefused(&refused);
}

void Schedule::NoteSignIn(const std::string& uuid, int64_t now) {
  const auto found = entries_.find(uuid);
  if (found != entries_.end()) Heal(&found->second, now);
}

void Schedule::Heal(Entry* entry, int64_t now) {
  entry->history = {.token_hash = entry->user.token_hash, .tried = now};
  entry->unsent = 0;
  entry->due = now + interval_;
  entry->unsaved = true;
}

void Schedule::NoteRefusal(Entry* entry, int64_t now) {
  History& history = entry->history;
  if (history.refusals++ == 0) history.first_refused = now;
  history.tried = now;
  entry->due = now + (history.refusals == 1 ? kSoon : kDay);
  // The first refusal is not worth the day's write: the second follows soon.
  entry->unsaved = history.refusals > 1;
  JudgeRefused(entry);
}

// A single refusal decides nothing: it is tried once more soon.
void Schedule::JudgeRefused(Entry* entry) {
  History& history = entry->history;
  if (history.refusals < 2 || history.sign_in_needed) return;
  const bool others_succeed =
      std::any_of(entries_.begin(), entries_.end(), [&history](const auto& other) {
        const std::optional<int64_t> refreshed = other.second.refreshed;
        return refreshed && std::llabs(*refreshed - history.tried) <= kRound;
      });
  const bool for_a_day =
      history.refusals >= kConclusiveRefusals && history.tried - history.first_refused >= kDay;
  history.sign_in_needed = others_succeed || for_a_day;
  entry->unsaved = entry->unsaved || history.sign_in_needed;
}

std::vector<User> Schedule::SignInNeeded() const {
  std::vector<User> users;
  for (const auto& [uuid, entry] : entries_) {
    if (entry.history.sign_in_needed) users.push_back(entry.user);
  }
  return users;
}

std::optional<Histories> Schedule::TakeUnsaved(int64_t now) {
  bool any = false;
  for (auto& [uuid, entry] : entries_) {
    if (!entry.unsaved || (entry.saved && now - *entry.saved < kDay)) continue;
    entry.unsaved = false;
    entry.saved = now;
    any = true;
  }
  if (!any) return std::nullopt;
  Histories histories;
  for (const auto& [uuid, entry] : entries_) {
    if (entry.saved) histories[uuid] = entry.history;
  }
  return histories;
}

}  // namespace gateway
