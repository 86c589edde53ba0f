// Automatic modelling with intervention detection and the diagnostic tests beside it: what
// FitAndForecast returns when the rules ask for the deterministic structure (the
// interventions, their coefficients, the cleansed series, forecasts that carry the effects
// on), for a change of variance (limits from the latest variance) and for a change of
// parameters (the latest segment modelled alone), and when they do not.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "engine/model.h"
#include "model_test_data.h"

namespace quorvane {
namespace {

ModelingProblem Problem(std::vector<double> y, int seasonality, int begin_year, int horizon) {
  ModelingProblem p = testdata::Problem("FLOW", std::move(y), seasonality, horizon, begin_year);
  p.begin_period = 1;
  p.rules.sufficiency_ds_level = 90.0;  // as ENGINE.CND ships
  return p;
}

const Coefficient* Find(const ModelResult& r, const std::string& term) { return testdata::FindTerm(r, term); }

TEST(FitAndForecastInterventions, NileLevelShiftReportedCleansedAndCarriedIntoTheForecasts) {
  const std::vector<double> nile = testdata::LoadSeries("nile");
  const ModelResult r = FitAndForecast(Problem(nile, 1, 1871, 10), nullptr);
  ASSERT_EQ(r.error_code, 0);
  ASSERT_EQ(r.interventions.size(), 1u);
  const Intervention& iv = r.interventions[0];
  EXPECT_EQ(iv.type, 2);
  EXPECT_EQ(iv.observation, 29);
  EXPECT_EQ(iv.major, 1899);
  EXPECT_LT(iv.impact, -200.0);
  EXPECT_GT(iv.impact, -300.0);
  const Coefficient* c = Find(r, "LEVEL SHIFT 1899");
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c->kind, "intervention");
  EXPECT_DOUBLE_EQ(c->value, iv.impact);
  EXPECT_LT(c->p_value, 0.001);
  // The cleansed series is the actuals less the step: unchanged before 1899, raised after.
  ASSERT_EQ(r.cleansed.size(), nile.size());
  EXPECT_DOUBLE_EQ(r.cleansed[10], nile[10]);
  EXPECT_NEAR(r.cleansed[60], nile[60] - iv.impact, 1e-9);
  // The step carries on: the forecasts stay near the level after 1899, not the mean of all.
  ASSERT_EQ(r.forecasts.size(), 10u);
  double after = 0.0;
  for (int t = 28; t < 100; ++t) after += nile[t];
  after /= 72.0;
  EXPECT_NEAR(r.forecasts[9], after, 60.0);
  EXPECT_LT(r.lower[0], r.forecasts[0]);
  // The equation names the step; the parameters count it.
  EXPECT_NE(r.equation.find("LEVEL SHIFT 1899(t)"), std::string::npos);
  EXPECT_NE(r.equation.find("N(t)"), std::string::npos);
  EXPECT_GE(r.parameters, 2);
  bool noted = false;
  for (const auto& n : r.notes) noted = noted || n.heading == "Interventions";
  EXPECT_TRUE(noted);
  // Fitted values follow the step too.
  EXPECT_LT(std::fabs(r.residuals[80]), 400.0);
}

TEST(FitAndForecastInterventions, RulesSwitchDetectionAndThePulseConversions) {
  std::mt19937 rng(42);
  std::normal_distribution<double> N(0.0, 1.0);
  std::vector<double> y(80);
  for (double& v : y) v = 100.0 + N(rng);
  y[79] += 8.0;  // a jump at the last observation
  ModelingProblem p = Problem(y, 1, 1950, 4);
  ModelResult r = FitAndForecast(p, nullptr);
  ASSERT_EQ(r.interventions.size(), 1u);
  EXPECT_EQ(r.interventions[0].type, 1);
  EXPECT_EQ(r.interventions[0].observation, 80);
  // A pulse does not carry on...
  EXPECT_NEAR(r.forecasts[3], 100.0, 1.5);
  EXPECT_NEAR(r.cleansed[79], y[79] - r.interventions[0].impact, 1e-9);
  // ...unless the rules convert a pulse at the last observation to a step.
  p.rules.last_pulse_to_step = true;
  r = FitAndForecast(p, nullptr);
  ASSERT_EQ(r.interventions.size(), 1u);
  EXPECT_NEAR(r.forecasts[3], 108.0, 2.0);
  // Detection off: no interventions, the cleansed series is the series.
  p.rules.sufficiency_deterministic = false;
  r = FitAndForecast(p, nullptr);
  EXPECT_TRUE(r.interventions.empty());
  EXPECT_EQ(r.cleansed, y);
  // Pulses off: the jump is not reported as one.
  p.rules.sufficiency_deterministic = true;
  p.rules.include_pulse = false;
  r = FitAndForecast(p, nullptr);
  for (const auto& iv : r.interventions) EXPECT_NE(iv.type, 1);
}

TEST(FitAndForecastInterventions, MonthlyPeriodsAndAPowerTransform) {
  // Monthly sales from 2001/1 on a log scale with a 30 % step up from 2004/7.
  std::mt19937 rng(9);
  std::normal_distribution<double> N(0.0, 0.03);
  std::vector<double> y(96);
  for (int t = 0; t < 96; ++t)
    y[t] = 500.0 * std::exp(0.2 * std::sin(2.0 * M_PI * t / 12.0) + N(rng) + (t >= 42 ? std::log(1.3) : 0.0));
  ModelingProblem p = Problem(y, 12, 2001, 12);
  p.rules.lambdas = {0.0};
  const ModelResult r = FitAndForecast(p, nullptr);
  ASSERT_EQ(r.lambda, 0.0);
  bool step = false;
  for (const auto& iv : r.interventions)
    if (iv.type == 2 && iv.observation == 43) {
      step = true;
      EXPECT_EQ(iv.major, 2004);
      EXPECT_EQ(iv.minor, 7);
      EXPECT_NEAR(iv.impact, std::log(1.3), 0.05);  // on the log scale the model works in
    }
  EXPECT_TRUE(step);
  EXPECT_NE(Find(r, "LEVEL SHIFT 2004/7"), nullptr);
  // Cleansed back on the data's scale: the later values brought down by the factor.
  EXPECT_NEAR(r.cleansed[80] / y[80], 1.0 / 1.3, 0.05);
}

TEST(FitAndForecastDiagnostics, ChangeOfVarianceWidensTheLimits) {
  std::mt19937 rng(3);
  std::normal_distribution<double> N(0.0, 1.0);
  std::vector<double> y;
  for (int t = 0; t < 150; ++t) y.push_back(50.0 + (t < 110 ? 1.0 : 4.0) * N(rng));
  ModelingProblem p = Problem(y, 1, 1900, 6);
  p.rules.sufficiency_deterministic = false;
  const ModelResult plain = FitAndForecast(p, nullptr);
  p.rules.variance_change = true;
  p.rules.variance_level = 95.0;
  const ModelResult r = FitAndForecast(p, nullptr);
  bool warned = false;
  for (const auto& w : r.warnings) warned = warned || w.find("residual variance changed") != std::string::npos;
  EXPECT_TRUE(warned);
  ASSERT_FALSE(r.variance_changes.empty());
  EXPECT_NEAR(r.variance_changes.back().observation, 111, 6);
  EXPECT_GT(r.variance_changes.back().after, 4.0 * r.variance_changes.back().before);
  EXPECT_TRUE(plain.variance_changes.empty());
  // The half-width now reflects a standard deviation near 4, not the average of both regimes.
  const double half = (r.upper[0] - r.lower[0]) / 2.0;
  EXPECT_NEAR(half / 1.96, 4.0, 1.2);
  // Without the test the limits rest on the average (a standard deviation near 2.2), but the
  // held-back periods, all in the noisy stretch, widen them.
  bool widened = false;
  for (const Note& n : plain.notes) widened = widened || n.text.find("widened by a factor") != std::string::npos;
  EXPECT_TRUE(widened);
  EXPECT_GT((plain.upper[0] - plain.lower[0]) / 2.0 / 1.96, 3.0);
}

TEST(FitAndForecastDiagnostics, ChangedParametersLeaveTheEarlierSegmentOut) {
  std::mt19937 rng(4);
  std::normal_distribution<double> N(0.0, 1.0);
  std::vector<double> y;
  double prev = 0.0;
  for (int t = 0; t < 200; ++t) y.push_back(100.0 + (prev = (t < 100 ? 0.9 : -0.5) * prev + N(rng)));
  ModelingProblem p = Problem(y, 1, 1800, 4);
  p.rules.sufficiency_deterministic = false;
  p.rules.constancy = true;
  p.rules.constancy_level = 99.0;
  p.rules.min_group_size = 8;
  const ModelResult r = FitAndForecast(p, nullptr);
  ASSERT_EQ(r.error_code, 0);
  EXPECT_NEAR(r.leading_left_out, 100, 15);
  ASSERT_EQ(r.parameter_changes.size(), 1u);
  EXPECT_EQ(r.parameter_changes[0].observation, r.leading_left_out + 1);
  EXPECT_GT(r.parameter_changes[0].statistic, r.parameter_changes[0].critical);
  ASSERT_EQ(r.fitted.size(), y.size());
  ASSERT_EQ(r.cleansed.size(), y.size());
  EXPECT_EQ(r.fitted[0], y[0]);
  EXPECT_EQ(r.residuals[0], 0.0);
  EXPECT_EQ(r.forecasts.size(), 4u);
  bool noted = false;
  for (const auto& n : r.notes) noted = noted || n.heading == "Constancy of parameters";
  EXPECT_TRUE(noted);
  // One model throughout: nothing left out.
  std::vector<double> steady;
  prev = 0.0;
  for (int t = 0; t < 200; ++t) steady.push_back(100.0 + (prev = 0.6 * prev + N(rng)));
  p.y = steady;
  EXPECT_EQ(FitAndForecast(p, nullptr).leading_left_out, 0);
}

}  // namespace
}  // namespace quorvane
