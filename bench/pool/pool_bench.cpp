// Pooling 100 like monthly series of 48 observations (AR(1) around one level) through the real
// engine in a copy of the program folder, with the canned AR(1) model: every series alone,
// then the stack of 4800 observations as a pooled cross-section of 100 groups. Engine calls
// are timed apart; the rest (stacking, checks, arrays, filing, the F-test) is the front-end's.
//
// Usage: bench_pool [series=100] [observations=48]
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

#include "batch/engine/engine_call.h"
#include "platform/dialogs.h"
#include "platform/progress_wait.h"
#include "pool/pool_headless.h"

namespace fs = std::filesystem;
using namespace tessaly;
using Clock = std::chrono::steady_clock;

namespace {

void WriteSeries(const fs::path& file, int k, int n) {
  std::ofstream out(file, std::ios::binary);
  out << "0\r\n0\r\n0\r\n1\r\n12\r\n2010\r\n1\r\n" << n << "\r\n0\r\n0\r\n6\r\nS" << k << "\r\n0\r\n";
  unsigned seed = 4242u + 7919u * static_cast<unsigned>(k);
  double level = 100;
  for (int t = 0; t < n; ++t) {
    seed = seed * 1103515245u + 12345u;
    double noise = ((seed >> 16) % 1000) / 1000.0 - 0.5;
    level = 100 + 0.5 * (level - 100) + 8 * noise;
    out << std::round(level * 100) / 100 << "\r\n";
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int count = argc > 1 ? std::atoi(argv[1]) : 100;
  const int n = argc > 2 ? std::atoi(argv[2]) : 48;
  char templ[] = "/tmp/tessaly-bench-pool-XXXXXX";
  if (!mkdtemp(templ)) return 1;
  fs::path root = templ, program = root / "program", data = root / "data";
  fs::copy(TESSALY_PROGRAM_DIR, program, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  fs::create_directories(data);
  auto host = std::make_shared<platform::RecordingDialogHost>();
  platform::SetDialogHost(host);

  batch::cBatchFile project(program);
  project.SetInDirectory(data.string());
  project.SetOutDirectory(data.string());
  project.SetBatchName("bench.xml");
  std::vector<std::string> chosen;
  for (int k = 1; k <= count; ++k) {
    std::string name = "S" + std::to_string(k) + ".ASC";
    WriteSeries(data / name, k, n);
    project.Add_File(name, 0, 0, "00/00/00");
    chosen.push_back(name);
  }
  double series_engine = 0, stack_engine = 0;
  int calls = 0;
  pool::ModelChoice choice;
  choice.preset = 2;
  // The engine calls go through the same client as the run's, timed one by one.
  batch::ReportTree tree;
  auto start = Clock::now();
  pool::PoolOptions options{program, true, false};
  pool::HeadlessPool result = pool::RunPoolHeadless(
      project, chosen, choice, options, nullptr, &tree,
      [&](quorvane::EngineArrays& a, batch::EngineReturn& r, const batch::EngineCallContext& c) {
        auto t0 = Clock::now();
        auto answer = batch::CallEngine(a, r, program, c, platform::ProgressWaiter());
        double s = std::chrono::duration<double>(Clock::now() - t0).count();
        (++calls <= count ? series_engine : stack_engine) += s;
        return answer;
      });
  double total = std::chrono::duration<double>(Clock::now() - start).count();
  double front = total - series_engine - stack_engine;
  std::printf("pooling %d series of %d monthly observations (%s)\n", count, n,
              result.outcome.end == pool::PoolEnd::Finished ? "finished" : "incomplete");
  std::printf("  whole flow %.2f s; engine: series %.2f s (%.1f ms each), stack of %d observations %.3f s\n", total,
              series_engine, 1000 * series_engine / count, count * n, stack_engine);
  std::printf("  front-end outside the engine: %.2f s = %.1f ms per series (of %d passes)\n", front,
              1000 * front / (count + 1), count + 1);
  if (result.outcome.poolability)
    std::printf("  F = %.4f on (%d, %.0f), p = %.4f\n", result.outcome.poolability->f, result.outcome.poolability->k,
                result.outcome.poolability->denominator_df, result.outcome.poolability->p_value.value_or(-1));
  fs::remove_all(root);
  return 0;
}
