#include "gateway/doctor/configuration.h"

#include <sys/stat.h>

#include <vector>

#include "gateway/doctor/keys.h"
#include "gateway/output/text.h"
#include "runtime/config_file.h"

namespace gateway {
namespace {

using Entries = std::vector<runtime::ConfigEntry>;

constexpr char kSpace[] = " \t\r\n";

Finding ExamineFile(const std::string& file, const std::string& error) {
  Finding finding{"config.file", file, "can be read"};
  struct stat status {};
  if (!error.empty()) {
    finding.MarkBad(error + "; nothing else can be examined");
  } else if (stat(file.c_str(), &status) == 0) {
    if ((status.st_mode & S_IROTH) != 0) {
      finding.MarkWarning("everybody on this machine can read the client secret: chmod it to 0600");
    }
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
      finding.MarkWarning("others than its owner can change it: chmod it to 0600");
    }
  }
  return finding;
}

// What can be wrong with a value of any key.
void JudgeValue(const runtime::ConfigEntry& entry, Finding* finding) {
  if (!entry.plain) {
    finding->MarkWarning("holds elements or attributes, which nothing reads");
  }
  if (HasControlCharacter(entry.value)) {
    finding->MarkWarning("holds a control character");
  }
  if (entry.value.starts_with("replace-with-")) {
    finding->MarkBad("is still the example's placeholder: put the real value here");
  }
  if (entry.value.empty()) return;
  if (std::string(kSpace).find(entry.value.front()) != std::string::npos ||
      std::string(kSpace).find(entry.value.back()) != std::string::npos) {
    finding->MarkWarning("begins or ends with white space, which counts");
  }
}

// Examines the keys in their order and remembers which of them stops the reading.
class KeyExaminer {
 public:
  explicit KeyExaminer(const Entries& entries) : entries_(entries) {}

  // Of the component's keys, each in its place.
  Finding Examine(const KeyRule& rule) {
    const runtime::ConfigEntry* first = nullptr;
    Finding finding = ExamineEntries(rule, &first);
    if (first == nullptr) finding.Mark(rule.absent_severity, rule.absent);
    JudgeOrder(rule, first == nullptr || first->value.empty(), &finding);
    return finding;
  }

  // None for a key that is absent.
  std::optional<Finding> ExamineOptional(const KeyRule& rule) const {
    const runtime::ConfigEntry* first = nullptr;
    const Finding finding = ExamineEntries(rule, &first);
    return first == nullptr ? std::nullopt : std::optional(finding);
  }

 private:
  Finding ExamineEntries(const KeyRule& rule, const runtime::ConfigEntry** first) const {
    Finding finding{std::string("config.") + rule.name, std::nullopt, rule.meaning};
    for (const runtime::ConfigEntry& entry : entries_) {
      if (entry.key != rule.name) continue;
      if (*first == nullptr) {
        *first = &entry;
        JudgeFirst(rule, entry, &finding);
      } else {
        finding.MarkWarning("stands again in line " + std::to_string(entry.line) +
                            ", where it is not read: the first counts");
      }
    }
    return finding;
  }

  static void JudgeFirst(const KeyRule& rule, const runtime::ConfigEntry& entry, Finding* finding) {
    finding->value = rule.secret ? ShortenSecret(entry.value) : entry.value;
    if (entry.value.empty()) {
      finding->Mark(rule.empty_severity, rule.empty);
    } else {
      rule.judge(entry.value, finding);
    }
    JudgeValue(entry, finding);
  }

  // The network setting, the last key, is read only behind the eleven.
  void JudgeOrder(const KeyRule& rule, bool empty, Finding* finding) {
    if (!stopped_by_.empty()) {
      finding->MarkWarning("is not read, since " + stopped_by_ + " stops the reading");
    } else if (rule.in_order && empty) {
      stopped_by_ = rule.name;
    }
  }

  const Entries& entries_;
  std::string stopped_by_;
};

void AddUnknownKeys(const Entries& entries, const Findings& known, Findings* findings) {
  for (const runtime::ConfigEntry& entry : entries) {
    bool found = false;
    for (const Finding& finding : known) found = found || finding.name == "config." + entry.key;
    if (found) continue;
    const std::string nearest = NearestKey(entry.key);
    findings->push_back({"config.unknown_key", entry.key,
                         "line " + std::to_string(entry.line) + ": nothing reads this key" +
                             (nearest.empty() ? "" : ": did you mean " + nearest + "?"),
                         Severity::kWarning});
  }
}

}  // namespace

std::string ConfigValue(const ConfigValues& config, const std::string& key) {
  const auto found = config.find(key);
  return found == config.end() ? "" : found->second;
}

Findings ExamineConfig(const std::string& file, std::optional<ConfigValues>* config) {
  Entries entries;
  std::string error;
  const bool read = runtime::ReadConfigEntries(file, &entries, &error);
  Findings findings = {ExamineFile(file, error)};
  // A file that cannot be parsed has no keys to examine.
  if (!read) return findings;
  config->emplace();
  for (const runtime::ConfigEntry& entry : entries) (*config)->emplace(entry.key, entry.value);
  KeyExaminer examiner(entries);
  Findings keys;
  for (const KeyRule& rule : KeyRules()) keys.push_back(examiner.Examine(rule));
  for (const KeyRule& rule : HostKeyRules()) {
    if (const auto finding = examiner.ExamineOptional(rule)) keys.push_back(*finding);
  }
  findings.insert(findings.end(), keys.begin(), keys.end());
  AddUnknownKeys(entries, keys, &findings);
  return findings;
}

}  // namespace gateway
