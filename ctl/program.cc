#include "ctl/program.h"

#include <atomic>
#include <iostream>
#include <map>
#include <memory>
#include <utility>

#include "client/include/qorn_client.h"
#include "gateway/console/console.h"
#include "gateway/console/session.h"
#include "gateway/console/views.h"
#include "gateway/console/words.h"
#include "gateway/operations/audit.h"
#include "gateway/operations/seen_ids.h"
#include "gateway/output/printer.h"
#include "gateway/output/style.h"
#include "gateway/process/activity.h"
#include "gateway/process/exit_status.h"
#include "gateway/process/signals.h"
#include "gateway/process/standard_streams.h"

namespace ctl {
namespace {

using gateway::FieldRows;

gateway::PrinterStyle MakeStyle(const Options& options) {
  gateway::PrinterStyle style = gateway::MakeStyle(options.json, options.show_secrets);
  style.program = "qornctl";
  return style;
}

gateway::SeenEvent SeenEventOf(const qorn::ClientEvent& event) {
  gateway::SeenEvent seen{.type = event.type, .name = event.name, .fields = {}};
  for (const auto& [name, value] : event.fields) {
    seen.fields.push_back({.name = name, .values = {value}});
  }
  return seen;
}

void TakeRows(const qorn::ClientRows& from, FieldRows* rows) {
  for (const auto& row : from) {
    std::vector<gateway::Field>& fields = rows->emplace_back();
    for (const auto& [name, value] : row) fields.push_back({.name = name, .values = {value}});
  }
}

AccountResult ListUsers(const qorn::Client& client, FieldRows* users) {
  qorn::ClientRows rows;
  const AccountResult result = client.ListUsers(&rows);
  TakeRows(rows, users);
  return result;
}

// Each row gets its user's ID behind the user's UUID.
AccountResult ListFriends(const qorn::Client& client, const std::string& user_uuid,
                          FieldRows* friends) {
  qorn::ClientRows users, rows;
  AccountResult result = client.ListUsers(&users);
  if (result == kAccountSuccess) result = client.ListFriends(user_uuid, &rows);
  std::map<std::string, std::string> ids;
  for (const auto& user : users) ids[user.at(0).second] = user.at(1).second;
  for (auto& row : rows) row.insert(row.begin() + 1, {"user_id", ids[row.at(0).second]});
  TakeRows(rows, friends);
  return result;
}

// The program from its start to its end.
class Program {
 public:
  explicit Program(const Options& options)
      : options_(options),
        printer_(std::cout, std::cerr, MakeStyle(options)),
        signals_([this] { SayStopping(); }, [] {}) {}

  int Run();

 private:
  // True when a person types the commands.
  bool IsTyped() const { return options_.command.empty() && gateway::IsTyped(""); }
  void SayStopping();
  bool Connect();
  bool RunCommands(gateway::Console* console);
  gateway::ConsoleServices MakeServices();
  void Watch(std::optional<std::chrono::seconds> time);
  void OnEvent(const qorn::ClientEvent& event);

  const Options& options_;
  gateway::Printer printer_;
  gateway::Activity activity_;
  gateway::SeenIds seen_ids_;
  gateway::Audit audit_;  // the gateway keeps one
  gateway::StopSignals signals_;
  std::string version_;
  std::atomic<bool> shows_events_{false};
  std::unique_ptr<qorn::Client> client_;
};

void Program::SayStopping() {
  const std::string busy = activity_.Get();
  if (!busy.empty()) printer_.Error("stopping: waiting for " + busy);
}

bool Program::Connect() {
  const qorn::ClientOptions options{
      .address = options_.address,
      .timeout = std::chrono::seconds(options_.timeout_seconds),
      .on_wait = [this](const std::string& line) { printer_.Error(line); }};
  std::string error;
  client_ = qorn::Client::Connect(options, &error);
  if (client_ != nullptr && client_->Ping()) {
    client_->GetVersion(&version_);
    return true;
  }
  if (client_ != nullptr) error = qorn::Client::LastError();
  printer_.Error("no gateway answers: " + error + "; start one with: qorn-gateway --daemon --bus " +
                 options_.address);
  return false;
}

int Program::Run() {
  if (!Connect()) return gateway::kExitCannotStart;
  shows_events_ = IsTyped();
  const int listener =
      client_->AddListener([this](const qorn::ClientEvent& event) { OnEvent(event); });
  const gateway::ConsoleServices services = MakeServices();
  if (IsTyped()) gateway::NoteStoredIds(services, &seen_ids_);
  gateway::Console console(services, {&printer_, &activity_, &seen_ids_, &audit_});
  const bool good = RunCommands(&console);
  client_->RemoveListener(listener);
  if (printer_.has_failed() && good && !IsTyped()) {
    printer_.Error("not all of the output could be written");
    return gateway::kExitCommandFailed;
  }
  return good ? gateway::kExitGood : gateway::kExitCommandFailed;
}

bool Program::RunCommands(gateway::Console* console) {
  if (options_.command.empty()) {
    return gateway::RunInput(gateway::MakeRunOptions("", options_.keep_going),
                             gateway::OpenInput(""), signals_, console, &printer_);
  }
  std::string line;
  for (const std::string& word : options_.command) {
    line += (line.empty() ? "" : " ") + gateway::EscapeWord(word);
  }
  const gateway::Console::Outcome outcome = console->Execute(line);
  if (!outcome.error.empty()) printer_.Error(outcome.error);
  return outcome.error.empty();
}

gateway::ConsoleServices Program::MakeServices() {
  gateway::ConsoleServices services;
  services.accounts = client_->accounts();
  services.facts.remote =
      options_.address + " bus" + (version_.empty() ? std::string() : ", version " + version_);
  services.flush_events = [] {};
  services.request_code = [](const std::string&, std::string*, std::string* error) {
    *error = "only the gateway's own console knows the account server";
    return false;
  };
  services.pause = [this](std::chrono::milliseconds time) { return signals_.WaitForStop(time); };
  services.watch = [this](std::optional<std::chrono::seconds> time) { Watch(time); };
  services.list_users = [this](FieldRows* users) { return ListUsers(*client_, users); };
  services.list_friends = [this](const std::string& user_uuid, FieldRows* friends) {
    return ListFriends(*client_, user_uuid, friends);
  };
  services.read_metrics = [this](std::string* text, std::string* error) {
    const AccountResult result = client_->GetMetrics(text);
    if (result != kAccountSuccess) *error = qorn::Client::LastError();
    return result == kAccountSuccess;
  };
  services.count_sessions = [this](int* count) { return client_->GetOpenSessions(count); };
  services.sign_in_needed = [this] {
    std::vector<std::string> uuids;
    client_->GetSignInNeeded(&uuids);
    return uuids;
  };
  services.explain = [] { return qorn::Client::LastError(); };
  return services;
}

void Program::Watch(std::optional<std::chrono::seconds> time) {
  const bool typed = gateway::IsTyped("");
  if (typed && !time) printer_.Say("Watching events; press Enter to end.");
  shows_events_ = true;
  gateway::WaitForEnter(signals_, typed, time);
  shows_events_ = IsTyped();
}

void Program::OnEvent(const qorn::ClientEvent& event) {
  const gateway::SeenEvent seen = SeenEventOf(event);
  seen_ids_.NoteEvent(seen);
  if (shows_events_) printer_.Show(gateway::EventRecord(seen));
}

}  // namespace

int RunCtl(const Options& options) {
  gateway::PrepareProcess();
  return Program(options).Run();
}

}  // namespace ctl
