// A subject and its limit in turn. Times are the processor's: no work here waits, and what else the
// machine does counts less.
#pragma once

#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <functional>
#include <vector>

namespace bench {

inline double processorSeconds() {
  timespec now{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

inline double secondsOf(const std::function<void()>& work, std::size_t rounds) {
  const double start = processorSeconds();
  for (std::size_t i = 0; i < rounds; ++i) work();
  return (processorSeconds() - start) / static_cast<double>(rounds);
}

inline double median(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<long>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// Counts the ratio of the medians. `rounds`: so many that a look at the clock does not count.
inline void reportRatio(benchmark::State& state, std::size_t rounds,
                        const std::function<void()>& subject, const std::function<void()>& limit) {
  std::vector<double> subjects;
  std::vector<double> limits;
  for ([[maybe_unused]] auto _ : state) {
    subjects.push_back(secondsOf(subject, rounds));
    limits.push_back(secondsOf(limit, rounds));
    state.SetIterationTime(subjects.back() * static_cast<double>(rounds));
  }
  const double limitMedian = median(limits);
  state.counters["limit_us"] = limitMedian * 1e6;
  state.counters["ratio"] = median(subjects) / limitMedian;
}

}  // namespace bench
