// Effects carried into the forecasts on the last few observations need more than the critical
// value: the late one goes below the margin, at one cycle from the end and not a step further
// in, and a pulse, which the forecasts do not carry, never does.
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "engine/model/intervention_evidence.h"
#include "model_test_data.h"

namespace quorvane {
namespace {

TEST(InterventionEvidence, LateEffectsNeedTheMarginAboveTheCriticalValue) {
  struct Case { int type, index; double below_t; bool kept; const char* dropped; };
  const Case cases[] = {{kLevelShift, 108, 0.25, false, "dropped LEVEL SHIFT at observation 109 (t "},
                        {kLevelShift, 107, 0.25, true, ""},   // thirteen observations: a cycle and more
                        {kLevelShift, 108, 0.75, true, ""},   // past the margin
                        {kSeasonalPulse, 96, 0.25, false, "dropped SEASONAL PULSE at observation 97 (t "},
                        {kPulse, 118, 0.25, true, ""}};
  const int n = 120, period = 12;
  ArimaOrders orders;
  orders.p = 1;
  orders.constant = true;
  for (const Case& c : cases) {
    std::vector<double> y = testdata::SimulateArma11(n, 0.5, 0.0, 1.0, 7);
    const std::vector<std::vector<double>> X = {InterventionRegressor(kLevelShift, 30, period, n),
                                                InterventionRegressor(c.type, c.index, period, n)};
    for (int t = 0; t < n; ++t) y[t] += 100.0 + 6.0 * X[0][t] + 3.0 * X[1][t];
    DetectionOptions opt;
    opt.period = period;
    DetectionResult r;
    r.fit = FitRegressionArima(y, X, orders, opt.criteria, true);
    ASSERT_TRUE(r.fit.ok);
    for (int j = 0; j < 2; ++j) r.found.push_back({j ? c.type : kLevelShift, j ? c.index : 30, r.fit.beta[j],
                                                   r.fit.beta_se[j], r.fit.beta[j] / r.fit.beta_se[j]});
    r.critical_value = std::fabs(r.found[1].t_value) - c.below_t;
    EXPECT_EQ(DropWeakLateEffects(y, opt, r), !c.kept) << c.index;
    ASSERT_EQ(r.found.size(), c.kept ? 2u : 1u) << c.index;
    EXPECT_EQ(r.found[0].index, 30);
    if (!c.kept) {
      EXPECT_EQ(r.trail.back().rfind(c.dropped, 0), 0u) << r.trail.back();
      EXPECT_NEAR(r.found[0].impact, 6.0, 1.0);  // estimated again without the late one
    }
  }
}

}  // namespace
}  // namespace quorvane
