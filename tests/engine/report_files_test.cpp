#include <gtest/gtest.h>

#include <cmath>

#include "engine/forecast_file.h"
#include "engine/model_file.h"
#include "engine/reports.h"
#include "engine_test_data.h"
#include "platform/textfile.h"
#include "support/program_folder.h"
#include "support/text_checks.h"

namespace quorvane {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

TEST(ForecastFile, ColumnsAreExactAndReadBack) {
  TempDir dir;
  std::vector<ForecastLine> lines = {{"1961/1", 445.6367, 423.3487, 467.9247},
                                     {"1961/12", -12345678.5, -99999999.25, 1e9},
                                     {"2024", 0.0001, -0.5, 7}};
  ASSERT_TRUE(WriteForecastFile(dir / "TS50PRO.123", ForecastFileHeader("PASSENGERS", 95), lines));
  std::string bytes = ReadFile(dir / "TS50PRO.123");
  auto file_lines = tessaly::platform::ReadAllLines(dir / "TS50PRO.123");
  ASSERT_TRUE(file_lines);
  ASSERT_EQ(file_lines->size(), 4u);
  EXPECT_EQ(std::count(bytes.begin(), bytes.end(), '\r'), 4);
  const std::string& first = (*file_lines)[1];
  ASSERT_EQ(first.size(), 84u);
  EXPECT_EQ(first.substr(0, 11), "1961/1     ");
  EXPECT_EQ(first.substr(11, 23), std::string(15, ' ') + "445.6367");  // columns 12-34
  EXPECT_EQ(first.substr(34, 25), std::string(17, ' ') + "423.3487");  // columns 35-59
  EXPECT_EQ(first.substr(59, 25), std::string(17, ' ') + "467.9247");  // columns 60-84
  for (size_t i = 1; i < file_lines->size(); ++i) {
    const std::string& l = (*file_lines)[i];
    ASSERT_EQ(l.size(), 84u) << l;
    EXPECT_NE(l[33], ' ') << l;  // each number ends in the last column of its field
    EXPECT_NE(l[58], ' ') << l;
    EXPECT_NE(l[83], ' ') << l;
    EXPECT_EQ(l[11], ' ') << l;
  }
  // The title fills the forecast's 23 columns right-justified; a name that leaves it no
  // leading blank (14 characters and more) gives way to the bare word.
  for (const auto& [name, title] : {std::pair<std::string, std::string>{"PASSENGERS", "PASSENGERS FORECAST"},
                                    {"THIRTEEN_CHRS", "THIRTEEN_CHRS FORECAST"},
                                    {"FOURTEEN_CHARS", "FORECAST"}}) {
    const std::string header = ForecastFileHeader(name, 95);
    EXPECT_EQ(header.substr(0, 34), "PERIOD     " + std::string(23 - title.size(), ' ') + title) << name;
  }

  auto back = ReadForecastFile(dir / "TS50PRO.123");
  ASSERT_TRUE(back);
  ASSERT_EQ(back->size(), 3u);
  for (size_t i = 0; i < lines.size(); ++i) {
    EXPECT_EQ((*back)[i].label, lines[i].label);
    EXPECT_NEAR((*back)[i].forecast, lines[i].forecast, 5e-5);
    EXPECT_NEAR((*back)[i].lower, lines[i].lower, 5e-5);
    EXPECT_NEAR((*back)[i].upper, lines[i].upper, 5e-5);
  }
  // Written again from what was read, the file is the same bytes: it round-trips.
  ASSERT_TRUE(WriteForecastFile(dir / "again.123", (*file_lines)[0], *back));
  EXPECT_EQ(ReadFile(dir / "again.123"), bytes);

  WriteFile(dir / "bad.123", "header\r\n1961/1     not a number\r\n");
  EXPECT_FALSE(ReadForecastFile(dir / "bad.123"));
}

TEST(ModelFile, FinalModelInTheStartModelLayout) {
  ModelResult r = testdata::KnownResult(144, 12);
  r.d = 1;
  r.D = 1;
  r.coefficients.push_back({"ADVERT LAG 2", "input", 2, 1.5, 0.2, 7.5, 0.0});
  ModelFile model = ModelFileFromResult(r, "SALES", {"ADVERT"}, true);
  std::vector<std::string> lines = FormatModelFile(model);
  std::vector<std::string> expected = {
      std::string("SALES") + std::string(35, ' ') + "2",
      "     1",
      "    12.50000",
      "    0.000000         0.0",
      "     1     2     1",
      "     1    12",
      "     1     1",
      "     1    12",
      "    0.612345    -0.40000",
      "ADVERT",
      "    1.000000",
      "     0     2     1",
      "     1    12",
      "     1",
      "     2",
      "    1.500000",
  };
  EXPECT_EQ(lines, expected);
  EXPECT_EQ(lines[0].size(), 41u);  // the count ends in column 41

  auto parsed = ParseModelFile(lines);
  ASSERT_TRUE(parsed);
  EXPECT_EQ(parsed->series, 2);
  ASSERT_EQ(parsed->blocks.size(), 2u);
  EXPECT_EQ(parsed->blocks[0].name, "SALES");
  EXPECT_TRUE(parsed->blocks[0].has_constant);
  EXPECT_DOUBLE_EQ(parsed->blocks[0].constant, 12.5);
  EXPECT_EQ(parsed->blocks[0].differencing, (std::vector<int>{1, 12}));
  EXPECT_EQ(parsed->blocks[0].second[0].powers, std::vector<int>{12});
  EXPECT_EQ(parsed->blocks[1].second[0].coefficients, std::vector<double>{1.5});
  EXPECT_EQ(FormatModelFile(*parsed), lines);
}

TEST(ModelFile, MalformedFilesAreRefused) {
  std::vector<std::string> good = {std::string("Y") + std::string(39, ' ') + "1", "     0",
                                   "    1.000000         0.0", "     0     0     0"};
  EXPECT_TRUE(ParseModelFile(good));
  auto broken = [&](size_t line, const std::string& text) {
    auto copy = good;
    copy[line] = text;
    return ParseModelFile(copy).has_value();
  };
  EXPECT_FALSE(broken(0, "Y"));                          // no count in columns 38-41
  EXPECT_FALSE(broken(1, "     2"));                     // constant flag of 2
  EXPECT_FALSE(broken(2, "        abc"));                // lambda not a number
  EXPECT_FALSE(broken(3, "     1     0     0"));         // an AR polynomial with no lines
  EXPECT_FALSE(broken(3, "9e9999     0     0"));         // a count beyond any int
  EXPECT_FALSE(broken(3, "    -1     0     0"));         // a negative count
  auto extra = good;
  extra.push_back("X");                                  // a second block the count denies
  EXPECT_FALSE(ParseModelFile(extra));
  EXPECT_FALSE(ParseModelFile({}));
}

TEST(Reports, EveryDatasetFileIsWrittenAndReadable) {
  TempDir dir;
  EngineArrays a = testdata::MonthlyRequest(testdata::AirlinePassengers(), 12);
  EngineRules rules;
  rules.save_model_file = true;
  PreparedRequest req = PrepareRequest(a, rules);
  ModelResult r = testdata::KnownResult(144, 12);
  r.forecasts[1] = 2.5e11;  // above the missing-value mark, and still a forecast
  ReportInput in{&req, &r, "ENGINE.GO", {"NOTREND.QVX: local time trends are not incorporated."}};
  EXPECT_TRUE(WriteDatasetReports(dir.path(), in).empty());
  for (const char* name : {"DETAILS.HTM", "STAT.HTM", "EQUATION.TXT", "RHSIDE.TXT", "VERBAL.TXT",
                           "OUTCAST.TXT", "ADJUSTED.TXT", "TS50PRO.123", "PASS2MOD.123",
                           "FITTED.CSV", "FORECAST.CSV", "RESIDUALACF.CSV", "EQUATION.CSV",
                           "PASSENGERS.MOD"})
    EXPECT_GT(std::filesystem::file_size(dir / name), 100u) << name;

  std::string details = ReadFile(dir / "DETAILS.HTM");
  EXPECT_TRUE(tessaly::testing::HoldsAll(details, {"<h1>Model details: PASSENGERS</h1>",
      "Level Shift</td><td>1951/6</td>", "natural logarithm", "NOTREND.QVX", "1961/12", "A test warning."}));
  std::string stat = ReadFile(dir / "STAT.HTM");
  EXPECT_TRUE(tessaly::testing::HoldsAll(stat, {"Ljung-Box Q (24 lags)", "-0.2100"}));
  // Only lag 2 lies beyond 2/sqrt(144).
  size_t marked = stat.find("outside the limits</td>");
  ASSERT_NE(marked, std::string::npos);
  EXPECT_EQ(stat.find("outside the limits</td>", marked + 1), std::string::npos);
  EXPECT_LT(stat.find("-0.2100"), marked);

  std::string verbal = ReadFile(dir / "VERBAL.TXT");
  EXPECT_TRUE(tessaly::testing::HoldsAll(verbal, {"a level shift of +25.00 from 1951/6",
      "a pulse of -40.00 at 1960/12", "144 monthly observations from 1949/1 to 1960/12"}));

  auto rhs = tessaly::platform::ReadAllLines(dir / "RHSIDE.TXT");
  ASSERT_TRUE(rhs);
  EXPECT_EQ((*rhs)[6], "AR(1)                               0.612346      0.050000      12.25    0.0000");

  auto fitted = tessaly::platform::ReadAllLines(dir / "FITTED.CSV");
  ASSERT_EQ(fitted->size(), 145u);
  EXPECT_EQ((*fitted)[0], "Period,Actual,Fitted,Residual,Cleansed");
  EXPECT_EQ((*fitted)[1], "1949/1,112.000000,,,100.000000");  // no fit before the first point
  EXPECT_EQ((*fitted)[2], "1949/2,118.000000,101.000000,1.500000,101.000000");
  auto forecast = tessaly::platform::ReadAllLines(dir / "FORECAST.CSV");
  EXPECT_EQ((*forecast)[1], "1961/1,500.000000,450.000000,550.000000");
  EXPECT_EQ((*forecast)[2], "1961/2,250000000000.000000,451.000000,551.000000");
  auto acf = tessaly::platform::ReadAllLines(dir / "RESIDUALACF.CSV");
  EXPECT_EQ((*acf)[2], "2,-0.210000,-0.166667,0.166667");
  auto eq = tessaly::platform::ReadAllLines(dir / "EQUATION.CSV");
  EXPECT_EQ((*eq)[4], "LEVEL SHIFT 1951/6,intervention,0,25.00000000,5.00000000,5.0000,0.000020");
}

TEST(Reports, DisplayLinesStoreAndRobustAutocorrelationsOfTheRules) {
  TempDir dir;
  EngineArrays a = testdata::MonthlyRequest(testdata::AirlinePassengers(), 12);
  EngineRules rules;
  rules.store_model = true;  // "STORE" alone, without SAVEMOD.QVX, keeps the model
  // Outlier tests, model parameters and equation, and the forecast table off; forecasting
  // information, the constancy test and the transformed forecasts on.
  rules.display_options = {0, 1, 1, 0, 0, 1, 0};
  PreparedRequest req = PrepareRequest(a, rules);
  ModelResult r = testdata::KnownResult(144, 12);
  ReportInput in{&req, &r, "ENGINE.GO", {}, false, {}};
  EXPECT_TRUE(WriteDatasetReports(dir.path(), in).empty());
  EXPECT_TRUE(std::filesystem::exists(dir / "PASSENGERS.MOD"));
  const std::string details = ReadFile(dir / "DETAILS.HTM");
  for (const char* line : {"DISPLAY OUTLIER TEST RESULTS", "DISPLAY FORECAST MODEL PARAMETERS",
                           "DISPLAY FORECAST MODEL EQUATION", "DISPLAY TABLE OF FORECAST VALUES"})
    EXPECT_NE(details.find(std::string("Not displayed: the rules' \"") + line), std::string::npos) << line;
  EXPECT_TRUE(tessaly::testing::HoldsNone(details, {"Level Shift</td><td>1951/6</td>", "LS(1951/6)"}));
  // The forecasts on the log scale: ln 500 = 6.214608.
  EXPECT_TRUE(tessaly::testing::HoldsAll(details, {"<td class=\"num\">6.214608</td>",
      "forecasts from the end of the estimation sample"}));
  EXPECT_EQ(details.find("<h2>Exceptions</h2>"), std::string::npos);
  // The exception report names the pulse at the last observation as an early signal.
  req.problem.rules.exception_report = true;
  const std::string with_exceptions = DetailsHtml(in);
  EXPECT_TRUE(tessaly::testing::HoldsAll(with_exceptions, {"<h2>Exceptions</h2>", "Early signal: Pulse at 1960/12"}));

  // Robust autocorrelations: two wild values in a smooth AR(1) series pull the ordinary lag-1
  // autocorrelation far below its value; clipped at 2.5 robust standard deviations they do not.
  ModelingProblem& p = req.problem;
  p.y.assign(200, 0.0);
  double x = 0.0;
  for (int t = 0; t < 200; ++t) p.y[t] = x = 0.8 * x + std::sin(1.7 * t * t);
  p.y[60] += 60.0;
  p.y[140] -= 60.0;
  ModelResult plain;
  plain.lambda = 1.0;
  ReportInput id{&req, &plain, "ENGINE.GO", {}, false, {}};
  const double ordinary = Identify(id).acf[0];
  p.rules.robust_acf = true;
  const IdentificationTable robust = Identify(id);
  EXPECT_LT(ordinary, 0.3);
  EXPECT_GT(robust.acf[0], 0.6);
  EXPECT_NE(robust.series_text.find("robust"), std::string::npos);
}

TEST(Reports, RunWideFilesGainOneHeaderAndTheRowsOfEachDataset) {
  TempDir dir;
  EngineArrays a = testdata::MonthlyRequest(testdata::AirlinePassengers(), 12);
  PreparedRequest req = PrepareRequest(a, EngineRules{});
  ModelResult r = testdata::KnownResult(144, 12);
  ReportInput in{&req, &r, "built-in rules", {}};
  AppendRunWideReports(dir.path(), in);
  AppendRunWideReports(dir.path(), in);
  auto level = tessaly::platform::ReadAllLines(dir / "LEVELRPT.CSV");
  ASSERT_TRUE(level);
  EXPECT_EQ(*level, (std::vector<std::string>{"Series,Type,Period,Observation,Impact,t-value",
                                               "PASSENGERS,Level Shift,1951/6,30,25.000000,5.000",
                                               "PASSENGERS,Level Shift,1951/6,30,25.000000,5.000"}));
  auto early = tessaly::platform::ReadAllLines(dir / "EARLYSIG.CSV");
  ASSERT_EQ(early->size(), 3u);
  EXPECT_EQ((*early)[1], "PASSENGERS,Pulse,1960/12,144,-40.000000,-4.200");
  EXPECT_TRUE(std::filesystem::exists(dir / "PULSERPT.CSV"));
  // No trend was found: no file is made for trends.
  EXPECT_FALSE(std::filesystem::exists(dir / "TRENDRPT.CSV"));
  EXPECT_FALSE(std::filesystem::exists(dir / "PARCHRPT.CSV"));
  EXPECT_FALSE(std::filesystem::exists(dir / "VARCHRPT.CSV"));
}

TEST(Reports, ChangesOfParametersAndVarianceGoToTheirRunWideFiles) {
  TempDir dir;
  EngineArrays a = testdata::MonthlyRequest(testdata::AirlinePassengers(), 12);
  PreparedRequest req = PrepareRequest(a, EngineRules{});
  ModelResult r = testdata::KnownResult(144, 12);
  DiagnosticChange parameters;
  parameters.observation = 61;
  parameters.statistic = 9.5;
  parameters.critical = 4.25;
  r.parameter_changes.push_back(parameters);
  DiagnosticChange variance;
  variance.observation = 100;
  variance.before = 4.0;
  variance.after = 16.0;
  variance.statistic = 21.5;
  r.variance_changes.push_back(variance);
  ReportInput in{&req, &r, "built-in rules", {}};
  AppendRunWideReports(dir.path(), in);
  EXPECT_EQ(tessaly::platform::ReadAllLines(dir / "PARCHRPT.CSV").value(),
            (std::vector<std::string>{"Series,Period,Observation,F,Critical F", "PASSENGERS,1954/1,61,9.5000,4.2500"}));
  EXPECT_EQ(tessaly::platform::ReadAllLines(dir / "VARCHRPT.CSV").value(),
            (std::vector<std::string>{"Series,Period,Observation,Variance before,Variance after,Statistic",
                                      "PASSENGERS,1957/4,100,4.000000,16.000000,21.5000"}));
}

}  // namespace
}  // namespace quorvane
