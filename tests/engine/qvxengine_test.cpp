// The real qvxengine process in a copy of the program folder, as the front-end's client
// starts it: the request file in, the files and the response out.
#include <gtest/gtest.h>

#include <cmath>

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

TEST(Qvxengine, GarbledOrMissingRequestGivesAFailureResponse) {
  ProgramFolderCopy program;
  WriteFile(program / kRequestFile, "QVXX this is not a request");
  ASSERT_EQ(RunEngineIn(program), 0);
  auto response = ReadExchangeFile(program / kResponseFile, ExchangeKind::Response);
  ASSERT_TRUE(response);
  EXPECT_GT(response->error_code, 0);

  fs::remove(program / kRequestFile);
  fs::remove(program / kResponseFile);
  ASSERT_EQ(RunEngineIn(program), 0);
  response = ReadExchangeFile(program / kResponseFile, ExchangeKind::Response);
  ASSERT_TRUE(response);
  EXPECT_GT(response->error_code, 0);
}

TEST(Qvxengine, BrokenRulesFileFailsTheDataset) {
  ProgramFolderCopy program;
  std::string rules = ReadFile(program / "ENGINE.CND");
  rules.replace(rules.find("|95.0"), 5, "|95,0");  // (SS): a comma is not a number
  WriteFile(program / "ENGINE.GO", rules);
  EngineArrays request = testdata::MonthlyRequest(testdata::AirlinePassengers(), 12);
  ASSERT_TRUE(WriteExchangeFile(program / kRequestFile, ExchangeKind::Request, request));
  ASSERT_EQ(RunEngineIn(program), 0);
  auto response = ReadExchangeFile(program / kResponseFile, ExchangeKind::Response);
  ASSERT_TRUE(response);
  EXPECT_EQ(response->error_code, 2031);
  EXPECT_FALSE(fs::exists(program / "DETAILS.HTM"));
}

TEST(Qvxengine, AscFileRunsDirectly) {
  ProgramFolderCopy program;
  fs::path asc = testdata::RepoPath("tests/engine/data/airline.asc");
  std::string output;
  ASSERT_EQ(RunCommand("cd '" + program.path().string() + "' && ./qvxengine --asc '" +
                           asc.string() + "' --out reports",
                       &output),
            0)
      << output;
  EXPECT_TRUE(tessaly::testing::HoldsAll(output, {"series    PASSENGERS", "forecasts 12"}));
  EXPECT_TRUE(fs::exists(program / "reports" / "DETAILS.HTM"));
  EXPECT_TRUE(fs::exists(program / "reports" / "TS50PRO.123"));
  EXPECT_FALSE(fs::exists(program / "DETAILS.HTM"));

  EXPECT_NE(RunCommand("cd '" + program.path().string() + "' && ./qvxengine --asc missing.asc"), 0);
  EXPECT_NE(RunCommand("cd '" + program.path().string() + "' && ./qvxengine --bogus"), 0);
}

// Run on its own, the engine checks its file as a run does: a count that disagrees with
// the data is refused with the run's reason, and data that would give infinite limits
// fails the dataset instead of writing them.
TEST(Qvxengine, AscFileIsCheckedAsARunChecksIt) {
  ProgramFolderCopy program;
  auto lines = tessaly::platform::ReadAllLines(testdata::RepoPath("tests/engine/data/airline.asc"));
  ASSERT_TRUE(lines);
  auto run = [&](std::vector<std::string> file, std::string* output) {
    EXPECT_TRUE(tessaly::platform::WriteAllLines(program / "case.asc", file));
    fs::remove_all(program / "out");
    return RunCommand("cd '" + program.path().string() + "' && ./qvxengine --asc case.asc --out out 2>&1",
                      output);
  };
  struct Case {
    const char* what;
    std::vector<std::string> file;
    const char* reason;
  };
  auto fewer = *lines, more = *lines, blank = *lines;
  fewer.pop_back();
  more.push_back("500");
  blank.insert(blank.begin() + 20, "");
  for (const Case& c : {Case{"one value short", fewer, "size"}, Case{"one value over", more, "size"},
                        Case{"an empty line", blank, "size"}}) {
    SCOPED_TRACE(c.what);
    std::string output;
    EXPECT_EQ(run(c.file, &output), 2) << output;
    EXPECT_NE(output.find("refused by the checks of a run"), std::string::npos) << output;
    EXPECT_FALSE(fs::exists(program / "out" / "FORECAST.CSV"));
  }
  auto extreme = *lines;
  for (size_t i = 13; i < extreme.size(); ++i) extreme[i] = i % 2 ? "1e308" : "-1e308";
  std::string output;
  EXPECT_EQ(run(extreme, &output), 1) << output;
  EXPECT_NE(output.find("result    error 2189"), std::string::npos) << output;
  EXPECT_FALSE(fs::exists(program / "out" / "FORECAST.CSV"));
}

}  // namespace
}  // namespace quorvane
