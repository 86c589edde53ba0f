// Late effects carried into the forecasts need the margin (within a cycle of the end); pulses never.
#include <cmath>

#include <gtest/gtest.h>

#include "engine/model/intervention_evidence.h"
#include "model_test_data.h"

namespace quorvane {

TEST(InterventionEvidence, LateEffectsNeedTheMarginAboveTheCriticalValue) {
  struct Case { int type, index; double below_t; const char* dropped; };  // "" when kept
  const Case cases[] = {{kLevelShift, 108, 0.25, "dropped LEVEL SHIFT at observation 109 (t "},
                        {kLevelShift, 107, 0.25, ""}, {kLevelShift, 108, 0.75, ""}, {kPulse, 118, 0.25, ""},
                        {kSeasonalPulse, 96, 0.25, "dropped SEASONAL PULSE at observation 97 (t "}};
  const int n = 120;
  ArimaOrders orders;
  orders.p = 1;
  orders.constant = true;
  DetectionOptions opt;
  opt.period = 12;
  for (const Case& c : cases) {
    std::vector<double> y = testdata::SimulateArma11(n, 0.5, 0.0, 1.0, 7);
    const std::vector<std::vector<double>> X = {InterventionRegressor(kLevelShift, 30, 12, n),
                                                InterventionRegressor(c.type, c.index, 12, n)};
    for (int t = 0; t < n; ++t) y[t] += 100.0 + 6.0 * X[0][t] + 3.0 * X[1][t];
    DetectionResult r;
    r.fit = FitRegressionArima(y, X, orders, opt.criteria, true);
    for (int j = 0; j < 2; ++j)
      r.found.push_back({j ? c.type : kLevelShift, j ? c.index : 30, 0, 0, r.fit.beta[j] / r.fit.beta_se[j]});
    r.critical_value = std::fabs(r.found[1].t_value) - c.below_t;
    const bool kept = *c.dropped == '\0';
    EXPECT_EQ(DropWeakLateEffects(y, opt, r), !kept) << c.index;
    ASSERT_EQ(r.found.size(), kept ? 2u : 1u) << c.index;
    EXPECT_EQ(kept ? size_t{0} : r.trail.back().rfind(c.dropped, 0), 0u) << c.index;
    EXPECT_NEAR(r.found[0].impact, kept ? 0.0 : 6.0, 1.0);  // estimated again once the late one left
  }
}

}  // namespace quorvane
