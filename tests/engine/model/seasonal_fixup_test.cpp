// Seasonal dummies in place of seasonal pulses: kept when a fixed pattern runs through the
// whole cycle, refused when the pulses already say it all, and in automatic modelling.
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "engine/model.h"
#include "engine/model/seasonal_fixup.h"
#include "model_test_data.h"
#include "support/text_checks.h"

namespace quorvane {
namespace {

constexpr int kN = 144;
constexpr double kPi = 3.14159265358979323846;

struct Case {
  std::vector<double> z;
  std::vector<DetectedIntervention> found;
  RegressionArimaFit with_pulses;
};

// AR(1) noise around 100 with a pulse of +12 at observation 70 and the given monthly
// pattern; detection is taken to have found the pulse and seasonal pulses at months 3 and 6.
Case Make(const std::vector<double>& pattern, ArimaOrders orders) {
  Case c;
  c.z = testdata::SimulateArma11(kN, 0.5, 0.0, 1.0, 5);
  for (int t = 0; t < kN; ++t) c.z[t] += 100.0 + pattern[t % 12] + (t == 70 ? 12.0 : 0.0);
  c.found = {{kSeasonalPulse, 2}, {kSeasonalPulse, 5}, {kPulse, 70}};
  std::vector<std::vector<double>> X;
  for (const auto& d : c.found) X.push_back(InterventionRegressor(d.type, d.index, 12, kN));
  c.with_pulses = FitRegressionArima(c.z, X, orders, ConvergenceCriteria{}, true);
  EXPECT_TRUE(c.with_pulses.ok);
  return c;
}

ArimaOrders Ar1() {
  ArimaOrders s;
  s.p = 1;
  s.constant = true;
  s.period = 12;
  return s;
}

TEST(SeasonalFixup, DummiesReplaceThePulsesWhenThePatternRunsThroughTheCycle) {
  std::vector<double> pattern(12);
  for (int j = 0; j < 12; ++j) pattern[j] = 4.0 * std::sin(2.0 * kPi * j / 12.0) + (j == 2 || j == 5 ? 6.0 : 0.0);
  double mean = 0.0;
  for (double v : pattern) mean += v / 12.0;
  const Case c = Make(pattern, Ar1());
  // The series starts in month 4: the dummies are labelled by the month they stand for.
  const SeasonalFixup f = TrySeasonalDummies(c.z, c.found, c.with_pulses, 12, 3, 24, ConvergenceCriteria{});
  ASSERT_TRUE(f.tried);
  ASSERT_TRUE(f.applied) << f.note;
  EXPECT_LT(f.aicc_dummies, f.aicc_pulses - 10.0);
  ASSERT_EQ(f.found.size(), 1u);
  EXPECT_EQ(f.found[0].type, kPulse);
  ASSERT_EQ(f.dummies.size(), 11u);
  // Each dummy's coefficient is its period's effect less the last period's (the effects
  // of a whole cycle add up to zero), so the effects are the pattern less its mean.
  for (int j = 0; j < 11; ++j) EXPECT_NEAR(f.dummies[j], pattern[j] - pattern[11], 4.0 * f.dummies_se[j]) << j;
  for (int t = 0; t < 12; ++t) EXPECT_NEAR(f.effects[t], pattern[t] - mean, 1.0) << t;
  // The pattern's effects recur in the forecast periods.
  ASSERT_EQ(f.effects.size(), static_cast<size_t>(kN + 24));
  for (int t = kN; t < kN + 24; ++t) EXPECT_DOUBLE_EQ(f.effects[t], f.effects[t - 12]) << t;
  EXPECT_TRUE(tessaly::testing::HoldsAll(f.note, {"(6, 9)", "replaced by 11 centred seasonal dummies"}));

  std::vector<Coefficient> coefficients;
  DescribeSeasonalDummies(f, 2.0, 12, 3, 100, coefficients);
  ASSERT_EQ(coefficients.size(), 11u);
  EXPECT_EQ(coefficients[0].term, "SEASONAL DUMMY 4");
  EXPECT_EQ(coefficients[10].term, "SEASONAL DUMMY 2");
  EXPECT_DOUBLE_EQ(coefficients[0].value, 2.0 * f.dummies[0]);
}

TEST(SeasonalFixup, PulsesKeptWhenTheyAreTheWholePatternOrCannotBeReplaced) {
  std::vector<double> pattern(12, 0.0);
  pattern[2] = 6.0;
  pattern[5] = -5.0;
  const Case c = Make(pattern, Ar1());
  SeasonalFixup f = TrySeasonalDummies(c.z, c.found, c.with_pulses, 12, 0, 12, ConvergenceCriteria{});
  EXPECT_TRUE(f.tried);
  EXPECT_FALSE(f.applied);
  EXPECT_NE(f.note.find("the pulses are kept"), std::string::npos) << f.note;

  // One period of the cycle only: nothing to try.
  std::vector<DetectedIntervention> one = {c.found[0], c.found[2]};
  EXPECT_FALSE(TrySeasonalDummies(c.z, one, c.with_pulses, 12, 0, 12, ConvergenceCriteria{}).tried);

}

// Automatic modelling: a fixed monthly pattern, with three months that moved after the first
// year. The rule on, seasonal pulses found at those months are replaced by the dummies when
// that describes the series better, and the model then goes without the seasonal difference.
TEST(SeasonalFixup, AutomaticModellingReplacesThePulsesUnderTheRule) {
  int applied = 0;
  for (uint32_t seed = 1; seed <= 5; ++seed) {
    ModelingProblem p;
    p.output_name = "SALES";
    p.seasonality = 12;
    p.horizon = 12;
    p.y = testdata::SimulateArma11(kN, 0.5, 0.0, 1.0, seed);
    for (int t = 0; t < kN; ++t) {
      const int m = t % 12;
      p.y[t] += 100.0 + 3.0 * std::sin(2.0 * kPi * m / 12.0) + (t >= 12 && (m == 2 || m == 9) ? 6.0 : 0.0) -
                (t >= 12 && m == 5 ? 6.0 : 0.0);
    }
    p.rules.fixup_seasonal_dummies = true;
    const ModelResult r = FitAndForecast(p, {});
    ASSERT_EQ(r.error_code, 0);
    std::string note;
    for (const Note& n : r.notes)
      if (n.text.rfind("Seasonal pulses at", 0) == 0) note = n.text;
    int dummies = 0;
    for (const Coefficient& c : r.coefficients) dummies += c.kind == "dummy";
    if (note.find("replaced by 11 centred seasonal dummies") == std::string::npos) {
      EXPECT_EQ(dummies, 0) << seed;
      continue;
    }
    ++applied;
    EXPECT_EQ(dummies, 11) << seed;
    EXPECT_EQ(r.D, 0) << seed;
    for (const Intervention& iv : r.interventions) EXPECT_NE(iv.type, kSeasonalPulse) << seed;
    EXPECT_NE(r.equation.find("SEASONAL DUMMY 3(t)"), std::string::npos) << r.equation;
    // The pattern carries into the forecasts: March above June by about 3 sin(60) + 3 + 12.
    ASSERT_EQ(r.forecasts.size(), 12u);
    EXPECT_NEAR(r.forecasts[2] - r.forecasts[5], 3.0 * std::sin(2.0 * kPi * 2 / 12.0) + 12.0 -
                                                     3.0 * std::sin(2.0 * kPi * 5 / 12.0), 2.5) << seed;
    // Without the rule the same series keeps its pulses.
    p.rules.fixup_seasonal_dummies = false;
    const ModelResult off = FitAndForecast(p, {});
    int pulses = 0;
    for (const Intervention& iv : off.interventions) pulses += iv.type == kSeasonalPulse;
    EXPECT_GE(pulses, 2) << seed;
  }
  EXPECT_GE(applied, 1);
}

}  // namespace
}  // namespace quorvane
