// Aggregations through the real engine: the files each direction leaves, a causal child, a
// replacement, a cancel, and refused input that leaves the project as it was.
#include <chrono>
#include <map>
#include <regex>
#include <thread>

#include "aggregate/reconcile.h"
#include "aggregation_fixture.h"
#include "genseries/variables.h"
#include "platform/progress_wait.h"

namespace tessaly::aggregate::testing {
namespace {

const std::vector<std::string> kRegions{"NORTH.ASC", "SOUTH.ASC", "WEST.ASC", "EAST.ASC"};

std::string Fixed10(double v) {
  char text[64];
  std::snprintf(text, sizeof text, "%.10f", v);
  return text;
}

std::map<std::string, std::string> Snapshot(const fs::path& folder) {
  std::map<std::string, std::string> files;
  for (const auto& e : fs::recursive_directory_iterator(folder))
    if (e.is_regular_file()) files[fs::relative(e.path(), folder).string()] = ReadFile(e.path());
  return files;
}

// An engine-style forecast line: label in 1-11, forecast to column 34, limits to 59 and 84.
std::string ProLine(const std::string& label, double f, double lo, double hi) {
  char text[128];
  std::snprintf(text, sizeof text, "%-11s%23.4f%25.4f%25.4f", label.c_str(), f, lo, hi);
  return text;
}

TEST_F(AggregationTest, BottomUpMakesTheParentTheChildrensSumAndLeavesTheChildren) {
  MakeProject(kRegions);
  WriteChildren(kRegions);
  const auto before = Snapshot(work.path());
  ASSERT_EQ(Run({kRegions, "12"}), 0) << host.Joined();

  // The parent's history is the plain sum of the children's.
  auto parent = Lines(work / "GROUPT.ASC");
  ASSERT_EQ(parent.size(), 13u + 144u);
  EXPECT_EQ(std::vector<std::string>(parent.begin(), parent.begin() + 13),
            (std::vector<std::string>{"0", "0", "0", "1", "12", "1949", "1", "144", "0", "0", "12", "GROUPT", "0"}));
  for (int obs : {0, 77, 143}) {
    double sum = 0;
    for (const auto& c : kRegions) sum += std::stod(Lines(work / "ASCBACKUP" / c)[13 + obs]);
    EXPECT_NEAR(std::stod(parent[13 + obs]), sum, 1e-9) << obs;
  }
  // The children's forecast files are the engine's (four decimals); the parent's value
  // columns are their sums in ten decimals, under the parent's own labels.
  const fs::path out = work / "OUTPUT";
  auto pro = Lines(out / "GROUPT.PRO");
  ASSERT_EQ(pro.size(), 13u);
  const std::regex engine_line(R"(\S+\s+-?\d+\.\d{4}\s+-?\d+\.\d{4}\s+-?\d+\.\d{4})");
  for (int p = 1; p <= 12; ++p) {
    std::array<double, 3> sum{};
    for (const auto& c : kRegions) {
      const std::string line = Lines(out / (c.substr(0, c.size() - 4) + ".PRO"))[p];
      ASSERT_TRUE(std::regex_match(line, engine_line)) << line;
      for (int k = 0; k < 3; ++k) sum[k] += ReadProLine(line).value[k];
    }
    EXPECT_EQ(pro[p], pro[p].substr(0, 11) + std::string(9, ' ') + Fixed10(sum[0]) + std::string(9, ' ') +
                          Fixed10(sum[1]) + std::string(9, ' ') + Fixed10(sum[2]));
  }
  // The detail table: a header with the product and one line per child and period.
  auto table = Lines(out / "CONregions.PRO");
  ASSERT_EQ(table.size(), 1u + 12u * 4u);
  EXPECT_NE(table[0].find("     RECONCILED CHILDREN      TABLE OF 48 Forecast Values"), std::string::npos);
  EXPECT_EQ(table[13].substr(35), "     SOUTH");
  EXPECT_FALSE(fs::exists(out / "RECregions.CSV"));
  EXPECT_FALSE(fs::exists(out / "GROUPT.AJD"));
  EXPECT_FALSE(fs::exists(program / "AGGPARAMS.RWF"));
  // The children are as they were, and their safety copies are kept.
  for (const auto& c : kRegions) {
    EXPECT_EQ(ReadFile(work / c), before.at(c));
    EXPECT_EQ(ReadFile(work / "ASCBACKUP" / c), before.at(c));
  }
  EXPECT_NE(host.Starting("The RECONCILED FORECASTS FOR CHILDREN are concatenated in " + (out / "CONregions.PRO").string()),
            nullptr);
}

TEST_F(AggregationTest, TopDownSharesTheSuppliedParentByTheFirstPeriodShares) {
  const std::vector<std::string> two{"NORTH.ASC", "SOUTH.ASC"};
  MakeProject(two);
  WriteChildren(two);
  std::string groupt = "PERIOD             GROUPT FORECAST                LOWER 95%                UPPER 95%\r\n";
  for (int p = 1; p <= 12; ++p) groupt += ProLine("1961/" + std::to_string(p), 200 + 10 * p, 150 + p, p == 3 ? -5 : 260) + "\r\n";
  WriteFile(work / "GROUPT.PRO", groupt);

  ASSERT_EQ(Run({two, "12", true}), 0) << host.Joined();
  // The last forecast line is not numeric, so the count is twelve; the user's file goes to OUTPUT.
  EXPECT_EQ(host.Starting("The number of forecasts in " + (work / "GROUPT.PRO").string())->text,
            "The number of forecasts in " + (work / "GROUPT.PRO").string() + " will be used for processing.\r\r");
  EXPECT_NE(host.Starting("Since you have provided forecasts for the Parent"), nullptr);
  const fs::path out = work / "OUTPUT";
  EXPECT_FALSE(fs::exists(work / "GROUPT.PRO"));
  EXPECT_EQ(ReadFile(out / "GROUPT.PRO"), groupt);

  const auto north = Lines(out / "NORTH.PRO"), south = Lines(out / "SOUTH.PRO");
  ASSERT_EQ(north.size(), 13u);
  ASSERT_EQ(south.size(), 13u);
  const std::regex reconciled(R"(\S+ *\s{9}\d+\.\d{10}\s{9}\d+\.\d{10}\s{9}\d+\.\d{10})");
  const double share0 = (ReadProLine(north[1]).value[0] - 0.000005) / 210;
  for (int p = 1; p <= 12; ++p) {
    ASSERT_TRUE(std::regex_match(north[p], reconciled)) << north[p];
    EXPECT_EQ(north[p].substr(11, 9), std::string(9, ' '));
    const auto n = ReadProLine(north[p]).value, s = ReadProLine(south[p]).value;
    const std::array<double, 3> parent{200.0 + 10 * p, 150.0 + p, p == 3 ? -5.0 : 260.0};
    for (int k = 0; k < 3; ++k) {
      if (parent[k] <= 0) {
        EXPECT_EQ(n[k], 0.000005);  // a parent at or below zero gives zero plus the term
        continue;
      }
      EXPECT_NEAR(n[k] + s[k] - 0.00001, parent[k], 1e-9) << p;
    }
    // The first period's share holds for every period.
    EXPECT_NEAR((n[0] - 0.000005) / parent[0], share0, 1e-9) << p;
  }
  EXPECT_EQ(north[3].substr(north[3].size() - 21), "         0.0000050000");
  EXPECT_EQ(Lines(out / "CONregions.PRO").size(), 1u + 12u * 2u);
}

TEST_F(AggregationTest, MinTMakesParentAndChildrenAddUpFromTheirOwnErrors) {
  MakeProject(kRegions);
  WriteChildren(kRegions);
  AggregationAnswers answers{kRegions, "6"};
  answers.mint = true;
  ASSERT_EQ(Run(answers), 0) << host.Joined();
  EXPECT_EQ(host.Starting("The in-sample errors"), nullptr);
  const fs::path out = work / "OUTPUT";
  const auto parent = Lines(out / "GROUPT.PRO");
  ASSERT_EQ(parent.size(), 7u);
  // The forecasts add up; the limits move with their own series' forecast (limits don't add).
  for (int p = 1; p <= 6; ++p) {
    double sum = 0;
    for (const auto& c : kRegions) sum += ReadProLine(Lines(out / (c.substr(0, c.size() - 4) + ".PRO"))[p]).value[0];
    EXPECT_NEAR(ReadProLine(parent[p]).value[0], sum, 1e-8) << p;
  }
  EXPECT_EQ(Lines(out / "CONregions.PRO").size(), 1u + 6u * 4u);
}

// The main window's status line as the run writes it.
class StatusLine : public batch::RunView {
 public:
  void SetStatus(const std::string& text) override { shown.push_back(text); }
  std::vector<std::string> shown;
};

TEST_F(AggregationTest, MixedFrequencyChildrenAreSortedByNumberAndGetThePerPeriodTable) {
  const std::vector<std::string> periods{"3.asc", "1.asc", "2.asc"};
  MakeProject(periods);
  WriteChildren(periods);
  auto status = std::make_shared<StatusLine>();
  AggregationSeams seams;
  seams.view = status;
  AggregationAnswers answers{periods, "4"};
  answers.mixed_frequency = true;
  ASSERT_EQ(Run(answers, seams), 0) << host.Joined();
  const auto& shown = status->shown;
  EXPECT_NE(std::find(shown.begin(), shown.end(),
                      "AGGREGATION - MIXED FREQUENCY - Processing 1.asc - Reconcile Bottom to Top"), shown.end());
  EXPECT_EQ(shown.back(), "AGGREGATION - Finished processing.");
  const auto table = Lines(work / "OUTPUT" / "RECregions.CSV");
  ASSERT_EQ(table.size(), 1u + 4u * 3u);
  // Period 1, child 1 is 1.asc's first forecast, whatever the order of selection.
  EXPECT_EQ(table[1].substr(0, 19), "    1    1         ");
  EXPECT_NEAR(std::stod(table[1].substr(19)), ReadProLine(Lines(work / "OUTPUT" / "1.PRO")[1]).value[0], 1e-9);
  EXPECT_EQ(Lines(work / "OUTPUT" / "CONregions.PRO")[1].substr(35), "     1");
}

TEST_F(AggregationTest, CausalChildrenCarryTheParentWithoutSeasonalDummies) {
  const std::vector<std::string> two{"NORTH.ASC", "SOUTH.ASC"};
  MakeProject(two);
  WriteChildren(two);
  AggregationAnswers answers{two, "6"};
  answers.causal = answers.no_fixed_effects = answers.top_down = true;
  ASSERT_EQ(Run(answers), 0) << host.Joined();

  auto parent = Lines(work / "GROUPT.ASC");
  EXPECT_EQ(std::vector<std::string>(parent.begin() + 3, parent.begin() + 7),
            (std::vector<std::string>{"1", "12", "1", "1"}));
  auto child = Lines(work / "MODIFIEDASC" / "NORTH.ASC");
  ASSERT_EQ(child.size(), 15u + 2 * 144u + 6u);
  EXPECT_EQ(std::vector<std::string>(child.begin(), child.begin() + 15),
            (std::vector<std::string>{"0", "0", "0", "2", "7", "1", "1", "144", "6", "0", "6", "GROUPT",
                                      "NORTH", "1", "0"}));
  EXPECT_EQ(std::vector<std::string>(child.begin() + 15, child.begin() + 15 + 144),
            std::vector<std::string>(parent.begin() + 13, parent.end()));
  EXPECT_EQ(child[15 + 144], Lines(work / "ASCBACKUP" / "NORTH.ASC")[13]);
  const auto pro = Lines(work / "OUTPUT" / "GROUPT.PRO");
  for (int p = 1; p <= 6; ++p)
    EXPECT_EQ(std::stod(child[15 + 288 + p - 1]), ReadProLine(pro[p]).value[0]);
}

TEST_F(AggregationTest, AReplacementChildIsRunAndRewrittenUnderItsOwnName) {
  const std::vector<std::string> two{"NORTH.ASC", "SOUTH.ASC"};
  MakeProject(two);
  WriteChildren(two);
  WriteFile(work / "PRIORI.ASC", ChildAsc("PRIORI", 0.45, 9));
  AggregationSeams seams;
  seams.replacements = [](const std::vector<std::string>& children) -> std::optional<std::vector<std::string>> {
    EXPECT_EQ(children.size(), 2u);
    return std::vector<std::string>{kNoReplacement, "PRIORI.ASC"};
  };
  AggregationAnswers answers{two, "12"};
  answers.top_down = true;
  ASSERT_EQ(Run(answers, seams), 0) << host.Joined();
  const fs::path out = work / "OUTPUT";
  EXPECT_FALSE(fs::exists(out / "SOUTH.PRO"));
  ASSERT_EQ(Lines(out / "PRIORI.PRO").size(), 13u);
  EXPECT_TRUE(std::regex_search(Lines(out / "PRIORI.PRO")[1], std::regex(R"(\d\.\d{10}$)")));  // rewritten
  const auto* asked = host.Starting("Do you wish to replace any children asc files");
  ASSERT_NE(asked, nullptr);
  EXPECT_EQ(asked->title, "Replace Children Files?");
}

// A person who presses Cancel while the given series is in the engine.
class CancelOnSeries : public platform::ProgressWait {
 public:
  CancelOnSeries(int number, const std::string& name) : number_(number), name_(name) {}
  void Wait(platform::WaitedWork& work) override {
    if (work.SeriesNumber() == number_ && work.SeriesName() == name_) work.Cancel();
    while (!work.Finished()) {
      work.Poll();
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }

 private:
  int number_;
  std::string name_;
};

TEST_F(AggregationTest, ACancelAmongTheChildrenEndsTheRunAndPutsTheChildrenBack) {
  MakeProject(kRegions);
  WriteChildren(kRegions);
  const auto before = Snapshot(work.path());
  platform::SetProgressWait(std::make_shared<CancelOnSeries>(2, "SOUTH.ASC"));
  const int status = Run({kRegions, "12"});
  platform::SetProgressWait(nullptr);
  EXPECT_EQ(status, 1);
  EXPECT_NE(host.Starting("Operation Canceled by user"), nullptr);
  const auto* ended = host.Starting("The process has been cancelled by the user.");
  ASSERT_NE(ended, nullptr);
  EXPECT_EQ(ended->title, "FYI");
  for (const auto& c : kRegions) EXPECT_EQ(ReadFile(work / c), before.at(c)) << c;
  EXPECT_FALSE(fs::exists(program / "AGGPARAMS.RWF"));
}

// The rules wizard cancelled before the parent's or before the children's run.
class CancelAt : public AggregationRules {
 public:
  explicit CancelAt(RunStage stage) : stage_(stage) {}
  bool Select(RunStage stage, bool, const fs::path&, const std::string&) override { return stage != stage_; }

