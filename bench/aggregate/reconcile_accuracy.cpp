// How accurate each reconciliation is, on simulated hierarchies with a known truth: children
// with their own level, trend, season and noise, and a shock common to all of them. The last
// twelve months of each child are held back; the aggregation runs on the rest through the
// real engine, once per direction, and the reconciled forecasts of the parent and of each
// child are compared with what was held back (root mean squared error, and each direction's
// ratio to bottom up's).
//
// Usage: bench_reconcile_accuracy [replications=5] [children=8]
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <unistd.h>

#include "aggregate/reconcile.h"
#include "aggregate/unattended_aggregation.h"
#include "platform/dialogs.h"
#include "platform/textfile.h"

namespace fs = std::filesystem;
using namespace tessaly;

namespace {

constexpr int kFit = 132, kHeld = 12;

struct Hierarchy {
  std::vector<std::vector<double>> child;  // child by month, kFit + kHeld
};

Hierarchy Simulate(unsigned seed, int children) {
  std::mt19937 rng(seed);
  std::normal_distribution<double> z(0, 1);
  std::uniform_real_distribution<double> u(0, 1);
  Hierarchy h;
  std::vector<double> common(kFit + kHeld);
  double c = 0;
  for (double& v : common) v = c = 0.6 * c + 4 * z(rng);
  for (int k = 0; k < children; ++k) {
    const double level = 80 + 60 * u(rng), trend = 0.4 * u(rng), swing = 5 + 15 * u(rng), phase = 6 * u(rng);
    const double sigma = 1 + 8 * u(rng), loading = 0.2 + u(rng);
    std::vector<double> y(kFit + kHeld);
    double e = 0;
    for (int t = 0; t < kFit + kHeld; ++t) {
      e = 0.5 * e + sigma * z(rng);
      y[t] = level + trend * t + swing * std::sin(2 * M_PI * t / 12 + phase) + loading * common[t] + e;
    }
    h.child.push_back(std::move(y));
  }
  return h;
}

std::vector<double> FirstColumn(const fs::path& pro) {
  std::vector<double> v;
  auto lines = platform::ReadAllLines(pro);
  if (!lines) return v;
  for (std::size_t i = 1; i < lines->size() && v.size() < kHeld; ++i)
    v.push_back(aggregate::ReadProLine((*lines)[i]).value[0]);
  return v;
}

double SquaredError(const std::vector<double>& forecast, const std::vector<double>& truth, int& n) {
  double s = 0;
  for (std::size_t h = 0; h < truth.size(); ++h) {
    const double f = h < forecast.size() ? forecast[h] : 0;
    s += (f - truth[h]) * (f - truth[h]);
    ++n;
  }
  return s;
}

}  // namespace

int main(int argc, char** argv) {
  const int replications = argc > 1 ? std::atoi(argv[1]) : 5;
  const int children = argc > 2 ? std::atoi(argv[2]) : 8;
  const fs::path root = fs::temp_directory_path() / ("tessaly-bench-reconcile-" + std::to_string(getpid()));
  const fs::path program = root / "program";
  fs::create_directories(root);
  fs::copy(TESSALY_PROGRAM_DIR, program, fs::copy_options::recursive);
  platform::SetDialogHost(std::make_shared<platform::RecordingDialogHost>());

  const char* names[] = {"bottom up", "top down", "MinT"};
  double parent_se[3] = {}, child_se[3] = {};
  int parent_n[3] = {}, child_n[3] = {}, failed = 0;
  for (int r = 0; r < replications; ++r) {
    const Hierarchy h = Simulate(1000u + static_cast<unsigned>(r), children);
    std::vector<double> parent_truth(kHeld, 0.0);
    for (const auto& y : h.child)
      for (int t = 0; t < kHeld; ++t) parent_truth[t] += y[kFit + t];
    for (int method = 0; method < 3; ++method) {
      const fs::path data = root / ("data" + std::to_string(r) + "_" + std::to_string(method));
      fs::create_directories(data);
      batch::cBatchFile project(program);
      project.SetInDirectory(data.string());
      project.SetOutDirectory(data.string());
      aggregate::AggregationAnswers answers;
      for (int k = 0; k < children; ++k) {
        const std::string name = "R" + std::to_string(k + 1) + ".ASC";
        std::ofstream out(data / name, std::ios::binary);
        out << "0\r\n0\r\n0\r\n1\r\n12\r\n2000\r\n1\r\n" << kFit << "\r\n0\r\n0\r\n" << kHeld << "\r\nR" << k + 1 << "\r\n0\r\n";
        for (int t = 0; t < kFit; ++t) out << h.child[k][t] << "\r\n";
        project.Add_File(name, 0, 0, "00/00/00");
        answers.children.push_back(name);
      }
      project.Build(data / "regions.xml");
      answers.forecasts = std::to_string(kHeld);
      answers.top_down = method == 1;
      answers.mint = method == 2;
      if (aggregate::RunAggregationUnattended(data / "regions.xml", answers, {}, program) != 0) ++failed;
      parent_se[method] += SquaredError(FirstColumn(data / "OUTPUT" / "GROUPT.PRO"), parent_truth, parent_n[method]);
      for (int k = 0; k < children; ++k) {
        std::vector<double> truth(h.child[k].begin() + kFit, h.child[k].end());
        child_se[method] += SquaredError(FirstColumn(data / "OUTPUT" / ("R" + std::to_string(k + 1) + ".PRO")),
                                         truth, child_n[method]);
      }
    }
  }
  std::printf("reconciliation accuracy: %d simulated hierarchies of %d monthly children, %d months fitted, "
              "%d held back (runs that did not finish: %d)\n", replications, children, kFit, kHeld, failed);
  std::printf("  %-10s %14s %10s %14s %10s\n", "direction", "parent RMSE", "vs BU", "children RMSE", "vs BU");
  const double bu_parent = std::sqrt(parent_se[0] / parent_n[0]), bu_child = std::sqrt(child_se[0] / child_n[0]);
  for (int m = 0; m < 3; ++m) {
    const double p = std::sqrt(parent_se[m] / parent_n[m]), c = std::sqrt(child_se[m] / child_n[m]);
    std::printf("  %-10s %14.3f %10.3f %14.3f %10.3f\n", names[m], p, p / bu_parent, c, c / bu_child);
  }
  std::error_code ec;
  fs::remove_all(root, ec);
  return 0;
}
