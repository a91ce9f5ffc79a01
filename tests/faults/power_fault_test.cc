// The power is cut at each moment of a story. Whatever the disk then holds, the database is sound,
// the component starts on it, and with durable storage each answered change is there.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <unordered_set>

#include "bench/memory_disk.h"
#include "gateway/host/durable_storage.h"
#include "gateway/host/host.h"
#include "runtime/runtime.h"
#include "sql/connection.h"
#include "tests/faults/operation_sweep.h"

namespace faults {
namespace {

using bench::DiskChange;
using Kind = DiskChange::Kind;
using Files = bench::MemoryDisk::Files;

constexpr std::int64_t kSector = 512;

// Follows the changes of a disk up to the moment of a power cut. What was synced is there
// afterwards; of what was not, any part may be: of a file's writes any of their sectors, in any
// order; of the folder's entries, for each name, those up to some change of it.
class PowerCut {
 public:
  // A disk that lies about its syncs has synced nothing.
  explicit PowerCut(bool syncs) : syncs_(syncs) {}

  void Follow(const DiskChange& change);

  // What is left. So many tenths of the sectors that were not synced are there, and all or none of
  // such entries; without `entries_kept` any of them.
  Files Left(std::size_t tenths, std::optional<bool> entries_kept, std::mt19937& random) const;

 private:
  struct File {
    std::string synced;
    std::vector<DiskChange> pending;  // Truncations, and writes cut into sectors.
  };

  static void Make(const DiskChange& change, std::string* data) {
    const auto at = static_cast<std::size_t>(change.at);
    if (change.kind == Kind::kTruncate) return data->resize(at);
    bench::Overwrite(at, change.data, data);
  }

  const bool syncs_;
  std::map<int, File> files_;
  // The files that a name stood for, 0 for none: the one that was synced and those after it.
  std::map<std::string, std::vector<int>> entries_;
};

void PowerCut::Follow(const DiskChange& change) {
  const auto enter = [&](int file) {
    entries_.try_emplace(change.name, 1, 0).first->second.push_back(file);
  };
  File& file = files_[change.file];
  if (change.kind == Kind::kCreate) enter(change.file);
  if (change.kind == Kind::kDelete) enter(0);
  if (change.kind == Kind::kTruncate) file.pending.push_back(change);
  for (std::size_t begin = 0, end = 0; begin < change.data.size(); begin = end) {
    const std::int64_t at = change.at + static_cast<std::int64_t>(begin);
    end = begin + static_cast<std::size_t>(kSector - at % kSector);
    file.pending.push_back(change);
    file.pending.back().at = at;
    file.pending.back().data = change.data.substr(begin, end - begin);
  }
  if (change.kind == Kind::kSync && syncs_) {
    for (const DiskChange& pending : file.pending) Make(pending, &file.synced);
    file.pending.clear();
  }
  if (change.kind == Kind::kSyncFolder && syncs_) {
    for (auto& [name, entries] : entries_) entries.erase(entries.begin(), entries.end() - 1);
  }
}

Files PowerCut::Left(std::size_t tenths, std::optional<bool> entries_kept,
                     std::mt19937& random) const {
  Files files;
  for (const auto& [name, entries] : entries_) {
    const std::size_t last = entries.size() - 1;
    const int number =
        entries[entries_kept ? (*entries_kept ? last : 0) : random() % entries.size()];
    if (number == 0) continue;
    File file = files_.at(number);
    if (tenths < 10 && random() % 2 == 0) {
      std::shuffle(file.pending.begin(), file.pending.end(), random);
    }
    for (const DiskChange& pending : file.pending) {
      if (random() % 10 < tenths) Make(pending, &file.synced);
    }
    files[name] = file.synced;
  }
  return files;
}

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
  std::optional<Rows> StartOn(const Files& files);
  // All rows of both tables; none if the database is not sound.
  std::optional<Rows> ReadTables() const;
  void CutNow(const PowerCut& cut, int samples);

  bench::MemoryDisk disk_;
  std::vector<DiskChange> changes_;
  // The tables after so many changes, where an operation answered then.
  std::map<std::size_t, Rows> answered_;
  std::vector<Rows> history_;        // What the tables held until now, each time they changed.
  std::size_t newest_answered_ = 0;  // The place of the latest answered state in it.
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
  disk_.Observe([this](const DiskChange& change) { changes_.push_back(change); });
  StartService();
  std::ifstream story(QORN_STORY);
  for (std::string line; std::getline(story, line);) {
    if (line.starts_with('#')) continue;
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

std::optional<Rows> PowerCuts::StartOn(const Files& files) {
  disk_.SetFiles(files);
  StartService();
  std::vector<std::string> users;
  const int code = service_->GetAllUsersUUID(&users);
  service_->Shutdown();
  log_.Take();
  return code == 1 ? ReadTables() : std::nullopt;
}

void PowerCuts::CutNow(const PowerCut& cut, int samples) {
  std::vector<Files> all;
  for (const std::size_t tenths : {std::size_t{0}, std::size_t{10}}) {
    for (const bool entries : {true, false}) all.push_back(cut.Left(tenths, entries, random_));
  }
  for (int i = 0; i < samples; ++i) {
    all.push_back(cut.Left(1 + random_() % 9, std::nullopt, random_));
  }
  for (const Files& files : all) {
    std::size_t hash = newest_answered_;
    for (const auto& [name, data] : files) hash = hash * 31 + std::hash<std::string>()(name + data);
    if (!seen_.insert(hash).second) continue;
    const std::optional<Rows> rows = StartOn(files);
    const auto found =
        rows ? std::find(history_.rbegin(), history_.rend(), *rows) : history_.rend();
    const auto place = static_cast<std::size_t>(history_.rend() - found);  // 0 if it is not there.
    ++states_;
    broken_ += place == 0 ? 1 : 0;
    lost_ += place != 0 && place <= newest_answered_ ? 1 : 0;
  }
}

void PowerCuts::CutEverywhere(bool syncs, int samples) {
  PowerCut cut(syncs);
  for (std::size_t moment = 0; moment <= changes_.size(); ++moment) {
    if (moment > 0) cut.Follow(changes_[moment - 1]);
    // A deleted journal is a commit.
    if (moment == 0 || changes_[moment - 1].kind == Kind::kDelete) {
      const Rows now = StartOn(cut.Left(10, true, random_)).value();
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
