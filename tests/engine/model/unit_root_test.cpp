// The regular differencing: the Dickey-Fuller test against statsmodels, and the decision
// on simulated series that the KPSS test leaves in doubt.
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "engine/model/unit_root.h"
#include "model_test_data.h"

namespace quorvane {
namespace {

TEST(UnitRoot, DickeyFullerMatchesTheReferenceOnRealSeries) {
  std::map<std::string, double> ref;
  for (const auto& f : testdata::ReferenceRows("statistics.csv", 3)) ref[f[0] + "/" + f[1]] = std::stod(f[2]);
  for (const std::string s : {"nile", "sunspots", "macro_infl", "macro_unemp"}) {
    const AdfResult adf = Adf(testdata::LoadSeries(s));
    EXPECT_NEAR(adf.statistic, ref.at("adf/" + s), 1e-6) << s;
    EXPECT_NEAR(adf.critical_5, ref.at("adf_5pct/" + s), 1e-6) << s;
  }
}

// Of 20 series whose KPSS statistic lies between its 10 % and 5 % points, few AR(1) are
// differenced, and most ARI(1,1), which KPSS alone would leave as they are.
TEST(UnitRoot, DickeyFullerDecidesWhereKpssIsInDoubt) {
  struct { double phi; int d, n; } cases[] = {{0.5, 0, 150}, {0.6, 0, 100}, {0.7, 1, 100}, {0.6, 1, 150}};
  for (const auto& c : cases) {
    int in_doubt = 0, differenced = 0;
    for (uint32_t seed = 1; seed <= 2000 && in_doubt < 20; ++seed) {
      std::vector<double> y = testdata::SimulateArma11(c.n, c.phi, 0.0, 1.0, seed);
      for (size_t t = 1; c.d == 1 && t < y.size(); ++t) y[t] += y[t - 1];
      const double kpss = Kpss(y).statistic;
      if (kpss <= 0.347 || kpss > 0.463) continue;
      ++in_doubt;
      std::vector<DifferencingStep> steps;
      differenced += RegularDifferences(y, 2, &steps) > 0;
      EXPECT_TRUE(steps.at(0).adf.computed);  // the report's note shows what decided
    }
    ASSERT_EQ(in_doubt, 20);
    EXPECT_TRUE(c.d == 0 ? differenced <= 6 : differenced >= 8) << c.phi << " d " << c.d << ": " << differenced;
  }
}

}  // namespace
}  // namespace quorvane
