// What the doctor finds, and how it is written down.
#ifndef QORN_GATEWAY_DOCTOR_REPORT_H_
#define QORN_GATEWAY_DOCTOR_REPORT_H_

#include <array>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace gateway {

enum class State { kGood, kWarning, kBad };

struct Finding {
  // Dotted, stable: scripts look for it.
  std::string name;
  // No value: there is none, or it is not to be shown.
  std::optional<std::string> value;
  // One line: what it means, or what to do.
  std::string advice;
  State state = State::kGood;

  // Keeps the worst state with all that was said for it; of good ones the last word counts.
  void Blame(State found, const std::string& text);
};

using Findings = std::vector<Finding>;

bool HasBad(const Findings& findings);

// Writes findings for people, or one JSON object a line.
class DoctorReport {
 public:
  enum class Style { kText, kColor, kJson };

  // Borrows `out`.
  DoctorReport(std::ostream& out, Style style) : out_(out), style_(style) {}

  void Add(const std::string& title, const Findings& findings);
  // Writes the totals and returns the program's exit status, kExitCannotStart when not all could be
  // written.
  int Finish();

 private:
  void WriteText(const Finding& finding, size_t name_width);
  void WriteJson(const Finding& finding);
  size_t Count(State state) const { return counts_[static_cast<size_t>(state)]; }

  std::ostream& out_;
  const Style style_;
  std::array<size_t, 3> counts_{};
};

}  // namespace gateway

#endif  // QORN_GATEWAY_DOCTOR_REPORT_H_
