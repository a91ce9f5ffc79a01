#ifndef QORN_PLATFORM_BASE_JSON_WRITER_H_
#define QORN_PLATFORM_BASE_JSON_WRITER_H_

#include <string>

#include "base/values.h"

namespace base {

class JSONWriter {
 public:
  // Replaces `*text` by `value` as JSON (RFC 8259): members in byte order of their names, no white
  // space, UTF-8 unescaped, each invalid byte replaced by U+FFFD, a number that is not finite
  // written as null. False, with `*text` untouched, if the value nests deeper than JSONReader
  // accepts. Any thread.
  static bool Write(const Value& value, std::string* text);
};

}  // namespace base

#endif  // QORN_PLATFORM_BASE_JSON_WRITER_H_
