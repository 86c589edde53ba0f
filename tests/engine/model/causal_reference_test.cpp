// Regressions with ARIMA errors against an independent implementation: output series on
// lags of input series with ARMA noise, fitted by statsmodels (reference/
// make_reference_causal.py, values kept in reference/causal_expected.csv). Coefficients
// must agree within 0.02 and the log-likelihood within 0.5, through the same code the
// presets and transfer functions use.
#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/model/structured.h"
#include "model_test_data.h"
#include "support/program_folder.h"

namespace quorvane {
namespace {

struct CausalCase {
  std::string name, output;
  struct Column {
    std::string series, transform;
    int lag = 0;
  };
  std::vector<Column> columns;
  int p = 0, d = 0, q = 0;
  bool constant = false;
  double loglik = 0.0;
  std::map<std::string, double> coefficients;
};

using testdata::Split;

std::vector<CausalCase> LoadCases() {
  std::vector<CausalCase> cases;
  for (const auto& f : testdata::ReferenceRows("causal_expected.csv", 9)) {
    CausalCase c;
    c.name = f[0];
    c.output = f[1];
    for (const auto& col : Split(f[2], ';')) {
      const auto parts = Split(col, ':');
      c.columns.push_back({parts[0], parts[1], std::stoi(parts[2])});
    }
    c.p = std::stoi(f[3]);
    c.d = std::stoi(f[4]);
    c.q = std::stoi(f[5]);
    c.constant = f[6] == "1";
    c.loglik = std::stod(f[7]);
    c.coefficients = testdata::NamedValues(f[8]);
    cases.push_back(c);
  }
  return cases;
}

std::string Upper(std::string s) {
  for (char& ch : s) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
  return s;
}

TEST(CausalReference, RegressionWithArimaErrorsMatchesStatsmodels) {
  const auto cases = LoadCases();
  ASSERT_EQ(cases.size(), 4u);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ModelingProblem problem;
    problem.output_name = Upper(c.output);
    problem.y = testdata::LoadSeries(c.output);
    const int n = static_cast<int>(problem.y.size());
    StructuredModel m;
    m.noise.p = c.p;
    m.noise.d = c.d;
    m.noise.q = c.q;
    m.noise.constant = c.constant;
    for (const auto& col : c.columns) {
      std::vector<double> x = testdata::LoadSeries(col.series);
      ASSERT_EQ(static_cast<int>(x.size()), n);
      if (col.transform == "log100")
        for (double& v : x) v = 100.0 * std::log(v);
      RegressorColumn rc;
      rc.input = Upper(col.series);
      rc.kind = "input";
      rc.lag = col.lag;
      rc.term = rc.input + " LAG " + std::to_string(col.lag);
      rc.values = LagColumn(x, col.lag, 0.0, n);
      m.columns.push_back(rc);
      m.leading = std::max(m.leading, col.lag);
    }
    ConvergenceCriteria crit;
    crit.max_iterations = 100;
    crit.sse_change_pct = 0.001;
    crit.parameter_change_pct = 0.001;
    const ModelResult r = FitStructured(problem, problem.y, m, crit, 4);
    ASSERT_EQ(r.error_code, 0);
    EXPECT_NEAR(r.loglik, c.loglik, 0.5);
    std::map<std::string, double> ours;
    for (const auto& coef : r.coefficients) ours[coef.term] = coef.value;
    EXPECT_EQ(ours.size(), c.coefficients.size());
    for (const auto& [term, expected] : c.coefficients) {
      ASSERT_TRUE(ours.count(term)) << term;
      EXPECT_NEAR(ours[term], expected, 0.02) << term;
    }
    EXPECT_EQ(r.leading_left_out, m.leading);
    EXPECT_EQ(r.forecasts.size(), 4u);
  }
}

// The regression presets reach the same estimates through the engine's own path: preset 52
// on the first case (a constant, both inputs now, AR(1) noise) and preset 51 on the second.
TEST(CausalReference, RegressionPresetsMatchStatsmodels) {
  const auto cases = LoadCases();
  ASSERT_GE(cases.size(), 2u);
  for (int k = 0; k < 2; ++k) {
    const CausalCase& c = cases[k];
    SCOPED_TRACE(c.name);
    ModelingProblem problem;
    problem.objective = k == 0 ? 52 : 51;
    problem.output_name = Upper(c.output);
    problem.y = testdata::LoadSeries(c.output);
    problem.rules.necessity = true;
    problem.rules.max_iterations = 100;
    for (const auto& col : c.columns) {
      InputSeries in;
      in.name = Upper(col.series);
      in.type = 0;
      in.history = testdata::LoadSeries(col.series);
      problem.inputs.push_back(in);
    }
    problem.horizon = 0;
    problem.rules.forecasting_enabled = false;
    const ModelResult r = FitModel(problem, nullptr);
    ASSERT_EQ(r.error_code, 0);
    EXPECT_NEAR(r.loglik, c.loglik, 0.5);
    EXPECT_EQ(r.p, k == 0 ? 1 : 0);
    for (const auto& coef : r.coefficients) {
      const std::string key = coef.kind == "input" ? coef.term + " LAG 0" : coef.term;
      ASSERT_TRUE(c.coefficients.count(key)) << key;
      EXPECT_NEAR(coef.value, c.coefficients.at(key), 0.02) << key;
    }
    EXPECT_EQ(r.inputs_kept.size(), c.columns.size());
  }
}

}  // namespace
}  // namespace quorvane
