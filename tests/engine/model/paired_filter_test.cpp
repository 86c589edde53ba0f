// The exact filter runs two series side by side (a series with the unit series of its mean,
// or two series being whitened): each must come out as it does alone, to the last bit, for
// seasonal and nonseasonal models, with an odd series left over.
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "engine/model/arma.h"
#include "model_test_data.h"

namespace quorvane {
namespace {

TEST(PairedFilter, EachSeriesAsAloneAndTheMeanAsItsRegression) {
  ArmaCoefficients seasonal, mixed, moving;
  seasonal.period = 4;
  seasonal.ar = {0.4};
  seasonal.sar = {0.5};
  seasonal.sma = {-0.3};
  mixed.ar = {0.7, -0.2};
  mixed.ma = {0.3};
  moving.ma = {-0.8, 0.15};
  for (const ArmaCoefficients& c : {seasonal, mixed, moving}) {
    std::vector<double> phi, theta;
    ExpandArma(c, phi, theta);
    std::vector<double> w = testdata::SimulateArma11(97, 0.5, 0.2, 2.0, 11), step(97, 0.0), ones(97, 1.0);
    for (int t = 0; t < 97; ++t) w[t] += 10.0, step[t] = t >= 40 ? 1.0 : 0.0;
    const auto white = ArmaWhitenAll({&w, &step, &ones}, phi, theta);
    ASSERT_EQ(white.size(), 3u);
    const std::vector<double>* in[] = {&w, &step, &ones};
    for (int j = 0; j < 3; ++j) EXPECT_EQ(white[j], ArmaExactLikelihood(*in[j], phi, theta, false).scaled) << j;

    const ArmaLikelihood L = ArmaExactLikelihood(w, phi, theta, true);
    ASSERT_TRUE(L.ok);
    double xy = 0.0, xx = 0.0;
    for (int t = 0; t < 97; ++t) xy += white[2][t] * white[0][t], xx += white[2][t] * white[2][t];
    EXPECT_NEAR(L.mean, xy / xx, 1e-10 * std::fabs(L.mean));
    for (int t = 0; t < 97; ++t) EXPECT_NEAR(L.scaled[t], white[0][t] - L.mean * white[2][t], 1e-9) << t;
    std::vector<double> direct(97);
    ASSERT_TRUE(ArmaScaledResiduals(w, phi, theta, true, direct.data()));
    EXPECT_EQ(direct, L.scaled);
    EXPECT_FALSE(ArmaScaledResiduals(ones, phi, theta, true, direct.data()));
  }
}

TEST(PairedFilter, ConditionalResidualsStartAfterTheArLags) {
  // AR(1) 0.5, MA(1) 0.4 about a mean of 1: residuals from the second value on.
  std::vector<double> e(3);
  ASSERT_TRUE(CssResidualsInto({1, 2, 3, 4}, 1.0, {0.5}, {0.4}, e.data()));
  EXPECT_DOUBLE_EQ(e[0], 1.0);
  EXPECT_DOUBLE_EQ(e[1], 1.1);
  EXPECT_DOUBLE_EQ(e[2], 1.56);
  EXPECT_FALSE(CssResidualsInto({1.0}, 0.0, {0.5}, {}, e.data()));
}

}  // namespace
}  // namespace quorvane
