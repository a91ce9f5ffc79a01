#include "gateway/doctor/keys.h"

#include <algorithm>

#include "gateway/doctor/url.h"
#include "gateway/host/durable_storage.h"
#include "gateway/host/start_spread.h"
#include "gateway/output/nearest_word.h"
#include "gateway/output/text.h"
#include "gateway/service/bus_keys.h"

namespace gateway {
namespace {

constexpr char kNoDefault[] = "is missing and has no default: the gateway's cloud requests fail";
constexpr char kEmptyText[] = "is empty, which counts as missing: cloud requests fail";
constexpr char kUnescapedForm[] =
    "holds white space, a letter beyond ASCII or one of & = + % ; , \" <, and is sent unescaped, "
    "which can spoil requests";
constexpr char kUnescapedXml[] = "holds & or <, and is sent unescaped, which can spoil requests";

bool IsOneOf(const std::string& text, const std::vector<std::string>& words) {
  return std::find(words.begin(), words.end(), text) != words.end();
}

void JudgeSwitch(const std::string& value, const char* on, const char* off, Finding* finding) {
  const std::string lower = LowerCase(value);
  finding->advice = value == "on" ? on : off;
  if (value == "on" || value == "off") return;
  if (IsOneOf(lower, {"on", "true", "yes", "1", "enable", "enabled", "y", "t"})) {
    finding->MarkWarning("only looks like \"on\" and counts as off: write \"on\"");
  } else if (!IsOneOf(lower, {"off", "false", "no", "0", "disable", "disabled", "n", "f"})) {
    finding->MarkWarning("is neither \"on\" nor \"off\" and counts as off");
  }
}

void JudgeLogLevel(const std::string& value, Finding* finding) {
  const std::vector<std::string> words = {
      "LOG_VERBOSE", "LOG_INTERNAL_DETAILED_INFO", "LOG_INTERNAL_INFO", "LOG_INFO", "LOG_WARNING",
      "LOG_ERROR",   "LOG_ERROR_REPORT",           "LOG_FATAL"};
  if (IsOneOf(value, words)) return;
  const std::string nearest =
      NearestWord(LowerCase(value).starts_with("log_") ? value : "LOG_" + value, words);
  finding->MarkWarning("is no log level, so LOG_INFO counts" +
                       (nearest.empty() ? std::string() : ": did you mean " + nearest + "?"));
}

void JudgeSession(const std::string& value, Finding* finding) {
  JudgeSwitch(value, "session mode is on", "session mode is off", finding);
}

void JudgeNetwork(const std::string& value, Finding* finding) {
  JudgeSwitch(value, "peer ID and traversal servers are fetched from the User Portal",
              "peer ID and traversal servers are not fetched", finding);
}

void JudgeFolder(const std::string& value, Finding* finding) {
  if (value.back() != '/') {
    finding->MarkWarning("has no \"/\" at its end: the file's name is put straight behind it");
  }
  if (value.front() != '/') {
    finding->MarkWarning(
        "does not begin with \"/\": it depends on the folder from which the gateway is "
        "started");
  }
}

void JudgeFileName(const std::string& value, Finding* finding) {
  if (value.find('/') == std::string::npos) return;
  finding->MarkWarning(
      "holds a \"/\": name the folder in qorn_storage_path and only the file here");
}

void JudgeNothing(const std::string& /*value*/, Finding* /*finding*/) {}

// Values are sent verbatim; they must not contain characters that are special in a form body.
bool NeedsEscape(char c) {
  return c <= ' ' || static_cast<unsigned char>(c) >= 0x7f ||
         std::string("&=+%;,\"<").find(c) != std::string::npos;
}

void JudgeForm(const std::string& value, Finding* finding) {
  if (std::any_of(value.begin(), value.end(), NeedsEscape)) {
    finding->MarkWarning(kUnescapedForm);
  }
}

void JudgeXml(const std::string& value, Finding* finding) {
  if (value.find_first_of("&<") == std::string::npos) return;
  finding->MarkWarning(kUnescapedXml);
}

void JudgeAddress(const std::string& value, Finding* finding) {
  JudgeForm(value, finding);
  if (value == "02:00:00:00:00:01") {
    finding->MarkWarning("is the example's address: each gateway needs its own");
  }
}

constexpr KeyRule Mandatory(const char* name, const char* meaning,
                            void (*judge)(const std::string&, Finding*)) {
  return {name,       meaning, Severity::kBad, kNoDefault, Severity::kBad,
          kEmptyText, true,    false,          judge};
}

std::vector<KeyRule> MakeRules() {
  KeyRule secret = Mandatory("OAuth_AsClient_app_secret", "the OAuth client secret", JudgeForm);
  secret.secret = true;
  return {
      {"account_log_level", "the least severity of the component's log lines", Severity::kGood,
       "is absent: LOG_INFO counts", Severity::kWarning, "is empty: LOG_INFO counts", false, false,
       JudgeLogLevel},
      {"account_use_session", "", Severity::kGood, "is absent: session mode is on",
       Severity::kWarning, "is empty, which counts as off: write \"on\" or \"off\"", false, false,
       JudgeSession},
      {"account_default_value",
       "the user whom the list of all users also holds with session mode "
       "off",
       Severity::kGood, "is absent: no default user", Severity::kWarning,
       "is empty: with session mode off, the list of all users holds an empty entry", false, false,
       JudgeNothing},
      {"qorn_storage_path", "the folder of the database", Severity::kGood,
       "is absent: the database lies in the program's folder", Severity::kGood,
       "is empty: the database lies in the program's folder", false, false, JudgeFolder},
      {"account_db_path", "the file name of the database", Severity::kBad,
       "is missing: no account can be stored or found", Severity::kBad,
       "is empty: no account can be stored or found", false, false, JudgeFileName},
      Mandatory("OAuth_AsClient_app_name", "the name of this application", JudgeNothing),
      Mandatory("OAuth_AsClient_app_id", "the OAuth client ID", JudgeForm),
      secret,
      Mandatory("account_device_type_code", "what kind of device this is", JudgeXml),
      Mandatory("account_device_model_id", "the gateway's model", JudgeXml),
      Mandatory("account_device_physical_address_text", "the gateway's hardware address",
                JudgeAddress),
      Mandatory("account_service", "the service that the gateway is registered for", JudgeXml),
      Mandatory("account_server_type", "the kind of traversal servers", JudgeXml),
      Mandatory("account_zep_auth_url", "the account server's base URL", JudgeUrl),
      Mandatory("account_user_portal_url", "the User Portal's base URL", JudgeUrl),
      Mandatory("account_qor_device_name", "the gateway's name for its users", JudgeNothing),
      {"account_enable_MIRLO_network_setting", "", Severity::kWarning,
       "is absent, which counts as off and leaves an error line in the log: write \"on\" or "
       "\"off\"",
       Severity::kWarning,
       "is empty, which counts as off and leaves an error line in the log: write \"on\" or "
       "\"off\"",
       false, false, JudgeNetwork},
  };
}

void JudgeBusLimit(const std::string& value, Finding* finding) {
  int limit = 0;
  if (ParseBusLimit(value, &limit)) return;
  finding->MarkBad("is no number from 1 to 1000000: with --bus the gateway does not start");
}

void JudgeDurableStorage(const std::string& value, Finding* finding) {
  JudgeSwitch(value, "a power cut loses no change that was answered",
              "a power cut can undo the change before it", finding);
}

void JudgeStartSpread(const std::string& value, Finding* finding) {
  std::chrono::seconds spread{0};
  if (ParseStartSpread(value, &spread)) return;
  finding->MarkBad("is no number of seconds from 0 to 86400: the gateway does not start");
}

KeyRule HostKey(const char* name, const char* meaning, decltype(KeyRule::judge) judge) {
  return {.name = name,
          .meaning = meaning,
          .absent_severity = Severity::kGood,
          .absent = "",
          .empty_severity = Severity::kWarning,
          .empty = "is empty: the usual value counts",
          .in_order = false,
          .secret = false,
          .judge = judge};
}

std::vector<KeyRule> MakeHostRules() {
  std::vector<KeyRule> rules = {
      HostKey(kDurableStorageKey, "", JudgeDurableStorage),
      HostKey(kStartSpreadKey, "the longest wait in seconds before components are loaded",
              JudgeStartSpread),
      HostKey(kBusGroupKey, "the group whose members may look and sign in on the bus",
              JudgeNothing)};
  for (const BusLimitKey& key : kBusLimitKeys) {
    rules.push_back(HostKey(key.name, key.meaning, JudgeBusLimit));
  }
  return rules;
}

}  // namespace

const std::vector<KeyRule>& HostKeyRules() {
  static const std::vector<KeyRule> rules = MakeHostRules();
  return rules;
}

const std::vector<KeyRule>& KeyRules() {
  static const std::vector<KeyRule> rules = MakeRules();
  return rules;
}

std::string NearestKey(const std::string& name) {
  std::vector<std::string> names;
  for (const auto* rules : {&KeyRules(), &HostKeyRules()}) {
    for (const KeyRule& rule : *rules) names.emplace_back(rule.name);
  }
  return NearestWord(name, names);
}

}  // namespace gateway
