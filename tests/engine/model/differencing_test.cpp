// Regular differences of real quarterly series (the KPSS statistic of their changes after
// each): a second difference only beyond the 1 % point, not between it and the 5 % point.
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "engine/model/unit_root.h"
#include "model_test_data.h"

namespace quorvane {
namespace {

TEST(Differencing, SecondDifferenceOnlyBeyondTheOnePercentPoint) {
  const struct {
    const char* series;
    bool log;
    int differences;
  } cases[] = {{"macro_realgdp", false, 1},   // KPSS 0.51
               {"macro_realcons", false, 2},  // KPSS 1.21
               {"macro_cpi", true, 2},        // KPSS 0.80
               {"macro_realcons", true, 1}};  // KPSS 0.38
  for (const auto& c : cases) {
    std::vector<double> y = testdata::LoadSeries(c.series);
    if (c.log)
      for (double& v : y) v = std::log(v);
    EXPECT_EQ(RegularDifferences(y, 2, nullptr), c.differences) << c.series << (c.log ? " (log)" : "");
  }
}

}  // namespace
}  // namespace quorvane
