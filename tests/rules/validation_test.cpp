#include "rules/validation.h"

#include "fixture.h"
#include "rules/model_file.h"
#include "rules/page_rules.h"

namespace tessaly::rules::testing {
namespace {

class Checks : public RulesFixture {
 protected:
  // The one box shown, as "TITLE|text" with the two closing line ends.
  std::string Box() const {
    EXPECT_EQ(dialogs->shown.size(), 1u);
    return dialogs->shown.empty() ? "" : Shown().back();
  }
  ModelEstimationPage Estimation() {
    ModelEstimationPage p;
    EnableEstimationPage(p, true);
    return p;
  }
  Validation Estimate(ModelEstimationPage& p) {
    dialogs->shown.clear();
    return ValidateModelEstimation(p, groups, lambdas, true);
  }
  GroupPage groups;
  LambdaPage lambdas;
};

const std::string kEnd = "\r\n\r\n";
const std::string kLevel = "The Range for the 'Confidence Level' option  is 50.0 To 99.9.";

TEST_F(Checks, ConfidenceLevelsAcceptTheirBoundsOnly) {
  ModelEstimationPage p = Estimation();
  p.chkModelEst2.value = true;
  for (const char* ok : {"99.9", "50.0"}) {
    p.txtModelEst4.text = ok;
    EXPECT_FALSE(Estimate(p).failed) << ok;
  }
  for (const char* bad : {"99.95", "49.9"}) {
    p.txtModelEst4.text = bad;
    Validation v = Estimate(p);
    EXPECT_TRUE(v.failed) << bad;
    EXPECT_EQ(v.field, "txtModelEst4");
    EXPECT_EQ(Box(), "Range Input Error|" + kLevel + kEnd);
  }
}

TEST_F(Checks, EstimationChecksInOrderWithTheirTexts) {
  struct Case {
    std::function<void(ModelEstimationPage&)> change;
    std::string field, box;
  };
  const std::vector<Case> cases = {
      {[](auto& p) { p.txtModelEst1.text = "100"; }, "txtModelEst1",
       "Range Input Error|The Range for the '% Change in Error Sum of Squares' option  is 00.0 To 99.9"},
      {[](auto& p) { p.txtModelEst2.text = "-1"; }, "txtModelEst2",
       "Range Input Error|The Range for the '% Change in The Parameter Values' option  is 00.0 To 99.9."},
      {[](auto& p) { p.txtModelEst3.text = "201"; }, "txtModelEst3",
       "Range Input Error|The Range for the 'Maximum Number of Iterations' is 0 to 200."},
      {[](auto& p) { p.chkModelEst2.value = true; p.txtModelEst4.text = ""; }, "txtModelEst4",
       "Option Input Error|Since you have enabled the 'Sufficiency (Stochastic Structure)' option, "
       "you must enter the 'Confidence Level for Sufficiency Test'. \r\n\r\n" + kLevel},
      {[](auto& p) { p.chkModelEst3.value = true; p.txtModelEst5.text = "40"; }, "txtModelEst5",
       "Range Input Error|" + kLevel},
      {[](auto& p) { p.chkModelEst3.value = true; p.txtModelEst6.text = "150"; }, "txtModelEst6",
       "Range Input Error|The Range for the 'Maximum Number of Outliers to be Identified' is 0 to 149"},
      {[](auto& p) { p.txtModelEst7.text = "1"; }, "txtModelEst7",
       "Range Input Error|The Range for 'Minimum No. of Observations in \r\nGroup' is 2 to 10000."},
      {[](auto& p) { p.chkModelEst11.value = true; p.txtModelEst9.text = ""; }, "txtModelEst9",
       "Range Input Error|" + kLevel},
      {[](auto& p) { p.chkModelEst11.value = true; p.txtModelEst9.text = ""; p.txtModelEst9.enabled = false; },
       "txtModelEst9",
       "Option Input Error|Since you have enabled the 'Necessity' option, you must enter the "
       "'Confidence Level for Necessity Test'. \r\n\r\n" + kLevel},
      {[](auto& p) { p.txtModelEst10.text = "100"; }, "txtModelEst10", "Range Input Error|" + kLevel},
      {[](auto& p) { p.chkModelEst13.value = true; p.txtModelEst10.text = ""; p.txtModelEst10.enabled = false; },
       "txtModelEst10",
       "Option Input Error|Since you have enabled the 'Enable the Automatic Fixup for Variance "
       "Stability' option, you must enter the 'Confidence Level for Variance Stability Test'. "
       "\r\n\r\nThe Range for the 'Confidence Level For Variance Stability Test' option  is 50.0 To 99.9"},
      {[](auto& p) { p.txtModelEst11.text = "4"; }, "txtModelEst11",
       "Range Input Error|The Range for 'Minimum Number of \r\nResiduals to Pool' is 5 to 10000."},
      {[](auto& p) { p.chkModelEst14.value = true; p.txtModelEst12.text = "45"; }, "txtModelEst12",
       "Range Input Error|The Range for the 'Confidence Level for Constancy Test' option  is 50.0 To 99.9."},
      {[](auto& p) { p.chkModelEst14.value = true; p.txtModelEst12.text = ""; p.txtModelEst12.enabled = false; },
       "txtModelEst12",
       "Option Input Error|Since you have enabled the 'Enable Test for Constancy of Parameters' "
       "option, you must enter the 'Confidence Level for Constancy Test (%)'. \r\n\r\nThe Range for "
       "the 'Confidence Level for Constancy Test' option  is 50.0 To 99.9."},
  };
  for (const Case& c : cases) {
    ModelEstimationPage p = Estimation();
    c.change(p);
    Validation v = Estimate(p);
    EXPECT_TRUE(v.failed) << c.field;
    EXPECT_EQ(v.field, c.field);
    EXPECT_EQ(Box(), c.box + kEnd);
  }
  // Disabled fields are passed over; the first failure stops the checks.
  ModelEstimationPage p = Estimation();
  p.txtModelEst1.text = "100";
  p.txtModelEst1.enabled = false;
  p.txtModelEst3.text = "500";
  p.txtModelEst7.text = "0";
  EXPECT_EQ(Estimate(p).field, "txtModelEst3");
}

TEST_F(Checks, FewOutliersTakeLocalTrendsAway) {
  ModelEstimationPage p = Estimation();
  p.chkModelEst8.value = true;
  p.txtModelEst6.text = "1";
  EXPECT_FALSE(Estimate(p).failed);
  EXPECT_FALSE(p.chkModelEst8.value);
  EXPECT_FALSE(p.chkModelEst8.enabled);
  p.txtModelEst6.text = "2";
  Estimate(p);
  EXPECT_TRUE(p.chkModelEst8.enabled);
}

TEST_F(Checks, DecliningTheOptionalPagesClearsThem) {
  ModelEstimationPage p = Estimation();
  groups.answer = YesNo::No;
  groups.group_count = 5;
  lambdas.answer = YesNo::No;
  lambdas.txtLambda_Est[0].text = "1.00";
  lambdas.txtLambda_Est[1].text = "0.50";
  EXPECT_FALSE(Estimate(p).failed);
  EXPECT_EQ(groups.group_count, 0);
  EXPECT_EQ(groups.visited, "True");
  EXPECT_EQ(lambdas.txtLambda_Est[0].text, "");
  EXPECT_EQ(lambdas.txtLambda_Est[1].text, "");
  EXPECT_EQ(lambdas.visited, "True");
  EXPECT_FALSE(lambdas.labels_visible);
}

TEST_F(Checks, GroupSizesAgainstTheObservations) {
  GroupPage g;
  g.txtGroup_PC[0].text = "0";
  Validation v = ValidateGroupPC(g, 60);
  EXPECT_EQ(v.field, "txtGroup_PC(0)");
  EXPECT_EQ(Box(), "Option Information|The number of groups must be a minimum of 2 and a maximum of 100." + kEnd);
  dialogs->shown.clear();
  g.txtGroup_PC[0].text = "30";
  EXPECT_EQ(ValidateGroupPC(g, 60).field, "txtGroup_PC(1)");
  dialogs->shown.clear();
  for (int i = 0; i < 12; ++i) g.txtGroup_PC[i].text = "5";
  EXPECT_FALSE(ValidateGroupPC(g, 60).failed);
  g.txtGroup_PC[12].text = "1";
  v = ValidateGroupPC(g, 60);
  EXPECT_EQ(v.field, "txtGroup_PC(12)");
  EXPECT_EQ(g.current_tab, 1);
  EXPECT_EQ(Box(), "Range Input Error|The Range for 'Sample Size of Each Group' is 1 to the maximum of "
                   "each group.\r\nThe total for all groups cannot exceed the maximum number of "
                   "observations in the Time Range, 60." + kEnd);
}

TEST_F(Checks, LambdaFieldsAfterTheFirst) {
  LambdaPage p;
  p.txtLambda_Est[0].text = "5.00";  // guarded when written, not here
  p.txtLambda_Est[1].text = "0.00";
  p.txtLambda_Est[2].text = "-1.0";
  EXPECT_FALSE(ValidateLambdaEst(p).failed);
  p.txtLambda_Est[3].text = "1.50";
  p.txtLambda_Est[3].enabled = false;
  EXPECT_FALSE(ValidateLambdaEst(p).failed);
  p.txtLambda_Est[3].enabled = true;
  EXPECT_EQ(ValidateLambdaEst(p).field, "txtLambda_Est(3)");
  EXPECT_EQ(Box(), "Range Input Error|The Range for Lambda Values is -1.0 to 1.00." + kEnd);
}

TEST_F(Checks, LeadForecastAndSimulationRanges) {
  AutoModelIdPage a;
  a.txtAutoModelID1.text = "7";
  EXPECT_FALSE(ValidateAutoModelID(a, 1).failed);
  EXPECT_TRUE(ValidateAutoModelID(a, 2).failed);
  EXPECT_EQ(Box(), "Range Input Error|The Range for the 'Maximum Lead For All Input Series That Are "
                   "Data Type 3 Which Allows Lead Effects To Be Incorporated Reflecting Anticipation "
                   "Of An Activity In The Series' option  is 1 To 6." + kEnd);
  a.txtAutoModelID1.text = "0";
  EXPECT_FALSE(ValidateAutoModelID(a, 2).failed);

  dialogs->shown.clear();
  ModelForecastingPage f;
  f.chkModelForecasting1.value = true;
  f.txtModelForecasting2.text = "99.9";
  EXPECT_FALSE(ValidateModelForecasting(f).failed);
  f.txtModelForecasting2.text = "49";
  EXPECT_TRUE(ValidateModelForecasting(f).failed);
  EXPECT_EQ(Box(), "Range Input Error|The Range for the 'Confidence Limit for the Forecasts(%)' "
                   "option  is 50.0 To 99.9." + kEnd);

  dialogs->shown.clear();
  SimulationPage s;
  s.chkSimulation1.value = true;
  s.txtSimulation1.text = "0.0";
  s.txtSimulation2.text = "10000";
  EXPECT_EQ(ValidateSimulation(s).field, "txtSimulation1");
  s.txtSimulation1.text = "0.1";
  EXPECT_EQ(ValidateSimulation(s).field, "txtSimulation2");
  EXPECT_EQ(Shown(), (std::vector<std::string>{
                         "Range Input Error|The Range for the 'Variance of the Noise Series' option  is 0.1 To 99.9" + kEnd,
                         "Range Input Error|The Range for the 'Seed Value to Start ( 0 for Clock)' option  is 0 To 9999" + kEnd}));
}

TEST_F(Checks, SomethingMustBeLeftToDo) {
  EXPECT_FALSE(CheckSomethingToDo(0, 0, 2, false, false, true, 0).failed);
  EXPECT_FALSE(CheckSomethingToDo(0, 0, 2, false, false, false, 91).failed);
  EXPECT_FALSE(CheckSomethingToDo(0, 2, 2, false, false, false, 0).failed);
  EXPECT_TRUE(CheckSomethingToDo(0, 0, 2, false, false, false, 0).failed);
  EXPECT_EQ(Box(), "FYI|You have disabled the options \"Enable Model Estimation\"; and \"Model "
                   "Forecasting\". You must select one of these before your data can be processed." + kEnd);
  dialogs->shown.clear();
  EXPECT_TRUE(CheckSomethingToDo(1, 2, 0, false, false, false, 0).failed);
  EXPECT_EQ(Box(), "FYI|You have disabled the options \"Enable simulation\", \"Enable Model "
                   "Estimation\"; and \"Model Forecasting\". You must select one of these before your "
                   "data can be processed." + kEnd);
}

// ---- Model pages -------------------------------------------------------------------------------

class ModelChecks : public Checks {
 protected:
  StartmodPage Noise() {
    StartmodPage p;
    SetNoiseDefaults(p);
    return p;
  }
  std::string Fails(StartmodPage p) {
    dialogs->shown.clear();
    Validation v = ValidateStartmod(p);
    EXPECT_TRUE(v.failed);
    return v.field + "|" + (dialogs->shown.empty() ? "" : Shown().back());
  }
  std::string Fails(InputmodPage p) {
    dialogs->shown.clear();
    Validation v = ValidateInputmod(p);
    EXPECT_TRUE(v.failed);
    return v.field + "|" + (dialogs->shown.empty() ? "" : Shown().back());
  }
};

TEST_F(ModelChecks, PolynomialCounts) {
  StartmodPage p = Noise();
  p.txtStartmod5.text = "4";
  p.txtStartmod6.text = "1";
  EXPECT_EQ(Fails(p), "txtStartmod5|Range Input Error|The maximum number of polynomials (AR + MA) in a model is 4." + kEnd);
  p.txtStartmod5.text = "5";
  p.txtStartmod6.text = "0";
  EXPECT_EQ(Fails(p), "txtStartmod5|Range Input Error|The range for AR Polynomials in a model is 0 to 4. "
                      "Moreover, the maximum number of polynomials (AR + MA) in a model is 4." + kEnd);
  p = Noise();
  p.txtStartmod1.text = "";
  EXPECT_EQ(Fails(p), "txtStartmod1|For Your Information|Since you have not indicated any Diffencing "
                      "Operators, AR Polynomials or MA Polynomials, You must enter a Constant." + kEnd);
  p = Noise();
  p.txtStartmod3.text = "4";
  EXPECT_EQ(Fails(p), "txtStartmod3|Range Input Error|The Range for Differencing Operators is 0 to 3." + kEnd);
  p = Noise();
  p.txtStartmod2.text = "1.5";
  EXPECT_EQ(Fails(p), "txtStartmod2|Range Input Error|The Range for Lambda Values is -1.0 to 1.00." + kEnd);
}

TEST_F(ModelChecks, ListsAgreeWithTheirCounts) {
  StartmodPage p = Noise();
  p.txtStartmod9.text = "0.5";
  EXPECT_EQ(Fails(p), "txtStartmod9|Input Error|Since you have indicated there are 0 AR Polynomial(s), "
                      "you cannot enter coefficients." + kEnd);
  p = Noise();
  p.txtStartmod6.text = "1";
  p.txtStartmod12.text = "0.5";
  EXPECT_EQ(Fails(p), "txtStartmod11|Input Error|Since you have indicated there are 1 MA Polynomial(s), "
                      "you must enter the Back Order Powers for all polynomials." + kEnd);
  p.txtStartmod11.text = "1";
  p.txtStartmod10.text = "1 1";
  EXPECT_EQ(Fails(p), "txtStartmod10|Input Error|Since you have indicated there are 1 MA Polynomial(s), "
                      "you must enter Parameters for each of the 1polynomials." + kEnd);
  p = Noise();
  p.txtStartmod3.text = "2";
  p.txtStartmod4.text = "1";
  EXPECT_EQ(Fails(p), "txtStartmod4|Input Error|Since you have indicated there is a total of 2 "
                      "Differencing Factor(s), you must enter a like number of Differencing Operators." + kEnd);
  p.txtStartmod3.text = "0";
  EXPECT_EQ(Fails(p), "txtStartmod4|Input Error|Since you have indicated there is  0 Differencing "
                      "Factor(s), you cannot enter Differencing Operators." + kEnd);
  p.txtStartmod3.text = "1";
  p.txtStartmod4.text = "1.5";
  EXPECT_EQ(Fails(p), "txtStartmod4|Range Input Error|All Back Order Powers  must be positive integers from 1 to 104." + kEnd);
  p.txtStartmod4.text = "105";
  EXPECT_EQ(Fails(p), "txtStartmod4|Range Input Error|All differencing Operators must be positive integers from 1 to 104." + kEnd);
}

TEST_F(ModelChecks, BackOrdersAndCoefficients) {
  StartmodPage p = Noise();
  p.txtStartmod5.text = "1";
  p.txtStartmod7.text = "3";
  p.txtStartmod8.text = "1 12 2";
  p.txtStartmod9.text = "0.1 0.2 0.3";
  EXPECT_EQ(Fails(p), "txtStartmod8|Input Error|Back Order Powers within a polynomial must be in ascending order." + kEnd);
  p.txtStartmod7.text = "1";
  p.txtStartmod8.text = "0";
  p.txtStartmod9.text = "0.1";
  EXPECT_EQ(Fails(p), "txtStartmod8|Range Input Error|All AR Polynomial Back Order Powers must be "
                      "positive integers from 1 to 104." + kEnd);
  p.txtStartmod8.text = "1";
  p.txtStartmod7.text = "0";
  EXPECT_EQ(Fails(p), "txtStartmod7|Range Input Error|The range for number of parameters in each AR "
                      "polynomial is 1 to 15." + kEnd);
  p.txtStartmod7.text = "1";
  p.txtStartmod9.text = "1.5";
  EXPECT_EQ(Fails(p), "txtStartmod9|Range Input Error|When there is only one (1) parameter in the "
                      "polynomial, the range for the AR coefficent is -1 to +1." + kEnd);
  p.txtStartmod7.text = "2";
  p.txtStartmod8.text = "1 2";
  p.txtStartmod9.text = "1.5 -1";
  dialogs->shown.clear();
  EXPECT_FALSE(ValidateStartmod(p).failed);
  EXPECT_EQ(p.txtStartmod9.text, "1.5 -1.0");
  p.txtStartmod9.text = "1.5 .";
  EXPECT_EQ(Fails(p), "txtStartmod9|Input Error|You have entered a decimal (.) without a coefficient number." + kEnd);
  p.txtStartmod9.text = "1.5";
  EXPECT_EQ(Fails(p), "txtStartmod9|Input Error|Since you have indicated there are 2 Parameter(s) for "
                      "all AR Polynomial(s), you must enter a like number of coefficients." + kEnd);
  p.txtStartmod8.text = "1";
  EXPECT_EQ(Fails(p), "txtStartmod8|Input Error|Since you have indicated there are 2 Parameter(s) for "
                      "all AR Polynomial(s), you must enter a like number of Back Order Powers." + kEnd);
}

TEST_F(ModelChecks, InputSeriesPage) {
  InputmodPage p;
  SetInputDefaults(p);
  dialogs->shown.clear();
  EXPECT_FALSE(ValidateInputmod(p).failed);  // numerator at lag 0 is allowed
  EXPECT_EQ(p.txtInputmod12.text, "1.0");
  p.txtInputmod6.text = "0";
  EXPECT_EQ(Fails(p), "txtInputmod6|Range Input Error|The range for Numerator Polynomials in a model is 1 to 3." + kEnd);
  p = InputmodPage{};
  SetInputDefaults(p);
  p.txtInputmod5.text = "2";
  EXPECT_EQ(Fails(p), "txtInputmod5|Range Input Error|The range for Denominator Polynomials in a model is 0 to 1." + kEnd);
  p.txtInputmod5.text = "1";
  EXPECT_EQ(Fails(p), "txtInputmod7|Range Input Error|The range for Number of Parameters in the "
                      "Denominator Polynomial is 1 to 2." + kEnd);
  p.txtInputmod7.text = "1";
  EXPECT_EQ(Fails(p), "txtInputmod9|Input Error|Since you have indicated there are 1 Denominator "
                      "Polynomial(s), you must enter the coefficients for all polynomials." + kEnd);
  p.txtInputmod9.text = "-1.2";
  p.txtInputmod8.text = "1";
  EXPECT_EQ(Fails(p), "txtInputmod9|Range Input Error|When there is only one (1) parameter in the "
                      "polynomial, the range for the Denominator coefficent is -1 to +1." + kEnd);
  p.txtInputmod9.text = "0.4";
  p.txtInputmod8.text = "3";
  EXPECT_EQ(Fails(p), "txtInputmod8|Range Input Error|All Denominator Back Order Powers must be "
                      "positive integers from 1 to 2." + kEnd);
  p.txtInputmod8.text = "1";
  p.txtInputmod10.text = "2";
  p.txtInputmod11.text = "0 1";
  p.txtInputmod12.text = "2 3";
  dialogs->shown.clear();
  EXPECT_FALSE(ValidateInputmod(p).failed);
  EXPECT_EQ(p.txtInputmod12.text, "2.0 3.0");
  p.txtInputmod11.text = "0 105";
  EXPECT_EQ(Fails(p), "txtInputmod11|Range Input Error|All Numerator Back Order Powers must be "
                      "positive integers from 0 to 104." + kEnd);
  p.txtInputmod11.text = "0 -1";
  EXPECT_EQ(Fails(p), "txtInputmod11|Range Input Error|All Back Order Powers must be positive "
                      "integers from 0 to 104." + kEnd);
  p.txtInputmod11.text = "0 1";
  p.txtInputmod12.text = "2";
  EXPECT_EQ(Fails(p), "txtInputmod12|Input Error|Since you have indicated there are 2 Parameter(s) "
                      "for all Numerator Polynomial(s), you must enter a like number of coefficients." + kEnd);
}

}  // namespace
}  // namespace tessaly::rules::testing
