#ifndef QORN_PLATFORM_BASE_JSON_READER_H_
#define QORN_PLATFORM_BASE_JSON_READER_H_

#include <memory>
#include <string>

#include "base/values.h"

namespace base {

class JSONReader {
 public:
  // Levels of lists and dictionaries, including the outermost.
  static constexpr int kMaxLevels = 100;

  // Parses strict JSON (RFC 8259), which may begin with one byte order mark. Of members with the
  // same name the last one counts; an integer outside 32 bits becomes a double. Null if the text is
  // anything else, is not UTF-8, contains a number outside the range of a double, or nests deeper
  // than kMaxLevels. Any thread.
  static std::unique_ptr<Value> Read(const std::string& text);
};

}  // namespace base

#endif  // QORN_PLATFORM_BASE_JSON_READER_H_
