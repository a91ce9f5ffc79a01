// What an examination found out about one thing.
#ifndef QORN_GATEWAY_HOST_FINDING_H_
#define QORN_GATEWAY_HOST_FINDING_H_

#include <optional>
#include <string>
#include <vector>

namespace gateway {

enum class Severity { kGood, kWarning, kBad };

struct Finding {
  // Dotted and stable, so that scripts can look for it.
  std::string name;
  // Empty when there is no value, or when it must not be shown.
  std::optional<std::string> value;
  // One line: what it means, or what to do.
  std::string advice;
  Severity severity = Severity::kGood;

  // Keeps the worst severity with all advice that was given for it. Good advice replaces good
  // advice.
  void Mark(Severity found, const std::string& text);
  void MarkWarning(const std::string& text) { Mark(Severity::kWarning, text); }
  void MarkBad(const std::string& text) { Mark(Severity::kBad, text); }
};

using Findings = std::vector<Finding>;

bool HasBad(const Findings& findings);

}  // namespace gateway

#endif  // QORN_GATEWAY_HOST_FINDING_H_
