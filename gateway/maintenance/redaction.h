#ifndef QORN_GATEWAY_MAINTENANCE_REDACTION_H_
#define QORN_GATEWAY_MAINTENANCE_REDACTION_H_

#include <array>
#include <map>
#include <string>
#include <vector>

namespace gateway {

// Replaces private values in a text by "user-1", "token-2" and the like: the same value by the same
// word. A value is found in any case, also where some of its bytes are written as %40, \x40,
// \u0040, \" or, a blank, +, and a long one also where it was cut off. Values of fewer than 8 bytes
// are replaced only where they are whole words: a user "ann" is not in "cannot". Not thread-safe.
class Redaction {
 public:
  // `kind` is the replacement's first part: "user". Ignores "" and a value that is known.
  void Add(const std::string& kind, const std::string& value);

  // Adds what looks like an ID, an address or a token: of users that are removed, nothing else is
  // left to recognise.
  void AddPatterns(const std::string& text);

  std::string Redact(const std::string& text) const;

  // Whether none of the values is in a text that Redact returned, also after it is URL-decoded
  // several times.
  bool IsClean(const std::string& text) const;

 private:
  void AddEmails(const std::string& line);

  struct Value {
    std::string text;
    std::string replacement;
  };

  // The length of the value at the position; 0 if it is not there.
  static size_t MatchAt(const std::string& text, size_t position, const std::string& value);
  // The longest value at the position, and its length; null for none.
  const Value* FindAt(const std::string& text, size_t position, size_t* length) const;

  std::map<std::string, std::string> replacements_;  // by value in small letters
  std::map<std::string, int> counts_;                // by kind
  // By the first byte in small letters, the longest first.
  std::array<std::vector<Value>, 256> values_;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_MAINTENANCE_REDACTION_H_
