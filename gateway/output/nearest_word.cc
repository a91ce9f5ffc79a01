#include "gateway/output/nearest_word.h"

#include <algorithm>

#include "gateway/output/text.h"

namespace gateway {
namespace {

// The work grows with the product of both lengths.
constexpr size_t kMaxLength = 100;
// Fewer letters begin too many words.
constexpr size_t kLeastBeginning = 5;

// How many letters to change, insert, delete or swap with the next one.
size_t Distance(const std::string& a, const std::string& b) {
  std::vector<std::vector<size_t>> d(a.size() + 1, std::vector<size_t>(b.size() + 1));
  for (size_t i = 0; i <= a.size(); ++i) {
    for (size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        d[i][j] = i + j;
        continue;
      }
      const size_t changed = d[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      d[i][j] = std::min({changed, d[i - 1][j] + 1, d[i][j - 1] + 1});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 1);
      }
    }
  }
  return d[a.size()][b.size()];
}

}  // namespace

std::string NearestWord(const std::string& text, const std::vector<std::string>& candidates) {
  if (text.size() > kMaxLength) return "";
  const std::string typed = LowerCase(text);
  std::string best;
  size_t best_distance = text.size() / 4 + 1;
  for (const std::string& candidate : candidates) {
    const std::string word = LowerCase(candidate);
    const bool begins = typed.size() >= kLeastBeginning && word.starts_with(typed);
    const size_t distance = begins ? 1 : Distance(typed, word);
    if (distance >= best_distance) continue;
    best_distance = distance;
    best = candidate;
  }
  return best;
}

}  // namespace gateway
