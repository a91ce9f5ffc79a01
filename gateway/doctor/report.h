// What the doctor finds, and how it is written down.
#ifndef QORN_GATEWAY_DOCTOR_REPORT_H_
#define QORN_GATEWAY_DOCTOR_REPORT_H_

#include <array>
#include <optional>
#include <ostream>
#include <string>

#include "gateway/host/finding.h"

namespace gateway {

// Writes findings for people, or one JSON object a line.
class DoctorReport {
 public:
  enum class Style { kText, kColor, kJson };

  // Borrows `out`.
  DoctorReport(std::ostream& out, Style style) : out_(out), style_(style) {}

  void Add(const std::string& title, const Findings& findings);
  // Writes the totals. Returns the worst severity that was added, or nothing when not all could be
  // written.
  std::optional<Severity> Finish();

 private:
  void WriteText(const Finding& finding, size_t name_width);
  void WriteJson(const Finding& finding);
  long long Count(Severity severity) const { return counts_[static_cast<size_t>(severity)]; }

  std::ostream& out_;
  const Style style_;
  std::array<long long, 3> counts_{};
};

}  // namespace gateway

#endif  // QORN_GATEWAY_DOCTOR_REPORT_H_
