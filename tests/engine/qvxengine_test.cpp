// The real qvxengine process in a copy of the program folder, as the front-end's client
// starts it: the request file in, the files and the response out.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "engine/exchange.h"
#include "engine/request.h"
#include "engine_test_data.h"
#include "platform/textfile.h"
#include "support/program_folder.h"
#include "support/text_checks.h"

namespace quorvane {
namespace {

using tessaly::testing::ProgramFolderCopy;
using tessaly::testing::ReadFile;
using tessaly::testing::RunCommand;
using tessaly::testing::WriteFile;
namespace fs = std::filesystem;

int RunEngineIn(const ProgramFolderCopy& program, std::string* output = nullptr) {
  return RunCommand("cd '" + program.path().string() + "' && ./qvxengine", output);
}

TEST(Qvxengine, MonthlySeriesEndToEnd) {
  ProgramFolderCopy program;
  const auto& y = testdata::AirlinePassengers();
  EngineArrays request = testdata::MonthlyRequest(y, 12);
  request.work_folder = program.path().string();
  ASSERT_TRUE(WriteExchangeFile(program / kRequestFile, ExchangeKind::Request, request));
  std::string output;
  ASSERT_EQ(RunEngineIn(program, &output), 0) << output;

  auto response = ReadExchangeFile(program / kResponseFile, ExchangeKind::Response);
  ASSERT_TRUE(response);
  EXPECT_EQ(response->error_code, 0) << response->strings2250[0];
  EXPECT_EQ(response->property_values[0], 1);
  EXPECT_EQ(response->series_names[0], "PASSENGERS");
  EXPECT_EQ(response->property_values[4], 144);
  ASSERT_EQ(response->property_values[7], 12);

  // 1961 inside its limits, at the series' level, July above February as every year; the
  // fitted values and residuals add up to the actuals.
  const auto& f = response->forecast_values;
  for (int h = 0; h < 12; ++h) EXPECT_TRUE(f[600 + h] < f[h] && f[h] < f[1200 + h] && f[h] > 350 && f[h] < 800) << h;
  EXPECT_GT(f[6], f[1]);
  for (int t = 0; t < 144; ++t)
    if (response->doubles10000a[t] != kMissingValue)
      EXPECT_NEAR(response->doubles10000a[t] + response->doubles10000b[t], y[t], 1e-6 * y[t]) << t;
  for (const char* name : {"DETAILS.HTM", "STAT.HTM", "EQUATION.TXT", "RHSIDE.TXT", "VERBAL.TXT",
                           "OUTCAST.TXT", "ADJUSTED.TXT", "TS50PRO.123", "PASS2MOD.123",
                           "FITTED.CSV", "FORECAST.CSV", "RESIDUALACF.CSV", "EQUATION.CSV"})
    EXPECT_GT(fs::exists(program / name) ? fs::file_size(program / name) : 0, 150u) << name;
  auto pro = tessaly::platform::ReadAllLines(program / "TS50PRO.123");
  ASSERT_TRUE(pro);
  ASSERT_EQ(pro->size(), 13u);
  EXPECT_EQ((*pro)[1].substr(0, 11), "1961/1     ");
  for (int s = 1; s <= 4; ++s)
    EXPECT_FALSE(fs::exists(program / ("STAGE" + std::to_string(s) + ".123")));
}

// A request it cannot serve (garbled, missing, or under rules it cannot read) still gets
// a response: a failed dataset with its code, and no reports.
TEST(Qvxengine, RequestsItCannotServeGetAFailedResponse) {
  ProgramFolderCopy program;
  const EngineArrays airline = testdata::MonthlyRequest(testdata::AirlinePassengers(), 12);
  std::string rules = ReadFile(program / "ENGINE.CND");
  rules.replace(rules.find("|95.0"), 5, "|95,0");  // (SS): a comma is not a number
  const struct {
    const char* what;
    std::function<void()> prepare;
    int code;  // 0: any failure
  } cases[] = {
      {"garbled", [&] { WriteFile(program / kRequestFile, "QVXX this is not a request"); }, 0},
      {"missing", [&] { fs::remove(program / kRequestFile); }, 0},
      {"broken rules",
       [&] {
         WriteFile(program / "ENGINE.GO", rules);
         WriteExchangeFile(program / kRequestFile, ExchangeKind::Request, airline);
       },
       2031},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    fs::remove(program / kResponseFile);
    c.prepare();
    ASSERT_EQ(RunEngineIn(program), 0);
    auto response = ReadExchangeFile(program / kResponseFile, ExchangeKind::Response);
    ASSERT_TRUE(response);
    EXPECT_TRUE(c.code ? response->error_code == c.code : response->error_code > 0) << response->error_code;
    EXPECT_FALSE(fs::exists(program / "DETAILS.HTM"));
  }
}

// Run on its own (`--asc FILE --out FOLDER`), the engine reports into the folder and checks
// its file as a run does: a count that disagrees with the data is refused with the run's
// reason, and data that would give infinite limits fails the dataset instead of writing them.
TEST(Qvxengine, AscFileRunsDirectlyAndIsCheckedAsARunChecksIt) {
  ProgramFolderCopy program;
  auto lines = tessaly::platform::ReadAllLines(testdata::RepoPath("tests/engine/data/airline.asc"));
  ASSERT_TRUE(lines);
  auto fewer = *lines, more = *lines, blank = *lines, extreme = *lines;
  fewer.pop_back();
  more.push_back("500");
  blank.insert(blank.begin() + 20, "");
  for (size_t i = 13; i < extreme.size(); ++i) extreme[i] = i % 2 ? "1e308" : "-1e308";
  const struct {
    const char* what;
    std::vector<std::string> file;
    int status;
    std::vector<std::string> said;
  } cases[] = {
      {"the airline series", *lines, 0, {"series    PASSENGERS", "forecasts 12"}},
      {"one value short", fewer, 2, {"refused by the checks of a run"}},
      {"one value over", more, 2, {"refused by the checks of a run"}},
      {"an empty line", blank, 2, {"refused by the checks of a run"}},
      {"values that give infinite limits", extreme, 1, {"result    error 2189"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    ASSERT_TRUE(tessaly::platform::WriteAllLines(program / "case.asc", c.file));
    fs::remove_all(program / "out");
    std::string output;
    EXPECT_EQ(RunCommand("cd '" + program.path().string() + "' && ./qvxengine --asc case.asc --out out 2>&1", &output),
              c.status)
        << output;
    EXPECT_TRUE(tessaly::testing::HoldsAll(output, c.said));
    EXPECT_EQ(fs::exists(program / "out" / "FORECAST.CSV"), c.status == 0);
    EXPECT_EQ(fs::exists(program / "out" / "TS50PRO.123"), c.status == 0);
  }
  EXPECT_FALSE(fs::exists(program / "DETAILS.HTM"));
  EXPECT_NE(RunCommand("cd '" + program.path().string() + "' && ./qvxengine --asc missing.asc"), 0);
  EXPECT_NE(RunCommand("cd '" + program.path().string() + "' && ./qvxengine --bogus"), 0);
}

}  // namespace
}  // namespace quorvane
