// Compares two ways of doing a thing in one run: short stretches of both take turns, so that whatever else
// the machine does meets both, and the medians of the stretches are reported with their ratio.
#ifndef MVX2_BENCH_PAIRED_H
#define MVX2_BENCH_PAIRED_H

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace mvx2::bench {

template <class Operation>
double nanosecondsPerCall(Operation& operation) {
  constexpr int calls = 500;
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < calls; ++i) operation();
  const std::chrono::duration<double, std::nano> elapsed = std::chrono::steady_clock::now() - start;
  return elapsed.count() / calls;
}

inline double median(std::vector<double>& times) {
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  std::nth_element(times.begin(), middle, times.end());
  return *middle;
}

// Reports "ours" and "theirs" in nanoseconds per call and "ratio" = ours / theirs.
template <class Ours, class Theirs>
void paired(benchmark::State& state, Ours ours, Theirs theirs) {
  std::vector<double> ourTimes;
  std::vector<double> theirTimes;
  for ([[maybe_unused]] auto iteration : state) {
    ourTimes.push_back(nanosecondsPerCall(ours));
    theirTimes.push_back(nanosecondsPerCall(theirs));
  }
  const double our = median(ourTimes);
  const double their = median(theirTimes);
  state.counters["ours_ns"] = our;
  state.counters["theirs_ns"] = their;
  state.counters["ratio"] = our / their;
}

}  // namespace mvx2::bench

#endif
