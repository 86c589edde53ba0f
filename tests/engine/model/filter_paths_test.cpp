// The exact filter and the conditional residuals take a path of their own for small models
// (the state in registers, the sums laid out for each order). Their numbers must be the
// general path's to the bit, with a mean and without, the gain converged or not, for
// whitening as for the likelihood: the estimates and every effect found rest on them.
#include <vector>

#include <gtest/gtest.h>

#include "engine/model/arma.h"
#include "model_test_data.h"

namespace quorvane {
namespace {

struct Model {
  const char* name;
  std::vector<double> phi, theta;
};

TEST(FilterPaths, SmallModelsGiveTheGeneralPathsNumbers) {
  const Model models[] = {
      {"white noise", {}, {}},
      {"AR(1) near the unit circle", {0.97}, {}},
      {"MA(1) slow to converge", {}, {-0.92}},
      {"ARMA(2,1)", {0.7, -0.2}, {0.3}},
      {"ARMA(3,3)", {0.5, -0.3, 0.1}, {0.4, 0.2, -0.1}},
      {"ARMA(1,5), six states", {0.6}, {0.5, 0.3, 0.2, 0.1, 0.05}},
      {"ARMA(2,4) with a gap", {0.0, 0.5}, {0.0, 0.3, 0.0, -0.2}},
  };
  std::vector<double> w = testdata::SimulateArma11(120, 0.6, 0.3, 1.5, 7), step(120, 0.0);
  for (int t = 0; t < 120; ++t) w[t] += 25.0, step[t] = t >= 70 ? 1.0 : 0.0;
  // Each model through both paths: the small ones first, then the general one.
  struct Outcome {
    ArmaLikelihood likelihood[2];
    std::vector<std::vector<double>> white;
    std::vector<double> css = std::vector<double>(120);
  };
  auto run = [&](const Model& m, bool small) {
    ArmaUseSmallModelPaths(small);
    Outcome o;
    for (bool mean : {false, true}) o.likelihood[mean] = ArmaExactLikelihood(w, m.phi, m.theta, mean, true);
    o.white = ArmaWhitenAll({&w, &step, &w}, m.phi, m.theta);
    EXPECT_TRUE(CssResidualsInto(w, 25.0, m.phi, m.theta, o.css.data()));
    ArmaUseSmallModelPaths(true);
    return o;
  };
  for (const Model& m : models) {
    const Outcome fast = run(m, true), general = run(m, false);
    for (int mean : {0, 1}) {
      const ArmaLikelihood &a = fast.likelihood[mean], &b = general.likelihood[mean];
      ASSERT_TRUE(a.ok && b.ok) << m.name;
      EXPECT_EQ(a.loglik, b.loglik) << m.name << " mean " << mean;
      EXPECT_EQ(a.sigma2, b.sigma2) << m.name;
      EXPECT_EQ(a.mean, b.mean) << m.name;
      EXPECT_EQ(a.mean_variance, b.mean_variance) << m.name;
      EXPECT_EQ(a.scaled, b.scaled) << m.name;
      EXPECT_EQ(a.innovations, b.innovations) << m.name;
      EXPECT_EQ(a.state, b.state) << m.name;
    }
    EXPECT_EQ(fast.white, general.white) << m.name;
    EXPECT_EQ(fast.white[0], fast.white[2]) << m.name;
    EXPECT_EQ(fast.css, general.css) << m.name;
  }
}

}  // namespace
}  // namespace quorvane
