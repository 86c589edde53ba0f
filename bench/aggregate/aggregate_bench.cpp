// An aggregation of 100 monthly children through the real engine, in a copy of the program
// folder: the parent built and run, each child rewritten and run, the forecasts reconciled.
// The engine's time (each call from start to answer) is taken apart from the rest; what is
// left is the aggregation's own cost, and its CPU time, which the machine's load does not
// inflate. The two reconciliations are then timed alone on the files the run left.
//
// Usage: bench_aggregate [children=100]
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

#include "aggregate/reconcile.h"
#include "aggregate/unattended_aggregation.h"
#include "batch/engine/engine_call.h"
#include "platform/dialogs.h"
#include "platform/progress_wait.h"

namespace fs = std::filesystem;
using namespace tessaly;
using Clock = std::chrono::steady_clock;

namespace {

void WriteChild(const fs::path& file, int k) {
  std::ofstream out(file, std::ios::binary);
  const int n = 144;
  out << "0\r\n0\r\n0\r\n1\r\n12\r\n1990\r\n1\r\n" << n << "\r\n0\r\n0\r\n12\r\nC" << k << "\r\n0\r\n";
  unsigned seed = 4321u + 613u * static_cast<unsigned>(k);
  for (int t = 0; t < n; ++t) {
    seed = seed * 1103515245u + 12345u;
    const double noise = ((seed >> 16) % 1000) / 1000.0 - 0.5;
    out << 50 + 0.3 * k + 0.8 * t + 9 * std::sin(2 * M_PI * (t % 12) / 12.0 + 0.1 * k) + 3 * noise << "\r\n";
  }
}

double SelfCpuSeconds() {
  rusage u{};
  getrusage(RUSAGE_SELF, &u);
  return u.ru_utime.tv_sec + u.ru_stime.tv_sec + 1e-6 * (u.ru_utime.tv_usec + u.ru_stime.tv_usec);
}

double Seconds(Clock::time_point from) { return std::chrono::duration<double>(Clock::now() - from).count(); }

}  // namespace

int main(int argc, char** argv) {
  const int count = argc > 1 ? std::atoi(argv[1]) : 100;
  const fs::path root = fs::temp_directory_path() / ("tessaly-bench-aggregate-" + std::to_string(getpid()));
  const fs::path program = root / "program", data = root / "data";
  fs::create_directories(data);
  fs::copy(TESSALY_PROGRAM_DIR, program, fs::copy_options::recursive);
  platform::SetDialogHost(std::make_shared<platform::RecordingDialogHost>());

  aggregate::AggregationAnswers answers;
  batch::cBatchFile project(program);
  project.SetInDirectory(data.string());
  project.SetOutDirectory(data.string());
  for (int k = 1; k <= count; ++k) {
    const std::string name = "C" + std::to_string(k) + ".ASC";
    WriteChild(data / name, k);
    project.Add_File(name, 0, 0, "00/00/00");
    answers.children.push_back(name);
  }
  project.Build(data / "children.xml");
  answers.forecasts = "12";

  double engine_seconds = 0;
  int calls = 0;
  aggregate::AggregationSeams seams;
  seams.engine_call = [&](quorvane::EngineArrays& arrays, batch::EngineReturn& returned,
                          const batch::EngineCallContext& context) {
    const auto start = Clock::now();
    auto result = batch::CallEngine(arrays, returned, program, context, platform::ProgressWaiter());
    engine_seconds += Seconds(start);
    ++calls;
    return result;
  };
  const double cpu0 = SelfCpuSeconds();
  const auto start = Clock::now();
  const int status = aggregate::RunAggregationUnattended(data / "children.xml", answers, seams, program);
  const double total = Seconds(start);
  const double cpu = SelfCpuSeconds() - cpu0;

  // The reconciliations alone, on the forecast files the run left.
  aggregate::ReconcileInput in;
  in.output_path = data / "OUTPUT";
  in.chosen = answers.children;
  in.number_of_forecasts = "12";
  in.forecast_bound = 12;
  in.batch_name = "children.xml";
  auto reconcile_ms = [&](int direction) {
    in.direction = direction;
    const auto t = Clock::now();
    aggregate::ReconcileForecasts(in);
    return 1000 * Seconds(t);
  };
  const double bottom_up = reconcile_ms(1), top_down = reconcile_ms(2);

  std::printf("aggregation of %d children, 144 monthly observations, 12 forecasts (exit status %d)\n", count, status);
  std::printf("  engine calls            %d\n", calls);
  std::printf("  total wall time         %.2f s\n", total);
  std::printf("  in the engine           %.2f s\n", engine_seconds);
  std::printf("  outside the engine      %.2f s  (%.1f ms per series)\n", total - engine_seconds,
              1000 * (total - engine_seconds) / (calls ? calls : 1));
  std::printf("  front-end CPU           %.2f s\n", cpu);
  std::printf("  bottom up alone         %.1f ms\n", bottom_up);
  std::printf("  top down alone          %.1f ms\n", top_down);
  std::error_code ec;
  fs::remove_all(root, ec);
  return status == 0 ? 0 : 1;
}
