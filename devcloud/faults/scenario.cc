#include "devcloud/faults/scenario.h"

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <system_error>

#include "devcloud/faults/fault_json.h"
#include "devcloud/http/json_text.h"

namespace devcloud {

bool ReadScenario(const std::string& path, Scenario* scenario, std::string* error) {
  std::ifstream file(path, std::ios::binary);
  // A folder opens like a file, but its first read throws.
  std::error_code ignored;
  if (!file || std::filesystem::is_directory(path, ignored)) {
    *error = path + ": " + std::generic_category().message(file ? EISDIR : errno);
    return false;
  }
  const nlohmann::json document = ParseJson({std::istreambuf_iterator<char>(file), {}});
  if (!document.is_array()) {
    *error = path + ": not a JSON array of faults";
    return false;
  }
  for (std::size_t i = 0; i < document.size(); ++i) {
    if (IsRefusal(document[i])) {
      scenario->is_refusing = true;
    } else if (!ParseFault(document[i], &scenario->faults.emplace_back(), error)) {
      *error = path + ": fault " + std::to_string(i + 1) + ": " + *error;
      return false;
    }
  }
  return true;
}

}  // namespace devcloud
