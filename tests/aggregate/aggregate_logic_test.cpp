// The parameters dialog's logic, the parent and child files, the reconciliation's text
// formats and the replacement checks, without the engine.
#include <gtest/gtest.h>

#include "aggregate/agg_params.h"
#include "aggregate/mint.h"
#include "aggregate/parent_child_files.h"
#include "aggregate/reconcile.h"
#include "aggregate/replacements.h"
#include "platform/dialogs.h"
#include "platform/textfile.h"
#include "support/messages.h"
#include "support/program_folder.h"

namespace tessaly::aggregate {
namespace {

namespace mb = platform::mb;
using tessaly::testing::ReadFile;
using tessaly::testing::RecordedMessages;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

struct ParamsTest : ::testing::Test {
  AggParams Make(bool numeric = false, const std::string& seasonality = "12") {
    return AggParams({program.path(), data.path(), {"A.ASC", "B.ASC"}, numeric, seasonality, "12",
                      [this] { ++dates_asked; return std::optional<std::string>("3/7/2004"); }});
  }
  TempDir program, data;
  RecordedMessages host;
  int dates_asked = 0;
};

TEST_F(ParamsTest, QuestionsAppearInOrderAndOkChecksThemInOrder) {
  WriteFile(data / "A.ASC", "a");
  WriteFile(data / "B.ASC", "b");
  fs::create_directories(data / "MODIFIEDASC" / "sub");
  for (const char* n : {"X.ASC", "y.asc", "z.aSc", "sub/k.ASC"}) WriteFile(data / "MODIFIEDASC" / n, "");
  AggParams p = Make(true);
  ParamsVisibility v = p.Visible();
  EXPECT_TRUE(v.forecasts);
  EXPECT_FALSE(v.asc || v.mixed || v.rules || v.causal || v.reconcile || v.number_enabled);
  EXPECT_TRUE(p.Value(Box::PtoC));
  EXPECT_FALSE(p.Value(Box::MixedNo));  // numeric names: the pair is asked

  EXPECT_FALSE(p.Ok());
  p.Click(Box::ForecastsNo, true);
  EXPECT_TRUE(p.Visible().asc && p.Visible().add_series && !p.Visible().rules);
  EXPECT_FALSE(p.Ok());
  p.Click(Box::AscNo, true);
  v = p.Visible();
  EXPECT_TRUE(v.mixed && v.rules && v.causal && v.reconcile && v.number_enabled);
  EXPECT_TRUE(p.Value(Box::MixedNo));
  p.Click(Box::Automatic2, true);
  EXPECT_TRUE(p.Visible().fixed_effects && p.Value(Box::FixedEffectsNo));
  p.Click(Box::FixedEffectsYes, true);
  EXPECT_FALSE(p.Value(Box::FixedEffectsNo));
  p.Click(Box::Automatic1, true);
  EXPECT_FALSE(p.Visible().fixed_effects || p.Value(Box::FixedEffectsYes) || p.Value(Box::Automatic2));
  p.ChooseMinT(true);
  EXPECT_FALSE(p.Value(Box::PtoC) || p.Value(Box::CtoP));
  EXPECT_EQ(p.Options().ReconcileDirection, 3);
  p.Click(Box::CtoP, true);
  EXPECT_FALSE(p.Value(Box::PtoC) || p.MinT());

  for (const char* text : {"0", "601", "600"}) {
    p.SetNumberText(text);
    p.LeaveNumberField();
    (void)p.Ok();  // what it refuses is in the messages below
  }
  const std::string fyi_texts[] = {
      "You must indicate whether or not you have forecasts for the Parent before we can continue.",
      "You must indicate whether or not you have an ASC file for the Parent before we can continue.",
      "You must indicate the number of forecasts to be created. The maximum allowed is 0 to 600.",
      "The maximum of forecasts allowed is 0 to 600."};
  ASSERT_EQ(host.Texts(), std::vector<std::string>(std::begin(fyi_texts), std::end(fyi_texts)));
  EXPECT_EQ(p.state(), AggParams::State::Accepted);
  EXPECT_EQ(p.Options().NumberOfForecasts, "600");
  EXPECT_EQ(p.Options().ReconcileDirection, 2);
  EXPECT_EQ(p.Options().FixedEffectsChoice, 2);
  EXPECT_EQ(platform::ReadAllLines(program / "AGGPARAMS.RWF").value(),
            (std::vector<std::string>{"chkForecastsYes  0", "chkForecastsNo  1", "chkASCFileYes  0",
                                      "chkASCFileNo  1", "chktemYes  0", "chkTempNo  1", "txtNumberFore  600",
                                      "chkAddGenSeriesYes  0", "chkAddGenSeriesNo  0", "chkCausalYes  0",
                                      "chkCauslNo  0", "chkAutomatic2  0", "chkFixedEffectsYes  0",
                                      "chkFixedEffectsNo  0", "chkAutomatic1  1", "chkPtoC  0", "chCtoP  1"}));
  EXPECT_EQ(ReadFile(data / "ASCBACKUP" / "B.ASC"), "b");
  EXPECT_FALSE(fs::exists(data / "MODIFIEDASC" / "X.ASC") || fs::exists(data / "MODIFIEDASC" / "y.asc"));
  EXPECT_TRUE(fs::exists(data / "MODIFIEDASC" / "z.aSc") && fs::exists(data / "MODIFIEDASC" / "sub" / "k.ASC"));
  EXPECT_EQ(dates_asked, 0);
}

TEST_F(ParamsTest, SuppliedParentFilesCorrectOrEndTheAnswers) {
  // No GROUPT.PRO: "No" gives the flow up, "Yes" moves on to the ASC question.
  {
    AggParams p = Make();
    host->answers = {mb::No};
    p.Click(Box::ForecastsYes, true);
    EXPECT_EQ(host.Texts().back(), (data / "GROUPT.PRO").string() + " does not exist as it should.  Do you wish to continue?\r\r");
    EXPECT_EQ(p.state(), AggParams::State::GivenUp);
    AggParams q = Make();
    host->answers = {mb::Yes};
    q.Click(Box::ForecastsYes, true);
    EXPECT_TRUE(q.Value(Box::ForecastsNo) && !q.Value(Box::ForecastsYes) && q.Visible().asc);
    EXPECT_TRUE(q.Value(Box::MixedNo));  // names not numeric
  }
  // A header, twelve numeric lines and a non-numeric last line count 13; OK asks no more.
  std::string pro = "PERIOD\r\n";
  for (int i = 0; i < 12; ++i) pro += "5\r\n";
  WriteFile(data / "GROUPT.PRO", pro + "END\r\n");
  {
    AggParams p = Make();
    p.Click(Box::ForecastsYes, true);
    EXPECT_EQ(host->shown.back().title, "For Your Information");
    EXPECT_EQ(p.NumberText(), "13");
    EXPECT_FALSE(p.Visible().number_enabled || p.Visible().asc || p.Visible().rules);
    p.SetNumberText("24");
    p.LeaveNumberField();
    EXPECT_EQ(p.NumberText(), "13");
    EXPECT_TRUE(p.Ok());
  }
  // GROUPT.ASC of another seasonality ends the answers and deletes the record.
  WriteFile(data / "GROUPT.ASC", "0\r\n0\r\n0\r\n1\r\n4\r\n1\r\n1\r\n8\r\n0\r\n0\r\n9\r\n");
  WriteFile(program / "AGGPARAMS.RWF", "old");
  {
    AggParams p = Make();
    p.Click(Box::ForecastsNo, true);
    p.Click(Box::AscYes, true);
    EXPECT_EQ(host.Texts().back(),
              "The GROUPT.ASC file does not relate to the children selected.  The Seasonality does not agree "
              "with the seasonality of children selected.  We will cancel processing.");
    EXPECT_TRUE(p.RunCanceled());
    EXPECT_FALSE(fs::exists(program / "AGGPARAMS.RWF"));
  }
  // A matching one gives its forecast count; seasonality 7 asks no date for a supplied parent.
  {
    AggParams p = Make(false, "4");
    p.Click(Box::ForecastsNo, true);
    p.Click(Box::AscYes, true);
    EXPECT_EQ(p.NumberText(), "9");
    EXPECT_TRUE(p.Ok());
    AggParams week = Make(false, "7");
    week.Click(Box::ForecastsNo, true);
    week.Click(Box::AscNo, true);
    EXPECT_TRUE(week.Ok());
    EXPECT_EQ(week.Options().FirstObservationDate, "3/7/2004");
    EXPECT_EQ(dates_asked, 1);
  }
}

TEST(ParentChildFiles, SumsNamesAndTheChildLayout) {
  TempDir dir;
  const std::string head = "0\r\n0\r\n0\r\n1\r\n12\r\n1\r\n1\r\n3\r\n0\r\n0\r\n2\r\nX\r\n0\r\n";
  WriteFile(dir / "A.ASC", head + "3\r\n1\r\nbad\r\n");
  WriteFile(dir / "B.ASC", head + "4\r\n2.5\r\n");
  const ChildHistories h = LoadChildren(dir.path(), {"A.ASC", "B.ASC"});
  EXPECT_EQ(h.sum, (std::vector<double>{7, 3.5, 0}));
  for (const auto& [date, name] : std::vector<std::pair<std::string, std::string>>{
           {"3/7/2004", "GROUPT__030704"}, {"12/7/2004", "GROUPT__120704"},
           {"12/17/2004", "GROUPT__121704"}, {"3/17/2004", "GROUPT__031704"}, {"", "GROUPT"}})
    EXPECT_EQ(ParentSeriesName(date), name) << date;
  AscShape shape{"12", "1949", "1", "3", "2", 1};
  EXPECT_EQ(ParentAscLines(shape, h, ""),
            (std::vector<std::string>{"0", "0", "0", "1", "12", "1", "1", "3", "0", "0", "2", "GROUPT", "0", "7", "3.5", "0"}));
  EXPECT_EQ(ChildAscLines(shape, {"0", "2"}, "B.ASC", h.child[1], h, true, {10, 11}),
            (std::vector<std::string>{"0", "0", "0", "2", "7", "1", "1", "3", "2", "0", "2", "GROUPT", "B", "1", "0",
                                      "7", "3.5", "0", "4", "2.5", "0", "10", "11"}));
  shape.fixed_effects_choice = 2;
  EXPECT_EQ(ChildAscLines(shape, {"0", "2"}, "B.ASC", h.child[1], h, false, {}),
            (std::vector<std::string>{"0", "0", "0", "1", "12", "1949", "1", "3", "0", "0", "2", "B", "0", "4", "2.5", "0"}));
}

TEST(Reconcile, TextFormatsAndTheWorkedTopDownExample) {
  const std::string label = "1961/1     ";
  const std::string nine(9, ' ');
  EXPECT_EQ(BottomUpLine(label + "   99.1", {100, 0.5, 2}),
            label + nine + "100.0000000000" + nine + "0.5000000000" + nine + "2.0000000000");
  // Decimals beyond the tenth show through at the zeros of the next column's text.
  EXPECT_EQ(BottomUpLine(label, {1, 2.123456789012, 3}),
            label + nine + "1.0000000000" + nine + "2.1234567890" + nine + "3.1200000000");
  EXPECT_EQ(TopDownLine(label + "xx", {60, 0, 33}), label + nine + "60.0000050000" + nine + "0.0000050000" + nine + "33.0000050000");

  TempDir out;
  auto pro = [&](const std::string& name, std::vector<double> first) {
    std::string t = "PERIOD  " + name + "\r\n";
    for (double v : first) {
      char line[128];
      std::snprintf(line, sizeof line, "%-11s%23.4f%25.4f%25.4f\r\n", "1961/1", v, v, v);
      t += line;
    }
    WriteFile(out / name, t);
  };
  pro("1.PRO", {30, 500});
  pro("2.PRO", {70, 1});
  pro("GROUPT.PRO", {200, 110});
  ReconcileInput in{out.path(), {"1.asc", "2.asc"}, {}, "2", 2, "months.xml", 2, true, "", nullptr};
  ReconcileForecasts(in);
  auto first = platform::ReadAllLines(out / "1.PRO").value();
  ASSERT_EQ(first.size(), 3u);
  EXPECT_EQ(first[0], "PERIOD  1.PRO");
  EXPECT_EQ(first[1], "1961/1     " + nine + "60.0000050000" + nine + "60.0000050000" + nine + "60.0000050000");
  EXPECT_EQ(first[2].substr(0, 33), "1961/1     " + nine + "33.0000050000");
  EXPECT_EQ(platform::ReadAllLines(out / "2.PRO").value()[2].substr(20, 13), "77.0000050000");
  auto table = platform::ReadAllLines(out / "CONmonths.PRO").value();
  ASSERT_EQ(table.size(), 5u);
  EXPECT_NE(table[0].find("     RECONCILED CHILDREN      TABLE OF 4 Forecast Values"), std::string::npos);
  EXPECT_EQ(table[4], platform::ReadAllLines(out / "2.PRO").value()[2].substr(0, 35) + "     2");
  auto periods = platform::ReadAllLines(out / "RECmonths.CSV").value();
  ASSERT_EQ(periods.size(), 5u);
  EXPECT_NE(periods[0].find("     RECONCILED FORECASTS FOR CHILD WITHIN PERIOD"), std::string::npos);
  EXPECT_EQ(periods[3], "    2    1         33.000005");
  EXPECT_FALSE(fs::exists(out / "1.ADJ"));
}

TEST(MinT, UncorrelatedEqualErrorsShareTheGapEquallyAndAnUnreliableParentGivesWay) {
  // Orthogonal errors of equal size: no shrinkage target to move to, W is the identity, and
  // the gap between parent and children's sum is spread equally over the three series.
  const std::vector<std::vector<double>> equal{{1, -1, 1, -1}, {1, 1, -1, -1}, {1, -1, -1, 1}};
  double lambda = -1;
  auto w = ShrunkCovariance(equal, &lambda);
  ASSERT_TRUE(w);
  EXPECT_EQ(lambda, 1.0);
  EXPECT_TRUE(w->isApprox(Eigen::Matrix3d::Identity()));
  const auto r = MinTReconciler(*w).Reconcile({10, 3, 4});
  ASSERT_EQ(r.size(), 3u);
  EXPECT_NEAR(r[1], 4, 1e-12);
  EXPECT_NEAR(r[2], 5, 1e-12);
  EXPECT_NEAR(r[0], 9, 1e-12);
  // A parent whose errors are a thousand times larger hardly moves the children.
  std::vector<std::vector<double>> noisy = equal;
  for (double& e : noisy[0]) e *= 1000;
  const auto b = MinTReconciler(*ShrunkCovariance(noisy)).Reconcile({10, 3, 4});
  EXPECT_NEAR(b[1], 3, 1e-5);
  EXPECT_NEAR(b[0], 7, 1e-5);
  // Too few common observations: none.
  EXPECT_FALSE(ShrunkCovariance({{1, std::nan("")}, {2, 3}}));
}

TEST(Replacements, ChecksInOrderAndTheConfirmation) {
  RecordedMessages host;
  TempDir dir;
  WriteFile(dir / "B.ASC", "child");
  WriteFile(dir / "EMPTY.ASC", "");
  WriteFile(dir / "R.ASC", "0\r\n0\r\n0\r\n1\r\n12\r\n1\r\n1\r\n144\r\n0\r\n0\r\n12\r\n");
  struct Case { std::string file, observations, forecasts; int16_t answer; bool accepted; std::string message; };
  const std::vector<Case> cases{
      {"", "144", "12", mb::Yes, false, "You must select a replacement file before continuing"},
      {"EMPTY.ASC", "144", "12", mb::Yes, false, "The asc file is empty."},
      {"R.ASC", "120", "12", mb::Yes, false,
       "The number of observations of the replacement asc, 144, does not agree with the  of the original asc, 120,. Therefore it cannot be used."},
      {"R.ASC", "144", "6", mb::Yes, false,
       "The number of forecasts to be generated of the replacement asc, 12, does not agree with the number of forecasts to be generated of the parent, 6,. Therefore it cannot be used."},
      {"R.ASC", "144", "12", mb::No, false, "Are you sure that you want to replace B.ASC with R.ASC"},
      {"R.ASC", "144", "12", mb::Yes, true, "Are you sure that you want to replace B.ASC with R.ASC"},
  };
  for (const auto& c : cases) {
    host->answers = {c.answer};
    EXPECT_EQ(AcceptReplacement(dir.path(), "B.ASC", c.file, c.observations, c.forecasts), c.accepted) << c.message;
    EXPECT_EQ(host.Texts().back(), c.message);
    EXPECT_EQ(host->shown.back().title, "Replace Children Files?");
  }
  EXPECT_EQ(ReadFile(dir / "ASCBACKUP" / "B.ASC"), "child");
}

// A folder where the safety copy would go: neither the replacement nor the parameters
// dialog goes on to overwrite an original it could not back up.
TEST_F(ParamsTest, AnOriginalThatCannotBeBackedUpStopsTheReplacementAndTheParameters) {
  WriteFile(data / "A.ASC", "a");
  WriteFile(data / "B.ASC", "child");
  WriteFile(data / "R.ASC", "0\r\n0\r\n0\r\n1\r\n12\r\n1\r\n1\r\n144\r\n0\r\n0\r\n12\r\n");
  fs::create_directories(data / "ASCBACKUP" / "B.ASC");
  const std::string refusal = "The original of B.ASC could not be backed up to ASCBACKUP.";
  EXPECT_FALSE(AcceptReplacement(data.path(), "B.ASC", "R.ASC", "144", "12"));
  EXPECT_EQ(host.Texts().back(), refusal);
  AggParams p = Make();
  p.Click(Box::ForecastsNo, true);
  p.Click(Box::AscNo, true);
  p.SetNumberText("12");
  EXPECT_FALSE(p.Ok());
  EXPECT_EQ(host.Texts().back(), refusal);
  EXPECT_EQ(p.state(), AggParams::State::Open);
  EXPECT_EQ(ReadFile(data / "B.ASC"), "child");
}

}  // namespace
}  // namespace tessaly::aggregate
