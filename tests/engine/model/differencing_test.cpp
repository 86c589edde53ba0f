// Regular differences of real quarterly series (the KPSS statistic of their changes after
// each): a second difference only beyond the 1 % point, not between it and the 5 % point.
#include <cmath>
#include <gtest/gtest.h>
#include "engine/model/unit_root.h"
#include "model_test_data.h"

namespace quorvane {

TEST(Differencing, SecondDifferenceOnlyBeyondTheOnePercentPoint) {
  const struct { const char* series; bool log; int differences; } cases[] = {
      {"macro_realgdp", false, 1}, {"macro_realcons", false, 2}, {"macro_cpi", true, 2}, {"macro_realcons", true, 1}};
  for (const auto& c : cases) {  // KPSS of the changes in turn 0.51, 1.21, 0.80, 0.38
    std::vector<double> y = testdata::LoadSeries(c.series);
    for (double& v : y) v = c.log ? std::log(v) : v;
    EXPECT_EQ(RegularDifferences(y, 2, nullptr), c.differences) << c.series << (c.log ? " (log)" : "");
  }
}

}  // namespace quorvane
