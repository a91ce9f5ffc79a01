// The directives of scenarios, in the order in which README.md describes them.
#include <future>
#include <nlohmann/json.hpp>
#include <regex>

#include "base/time.h"
#include "devcloud/faults/fault_json.h"
#include "devcloud/http/json_text.h"
#include "evt/event_manager.h"
#include "gateway/output/text.h"
#include "runtime/runtime.h"
#include "tests/scenario_runner.h"

namespace scenarios {
namespace {

bool OnOrOff(const std::string& word) {
  if (word != "on" && word != "off") Fail("neither on nor off: " + word);
  return word == "on";
}

// \xNN is a byte.
std::string Unescape(const std::string& text) {
  std::string bytes;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool escaped = text.compare(at, 2, "\\x") == 0;
    bytes += escaped ? static_cast<char>(std::stoi(text.substr(at + 2, 2), nullptr, 16)) : text[at];
    if (escaped) at += 3;
  }
  return bytes;
}

}  // namespace

using W = const Words&;

void ScenarioRunner::AddChecks() {
  Check("out", 1 + kOrMore, [this](W w) {
    if (outputs_[w[0]] != Words(w.begin() + 1, w.end())) {
      Fail("found: " + gateway::JoinWords(outputs_[w[0]]));
    }
    written_.erase(w[0]);
  });
  Check("log", kText, [this](W w) {
    if (connect_ == nullptr) TakeNext(&lines_, LogLine(w[0]));
    told_lines_ = true;
  });
  Check("trace", 2, [this](W w) {
    if (connect_ != nullptr) return;
    const auto [start, end] = StartAndEnd(w[0], std::stoi(w[1]));
    TakeNext(&lines_, start);
    TakeNext(&lines_, end);
    told_lines_ = true;
  });
  Check("no-log", 0, [this](W) { told_lines_ = true; });
  Check("any-log", 0, [this](W) { lines_.clear(); });
  Check("event", kText, [this](W w) {
    TakeNext(&events_, w[0]);
    told_events_ = true;
  });
  Check("no-events", 0, [this](W) { told_events_ = true; });
  Check("row", kText, [this](W w) { TakeNext(&rows_, w[0]); });
  Check("value", kNameAndText, [this](W w) {
    const Words rows = Sql(w[1]);
    if (rows.size() != 1) Fail(std::to_string(rows.size()) + " rows");
    variables_.Set(w[0], rows[0]);
  });
}

void ScenarioRunner::AddLife() {
  Step("config", 1 + kOrMore, [this](W w) {
    config_.erase(w[0]);
    if (w.size() > 1) config_[w[0]] = w[1];
  });
  Step("start", 0, [this](W) {
    StartRuntime();
    if (!service_.Init()) Fail("Init answered false");
    if (connect_ != nullptr) access_ = connect_(&service_);
    running_ = true;
    MoveClock("0");  // Waits until the worker has armed its timer.
  });
  Step("stop", 0, [this](W) {
    running_ = false;
    access_.reset();
    if (!service_.Shutdown() || !service_.Shutdown()) Fail("Shutdown answered false");
    runtime::Runtime::Destroy();
    Collect();
  });
  Step("clock", 1, [this](W w) { MoveClock(w[0]); });
  Step("date", 1, [this](W w) {
    clock_.SetTimeOfDay(base::Time() + base::TimeDelta::FromSeconds(std::stoll(w[0])));
    MoveClock("0");
  });
  Step("tick", 0, [this](W) { MoveClock("60"); });
  Step("pauses", kNameAndText, [this](W w) {
    const std::string step = CutFirst(CutFirst(line_->text).second).second;
    const int sleepers = running_ ? 2 : 1;  // The worker is one.
    auto done = std::async(std::launch::async, [this, step] { RunLine(step); });
    for (int i = std::stoi(w[0]); i > 0; --i) {
      clock_.WaitForSleepers(sleepers);
      if (--pauses_locked_ == 0) lock_.reset();
      clock_.Advance(base::TimeDelta::FromMilliseconds(500));
    }
    done.get();
  });
  Step("on-line", 3 + kOrMore, [this](W w) {
    if (gateway::FindCommandOperation(w[2]) == nullptr) Fail("unknown operation");
    const std::string awaited = Replace(LogLine(w[0]), "\\n", "\n");
    log_.OnLine([this, awaited, w](const std::string& line) {
      if (line != awaited) return;
      log_.OnLine(nullptr);
      gateway::Answer answer;
      std::string error;
      gateway::FindCommandOperation(w[2])->Call(accounts(), {w.begin() + 3, w.end()}, &answer,
                                                &error);
      EXPECT_EQ(std::to_string(answer.code), w[1]) << error;
    });
  });
}

