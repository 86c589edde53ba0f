// The regular differencing decision: the Dickey-Fuller test against the kept reference
// values, and the decision on simulated series that the KPSS test leaves in doubt.
#include <map>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/model/series_stats.h"
#include "engine/model/unit_root.h"
#include "model_test_data.h"

namespace quorvane {
namespace {

TEST(UnitRoot, DickeyFullerMatchesTheReferenceOnRealSeries) {
  std::map<std::string, double> ref;
  for (const auto& f : testdata::ReferenceRows("statistics.csv", 3)) ref[f[0] + "/" + f[1]] = std::stod(f[2]);
  for (const char* series : {"nile", "sunspots", "macro_infl", "macro_unemp"}) {
    SCOPED_TRACE(series);
    const AdfResult adf = Adf(testdata::LoadSeries(series));
    ASSERT_TRUE(adf.computed);
    EXPECT_NEAR(adf.statistic, ref.at(std::string("adf/") + series), 1e-6);
    EXPECT_NEAR(adf.critical_5, ref.at(std::string("adf_5pct/") + series), 1e-6);
  }
  // Too short for the regression: no verdict, and no difference asked for on its account.
  EXPECT_FALSE(Adf({1.0, 2.0, 1.5, 3.0, 2.5, 4.0, 3.5, 5.0}).computed);
}

// ARIMA(1, d, 0) around 50, after a burn-in of 100 values.
std::vector<double> Simulate(double phi, int d, int n, uint32_t seed) {
  std::mt19937 gen(seed);
  std::normal_distribution<double> noise(0.0, 1.0);
  std::vector<double> x(n + 100);
  double prev = 0.0;
  for (double& v : x) v = prev = phi * prev + noise(gen);
  for (int k = 0; k < d; ++k)
    for (size_t t = 1; t < x.size(); ++t) x[t] += x[t - 1];
  std::vector<double> y(x.end() - n, x.end());
  for (double& v : y) v += 50.0;
  return y;
}

TEST(UnitRoot, TheDickeyFullerTestDecidesWhereKpssIsInDoubt) {
  // Twenty series of each process whose KPSS statistic lies between its 10 % and 5 %
  // points: at most 6 of the stationary autoregressions are differenced; at least 8 of
  // the integrated ones, which KPSS alone (with few lags) would leave as they are.
  struct Case {
    const char* process;
    double phi;
    int d, n;
  } cases[] = {
      {"AR(1) 0.5, 150 values", 0.5, 0, 150},
      {"AR(1) 0.6, 100 values", 0.6, 0, 100},
      {"ARI(1,1) 0.7, 100 values", 0.7, 1, 100},
      {"ARI(1,1) 0.5, 150 values", 0.5, 1, 150},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.process);
    int in_doubt = 0, differenced = 0;
    for (uint32_t seed = 1; seed <= 2000 && in_doubt < 20; ++seed) {
      const std::vector<double> y = Simulate(c.phi, c.d, c.n, seed);
      const double kpss = Kpss(y).statistic;
      if (!(kpss > 0.347 && kpss <= 0.463)) continue;
      ++in_doubt;
      differenced += RegularDifferences(y, 2, nullptr) > 0;
    }
    ASSERT_EQ(in_doubt, 20);
    if (c.d == 0) EXPECT_LE(differenced, 6);
    else EXPECT_GE(differenced, 8);
  }
}

}  // namespace
}  // namespace quorvane
