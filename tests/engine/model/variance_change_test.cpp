// Discrete changes of the residual variance: found where they are, not found where there
// are none, and the variance the forecasts then rest on.
#include <gtest/gtest.h>

#include <random>

#include "engine/model.h"
#include "engine/model/variance_change.h"

namespace quorvane {
namespace {

std::vector<double> Noise(const std::vector<std::pair<int, double>>& segments, uint32_t seed) {
  std::mt19937 rng(seed);
  std::normal_distribution<double> N(0.0, 1.0);
  std::vector<double> e;
  for (const auto& [count, sd] : segments)
    for (int i = 0; i < count; ++i) e.push_back(sd * N(rng));
  return e;
}

TEST(VarianceChange, FindsAStepUpAndTheLastSegmentsVariance) {
  const std::vector<double> e = Noise({{80, 1.0}, {40, 3.0}}, 1);
  const std::vector<VarianceChange> c = FindVarianceChanges(e, 13, 95.0, 5);
  ASSERT_EQ(c.size(), 1u);
  EXPECT_NEAR(c[0].index, 13 + 80, 3);
  EXPECT_NEAR(c[0].after / c[0].before, 9.0, 4.0);
  EXPECT_NEAR(LastSegmentVariance(e, 13, c), 9.0, 3.0);
  // Without changes the whole series counts.
  double all = 0.0;
  for (double v : e) all += v * v;
  EXPECT_DOUBLE_EQ(LastSegmentVariance(e, 13, {}), all / e.size());
}

TEST(VarianceChange, TwoChangesInOrderAndTheMinimumSegment) {
  const std::vector<double> e = Noise({{60, 1.0}, {30, 4.0}, {60, 1.0}}, 2);
  const std::vector<VarianceChange> c = FindVarianceChanges(e, 0, 95.0, 5);
  ASSERT_EQ(c.size(), 2u);
  EXPECT_NEAR(c[0].index, 60, 3);
  EXPECT_NEAR(c[1].index, 90, 3);
  EXPECT_GT(c[0].after, c[0].before);
  EXPECT_LT(c[1].after, c[1].before);
  EXPECT_LE(c.size(), FindVarianceChanges(e, 0, 95.0, 5, 1).size() + 1);
  EXPECT_EQ(FindVarianceChanges(e, 0, 95.0, 5, 1).size(), 1u);
  // Segments shorter than the minimum are not tested; too short a series gives nothing.
  EXPECT_TRUE(FindVarianceChanges(Noise({{4, 1.0}, {4, 10.0}}, 3), 0, 95.0, 5).empty());
}

TEST(VarianceChange, RareOnSteadyNoise) {
  int found = 0;
  for (uint32_t seed = 10; seed < 30; ++seed) found += FindVarianceChanges(Noise({{150, 2.0}}, seed), 0, 95.0, 5).size();
  EXPECT_LE(found, 3);
}

// AR(1) around 10 whose noise standard deviation doubles (the variance quadruples) at
// observation `at`.
std::vector<double> Ar1WithVarianceStep(int n, int at, double phi, uint32_t seed) {
  std::mt19937 rng(seed);
  std::normal_distribution<double> N(0.0, 1.0);
  std::vector<double> y(n);
  double x = 0.0;
  for (int t = 0; t < n; ++t) {
    x = phi * x + (t < at ? 1.0 : 2.0) * N(rng);
    y[t] = 10.0 + x;
  }
  return y;
}

TEST(VarianceChange, WeightedEstimationMatchesTheUnweightedAtEqualWeightsAndGainsWhenTheyDiffer) {
  ConvergenceCriteria crit;
  ArimaOrders s;
  s.p = 1;
  s.constant = true;
  const std::vector<double> y = Ar1WithVarianceStep(240, 120, 0.6, 3);
  const ArimaFit plain = FitArima(y, s, crit, true);
  ASSERT_TRUE(plain.ok);
  // Equal weights: the same likelihood, so the same estimates.
  const ArimaFit same = FitArimaWeighted(y, plain, std::vector<double>(y.size(), 1.0), crit);
  ASSERT_TRUE(same.ok);
  EXPECT_NEAR(same.coef.ar[0], plain.coef.ar[0], 1e-4);
  EXPECT_NEAR(same.mean, plain.mean, 1e-4);
  EXPECT_NEAR(same.loglik, plain.loglik, 1e-6);
  EXPECT_NEAR(same.sigma2, plain.sigma2, 1e-6);
  // The true scales: sigma2 is the later segment's (4), and the likelihood of the changing
  // variance is higher than that of one variance.
  std::vector<double> scales(240, 1.0);
  for (int t = 0; t < 120; ++t) scales[t] = 0.5;
  const ArimaFit w = FitArimaWeighted(y, plain, scales, crit);
  ASSERT_TRUE(w.ok);
  EXPECT_NEAR(w.sigma2, 4.0, 0.9);
  EXPECT_GT(w.loglik, plain.loglik + 10.0);
  ASSERT_EQ(w.std_errors.size(), 2u);
  EXPECT_GT(w.std_errors[0], 0.02);
  EXPECT_LT(w.std_errors[0], 0.1);
  EXPECT_EQ(SegmentScales(6, {{3, 1.0, 4.0, 0.0}}), (std::vector<double>{0.5, 0.5, 0.5, 1, 1, 1}));
  // Over many series the weighted estimate of phi is the closer one.
  double err_plain = 0.0, err_weighted = 0.0;
  for (uint32_t seed = 100; seed < 140; ++seed) {
    const std::vector<double> v = Ar1WithVarianceStep(160, 80, 0.6, seed);
    const ArimaFit a = FitArima(v, s, crit, false);
    std::vector<double> sc(160, 1.0);
    for (int t = 0; t < 80; ++t) sc[t] = 0.5;
    const ArimaFit b = FitArimaWeighted(v, a, sc, crit);
    ASSERT_TRUE(a.ok && b.ok);
    err_plain += (a.coef.ar[0] - 0.6) * (a.coef.ar[0] - 0.6);
    err_weighted += (b.coef.ar[0] - 0.6) * (b.coef.ar[0] - 0.6);
  }
  EXPECT_LT(err_weighted, 0.9 * err_plain);
}

TEST(VarianceChange, AutomaticModellingFindsTheChangeAndForecastsWithTheLaterVariance) {
  // The noise variance quadruples half-way through 240 observations.
  ModelingProblem p;
  p.y = Ar1WithVarianceStep(240, 120, 0.6, 8);
  p.horizon = 12;
  p.rules.variance_change = true;
  p.rules.variance_level = 95.0;
  p.rules.sufficiency_deterministic = false;
  const ModelResult r = FitAndForecast(p, nullptr);
  ASSERT_EQ(r.error_code, 0);
  ASSERT_FALSE(r.variance_changes.empty());
  EXPECT_NEAR(r.variance_changes.back().observation, 121, 8);
  EXPECT_GT(r.variance_changes.back().after, 2.0 * r.variance_changes.back().before);
  // One step ahead the limits are those of the later noise (sd 2, half-width about 3.9),
  // not of the whole series' average (sd about 1.6, half-width about 3.1).
  const double half = (r.upper[0] - r.lower[0]) / 2.0;
  EXPECT_GT(half, 1.96 * 1.8);
  EXPECT_LT(half, 1.96 * 2.4);
  bool weighted_noted = false;
  for (const Note& n : r.notes)
    if (n.text.find("weighted by the inverse of its segment's standard deviation") != std::string::npos)
      weighted_noted = true;
  EXPECT_TRUE(weighted_noted);
}

}  // namespace
}  // namespace quorvane
