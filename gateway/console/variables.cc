#include "gateway/console/variables.h"

#include "gateway/output/text.h"

namespace gateway {

void Variables::Set(const std::string& name, const std::string& value, bool secret) {
  entries_[name] = Entry{value, secret};
}

const std::string* Variables::Find(const std::string& name) const {
  auto found = entries_.find(name);
  return found == entries_.end() ? nullptr : &found->second.value;
}

std::string Variables::HideSecrets(std::string text) const {
  for (const auto& [name, entry] : entries_) {
    if (!entry.secret || entry.value.empty()) continue;
    // The search goes on behind the replacement, so that a secret which occurs in its own short
    // form does not keep it going for ever.
    const std::string shortened = ShortenSecret(entry.value);
    for (size_t at = text.find(entry.value); at != std::string::npos;
         at = text.find(entry.value, at + shortened.size())) {
      text.replace(at, entry.value.size(), shortened);
    }
  }
  return text;
}

std::vector<std::string> Variables::Names() const {
  std::vector<std::string> names;
  for (const auto& [name, entry] : entries_) names.push_back(name);
  return names;
}

Variables Variables::Emptied() const {
  Variables emptied;
  for (const auto& [name, entry] : entries_) emptied.Set(name, "");
  return emptied;
}

bool Variables::IsName(const std::string& text) {
  if (text.empty() || !IsNameStart(text[0])) return false;
  for (char c : text) {
    if (!IsNamePart(c)) return false;
  }
  return true;
}

}  // namespace gateway
