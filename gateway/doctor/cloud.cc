#include "gateway/doctor/cloud.h"

#include <curl/curl.h>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <optional>

#include "gateway/doctor/url.h"
#include "gateway/process/curl_options.h"
#include "gateway/process/proxies.h"

namespace gateway {
namespace {

constexpr long kTransferSeconds = 10;

struct Server {
  const char* key;   // of its base URL
  const char* name;  // in the findings' names
};
constexpr Server kServers[] = {{"account_zep_auth_url", "account_server"},
                               {"account_user_portal_url", "user_portal"}};

// How far a request came, and what the answer told.
struct Exchange {
  CURLcode code = CURLE_OK;
  std::string error;
  bool resolved = false;
  std::string address;               // "" when it is not known
  bool connected = false;            // TLS included
  long status = 0;                   // 0 without an answer
  std::optional<long> clock_offset;  // the server's clock minus ours, in seconds
};

size_t TakeNothing(char*, size_t, size_t count, void*) { return count; }

// libcurl calls it with the address as soon as a connection is made.
int TakeAddress(void* exchange, char* address, char*, int, int) {
  static_cast<Exchange*>(exchange)->address = address;
  return CURL_PREREQFUNC_OK;
}

void SetOptions(CURL* curl, const std::string& url, bool verify, Exchange* exchange, char* error) {
  SetCommonOptions(curl, url, kTransferSeconds, verify);
  curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, error);
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, TakeNothing);
  curl_easy_setopt(curl, CURLOPT_PREREQFUNCTION, TakeAddress);
  curl_easy_setopt(curl, CURLOPT_PREREQDATA, exchange);
}

// An HTTP date, in any of its three formats. Not curl_getdate: the library of Debian's armhf
// returns 32 bits where this program expects the 64 of its own time_t.
std::optional<time_t> ParseHttpDate(const char* text) {
  for (const char* format :
       {"%a, %d %b %Y %H:%M:%S GMT", "%A, %d-%b-%y %H:%M:%S GMT", "%a %b %e %H:%M:%S %Y"}) {
    std::tm parts{};
    const char* end = strptime(text, format, &parts);
    if (end != nullptr && *end == '\0') return timegm(&parts);
  }
  return std::nullopt;
}

std::optional<long> ClockOffset(CURL* curl) {
  curl_header* date = nullptr;
  if (curl_easy_header(curl, "Date", 0, CURLH_HEADER, -1, &date) != CURLHE_OK) return std::nullopt;
  const std::optional<time_t> cloud = ParseHttpDate(date->value);
  if (!cloud) return std::nullopt;
  // Not std::time, which lags behind by up to a tick of the kernel and so would show a second.
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<long>(*cloud - now.tv_sec);
}

Exchange Ask(const std::string& url, bool verify) {
  Exchange exchange;
  const std::unique_ptr<CURL, CurlDeleter> curl(curl_easy_init());
  char error[CURL_ERROR_SIZE] = "";
  SetOptions(curl.get(), url, verify, &exchange, error);
  exchange.code = curl_easy_perform(curl.get());
  const bool in_detail = error[0] != '\0' && exchange.code != CURLE_COULDNT_CONNECT;
  exchange.error = in_detail ? error : curl_easy_strerror(exchange.code);
  curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &exchange.status);
  exchange.connected = !exchange.address.empty();
  curl_off_t lookup_time = 0;
  curl_easy_getinfo(curl.get(), CURLINFO_NAMELOOKUP_TIME_T, &lookup_time);
  exchange.resolved = exchange.code != CURLE_COULDNT_RESOLVE_HOST && lookup_time > 0;
  exchange.clock_offset = ClockOffset(curl.get());
  return exchange;
}

