#include "gateway/console/status.h"

#include <sys/stat.h>

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

// A negative number is one that is not known: null in JSON.
Field NumberField(const std::string& name, long long value) {
  if (value < 0) return Field{name, {}, false, Field::Shape::kNumber};
  return Field{name, {std::to_string(value)}, false, Field::Shape::kNumber};
}

// -1 when there is no such file.
long long FileSize(const std::string& path) {
  struct stat state {};
  return stat(path.c_str(), &state) == 0 ? static_cast<long long>(state.st_size) : -1;
}

// What was asked of the component for one look.
struct Look {
  std::string users;  // their number, or why it is not known
  int lifetime = 0;
  int network_status = 0;
  std::string peer_id;
  long long database_bytes = -1;
  std::vector<Sightings::Session> sessions;
};

Look TakeLook(const ConsoleServices& services, Sightings* sightings) {
  AccountManager& accounts = *services.accounts;
  Look look;
  std::vector<std::string> users;
  const AccountResult result = accounts.GetAllUsersUUID(&users);
  look.users = result == kAccountSuccess ? std::to_string(users.size()) : DescribeResult(result);
  accounts.GetSessionLifetime(&look.lifetime);
  look.network_status = accounts.GetNetworkSettingStatus();
  std::string ignored;
  if (look.network_status == 1) {
    accounts.GetNTSServerInfoAndPeerID(&ignored, &ignored, &ignored, &ignored, &ignored,
                                       &look.peer_id);
  }
  look.database_bytes = FileSize(services.facts.database);
  for (Sightings::Session& session : sightings->sessions()) {
    // The user may have a new ID by now.
    if (accounts.GetSessionInfo(session.session_id, &session.user_id) == kAccountSuccess) {
      look.sessions.push_back(session);
    } else {
      sightings->Forget(session.session_id);
    }
  }
  return look;
}

std::vector<Field> SessionRow(const Sightings::Session& session) {
  const auto idle = std::chrono::steady_clock::now() - session.kept;
  return {{"session_id", {session.session_id}},
          {"user_id", {session.user_id}},
          NumberField("minutes_since_kept",
                      std::chrono::duration_cast<std::chrono::minutes>(idle).count())};
}

Table SessionTable(const Look& look) {
  Table table{"session",
              {{"session_id", "SESSION"},
               {"user_id", "USER"},
               {"minutes_since_kept", "MINUTES SINCE KEPT"}},
              {},
              ""};
  for (const Sightings::Session& session : look.sessions) table.rows.push_back(SessionRow(session));
  return table;
}

Table EventTable(const Sightings& sightings) {
  Table table{"past_event",
              {{"time", "TIME"}, {"event", "EVENT"}, {"user_id", "USER"}, {"friend_id", "FRIEND"}},
              {},
              ""};
  for (const Sightings::PastEvent& past : sightings.events()) {
    std::vector<Field>& row = table.rows.emplace_back();
    row = {{"time", {past.time}}, {"event", {past.event.name}}};
    row.insert(row.end(), past.event.fields.begin(), past.event.fields.end());
  }
  return table;
}

Record MakeRecord(const GatewayFacts& facts, const Look& look) {
  return Record{"status",
                "",
                {{"components", facts.components, false, Field::Shape::kList},
                 {"config", {facts.config_file}},
                 {"database", {facts.database}},
                 NumberField("database_bytes", look.database_bytes),
                 {"users", {look.users}, false, Field::Shape::kNumber},
                 NumberField("open_sessions", static_cast<long long>(look.sessions.size())),
                 NumberField("session_lifetime_minutes", look.lifetime),
                 {"network_setting", {facts.network_setting}},
                 NumberField("network_setting_status", look.network_status),
                 {"peer_id", {look.peer_id}},
                 {"account_server", {facts.account_server}},
                 {"user_portal", {facts.user_portal}},
                 {"log", {facts.log_file}},
                 {"audit", {facts.audit_file}}},
                "",
                {}};
}

std::string DescribeDatabase(const GatewayFacts& facts, const Look& look) {
  if (facts.database.empty()) return "none: the configuration names no file";
  if (look.database_bytes < 0) return facts.database + ", which is not there";
  return facts.database + ", " + std::to_string((look.database_bytes + 1023) / 1024) + " KiB";
}

std::string DescribeNetwork(const GatewayFacts& facts, const Look& look) {
  if (look.network_status == 1) return "fetched; this gateway's peer ID is " + look.peer_id;
  return facts.network_setting == "on" ? "not fetched yet" : "off";
}

std::string DescribeSessions(const Look& look) {
  return std::to_string(look.sessions.size()) + " open of those seen here; one lives " +
         std::to_string(look.lifetime) + " minutes without being kept";
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

std::string Summary(const GatewayFacts& facts, const Look& look, bool color) {
  const std::pair<const char*, std::string> lines[] = {
      {"Component", JoinWords(facts.components)},
      {"Configuration", OrNone(facts.config_file)},
      {"Database", DescribeDatabase(facts, look)},
      {"Users", look.users},
      {"Network setting", DescribeNetwork(facts, look)},
      {"Account server", OrNone(facts.account_server)},
      {"User Portal", OrNone(facts.user_portal)},
      {"Log", facts.log_file.empty() ? "standard error" : facts.log_file},
      {"Audit", OrNone(facts.audit_file)},
      {"Sessions", DescribeSessions(look)},
  };
  std::string text;
  for (const auto& [label, value] : lines) {
    text += Paint(PadTo(label, kLabelWidth), Tone::kTitle, color) + Visible(value) + "\n";
  }
  return text;
}

}  // namespace

void ShowStatus(const ConsoleServices& services, Sightings* sightings, Printer* printer) {
  const PrinterStyle& style = printer->style();
  const Look look = TakeLook(services, sightings);
  const Table sessions = SessionTable(look);
  const Table events = EventTable(*sightings);
  if (style.json) {
    printer->ShowLines(JsonLine(MakeRecord(services.facts, look), style.show_secrets) +
                       JsonLines(sessions, style.show_secrets) +
                       JsonLines(events, style.show_secrets));
    return;
  }
  std::string text = Summary(services.facts, look, style.color_out) + Indented(sessions, style);
  text += Paint("Last events", Tone::kTitle, style.color_out) +
          (events.rows.empty() ? "     none yet\n" : "\n");
  printer->ShowLines(text + Indented(events, style));
}

}  // namespace gateway
