// The model kept after intervention detection passes the necessity test: with the effects in
// the model, no ARMA term or constant is left that is not significant at the rules' level.
// A term that stood in for outliers or steps before they were found is dropped once they are
// estimated beside it.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/model.h"
#include "model_test_data.h"

namespace quorvane {
namespace {

TEST(NecessityAfterDetection, EveryTermOfTheFinalModelIsSignificantBesideTheEffects) {
  struct Case { const char* name; int period, horizon; };
  const Case cases[] = {{"airline", 12, 18},    {"co2", 12, 18},           {"elnino", 12, 18},
                        {"macro_cpi", 4, 8},    {"macro_infl", 4, 8},      {"macro_realcons", 4, 8},
                        {"macro_realgdp", 4, 8}, {"macro_tbilrate", 4, 8}, {"macro_unemp", 4, 8},
                        {"nile", 1, 6},         {"sunspots", 1, 6}};
  int with_effects = 0;
  for (const Case& c : cases) {
    const std::vector<double> all = testdata::LoadSeries(c.name);
    // The series as it stands and as it stood one and two horizons earlier.
    for (int back = 0; back <= 2 * c.horizon; back += c.horizon) {
      std::vector<double> y(all.begin(), all.end() - back);
      if (y.size() > 240) y.erase(y.begin(), y.end() - 240);
      ModelingProblem p = testdata::Problem("SERIES", y, c.period, c.horizon);
      p.rules.lambdas = {1.0, 0.5, 0.0};
      p.rules.necessity_level = 90.0;
      const ModelResult r = FitAndForecast(p, nullptr);
      ASSERT_EQ(r.error_code, 0) << c.name << " less " << back;
      with_effects += !r.interventions.empty();
      for (const Coefficient& k : r.coefficients)
        if (k.kind == "constant" || k.kind == "ar" || k.kind == "ma" || k.kind == "sar" || k.kind == "sma")
          EXPECT_LE(k.p_value, 0.10 + 1e-9) << c.name << " less " << back << ": " << r.description << " " << k.term;
    }
  }
  // The property is about models with effects: most of these carry some.
  EXPECT_GE(with_effects, 15);
}

}  // namespace
}  // namespace quorvane
