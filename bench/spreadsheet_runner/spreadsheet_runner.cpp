// The workbook runner on a sheet of 200 monthly series (ten years each, with trend, season
// and noise) through the real engine, in a copy of the program folder. The engine calls are
// timed apart; what is left is the runner's own cost per row: reading the workbook, building
// each row's arrays, the engine's leftovers, writing the forecasts back and saving the
// result workbook. Reading and saving alone are timed too.
//
// Usage: bench_spreadsheet_runner [series=200]
#include <sys/resource.h>
#include <unistd.h>
#include <xlsxwriter.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>

#include "../bench_timing.h"
#include "batch/engine/engine_call.h"
#include "platform/dialogs.h"
#include "platform/progress_wait.h"
#include "spreadsheet/runner.h"

namespace fs = std::filesystem;
using namespace tessaly;
using Clock = std::chrono::steady_clock;

namespace {

void MakeBook(const fs::path& path, int series, int months) {
  const char* m[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  lxw_workbook* wb = workbook_new(path.c_str());
  lxw_worksheet* ws = workbook_add_worksheet(wb, "Monthly");
  worksheet_write_string(ws, 0, 0, "Series", nullptr);
  for (int k = 0; k < months; ++k)
    worksheet_write_string(ws, 0, k + 1, (std::to_string(2012 + k / 12) + m[k % 12]).c_str(), nullptr);
  std::mt19937 rng(7);
  std::normal_distribution<double> noise(0, 1);
  for (int i = 0; i < series; ++i) {
    worksheet_write_string(ws, i + 1, 0, ("SKU" + std::to_string(1000 + i)).c_str(), nullptr);
    double level = 200 + 3 * i, trend = 0.1 + 0.01 * (i % 30), amp = 10 + i % 25, e = 0;
    for (int t = 0; t < months; ++t) {
      e = 0.6 * e + 3 * noise(rng);
      double v = level + trend * t + amp * std::sin(2 * M_PI * t / 12.0) + e;
      worksheet_write_number(ws, i + 1, t + 1, std::round(v * 100) / 100, nullptr);
    }
  }
  workbook_close(wb);
}

double SelfCpuSeconds() {
  rusage u{};
  getrusage(RUSAGE_SELF, &u);
  return u.ru_utime.tv_sec + u.ru_stime.tv_sec + 1e-6 * (u.ru_utime.tv_usec + u.ru_stime.tv_usec);
}

}  // namespace

int main(int argc, char** argv) {
  int count = argc > 1 ? std::atoi(argv[1]) : 200;
  char templ[] = "/tmp/tessaly-bench-XXXXXX";
  if (!mkdtemp(templ)) return 1;
  fs::path root = templ, program = root / "program", book = root / "data" / "series.xlsx";
  fs::copy(TESSALY_PROGRAM_DIR, program, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  fs::create_directories(book.parent_path());
  MakeBook(book, count, 120);
  platform::SetDialogHost(std::make_shared<platform::RecordingDialogHost>());

  double read_ms = bench::MedianMs(3, [&] {
    spreadsheet::Workbook b;
    (void)spreadsheet::ReadWorkbook(book, b);  // only its time is wanted here
  });

  double engine = 0;
  spreadsheet::RunnerHost host;
  host.program_folder = program;
  host.engine_call = [&](quorvane::EngineArrays& a, batch::EngineReturn& r, const batch::EngineCallContext& c) {
    auto start = Clock::now();
    auto result = batch::CallEngine(a, r, program, c, platform::ProgressWaiter());
    engine += std::chrono::duration<double>(Clock::now() - start).count();
    return result;
  };
  spreadsheet::RunnerSettings settings;
  settings.switches = spreadsheet::RunnerSwitches::Parse({"/NG"});
  auto start = Clock::now();
  double cpu = SelfCpuSeconds();
  spreadsheet::RunnerResult r = spreadsheet::XLSEngine(book, "Monthly", settings, host);
  double total = std::chrono::duration<double>(Clock::now() - start).count();
  cpu = SelfCpuSeconds() - cpu;

  spreadsheet::Workbook result;
  if (!spreadsheet::ReadWorkbook(r.result_book, result).ok()) {
    std::fprintf(stderr, "spreadsheet_runner: the result workbook could not be read\n");
    return 1;
  }
  spreadsheet::Sheet sheet = result.sheets.at(0);
  bool saved = true;
  double save_ms = bench::MedianMs(3, [&] { saved = spreadsheet::SaveXlsx(root / "copy.xlsx", {&sheet}) && saved; });
  if (!saved) std::fprintf(stderr, "spreadsheet_runner: copy.xlsx could not be written\n");

  double outside = total - engine;
  std::printf("rows %d, rows with forecasts %d, finished %s%s\n", r.rows, r.forecast_rows, r.finished ? "yes" : "no",
              r.error.empty() ? "" : (", error: " + r.error).c_str());
  std::printf("wall: total %.2f s, engine calls %.2f s (%.1f ms per row), outside the engine %.2f s = %.1f ms per row\n",
              total, engine, 1000 * engine / count, outside, 1000 * outside / count);
  std::printf("runner CPU %.1f ms per row; reading the workbook %.1f ms, saving the result %.1f ms (medians of 3)\n",
              1000 * cpu / count, read_ms, save_ms);
  fs::remove_all(root);
  return r.finished && r.forecast_rows == count ? 0 : 1;
}
