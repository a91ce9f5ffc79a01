#include "gateway/console/status.h"

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "gateway/operations/result_names.h"
#include "gateway/output/json_lines.h"
#include "gateway/output/tables.h"
#include "gateway/output/text.h"

namespace gateway {
namespace {

constexpr size_t kLabelWidth = 16;

// None when there is no such file.
std::optional<uint64_t> FileSize(const std::string& path) {
  struct stat state {};
  if (stat(path.c_str(), &state) != 0) return std::nullopt;
  return static_cast<uint64_t>(state.st_size);
}

// The gateway at one moment.
struct Snapshot {
  std::string users;  // their number, or why it is not known
  int lifetime = 0;
  int network_status = 0;
  std::string peer_id;
  std::optional<uint64_t> database_bytes;
  std::optional<ConsoleServices::FreeSpace> free_space;
  int session_count = 0;
  std::vector<std::string> sign_in_needed;  // IDs of users
  std::vector<SeenIds::Session> sessions;   // those whose sign-in this program saw
};

Snapshot TakeSnapshot(const ConsoleServices& services, SeenIds* seen_ids) {
  AccountManager& accounts = *services.accounts;
  Snapshot snapshot;
  std::vector<std::string> users;
  const AccountResult result = accounts.GetAllUsersUUID(&users);
  snapshot.users =
      result == kAccountSuccess ? std::to_string(users.size()) : DescribeResult(result);
  for (const std::string& uuid : services.sign_in_needed()) {
    std::string& id = snapshot.sign_in_needed.emplace_back(uuid);
    accounts.GetUserInfoByType(uuid, kUserInfoGetUserId, &id);
  }
  accounts.GetSessionLifetime(&snapshot.lifetime);
  snapshot.network_status = accounts.GetNetworkSettingStatus();
  // Before the status is 1 another thread may be writing these strings.
  std::string ignored;
  if (snapshot.network_status == 1) {
    accounts.GetNTSServerInfoAndPeerID(&ignored, &ignored, &ignored, &ignored, &ignored,
                                       &snapshot.peer_id);
  }
  snapshot.database_bytes = FileSize(services.facts.database);
  if (services.free_space) snapshot.free_space = services.free_space();
  for (SeenIds::Session& session : seen_ids->sessions()) {
    // Asked again, since the user's ID may have changed since the sign-in.
    if (accounts.GetSessionInfo(session.session_id, &session.user_id) == kAccountSuccess) {
      snapshot.sessions.push_back(session);
    } else {
      seen_ids->Forget(session.session_id);
    }
  }
  snapshot.session_count = static_cast<int>(snapshot.sessions.size());
  if (services.count_sessions) services.count_sessions(&snapshot.session_count);
  return snapshot;
}

std::vector<Field> SessionRow(const SeenIds::Session& session) {
  const auto idle = std::chrono::steady_clock::now() - session.kept;
  return {{"session_id", {session.session_id}},
          {"user_id", {session.user_id}},
          NumberField("minutes_since_kept",
                      std::chrono::duration_cast<std::chrono::minutes>(idle).count())};
}

Table SessionTable(const Snapshot& snapshot) {
  Table table{.type = "session",
              .columns = {{"session_id", "SESSION"},
                          {"user_id", "USER"},
                          {"minutes_since_kept", "MINUTES SINCE KEPT"}}};
  for (const SeenIds::Session& session : snapshot.sessions)
    table.rows.push_back(SessionRow(session));
  return table;
}

Table EventTable(const SeenIds& seen_ids) {
  Table table{
      .type = "past_event",
      .columns = {
          {"time", "TIME"}, {"event", "EVENT"}, {"user_id", "USER"}, {"friend_id", "FRIEND"}}};
  for (const SeenIds::PastEvent& past : seen_ids.events()) {
    std::vector<Field>& row = table.rows.emplace_back();
    row = {{"time", {past.time}}, {"event", {past.event.name}}};
    row.insert(row.end(), past.event.fields.begin(), past.event.fields.end());
  }
  return table;
}

Field TextField(const char* name, const std::string& text) {
  return {.name = name, .values = {text}};
}

Record RemoteStatusRecord(const GatewayFacts& facts, const Snapshot& snapshot) {
  return {
      .type = "status",
      .attributes = {TextField("gateway", facts.remote),
                     {.name = "users", .values = {snapshot.users}, .shape = Field::Shape::kNumber},
                     NumberField("open_sessions", snapshot.session_count),
                     NumberField("session_lifetime_minutes", snapshot.lifetime),
                     NumberField("network_setting_status", snapshot.network_status),
                     TextField("peer_id", snapshot.peer_id),
                     ListField("sign_in_needed", snapshot.sign_in_needed)}};
}

Record StatusRecord(const GatewayFacts& facts, const Snapshot& snapshot) {
  if (!facts.remote.empty()) return RemoteStatusRecord(facts, snapshot);
  // Without a value a number is null in JSON.
  std::optional<uint64_t> free_bytes;
  if (snapshot.free_space) free_bytes = snapshot.free_space->bytes;
  const auto bytes = [](const char* name, std::optional<uint64_t> value) {
    return value ? NumberField(name, static_cast<int64_t>(*value))
                 : Field{.name = name, .shape = Field::Shape::kNumber};
  };
  return {
      .type = "status",
      .attributes = {ListField("components", facts.components),
                     TextField("config", facts.config_file),
                     TextField("database", facts.database),
                     bytes("database_bytes", snapshot.database_bytes),
                     bytes("free_bytes", free_bytes),
                     // A number, or the reason why there is none.
                     {.name = "users", .values = {snapshot.users}, .shape = Field::Shape::kNumber},
                     NumberField("open_sessions", snapshot.session_count),
                     NumberField("session_lifetime_minutes", snapshot.lifetime),
                     TextField("network_setting", facts.network_setting),
                     NumberField("network_setting_status", snapshot.network_status),
                     TextField("peer_id", snapshot.peer_id),
                     TextField("account_server", facts.account_server),
                     TextField("user_portal", facts.user_portal),
                     TextField("log", facts.log_file),
                     TextField("audit", facts.audit_file),
                     ListField("sign_in_needed", snapshot.sign_in_needed)}};
}

std::string DescribeDatabase(const GatewayFacts& facts, const Snapshot& snapshot) {
  if (facts.database.empty()) return "none: the configuration names no file";
  if (!snapshot.database_bytes) return facts.database + ", which is not there";
  return facts.database + ", " + std::to_string((*snapshot.database_bytes + 1023) / 1024) + " KiB";
}

std::string DescribeSpace(const Snapshot& snapshot) {
  if (!snapshot.free_space) return "not known";
  const std::string size = std::to_string(snapshot.free_space->bytes >> 20) + " MiB";
  return snapshot.free_space->is_low ? size + ": make room, or changes will be lost" : size;
}

std::string DescribeNetwork(const GatewayFacts& facts, const Snapshot& snapshot) {
  if (snapshot.network_status == 1) return "fetched; this gateway's peer ID is " + snapshot.peer_id;
  if (!facts.remote.empty()) return "not fetched";
  return facts.network_setting == "on" ? "not fetched yet" : "off";
}

std::string DescribeUsers(const Snapshot& snapshot) {
  if (snapshot.sign_in_needed.empty()) return snapshot.users;
  return snapshot.users + "; must sign in: " + JoinWords(snapshot.sign_in_needed);
}

std::string DescribeSessions(const GatewayFacts& facts, const Snapshot& snapshot) {
  const char* const open = facts.remote.empty() ? " open of those seen here" : " open";
  return std::to_string(snapshot.session_count) + open + "; one lives " +
         std::to_string(snapshot.lifetime) + " minutes without being kept";
}

std::string OrNone(const std::string& text) { return text.empty() ? "none" : text; }

// The table's lines, moved to the right.
std::string Indented(const Table& table, const PrinterStyle& style) {
  if (table.rows.empty()) return "";
  std::string lines;
  std::string line = "  ";
  for (char c : LayOut(table, style.show_secrets, style.color_out)) {
    line += c;
    if (c == '\n') lines += std::exchange(line, "  ");
  }
  return lines;
}

std::string Summary(const GatewayFacts& facts, const Snapshot& snapshot, bool color) {
  const std::vector<std::pair<const char*, std::string>> remote = {
      {"Gateway", facts.remote},
      {"Users", DescribeUsers(snapshot)},
      {"Network setting", DescribeNetwork(facts, snapshot)},
      {"Sessions", DescribeSessions(facts, snapshot)},
  };
  const std::vector<std::pair<const char*, std::string>> local = {
      {"Component", JoinWords(facts.components)},
      {"Configuration", OrNone(facts.config_file)},
      {"Database", DescribeDatabase(facts, snapshot)},
      {"Free space", DescribeSpace(snapshot)},
      {"Users", DescribeUsers(snapshot)},
      {"Network setting", DescribeNetwork(facts, snapshot)},
      {"Account server", OrNone(facts.account_server)},
      {"User Portal", OrNone(facts.user_portal)},
      {"Log", facts.log_file.empty() ? "standard error" : facts.log_file},
      {"Audit", OrNone(facts.audit_file)},
      {"Sessions", DescribeSessions(facts, snapshot)},
  };
  std::string text;
  for (const auto& [label, value] : facts.remote.empty() ? local : remote) {
    text += Paint(PadTo(label, kLabelWidth), Tone::kTitle, color) + Visible(value) + "\n";
  }
  return text;
}

}  // namespace

void ShowStatus(const ConsoleServices& services, SeenIds* seen_ids, Printer* printer) {
  const PrinterStyle& style = printer->style();
  const Snapshot snapshot = TakeSnapshot(services, seen_ids);
  const Table sessions = SessionTable(snapshot);
  const Table events = EventTable(*seen_ids);
  if (style.json) {
    printer->ShowLines(JsonLine(StatusRecord(services.facts, snapshot), style.show_secrets) +
                       JsonLines(sessions, style.show_secrets) +
                       JsonLines(events, style.show_secrets));
    return;
  }
  std::string text = Summary(services.facts, snapshot, style.color_out) + Indented(sessions, style);
  text += Paint("Last events", Tone::kTitle, style.color_out) +
          (events.rows.empty() ? "     none yet\n" : "\n");
  printer->ShowLines(text + Indented(events, style));
}

}  // namespace gateway
