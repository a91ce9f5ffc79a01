// The power is cut at each moment of a story. Whatever the disk then holds, the database is sound,
// the component starts on it, and with durable storage each answered change is there.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <optional>
#include <random>
#include <unordered_set>

#include "bench/memory_disk.h"
#include "gateway/host/durable_storage.h"
#include "gateway/host/host.h"
#include "runtime/runtime.h"
#include "sql/connection.h"
#include "tests/faults/operation_sweep.h"
#include "tests/faults/power_cut.h"

namespace faults {
namespace {

constexpr const char* kStory[] = {
    "create-user ann@x $code_ann",
    "create-user bob@x $code_bob",
    "create-user tim@x $code_tim",
    "sign-in ann@x $code_ann",
    "sign-in-alt bob@x ''",
    "set-user-info-by-type $ann 201 Anna",
    "refresh-access-token ann@x",
    "add-friend-to-db $ann f1 g d a p",
    "add-friend-to-db $ann f2 g d a p",
    "add-friend-to-db $ann f3 g d a p",
    "add-friend-candidate $ann pal@x $peer",
    "add-friend-request pal@x $friend_auth_code $code_pal m d a",
    "remove-friend-from-db $ann f2 p",
    "set-user-info-by-type $ann 200 anna@x",
    "sign-in-alt anna@x ''",
    "sign-out $session_id",
    "remove-friend-request $ann pal@x $peer",
    "add-friend-to-db $ann f4 g d a p",
    "remove-user bob@x anna@x",
    "refresh-access-token bob@x",
    "create-user ann@x $code_ann",
    "sign-in tim@x $code_tim",
    "do-factory-reset",
    "create-user eve@x $code_eve",
    "sign-in eve@x $code_eve",
    "add-friend-to-db $user_uuid f5 g d a p",
    "sign-in-alt eve@x ''",
    "create-user tim@x $code_tim",
    "remove-user eve@x tim@x",
    "set-user-info-by-type $eve 201 Eve",
};

class PowerCuts : public StoredUsersTest {
 protected:
  ~PowerCuts() override { sqlite3_vfs_unregister(sqlite3_vfs_find("qorn-durable")); }

  // Plays the story on a disk in memory, with this value of the host's key.
  void Play(const std::string& durable_storage);
  // Cuts the power at each moment, and starts on so many samples of what the disk may then hold.
  void CutEverywhere(bool syncs, int samples);

  int states_ = 0;
  int lost_ = 0;    // An answered change is not there.
  int broken_ = 0;  // No state of the database that it ever had.

 private:
  // The tables after the component has started on these files; none if that or something else
  // failed.
  std::optional<Rows> StartOn(const PowerCut::Files& files);
  // All rows of both tables; none if the database is not sound.
  std::optional<Rows> ReadTables() const;
  void CutNow(const PowerCut& cut, int samples);
  void Judge(const PowerCut::Files& files);

