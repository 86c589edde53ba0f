// Additive Holt-Winters: the smoother against statsmodels with the same constants and
// states, the estimate against statsmodels' fitted SSE (reference/holt_winters_*.csv, made
// by reference/make_reference_holt_winters.py), the decomposition, the forecast error
// weights and ARIMA form by their identities, and preset 11 end to end.
#include <cmath>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/model/holt_winters.h"
#include "engine/model/structured.h"
#include "model_test_data.h"
#include "support/program_folder.h"

namespace quorvane {
namespace {

using testdata::Split;

std::vector<std::vector<std::string>> ReadCsv(const std::string& name, size_t fields) {
  return testdata::ReferenceRows(name, fields);
}

TEST(HoltWinters, FilterMatchesStatsmodelsWithTheSameConstantsAndStates) {
  struct Case {
    std::string series;
    int m = 0;
    HoltWintersSmoothing s;
    HoltWintersStates start;
    std::vector<double> fitted;
  };
  std::map<std::string, Case> cases;
  for (const auto& row : ReadCsv("holt_winters_fixed.csv", 11)) {
    ASSERT_EQ(row.size(), 11u);
    Case& c = cases[row[0]];
    if (c.fitted.empty()) {
      c.series = row[1];
      c.m = std::stoi(row[2]);
      c.s = {std::stod(row[3]), std::stod(row[4]), std::stod(row[5])};
      c.start.level = std::stod(row[6]);
      c.start.trend = std::stod(row[7]);
      for (const auto& v : Split(row[8], ';')) c.start.seasonal.push_back(std::stod(v));
    }
    ASSERT_EQ(std::stoi(row[9]), static_cast<int>(c.fitted.size()));
    c.fitted.push_back(std::stod(row[10]));
  }
  ASSERT_EQ(cases.size(), 10u);
  for (const auto& [name, c] : cases) {
    SCOPED_TRACE(name);
    const std::vector<double> y = testdata::LoadSeries(c.series);
    ASSERT_EQ(y.size(), c.fitted.size());
    const HoltWintersRun run = HoltWintersFilter(y, c.m, c.s, c.start);
    double worst = 0.0;
    for (size_t t = 0; t < y.size(); ++t) {
      worst = std::max(worst, std::fabs(run.fitted[t] - c.fitted[t]) / std::max(1.0, std::fabs(c.fitted[t])));
      EXPECT_NEAR(run.residuals[t], y[t] - run.fitted[t], 1e-9 * std::max(1.0, std::fabs(y[t])));
    }
    EXPECT_LT(worst, 1e-6);
    std::cout << "[ figures  ] " << name << ": largest relative difference " << worst << "\n";
  }
}

TEST(HoltWinters, EstimatedSseNoWorseThanStatsmodels) {
  const auto rows = ReadCsv("holt_winters_estimated.csv", 7);
  ASSERT_EQ(rows.size(), 5u);
  for (const auto& row : rows) {
    SCOPED_TRACE(row[0]);
    const int m = std::stoi(row[1]);
    const double reference = std::stod(row[2]);
    const HoltWintersEstimate est = EstimateHoltWinters(testdata::LoadSeries(row[0]), m);
    std::cout.precision(10);
    std::cout << "[ figures  ] " << row[0] << ": SSE " << est.run.sse << " (statsmodels " << reference
              << ", ratio " << est.run.sse / reference << "), alpha " << est.smoothing.alpha << " beta "
              << est.smoothing.beta << " gamma " << est.smoothing.gamma << ", " << est.evaluations
              << " evaluations\n";
    EXPECT_LE(est.run.sse, 1.01 * reference);
    for (double v : {est.smoothing.alpha, est.smoothing.beta, est.smoothing.gamma}) {
      EXPECT_GE(v, 0.0);
      EXPECT_LE(v, 1.0);
    }
    // The least-squares states can only improve on the decomposition's.
    const HoltWintersEstimate plain = EstimateHoltWinters(testdata::LoadSeries(row[0]), m, false);
    EXPECT_LE(est.run.sse, plain.run.sse * (1.0 + 1e-9));
  }
}

TEST(HoltWinters, LongCyclesImproveStatesAndConstantsInTurn) {
  // A weekly series (a cycle of 52, beyond the cycles whose states are solved at every
  // trial): the states still improve on the decomposition's and the fit is sound.
  std::vector<double> y;
  for (int t = 0; t < 200; ++t)
    y.push_back(100.0 + 0.1 * t + 12.0 * std::sin(2 * 3.14159265358979 * t / 52.0) + 3.0 * std::sin(1.7 * t));
  const HoltWintersEstimate plain = EstimateHoltWinters(y, 52, false);
  const HoltWintersEstimate est = EstimateHoltWinters(y, 52);
  EXPECT_LT(est.run.sse, plain.run.sse);
  EXPECT_NEAR(est.run.sse, HoltWintersFilter(y, 52, est.smoothing, est.initial).sse, 1e-9 * est.run.sse);
  EXPECT_LE(est.smoothing.gamma, 1.0 - est.smoothing.alpha + 1e-12);
}

TEST(HoltWinters, DecompositionRecoversAnExactTrendAndSeason) {
  // y(t) = 10 + 0.5 t + season, t = 1, 2, ...: the level before the first value is 10.
  const std::vector<double> pattern = {-3.0, 1.0, 4.0, -2.0};
  std::vector<double> y;
  for (int t = 0; t < 20; ++t) y.push_back(10.0 + 0.5 * (t + 1) + pattern[t % 4]);
  const HoltWintersStates s = HoltWintersInitialStates(y, 4);
  EXPECT_NEAR(s.level, 10.0, 1e-9);
  EXPECT_NEAR(s.trend, 0.5, 1e-9);
  for (int j = 0; j < 4; ++j) EXPECT_NEAR(s.seasonal[j], pattern[j], 1e-9);
  // From these states the smoother predicts every value exactly, whatever its constants.
  const HoltWintersRun run = HoltWintersFilter(y, 4, {0.7, 0.3, 0.4}, s);
  EXPECT_LT(run.sse, 1e-18);
  // Odd cycles and too-short series.
  std::vector<double> odd;
  for (int t = 0; t < 21; ++t) odd.push_back(2.0 * (t + 1) + (t % 3 == 0 ? 3.0 : -1.5));
  const HoltWintersStates so = HoltWintersInitialStates(odd, 3);
  EXPECT_NEAR(so.trend, 2.0, 1e-9);
  EXPECT_NEAR(so.seasonal[0], 3.0, 1e-9);
  EXPECT_NEAR(so.seasonal[1], -1.5, 1e-9);
  const HoltWintersStates none = HoltWintersInitialStates({1.0, 2.0, 3.0}, 4);
  EXPECT_EQ(none.level, 0.0);
  EXPECT_EQ(none.seasonal.size(), 4u);
}

TEST(HoltWinters, LeastSquaresInitialStatesMinimiseTheErrors) {
  const std::vector<double> y = testdata::LoadSeries("co2");
  const HoltWintersSmoothing s{0.55, 0.05, 0.15};
  const HoltWintersStates dec = HoltWintersInitialStates(y, 12);
  const HoltWintersStates ls = LeastSquaresInitialStates(y, 12, s, dec);
  const double best = HoltWintersFilter(y, 12, s, ls).sse;
  EXPECT_LT(best, HoltWintersFilter(y, 12, s, dec).sse);
  double sum = 0.0;
  for (double v : ls.seasonal) sum += v;
  EXPECT_NEAR(sum, 0.0, 1e-9);
  // Any move of a state away from them (the seasonal ones in pairs, keeping the sum) costs.
  for (int k = 0; k < 13; ++k) {
    for (double step : {-0.01, 0.01}) {
      HoltWintersStates moved = ls;
      if (k == 0) moved.level += step;
      else if (k == 1) moved.trend += step;
      else {
        moved.seasonal[k - 2] += step;
        moved.seasonal[(k - 1) % 12] -= step;
      }
      EXPECT_GT(HoltWintersFilter(y, 12, s, moved).sse, best) << k << " " << step;
    }
  }
  // Too short a series keeps the fallback.
  const std::vector<double> short_y(y.begin(), y.begin() + 13);
  EXPECT_EQ(LeastSquaresInitialStates(short_y, 12, s, dec).level, dec.level);
}

TEST(HoltWinters, ErrorWeightsAndArimaFormHoldOnARealSeries) {
  const std::vector<double> y = testdata::LoadSeries("airline");
  const int m = 12, n = 120;
  const HoltWintersSmoothing s{0.35, 0.2, 0.45};
  const HoltWintersStates start = HoltWintersInitialStates(y, m);
  const HoltWintersRun all = HoltWintersFilter(y, m, s, start);
  // The h-step forecast error from origin n is e(n+h) + sum c_j e(n+h-j).
  const HoltWintersRun head = HoltWintersFilter(std::vector<double>(y.begin(), y.begin() + n), m, s, start);
  const std::vector<double> c = HoltWintersErrorWeights(s, m, 24);
  EXPECT_NEAR(c[0], 0.35 * 1.2, 1e-15);
  EXPECT_NEAR(c[11], 0.35 * (1 + 12 * 0.2) + 0.45, 1e-15);
  EXPECT_NEAR(c[12], 0.35 * (1 + 13 * 0.2), 1e-15);
  for (int h = 1; h <= 24; ++h) {
    const auto& f = head.final_states;
    const double forecast = f.level + h * f.trend + f.seasonal[(n + h - 1) % m];
    double combined = all.residuals[n + h - 1];
    for (int j = 1; j < h; ++j) combined += c[j - 1] * all.residuals[n + h - 1 - j];
    EXPECT_NEAR(y[n + h - 1] - forecast, combined, 1e-8) << h;
  }
  // (1 - B)(1 - B**12) y(t) = e(t) + sum theta_k e(t-k) once the states are under way.
  const std::vector<double> theta = HoltWintersMaForm(s, m);
  ASSERT_EQ(theta.size(), 13u);
  for (int t = m + 1; t < static_cast<int>(y.size()); ++t) {
    const double w = y[t] - y[t - 1] - y[t - m] + y[t - m - 1];
    double ma = all.residuals[t];
    for (int k = 1; k <= m + 1; ++k) ma += theta[k - 1] * all.residuals[t - k];
    EXPECT_NEAR(w, ma, 1e-8) << t;
  }
}

ModelingProblem Preset11(const std::string& series, int m, int begin_year, int horizon) {
  ModelingProblem p = testdata::Problem("Y", testdata::LoadSeries(series), m, horizon, begin_year);
  p.objective = 11;
  return p;
}

TEST(HoltWinters, Preset11IsATrueHoltWintersSmoother) {
  const ModelingProblem p = Preset11("airline", 12, 1949, 24);
  const ModelResult r = FitModel(p, nullptr);
  ASSERT_EQ(r.error_code, 0);
  EXPECT_EQ(r.description.rfind("HOLT LINEAR TREND PLUS ADDITIVE SEASONAL FACTORS: ALPHA ", 0), 0u) << r.description;
  const HoltWintersEstimate est = EstimateHoltWinters(p.y, 12);
  EXPECT_NEAR(r.sse, est.run.sse, 1e-9 * est.run.sse);
  // Every period has its fitted value, and the residuals are actual less fitted.
  ASSERT_EQ(r.fitted.size(), p.y.size());
  for (size_t t = 0; t < p.y.size(); ++t) EXPECT_NEAR(r.residuals[t], p.y[t] - r.fitted[t], 1e-9);
  // Coefficients: the three constants with standard errors, the states, the ARIMA form.
  ASSERT_GE(r.coefficients.size(), 3u);
  EXPECT_EQ(r.coefficients[0].term, "ALPHA (LEVEL)");
  EXPECT_EQ(r.coefficients[0].value, est.smoothing.alpha);
  EXPECT_EQ(r.coefficients[2].term, "GAMMA (SEASONAL)");
  EXPECT_GT(r.coefficients[0].std_error, 0.0);
  int ma = 0, seasons = 0;
  for (const auto& c : r.coefficients) {
    ma += c.kind == "ma";
    seasons += c.term.rfind("SEASON ", 0) == 0;
  }
  EXPECT_EQ(ma, 13);
  EXPECT_EQ(seasons, 12);
  EXPECT_EQ(r.d, 1);
  EXPECT_EQ(r.D, 1);
  EXPECT_EQ(r.q, 13);
  EXPECT_NE(r.equation.find("L(t) = L(t-1) + T(t-1) + "), std::string::npos) << r.equation;
  EXPECT_NE(r.equation.find("ARIMA form: (1 - B)(1 - B**12) Y(t) = (1 "), std::string::npos) << r.equation;
  // Forecasts: level + h trend + season; the limits follow sigma^2 (1 + sum c_j^2).
  ASSERT_EQ(r.forecasts.size(), 24u);
  const auto& f = est.run.final_states;
  const std::vector<double> c = HoltWintersErrorWeights(est.smoothing, 12, 24);
  double sum = 1.0;
  for (int h = 1; h <= 24; ++h) {
    if (h > 1) sum += c[h - 2] * c[h - 2];
    EXPECT_NEAR(r.forecasts[h - 1], f.level + h * f.trend + f.seasonal[(144 + h - 1) % 12], 1e-9) << h;
    EXPECT_NEAR(r.upper[h - 1] - r.forecasts[h - 1], 1.959964 * std::sqrt(r.variance * sum), 1e-4) << h;
    EXPECT_NEAR(r.forecasts[h - 1] - r.lower[h - 1], r.upper[h - 1] - r.forecasts[h - 1], 1e-9) << h;
  }
  EXPECT_GT(r.forecasts[6], r.forecasts[1]);  // July above February, as every year
  EXPECT_GT(r.forecasts[18], r.forecasts[6]); // and rising
  // The error variance divides by the observations less the constants and states.
  EXPECT_EQ(r.parameters, 16);
  EXPECT_NEAR(r.variance, r.sse / (144 - 16), 1e-9);
}

TEST(HoltWinters, Preset11WithEstimationOffHoldsItsConstants) {
  ModelingProblem p = Preset11("airline", 12, 1949, 12);
  p.rules.estimation_enabled = false;
  const ModelResult r = FitModel(p, nullptr);
  ASSERT_EQ(r.error_code, 0);
  EXPECT_EQ(r.description, "HOLT LINEAR TREND PLUS ADDITIVE SEASONAL FACTORS: ALPHA 0.2000 BETA 0.1000 GAMMA 0.1000");
  EXPECT_NEAR(r.sse, HoltWintersFilter(p.y, 12, kHoltWintersDefaults, HoltWintersInitialStates(p.y, 12)).sse, 1e-6);
  ASSERT_FALSE(r.warnings.empty());
  EXPECT_EQ(r.warnings.back().rfind("Model estimation is disabled in the rules; the smoothing constants were held", 0),
            0u);
}

TEST(HoltWinters, Preset11OnAQuarterlySeriesAndTooShortASeries) {
  const ModelResult q = FitModel(Preset11("macro_realgdp", 4, 1959, 8), nullptr);
  ASSERT_EQ(q.error_code, 0);
  EXPECT_EQ(q.q, 5);
  // The series ends in a recession: the trend state carries it on, within widening limits.
  ASSERT_EQ(q.forecasts.size(), 8u);
  EXPECT_GT(q.forecasts[0], 12000.0);
  EXPECT_LT(q.forecasts[0], 14000.0);
  EXPECT_GT(q.upper[7] - q.lower[7], q.upper[0] - q.lower[0]);
  ModelingProblem shorter = Preset11("airline", 12, 1949, 12);
  shorter.y.resize(26);
  const ModelResult r = FitModel(shorter, nullptr);
  EXPECT_EQ(r.error_code, 3);
  ASSERT_FALSE(r.warnings.empty());
  EXPECT_EQ(r.warnings.back(),
            "Too few observations (26) for the seasonal preset HOLT LINEAR TREND PLUS ADDITIVE SEASONAL FACTORS.");
  shorter.y = testdata::LoadSeries("airline");
  shorter.y.resize(27);
  EXPECT_EQ(FitModel(shorter, nullptr).error_code, 0);
}


TEST(HoltWinters, OtherSmoothingPresetsForecastAsTheirNamesPromise) {
  // 4: simple exponential smoothing, the ARIMA(0,1,1) with alpha = 1 + MA(1): the one-step
  // predictions follow yhat(t+1) = yhat(t) + alpha (y(t) - yhat(t)) and the forecast is flat.
  ModelingProblem p = Preset11("nile", 1, 1871, 10);
  p.objective = 4;
  const ModelResult r4 = FitModel(p, nullptr);
  ASSERT_EQ(r4.error_code, 0);
  double theta = 0.0;
  for (const auto& c : r4.coefficients)
    if (c.term == "MA(1)") theta = c.value;
  const double alpha = 1.0 + theta;
  EXPECT_GT(alpha, 0.0);
  EXPECT_LT(alpha, 1.0);
  for (size_t t = 40; t + 1 < p.y.size(); ++t)
    EXPECT_NEAR(r4.fitted[t + 1], r4.fitted[t] + alpha * (p.y[t] - r4.fitted[t]), 1e-6 * p.y[t]) << t;
  EXPECT_NEAR(r4.forecasts[0], r4.fitted.back() + alpha * (p.y.back() - r4.fitted.back()), 1e-6 * p.y.back());
  for (int h = 1; h < 10; ++h) EXPECT_NEAR(r4.forecasts[h], r4.forecasts[0], 1e-9);
  // 5: Holt's linear trend forecasts along a straight line.
  p = Preset11("macro_realgdp", 4, 1959, 12);
  p.objective = 5;
  const ModelResult r5 = FitModel(p, nullptr);
  ASSERT_EQ(r5.error_code, 0);
  const double step = r5.forecasts[1] - r5.forecasts[0];
  for (int h = 2; h < 12; ++h) EXPECT_NEAR(r5.forecasts[h] - r5.forecasts[h - 1], step, 1e-6 * std::fabs(r5.forecasts[h]));
  // 12: the damped trend's steps shrink by the damping factor (the AR(1) of its form).
  p.objective = 12;
  const ModelResult r12 = FitModel(p, nullptr);
  ASSERT_EQ(r12.error_code, 0);
  double phi = 0.0;
  for (const auto& c : r12.coefficients)
    if (c.term == "AR(1)") phi = c.value;
  EXPECT_GT(phi, 0.0);
  EXPECT_LT(phi, 1.0);
  for (int h = 2; h < 12; ++h)
    EXPECT_NEAR(r12.forecasts[h] - r12.forecasts[h - 1], phi * (r12.forecasts[h - 1] - r12.forecasts[h - 2]), 1e-6 * r12.forecasts[h]);
  // 13: seasonal exponential smoothing repeats its seasonal pattern, year after year.
  p = Preset11("airline", 12, 1949, 36);
  p.objective = 13;
  const ModelResult r13 = FitModel(p, nullptr);
  ASSERT_EQ(r13.error_code, 0);
  for (int h = 12; h < 36; ++h) EXPECT_NEAR(r13.forecasts[h], r13.forecasts[h - 12], 1e-6 * r13.forecasts[h]) << h;
  EXPECT_GT(r13.forecasts[6], r13.forecasts[10]);
}

}  // namespace
}  // namespace quorvane
