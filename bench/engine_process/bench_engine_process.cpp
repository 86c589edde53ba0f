// Prints, for the monthly airline series (144 observations, 12 forecasts) read from the
// engine's test data, the median time of:
//   - the modelling core (FitAndForecast under the built-in rules),
//   - the engine process's own work around it (rules, request checks, arrays, the thirteen
//     report files and the run-wide files), with the core's result held fixed, and its two
//     main parts,
//   - a whole call (RunRequest with the core), stage files and all.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "../bench_timing.h"
#include "engine/engine_run.h"
#include "engine/model.h"
#include "engine/request.h"
#include "engine/reports.h"
#include "engine/rules_reader.h"

namespace fs = std::filesystem;
using namespace quorvane;

namespace {

using tessaly::bench::MedianMs;

std::vector<double> ReadAirline() {
  std::ifstream in(std::string(TESSALY_SOURCE_DIR) + "/tests/engine/data/airline.asc");
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  std::vector<double> y;
  for (size_t i = 13; i < lines.size() && y.size() < 144; ++i) y.push_back(std::stod(lines[i]));
  return y;
}

}  // namespace

int main() {
  std::vector<double> y = ReadAirline();
  if (y.size() != 144) {
    std::fprintf(stderr, "airline.asc not found or short\n");
    return 1;
  }
  fs::path folder = fs::temp_directory_path() / "bench_engine_process";
  fs::create_directories(folder);

  EngineArrays request;
  request.objective_values = {0, 0, 0};
  request.property_values = {1, 12, 1949, 1, 144, 0, 0, 12};
  request.series_names[0] = "PASSENGERS";
  std::copy(y.begin(), y.end(), request.series_data.begin());

  RulesReadResult rules = LoadRules(folder);
  PreparedRequest prepared = PrepareRequest(request, rules.rules);
  ModelResult result = FitAndForecast(prepared.problem, nullptr);

  const int runs = 21;
  double core = MedianMs(runs, [&] { FitAndForecast(prepared.problem, nullptr); });
  double own = MedianMs(runs, [&] {
    EngineArrays a = request;
    RulesReadResult r = LoadRules(folder);
    PreparedRequest p = PrepareRequest(a, r.rules);
    FillResponse(p, result, a);
    ReportInput in{&p, &result, r.source, {}};
    WriteDatasetReports(folder, in);
    AppendRunWideReports(folder, in);
  });
  double arrays = MedianMs(runs, [&] {
    EngineArrays a = request;
    PreparedRequest p = PrepareRequest(a, rules.rules);
    FillResponse(p, result, a);
  });
  double files = MedianMs(runs, [&] {
    ReportInput in{&prepared, &result, rules.source, {}};
    WriteDatasetReports(folder, in);
  });
  double whole = MedianMs(runs, [&] {
    EngineArrays a = request;
    RunRequest(a, folder, &FitAndForecast);
  });
  std::printf("engine process, monthly series of 144 observations, 12 forecasts (median of %d)\n", runs);
  std::printf("  modelling core (FitAndForecast)          %8.2f ms  %s\n", core, result.description.c_str());
  std::printf("  process's own work                       %8.2f ms\n", own);
  std::printf("    of which request and returned arrays   %8.2f ms\n", arrays);
  std::printf("    of which the 13 report files           %8.2f ms\n", files);
  std::printf("  whole call (RunRequest)                  %8.2f ms\n", whole);
  fs::remove_all(folder);
  return 0;
}
