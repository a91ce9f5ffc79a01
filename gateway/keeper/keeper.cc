#include "gateway/keeper/keeper.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>

#include <algorithm>
#include <utility>

#include "gateway/keeper/state_file.h"
#include "gateway/keeper/transfer_error.h"
#include "gateway/maintenance/files.h"
#include "gateway/process/sha256.h"

namespace gateway {

using keeper::Outcome;
using keeper::User;

namespace {

constexpr char kSystemUser[] = "qornsystem";  // has no row and no tokens
constexpr size_t kMaxStateBytes = size_t{16} << 20;
// Nobody tells of a factory reset, nor of a token that the console refreshed.
constexpr int64_t kBetweenLooks = keeper::kHour;
constexpr int64_t kAfterFailedLook = keeper::kMinute;

const char* Describe(Outcome outcome) {
  switch (outcome) {
    case Outcome::kRefreshed:
      return "tokens refreshed";
    case Outcome::kRenewedByAnother:
      return "tokens were renewed by another";
    case Outcome::kLost:
      return "new tokens were lost";
    default:
      return "refresh refused, or its answer was lost";
  }
}

// libcurl could not resolve the proxy or the host, or not connect: nothing was sent.
bool WasNotSent(int code) { return code >= 5 && code <= 7; }

bool Contains(const std::vector<User>& users, const std::string& uuid) {
  return std::any_of(users.begin(), users.end(),
                     [&uuid](const User& user) { return user.uuid == uuid; });
}

}  // namespace

Keeper::Keeper(const Options& options, const Parts& parts)
    : options_(options),
      parts_(parts),
      schedule_(options.hours * keeper::kHour, options.device_address, parts.random),
      wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  std::string text;
  std::string ignored;
  if (ReadWhole(options_.state_file, kMaxStateBytes, &text, &ignored)) {
    schedule_.Load(DecodeKeeperState(text, parts_.now(), parts_.wall_now()));
  }
}

Keeper::~Keeper() { Stop(); }

void Keeper::Start() {
  thread_ = std::thread([this] { Run(); });
}

void Keeper::Stop() {
  stop_ = true;
  eventfd_write(wake_.get(), 1);
  if (thread_.joinable()) thread_.join();
}

void Keeper::Run() {
  while (!stop_) WaitUntil(Step());
}

void Keeper::WaitUntil(int64_t time) const {
  const base::ScopedFd timer(timerfd_create(CLOCK_BOOTTIME, TFD_CLOEXEC));
  const itimerspec when{.it_interval = {}, .it_value = {static_cast<time_t>(time), 1}};
  timerfd_settime(timer.get(), TFD_TIMER_ABSTIME, &when, nullptr);
  pollfd fds[] = {{wake_.get(), POLLIN, 0}, {timer.get(), POLLIN, 0}};
  poll(fds, 2, -1);
  eventfd_t ignored = 0;
  eventfd_read(wake_.get(), &ignored);
}

void Keeper::NoteEvent(const SeenEvent& event) {
  const bool signed_in = event.type == kEventAccountSignIn || event.type == kEventAccountCreateUser;
  if (!signed_in && event.type != kEventAccountRemoveUser) return;
  {
    base::AutoLock hold(lock_);
    users_changed_ = true;
    if (signed_in && !event.fields.empty()) signed_in_.insert(event.fields[0].values.at(0));
  }
  eventfd_write(wake_.get(), 1);
}

std::vector<User> Keeper::SignInNeeded() const {
  base::AutoLock hold(lock_);
  return needed_;
}

int64_t Keeper::Step() {
  std::set<std::string> signed_in;
  {
    base::AutoLock hold(lock_);
    signed_in.swap(signed_in_);
    if (std::exchange(users_changed_, false)) next_look_ = parts_.now();
  }
  if (next_look_ <= parts_.now()) {
    const bool good = ReadUsers();
    next_look_ = parts_.now() + (good ? kBetweenLooks : kAfterFailedLook);
  }
  for (const std::string& uuid : signed_in) schedule_.NoteSignIn(uuid, parts_.now());
  auto next = schedule_.Next();
  if (next && next->first <= parts_.now() && !stop_) {
    Refresh(next->second);
    next = schedule_.Next();
  }
  TellChanges();
  Save();
  return next ? std::min(next->first, next_look_) : next_look_;
}

