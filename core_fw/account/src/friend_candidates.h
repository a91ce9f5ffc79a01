#ifndef QORN_CORE_FW_ACCOUNT_SRC_FRIEND_CANDIDATES_H_
#define QORN_CORE_FW_ACCOUNT_SRC_FRIEND_CANDIDATES_H_

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace account {

// An invitation that waits for the friend to present its code.
struct FriendCandidate {
  std::string userUuid;  // Who invites.
  std::string friendId;
  std::string friendPeerId;
  std::string authCode;
};

// The invitations in the order of their making. None is ever taken out, so each is kept in little
// more than its own bytes. Not thread-safe.
class FriendCandidates {
 public:
  // Throws std::bad_alloc; nothing is added then.
  void Add(const FriendCandidate& candidate);
  // The last one with this code; false, `candidate` untouched, when there is none.
  bool Find(const std::string& auth_code, FriendCandidate* candidate) const;
  void Clear() { entries_.clear(); }

 private:
  // The texts one behind the other: code, user UUID, friend ID and peer ID.
  struct Entry {
    std::unique_ptr<char[]> text;
    std::array<std::size_t, 4> sizes;
  };

  std::vector<Entry> entries_;
};

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_FRIEND_CANDIDATES_H_
