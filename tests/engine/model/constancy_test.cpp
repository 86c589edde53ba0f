// Constancy of parameters: an AR coefficient that changes half-way is found near its place;
// one model throughout is not broken up.
#include <gtest/gtest.h>

#include <random>

#include "engine/model/constancy.h"

namespace quorvane {
namespace {

std::vector<double> Ar1(const std::vector<std::pair<int, double>>& segments, uint32_t seed) {
  std::mt19937 rng(seed);
  std::normal_distribution<double> N(0.0, 1.0);
  std::vector<double> y;
  double prev = 0.0;
  for (const auto& [count, phi] : segments)
    for (int i = 0; i < count; ++i) y.push_back(prev = phi * prev + N(rng));
  return y;
}

TEST(Constancy, FindsAChangeOfTheArCoefficient) {
  ArimaOrders orders;
  orders.p = 1;
  orders.constant = true;
  const std::vector<double> y = Ar1({{100, 0.9}, {100, -0.5}}, 4);
  const ParameterChange c = TestConstancy(y, orders, ConvergenceCriteria{}, 99.0, 8, 20);
  EXPECT_TRUE(c.found);
  EXPECT_NEAR(c.index, 100, 15);
  EXPECT_GT(c.statistic, c.critical);
  EXPECT_GT(c.breaks_tried, 10);
}

TEST(Constancy, OneModelThroughoutIsKeptAndShortSeriesAreNotTested) {
  ArimaOrders orders;
  orders.p = 1;
  orders.constant = true;
  int found = 0;
  for (uint32_t seed = 20; seed < 30; ++seed)
    found += TestConstancy(Ar1({{150, 0.6}}, seed), orders, ConvergenceCriteria{}, 99.0, 8).found;
  EXPECT_LE(found, 1);
  const ParameterChange short_one = TestConstancy(Ar1({{12, 0.6}}, 1), orders, ConvergenceCriteria{}, 99.0, 8);
  EXPECT_FALSE(short_one.found);
  EXPECT_EQ(short_one.breaks_tried, 0);
}

}  // namespace
}  // namespace quorvane
