// Times the ASC file at its largest (150 series x 10000 observations, 1.5 million lines):
// writing it, counting its lines, reading its header, reading it whole with the run's
// checks, and the plain read. Prints the figures; the target is well under a second each.
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <ctime>
#include <random>
#include <string>

#include <unistd.h>

#include "dataset/asc_dataset.h"
#include "dataset/validation.h"

namespace fs = std::filesystem;
using namespace tessaly::dataset;

namespace {

double CpuNow() {
  timespec ts{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
  return ts.tv_sec + ts.tv_nsec / 1e9;
}

// Wall-clock and CPU seconds of one call; the best of several runs is kept for each.
struct Timing {
  double wall = 1e9, cpu = 1e9;
};

template <typename F>
void Measure(Timing& t, F&& f) {
  double cpu = CpuNow();
  auto start = std::chrono::steady_clock::now();
  f();
  t.wall = std::min(t.wall, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  t.cpu = std::min(t.cpu, CpuNow() - cpu);
}

}  // namespace

int main(int argc, char** argv) {
  const int series = 150, observations = 10000, repeats = argc > 1 ? std::atoi(argv[1]) : 3;
  fs::path dir = fs::temp_directory_path() / ("tessaly_bench_asc_io_" + std::to_string(::getpid()));
  fs::create_directories(dir);
  const fs::path file = dir / "LARGEST.ASC";

  AscDataset dataset;
  dataset.DataProp(1) = series;
  dataset.DataProp(2) = 52;
  dataset.DataProp(3) = 1820;
  dataset.DataProp(4) = 1;
  dataset.DataProp(5) = observations;
  dataset.DataProp(6) = 0;
  dataset.DataProp(7) = 0;
  dataset.DataProp(8) = 52;
  std::mt19937 rng(42);
  std::normal_distribution<double> noise(0.0, 1.0);
  for (int s = 1; s <= series; ++s) {
    dataset.DataNames(s) = (s == series ? "TOTAL_SALES" : "STORE_" + std::to_string(s));
    double level = 1000.0 * s;
    for (int t = 1; t <= observations; ++t) {
      level += noise(rng) * 3.0;
      dataset.DataValues((s - 1) * observations + t) =
          std::round((level + 40.0 * std::sin(t * 2.0 * M_PI / 52.0)) * 100.0) / 100.0;
    }
  }

  Timing write, count, header, checked, plain;
  long lines = 0;
  for (int r = 0; r < repeats; ++r) {
    Measure(write, [&] { WriteAscFile(file, dataset); });
    Measure(count, [&] { lines = CountAscLines(file); });
    AscHeader h;
    Measure(header, [&] { ReadAscHeader(file, h); });
    AscDataset into;
    ProcessErrorsLog log(dir);
    Measure(checked, [&] {
      RunCheckContext run{52, RunKind::Causal, "Bench.xml"};
      if (CheckAscBeforeReading(file, "LARGEST.ASC", run, log) != CheckOutcome::Accepted ||
          ReadAndCheckAscFile(file, "LARGEST.ASC", into, log) != CheckOutcome::Accepted)
        std::printf("unexpected rejection\n");
    });
    Measure(plain, [&] { ReadAscFile(file, into); });
    if (into.DataValues(series * observations) != dataset.DataValues(series * observations))
      std::printf("read back differs\n");
  }
  std::printf("ASC file of %d series x %d observations: %ld lines, %.1f MB (best of %d)\n", series,
              observations, lines, fs::file_size(file) / 1e6, repeats);
  auto row = [](const char* what, const Timing& t) {
    std::printf("  %-44s %7.3f s wall %7.3f s cpu\n", what, t.wall, t.cpu);
  };
  row("write (WriteAscFile)", write);
  row("count lines (CountAscLines)", count);
  row("read header (ReadAscHeader)", header);
  row("run checks + checked read (count included)", checked);
  row("plain read (ReadAscFile)", plain);
  fs::remove_all(dir);
  return 0;
}
