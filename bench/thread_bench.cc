// Many threads that call at once, beside as many at the same floor under one mutex. The time of a
// call is the whole time divided by the calls of all threads.
#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

#include "base/logging.h"
#include "bench/compare.h"
#include "bench/home.h"
#include "bench/plain_sessions.h"
#include "bench/service.h"
#include "bench/stored_users.h"
#include "core_fw/account/src/account_log.h"
#include "core_fw/account/src/session_table.h"

namespace bench {
namespace {

constexpr long kUsers = 10;
constexpr long kSessions = 100;
constexpr auto kTime = std::chrono::milliseconds(20);

// Calls from so many threads for a while; each call gets a number of its own.
std::chrono::nanoseconds TimeOfCall(long threads, const std::function<void(long)>& call) {
  std::atomic<long> calls{0};
  std::atomic<bool> go{false}, stop{false};
  std::vector<std::thread> running;
  for (long t = 0; t < threads; ++t) {
    running.emplace_back([&, t] {
      while (!go) std::this_thread::yield();
      long made = 0;
      for (; !stop; ++made) call(t * 7919 + made);
      calls += made;
    });
  }
  const auto begin = std::chrono::steady_clock::now();
  go = true;
  std::this_thread::sleep_for(kTime);
  stop = true;
  for (std::thread& thread : running) thread.join();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now() -
                                                              begin) /
         std::max(1L, calls.load());
}

// The store and the sessions, and the floor with the same.
class Pair {
 public:
  Pair() {
    account::SetComponentLogLevel(logging::LOG_ERROR);
    {
      RawDatabase database(home_.database_path());
      database.Run(kCreateUsers);
      database.Run(kCreateFriends);
      Fill(database, kUsers, 0);
    }
    service_.emplace();
    raw_.emplace(home_.database_path());
    for (long i = 0; i < kSessions; ++i) {
      std::string session_id;
      account::SessionTable::GetInstance()->AddSession(UserNumber(i % kUsers).userId, &session_id);
      session_ids_.push_back(session_id);
      sessions_.Add(session_id, UserNumber(i % kUsers).userId);
    }
    for (long i = 0; i < kUsers; ++i) user_ids_.push_back(UserNumber(i).userId);
  }

  void Check(long number) { Expect(service_->accounts().CheckSessionValidation(Id(number)) == 1); }
  void Read(long number) {
    std::string uuid;
    Expect(service_->accounts().GetUserUUIDFromUserID(User(number), &uuid) == 1);
  }
  void CheckRaw(long number) { Expect(sessions_.Has(Id(number))); }
  void ReadRaw(long number) {
    std::string uuid;
    const std::lock_guard<std::mutex> hold(mutex_);
    Expect(raw_->Read(kUuidById, {User(number)},
                      [&](sqlite3_stmt* row) { RawDatabase::Take(row, 0, &uuid); }) == 1);
  }

 private:
  const std::string& Id(long number) const {
    return session_ids_[static_cast<std::size_t>(number % kSessions)];
  }
  const std::string& User(long number) const {
    return user_ids_[static_cast<std::size_t>(number % kUsers)];
  }

  Home home_;
  std::optional<Service> service_;
  std::optional<RawDatabase> raw_;
  std::mutex mutex_;
  PlainSessions sessions_;
  std::vector<std::string> session_ids_, user_ids_;
};

void Run(benchmark::State& state, const std::function<void(Pair&, long)>& ours,
         const std::function<void(Pair&, long)>& floor) {
  Pair pair;
  Times ours_times, floor_times;
  bool ours_first = false;
  for ([[maybe_unused]] auto iteration : state) {
    std::chrono::nanoseconds ours_time{};
    const auto time_ours = [&] {
      ours_time = TimeOfCall(state.range(0), [&](long number) { ours(pair, number); });
    };
    ours_first = !ours_first;
    if (ours_first) time_ours();
    floor_times.Add(TimeOfCall(state.range(0), [&](long number) { floor(pair, number); }), 1);
    if (!ours_first) time_ours();
    ours_times.Add(ours_time, 1);
    state.SetIterationTime(std::chrono::duration<double>(kTime).count());
  }
  state.counters["ours_ns"] = ours_times.Median();
  state.counters["floor_ns"] = floor_times.Median();
}

void Checks(benchmark::State& state) { Run(state, &Pair::Check, &Pair::CheckRaw); }
void Reads(benchmark::State& state) { Run(state, &Pair::Read, &Pair::ReadRaw); }

// Nine checks to a read.
void Mix(benchmark::State& state) {
  Run(
      state,
      [](Pair& pair, long number) { number % 10 == 0 ? pair.Read(number) : pair.Check(number); },
      [](Pair& pair, long number) {
        number % 10 == 0 ? pair.ReadRaw(number) : pair.CheckRaw(number);
      });
}

void Threads(benchmark::internal::Benchmark* made) {
  made->ArgName("threads")->UseManualTime();
  for (const long threads : {1L, 2L, 4L, 16L, 64L}) made->Arg(threads);
}

BENCHMARK(Checks)->Name("threads/session_checks")->Apply(Threads);
BENCHMARK(Reads)->Name("threads/store_reads")->Apply(Threads);
BENCHMARK(Mix)->Name("threads/mix")->Apply(Threads);

}  // namespace
}  // namespace bench

int main(int argc, char** argv) { return bench::RunBenchmarks(argc, argv); }
