#ifndef QORN_CORE_FW_ACCOUNT_SRC_FRIEND_CANDIDATES_H_
#define QORN_CORE_FW_ACCOUNT_SRC_FRIEND_CANDIDATES_H_

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace account {

// A pending invitation: the friend has not yet presented its code, or may present it again.
struct FriendCandidate {
  std::string userUuid;  // The inviting user.
  std::string friendId;
  std::string friendPeerId;
  std::string authCode;
};

// The pending invitations, oldest first. None is ever removed, so the list only grows, and each
// invitation is packed into little more than its own bytes. Not thread-safe.
class FriendCandidates {
 public:
  // On std::bad_alloc nothing is added.
  void Add(const FriendCandidate& candidate);
  // The last one with this code. False, with `candidate` untouched, if there is none.
  bool Find(const std::string& auth_code, FriendCandidate* candidate) const;
  void Clear() { entries_.clear(); }

 private:
  // The four texts in one block: code, user UUID, friend ID and peer ID.
  struct Entry {
    std::unique_ptr<char[]> text;
    std::array<size_t, 4> sizes;
  };

  std::vector<Entry> entries_;
};

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_FRIEND_CANDIDATES_H_
