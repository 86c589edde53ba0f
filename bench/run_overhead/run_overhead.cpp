// A run of 200 monthly series through the real engine, in a copy of the program folder.
// The engine's time (from Start to its answer, as the engine call measures it) is taken
// apart from the rest; what is left is the front-end's own cost: reading and checking each
// file, filling and copying the arrays, filing the outputs, saving the project after each
// series, the tree, and (when built with the reports) the nine graphs. The front-end's CPU
// time is printed too: on a busy machine the wall-clock split also counts the waits.
//
// Usage: bench_run_overhead [series=200]
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

#include "batch/run.h"
#include "platform/dialogs.h"
#include "platform/progress_wait.h"
#ifdef BENCH_WITH_GRAPHS
#include "report/run_reports_binding.h"
#endif

namespace fs = std::filesystem;
using namespace tessaly;
using Clock = std::chrono::steady_clock;

namespace {

// Airline-like monthly series: trend, seasonal swing and a little noise, each one its own.
void WriteSeries(const fs::path& file, int k) {
  std::ofstream out(file, std::ios::binary);
  const int n = 144;
  out << "0\r\n0\r\n0\r\n1\r\n12\r\n1990\r\n1\r\n" << n << "\r\n0\r\n0\r\n12\r\nS" << k << "\r\n0\r\n";
  unsigned seed = 12345u + 977u * static_cast<unsigned>(k);
  for (int t = 0; t < n; ++t) {
    seed = seed * 1103515245u + 12345u;
    double noise = ((seed >> 16) % 1000) / 1000.0 - 0.5;
    double v = 100 + 0.5 * k + 1.2 * t + 15 * std::sin(2 * M_PI * (t % 12) / 12.0) + 4 * noise;
    out << v << "\r\n";
  }
}

// CPU seconds of this process alone (user and system): the engine runs in processes of its
// own, so this is the front-end's own work, whatever else the machine is doing.
double SelfCpuSeconds() {
  rusage u{};
  getrusage(RUSAGE_SELF, &u);
  return u.ru_utime.tv_sec + u.ru_stime.tv_sec + 1e-6 * (u.ru_utime.tv_usec + u.ru_stime.tv_usec);
}

struct Figures {
  double total = 0, engine = 0, cpu = 0;
  int series = 0, good = 0;
};

Figures RunOnce(const fs::path& program, const fs::path& data, int count, bool graphs) {
  fs::remove_all(data);
  fs::create_directories(data);
  batch::cBatchFile project(program);
  project.SetInDirectory(data.string());
  project.SetOutDirectory(data.string());
  project.SetBatchName("bench.xml");
  for (int k = 1; k <= count; ++k) {
    std::string name = "S" + std::to_string(k) + ".asc";
    WriteSeries(data / name, k);
    project.Add_File(name, 0, 0, "00/00/00");
  }
  project.Build(data / "bench.xml");

  batch::ReportTree tree;
  batch::BatchRun run(batch::RunOptions{program, !graphs, false}, tree);
#ifdef BENCH_WITH_GRAPHS
  if (graphs) run.SetReports(std::make_shared<batch::ProgramRunReports>(program));
#endif
  Figures f;
  run.SetEngineCall([&](quorvane::EngineArrays& a, batch::EngineReturn& r, const batch::EngineCallContext& c) {
    auto start = Clock::now();
    auto result = batch::CallEngine(a, r, program, c, platform::ProgressWaiter());
    f.engine += std::chrono::duration<double>(Clock::now() - start).count();
    if (result.error_code <= 0) ++f.good;
    return result;
  });
  auto project_ptr = std::make_unique<batch::cBatchFile>(project);
  auto start = Clock::now();
  double cpu_start = SelfCpuSeconds();
  if (!run.mnuBatchRun(project_ptr, data / "bench.xml")) std::fprintf(stderr, "run_overhead: the run did not start\n");
  f.total = std::chrono::duration<double>(Clock::now() - start).count();
  f.cpu = SelfCpuSeconds() - cpu_start;
  f.series = count;
  return f;
}

void Print(const char* label, const Figures& f) {
  double overhead = f.total - f.engine;
  std::printf("%-22s series %d (good %d)  wall: total %.2f s, engine calls %.2f s, front-end %.2f s "
              "= %.1f ms per series (engine %.1f ms per series)  front-end CPU %.1f ms per series\n",
              label, f.series, f.good, f.total, f.engine, overhead, 1000 * overhead / f.series,
              1000 * f.engine / f.series, 1000 * f.cpu / f.series);
}

}  // namespace

int main(int argc, char** argv) {
  int count = argc > 1 ? std::atoi(argv[1]) : 200;
  char templ[] = "/tmp/tessaly-bench-XXXXXX";
  if (!mkdtemp(templ)) return 1;
  fs::path root = templ;
  fs::path program = root / "program";
  fs::copy(TESSALY_PROGRAM_DIR, program, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  // Messages are counted, not shown.
  auto host = std::make_shared<platform::RecordingDialogHost>();
  platform::SetDialogHost(host);

  Print("no graphs", RunOnce(program, root / "data", count, false));
#ifdef BENCH_WITH_GRAPHS
  Print("with the nine graphs", RunOnce(program, root / "data", count, true));
#endif
  std::printf("messages shown: %zu\n", host->shown.size());
  fs::remove_all(root);
  return 0;
}