void ScenarioRunner::AddValues() {
  Step("code", 1, [this](W w) {
    variables_.Set("code", cloud_->IssueCode(w[0]));
    variables_.Set("guid", cloud_->UserGuid(w[0]));
  });
  Step("user", 1, [this](W w) {
    RunLine("code " + w[0]);
    RunOperation("1 create-user " + w[0] + " $code");
    const std::string name = w[0].substr(0, w[0].find('@'));
    RunLine("set " + name + " $user_uuid");
    RunLine("set " + name + "_guid $guid");
    cloud_->ClearRequests();
  });
  Step("set", kNameAndText, [this](W w) { variables_.Set(w[0], Unescape(w[1])); });
  Step("repeat", 3, [this](W w) {
    std::string text;
    for (int i = std::stoi(w[1]); i > 0; --i) text += w[2];
    variables_.Set(w[0], text);
  });
  Step("check", 3, [](W w) {
    const bool good =
        w[1] == "!=" ? w[0] != w[2] : w[1] == "~" && std::regex_match(w[0], std::regex(w[2]));
    if (!good) Fail("found: " + gateway::JoinWords(w));
  });
  Step("sql", kText, [this](W w) {
    for (const std::string& row : Sql(w[0])) rows_.push_back(row);
  });
}

void ScenarioRunner::AddSurroundings() {
  Step("requests", kOrMore, [this](W w) {
    requests_ = cloud_->requests();
    cloud_->ClearRequests();
    Words targets;
    for (const auto& request : requests_) targets.push_back(request.target);
    if (targets != w) Fail("found: " + gateway::JoinWords(targets));
  });
  Step("request", kNameAndText, [this](W w) {
    const std::string& raw = requests_.at(std::stoul(w[0]) - 1).raw;
    std::smatch found;
    if (!std::regex_search(raw, found, std::regex(w[1]))) Fail("found: " + raw);
    if (found.size() > 1) variables_.Set("found", found[1]);
  });
  Step("raw", 1, [this](W w) {
    std::string raw = requests_.at(std::stoul(w[0]) - 1).raw;
    for (std::size_t end; (end = raw.find("\r\n")) != std::string::npos; raw.erase(0, end + 2)) {
      rows_.push_back(raw.substr(0, end));
    }
    rows_.push_back(raw);
  });
  Step("fault", kText, [this](W w) {
    devcloud::Fault fault;
    std::string error;
    if (!devcloud::ParseFault(devcloud::ParseJson(w[0]), &fault, &error)) Fail(error);
    cloud_->AddFault(fault);
  });
  Step("refuse-cloud", 1, [this](W w) { cloud_->RefuseConnections(OnOrOff(w[0])); });
  Step("gateway", 1, [this](W w) { cloud_->AddGateway(w[0]); });
  Step("registered", 3, [this](W w) {
    if (cloud_->IsRegistered(w[0], w[1]) != OnOrOff(w[2])) Fail("it is not so");
  });
  Step("accepts", 2, [this](W w) {
    if (!cloud_->AcceptsToken(w[0], w[1])) Fail("it does not");
  });
  Step("flag", 1, [this](W w) { flag_ = w[0] == "true"; });
  Step("refuse-event", 2, [](W w) {
    evt::EventManager::GetInstance()->RefuseForTest(std::stoi(w[0]), OnOrOff(w[1]));
  });
  Step("lock", 1, [this](W w) {
    lock_.reset();
    pauses_locked_ = std::atoi(w[0].c_str());
    if (pauses_locked_ == 0 && !OnOrOff(w[0])) return;
    sqlite3* database = nullptr;
    sqlite3_open(database_path().c_str(), &database);
    lock_.reset(database);
    const int begun = sqlite3_exec(database, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
    if (begun != SQLITE_OK) Fail(sqlite3_errmsg(database));
  });
}

}  // namespace scenarios