 private:
  RunStage stage_;
};

TEST_F(AggregationTest, AWizardCancelEndsTheFlowWithTheChildrenAsTheyWere) {
  for (RunStage stage : {RunStage::Parent, RunStage::Children}) {
    SCOPED_TRACE(stage == RunStage::Parent ? "parent" : "children");
    MakeProject(kRegions);
    WriteChildren(kRegions);
    const auto before = Snapshot(work.path());
    AggregationSeams seams;
    seams.rules = std::make_shared<CancelAt>(stage);
    EXPECT_EQ(Run({kRegions, "12"}, seams), 1);
    EXPECT_EQ(host.Texts().back(), "The process has been cancelled by the user.");
    EXPECT_TRUE(fs::exists(work / "GROUPT.ASC"));
    EXPECT_EQ(fs::exists(work / "OUTPUT" / "GROUPT.PRO"), stage == RunStage::Children);
    for (const auto& c : kRegions) EXPECT_EQ(ReadFile(work / c), before.at(c)) << c;
  }
}

// Refused input ends the flow with status 2 and changes no file; each refusal's own words
// are checked where the children and the answers are checked.
TEST_F(AggregationTest, RefusedInputChangesNothing) {
  struct Case {
    const char* what;
    std::function<void(const fs::path&, AggregationAnswers&)> arrange;
    std::string message_start;
  };
  const std::vector<Case> cases{
      {"a child of another seasonality",
       [](const fs::path& w, AggregationAnswers&) { WriteFile(w / "SOUTH.ASC", ChildAsc("SOUTH", 0.3, 1, 144, "4")); },
       "SOUTH.ASC does not have the same seasonality as the other series."},
      {"a missing child", [](const fs::path& w, AggregationAnswers&) { fs::remove(w / "SOUTH.ASC"); },
       "SOUTH.ASC is an empty or malformed file."},
      {"a supplied parent of another seasonality",
       [](const fs::path& w, AggregationAnswers& a) {
         WriteFile(w / "GROUPT.ASC", ChildAsc("GROUPT", 1, 0, 144, "4"));
         a.parent_asc = true;
       },
       "The GROUPT.ASC file does not relate to the children selected."},
  };
  const std::vector<std::string> two{"NORTH.ASC", "SOUTH.ASC"};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    MakeProject(two);
    WriteChildren(two);
    AggregationAnswers answers{two, "12"};
    c.arrange(work.path(), answers);
    const auto before = Snapshot(work.path());
    EXPECT_EQ(Run(answers), 2);
    EXPECT_NE(host.Starting(c.message_start), nullptr) << host.Joined();
    EXPECT_EQ(Snapshot(work.path()), before);
  }
}

TEST_F(AggregationTest, AParentForecastFileOfAnotherLengthCorrectsTheNumberOfForecasts) {
  const std::vector<std::string> two{"NORTH.ASC", "SOUTH.ASC"};
  MakeProject(two);
  WriteChildren(two);
  std::string groupt = "PERIOD GROUPT\r\n";
  for (int p = 1; p <= 6; ++p) groupt += ProLine("1961/" + std::to_string(p), 300, 250, 350) + "\r\n";
  WriteFile(work / "GROUPT.PRO", groupt);
  ASSERT_EQ(Run({two, "12", true}), 0) << host.Joined();
  EXPECT_NE(host.Starting("The number of forecasts in " + (work / "GROUPT.PRO").string() +
                          " does not agree with the number of forecasts you selected.  We will adjust your "
                          "selection to agree with the provided file."),
            nullptr);
  EXPECT_EQ(Lines(work / "OUTPUT" / "NORTH.PRO").size(), 7u);  // the header and six forecasts
  EXPECT_EQ(ReadFile(work / "ASCBACKUP" / "NORTH.ASC"), ReadFile(work / "NORTH.ASC"));
}

}  // namespace
}  // namespace tessaly::aggregate::testing

