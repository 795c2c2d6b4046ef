// SPDX-License-Identifier: MIT

#ifndef VT63X_BENCH_MEASURE_H
#define VT63X_BENCH_MEASURE_H

#include <algorithm>
#include <chrono>
#include <ctime>
#include <vector>

namespace vt63x {

inline double WallSeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// Of all threads of the process.
inline double ProcessorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

// Of the calling thread alone.
inline double ThreadSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

inline double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// Nanoseconds a unit of work takes, the median of `rounds` runs of `units` units each.
template <typename Work>
double NanosecondsPerUnit(int rounds, double units, const Work& work) {
  std::vector<double> times;
  for (int round = 0; round < rounds; ++round) {
    const double start = WallSeconds();
    work();
    times.push_back((WallSeconds() - start) * 1e9 / units);
  }
  return Median(times);
}

}  // namespace vt63x

#endif
