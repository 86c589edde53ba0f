// GenerateSeries as a whole: the rewritten header, the dependent series last, what a new
// request replaces or refuses, the 149/150-series limits, and bad input that leaves every
// dataset as it was.
#include <gtest/gtest.h>

#include "dataset/messages.h"
#include "genseries/adjust.h"
#include "genseries/gen_fixture.h"
#include "genseries/texts.h"
#include "platform/dialogs.h"
#include "platform/textfile.h"

namespace tessaly::genseries::test {
namespace {

class Merging : public GenTest {
 protected:
  void SetUp() override { platform::SetDialogHost(host); }
  void TearDown() override { platform::SetDialogHost(std::make_shared<platform::StderrDialogHost>()); }
  std::shared_ptr<platform::RecordingDialogHost> host = std::make_shared<platform::RecordingDialogHost>();
  static std::string Bytes(const fs::path& p) { return *platform::ReadWholeFile(p); }
};

TEST_F(Merging, TheHeaderIsRewrittenAndTheDependentSeriesKeptLast) {
  AscLayout layout{{"PRICE", "PROMO", "UNITS"}, {1, 0, 0}, 12, 1998, 4, 30, 6, 0, 6};
  fs::path asc = Asc("UNITS.ASC", layout);
  GenerationVariables v = VarsFor(layout);
  v.FirstObjective = "2", v.SecondObjective = "1", v.ThirdObjective = "3";
  v.LevelStartYear = "1999", v.LevelStartPeriod = "6", v.LevelEndYear = "2000", v.LevelEndPeriod = "11";
  v.UserDefName = "QTR", v.UserDefMethod = "Month", v.SelectedMonth = "12", v.UserDefType = "2";
  GenerationResult r = Generate(v, asc);
  EXPECT_EQ(r.outcome, GenerationOutcome::Adjusted);
  EXPECT_TRUE(r.log_lines.empty());
  AscRead out = ReadAsc(asc);
  EXPECT_EQ(out.objectives, (std::vector<int>{2, 1, 3}));
  EXPECT_EQ((std::vector<int>{out.series, out.seasonality, out.year, out.period, out.observations,
                              out.future, out.retained, out.forecasts}),
            (std::vector<int>{5, 12, 1998, 4, 30, 6, 0, 6}));
  EXPECT_EQ(out.names, (std::vector<std::string>{"PRICE", "PROMO", "IIL00015UNITS", "G_QTR", "UNITS"}));
  EXPECT_EQ(out.types, (std::vector<int>{1, 0, 1, 2, 0}));
  EXPECT_EQ(out.obs["UNITS"][29], 3029.5);
  EXPECT_EQ(out.obs["PROMO"][0], 2000.5);
  EXPECT_EQ(out.fut["PRICE"], (std::vector<double>{-1000, -1001, -1002, -1003, -1004, -1005}));
  EXPECT_EQ(out.obs["IIL00015UNITS"][13], 0.0);
  EXPECT_EQ(out.obs["IIL00015UNITS"][14], 1.0);
  EXPECT_EQ(out.obs["IIL00015UNITS"][29], 1.0);
  EXPECT_EQ(out.fut["IIL00015UNITS"], (std::vector<double>{1, 1, 0, 0, 0, 0}));
  EXPECT_EQ(out.obs["G_QTR"][8], 1.0);  // December 1998
  EXPECT_EQ(out.fut["G_QTR"][2], 1.0);  // December 2000
  EXPECT_FALSE(fs::exists(dir / "UNITS"));
}

TEST_F(Merging, RequestsReplaceOrRefuseWhatTheFileHolds) {
  struct Case {
    const char* what;
    std::vector<std::string> names;  // the dependent series last
    const char* method;
    const char* user_name;
    std::vector<std::pair<int, std::string>> holidays;
    std::vector<std::string> expected_names;
    std::vector<std::string> expected_log;
  };
  const Case cases[] = {
      {"a monthly set replaces a quarterly set", {"G_QUARTERLYEFFECT1", "G_QuarterlyEffect2", "X", "Y"},
       "MonthlyEffect", "MONTHLYEFFECT", {}, {"X", "G_MONTHLYEFFECT1", "G_MONTHLYEFFECT2", "G_MONTHLYEFFECT3",
       "G_MONTHLYEFFECT4", "G_MONTHLYEFFECT5", "G_MONTHLYEFFECT6", "G_MONTHLYEFFECT7", "G_MONTHLYEFFECT8",
       "G_MONTHLYEFFECT9", "G_MONTHLYEFFECT10", "G_MONTHLYEFFECT11", "Y"}, {}},
      {"a quarterly set replaces a monthly set", {"G_MONTHLYEFFECT1", "X", "Y"}, "QuarterlyEffect",
       "QUARTERLYEFFECT", {}, {"X", "G_QUARTERLYEFFECT1", "G_QUARTERLYEFFECT2", "G_QUARTERLYEFFECT3", "Y"}, {}},
      {"a monthly set beside a monthly set is refused, and that ends the holidays too",
       {"G_MONTHLYEFFECT1", "Y"}, "MonthlyEffect", "MONTHLYEFFECT", {{1, "M_CHRISTMAS"}},
       {"G_MONTHLYEFFECT1", "Y"}, {texts::kMonthlySetExists}},
      {"business days beside business days", {"G_BUSDAYS", "Y"}, "Business Days", "BUSDAYS", {},
       {"G_BUSDAYS", "Y"}, {texts::kBusDaysExists}},
      {"a user series whose name exists, then the holidays", {"G_PROMO", "Y"}, "Month", "PROMO",
       {{1, "M_CHRISTMAS"}}, {"G_PROMO", "M_CHRISTMAS", "Y"}, {"G_PROMO already exists."}},
      {"a name that is a holiday's", {"M_JULY4TH", "Y"}, "Month", "JULY4TH", {},
       {"M_JULY4TH", "Y"}, {"M_JULY4TH already exists."}},
      {"new holidays replace the old ones as a whole", {"M_CHRISTMAS", "x", "m_newyears", "Y"}, "", "",
       {{1, "M_JULY4TH"}, {2, " M_HALLOWEEN "}}, {"x", "M_HALLOWEEN", "M_JULY4TH", "Y"}, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    AscLayout layout{c.names, std::vector<int>(c.names.size(), 0), 12, 2000, 1, 36, 0, 0, 12};
    fs::path asc = Asc("Y.ASC", layout);
    GenerationVariables v = VarsFor(layout);
    v.UserDefMethod = c.method, v.UserDefName = c.user_name, v.UserDefType = "1";
    for (const auto& [k, h] : c.holidays) v.SelectedHolidays[k] = h;
    v.NumberofHolidaysSelected = std::to_string(c.holidays.size());
    GenerationResult r = Generate(v, asc);
    EXPECT_EQ(r.log_lines, c.expected_log);
    EXPECT_EQ(r.outcome, c.expected_log.empty() ? GenerationOutcome::Adjusted : GenerationOutcome::PartlyAdjusted);
    EXPECT_EQ(ReadAsc(asc).names, c.expected_names);
  }
}

TEST_F(Merging, TheLimitsOf149And150Series) {
  std::vector<std::string> names;
  for (int i = 1; i <= 150; ++i) names.push_back("S" + std::to_string(i));
  AscLayout full{names, std::vector<int>(150, 0), 4, 1990, 1, 12, 0, 0, 4};
  fs::path asc = Asc("FULL.ASC", full);
  const std::string before = Bytes(asc);
  GenerationVariables v = VarsFor(full);
  v.LevelStartYear = "1991", v.LevelStartPeriod = "1", v.LevelEndYear = "1992", v.LevelEndPeriod = "4";
  v.PulseStartYear = "1991", v.PulseStartPeriod = "2";
  GenerationResult r = Generate(v, asc);
  EXPECT_EQ(r.outcome, GenerationOutcome::Refused);
  EXPECT_EQ(r.log_lines, std::vector<std::string>{texts::kAlreadyMaximum});
  EXPECT_EQ(Bytes(asc), before);

  names.erase(names.begin());
  AscLayout almost{names, std::vector<int>(149, 0), 4, 1990, 1, 12, 0, 0, 4};
  asc = Asc("ALMOST.ASC", almost);
  r = Generate(v, asc);
  EXPECT_EQ(r.outcome, GenerationOutcome::PartlyAdjusted);
  EXPECT_EQ(r.log_lines, std::vector<std::string>{texts::LimitReached("a Pulse intervention series")});
  AscRead out = ReadAsc(asc);
  EXPECT_EQ(out.series, 150);
  EXPECT_EQ(out.names[148], "IIL00005S150");
  EXPECT_EQ(out.names[149], "S150");

  // One generator over several files measures the next against the series it last wrote.
  clsGenerateSeries gen(dir / "program");
  asc = Asc("ALMOST.ASC", almost);
  EXPECT_FALSE(gen.GenerateSeries(asc, dir / kVariablesFileName));
  EXPECT_FALSE(gen.GenerateSeries(Asc("SMALL.ASC", AscLayout{{"Y"}, {0}, 4, 1990, 1, 12, 0, 0, 4}),
                                  dir / kVariablesFileName));
  EXPECT_EQ(gen.LogLines(), std::vector<std::string>{texts::kNoOtherSeries});
  EXPECT_FALSE(gen.Written());

  // A set that would pass 150 is refused whole; the holidays after it still come.
  names.resize(140);
  AscLayout many{names, std::vector<int>(140, 0), 12, 1990, 1, 24, 0, 0, 12};
  GenerationVariables set = VarsFor(many);
  set.UserDefName = "MONTHLYEFFECT", set.UserDefMethod = "MonthlyEffect", set.UserDefType = "1";
  set.SelectedHolidays = {{1, "M_CHRISTMAS"}}, set.NumberofHolidaysSelected = "1";
  r = Generate(set, Asc("MANY.ASC", many));
  EXPECT_EQ(r.log_lines, std::vector<std::string>{texts::kMonthlyOverflowUndated});
  EXPECT_EQ(ReadAsc(dir / "MANY.ASC").names[139], "M_CHRISTMAS");
}

TEST_F(Merging, RefusalsBeforeReadingLeaveTheFileByteForByte) {
  AscLayout retained{{"X", "Y"}, {1, 0}, 12, 2000, 1, 24, 3, 2, 3};
  fs::path asc = Asc("RET.ASC", retained);
  const std::string before = Bytes(asc);
  GenerationVariables v = VarsFor(retained);
  v.PulseStartYear = "2000", v.PulseStartPeriod = "5";
  EXPECT_EQ(Generate(v, asc).log_lines, std::vector<std::string>{texts::kRetainedData});
  EXPECT_EQ(Bytes(asc), before);

  AscLayout quarterly{{"Y"}, {0}, 4, 2000, 1, 24, 0, 0, 4};
  asc = Asc("Q.ASC", quarterly);
  const std::string q = Bytes(asc);
  EXPECT_EQ(Generate(v, asc).log_lines, std::vector<std::string>{texts::kSeasonalityDisagrees});
  EXPECT_EQ(Bytes(asc), q);

  GenerationVariables nothing = VarsFor(quarterly);
  nothing.SelectedHolidays = {{1, "M_CHRISTMAS"}};  // listed, but none counted
  EXPECT_EQ(Generate(nothing, asc).log_lines, std::vector<std::string>{texts::kNothingSelected});
  EXPECT_EQ(Bytes(asc), q);

  GenerationVariables elsewhere = VarsFor(quarterly);
  elsewhere.MajorPeriod = "2001";
  elsewhere.UserDefName = "Q1", elsewhere.UserDefMethod = "Quarter", elsewhere.SelectedQuarter = "1";
  GenerationResult r = Generate(elsewhere, asc);
  EXPECT_EQ(r.log_lines, std::vector<std::string>{texts::kUserRangeDisagrees});
  EXPECT_EQ(ReadAsc(asc).names, std::vector<std::string>{"Y"});
}

TEST_F(Merging, TheDailyOutputSeriesIsRenamedUnlessItsNameBeginsWithTwoUnderscores) {
  const std::pair<const char*, const char*> cases[] = {
      {"SALESXYZ", "SALESX__011501"}, {"ABC", "ABC__011501"}, {"__ABC", "__ABC"}};
  for (const auto& [name, renamed] : cases) {
    AscLayout daily{{name}, {0}, 7, 2001, 1, 60, 0, 0, 10};
    fs::path asc = Asc("D.ASC", daily);
    GenerationVariables v = VarsFor(daily);
    v.SelectedHolidays = {{1, "M_MARTINLKING"}};
    v.NumberofHolidaysSelected = "1";
    v.Dateof1stHolidayObservation = "01/15/2001";
    GenerationResult r = Generate(v, asc);
    AscRead out = ReadAsc(asc);
    EXPECT_EQ(out.names.back(), renamed);
    EXPECT_EQ(out.obs["M_MARTINLKING"][0], 1.0);  // January 15, 2001
    if (std::string(name) == renamed) {
      EXPECT_EQ(r.outcome, GenerationOutcome::Adjusted);
    } else {
      EXPECT_EQ(r.outcome, GenerationOutcome::PartlyAdjusted);
      EXPECT_EQ(r.log_lines, std::vector<std::string>{texts::OutputRenamed(renamed)});
    }
  }
}

TEST_F(Merging, BadInputGetsTheSystemsMessageAndDamagesNothing) {
  AscLayout layout{{"Y"}, {0}, 7, 2001, 1, 40, 0, 0, 5};
  fs::path asc = Asc("Y.ASC", layout);
  const std::string before = Bytes(asc);
  fs::create_directories(dir / "program");

  // A truncated variables file: the parser's reason in a box, and nothing selected.
  GenerationVariables v = VarsFor(layout);
  v.LevelStartYear = "2001", v.LevelStartPeriod = "3", v.LevelEndYear = "2001", v.LevelEndPeriod = "4";
  fs::path his = dir / "rwf.his";
  ASSERT_TRUE(BuildXML(his, v, "", "", dir / "program"));
  std::string text = Bytes(his);
  EXPECT_TRUE(platform::WriteWholeFile(his, text.substr(0, text.size() / 2)));
  GenerationResult r = GenerateSeries(his, asc, std::nullopt, {}, dir / "program");
  ASSERT_FALSE(host->shown.empty());
  EXPECT_EQ(host->shown.back().text.rfind("You have error ", 0), 0u) << host->shown.back().text;
  EXPECT_EQ(r.log_lines, std::vector<std::string>{texts::kNothingSelected});
  EXPECT_EQ(Bytes(asc), before);

  // Holidays on daily data without the date of the first observation: the generator's
  // error exit, and the file is not written.
  GenerationVariables nodate = VarsFor(layout);
  nodate.SelectedHolidays = {{1, "M_CHRISTMAS"}};
  nodate.NumberofHolidaysSelected = "1";
  r = Generate(nodate, asc);
  EXPECT_EQ(r.outcome, GenerationOutcome::Refused);
  EXPECT_EQ(r.log_lines, std::vector<std::string>{"Error #13: Type mismatch, clcGenerateSeries, AddSelectedHolidays"});
  EXPECT_EQ(host->shown.back().title, "Tessaly");
  EXPECT_EQ(Bytes(asc), before);
  EXPECT_TRUE(fs::exists(dir / "program" / "tslyberr.txt"));

  // Weekly effects from week 1: the one-digit week does not convert; nothing is written.
  AscLayout weekly{{"W"}, {0}, 52, 2001, 1, 60, 0, 0, 5};
  fs::path wasc = Asc("W.ASC", weekly);
  const std::string wbefore = Bytes(wasc);
  GenerationVariables we = VarsFor(weekly);
  we.UserDefName = "WEEKLYEFFECT", we.UserDefMethod = "WeeklyEffect", we.UserDefType = "1";
  EXPECT_EQ(Generate(we, wasc).outcome, GenerationOutcome::Refused);
  EXPECT_EQ(Bytes(wasc), wbefore);

  // Files that are not datasets.
  const std::pair<const char*, std::string> files[] = {
      {"NOTES.ASC", "Quarterly sales notes\nsee attached\n"},
      {"CUT.ASC", before.substr(0, before.size() / 2)},
      {"EMPTY.ASC", ""},
      {"TYPO.ASC", before.substr(0, before.find("\r\n1000.5\r\n") + 2) + "1O00.5" +
                       before.substr(before.find("\r\n1000.5\r\n") + 8)}};
  const std::string expected[] = {dataset::msg::DataPropNonNumeric(1), dataset::msg::SizeMismatch("CUT.ASC"),
                                  dataset::msg::SizeCheckEmpty("EMPTY.ASC"), texts::NotANumber("TYPO.ASC", 14)};
  for (size_t i = 0; i < 4; ++i) {
    fs::path bad = dir / files[i].first;
    EXPECT_TRUE(platform::WriteWholeFile(bad, files[i].second));
    r = Generate(v, bad);
    EXPECT_EQ(r.outcome, GenerationOutcome::Refused);
    EXPECT_EQ(r.log_lines, std::vector<std::string>{expected[i]});
    EXPECT_EQ(Bytes(bad), files[i].second);
  }
}

TEST_F(Merging, AdjustingAProjectsFilesWithSafetyCopies) {
  AscLayout good{{"X", "Y"}, {0, 0}, 12, 2000, 1, 24, 0, 0, 6};
  AscLayout retained{{"Y"}, {0}, 12, 2000, 1, 24, 0, 1, 6};
  Asc("A.ASC", good);
  Asc("B.ASC", retained);
  Asc("C.asc", good);
  EXPECT_TRUE(platform::WriteWholeFile(dir / "D.ASC", "not a dataset\n"));
  const std::string a_before = Bytes(dir / "A.ASC");
  EXPECT_EQ(AdjustableFiles(dir.path(), {"A.ASC", "B.ASC", "c.ASC", "D.ASC", "MISSING.ASC"}),
            (std::vector<std::string>{"A.ASC", "B.ASC", "c.ASC"}));

  GenerationVariables v = VarsFor(good);
  v.PulseStartYear = "2001", v.PulseStartPeriod = "2";
  fs::path his = dir / "rwf.his";
  fs::create_directories(dir / "program");
  ASSERT_TRUE(BuildXML(his, v, "", "", dir / "program"));
  AdjustRun run = AdjustChosenFiles(dir.path(), {"A.ASC", "B.ASC", "c.ASC"}, his, {}, dir / "program");
  EXPECT_EQ(run.adjusted, (std::vector<std::string>{"A.ASC", "c.ASC"}));
  EXPECT_TRUE(run.reported);
  EXPECT_EQ(run.Message(), std::string("FYI! ") + texts::kReportHeading + "\n\nB.ASC\n" + texts::kRetainedData);
  EXPECT_EQ(ReadAsc(dir / "A.ASC").names, (std::vector<std::string>{"X", "IIP00014Y", "Y"}));
  EXPECT_EQ(Bytes(dir / "ASCBACKUP" / "A.ASC"), a_before);
  EXPECT_TRUE(fs::exists(dir / "ASCBACKUP" / "C.asc"));

  // Keep A; C gets its original back; neither leaves a copy behind.
  KeepChosenAdjustedFiles(dir.path(), run.adjusted, {"a.asc"});
  EXPECT_EQ(ReadAsc(dir / "A.ASC").series, 3);
  EXPECT_EQ(Bytes(dir / "C.asc"), a_before);
  EXPECT_FALSE(fs::exists(dir / "ASCBACKUP" / "A.ASC"));
  EXPECT_FALSE(fs::exists(dir / "ASCBACKUP" / "C.asc"));

  // One dataset of two series split into univariate files.
  std::vector<fs::path> parts = Create_individual_ASC_files(dir / "A.ASC", dir / "program");
  ASSERT_EQ(parts.size(), 3u);
  EXPECT_EQ(parts[1].filename(), "IIP00014Y.ASC");
  AscRead y = ReadAsc(dir / "program" / "Y.ASC");
  EXPECT_EQ(y.series, 1);
  EXPECT_EQ(y.objectives, (std::vector<int>{0, 0, 0}));
  EXPECT_EQ(y.obs["Y"][23], 2023.5);
}

}  // namespace
}  // namespace tessaly::genseries::test