  bench::MemoryDisk disk_;
  std::vector<bench::DiskChange> changes_;
  std::map<std::size_t, Rows>
      answered_;                     // The tables after so many changes, when an operation was.
  std::vector<Rows> history_;        // What the tables held until now, each time they changed.
  std::size_t newest_answered_ = 0;  // Its place in there.
  std::unordered_set<std::size_t> seen_;
  std::mt19937 random_{16};
};

std::optional<Rows> PowerCuts::ReadTables() const {
  Rows rows;
  sql::Connection database;
  if (!database.Open(FilePath::FromUTF8Unsafe(database_path()))) return std::nullopt;
  for (const char* sql : {"PRAGMA integrity_check",
                          "SELECT * FROM Users UNION ALL SELECT *, '' FROM Friends ORDER BY 1"}) {
    sql::Statement statement = database.GetUniqueStatement(sql);
    while (statement.Step()) {
      std::string& row = rows.emplace_back();
      for (int column = 0; column < 9; ++column) row += statement.ColumnString(column) + "|";
    }
    if (!statement.Succeeded()) return std::nullopt;
  }
  return rows[0] == "ok|||||||||" ? std::optional(rows) : std::nullopt;
}

void PowerCuts::Play(const std::string& durable_storage) {
  config_[gateway::kDurableStorageKey] = durable_storage;
  StartRuntime();
  runtime::Runtime::Destroy();
  std::string error;
  // It makes the storage durable, and then finds no account interface.
  EXPECT_EQ(gateway::Host::Start(folder_ + "/config.xml", {}, &error), nullptr);
  StartRuntime();
  variables_.Set("peer", cloud_->PeerId(account::kGatewayAddress));
  disk_.Observe([this](const bench::DiskChange& change) { changes_.push_back(change); });
  StartService();
  for (const std::string line : kStory) {
    for (const std::string id : {"ann", "bob", "eve", "pal", "tim"}) {
      variables_.Set("code_" + id, cloud_->IssueCode(id + "@x"));
    }
    EXPECT_EQ(Call(line).code, 1) << line;
    if (line.starts_with("create-user ")) {
      variables_.Set(line.substr(12, 3), *variables_.Find("user_uuid"));
    }
    answered_[changes_.size()] = ReadTables().value();
  }
  service_->Shutdown();
  disk_.Observe({});
  log_.Take();
}

std::optional<Rows> PowerCuts::StartOn(const PowerCut::Files& files) {
  disk_.SetFiles(files);
  StartService();
  std::vector<std::string> users;
  const int code = service_->GetAllUsersUUID(&users);
  service_->Shutdown();
  log_.Take();
  return code == 1 ? ReadTables() : std::nullopt;
}

void PowerCuts::Judge(const PowerCut::Files& files) {
  ++states_;
  const std::optional<Rows> rows = StartOn(files);
  const auto found = rows ? std::find(history_.rbegin(), history_.rend(), *rows) : history_.rend();
  const auto place = static_cast<std::size_t>(history_.rend() - found);  // 0 if it is not there.
  if (place == 0) {
    ++broken_;
  } else if (place <= newest_answered_) {
    ++lost_;
  }
}

void PowerCuts::CutNow(const PowerCut& cut, int samples) {
  std::vector<PowerCut::Files> all;
  for (const bool files : {true, false}) {
    for (const bool folder : {true, false}) all.push_back(cut.Extreme(files, folder));
  }
  for (int i = 0; i < samples; ++i) all.push_back(cut.Sample(random_));
  for (const PowerCut::Files& files : all) {
    std::size_t hash = newest_answered_;
    for (const auto& [name, data] : files) {
      hash = hash * 31 + std::hash<std::string>()(name + data);
    }
    if (seen_.insert(hash).second) Judge(files);
  }
}

void PowerCuts::CutEverywhere(bool syncs, int samples) {
  PowerCut cut(syncs);
  for (std::size_t moment = 0; moment <= changes_.size(); ++moment) {
    if (moment > 0) cut.Follow(changes_[moment - 1]);
    // A deleted journal is a commit.
    if (moment == 0 || changes_[moment - 1].kind == bench::DiskChange::Kind::kDelete) {
      const Rows now = StartOn(cut.Extreme(true, true)).value();
      if (history_.empty() || history_.back() != now) history_.push_back(now);
    }
    if (const auto answered = answered_.find(moment); answered != answered_.end()) {
      ASSERT_EQ(history_.back(), answered->second);
      newest_answered_ = history_.size() - 1;
    }
    CutNow(cut, samples);
  }
  std::printf("%zu moments, %d states: %d lost an answered change, %d are not sound\n",
              changes_.size() + 1, states_, lost_, broken_);
  RecordProperty("faults", states_);
}

TEST_F(PowerCuts, LoseNothingWithDurableStorage) {
  Play("on");
  CutEverywhere(true, 320 / FaultStep(320));
  EXPECT_EQ(lost_, 0);
  EXPECT_EQ(broken_, 0);
}

// SQLite's own settings: the deleted journal may come back.
TEST_F(PowerCuts, UndoTheLatestChangeWithoutIt) {
  Play("yes");
  CutEverywhere(true, 320 / FaultStep(320));
  EXPECT_GT(lost_, 0);
  EXPECT_EQ(broken_, 0);
}

// What the other two would show if a sync were missing.
TEST_F(PowerCuts, AreNotSurvivedWithoutSyncs) {
  Play("on");
  CutEverywhere(false, 8 / FaultStep(8));
  EXPECT_GT(lost_, 0);
  EXPECT_GT(broken_, 0);
}

}  // namespace
}  // namespace faults
