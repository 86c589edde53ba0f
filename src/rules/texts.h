#pragma once
// Every text the rules subsystem shows or writes: box titles, messages, captions and the
// fixed names of the files it leaves beside the engine.
#include <array>
#include <string_view>

namespace tessaly::rules::text {

// ---- Files of the program's folder ----------------------------------------------------
inline constexpr std::string_view kEngineCnd = "ENGINE.CND";
inline constexpr std::string_view kEngineUsr = "ENGINE.USR";
inline constexpr std::string_view kEngineGo = "ENGINE.GO";
inline constexpr std::string_view kStartmod = "STARTMOD.123";
inline constexpr std::string_view kAllowMod = "ALLOWMOD.QVX";
inline constexpr std::string_view kSaveMod = "SAVEMOD.QVX";
inline constexpr std::string_view kNoTrend = "NOTREND.QVX";
inline constexpr std::string_view kTrend = "TREND.QVX";
inline constexpr std::string_view kGroupList = "GROUPLST.QVX";
inline constexpr std::string_view kAuditTrail = "AUDITTRAIL.RWF";

inline constexpr std::string_view kAllowModLine = "Modification Allowed";
inline constexpr std::string_view kSaveModLine = " Save Model";
inline constexpr std::string_view kNoTrendLine = "1";

// ---- Box titles ------------------------------------------------------------------------
inline constexpr std::string_view kRangeInputError = "Range Input Error";
inline constexpr std::string_view kOptionInputError = "Option Input Error";
inline constexpr std::string_view kInputError = "Input Error";
inline constexpr std::string_view kOptionInformation = "Option Information";
inline constexpr std::string_view kForYourInformation = "For Your Information";
inline constexpr std::string_view kFyi = "FYI";
inline constexpr std::string_view kFileDoesNotExist = "File does not exist";
inline constexpr std::string_view kSaveRulesTitle = "Save Rules";
inline constexpr std::string_view kCancellationNotice = "Cancellation Notice";
inline constexpr std::string_view kAuditTrailTitle = "AUDITTRAIL#2";

// ---- Loading and archiving the rules ----------------------------------------------------
inline constexpr std::string_view kNoRulesAtAll =
    "No Present Conditions or Default Conditions files exist. Please contact QVX.";
inline constexpr std::string_view kDefaultsRestored =
    "No Present Rules file exists. Defaults conditions have been restored.";
inline constexpr std::string_view kRulesSavedForProcessing =
    "The changed rules were saved to ENGINE.USR for processing purposes.";
inline constexpr std::string_view kRulesArchivedHead =
    "The changed rules made to ENGINE.USR were saved to ";
inline constexpr std::string_view kRulesArchivedTail = " for archival purposes.";
inline constexpr std::string_view kAuditTrailTrace =
    "you have reached mnu_forecast_Click\\wizard finished";

// ---- Models -----------------------------------------------------------------------------
inline constexpr std::string_view kInitialModelSavedHead = "The initial model was saved to ";
inline constexpr std::string_view kModelNotSaved = "The model was not saved.";
inline constexpr std::string_view kNoiseTitleCausal = "Enter/Edit Noise Model for series ";
inline constexpr std::string_view kNoiseTitleNoncausal = "Enter/Edit Noncausal Model for series ";
inline constexpr std::string_view kInputTitle = "Enter/Edit Model for Input Series ";

// ---- Lists of the wizard -----------------------------------------------------------------
inline constexpr std::string_view kSelectFile = "Select File";
inline constexpr std::string_view kPresentRules = "Present Rules";
inline constexpr std::string_view kSelectModel = "Select Model";
inline constexpr std::string_view kNewModel = "New";

// ---- Wizard: window, steps, buttons ------------------------------------------------------
inline constexpr std::string_view kWizardTitle = "Model and Rules Wizard";
inline constexpr std::string_view kStepIntro = "Intro";
inline constexpr std::string_view kStepRules = "Rules";
inline constexpr std::string_view kStepNonautomatic = "Nonautomatic Models";
inline constexpr std::string_view kStepModelNoncausal = "Model Parameters - Noncausal";  // 5300
inline constexpr std::string_view kStepModelCausal = "Model Parameters - Causal";        // 5301
inline constexpr std::string_view kStepRulesNoncausal = "Rules - Noncausal";             // 5400
inline constexpr std::string_view kStepRulesCausal = "Rule - Causal";                    // 5401
inline constexpr std::string_view kStepFinished = "Finished!";
inline constexpr std::string_view kInstructionIntro =
    "The Wizard will help you through the many options available to you regarding model and "
    "related rules. To get started, you must select one of the options below.";
inline constexpr std::string_view kInstructionRules = "Select one of the following options";
inline constexpr std::string_view kInstructionModels = "Select one of the following model options";
inline constexpr std::string_view kInstructionFinished =
    "The wizard is finished collecting information";
inline constexpr std::array<std::string_view, 5> kButtons = {"Help", "Cancel", "< &Back",
                                                             "&Next >", "&Finish"};

inline constexpr std::array<std::string_view, 6> kModelingTypeCaptions = {
    "2. With User  Rules",
    "4. Explicit Model With User Rules",
    "1. With QVX Rules",
    "3. Implicit Canned Model With QVX Rules",
    "5. Identification Only",
    "6. Monte Carlo Simulation With Explicit Model"};
inline constexpr std::array<std::string_view, 6> kModelingTypeHeadings = {
    "AUTOMATIC:", "USER SPECIFIED MODEL:", "AUTOMATIC:", "USER SPECIFIED MODEL:", "SPECIAL:",
    "SPECIAL:"};

// optConditions by index (1 has no caption of its own).
inline constexpr std::array<std::string_view, 7> kConditionCaptions = {
    "Use Rules In Memory",
    "",
    "Edit/Use Present Or Existing Rules",
    "Predict Defaults - Only Forecasts Will Be Generated",
    "Tune Defaults - Model Is Tuned And Forecasts Generated, If Speicified",
    "Remodel Defaults - Model Is Tune, Remodeled, And Forecasts Generated, If Specified",
    "Restore Default Rules"};
inline constexpr std::array<std::string_view, 7> kConditionExplanations = {
    "QVX proprietary(undisclosed) rules will be used.",
    "Selected preset rules will replace present rules in ENGINE.USR. ",
    "Present rules in ENGINE.USR or selected rules will be shown. ",
    "", "", "",
    "We will copy default rules from ENGINE.CND to ENGINE.USR. "};
inline constexpr std::string_view kAutomaticRulesFrame = "Automatic Modeling Rules";
inline constexpr std::string_view kNonautomaticRulesFrame = "Nonautomatic Modeling Rules";

inline constexpr std::string_view kImplicitModelCaption = "Use Implicit Model From List";
inline constexpr std::string_view kImplicitModelCaptionNonseasonal =
    "Use Implicit Model From List(Nonseasonal Models)";
inline constexpr std::string_view kIdentificationOnlyCaption = "Identification Only";
inline constexpr std::string_view kExplicitModelCaption = "Use Explicit Model From List";
inline constexpr std::string_view kAllowModificationsCaption = "Allow Modifications";
inline constexpr std::string_view kLocalTimeTrendCaption = "Incorporate Local Time Trend(s)";
inline constexpr std::string_view kReviewEditCaption = "Review/Edit Model Parameters";
inline constexpr std::string_view kUseModelCaption =
    "Use Model To Process Series, Review/Edit Conditions";

inline constexpr std::string_view kModelExplainPreset =
    "The selected preset model will be processed using rules in memory.";
inline constexpr std::string_view kModelExplainIdentification =
    "Descriptive measures(Mean,Std Deviation,ACF,PACF) will be computed and reported";
inline constexpr std::string_view kModelExplainExplicit =
    "The model will be shown for your edit/review. ";

// ---- Sub-page titles --------------------------------------------------------------------
inline constexpr std::string_view kAutoModelIdTitle = "Enter Initial Model Identification parameters";
inline constexpr std::string_view kModelEstimation0Title = "Enter Model Estimation parameters";
inline constexpr std::string_view kModelEstimation1Title = "Enter Model Estimation Parameters";
inline constexpr std::string_view kLambdaTitle = "Enter Lambda Values for Estimation";
inline constexpr std::string_view kForecastingTitle = "Enter Model Forecasting parameters";
inline constexpr std::string_view kSimulationTitle = "Enter Simulation parameters, if so desired";

// The option tree of the estimation page: key and text of each node, in order.
inline constexpr std::array<std::string_view, 4> kTreeKeys = {"ME1", "ME2", "ME3", "ME4"};
inline constexpr std::array<std::string_view, 4> kTreeTexts = {
    "Multiple Groups/Panels", "Convergence Criteria", "Stepdown Modeling", "Stepup Modeling"};

// ---- Wizard messages ---------------------------------------------------------------------
inline constexpr std::string_view kMustSelectModel = "You must select a model before continuing.";
inline constexpr std::string_view kSelectOneOption =
    " You must select at least one of the options or there will not be anything to be done.";
inline constexpr std::string_view kSelectModelToSave =
    " Since you have enabled the Save Models Option, you must select at least one of the models "
    "to be saved.";
inline constexpr std::string_view kCancelQuestion =
    "Are you sure that you want to cancel?  You will lose any changes that you have made.";
inline constexpr std::string_view kNoForecasts =
    "Since the number of forecasts equals zero(0), \"Enable Model Forecasting\" And \"Display "
    "Model Forecasting\"  will be disabled.";
inline constexpr std::string_view kNothingEnabledAutomatic =
    "You have disabled the options \"Enable Model Estimation\"; and \"Model Forecasting\". You "
    "must select one of these before your data can be processed.";
inline constexpr std::string_view kNothingEnabledExplicit =
    "You have disabled the options \"Enable simulation\", \"Enable Model Estimation\"; and "
    "\"Model Forecasting\". You must select one of these before your data can be processed.";

// ---- Option validation --------------------------------------------------------------------
namespace check {
inline constexpr std::string_view kMaximumLead =
    "The Range for the 'Maximum Lead For All Input Series That Are Data Type 3 Which Allows Lead "
    "Effects To Be Incorporated Reflecting Anticipation Of An Activity In The Series' option  is "
    "1 To 6.";
inline constexpr std::string_view kGroupCount =
    "The number of groups must be a minimum of 2 and a maximum of 100.";
inline constexpr std::string_view kGroupSize =
    "The Range for 'Sample Size of Each Group' is 1 to the maximum of each group.";
inline constexpr std::string_view kGroupTotal =
    "The total for all groups cannot exceed the maximum number of observations in the Time "
    "Range, ";
inline constexpr std::string_view kLambdaRange = "The Range for Lambda Values is -1.0 to 1.00.";
inline constexpr std::string_view kSquares =
    "The Range for the '% Change in Error Sum of Squares' option  is 00.0 To 99.9";
inline constexpr std::string_view kParameterValues =
    "The Range for the '% Change in The Parameter Values' option  is 00.0 To 99.9.";
inline constexpr std::string_view kIterations =
    "The Range for the 'Maximum Number of Iterations' is 0 to 200.";
inline constexpr std::string_view kMustEnterSS =
    "Since you have enabled the 'Sufficiency (Stochastic Structure)' option, you must enter the "
    "'Confidence Level for Sufficiency Test'. ";
inline constexpr std::string_view kConfidenceLevel =
    "The Range for the 'Confidence Level' option  is 50.0 To 99.9.";
inline constexpr std::string_view kOutliers =
    "The Range for the 'Maximum Number of Outliers to be Identified' is 0 to ";
inline constexpr std::string_view kObservationsInGroupHead =
    "The Range for 'Minimum No. of Observations in ";
inline constexpr std::string_view kObservationsInGroupTail = "Group' is 2 to ";
inline constexpr std::string_view kMustEnterNecessity =
    "Since you have enabled the 'Necessity' option, you must enter the 'Confidence Level for "
    "Necessity Test'. ";
inline constexpr std::string_view kMustEnterVariance =
    "Since you have enabled the 'Enable the Automatic Fixup for Variance Stability' option, you "
    "must enter the 'Confidence Level for Variance Stability Test'. ";
inline constexpr std::string_view kVarianceRange =
    "The Range for the 'Confidence Level For Variance Stability Test' option  is 50.0 To 99.9";
inline constexpr std::string_view kResidualsHead = "The Range for 'Minimum Number of ";
inline constexpr std::string_view kResidualsTail = "Residuals to Pool' is 5 to ";
inline constexpr std::string_view kConstancyRange =
    "The Range for the 'Confidence Level for Constancy Test' option  is 50.0 To 99.9.";
inline constexpr std::string_view kMustEnterConstancy =
    "Since you have enabled the 'Enable Test for Constancy of Parameters' option, you must enter "
    "the 'Confidence Level for Constancy Test (%)'. ";
inline constexpr std::string_view kForecastConfidence =
    "The Range for the 'Confidence Limit for the Forecasts(%)' option  is 50.0 To 99.9.";
inline constexpr std::string_view kNoiseVariance =
    "The Range for the 'Variance of the Noise Series' option  is 0.1 To 99.9";
inline constexpr std::string_view kSeed =
    "The Range for the 'Seed Value to Start ( 0 for Clock)' option  is 0 To 9999";

// Field notes.
inline constexpr std::string_view kOutliersRuntimeNote =
    "You should be aware that using a large number input can significantly affect the runtime "
    "of the program.  See Help for a more detailed explanation..";
inline constexpr std::string_view kVarianceNotAvailable =
    "Since you have disabled the 'Enable The Automatic Fixup For Variance Stability' option, the "
    "'Confidence Level For Variance Stability Test' option is not available.";

// Model pages.
inline constexpr std::string_view kMustEnterConstant =
    "Since you have not indicated any Diffencing Operators, AR Polynomials or MA Polynomials, You "
    "must enter a Constant.";
inline constexpr std::string_view kDifferencingRange =
    "The Range for Differencing Operators is 0 to 3.";
inline constexpr std::string_view kArRange = "The range for AR Polynomials in a model is 0 to 4.";
inline constexpr std::string_view kSumSentence =
    "Moreover, the maximum number of polynomials (AR + MA) in a model is 4.";
inline constexpr std::string_view kMaRange = "The range for MA Polynomials in a model is 0 to 4.";
inline constexpr std::string_view kSumRange =
    "The maximum number of polynomials (AR + MA) in a model is 4.";
inline constexpr std::string_view kShapeDiffPowers =
    "All Back Order Powers  must be positive integers from 1 to 104.";
inline constexpr std::string_view kShapeParams =
    "Number of  Parameters in each polynomial must be positive integers from 1 to 15.";
inline constexpr std::string_view kShapePowers =
    "All Back Order Powers must be positive integers from 1 to 104.";
inline constexpr std::string_view kSinceThereAre = "Since you have indicated there are ";
inline constexpr std::string_view kArNoCoefficients = " AR Polynomial(s), you cannot enter coefficients.";
inline constexpr std::string_view kArNoPowers = " AR Polynomial(s), you cannot enter back order powers.";
inline constexpr std::string_view kArNoParams = " AR Polynomial(s), you cannot enter parameters.";
inline constexpr std::string_view kArNeedCoefficients =
    " AR Polynomial(s), you must enter the coefficients for all polynomials.";
inline constexpr std::string_view kArNeedPowers =
    " AR Polynomial(s), you must enter the back order powers for all polynomials.";
inline constexpr std::string_view kArNeedParams =
    " AR Polynomial(s), you must enter the number of parameters in each polynomial.";
inline constexpr std::string_view kMaNoCoefficients = " MA Polynomial(s), you cannot enter coefficients.";
inline constexpr std::string_view kMaNoPowers = " MA Polynomial(s), you cannot enter Back Order Powers.";
inline constexpr std::string_view kMaNoParams = " MA Polynomial(s), you cannot enter parameters.";
inline constexpr std::string_view kMaNeedCoefficients =
    " MA Polynomial(s), you must enter the coefficients for all polynomials.";
inline constexpr std::string_view kMaNeedPowers =
    " MA Polynomial(s), you must enter the Back Order Powers for all polynomials.";
inline constexpr std::string_view kMaNeedParams =
    " MA Polynomial(s), you must enter the number of parameters in each polynomial.";
inline constexpr std::string_view kDiffTooFewHead = "Since you have indicated there is a total of ";
inline constexpr std::string_view kDiffTooFewTail =
    " Differencing Factor(s), you must enter a like number of Differencing Operators.";
inline constexpr std::string_view kDiffNoneHead = "Since you have indicated there is  ";
inline constexpr std::string_view kDiffNoneTail =
    " Differencing Factor(s), you cannot enter Differencing Operators.";
inline constexpr std::string_view kDiffItemRange =
    "All differencing Operators must be positive integers from 1 to 104.";
inline constexpr std::string_view kArParamRange =
    "The range for number of parameters in each AR polynomial is 1 to 15.";
inline constexpr std::string_view kArParamCount = " AR Polynomial(s), you must enter Parameters for each of the ";
inline constexpr std::string_view kArParamCountTail = "polynomial(s).";
inline constexpr std::string_view kArPowersCount =
    " Parameter(s) for all AR Polynomial(s), you must enter a like number of Back Order Powers.";
inline constexpr std::string_view kArPowerRange =
    "All AR Polynomial Back Order Powers must be positive integers from 1 to 104.";
inline constexpr std::string_view kAscending =
    "Back Order Powers within a polynomial must be in ascending order.";
inline constexpr std::string_view kArCoefficientRange =
    "When there is only one (1) parameter in the polynomial, the range for the AR coefficent is -1 "
    "to +1.";
inline constexpr std::string_view kArCoefficientCount =
    " Parameter(s) for all AR Polynomial(s), you must enter a like number of coefficients.";
inline constexpr std::string_view kLoneDecimal =
    "You have entered a decimal (.) without a coefficient number.";
inline constexpr std::string_view kMaParamRange =
    "The range for number of parameters in each MA polynomial is 1 to 15.";
inline constexpr std::string_view kMaParamCount = " MA Polynomial(s), you must enter Parameters for each of the ";
inline constexpr std::string_view kMaParamCountTail = "polynomials.";
inline constexpr std::string_view kMaPowersCount =
    " Parameter(s) for all MA Polynomial(s), you must enter a like number of Back Order Powers.";
inline constexpr std::string_view kMaPowerRange =
    "All MA Polynomial Back Order Powers must be positive integers from 1 to 104.";
inline constexpr std::string_view kMaCoefficientRange =
    "When there is only one (1) parameter in the polynomial, the range for the MA coefficent is -1 "
    "to +1.";
inline constexpr std::string_view kMaCoefficientCount =
    " Parameter(s) for all MA Polynomial(s), you must enter a like number of coefficients.";

// Input series page.
inline constexpr std::string_view kDenRange = "The range for Denominator Polynomials in a model is 0 to 1.";
inline constexpr std::string_view kNumRange = "The range for Numerator Polynomials in a model is 1 to 3.";
inline constexpr std::string_view kNumRangeUpDown =
    "The range for Numerator Polynomials in a model is 0 to 3.";
inline constexpr std::string_view kDenParamsField =
    "The range for Number of Parameters in the Denominator Polynomial is 1 to 2.";
inline constexpr std::string_view kShapeDenParams =
    "Number of Parameters for each Denominator Polynomial must be positive integers from 1 to 2.";
inline constexpr std::string_view kShapeDenPowers =
    "All Back Order Powers must be positive integers from 1 to 2.";
inline constexpr std::string_view kShapeNumParams =
    "Number of Parameters for each Numerator Polynomial must be positive integers from 1 to 15.";
inline constexpr std::string_view kShapeNumPowers =
    "All Back Order Powers must be positive integers from 0 to 104.";
inline constexpr std::string_view kDenNoCoefficients =
    " Denominator Polynomial(s), you cannot enter coefficients.";
inline constexpr std::string_view kDenNoPowers =
    " Denominator Polynomial(s), you cannot enter back order powers.";
inline constexpr std::string_view kDenNoParams = " Denominator Polynomial(s), you cannot enter parameters.";
inline constexpr std::string_view kDenNeedCoefficients =
    " Denominator Polynomial(s), you must enter the coefficients for all polynomials.";
inline constexpr std::string_view kDenNeedPowers =
    " Denominator Polynomial(s), you must enter the back order powers for all polynomials.";
inline constexpr std::string_view kDenNeedParams =
    " Denominator Polynomial(s), you must enter the number of parameters in each polynomial.";
inline constexpr std::string_view kNumNoPowers = " Numerator Polynomial(s), you cannot enter Back Order Powers.";
inline constexpr std::string_view kNumNoCoefficients = " Numerator Polynomial(s), you cannot enter coefficients.";
inline constexpr std::string_view kNumNoParams = " Numerator Polynomial(s), you cannot enter parameters.";
inline constexpr std::string_view kNumNeedParams =
    " Numerator Polynomial(s), you must enter the number of parameters in each polynomial.";
inline constexpr std::string_view kNumNeedPowers =
    " Numerator Polynomial(s), you must enter the Back Order Powers for all polynomials.";
inline constexpr std::string_view kNumNeedCoefficients =
    " Numerator Polynomial(s), you must enter the coefficients for all polynomials.";
inline constexpr std::string_view kDenParamRange =
    "The range for number of parameters in each Denominator polynomial is 1 to 2.";
inline constexpr std::string_view kDenParamCount =
    " Denominator Polynomial, you must enter Parameters for the polynomial.";
inline constexpr std::string_view kDenPowersCount =
    " Parameter(s) for all Denominator Polynomials, you must enter a like number of Back Order "
    "Powers.";
inline constexpr std::string_view kDenPowerRange =
    "All Denominator Back Order Powers must be positive integers from 1 to 2.";
inline constexpr std::string_view kDenCoefficientRange =
    "When there is only one (1) parameter in the polynomial, the range for the Denominator "
    "coefficent is -1 to +1.";
inline constexpr std::string_view kDenCoefficientCount =
    " Parameter(s) for all Denominator Polynomial(s), you must enter a like number of "
    "coefficients.";
inline constexpr std::string_view kNumParamRange =
    "The range for number of parameters in each Numerator polynomial is 1 to 15.";
inline constexpr std::string_view kNumParamCount =
    " Numerator Polynomial(s), you must enter Parameter(s) for each of the ";
inline constexpr std::string_view kNumParamCountTail = "polynomial(s).";
inline constexpr std::string_view kNumPowersCount =
    " Parameter(s) for all Numerator Polynomial(s), you must enter a like number of Back Order "
    "Powers.";
inline constexpr std::string_view kNumPowerRange =
    "All Numerator Back Order Powers must be positive integers from 0 to 104.";
inline constexpr std::string_view kNumCoefficientCount =
    " Parameter(s) for all Numerator Polynomial(s), you must enter a like number of coefficients.";
}  // namespace check

}  // namespace tessaly::rules::text
