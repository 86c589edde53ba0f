// The products of every place's effect with the residual columns, made for all places at
// once by filtering the columns backwards, equal each place's pattern filtered forwards and
// multiplied out, for differenced, seasonal and moving-average noise and every type.
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "engine/model/intervention_parts.h"
#include "model_test_data.h"

namespace quorvane {
namespace {

TEST(InterventionProducts, AllPlacesAtOnceMatchEachPlaceFilteredForwards) {
  struct Noise { std::vector<double> a, theta; };  // a(B) with its unit lead; theta(B) = 1 + theta
  const Noise models[] = {{{1.0, -1.6, 0.6}, {0.4}},                    // (1 - 0.6B)(1 - B), MA(1)
                          {{1.0, -0.5, 0.0, 0.0, -1.0, 0.5}, {-0.3, 0.0, 0.0, -0.5, 0.15}},  // seasonal
                          {{1.0}, {-0.8}}};                             // a slow moving average
  const int m = 60, period = 4;
  const std::vector<double> w = testdata::SimulateArma11(m, 0.6, 0.2, 2.0, 5);
  Eigen::MatrixXd X(m, 2);
  for (int t = 0; t < m; ++t) {
    X(t, 0) = w[t];
    X(t, 1) = t >= 25 ? 1.0 : 0.0;
  }
  for (const Noise& noise : models) {
    const Eigen::MatrixXd U = intervention_parts::BackFiltered(X, noise.a, noise.theta);
    for (int type : {kPulse, kLevelShift, kSeasonalPulse, kLocalTrend}) {
      const Eigen::MatrixXd P = intervention_parts::PatternProducts(U, type, period);
      for (int q = 0; q < m; ++q) {
        const int len = m - q;
        const std::vector<double> p = InterventionRegressor(type, 0, period, len);
        std::vector<double> c(len, 0.0);
        for (int j = 0; j < len; ++j) {
          for (int k = 0; k < static_cast<int>(noise.a.size()) && k <= j; ++k) c[j] += noise.a[k] * p[j - k];
          for (int k = 1; k <= static_cast<int>(noise.theta.size()) && k <= j; ++k) c[j] -= noise.theta[k - 1] * c[j - k];
        }
        for (int col = 0; col < 2; ++col) {
          double want = 0.0;
          for (int j = 0; j < len; ++j) want += c[j] * X(q + j, col);
          EXPECT_NEAR(P(q, col), want, 1e-9 * (1.0 + std::fabs(want))) << "type " << type << " place " << q;
        }
      }
    }
  }
}

}  // namespace
}  // namespace quorvane
