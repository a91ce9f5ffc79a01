#ifndef QORN_GATEWAY_OUTPUT_NEAREST_WORD_H_
#define QORN_GATEWAY_OUTPUT_NEAREST_WORD_H_

#include <string>
#include <vector>

namespace gateway {

// The candidate that somebody most likely meant by `text`, for "did you mean ...?": in any case of
// letters, the one that begins with it or that differs in the fewest letters. "" when over a
// quarter of the letters would have to change.
std::string NearestWord(const std::string& text, const std::vector<std::string>& candidates);

}  // namespace gateway

#endif  // QORN_GATEWAY_OUTPUT_NEAREST_WORD_H_