bool Keeper::ReadUsers() {
  std::vector<std::string> uuids;
  if (parts_.accounts->GetAllUsersUUID(&uuids) != kAccountSuccess) return false;
  std::vector<User> users;
  for (const std::string& uuid : uuids) {
    User user{.uuid = uuid, .id = {}, .token_hash = {}};
    if (uuid == kSystemUser) continue;
    AccountResult result = ReadTokenHash(uuid, &user.token_hash);
    if (result == kAccountSuccess) {
      result = parts_.accounts->GetUserInfoByType(uuid, kUserInfoGetUserId, &user.id);
    }
    if (result == kAccountNoUserWithUserUuid) continue;  // removed meanwhile
    // Whoever was left out would be forgotten.
    if (result != kAccountSuccess) return false;
    if (!user.token_hash.empty()) users.push_back(std::move(user));
  }
  schedule_.SetUsers(users, parts_.now());
  return true;
}

AccountResult Keeper::ReadTokenHash(const std::string& uuid, std::string* hash) {
  std::string token;
  const AccountResult result =
      parts_.accounts->GetUserInfoByType(uuid, kUserInfoGetRefreshToken, &token);
  if (result == kAccountSuccess) *hash = token.empty() ? "" : Sha256(token);
  return result;
}

void Keeper::Refresh(const User& user) {
  std::string token_hash = user.token_hash;
  const Outcome outcome = Ask(user, &token_hash);
  schedule_.NoteOutcome(user.uuid, outcome, token_hash, parts_.now());
}

Outcome Keeper::Ask(const User& user, std::string* token_hash) {
  std::string before;
  if (!parts_.has_space() || !parts_.server_answers(stop_)) return Outcome::kNotSent;
  // Removed, as by a factory reset, or renewed by somebody else: all users are read again.
  if (ReadTokenHash(user.uuid, &before) != kAccountSuccess || before != user.token_hash) {
    next_look_ = parts_.now();
    return Outcome::kNotSent;
  }
  TakeTransferError();
  const AccountResult result = parts_.accounts->RefreshAccessToken(user.id);
  if (WasNotSent(TakeTransferError())) return Outcome::kNotSent;
  ReadTokenHash(user.uuid, token_hash);
  const bool changed = *token_hash != before;
  Outcome outcome = changed ? Outcome::kRefreshed : Outcome::kLost;
  if (result != kAccountSuccess) {
    outcome = changed ? Outcome::kRenewedByAnother : Outcome::kRefused;
  }
  parts_.on_refresh(user, result, Describe(outcome));
  return outcome;
}

void Keeper::TellChanges() {
  const std::vector<User> now = schedule_.SignInNeeded();
  std::vector<User> before;
  {
    base::AutoLock hold(lock_);
    before = std::exchange(needed_, now);
  }
  for (const User& user : now) {
    if (!Contains(before, user.uuid)) parts_.on_sign_in_needed(user, true);
  }
  for (const User& user : before) {
    if (!Contains(now, user.uuid)) parts_.on_sign_in_needed(user, false);
  }
}

void Keeper::Save() {
  const std::optional<keeper::Histories> histories = schedule_.TakeUnsaved(parts_.now());
  if (!histories) return;
  std::string error;
  const bool good =
      WriteWhole(options_.state_file,
                 EncodeKeeperState(*histories, parts_.now(), parts_.wall_now()), true, &error);
  // A full disk is reported once, not each day.
  if (!good && !save_failed_) parts_.report(error);
  save_failed_ = !good;
}

}  // namespace gateway
