#include "model_test_data.h"

#include <fstream>
#include <random>
#include <sstream>

#include "support/program_folder.h"

namespace quorvane::testdata {

std::vector<double> LoadSeries(const std::string& name) {
  std::ifstream in(tessaly::testing::SourcePath("tests/engine/model/reference/series/" + name + ".csv"));
  std::vector<double> y;
  std::string line;
  while (std::getline(in, line)) {
    std::istringstream ls(line);
    double v;
    if (ls >> v) y.push_back(v);
  }
  return y;
}

std::vector<double> SimulateArma11(int n, double phi, double theta, double sigma, uint32_t seed) {
  std::mt19937 gen(seed);
  std::normal_distribution<double> norm(0.0, sigma);
  std::vector<double> y(n);
  double prev_y = 0.0, prev_e = 0.0;
  for (int burn = 0; burn < 100; ++burn) {
    const double e = norm(gen);
    prev_y = phi * prev_y + e + theta * prev_e;
    prev_e = e;
  }
  for (int t = 0; t < n; ++t) {
    const double e = norm(gen);
    y[t] = phi * prev_y + e + theta * prev_e;
    prev_y = y[t];
    prev_e = e;
  }
  return y;
}

}  // namespace quorvane::testdata