namespace tessaly::aggregate::testing {
namespace {

// tsly aggregate as a script runs it: the exit statuses, the messages on standard error.
TEST_F(AggregationTest, TslyAggregateRunsRefusesAndExplains) {
  const std::vector<std::string> two{"NORTH.ASC", "SOUTH.ASC"};
  MakeProject(two);
  WriteChildren(two);
  auto tsly = [&](const std::string& words, std::string* output) {
    return tessaly::testing::RunCommand("cd '" + work.path().string() + "' && '" + (program / "tsly").string() +
                                            "' aggregate " + words + " 2>&1",
                                        output);
  };
  std::string out;
  EXPECT_EQ(tsly("regions.xml NORTH.ASC SOUTH.ASC --forecasts 6 --reconcile top-down", &out), 0) << out;
  EXPECT_NE(out.find("FYI: The RECONCILED FORECASTS FOR CHILDREN are concatenated in "), std::string::npos) << out;
  EXPECT_EQ(Lines(work / "OUTPUT" / "CONregions.PRO").size(), 13u);
  EXPECT_EQ(ReadFile(work / "NORTH.ASC"), ReadFile(work / "ASCBACKUP" / "NORTH.ASC"));
  EXPECT_EQ(tsly("regions.xml NORTH.ASC --forecasts 6", &out), 2);
  EXPECT_NE(out.find("FYI!  The range for selection is from 2 to 149."), std::string::npos) << out;
  EXPECT_EQ(tsly("regions.xml NORTH.ASC SOUTH.ASC --forecasts 6 --add-series V.his", &out), 2);
  EXPECT_NE(out.find("tsly aggregate: the variables file 'V.his' does not exist."), std::string::npos) << out;
  // A level shift generated for the parent enters GROUPT.ASC before the parent's own series.
  genseries::GenerationVariables level;
  level.BPSeaonality = "12", level.MajorPeriod = "1949", level.MinorPeriod = "1";
  level.LevelStartYear = "1955", level.LevelStartPeriod = "1", level.LevelEndYear = "1960", level.LevelEndPeriod = "12";
  ASSERT_TRUE(genseries::BuildXML(work / "rwf.his", level, "", "", program.path()));
  EXPECT_EQ(tsly("regions.xml NORTH.ASC SOUTH.ASC --forecasts 6 --add-series rwf.his", &out), 0) << out;
  const auto parent = Lines(work / "GROUPT.ASC");
  ASSERT_GT(parent.size(), 15u);
  EXPECT_EQ(parent[3], "2");
  EXPECT_EQ(parent[11].rfind("IIL", 0), 0u) << parent[11];
  EXPECT_EQ(parent[12], "GROUPT");
  EXPECT_EQ(Lines(work / "OUTPUT" / "CONregions.PRO").size(), 13u);
  EXPECT_EQ(tsly("regions.xml NORTH.ASC SOUTH.ASC --forecasts 6 --rules user --no-fixed-effects", &out), 2);
  EXPECT_EQ(tsly("--help", &out), 0);
  EXPECT_NE(out.find("--reconcile D"), std::string::npos) << out;
}

}  // namespace
}  // namespace tessaly::aggregate::testing
