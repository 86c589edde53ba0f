#include "rules/rules_text.h"

#include "fixture.h"
#include "platform/textfile.h"
#include "rules/page_rules.h"
#include "rules/rule_keys.h"
#include "rules/rule_values.h"
#include "rules/rules_files.h"

namespace tessaly::rules::testing {
namespace {

const char* kSample =
    "ENABLE MODEL ESTIMATION                 |   1\r\n"
    "MAXIMUM # OF ITERATIONS                 |  20\r\n"
    "DISPLAY CONSTANCY TEST | MORE           |   1\r\n"
    "CONFIDENCE LEVEL FOR CONSTANCY TEST     |95.0\r\n";

TEST(RulesText, FindsTheFirstOccurrenceAndReadsUpToTheLineEnd) {
  RulesText r;
  r.SetText(kSample);
  EXPECT_EQ(r.GetRule("ITERATIONS"), "  20");
  EXPECT_EQ(r.GetRule("MODEL ESTIMATION"), "   1");
  // The key is found in the display line first; its label's own bar opens the value.
  EXPECT_EQ(r.GetRule("CONSTANCY TEST"), " MORE           |   1");
  // Case matters: a key in lower case is not there, and a rule that is not there is empty.
  EXPECT_EQ(r.GetRule("iterations"), "");
}

// A rules file of an older version lacks a newer rule: setting it adds its line at the
// end, the key padded to the file's bar, and leaves every other rule as it was.
TEST(RulesText, SettingARuleTheFileLacksAddsItsLineAndChangesNoOther) {
  RulesText r;
  r.SetText(kSample);
  r.PutRule(key::kStore, "   1");
  EXPECT_EQ(r.Text(), std::string(kSample) + "STORE                                   |   1\r\n");
  EXPECT_EQ(r.GetRule(key::kStore), "   1");
  r.PutRule(key::kStore, "   0");
  EXPECT_EQ(r.GetRule(key::kStore), "   0");
  EXPECT_EQ(r.GetRule("MODEL ESTIMATION"), "   1");
  RulesText unended;
  unended.SetText("ENABLE MODEL ESTIMATION |   1");
  unended.PutRule(key::kIntermittent, "   0");
  EXPECT_EQ(unended.Text(), "ENABLE MODEL ESTIMATION |   1\r\nINTERMITTENT            |   0\r\n");
}

TEST(RulesText, PutRuleReplacesOnlyTheValueWhateverItsLength) {
  RulesText r;
  r.SetText(kSample);
  r.PutRule("ITERATIONS", " 150");
  EXPECT_EQ(r.GetRule("ITERATIONS"), " 150");
  r.PutRule("ITERATIONS", "7");
  EXPECT_EQ(r.Text().substr(0, 90),
            std::string("ENABLE MODEL ESTIMATION                 |   1\r\n"
                        "MAXIMUM # OF ITERATIONS                 |7\r\n")
                .substr(0, 90));
  r.PutRule("ENABLE MODEL ESTIMATION", "   0");
  EXPECT_EQ(r.GetRule("MODEL ESTIMATION"), "   0");
  EXPECT_EQ(r.GetRule("ITERATIONS"), "7");
}

class RulesFiles : public RulesFixture {};

TEST_F(RulesFiles, ShippedRulesRoundTripByteForByte) {
  bool failed = false;
  WriteFile(File("ENGINE.USR"), Cnd());
  EXPECT_EQ(LoadRules(Folder(), "Present Rules", session.rules, failed), LoadStatus::Loaded);
  EXPECT_FALSE(failed);
  EXPECT_EQ(session.rules.LengthRead(), Cnd().size());
  fs::remove(File("ENGINE.USR"));
  ASSERT_TRUE(SaveRules(Folder(), session.rules));
  EXPECT_EQ(Read("ENGINE.USR"), Cnd());
  EXPECT_TRUE(dialogs->shown.empty());
}

// Every key must first occur in its own line, in the engine's reading order, with no bar
// in the label before its own, so the search finds the line the engine reads.
TEST_F(RulesFiles, ShippedRulesSatisfyTheKeySearch) {
  auto lines = platform::ReadAllLines(File("ENGINE.CND"));
  ASSERT_TRUE(lines);
  const std::string_view keys[] = {
      key::kMaximumLead, key::kDifference, key::kModelEstimation, key::kSquares,
      key::kParameterValues, key::kIterations, key::kNecessityTest, key::kLevelForNecessity,
      key::kConstrain, key::kStochastic, key::kSS, key::kDeterministic, key::kDS,
      key::kToBeIdentified, key::kIncludePulse, key::kIncludeStep, key::kObservationsInGroup,
      key::kIncludeSeasonalPulse, key::kLocalTrend, key::kFixup, key::kEvaluateInEst,
      key::kLambdaList, key::kDiscrete, key::kLevelForVariance, key::kResidualsToPool,
      key::kConstancyOfParameters, key::kConstancyTest, key::kModelForecasting,
      key::kValuesToCompute, key::kForTheForecasts, key::kPositiveValues, key::kIntegers,
      key::kLastObservation, key::kPulseToSeasonal, key::kSimulationEnabled, key::kNoiseSeries,
      key::kSeedValue, key::kStore};
  std::string text = Cnd();
  size_t previous_line = 0;
  for (std::string_view k : keys) {
    size_t at = text.find(k);
    ASSERT_NE(at, std::string::npos) << k;
    size_t line_no = std::count(text.begin(), text.begin() + at, '\n');
    const std::string& line = (*lines)[line_no];
    size_t bar = line.find('|');
    ASSERT_NE(bar, std::string::npos) << k;
    EXPECT_LT(line.find(k), bar) << k << " must stand in the label of its own line";
    EXPECT_GT(line_no, previous_line) << k << " is out of the engine's order";
    previous_line = line_no;
  }
  for (std::string_view k : {key::kIntermittent, key::kNumberOfGroups, key::kInitialModel}) {
    size_t at = text.find(k);
    ASSERT_NE(at, std::string::npos) << k;
    size_t line_no = std::count(text.begin(), text.begin() + at, '\n');
    EXPECT_LT((*lines)[line_no].find(k), (*lines)[line_no].find('|')) << k;
  }
  RulesText r;
  r.SetText(text);
  EXPECT_EQ(r.GetRule(key::kInitialModel), std::string(key::kNoInitialModel));
  EXPECT_EQ(r.GetRule(key::kNumberOfGroups), "   1");
}

// The enable boxes fill the values the shipped defaults hold.
TEST_F(RulesFiles, ShippedDefaultsAreTheWizardDefaults) {
  RulesText r;
  r.SetText(Cnd());
  ModelEstimationPage fresh;
  EnableEstimationPage(fresh, true);
  ModelEstimationPage read;
  ModelEstimation_Get(r, read);
  for (auto [a, b] : {std::pair{&fresh.txtModelEst1, &read.txtModelEst1},
                      {&fresh.txtModelEst2, &read.txtModelEst2},
                      {&fresh.txtModelEst4, &read.txtModelEst4},
                      {&fresh.txtModelEst5, &read.txtModelEst5},
                      {&fresh.txtModelEst9, &read.txtModelEst9},
                      {&fresh.txtModelEst10, &read.txtModelEst10},
                      {&fresh.txtModelEst12, &read.txtModelEst12}})
    EXPECT_EQ(a->text, b->text);
  for (auto [a, b] : {std::pair{&fresh.txtModelEst3, &read.txtModelEst3},
                      {&fresh.txtModelEst6, &read.txtModelEst6},
                      {&fresh.txtModelEst7, &read.txtModelEst7},
                      {&fresh.txtModelEst11, &read.txtModelEst11}})
    EXPECT_EQ(a->text, Trim(b->text));
}

TEST_F(RulesFiles, MissingPresentRulesAreRestoredFromTheDefaults) {
  fs::remove(File("ENGINE.USR"));
  bool failed = false;
  EXPECT_EQ(LoadRules(Folder(), "Select File", session.rules, failed), LoadStatus::DefaultsRestored);
  EXPECT_TRUE(failed);
  EXPECT_EQ(Read("ENGINE.USR"), Cnd());
  EXPECT_EQ(session.rules.Text(), Cnd());
  EXPECT_EQ(Shown(), std::vector<std::string>{
                         "File does not exist|No Present Rules file exists. Defaults conditions "
                         "have been restored."});
}

TEST_F(RulesFiles, TheProgramShipsPresentRulesSoAFirstStartAsksNothing) {
  bool failed = false;
  EXPECT_EQ(LoadRules(Folder(), "Present Rules", session.rules, failed), LoadStatus::Loaded);
  EXPECT_FALSE(failed);
  EXPECT_TRUE(Shown().empty());
  EXPECT_EQ(Read("ENGINE.USR"), Cnd());
}

TEST_F(RulesFiles, NoRulesAtAllLoadsNothing) {
  fs::remove(File("ENGINE.CND"));
  fs::remove(File("ENGINE.USR"));
  bool failed = false;
  EXPECT_EQ(LoadRules(Folder(), "Present Rules", session.rules, failed), LoadStatus::NoRules);
  EXPECT_TRUE(failed);
  EXPECT_TRUE(session.rules.Empty());
  EXPECT_FALSE(Exists("ENGINE.USR"));
  EXPECT_EQ(Shown(), std::vector<std::string>{
                         "File does not exist|No Present Conditions or Default Conditions files "
                         "exist. Please contact QVX."});
}

TEST_F(RulesFiles, AnArchiveChosenInTheListIsLoaded) {
  WriteFile(File("ENGINE.USR"), Cnd());
  std::string archived = Cnd();
  archived.replace(archived.find("|  20"), 5, "| 150");
  WriteFile(File("RETAIL.U03"), archived);
  bool failed = false;
  LoadRules(Folder(), "RETAIL.U03(11/22/2026 8:21:01 PM)", session.rules, failed);
  EXPECT_EQ(session.rules.GetRule(key::kIterations), " 150");
}

TEST_F(RulesFiles, RestoringDefaultsRewritesThePresentRulesLineByLine) {
  WriteFile(File("ENGINE.USR"), "OLD|   1\r\n");
  WriteFile(File("ENGINE.CND"), "A LINE|   1\r\nLAST LINE WITHOUT END|   0");
  ASSERT_TRUE(RestoreDefaultRules(Folder()));
  EXPECT_EQ(Read("ENGINE.USR"), "A LINE|   1\r\nLAST LINE WITHOUT END|   0\r\n");
  fs::remove(File("ENGINE.USR"));
  EXPECT_FALSE(RestoreDefaultRules(Folder()));
  EXPECT_FALSE(Exists("ENGINE.USR"));
}

TEST(RuleValues, FourWideIntegersByBand) {
  EXPECT_EQ(IterationsValue("5"), "   5");
  EXPECT_EQ(IterationsValue("20"), "  20");
  EXPECT_EQ(IterationsValue("200"), " 200");
  EXPECT_EQ(IterationsValue("201"), "201");
  EXPECT_EQ(IterationsValue("0"), "0");
  EXPECT_EQ(IterationsValue(""), "");
  EXPECT_EQ(HundredsValue("999"), " 999");
  EXPECT_EQ(ResidualsToPoolValue("4"), "4");
  EXPECT_EQ(ResidualsToPoolValue("5"), "   5");
  EXPECT_EQ(ResidualsToPoolValue(" "), " ");
  EXPECT_EQ(SmallLevelValue("0.95"), " .95");
  EXPECT_EQ(SmallLevelValue("90.0"), "90.0");
  EXPECT_EQ(NoiseSeriesValue("1.0"), " 1.0");
  EXPECT_EQ(NoiseSeriesValue("12.5"), "12.5");
  EXPECT_EQ(SeedValue("0"), "   0");
  EXPECT_EQ(SeedValue("1234"), "1234");
  EXPECT_EQ(ValuesToComputeValue(0), "   0");
  EXPECT_EQ(ValuesToComputeValue(12), "  12");
  EXPECT_EQ(ValuesToComputeValue(600), " 600");
  EXPECT_EQ(MaximumLeadValue("3"), "   3");
  EXPECT_EQ(FlagValue(true), "   1");
  EXPECT_TRUE(FlagOn("   1"));
  EXPECT_FALSE(FlagOn("  10"));
  EXPECT_EQ(LastDigit("    "), "0");
}

TEST(RuleValues, NumberOfGroupsKeepsItsWidths) {
  EXPECT_EQ(NumberOfGroupsValue(0), "   1");
  EXPECT_EQ(NumberOfGroupsValue(7), "   7");
  EXPECT_EQ(NumberOfGroupsValue(42), "  42");
  EXPECT_EQ(NumberOfGroupsValue(100), "  100");
  RulesText r;
  r.SetText("# OF GROUPS IN POOLED CROSS-SECTION |   1\r\nNEXT|   0\r\n");
  GroupPage g;
  g.group_count = 100;
  Group_PC_Put(r, g);
  EXPECT_EQ(r.Text(), "# OF GROUPS IN POOLED CROSS-SECTION |  100\r\nNEXT|   0\r\n");
}

TEST(LambdaList, CountAndListAsWritten) {
  RulesText r;
  r.SetText(
      "NUMBER OF LAMBDA VAL TO EVALUATE IN EST |   1\r\nSPACER\r\n"
      "LAMBDA VALUES TO EVALUATE (4F4.0)       |1.00                                    \r\n");
  LambdaPage p;
  EXPECT_EQ(Lambda_Est_Get(r, p), 1);
  EXPECT_EQ(p.txtLambda_Est[0].text, "1.00");
  // Read and written back unchanged, the forty-wide list is kept as it was.
  EXPECT_EQ(Lambda_est_Put(r, p), 1);
  EXPECT_EQ(r.GetRule(key::kLambdaList), "1.00                                    ");

  LambdaPage two;
  two.txtLambda_Est[0].text = "1.00";
  two.txtLambda_Est[1].text = "0.50";
  two.txtLambda_Est[2].text = " ";
  EXPECT_EQ(Lambda_est_Put(r, two), 2);
  EXPECT_EQ(r.GetRule(key::kEvaluateInEst), "   2");
  EXPECT_EQ(r.GetRule(key::kLambdaList), "1.000.50 ");

  LambdaPage first_empty;
  first_empty.txtLambda_Est[1].text = "0.50";
  EXPECT_EQ(Lambda_est_Put(r, first_empty), 0);
  EXPECT_EQ(r.GetRule(key::kEvaluateInEst), "   0");
  EXPECT_EQ(r.GetRule(key::kLambdaList), "0.50");

  LambdaPage blank_second;
  blank_second.txtLambda_Est[0].text = "1.00";
  blank_second.txtLambda_Est[1].text = " ";
  EXPECT_EQ(Lambda_est_Put(r, blank_second), 0);
  EXPECT_EQ(blank_second.txtLambda_Est[0].text, "");

  LambdaPage ten;
  for (auto& f : ten.txtLambda_Est) f.text = "0.50";
  ten.txtLambda_Est[3].text = "-.50";
  EXPECT_EQ(Lambda_est_Put(r, ten), 10);
  EXPECT_EQ(r.GetRule(key::kEvaluateInEst), "  10");
  EXPECT_EQ(r.GetRule(key::kLambdaList).size(), 40u);

  LambdaPage out_of_range;
  out_of_range.txtLambda_Est[0].text = "1.00";
  out_of_range.txtLambda_Est[1].text = "2.00";
  out_of_range.txtLambda_Est[2].text = "0.50";
  EXPECT_EQ(Lambda_est_Put(r, out_of_range), 1);

  LambdaPage read_blank;
  r.PutRule(key::kLambdaList, "    0.50");
  EXPECT_EQ(Lambda_Est_Get(r, read_blank), 2);
  EXPECT_EQ(read_blank.txtLambda_Est[0].text, "1.00");
}

}  // namespace
}  // namespace tessaly::rules::testing
