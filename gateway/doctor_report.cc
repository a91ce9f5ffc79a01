#include "gateway/doctor_report.h"

#include <algorithm>

#include "gateway/doctor.h"
#include "gateway/json_line.h"
#include "gateway/layout.h"
#include "gateway/runner.h"
#include "gateway/text.h"

namespace gateway {
namespace {

constexpr size_t kMaxShownBytes = 200;

const char* NameOf(State state) {
  static constexpr const char* kNames[] = {"good", "warning", "bad"};
  return kNames[static_cast<size_t>(state)];
}

const char* ColorOf(State state) {
  static constexpr const char* kColors[] = {"\x1b[32m", "\x1b[33m", "\x1b[1;31m"};
  return kColors[static_cast<size_t>(state)];
}

// Ends before the character in which the limit falls.
std::string Cut(const std::string& text) {
  if (text.size() <= kMaxShownBytes) return text;
  size_t end = kMaxShownBytes;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) --end;
  return text.substr(0, end) + "…";
}

Field NumberField(const char* name, size_t number) {
  return {name, {std::to_string(number)}, false, Field::Shape::kNumber};
}

}  // namespace

void Finding::Blame(State found, const std::string& text) {
  if (found < state || (found == state && advice.find(text) != std::string::npos)) return;
  const bool adds = found == state && state != State::kGood;
  advice = adds ? advice + "; " + text : text;
  state = found;
}

bool HasBad(const Findings& findings) {
  return std::any_of(findings.begin(), findings.end(),
                     [](const Finding& finding) { return finding.state == State::kBad; });
}

void DoctorReport::Add(const std::string& title, const Findings& findings) {
  if (style_ != Style::kJson) out_ << title << "\n";
  size_t name_width = 0;
  for (const Finding& finding : findings) name_width = std::max(name_width, finding.name.size());
  for (const Finding& finding : findings) {
    ++counts_[static_cast<size_t>(finding.state)];
    style_ == Style::kJson ? WriteJson(finding) : WriteText(finding, name_width);
  }
  if (style_ != Style::kJson) out_ << "\n";
  out_.flush();
}

int DoctorReport::Finish() {
  if (style_ == Style::kJson) {
    out_ << JsonLine(
        {"summary",
         "",
         {NumberField("good", Count(State::kGood)), NumberField("warning", Count(State::kWarning)),
          NumberField("bad", Count(State::kBad))},
         "",
         {}},
        true);
  } else {
    out_ << Count(State::kBad) << " bad, " << Count(State::kWarning) << " warnings, "
         << Count(State::kGood) << " good\n";
  }
  out_.flush();
  if (!out_) return kExitCannotStart;
  if (Count(State::kBad) > 0) return kExitDoctorBad;
  return Count(State::kWarning) > 0 ? kExitDoctorWarnings : kExitGood;
}

void DoctorReport::WriteText(const Finding& finding, size_t name_width) {
  const bool color = style_ == Style::kColor;
  out_ << "  " << (color ? ColorOf(finding.state) : "") << PadTo(NameOf(finding.state), 9)
       << (color ? "\x1b[0m" : "");
  if (finding.value) {
    out_ << PadTo(finding.name, name_width) << "  " << Visible(Cut(*finding.value));
  } else {
    out_ << finding.name;
  }
  out_ << "\n" << std::string(11, ' ') << Visible(finding.advice) << "\n";
}

void DoctorReport::WriteJson(const Finding& finding) {
  // Secrets are shortened by whoever finds.
  Field value{"value", {}};
  if (finding.value) value.values = {*finding.value};
  out_ << JsonLine({"finding",
                    "",
                    {{"name", {finding.name}},
                     {"state", {NameOf(finding.state)}},
                     value,
                     {"advice", {finding.advice}}},
                    "",
                    {}},
                   true);
}

}  // namespace gateway
