// A stationary series differenced for nothing gives the difference up without the steps
// found in its place; a real step in it still stands in for the difference.
#include <gtest/gtest.h>

#include "engine/model/estimate.h"
#include "engine/model/interventions.h"
#include "model_test_data.h"

namespace quorvane {
TEST(FewerDifferences, FalseDifferenceGoesWithoutStepsRealStepStays) {
  ArimaOrders once;
  once.d = once.p = once.q = 1;
  for (const auto& [step, least] : {std::pair{0.0, 6}, {5.0, 50}}) {  // of 60 seeds
    int right = 0;
    for (uint32_t seed = 701; seed <= 760; ++seed) {
      std::vector<double> y = testdata::SimulateArma11(150, 0.6, 0.3, 1.0, seed);
      for (size_t t = 0; t < y.size(); ++t) y[t] += 50.0 + (t >= 100 ? step : 0.0);
      const DetectionResult r = DetectWithIdentification(y, FitArima(y, once, {}, true), {}, {});
      int at = 0, other = 0;
      for (const auto& f : r.found)
        (f.index == 100 ? at : other) += f.type == kLevelShift || f.type == kLocalTrend;
      right += r.fit.arima.orders.d == 0 && other == 0 && at == (step != 0.0);
    }
    EXPECT_GE(right, least) << "step " << step;
  }
}
}  // namespace quorvane
