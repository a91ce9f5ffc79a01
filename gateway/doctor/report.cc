#include "gateway/doctor/report.h"

#include <algorithm>

#include "gateway/output/json_lines.h"
#include "gateway/output/tables.h"
#include "gateway/output/text.h"

namespace gateway {
namespace {

constexpr size_t kMaxShownBytes = 200;

const char* SeverityName(Severity severity) {
  static constexpr const char* kNames[] = {"good", "warning", "bad"};
  return kNames[static_cast<size_t>(severity)];
}

const char* SeverityColor(Severity severity) {
  static constexpr const char* kColors[] = {"\x1b[32m", "\x1b[33m", "\x1b[1;31m"};
  return kColors[static_cast<size_t>(severity)];
}

// Ends before the character in which the limit falls.
std::string Cut(const std::string& text) {
  if (text.size() <= kMaxShownBytes) return text;
  size_t end = kMaxShownBytes;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) --end;
  return text.substr(0, end) + "…";
}

}  // namespace

void DoctorReport::Add(const std::string& title, const Findings& findings) {
  if (style_ != Style::kJson) out_ << title << "\n";
  size_t name_width = 0;
  for (const Finding& finding : findings) name_width = std::max(name_width, finding.name.size());
  for (const Finding& finding : findings) {
    ++counts_[static_cast<size_t>(finding.severity)];
    style_ == Style::kJson ? WriteJson(finding) : WriteText(finding, name_width);
  }
  if (style_ != Style::kJson) out_ << "\n";
  // A person sees each part at once: the cloud's may take 40 seconds.
  out_.flush();
}

std::optional<Severity> DoctorReport::Finish() {
  if (style_ == Style::kJson) {
    const Record totals{.type = "summary",
                        .attributes = {NumberField("good", Count(Severity::kGood)),
                                       NumberField("warning", Count(Severity::kWarning)),
                                       NumberField("bad", Count(Severity::kBad))}};
    out_ << JsonLine(totals, true);
  } else {
    out_ << Count(Severity::kBad) << " bad, " << Count(Severity::kWarning) << " warnings, "
         << Count(Severity::kGood) << " good\n";
  }
  out_.flush();
  if (!out_) return std::nullopt;
  if (Count(Severity::kBad) > 0) return Severity::kBad;
  return Count(Severity::kWarning) > 0 ? Severity::kWarning : Severity::kGood;
}

void DoctorReport::WriteText(const Finding& finding, size_t name_width) {
  const bool color = style_ == Style::kColor;
  out_ << "  " << (color ? SeverityColor(finding.severity) : "")
       << PadTo(SeverityName(finding.severity), 9) << (color ? "\x1b[0m" : "");
  if (finding.value) {
    out_ << PadTo(finding.name, name_width) << "  " << Visible(Cut(*finding.value));
  } else {
    out_ << finding.name;
  }
  out_ << "\n" << std::string(11, ' ') << Visible(finding.advice) << "\n";
}

void DoctorReport::WriteJson(const Finding& finding) {
  Field value{.name = "value"};
  if (finding.value) value.values = {*finding.value};
  const Record record{.type = "finding",
                      .attributes = {{.name = "name", .values = {finding.name}},
                                     {.name = "state", .values = {SeverityName(finding.severity)}},
                                     value,
                                     {.name = "advice", .values = {finding.advice}}}};
  // Nothing is left to hide: examinations shorten secrets before they report them.
  out_ << JsonLine(record, true);
}

}  // namespace gateway
