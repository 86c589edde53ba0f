#include "rules/page_rules.h"

#include "platform/dialogs.h"
#include "platform/numfmt.h"
#include "rules/rule_keys.h"
#include "rules/rule_values.h"
#include "rules/texts.h"

namespace tessaly::rules {

namespace {

void SetText(TextField& f, std::string text, bool enabled = true) {
  f.text = std::move(text);
  f.enabled = enabled;
}

void FillIfEmpty(TextField& f, const char* value) {
  f.enabled = true;
  if (IsBlank(f.text)) f.text = value;
}

}  // namespace

// ---- Identification --------------------------------------------------------------------

void AutoModelID_get(const RulesText& rules, AutoModelIdPage& page) {
  page.chkAutoModelID1.value = IntegerValue(rules.GetRule(key::kIntermittent)) != 0;
  page.chkAutoModelID2.value = IntegerValue(rules.GetRule(key::kDifference)) != 0;
  page.chkAutoModelID3.value = IntegerValue(rules.GetRule(key::kConstrain)) != 0;
  page.txtAutoModelID1.text = LastDigit(rules.GetRule(key::kMaximumLead));
}

void AutoModelID_put(RulesText& rules, const AutoModelIdPage& page, ModelingType type,
                     int series_count) {
  if (type == ModelingType::WithUserRules) {
    if (series_count == 1) {
      rules.PutRule(key::kIntermittent, FlagValue(page.chkAutoModelID1.value));
    } else if (series_count > 1) {
      rules.PutRule(key::kDifference, FlagValue(page.chkAutoModelID2.value));
      rules.PutRule(key::kConstrain, FlagValue(page.chkAutoModelID3.value));
      rules.PutRule(key::kMaximumLead, MaximumLeadValue(page.txtAutoModelID1.text));
    }
  } else if (type == ModelingType::ExplicitModelUserRules && series_count > 1) {
    rules.PutRule(key::kDifference, FlagValue(false));
    rules.PutRule(key::kConstrain, FlagValue(page.chkAutoModelID3.value));
    rules.PutRule(key::kMaximumLead, "   0");
  }
}

// ---- Estimation ------------------------------------------------------------------------

void ClearEstimationPage(ModelEstimationPage& p) {
  for (CheckField* c : {&p.chkModelEst2, &p.chkModelEst3, &p.chkModelEst5, &p.chkModelEst7,
                        &p.chkModelEst8, &p.chkModelEst9, &p.chkModelEst11, &p.chkModelEst13,
                        &p.chkModelEst14, &p.chkModelEst15})
    SetCheck(*c, false, false);
  for (TextField* t : {&p.txtModelEst1, &p.txtModelEst2, &p.txtModelEst3, &p.txtModelEst4,
                       &p.txtModelEst5, &p.txtModelEst6, &p.txtModelEst7, &p.txtModelEst9,
                       &p.txtModelEst10, &p.txtModelEst11, &p.txtModelEst12})
    SetText(*t, "", false);
  p.chkModelEst1.value = false;
}

void EnableEstimationPage(ModelEstimationPage& p, bool fill_defaults) {
  p.chkModelEst1.value = true;
  for (CheckField* c : {&p.chkModelEst2, &p.chkModelEst3, &p.chkModelEst5, &p.chkModelEst7,
                        &p.chkModelEst8, &p.chkModelEst9, &p.chkModelEst11, &p.chkModelEst13,
                        &p.chkModelEst14, &p.chkModelEst15})
    c->enabled = true;
  using D = EstimationDefaults;
  const std::pair<TextField*, const char*> fields[] = {
      {&p.txtModelEst1, D::kSquares},           {&p.txtModelEst2, D::kParameterValues},
      {&p.txtModelEst3, D::kIterations},        {&p.txtModelEst4, D::kSS},
      {&p.txtModelEst5, D::kDS},                {&p.txtModelEst6, D::kOutliers},
      {&p.txtModelEst7, D::kObservationsInGroup}, {&p.txtModelEst9, D::kNecessity},
      {&p.txtModelEst11, D::kResidualsToPool},  {&p.txtModelEst10, D::kVariance},
      {&p.txtModelEst12, D::kConstancy}};
  for (auto [field, value] : fields) {
    if (fill_defaults)
      FillIfEmpty(*field, value);
    else
      field->enabled = true;
  }
}

void ModelEstimation_Get(const RulesText& r, ModelEstimationPage& p) {
  if (!FlagOn(r.GetRule(key::kModelEstimation))) {
    ClearEstimationPage(p);
    return;
  }
  EnableEstimationPage(p, false);
  p.txtModelEst1.text = LeftChars(r.GetRule(key::kSquares), 4);
  p.txtModelEst2.text = LeftChars(r.GetRule(key::kParameterValues), 4);
  p.txtModelEst3.text = RightChars(Trim(r.GetRule(key::kIterations)), 3);
  p.chkModelEst11.value = FlagOn(r.GetRule(key::kNecessityTest));
  p.txtModelEst9.text = LeftChars(r.GetRule(key::kLevelForNecessity), 4);
  p.chkModelEst2.value = FlagOn(r.GetRule(key::kStochastic));
  p.txtModelEst4.text = LeftChars(r.GetRule(key::kSS), 4);
  p.chkModelEst3.value = FlagOn(r.GetRule(key::kDeterministic));
  p.txtModelEst5.text = LeftChars(r.GetRule(key::kDS), 4);
  p.txtModelEst6.text = RightChars(Trim(r.GetRule(key::kToBeIdentified)), 4);
  p.chkModelEst5.value = FlagOn(r.GetRule(key::kIncludePulse));
  p.chkModelEst7.value = FlagOn(r.GetRule(key::kIncludeStep));
  p.txtModelEst7.text = LeftChars(r.GetRule(key::kObservationsInGroup), 4);
  p.chkModelEst9.value = FlagOn(r.GetRule(key::kIncludeSeasonalPulse));
  p.chkModelEst8.value = FlagOn(r.GetRule(key::kLocalTrend));
  p.chkModelEst15.value = FlagOn(r.GetRule(key::kFixup));
  p.chkModelEst13.value = FlagOn(r.GetRule(key::kDiscrete));
  p.txtModelEst10.text = LeftChars(r.GetRule(key::kLevelForVariance), 4);
  p.txtModelEst11.text = LeftChars(r.GetRule(key::kResidualsToPool), 4);
  p.chkModelEst14.value = FlagOn(r.GetRule(key::kConstancyOfParameters));
  p.txtModelEst12.text = LeftChars(r.GetRule(key::kConstancyTest), 4);
}

void ModelEstimation_put(RulesText& r, const ModelEstimationPage& p) {
  r.PutRule(key::kModelEstimation, FlagValue(p.chkModelEst1.value));
  if (!p.chkModelEst1.value) return;
  r.PutRule(key::kSquares, LeftChars(p.txtModelEst1.text, 4));
  r.PutRule(key::kParameterValues, LeftChars(p.txtModelEst2.text, 4));
  r.PutRule(key::kIterations, IterationsValue(p.txtModelEst3.text));
  r.PutRule(key::kNecessityTest, FlagValue(p.chkModelEst11.value));
  r.PutRule(key::kLevelForNecessity, RightChars(p.txtModelEst9.text, 4));
  r.PutRule(key::kStochastic, FlagValue(p.chkModelEst2.value));
  r.PutRule(key::kSS, RightChars(p.txtModelEst4.text, 4));
  r.PutRule(key::kDeterministic, FlagValue(p.chkModelEst3.value));
  r.PutRule(key::kDS, SmallLevelValue(p.txtModelEst5.text));
  r.PutRule(key::kToBeIdentified, HundredsValue(p.txtModelEst6.text));
  r.PutRule(key::kIncludePulse, FlagValue(p.chkModelEst5.value));
  r.PutRule(key::kIncludeStep, FlagValue(p.chkModelEst7.value));
  r.PutRule(key::kObservationsInGroup, HundredsValue(p.txtModelEst7.text));
  r.PutRule(key::kIncludeSeasonalPulse, FlagValue(p.chkModelEst9.value));
  r.PutRule(key::kLocalTrend, FlagValue(p.chkModelEst8.value));
  r.PutRule(key::kFixup, FlagValue(p.chkModelEst15.value));
  r.PutRule(key::kDiscrete, FlagValue(p.chkModelEst13.value));
  r.PutRule(key::kLevelForVariance, SmallLevelValue(p.txtModelEst10.text));
  r.PutRule(key::kResidualsToPool, ResidualsToPoolValue(p.txtModelEst11.text));
  r.PutRule(key::kConstancyOfParameters, FlagValue(p.chkModelEst14.value));
  r.PutRule(key::kConstancyTest, LeftChars(p.txtModelEst12.text, 4));
}

// ---- Forecasting -----------------------------------------------------------------------

void ClearForecastingPage(ModelForecastingPage& p, bool disable_enable_box) {
  SetCheck(p.chkModelForecasting1, false, !disable_enable_box);
  for (CheckField* c : {&p.chkModelForecasting3, &p.chkModelForecasting4,
                        &p.chkModelForecasting5, &p.chkModelForecasting6})
    SetCheck(*c, false, false);
  SetText(p.txtModelForecasting2, "", false);
}

void ModelForecasting_Get(const RulesText& r, ModelForecastingPage& p, int forecasts) {
  if (forecasts == 0) {
    platform::Dialogs().Message(std::string(text::kNoForecasts), platform::mb::OKOnly,
                                std::string(text::kOptionInformation));
    ClearForecastingPage(p, true);
    return;
  }
  if (!FlagOn(r.GetRule(key::kModelForecasting))) {
    ClearForecastingPage(p, false);
    return;
  }
  p.chkModelForecasting1 = {true, true, p.chkModelForecasting1.visible};
  SetText(p.txtModelForecasting2, LeftChars(r.GetRule(key::kForTheForecasts), 4));
  SetCheck(p.chkModelForecasting3, FlagOn(r.GetRule(key::kPositiveValues)), true);
  SetCheck(p.chkModelForecasting4, FlagOn(r.GetRule(key::kIntegers)), true);
  SetCheck(p.chkModelForecasting5, FlagOn(r.GetRule(key::kLastObservation)), true);
  SetCheck(p.chkModelForecasting6, FlagOn(r.GetRule(key::kPulseToSeasonal)), true);
}

void ModelForecasting_put(RulesText& r, const ModelForecastingPage& p, int forecasts) {
  r.PutRule(key::kModelForecasting, FlagValue(p.chkModelForecasting1.value));
  r.PutRule(key::kValuesToCompute, ValuesToComputeValue(forecasts));
  if (!p.chkModelForecasting1.value) return;
  r.PutRule(key::kForTheForecasts, LeftChars(p.txtModelForecasting2.text, 4));
  r.PutRule(key::kPositiveValues, FlagValue(p.chkModelForecasting3.value));
  r.PutRule(key::kIntegers, FlagValue(p.chkModelForecasting4.value));
  r.PutRule(key::kLastObservation, FlagValue(p.chkModelForecasting5.value));
  r.PutRule(key::kPulseToSeasonal, FlagValue(p.chkModelForecasting6.value));
}

// ---- Simulation ------------------------------------------------------------------------

void ClearSimulationPage(SimulationPage& p) {
  p.chkSimulation1.value = false;
  SetText(p.txtSimulation1, "", false);
  SetText(p.txtSimulation2, "", false);
}

void Sim_Get(const RulesText& r, SimulationPage& p) {
  bool on = FlagOn(r.GetRule(key::kSimulationEnabled));
  p.chkSimulation1.value = on;
  SetText(p.txtSimulation1, LeftChars(r.GetRule(key::kNoiseSeries), 4), on);
  SetText(p.txtSimulation2, LeftChars(r.GetRule(key::kSeedValue), 4), on);
}

void Sim_Put(RulesText& r, const SimulationPage& p) {
  r.PutRule(key::kSimulationEnabled, FlagValue(p.chkSimulation1.value));
  if (!p.chkSimulation1.value) return;
  r.PutRule(key::kNoiseSeries, NoiseSeriesValue(p.txtSimulation1.text));
  r.PutRule(key::kSeedValue, SeedValue(p.txtSimulation2.text));
}

// ---- Lambda values ---------------------------------------------------------------------

int Lambda_Est_Get(const RulesText& r, LambdaPage& p) {
  std::string list = r.GetRule(key::kLambdaList);
  int count = 0;
  for (size_t i = 0; i < p.txtLambda_Est.size(); ++i) {
    size_t col = i * 4;
    std::string field = col < list.size() ? list.substr(col, 4) : std::string();
    if (i == 0 && IsBlank(field)) field = "1.00";
    p.txtLambda_Est[i].text = field;
    if (!IsBlank(field)) ++count;
  }
  return count;
}

int Lambda_est_Put(RulesText& r, LambdaPage& p) {
  auto& f = p.txtLambda_Est;
  // A blank second field empties the first (the "no lambda" entry of the page).
  if (f[1].text == " ") f[0].text.clear();
  int count = 0;
  for (const TextField& field : f) {
    if (IsBlank(field.text)) break;
    double v = platform::Val(field.text);
    if (v < -1.0 || v > 1.0) break;
    ++count;
  }
  std::string list;
  for (const TextField& field : f) list += LeftChars(field.text, 4);
  r.PutRule(key::kEvaluateInEst, CountValue(count));
  r.PutRule(key::kLambdaList, list);
  return count;
}

// ---- Groups ----------------------------------------------------------------------------

int GroupCount(const GroupPage& p) {
  int n = 0;
  for (const TextField& f : p.txtGroup_PC) {
    if (IsBlank(f.text) || platform::Val(f.text) <= 0) break;
    ++n;
  }
  return n;
}

void Group_PC_Put(RulesText& r, const GroupPage& p) {
  r.PutRule(key::kNumberOfGroups, NumberOfGroupsValue(p.group_count));
}

}  // namespace tessaly::rules
