// Prints the time per series of the nine graphs (monthly, 144 observations and 24
// forecasts, 1000 x 600 JPEG), the size of the pictures, and the time to write the
// link-tree site and display.html of a project of 2500 datasets.
//
//   bench_graphs [series=20]
#include <algorithm>
#include <chrono>
#include <ctime>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <unistd.h>

#include "airline.h"
#include "platform/paths.h"
#include "report/forms/graph_drawer.h"
#include "report/site.h"

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

static double Ms(Clock::time_point since) {
  return std::chrono::duration<double, std::milli>(Clock::now() - since).count();
}
// Processor time of this process: the figure that holds on a busy machine.
static double CpuMs() { return std::clock() * 1000.0 / CLOCKS_PER_SEC; }

int main(int argc, char** argv) {
  const int series = argc > 1 ? std::max(1, std::atoi(argv[1])) : 20;
  const fs::path work = fs::temp_directory_path() / ("bench_graphs_" + std::to_string(::getpid()));
  fs::create_directories(work);

  tessaly::report::GraphInput in = tessaly::testing::AirlineInput(24);
  // The first drawing pays for the fonts: timed apart.
  auto t0 = Clock::now();
  tessaly::report::DrawSeriesGraphs(in, {}, work);
  const double first = Ms(t0);

  std::vector<double> times;
  const double cpu0 = CpuMs();
  for (int i = 0; i < series; ++i) {
    in.series_name = "S" + std::to_string(i);
    auto t = Clock::now();
    tessaly::report::DrawSeriesGraphs(in, {}, work);
    times.push_back(Ms(t));
  }
  const double cpu_per_series = (CpuMs() - cpu0) / series;
  std::sort(times.begin(), times.end());
  std::uintmax_t bytes = 0;
  int pictures = 0;
  for (const auto& e : fs::directory_iterator(work)) {
    bytes += e.file_size();
    ++pictures;
  }
  std::printf("graphs: first series %.1f ms (fonts loaded)\n", first);
  std::printf("graphs: %d series x 9 pictures, median %.1f ms per series, max %.1f ms\n", series,
              times[times.size() / 2], times.back());
  std::printf("graphs: %.1f KB per picture on average\n", bytes / 1024.0 / pictures);
  std::printf("graphs: %.1f ms of processor time per series (%.1f per picture)\n", cpu_per_series,
              cpu_per_series / 9);
  std::printf("graphs: a run of 1000 series spends about %.0f s of processor time drawing\n",
              cpu_per_series);

  // The site of the largest project.
  std::vector<std::string> files;
  for (int i = 0; i < 2500; ++i) files.push_back("SERIES" + std::to_string(i) + ".asc");
  const fs::path program = work / "program";
  fs::create_directories(program / "gifs");
  for (const char* f : {"treeclass.js", "browserdetect.js", "gifs/doc.gif"})
    std::fclose(std::fopen((program / f).c_str(), "w"));
  double c = CpuMs();
  if (!tessaly::report::WriteLinkTreeSite("Big.xml", files, work / "site", program)) {
    std::fprintf(stderr, "bench_graphs: the link tree could not be written\n");
    return 1;
  }
  const double site = CpuMs() - c;
  c = CpuMs();
  if (!tessaly::report::WriteDisplayHtml(work / "site", "Big.xml", files)) {
    std::fprintf(stderr, "bench_graphs: display.html could not be written\n");
    return 1;
  }
  const double display = CpuMs() - c;
  std::printf("site: 2500 datasets, processor time: link tree %.1f ms, display.html %.1f ms\n",
              site, display);

  fs::remove_all(work);
  return 0;
}
