// Makes each scenario of the folder a test: "== A rename is told" in user_info.scenario is
// UserInfo.ARenameIsTold.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>

#include "tests/scenario_runner.h"

namespace scenarios {
namespace {

constexpr char kHeading[] = "== ";

// The words run together, each with a capital first letter.
std::string TestName(const std::string& text) {
  std::string name;
  bool first = true;
  for (const char c : text) {
    if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
      name += first ? static_cast<char>(std::toupper(c)) : c;
    }
    first = c == ' ' || c == '_';
  }
  return name;
}

std::vector<Scenario> ReadScenarios(const std::filesystem::path& path) {
  std::vector<Scenario> scenarios;
  std::ifstream in(path);
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    const std::size_t indent = line.find_first_not_of(' ');
    if (indent == std::string::npos || line[indent] == '#') continue;
    if (line.starts_with(kHeading)) {
      scenarios.push_back({path.filename(), TestName(path.stem()), TestName(line), {}});
    } else if (scenarios.empty()) {
      throw std::runtime_error(path.string() + ": a line stands before the first heading");
    } else {
      scenarios.back().lines.push_back({number, indent, line.substr(indent)});
    }
  }
  return scenarios;
}

#ifdef QORN_BUS
// What no caller from outside can do: act at the moment of a log line, count pauses, send bytes
// that are no UTF-8 or very many, choose what outputs hold before, see those of a failure.
bool NeedsToBeInside(const Scenario& scenario) {
  static const std::set<std::string> kInside = {"on-line", "pauses", "bytes",
                                                "repeat",  "flag",   "refuse-event"};
  return std::any_of(scenario.lines.begin(), scenario.lines.end(), [](const Line& line) {
    return kInside.contains(CutFirst(line.text).first) || line.text.ends_with(" untouched");
  });
}
#endif

void Register(const Scenario& scenario, const std::string& suite, ScenarioRunner::Connect connect) {
  testing::RegisterTest(suite.c_str(), scenario.name.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                        [=] { return new ScenarioRunner(scenario, connect); });
}

void RegisterScenarios() {
  for (const auto& entry : std::filesystem::directory_iterator(QORN_SCENARIO_FOLDER)) {
    if (entry.path().extension() != ".scenario") continue;
    for (const Scenario& scenario : ReadScenarios(entry.path())) {
      Register(scenario, scenario.suite, nullptr);
#ifdef QORN_BUS
      if (!NeedsToBeInside(scenario))
        Register(scenario, scenario.suite + "OnTheBus", MakeBusAccess);
#endif
    }
  }
}

}  // namespace
}  // namespace scenarios

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  scenarios::RegisterScenarios();
  return RUN_ALL_TESTS();
}
