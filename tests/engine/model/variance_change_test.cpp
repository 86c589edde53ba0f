// Discrete changes of the residual variance: found where they are, not found where there
// are none, and the variance the forecasts then rest on.
#include <gtest/gtest.h>

#include <random>

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

}  // namespace
}  // namespace quorvane
