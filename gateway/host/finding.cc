#include "gateway/host/finding.h"

#include <algorithm>

namespace gateway {

void Finding::Mark(Severity found, const std::string& text) {
  // Two checks may give the same advice; it is shown once.
  if (found < severity || (found == severity && advice.find(text) != std::string::npos)) return;
  const bool adds = found == severity && severity != Severity::kGood;
  advice = adds ? advice + "; " + text : text;
  severity = found;
}

bool HasBad(const Findings& findings) {
  return std::any_of(findings.begin(), findings.end(),
                     [](const Finding& finding) { return finding.severity == Severity::kBad; });
}

}  // namespace gateway
