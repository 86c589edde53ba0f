// Whitening several series through one filter gives each the scaled residuals of its own
// exact likelihood, for seasonal and nonseasonal models, and refuses the series the model
// fits exactly.
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "engine/model/arma.h"
#include "model_test_data.h"

namespace quorvane {
namespace {

TEST(ArmaWhitenAll, MatchesEachSeriesOwnExactFilter) {
  ArmaCoefficients seasonal;
  seasonal.period = 12;
  seasonal.ar = {0.5};
  seasonal.ma = {-0.4};
  seasonal.sma = {-0.6};
  ArmaCoefficients short_memory;
  short_memory.ar = {0.7, -0.2};
  short_memory.ma = {0.3};
  for (const ArmaCoefficients& c : {seasonal, short_memory}) {
    std::vector<double> phi, theta;
    ExpandArma(c, phi, theta);
    const std::vector<double> w = testdata::SimulateArma11(150, 0.6, 0.2, 2.0, 5);
    std::vector<double> step(150, 0.0), ones(150, 1.0), zeros(150, 0.0);
    for (int t = 70; t < 150; ++t) step[t] = 1.0;
    const auto white = ArmaWhitenAll({&w, &step, &ones, &zeros}, phi, theta);
    ASSERT_EQ(white.size(), 4u);
    const std::vector<double>* in[] = {&w, &step, &ones};
    for (int j = 0; j < 3; ++j) {
      const ArmaLikelihood L = ArmaExactLikelihood(*in[j], phi, theta, false);
      ASSERT_TRUE(L.ok);
      ASSERT_EQ(white[j].size(), L.scaled.size());
      for (size_t t = 0; t < L.scaled.size(); ++t) EXPECT_NEAR(white[j][t], L.scaled[t], 1e-12 * (1 + std::fabs(L.scaled[t])));
    }
    EXPECT_TRUE(white[3].empty());
  }
}

}  // namespace
}  // namespace quorvane
