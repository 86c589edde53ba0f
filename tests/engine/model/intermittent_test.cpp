// Intermittent demand: which series count as intermittent, Croston's method on a small
// example checked by hand, the choice of its constants, its limits, and automatic modelling
// under the rule "INTERMITTENT".
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/model/intermittent.h"
#include "model_test_data.h"

namespace quorvane {
namespace {

constexpr double kMissing = 99999999999.0;

// Monthly demand for a spare part over five years: 41 of 60 months without demand.
const std::vector<double> kSpares = {0, 6, 5, 0, 0, 6, 0, 0, 0, 6, 0, 0, 4, 0, 3, 0, 0, 0, 0, 0,
                                     0, 0, 4, 0, 7, 0, 0, 0, 0, 0, 7, 0, 0, 4, 0, 4, 9, 0, 6, 0,
                                     0, 0, 6, 4, 3, 0, 0, 0, 6, 0, 0, 0, 0, 0, 4, 0, 3, 0, 0, 0};

TEST(Intermittent, WhichSeriesAreIntermittent) {
  IntermittentCheck c = CheckIntermittent(kSpares);
  EXPECT_TRUE(c.intermittent);
  EXPECT_EQ(c.zeros, 41);
  EXPECT_EQ(c.demands, 19);
  EXPECT_EQ(c.why, "41 of its 60 periods (68.3 %) are without demand and no value is negative");
  // 30 % of zeros is enough, 29 % is not.
  std::vector<double> y(100, 2.0);
  for (int t = 0; t < 30; ++t) y[3 * t] = 0.0;
  EXPECT_TRUE(CheckIntermittent(y).intermittent);
  y[87] = 2.0;
  c = CheckIntermittent(y);
  EXPECT_FALSE(c.intermittent);
  EXPECT_EQ(c.why, "only 29 of its 100 periods (29.0 %) are without demand, fewer than 30.0 %");
  // Negative or missing values, or a single demand, rule it out.
  std::vector<double> bad = kSpares;
  bad[10] = -1.0;
  EXPECT_EQ(CheckIntermittent(bad).why, "it has negative values (the first at observation 11)");
  bad = kSpares;
  bad[4] = kMissing;
  EXPECT_EQ(CheckIntermittent(bad).why, "it has missing values (the first at observation 5)");
  c = CheckIntermittent({0, 0, 0, 5, 0, 0});
  EXPECT_FALSE(c.intermittent);
  EXPECT_EQ(c.why, "5 of its 6 periods (83.3 %) are without demand and fewer than two have a demand");
  EXPECT_FALSE(CheckIntermittent({}).intermittent);
}

TEST(Intermittent, CrostonOnAHandCheckedExample) {
  // Demand 0 0 5 0 0 0 3 0 4 with both constants 0.1: the states start at the first demand
  // (size 5, interval 3); the demand of 3 after 4 periods gives size 4.8 and interval 3.1,
  // the demand of 4 after 2 periods size 4.72 and interval 2.99.
  const std::vector<double> y = {0, 0, 5, 0, 0, 0, 3, 0, 4};
  const CrostonRun sba = CrostonFilter(y, 0.1, 0.1);
  EXPECT_EQ(sba.first_demand, 2);
  EXPECT_NEAR(sba.size, 4.72, 1e-12);
  EXPECT_NEAR(sba.interval, 2.99, 1e-12);
  EXPECT_NEAR(sba.factor, 0.95, 1e-15);
  EXPECT_NEAR(sba.forecast, 0.95 * 4.72 / 2.99, 1e-12);
  EXPECT_NEAR(sba.forecast, 1.4996656, 1e-7);
  const CrostonRun classic = CrostonFilter(y, 0.1, 0.1, CrostonVariant::Classic);
  EXPECT_NEAR(classic.forecast, 1.5785953, 1e-7);
  // Fitted values: the first estimate up to and including the demand of period 7, then
  // 0.95 x 4.8 / 3.1.
  ASSERT_EQ(sba.fitted.size(), 9u);
  for (int t = 0; t < 7; ++t) EXPECT_NEAR(sba.fitted[t], 0.95 * 5.0 / 3.0, 1e-12) << t;
  EXPECT_NEAR(sba.fitted[7], 0.95 * 4.8 / 3.1, 1e-12);
  EXPECT_NEAR(sba.fitted[8], 0.95 * 4.8 / 3.1, 1e-12);
  double fit_sse = 0.0;
  for (int t = 3; t < 9; ++t) fit_sse += (y[t] - sba.fitted[t]) * (y[t] - sba.fitted[t]);
  EXPECT_NEAR(sba.fit_sse, fit_sse, 1e-12);
}

TEST(Intermittent, ConstantsMinimiseTheOneStepErrors) {
  // Four units every third period: the size and the interval never change, so the errors
  // are least when the correction is least, at the smallest interval constant.
  std::vector<double> regular;
  for (int t = 0; t < 45; ++t) regular.push_back(t % 3 == 2 ? 4.0 : 0.0);
  const CrostonEstimate e = EstimateCroston(regular);
  EXPECT_DOUBLE_EQ(e.alpha_interval, 0.05);
  EXPECT_NEAR(e.run.forecast, 0.975 * 4.0 / 3.0, 1e-12);
  // On real-looking demand the chosen pair beats its neighbours on the grid.
  const CrostonEstimate s = EstimateCroston(kSpares);
  for (double dz : {-0.01, 0.0, 0.01})
    for (double dp : {-0.01, 0.0, 0.01}) {
      const double az = s.alpha_size + dz, ap = s.alpha_interval + dp;
      if (az < 0.045 || ap < 0.045 || az > 0.305 || ap > 0.305) continue;
      EXPECT_GE(CrostonFilter(kSpares, az, ap).fit_sse, s.run.fit_sse * (1.0 - 1e-12)) << az << " " << ap;
    }
}

TEST(Intermittent, LimitsFromTheErrorsNeverBelowZero) {
  // Errors -1 .. 8 (ten values): the 10 % and 90 % points are -0.1 and 7.1.
  std::vector<double> e;
  for (int i = -1; i <= 8; ++i) e.push_back(i);
  FlatLimits l = EmpiricalLimits(e, 2.0, 80.0);
  EXPECT_NEAR(l.lower, 1.9, 1e-12);
  EXPECT_NEAR(l.upper, 9.1, 1e-12);
  l = EmpiricalLimits({-3.0, -2.5, 4.0}, 1.5, 95.0);
  EXPECT_EQ(l.lower, 0.0);
  // Errors all of one sign still leave the forecast inside its limits.
  l = EmpiricalLimits({1.0, 2.0}, 1.0, 95.0);
  EXPECT_EQ(l.lower, 1.0);
  EXPECT_GE(l.upper, 2.0);
  l = EmpiricalLimits({}, 1.0, 95.0);
  EXPECT_EQ(l.lower, 1.0);
  EXPECT_EQ(l.upper, 1.0);
}

ModelingProblem Spares(bool intermittent_rule) {
  ModelingProblem p;
  p.output_name = "SPARES";
  p.y = kSpares;
  p.seasonality = 12;
  p.begin_year = 2015;
  p.horizon = 12;
  p.rules.intermittent = intermittent_rule;
  return p;
}

TEST(Intermittent, AutomaticModellingUnderTheRule) {
  std::vector<int> stages;
  const ModelResult r = FitAndForecast(Spares(true), [&](Stage s) {
    stages.push_back(static_cast<int>(s));
    return true;
  });
  ASSERT_EQ(r.error_code, 0);
  EXPECT_EQ(stages, (std::vector<int>{1, 2, 3, 4}));
  EXPECT_EQ(r.description.rfind("CROSTON (SBA) ALPHA SIZE ", 0), 0u) << r.description;
  const CrostonEstimate e = EstimateCroston(kSpares);
  // A flat, non-negative forecast with non-negative limits around it.
  ASSERT_EQ(r.forecasts.size(), 12u);
  for (int h = 0; h < 12; ++h) {
    EXPECT_EQ(r.forecasts[h], e.run.forecast);
    EXPECT_GE(r.lower[h], 0.0);
    EXPECT_LE(r.lower[h], r.forecasts[h]);
    EXPECT_GT(r.upper[h], r.forecasts[h]);
    EXPECT_EQ(r.upper[h], r.upper[0]);
  }
  EXPECT_GT(r.forecasts[0], 0.5);
  EXPECT_LT(r.forecasts[0], 2.5);
  // Fitted values and residuals for every period.
  ASSERT_EQ(r.fitted.size(), kSpares.size());
  for (size_t t = 0; t < kSpares.size(); ++t) EXPECT_NEAR(r.residuals[t], kSpares[t] - r.fitted[t], 1e-12);
  ASSERT_EQ(r.coefficients.size(), 5u);
  EXPECT_EQ(r.coefficients[0].term, "ALPHA (SIZE)");
  EXPECT_EQ(r.coefficients[0].value, e.alpha_size);
  EXPECT_EQ(r.coefficients[1].value, e.alpha_interval);
  EXPECT_EQ(r.coefficients[4].kind, "constant");
  EXPECT_EQ(r.coefficients[4].value, r.forecasts[0]);
  EXPECT_NE(r.equation.find("SPARES(t) = "), std::string::npos);
  EXPECT_NEAR(r.sse, e.run.sse, 1e-9);
  EXPECT_EQ(r.parameters, 2);

  // Without the rule the series goes the usual way.
  const ModelResult usual = FitAndForecast(Spares(false), nullptr);
  EXPECT_EQ(usual.description.find("CROSTON"), std::string::npos);
  // With the rule, a series that is not intermittent goes the usual way with a note why.
  ModelingProblem airline = Spares(true);
  airline.y = testdata::LoadSeries("airline");
  const ModelResult a = FitAndForecast(airline, nullptr);
  ASSERT_EQ(a.error_code, 0);
  EXPECT_EQ(a.description.find("CROSTON"), std::string::npos);
  ASSERT_FALSE(a.notes.empty());
  EXPECT_EQ(a.notes[0].heading, "Intermittent demand");
  EXPECT_EQ(a.notes[0].text,
            "The rule INTERMITTENT is on, but the series is not intermittent: only 0 of its 144 periods (0.0 %) are "
            "without demand, fewer than 30.0 %. It was modelled the usual way.");
  // A cancel between stages stops it.
  const ModelResult stopped = FitAndForecast(Spares(true), [](Stage s) { return s != Stage::Estimation; });
  EXPECT_TRUE(stopped.cancelled);
}

TEST(Intermittent, EstimationOffHoldsTheConstants) {
  ModelingProblem p = Spares(true);
  p.rules.estimation_enabled = false;
  const ModelResult r = FitAndForecast(p, nullptr);
  ASSERT_EQ(r.error_code, 0);
  EXPECT_EQ(r.description, "CROSTON (SBA) ALPHA SIZE 0.10 ALPHA INTERVAL 0.10");
  EXPECT_NEAR(r.forecasts[0], CrostonFilter(kSpares, 0.1, 0.1).forecast, 1e-12);
  bool warned = false;
  for (const auto& w : r.warnings)
    warned = warned || w == "Model estimation is disabled in the rules; the smoothing constants were held at 0.10.";
  EXPECT_TRUE(warned);
}

}  // namespace
}  // namespace quorvane
