// Timing shared by the benchmarks.
#pragma once

#include <algorithm>
#include <chrono>
#include <vector>

namespace tessaly::bench {

// The median wall time of `runs` calls of f, in milliseconds.
template <class F>
double MedianMs(int runs, F&& f) {
  std::vector<double> ms;
  for (int i = 0; i < runs; ++i) {
    const auto start = std::chrono::steady_clock::now();
    f();
    ms.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
  }
  std::sort(ms.begin(), ms.end());
  return ms[ms.size() / 2];
}

}  // namespace tessaly::bench
