// Times this system and the least that the same work can take, in turn, in one run.
#ifndef QORN_BENCH_COMPARE_H_
#define QORN_BENCH_COMPARE_H_

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

namespace bench {

// What the times of one repetition come to, in nanoseconds a call.
class Times {
 public:
  void Add(std::chrono::steady_clock::duration time, int calls) {
    nanoseconds_.push_back(std::chrono::duration<double, std::nano>(time).count() / calls);
  }
  double Median() {
    if (nanoseconds_.empty()) return 0;
    const auto middle = nanoseconds_.begin() + static_cast<std::ptrdiff_t>(nanoseconds_.size() / 2);
    std::nth_element(nanoseconds_.begin(), middle, nanoseconds_.end());
    return *middle;
  }

 private:
  std::vector<double> nanoseconds_;
};

template <typename Call>
std::chrono::steady_clock::duration Time(int calls, const Call& call) {
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < calls; ++i) call();
  return std::chrono::steady_clock::now() - begin;
}

inline void Nothing() {}

// Each iteration prepares both without counting the time, then makes `calls` calls of each, the
// other one first every second time. A first round, which fills caches, does not count. The
// counters "ours_ns" and "floor_ns" are medians, so one interruption counts for nothing.
template <typename Ours, typename Floor, typename Prepare = void (*)()>
void Compare(benchmark::State& state, int calls, const Ours& ours, const Floor& floor,
             const Prepare& prepare = &Nothing) {
  static bool ours_first = false;  // Goes on from one repetition to the next.
  Times ours_times, floor_times;
  prepare();
  Time(1, floor);
  Time(1, ours);
  for ([[maybe_unused]] auto iteration : state) {
    prepare();
    std::chrono::steady_clock::duration ours_time{};
    ours_first = !ours_first;
    if (ours_first) ours_time = Time(calls, ours);
    floor_times.Add(Time(calls, floor), calls);
    if (!ours_first) ours_time = Time(calls, ours);
    ours_times.Add(ours_time, calls);
    state.SetIterationTime(std::chrono::duration<double>(ours_time).count());
  }
  state.counters["ours_ns"] = ours_times.Median();
  state.counters["floor_ns"] = floor_times.Median();
}

// What main answers.
inline int RunBenchmarks(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}

}  // namespace bench

#endif  // QORN_BENCH_COMPARE_H_