Finding ExamineCertificate(const std::string& url) {
  Finding finding{"certificate", std::nullopt, "is valid, although the gateway does not check it"};
  const Exchange exchange = Ask(url, true);
  if (exchange.code == CURLE_PEER_FAILED_VERIFICATION) {
    finding.MarkWarning("would not pass a check, which the gateway does not make: " +
                        exchange.error);
  } else if (!exchange.connected) {
    finding.MarkWarning("could not be checked: " + exchange.error);
  }
  return finding;
}

Finding ExamineAnswer(const Exchange& exchange) {
  Finding finding{"answer", std::nullopt, "answers with HTTP"};
  if (exchange.status == 0) {
    finding.MarkBad("no HTTP answer: " + exchange.error);
    return finding;
  }
  finding.value = "status " + std::to_string(exchange.status);
  if (exchange.status >= 500) {
    finding.MarkWarning("the server is in trouble: ask whoever runs it");
  }
  return finding;
}

void JudgeClock(long seconds, Finding* finding) {
  const long apart = std::labs(seconds);
  // Rounded to ten seconds: the header has whole seconds, and the answer took a while to arrive.
  finding->value = std::to_string(std::lround(static_cast<double>(seconds) / 10) * 10) + " s";
  finding->Mark(Severity::kGood, "the clocks agree");
  if (apart > 60) {
    finding->Mark(apart > 300 ? Severity::kBad : Severity::kWarning,
                  std::string("the cloud's clock is ") + (seconds > 0 ? "ahead" : "behind") +
                      ": set this machine's clock, by NTP if it can be reached");
  }
}

Finding ExamineClock(const Exchange& exchange) {
  Finding finding{"clock", std::nullopt, "the answer has no Date header to compare clocks with"};
  if (exchange.clock_offset) JudgeClock(*exchange.clock_offset, &finding);
  return finding;
}

Finding ExamineName(const Exchange& exchange) {
  Finding finding{"name", std::nullopt, "the host's name was found"};
  if (!exchange.address.empty()) finding.value = exchange.address;
  if (!exchange.resolved) {
    finding.MarkBad(exchange.error + ": check the URL and this machine's DNS");
  }
  return finding;
}

Finding ExamineConnection(const Exchange& exchange) {
  Finding finding{"connection", std::nullopt, "made within 5 seconds"};
  if (!exchange.connected) {
    finding.MarkBad(exchange.error + ": check the URL, the network and the server");
  }
  return finding;
}

Findings Examine(const std::string& url) {
  Finding syntax;
  if (!url.empty()) JudgeUrl(url, &syntax);
  if (url.empty() || syntax.severity == Severity::kBad) {
    return {{"connection", std::nullopt, "not tried without a usable base URL", Severity::kBad}};
  }
  // The component does not check a certificate if the URL contains "https" anywhere.
  const bool unchecked = url.find("https") != std::string::npos;
  const Exchange exchange = Ask(url, !unchecked);
  Findings findings = {ExamineName(exchange)};
  if (HasBad(findings)) return findings;
  findings.push_back(ExamineConnection(exchange));
  if (HasBad(findings)) return findings;
  if (unchecked) findings.push_back(ExamineCertificate(url));
  findings.push_back(ExamineAnswer(exchange));
  if (!HasBad(findings)) findings.push_back(ExamineClock(exchange));
  return findings;
}

Finding ExamineProxy() {
  Finding finding{"cloud.proxy", std::nullopt, "no proxy variable is set"};
  const std::string names = ProxyVariablesInUse();
  if (names.empty()) return finding;
  finding.value = names;
  finding.MarkWarning("the gateway ignores proxies and talks to the cloud directly");
  return finding;
}

}  // namespace

Findings ExamineCloud(const ConfigValues& config) {
  Findings findings = {ExamineProxy()};
  for (const Server& server : kServers) {
    for (Finding& finding : Examine(ConfigValue(config, server.key))) {
      finding.name = std::string("cloud.") + server.name + "." + finding.name;
      findings.push_back(finding);
    }
  }
  return findings;
}

}  // namespace gateway
