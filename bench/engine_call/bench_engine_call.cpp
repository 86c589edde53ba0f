// Prints the front-end's cost of one engine call (everything but the engine's own work) for
// a monthly series of 144 observations and for a dataset at the full bounds (150 series of
// 10,000 observations), with the unattended wait's quick polling.
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <vector>

#include "batch/engine/engine_call.h"
#include "batch/engine/engine_client.h"
#include "batch/engine/unattended_wait.h"
#include "platform/dialogs.h"

namespace fs = std::filesystem;
using namespace tessaly::batch;

namespace {

double CpuMs(int who) {
  rusage u{};
  getrusage(who, &u);
  return (u.ru_utime.tv_sec + u.ru_stime.tv_sec) * 1e3 +
         (u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e3;
}

struct Figures {
  double wall_median_ms;
  double front_cpu_ms;   // per call, mean
  double engine_cpu_ms;  // per call, mean (the echo engine's process)
};

Figures Measure(quorvane::EngineArrays& arrays, const fs::path& folder, int runs) {
  std::vector<double> ms;
  EngineReturn returned;
  std::ostringstream quiet;
  UnattendedProgressWait wait(quiet, false);
  double self0 = CpuMs(RUSAGE_SELF), child0 = CpuMs(RUSAGE_CHILDREN);
  for (int i = 0; i < runs; ++i) {
    auto start = std::chrono::steady_clock::now();
    EngineCallResult r = CallEngine(arrays, returned, folder, {i + 1, runs, "BENCH"}, wait);
    ms.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
                     .count());
    if (r.error_code != 0) {
      std::fprintf(stderr, "engine call failed: %d %s\n", r.error_code, r.failure_reason.c_str());
      std::exit(1);
    }
  }
  std::sort(ms.begin(), ms.end());
  return {ms[ms.size() / 2], (CpuMs(RUSAGE_SELF) - self0) / runs,
          (CpuMs(RUSAGE_CHILDREN) - child0) / runs};
}

}  // namespace

int main() {
  char templ[] = "/tmp/tessaly-bench-engine-XXXXXX";
  fs::path folder = mkdtemp(templ);
  fs::copy_file(fs::path(ECHO_ENGINE_FOLDER) / "qvxengine", folder / "qvxengine");

  quorvane::EngineArrays monthly;
  monthly.property_values = {1, 12, 2000, 1, 144, 0, 0, 12};
  monthly.series_names[0] = "BENCH";
  for (int t = 0; t < 144; ++t) monthly.series_data[t] = 100 + t % 12;
  Figures small = Measure(monthly, folder, 30);

  quorvane::EngineArrays full;
  full.property_values = {150, 12, 2000, 1, 10000, 0, 0, 12};
  for (int s = 0; s < 150; ++s) full.series_names[s] = "S" + std::to_string(s);
  for (int t = 0; t < 150 * 10000; ++t) full.series_data[t] = 1 + t % 97;
  Figures large = Measure(full, folder, 10);

  // The machine's own pace: one fresh SeriesData-sized array allocated and copied.
  double c0 = CpuMs(RUSAGE_SELF);
  double sink = 0;
  for (int i = 0; i < 10; ++i) {
    std::vector<double> fresh(quorvane::kSeriesData);
    fresh[i] = i;
    std::vector<double> copy = fresh;
    sink += copy[i];
  }
  double reference = (CpuMs(RUSAGE_SELF) - c0) / 10;

  std::printf("reference: a 12.7 MB array allocated and copied: %.1f ms CPU%s\n", reference,
              sink < 0 ? "!" : "");
  std::printf("engine call overhead (echo engine): wall median / front-end CPU / engine CPU\n");
  std::printf("  monthly series, 144 observations: %8.1f ms  %8.1f ms  %8.1f ms\n",
              small.wall_median_ms, small.front_cpu_ms, small.engine_cpu_ms);
  std::printf("  150 series x 10000 observations:  %8.1f ms  %8.1f ms  %8.1f ms\n",
              large.wall_median_ms, large.front_cpu_ms, large.engine_cpu_ms);
  fs::remove_all(folder);
  return 0;
}
