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

std::vector<std::string> Split(const std::string& text, char sep) {
  std::vector<std::string> out;
  std::istringstream in(text);
  for (std::string cell; std::getline(in, cell, sep);) out.push_back(cell);
  return out;
}

std::vector<std::vector<std::string>> ReferenceRows(const std::string& name, size_t fields) {
  std::ifstream in(tessaly::testing::SourcePath("tests/engine/model/reference/" + name));
  std::vector<std::vector<std::string>> rows;
  std::string line;
  std::getline(in, line);  // the header
  while (std::getline(in, line))
    if (auto row = Split(line, ','); row.size() == fields) rows.push_back(row);
  return rows;
}

std::map<std::string, double> NamedValues(const std::string& text) {
  std::map<std::string, double> m;
  for (const auto& pair : Split(text, ';'))
    if (const size_t eq = pair.find('='); eq != std::string::npos)
      m[pair.substr(0, eq)] = std::stod(pair.substr(eq + 1));
  return m;
}

ModelingProblem Problem(const std::string& name, std::vector<double> y, int seasonality, int horizon,
                        int begin_year) {
  ModelingProblem p;
  p.output_name = name;
  p.y = std::move(y);
  p.seasonality = seasonality;
  p.horizon = horizon;
  if (begin_year) p.begin_year = begin_year;
  return p;
}

const Coefficient* FindTerm(const ModelResult& r, const std::string& term) {
  for (const auto& c : r.coefficients)
    if (c.term == term) return &c;
  return nullptr;
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
