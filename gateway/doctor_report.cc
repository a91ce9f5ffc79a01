#include "gateway/doctor_report.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "gateway/doctor.h"
#include "gateway/runner.h"
#include "gateway/text.h"

namespace gateway {
namespace {

constexpr size_t kMaxShownBytes = 200;

const char* NameOf(State state) {
  static constexpr const char* kNames[] = {"good", "warning", "bad"};
  return kNames[static_cast<size_t>(state)];
}

const char* ColourOf(State state) {
  static constexpr const char* kColours[] = {"\x1b[32m", "\x1b[33m", "\x1b[1;31m"};
  return kColours[static_cast<size_t>(state)];
}

// Ends before the character in which the limit falls.
std::string Cut(const std::string& text) {
  if (text.size() <= kMaxShownBytes) return text;
  size_t end = kMaxShownBytes;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) --end;
  return text.substr(0, end) + "…";
}

std::string Padded(const std::string& text, size_t width) {
  return text + std::string(width > text.size() ? width - text.size() : 0, ' ');
}

std::string Dump(const nlohmann::ordered_json& line) {
  return line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
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
    out_ << Dump({{"type", "summary"},
                  {"good", Count(State::kGood)},
                  {"warning", Count(State::kWarning)},
                  {"bad", Count(State::kBad)}});
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
  const bool colour = style_ == Style::kColour;
  out_ << "  " << (colour ? ColourOf(finding.state) : "") << Padded(NameOf(finding.state), 9)
       << (colour ? "\x1b[0m" : "");
  if (finding.value) {
    out_ << Padded(finding.name, name_width) << "  " << Visible(Cut(*finding.value));
  } else {
    out_ << finding.name;
  }
  out_ << "\n" << std::string(11, ' ') << Visible(finding.advice) << "\n";
}

void DoctorReport::WriteJson(const Finding& finding) {
  nlohmann::ordered_json value;
  if (finding.value) value = *finding.value;
  out_ << Dump({{"type", "finding"},
                {"name", finding.name},
                {"state", NameOf(finding.state)},
                {"value", value},
                {"advice", finding.advice}});
}

}  // namespace gateway
