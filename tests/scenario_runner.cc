#include "tests/scenario_runner.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <stdexcept>

#include "base/time.h"
#include "evt/event_manager.h"
#include "gateway/console/words.h"
#include "gateway/output/text.h"

namespace scenarios {
namespace {

// "get-user-uuid-from-user-id" is GetUserUUIDFromUserID.
std::string FunctionName(const std::string& operation) {
  static const std::set<std::string> kShort = {"uuid", "id", "db", "nts"};
  std::string name;
  for (std::string word : gateway::SplitAtBlanks(Replace(operation, "-", " "))) {
    const auto end = kShort.contains(word) ? word.end() : word.begin() + 1;
    std::transform(word.begin(), end, word.begin(),
                   [](unsigned char c) { return std::toupper(c); });
    name += word;
  }
  return name;
}

}  // namespace

void Fail(const std::string& found) {
  constexpr std::size_t kLongest = 1000;
  throw std::runtime_error(gateway::Visible(found.substr(0, kLongest)));
}

std::pair<std::string, std::string> CutFirst(const std::string& text) {
  const std::size_t blank = text.find(' ');
  return {text.substr(0, blank), blank == std::string::npos ? "" : text.substr(blank + 1)};
}

std::string Replace(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

std::string LogLine(const std::string& text) {
  const auto [severity, rest] = CutFirst(text);
  const auto [function, message] = CutFirst(rest);
  return account::Line(std::stoi(severity), function, message);
}

std::pair<std::string, std::string> StartAndEnd(const std::string& function, int code) {
  return {account::Line(2, function, function + "Start"),
          account::Line(code == 1 ? 2 : 4, function, function + "End" + account::Message(code))};
}

void TakeNext(std::deque<std::string>* found, const std::string& expected) {
  if (found->empty()) Fail("nothing more, expected: " + expected);
  if (found->front() != expected) Fail("found: " + found->front() + ", expected: " + expected);
  found->pop_front();
}

ScenarioRunner::ScenarioRunner(Scenario scenario, Connect connect)
    : scenario_(std::move(scenario)), connect_(connect) {
  setenv("TZ", "UTC0", 1);
  AddChecks();
  AddLife();
  AddValues();
  AddSurroundings();
  variables_.Set("folder", folder_);
  variables_.Set("host", cloud_->http_url().substr(sizeof("http://") - 1));
  variables_.Set("https_host", cloud_->https_url().substr(sizeof("https://") - 1));
  variables_.Set("peer", cloud_->PeerId(account::kGatewayAddress));
  MoveClock("0");
}

ScenarioRunner::~ScenarioRunner() {
  lock_.reset();
  access_.reset();
  service_.Shutdown();
  for (int number = 1; number <= 8; ++number) {
    evt::EventManager::GetInstance()->RefuseForTest(number, false);
  }
}

void ScenarioRunner::TestBody() {
  try {
    RunLines(scenario_.lines.begin(), scenario_.lines.end());
    Settle();
  } catch (const std::exception& error) {
    log_.Take();
    ADD_FAILURE_AT(scenario_.file.c_str(), line_->number) << line_->text << "\n" << error.what();
  }
}

void ScenarioRunner::RunLines(Lines begin, Lines end) {
  for (Lines at = begin; at != end;) {
    const Line& line = *at++;
    const auto [name, rest] = CutFirst(line.text);
    const auto directive = directives_.find(name);
    if (directive == directives_.end() || !directive->second.is_check) Settle();
    line_ = &line;
    if (name != "each") {
      RunLine(line.text);
      continue;
    }
    const Lines body = at;
    at = std::find_if(at, end, [&](const Line& next) { return next.indent <= line.indent; });
    const Words words = SplitWords(rest, 2 + kOrMore);
    for (std::size_t i = 1; i < words.size(); ++i) {
      variables_.Set(words[0], words[i]);
      RunLines(body, at);
    }
  }
}

void ScenarioRunner::RunLine(const std::string& text) {
  const auto [name, rest] = CutFirst(text);
  const auto found = directives_.find(name);
  if (found == directives_.end()) return RunOperation(text);
  const Directive& directive = found->second;
  if (directive.words == kText) return directive.run({Text(rest)});
  if (directive.words >= 0) return directive.run(SplitWords(rest, directive.words));
  const auto [first, more] = CutFirst(rest);
  directive.run({first, Text(more)});
}

void ScenarioRunner::RunOperation(const std::string& text) {
  const Words words = SplitWords(text, 2 + kOrMore);
  const gateway::Operation* operation = gateway::FindCommandOperation(words[1]);
  if (operation == nullptr) Fail("no directive and no operation");
  if (!running_) Fail("the service is not started");
  const Words arguments(words.begin() + 2, words.end());
  if (arguments.size() != operation->arguments.size()) Fail("number of arguments");
  gateway::Answer answer;
  answer.unwritten = {"untouched", flag_};
  std::string error;
  if (!operation->Call(accounts(), arguments, &answer, &error)) Fail(error);
  Collect();
  if (std::to_string(answer.code) != words[0]) Fail("answered " + std::to_string(answer.code));
  if (answer.code != 1 && !events_.empty()) Fail("event of a failure: " + events_.front());
  // These two write one line of their own.
  const bool alike = words[1] != "parse-account-message" && !answer.is_status;
  if (alike && connect_ == nullptr) {
    const auto [start, end] = StartAndEnd(FunctionName(words[1]), answer.code);
    TakeNext(&lines_, start);
    if (lines_.empty() || lines_.back() != end) Fail("the log does not end with: " + end);
    lines_.pop_back();
  }
  outputs_.clear();
  for (const gateway::Field& output : answer.outputs) {
    outputs_[output.name] = output.values;
    variables_.Set(output.name, gateway::JoinWords(output.values));
    if (answer.code != 1) written_.insert(output.name);
  }
}

void ScenarioRunner::Collect() {
  for (const std::string& line : log_.Take()) {
    if (connect_ == nullptr) lines_.push_back(Replace(line, "\n", "\\n"));
  }
  for (const std::string& event : bus_.Take()) events_.push_back(event);
}

void ScenarioRunner::Settle() {
  for (const std::string& line : lines_) {
    if (told_lines_ || line[0] >= '4') Fail("log that no line tells: " + line);
  }
  if (told_events_ && !events_.empty()) Fail("event that no line tells: " + events_.front());
  if (!rows_.empty()) Fail("row that no line tells: " + rows_.front());
  if (!written_.empty()) Fail("output that was written all the same: " + *written_.begin());
  lines_.clear();
  events_.clear();
  told_lines_ = told_events_ = false;
}

void ScenarioRunner::MoveClock(const std::string& seconds) {
  clock_.Advance(base::TimeDelta::FromMicroseconds(std::llround(std::stod(seconds) * 1e6)));
  if (running_) clock_.WaitForSleepers(1);
  variables_.Set("now", std::to_string(static_cast<long long>(base::Time::Now().ToDoubleT())));
  Collect();
}

Words ScenarioRunner::SplitWords(const std::string& text, int count) const {
  Words words;
  std::string error;
  if (!gateway::SplitWords(text, variables_, &words, &error)) Fail(error);
  const auto least = static_cast<std::size_t>(count % kOrMore);
  if (words.size() < least || (count < kOrMore && words.size() > least)) Fail("number of words");
  for (std::string& word : words) {
    const std::string* bytes = word.starts_with('%') ? variables_.Find(word.substr(1)) : nullptr;
    if (bytes != nullptr) word = *bytes;
  }
  return words;
}

std::string ScenarioRunner::Text(const std::string& text) const {
  const std::string quoted = Replace(Replace(text, "\\", "\\\\"), "\"", "\\\"");
  Words words;
  std::string error;
  if (!gateway::SplitWords("\"" + quoted + "\"", variables_, &words, &error)) Fail(error);
  return words[0];
}

}  // namespace scenarios
