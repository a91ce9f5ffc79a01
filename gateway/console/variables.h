// The latest outputs by name, which later commands use as $name.
#ifndef QORN_GATEWAY_CONSOLE_VARIABLES_H_
#define QORN_GATEWAY_CONSOLE_VARIABLES_H_

#include <map>
#include <string>
#include <vector>

namespace gateway {

// Not thread-safe: belongs to the thread that runs the commands.
class Variables {
 public:
  // Replaces what the name held. A secret value is one that HideSecrets shortens.
  void Set(const std::string& name, const std::string& value, bool secret = false);

  // Null when nothing has the name. Valid until the next Set.
  const std::string* Find(const std::string& name) const;

  // `text` with every secret value in it shortened.
  std::string HideSecrets(std::string text) const;

  std::vector<std::string> Names() const;

  // The same names, each with an empty value.
  Variables Emptied() const;

  // Letters, digits and "_", no digit first.
  static bool IsName(const std::string& text);

 private:
  struct Entry {
    std::string value;
    bool secret = false;
  };
  std::map<std::string, Entry> entries_;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_CONSOLE_VARIABLES_H_
