// Session checks through the service beside a mutex and a linear scan of the same records.
#include <memory>

#include "base/logging.h"
#include "bench/compare.h"
#include "bench/home.h"
#include "bench/plain_sessions.h"
#include "bench/service.h"
#include "core_fw/account/src/account_check_thread.h"
#include "core_fw/account/src/account_log.h"
#include "core_fw/account/src/session_table.h"

namespace bench {
namespace {

// A service and the plain way, with the same sessions.
class Pair {
 public:
  explicit Pair(const benchmark::State& state) {
    account::SetComponentLogLevel(state.range(1) == 0 ? logging::LOG_ERROR : logging::LOG_INFO);
    service_.accounts().SetSessionLifetime(1 << 30);
    for (long i = 0; i < state.range(0); ++i) {
      const std::string user_id = "user" + std::to_string(i % 50) + "@example.com";
      std::string session_id;
      account::SessionTable::GetInstance()->AddSession(user_id, &session_id);
      plain_.Add(session_id, user_id);
      session_ids_.push_back(session_id);
    }
  }
  ~Pair() { account::SetComponentLogLevel(logging::LOG_INFO); }

  const std::string& Next() { return session_ids_[next_ = (next_ + 7919) % session_ids_.size()]; }
  const std::vector<std::string>& session_ids() const { return session_ids_; }
  AccountManager& accounts() { return service_.accounts(); }
  PlainSessions& plain() { return plain_; }

 private:
  Home home_;
  Service service_;
  PlainSessions plain_;
  std::vector<std::string> session_ids_;
  std::size_t next_ = 0;
};

// So many calls that the clock's own time does not count.
int Calls(const benchmark::State& state) { return state.range(0) >= 10000 ? 16 : 256; }

void CheckSessionValidation(benchmark::State& state) {
  Pair pair(state);
  Compare(
      state, Calls(state), [&] { pair.accounts().CheckSessionValidation(pair.Next()); },
      [&] { benchmark::DoNotOptimize(pair.plain().Has(pair.Next())); });
}

void ResetCountForSessionMaintenance(benchmark::State& state) {
  Pair pair(state);
  Compare(
      state, Calls(state), [&] { pair.accounts().ResetCountForSessionMaintenance(pair.Next()); },
      [&] { benchmark::DoNotOptimize(pair.plain().Reset(pair.Next())); });
}

void GetSessionInfo(benchmark::State& state) {
  Pair pair(state);
  std::string user_id;
  Compare(
      state, Calls(state), [&] { pair.accounts().GetSessionInfo(pair.Next(), &user_id); },
      [&] { benchmark::DoNotOptimize(pair.plain().GetUser(pair.Next(), &user_id)); });
}

void MaintenanceTick(benchmark::State& state) {
  Pair pair(state);
  account::AccountChecker checker;
  Compare(
      state, 1, [&] { checker.AddAndCheckCount(); },
      [&] {
        for (const std::string& session_id : pair.session_ids()) pair.plain().Count(session_id);
      });
}

using Bench = void (*)(benchmark::State&);

void Register(const char* name, Bench bench) {
  for (const long full_log : {0L, 1L}) {
    const std::string group = full_log == 0 ? "session/" : "session-default-log/";
    auto* made = benchmark::RegisterBenchmark((group + name).c_str(), bench)
                     ->ArgNames({"sessions", "full_log"})
                     ->UseManualTime();
    for (const long sessions : {1L, 100L, 10000L}) made->Args({sessions, full_log});
  }
}

void RegisterAll() {
  Register("CheckSessionValidation", &CheckSessionValidation);
  Register("ResetCountForSessionMaintenance", &ResetCountForSessionMaintenance);
  Register("GetSessionInfo", &GetSessionInfo);
  benchmark::RegisterBenchmark("tick/AddAndCheckCount", &MaintenanceTick)
      ->ArgNames({"sessions", "full_log"})
      ->Args({10000, 0})
      ->UseManualTime();
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  bench::RegisterAll();
  return bench::RunBenchmarks(argc, argv);
}
