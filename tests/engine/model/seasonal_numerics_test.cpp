// Seasonal models' autocovariances and the search's unit-root margin, over the long sparse
// polynomials of monthly models where the short ones of the closed forms show nothing.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "engine/model/arma.h"
#include "engine/model/search.h"

namespace quorvane {
namespace {

ArmaCoefficients Seasonal(std::vector<double> ar, std::vector<double> ma, std::vector<double> sar,
                          std::vector<double> sma, int period) {
  ArmaCoefficients c;
  c.ar = ar;
  c.ma = ma;
  c.sar = sar;
  c.sma = sma;
  c.period = period;
  return c;
}

TEST(SeasonalNumerics, AutocovariancesEqualTheSumsOfPsiWeightProducts) {
  const ArmaCoefficients cases[] = {
      Seasonal({0.5}, {0.3}, {0.4}, {-0.6}, 4),         // quarterly (1,0,1)(1,0,1)
      Seasonal({0.7, -0.2}, {}, {0.5, 0.3}, {}, 12),    // monthly AR with two seasonal AR lags
      Seasonal({}, {-0.4}, {}, {-0.8}, 12),             // the airline's moving average
      Seasonal({0.9}, {0.2, 0.1}, {-0.5}, {0.4}, 12),   // persistent, mixed signs
  };
  for (const ArmaCoefficients& c : cases) {
    std::vector<double> phi, theta;
    ExpandArma(c, phi, theta);
    const std::vector<double> psi = PsiWeights(phi, theta, 4000);
    const std::vector<double> g = ArmaAutocovariances(phi, theta, 30);
    ASSERT_EQ(g.size(), 31u);
    for (int k = 0; k <= 30; ++k) {
      double sum = 0.0;
      for (size_t j = 0; j + k < psi.size(); ++j) sum += psi[j] * psi[j + k];
      EXPECT_NEAR(g[k], sum, 1e-9 * std::max(1.0, std::fabs(sum))) << "period " << c.period << " lag " << k;
    }
  }
}

TEST(SeasonalNumerics, RootsClearOfTheUnitCircleByTheSearchMargin) {
  struct Case {
    ArmaCoefficients coef;
    bool clear;
  } cases[] = {
      {Seasonal({0.98}, {}, {}, {}, 1), true},           // root 1.0204
      {Seasonal({0.995}, {}, {}, {}, 1), false},         // root 1.005
      {Seasonal({}, {-0.995}, {}, {}, 1), false},        // an MA root as near
      {Seasonal({}, {0.5, 0.5}, {}, {}, 1), true},       // MA roots 1.414 (as an AR: a unit root)
      {Seasonal({}, {}, {}, {-0.8}, 12), true},          // seasonal MA roots 1.0188
      {Seasonal({}, {}, {}, {-0.95}, 12), false},        // seasonal MA roots 1.0043
      {Seasonal({0.3}, {}, {0.9}, {}, 12), false},       // seasonal AR roots 1.0088
      {Seasonal({1.39, -0.69}, {0.2}, {}, {}, 1), true}, // complex AR roots 1.204
  };
  for (const Case& c : cases) {
    ArimaFit fit;
    fit.coef = c.coef;
    EXPECT_EQ(RootsClearOfUnitCircle(fit), c.clear)
        << c.coef.ar.size() << " " << c.coef.ma.size() << " " << c.coef.sar.size() << " " << c.coef.sma.size();
  }
}

}  // namespace
}  // namespace quorvane
