// Intervention series at the edges of the data and into the future block, their names, and
// a duplicate refused without touching the file.
#include <gtest/gtest.h>

#include "genseries/gen_fixture.h"
#include "genseries/texts.h"
#include "platform/textfile.h"

namespace tessaly::genseries::test {
namespace {

class Interventions : public GenTest {};

struct Case {
  const char* what;
  const char* kind;  // Level, Pulse, Seasonal, Trend
  int seasonality, year, period, observations, forecasts;
  int start_year, start_period, end_year, end_period;
  const char* name;
  std::vector<double> obs, fut;
};

// Observation index (0-based) k of a monthly series from January 2000 is year 2000 + k / 12,
// period k % 12 + 1.
TEST_F(Interventions, ValuesAndNamesAtTheEdgesAndIntoTheFutureBlock) {
  const std::vector<double> z10(10, 0.0);
  const Case cases[] = {
      {"a trend from observation 5 to 8 of 10, with 2 future values", "Trend", 4, 2000, 1, 10, 2,
       2001, 1, 2001, 4, "IIT00005SALES", {0, 0, 0, 0, 1, 2, 3, 4, 0, 0}, {0, 0}},
      {"a pulse at the last observation", "Pulse", 4, 2000, 1, 10, 2, 2002, 2, 0, 0,
       "IIP00010SALES", {0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, {0, 0}},
      {"a level that runs past the observations, cut at the end of the future block", "Level", 4,
       2000, 1, 10, 3, 2002, 1, 2004, 4, "IIL00009SALES", {0, 0, 0, 0, 0, 0, 0, 0, 1, 1}, {1, 1, 1}},
      {"a level of one period is a pulse with the level's name", "Level", 4, 2000, 1, 10, 2, 2000,
       3, 2000, 3, "IIL00003SALES", {0, 0, 1, 0, 0, 0, 0, 0, 0, 0}, {0, 0}},
      {"a level that starts in the future block", "Level", 4, 2000, 1, 10, 4, 2002, 4, 2003, 1,
       "IIL00012SALES", z10, {0, 1, 1, 0}},
      {"a trend that goes on into the future block and stops at its end", "Trend", 4, 2000, 1, 10,
       4, 2002, 1, 2003, 1, "IIT00009SALES", {0, 0, 0, 0, 0, 0, 0, 0, 1, 2}, {3, 4, 5, 0}},
      {"a level from the first observation of a series that begins in period 3", "Level", 4, 2000,
       3, 6, 2, 2000, 3, 2000, 4, "IIL00001SALES", {1, 1, 0, 0, 0, 0}, {0, 0}},
      {"an annual series", "Pulse", 1, 1990, 1, 8, 2, 1995, 1, 0, 0, "IIP00006SALES",
       {0, 0, 0, 0, 0, 1, 0, 0}, {0, 0}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    AscLayout layout{{"X1", "Sales"}, {1, 0}, c.seasonality, c.year, c.period, c.observations, 0, 0, c.forecasts};
    fs::path asc = Asc("SALES.ASC", layout);
    GenerationVariables v = VarsFor(layout);
    std::string sy = std::to_string(c.start_year), sp = std::to_string(c.start_period);
    std::string ey = std::to_string(c.end_year), ep = std::to_string(c.end_period);
    if (std::string(c.kind) == "Level") v.LevelStartYear = sy, v.LevelStartPeriod = sp, v.LevelEndYear = ey, v.LevelEndPeriod = ep;
    if (std::string(c.kind) == "Pulse") v.PulseStartYear = sy, v.PulseStartPeriod = sp;
    if (std::string(c.kind) == "Trend") v.TrendStartYear = sy, v.TrendStartPeriod = sp, v.TrendEndYear = ey, v.TrendEndPeriod = ep;
    GenerationResult r = Generate(v, asc);
    EXPECT_EQ(r.outcome, GenerationOutcome::Adjusted);
    AscRead out = ReadAsc(asc);
    ASSERT_EQ(out.names, (std::vector<std::string>{"X1", c.name, "Sales"}));
    EXPECT_EQ(out.types, (std::vector<int>{1, 1, 0}));
    EXPECT_EQ(out.future, c.forecasts);  // the future block opened at the number of forecasts
    EXPECT_EQ(out.obs[c.name], c.obs);
    EXPECT_EQ(out.fut[c.name], c.fut);
    // The kept series are untouched; X1 had no future values, so its block is zeros.
    EXPECT_EQ(out.obs["X1"][0], 1000.5);
    EXPECT_EQ(out.obs["Sales"][c.observations - 1], 2000.5 + c.observations - 1);
    EXPECT_EQ(out.fut["X1"], std::vector<double>(c.forecasts, 0.0));
  }
}

TEST_F(Interventions, SeasonalPulseKeepsItsSpacingAcrossTheBoundary) {
  struct SP {
    int start_index, observations, forecasts;
    std::vector<int> ones;  // indexes over observations and future values
  };
  const SP cases[] = {
      {2, 30, 12, {2, 14, 26, 38}},        // the example of a monthly series
      {5, 18, 24, {5, 17, 29, 41}},        // a pulse on the last observation itself
      {0, 24, 12, {0, 12, 24}},            // from the first observation
      {31, 30, 24, {42}},                  // a start in the future block: s - 1 places on
  };
  for (const SP& c : cases) {
    SCOPED_TRACE("start " + std::to_string(c.start_index));
    AscLayout layout{{"SALES"}, {0}, 12, 2000, 1, c.observations, 0, 0, c.forecasts};
    fs::path asc = Asc("SALES.ASC", layout);
    GenerationVariables v = VarsFor(layout);
    v.SPStartYear = std::to_string(2000 + c.start_index / 12);
    v.SPStartPeriod = std::to_string(c.start_index % 12 + 1);
    v.SPEndYear = "1900";  // the end travels in the file but is not read
    v.SPEndPeriod = "1";
    EXPECT_EQ(Generate(v, asc).outcome, GenerationOutcome::Adjusted);
    AscRead out = ReadAsc(asc);
    const std::string name = "IIS000" + std::string(c.start_index + 1 < 10 ? "0" : "") +
                             std::to_string(c.start_index + 1) + "SALES";
    ASSERT_EQ(out.names.front(), name);
    std::vector<int> ones;
    for (int t = 0; t < c.observations + c.forecasts; ++t) {
      double x = t < c.observations ? out.obs[name][t] : out.fut[name][t - c.observations];
      if (x == 1.0) ones.push_back(t);
    }
    EXPECT_EQ(ones, c.ones);
  }
}

TEST_F(Interventions, NamesCarryTheirBandsOfZeros) {
  // Daily data long enough for observation 2001; the bands 100-200 and 1000-2000 stand.
  const std::pair<int, const char*> cases[] = {
      {9, "IIP00009"}, {10, "IIP00010"}, {99, "IIP00099"}, {100, "IIP00100"}, {200, "IIP00200"},
      {201, "IIP0201"}, {999, "IIP0999"}, {1000, "IIP1000"}, {2000, "IIP2000"}, {2001, "IIP02001"}};
  // The name is the prefix, the number and the dependent series' name in capitals.
  for (const auto& [n, prefix] : cases) {
    AscLayout layout{{"Demand "}, {0}, 200, 1, 1, 2100, 0, 0, 10};
    fs::path asc = Asc("D.ASC", layout);
    GenerationVariables v = VarsFor(layout);
    v.PulseStartYear = std::to_string(1 + (n - 1) / 200);
    v.PulseStartPeriod = std::to_string((n - 1) % 200 + 1);
    (void)Generate(v, asc);
    EXPECT_EQ(ReadAsc(asc).names.front(), std::string(prefix) + "DEMAND");
  }
}

TEST_F(Interventions, ADuplicateIsRefusedAndTheFileIsNotRewritten) {
  AscLayout layout{{"IIL00012SALES", "SALES"}, {1, 0}, 12, 2000, 1, 24, 6, 0, 6};
  fs::path asc = Asc("SALES.ASC", layout);
  const std::string before = *platform::ReadWholeFile(asc);
  GenerationVariables v = VarsFor(layout);
  v.PulseStartYear = "2000", v.PulseStartPeriod = "3";
  v.LevelStartYear = "2000", v.LevelStartPeriod = "12", v.LevelEndYear = "2001", v.LevelEndPeriod = "12";
  GenerationResult r = Generate(v, asc);
  EXPECT_EQ(r.outcome, GenerationOutcome::Refused);
  EXPECT_EQ(r.log_lines, (std::vector<std::string>{
                             "The indicated Level series name IIL00012SALES is a duplicate of an "
                                 "existing series. The file was not adjusted."}));
  EXPECT_EQ(*platform::ReadWholeFile(asc), before);
  EXPECT_FALSE(fs::exists(dir / "SALES")) << "the log is deleted once read";
  EXPECT_EQ(texts::DuplicateIntervention("Trend", "IIT00001X"),
            "The indicated Trend series name IIT00001X is a duplicate of an existing series. The file was not adjusted. ");
  EXPECT_EQ(texts::DuplicateIntervention("Seasonal", "IIS00001X").substr(0, 38),
            "The indicated Seasonal Pulse series na");
}

}  // namespace
}  // namespace tessaly::genseries::test
