#include "core_fw/account/src/friend_candidates.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace account {

void FriendCandidates::Add(const FriendCandidate& candidate) {
  const std::string* const texts[] = {&candidate.authCode, &candidate.userUuid, &candidate.friendId,
                                      &candidate.friendPeerId};
  Entry entry;
  size_t size = 0;
  for (size_t i = 0; i < entry.sizes.size(); ++i) size += entry.sizes[i] = texts[i]->size();
  entry.text = std::make_unique<char[]>(size);
  char* end = entry.text.get();
  for (const std::string* text : texts) end += text->copy(end, text->size());
  // Grow by an eighth and not by a factor of two: most of the memory would never be used.
  if (entries_.size() == entries_.capacity()) entries_.reserve(entries_.size() * 9 / 8 + 8);
  entries_.push_back(std::move(entry));
}

bool FriendCandidates::Find(const std::string& auth_code, FriendCandidate* candidate) const {
  // From the back, because of several candidates with one code the last one counts.
  const auto last = std::find_if(entries_.rbegin(), entries_.rend(), [&](const Entry& entry) {
    return std::string_view(entry.text.get(), entry.sizes[0]) == auth_code;
  });
  if (last == entries_.rend()) return false;
  FriendCandidate found;
  std::string* const texts[] = {&found.authCode, &found.userUuid, &found.friendId,
                                &found.friendPeerId};
  const char* begin = last->text.get();
  for (size_t i = 0; i < last->sizes.size(); ++i) {
    texts[i]->assign(begin, last->sizes[i]);
    begin += last->sizes[i];
  }
  *candidate = std::move(found);
  return true;
}

}  // namespace account
