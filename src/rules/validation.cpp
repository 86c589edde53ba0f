#include "rules/validation.h"

#include "platform/dialogs.h"
#include "platform/numfmt.h"
#include "rules/model_file.h"
#include "rules/rule_values.h"
#include "rules/texts.h"

namespace tessaly::rules {

namespace t = text::check;
using platform::Val;
using platform::ValInt;

namespace {

Validation Fail(std::string_view title, const std::string& message, std::string field) {
  platform::Dialogs().Message(message + "\r\n\r\n",
                              static_cast<int16_t>(platform::mb::OKOnly | platform::mb::Exclamation),
                              std::string(title));
  return {true, std::move(field)};
}

Validation Range(const std::string& message, std::string field) {
  return Fail(text::kRangeInputError, message, std::move(field));
}

bool Within(const TextField& f, double low, double high) {
  double v = Val(f.text);
  return v >= low && v <= high;
}

std::string S(std::string_view s) { return std::string(s); }
std::string N(int v) { return std::to_string(v); }
std::string Paragraphs(std::string_view a, std::string_view b) { return S(a) + "\r\n\r\n" + S(b); }

int Count(const TextField& f) { return ValInt(f.text); }
bool Given(const TextField& f) { return !IsBlank(f.text); }
bool HasAny(const std::string& text, std::string_view chars) {
  return Trim(text).find_first_of(chars) != std::string::npos;
}

// One kind of polynomial of a model page: its count and its three lists.
struct PolyKind {
  int count;
  TextField* params;
  TextField* powers;
  TextField* coefficients;
  const char* params_field;
  const char* powers_field;
  const char* coefficients_field;
};

struct AgreementTexts {
  std::string_view no_coefficients, no_powers, no_params;
  std::string_view need_coefficients, need_powers, need_params;
};

// Counts against lists: none may be given for no polynomials, all must be for some.
Validation Agreement(const PolyKind& k, const AgreementTexts& tx) {
  std::string head = S(t::kSinceThereAre) + N(k.count);
  if (k.count == 0) {
    if (Given(*k.coefficients)) return Fail(text::kInputError, head + S(tx.no_coefficients), k.coefficients_field);
    if (Given(*k.powers)) return Fail(text::kInputError, head + S(tx.no_powers), k.powers_field);
    if (Given(*k.params)) return Fail(text::kInputError, head + S(tx.no_params), k.params_field);
  } else if (k.count > 0) {
    if (!Given(*k.coefficients)) return Fail(text::kInputError, head + S(tx.need_coefficients), k.coefficients_field);
    if (!Given(*k.powers)) return Fail(text::kInputError, head + S(tx.need_powers), k.powers_field);
    if (!Given(*k.params)) return Fail(text::kInputError, head + S(tx.need_params), k.params_field);
  }
  return {};
}

Validation Differencing(const TextField& count_field, TextField& list, const char* list_field) {
  int n = Count(count_field);
  auto items = SplitList(list.text);
  int given = static_cast<int>(items.size());
  if (n > 0 && given < n)
    return Fail(text::kInputError, S(t::kDiffTooFewHead) + N(n) + S(t::kDiffTooFewTail), list_field);
  if (n == 0 && given > 0)
    return Fail(text::kInputError, S(t::kDiffNoneHead) + N(n) + S(t::kDiffNoneTail), list_field);
  for (const auto& item : items) {
    double v = Val(item);
    if (v < 1 || v > 104) return Range(S(t::kDiffItemRange), list_field);
  }
  return {};
}

bool LoneDecimal(const std::vector<std::string>& items) {
  for (const auto& i : items)
    if (i == ".") return true;
  return false;
}

// Coefficients without a decimal point are given ".0".
void NormaliseCoefficients(TextField& f) {
  auto items = SplitList(f.text);
  if (items.empty()) return;
  std::string out;
  for (auto& i : items) {
    if (!i.empty() && i.find('.') == std::string::npos) i += ".0";
    if (!out.empty()) out += ' ';
    out += i;
  }
  f.text = out;
}

// Back orders strictly ascending within each polynomial.
bool Ascending(const std::vector<std::string>& params, const std::vector<std::string>& powers) {
  size_t at = 0;
  for (const auto& p : params) {
    int n = ValInt(p);
    for (int j = 1; j < n && at + j < powers.size(); ++j)
      if (Val(powers[at + j]) <= Val(powers[at + j - 1])) return false;
    at += std::max(n, 0);
  }
  return true;
}

// Coefficients of one-parameter polynomials within -1 to 1.
bool SingleCoefficientsInRange(const std::vector<std::string>& params,
                               const std::vector<std::string>& coefficients) {
  size_t at = 0;
  for (const auto& p : params) {
    int n = ValInt(p);
    if (n == 1 && at < coefficients.size()) {
      double v = Val(coefficients[at]);
      if (v < -1 || v > 1) return false;
    }
    at += std::max(n, 0);
  }
  return true;
}

int Sum(const std::vector<std::string>& items) {
  long long s = 0;
  for (const auto& i : items) s += ValInt(i);
  return platform::ToIntClamped(static_cast<double>(s));
}

// The messages for one polynomial list of the noise page: the same checks of the parameters,
// their powers and their coefficients are made for the AR list and again for the MA list.
struct NoiseTexts {
  std::string_view param_range, param_count, param_count_tail, powers_count, power_range,
      coefficient_range, coefficient_count;
};

Validation NoisePolynomials(const PolyKind& k, const NoiseTexts& tx) {
  if (k.count <= 0) return {};
  auto params = SplitList(k.params->text);
  for (const auto& p : params) {
    double v = Val(p);
    if (v < 1 || v > 15) return Range(S(tx.param_range), k.params_field);
  }
  if (static_cast<int>(params.size()) != k.count)
    return Fail(text::kInputError,
                S(t::kSinceThereAre) + N(k.count) + S(tx.param_count) + N(k.count) +
                    S(tx.param_count_tail),
                k.params_field);
  int expected = Sum(params);
  auto powers = SplitList(k.powers->text);
  if (static_cast<int>(powers.size()) < expected)
    return Fail(text::kInputError, S(t::kSinceThereAre) + N(expected) + S(tx.powers_count),
                k.powers_field);
  for (const auto& p : powers) {
    double v = Val(p);
    if (v < 1 || v > 104) return Range(S(tx.power_range), k.powers_field);
  }
  if (!Ascending(params, powers)) return Fail(text::kInputError, S(t::kAscending), k.powers_field);
  auto coefficients = SplitList(k.coefficients->text);
  if (LoneDecimal(coefficients))
    return Fail(text::kInputError, S(t::kLoneDecimal), k.coefficients_field);
  if (!SingleCoefficientsInRange(params, coefficients))
    return Range(S(tx.coefficient_range), k.coefficients_field);
  if (static_cast<int>(coefficients.size()) != expected)
    return Fail(text::kInputError, S(t::kSinceThereAre) + N(expected) + S(tx.coefficient_count),
                k.coefficients_field);
  return {};
}

}  // namespace

// ---- Rules pages ---------------------------------------------------------------------------

Validation ValidateAutoModelID(const AutoModelIdPage& page, int series_count) {
  if (series_count > 1 && !Within(page.txtAutoModelID1, 0, 6))
    return Range(S(t::kMaximumLead), "txtAutoModelID1");
  return {};
}

Validation ValidateGroupPC(GroupPage& page, int observations) {
  auto& f = page.txtGroup_PC;
  auto fail_at = [&](size_t i, std::string_view title, const std::string& message) {
    page.current_tab = static_cast<int>(i) / kGroupsPerTab;
    return Fail(title, message, "txtGroup_PC(" + std::to_string(i) + ")");
  };
  if (Given(f[0]) && Val(f[0].text) < 1) return fail_at(0, text::kOptionInformation, S(t::kGroupCount));
  if (Given(f[0]) && f[1].text.empty()) return fail_at(1, text::kOptionInformation, S(t::kGroupCount));
  double total = 0;
  for (size_t i = 0; i < f.size(); ++i) {
    total += Val(f[i].text);
    if (total > observations)
      return fail_at(i, text::kRangeInputError,
                     S(t::kGroupSize) + "\r\n" + S(t::kGroupTotal) + N(observations) + ".");
  }
  return {};
}

Validation ValidateLambdaEst(const LambdaPage& page) {
  for (size_t i = 1; i < page.txtLambda_Est.size(); ++i) {
    const TextField& f = page.txtLambda_Est[i];
    if (!f.enabled || IsBlank(f.text)) continue;
    double v = Val(f.text);
    if (v == 0) continue;
    if (v < -1.0 || v > 1.0)
      return Range(S(t::kLambdaRange), "txtLambda_Est(" + std::to_string(i) + ")");
  }
  return {};
}

Validation ValidateModelEstimation(ModelEstimationPage& p, GroupPage& groups, LambdaPage& lambdas,
                                   bool tree_shown) {
  if (groups.answer == YesNo::No && tree_shown) {
    groups.group_count = 0;
    groups.visited = "True";
  }
  if (lambdas.answer == YesNo::No) {
    for (auto& f : lambdas.txtLambda_Est) f.text.clear();
    lambdas.labels_visible = false;
    lambdas.visited = "True";
  }
  auto in_range = [](const TextField& f, double lo, double hi) { return !f.enabled || Within(f, lo, hi); };
  const std::string level = S(t::kConfidenceLevel);
  if (!in_range(p.txtModelEst1, 0, 99.9)) return Range(S(t::kSquares), "txtModelEst1");
  if (!in_range(p.txtModelEst2, 0, 99.9)) return Range(S(t::kParameterValues), "txtModelEst2");
  if (!in_range(p.txtModelEst3, 0, 200)) return Range(S(t::kIterations), "txtModelEst3");
  if (p.chkModelEst2.value) {
    if (!Given(p.txtModelEst4))
      return Fail(text::kOptionInputError, Paragraphs(t::kMustEnterSS, level), "txtModelEst4");
    if (!in_range(p.txtModelEst4, 50, 99.9)) return Range(level, "txtModelEst4");
  }
  if (p.chkModelEst3.value) {
    if (!in_range(p.txtModelEst5, 50, 99.9)) return Range(level, "txtModelEst5");
    if (!in_range(p.txtModelEst6, 0, 149)) return Range(S(t::kOutliers) + "149", "txtModelEst6");
  }
  if (Val(p.txtModelEst6.text) < 2) {
    SetCheck(p.chkModelEst8, false, false);
  } else {
    p.chkModelEst8.enabled = true;
  }
  if (!in_range(p.txtModelEst7, 2, 10000))
    return Range(S(t::kObservationsInGroupHead) + "\r\n" + S(t::kObservationsInGroupTail) + "10000.",
                 "txtModelEst7");
  if (p.chkModelEst11.value) {
    if (!in_range(p.txtModelEst9, 50, 99.9)) return Range(level, "txtModelEst9");
    if (!Given(p.txtModelEst9))
      return Fail(text::kOptionInputError, Paragraphs(t::kMustEnterNecessity, level), "txtModelEst9");
  }
  if (!in_range(p.txtModelEst10, 50, 99.9)) return Range(level, "txtModelEst10");
  if (p.chkModelEst13.value && !Given(p.txtModelEst10))
    return Fail(text::kOptionInputError, Paragraphs(t::kMustEnterVariance, t::kVarianceRange),
                "txtModelEst10");
  if (!in_range(p.txtModelEst11, 5, 10000))
    return Range(S(t::kResidualsHead) + "\r\n" + S(t::kResidualsTail) + "10000.", "txtModelEst11");
  if (p.chkModelEst14.value) {
    if (!in_range(p.txtModelEst12, 50, 99.9)) return Range(S(t::kConstancyRange), "txtModelEst12");
    if (!Given(p.txtModelEst12))
      return Fail(text::kOptionInputError, Paragraphs(t::kMustEnterConstancy, t::kConstancyRange),
                  "txtModelEst12");
  }
  return {};
}

Validation ValidateModelForecasting(const ModelForecastingPage& p) {
  if (p.chkModelForecasting1.value && !Within(p.txtModelForecasting2, 50, 99.9))
    return Range(S(t::kForecastConfidence), "txtModelForecasting2");
  return {};
}

Validation ValidateSimulation(const SimulationPage& p) {
  if (!p.chkSimulation1.value) return {};
  if (p.txtSimulation1.enabled && !Within(p.txtSimulation1, 0.1, 99.9))
    return Range(S(t::kNoiseVariance), "txtSimulation1");
  if (p.txtSimulation2.enabled && !Within(p.txtSimulation2, 0, 9999))
    return Range(S(t::kSeed), "txtSimulation2");
  return {};
}

Validation CheckSomethingToDo(int modeling_type, int models_choice, int conditions_choice,
                              bool estimation, bool simulation, bool forecasting, int objective1) {
  if (objective1 == 91 || estimation || simulation || forecasting) return {};
  if (modeling_type == 0 && models_choice == 0)
    return Fail(text::kFyi, S(text::kNothingEnabledAutomatic), "chkModelEst1");
  if (modeling_type == 1 && conditions_choice == 0)
    return Fail(text::kFyi, S(text::kNothingEnabledExplicit), "chkModelEst1");
  return {};
}

// ---- Model pages ---------------------------------------------------------------------------

Validation ValidateStartmod(StartmodPage& p) {
  int nd = Count(p.txtStartmod3), nar = Count(p.txtStartmod5), nma = Count(p.txtStartmod6);
  if (nd == 0 && nar == 0 && nma == 0 && !Given(p.txtStartmod1))
    return Fail(text::kForYourInformation, S(t::kMustEnterConstant), "txtStartmod1");
  if (!Within(p.txtStartmod2, -1.0, 1.0)) return Range(S(t::kLambdaRange), "txtStartmod2");
  if (nd < 0 || nd > 3) return Range(S(t::kDifferencingRange), "txtStartmod3");
  if (nar < 0 || nar > 4)
    return Range(nar + nma > 4 ? S(t::kArRange) + " " + S(t::kSumSentence) : S(t::kArRange), "txtStartmod5");
  if (nma < 0 || nma > 4) return Range(S(t::kMaRange), "txtStartmod6");
  if (nar + nma > 4) return Range(S(t::kSumRange), "txtStartmod5");

  const std::pair<TextField*, std::pair<std::string_view, const char*>> shapes[] = {
      {&p.txtStartmod4, {t::kShapeDiffPowers, "txtStartmod4"}},
      {&p.txtStartmod7, {t::kShapeParams, "txtStartmod7"}},
      {&p.txtStartmod8, {t::kShapePowers, "txtStartmod8"}},
      {&p.txtStartmod10, {t::kShapeParams, "txtStartmod10"}},
      {&p.txtStartmod11, {t::kShapePowers, "txtStartmod11"}}};
  for (const auto& [field, what] : shapes)
    if (HasAny(field->text, "-.,;")) return Range(S(what.first), what.second);

  PolyKind ar{nar, &p.txtStartmod7, &p.txtStartmod8, &p.txtStartmod9,
              "txtStartmod7", "txtStartmod8", "txtStartmod9"};
  PolyKind ma{nma, &p.txtStartmod10, &p.txtStartmod11, &p.txtStartmod12,
              "txtStartmod10", "txtStartmod11", "txtStartmod12"};
  if (auto v = Agreement(ar, {t::kArNoCoefficients, t::kArNoPowers, t::kArNoParams,
                              t::kArNeedCoefficients, t::kArNeedPowers, t::kArNeedParams});
      v.failed)
    return v;
  if (auto v = Agreement(ma, {t::kMaNoCoefficients, t::kMaNoPowers, t::kMaNoParams,
                              t::kMaNeedCoefficients, t::kMaNeedPowers, t::kMaNeedParams});
      v.failed)
    return v;
  if (auto v = Differencing(p.txtStartmod3, p.txtStartmod4, "txtStartmod4"); v.failed) return v;
  if (auto v = NoisePolynomials(ar, {t::kArParamRange, t::kArParamCount, t::kArParamCountTail,
                                     t::kArPowersCount, t::kArPowerRange, t::kArCoefficientRange,
                                     t::kArCoefficientCount});
      v.failed)
    return v;
  if (auto v = NoisePolynomials(ma, {t::kMaParamRange, t::kMaParamCount, t::kMaParamCountTail,
                                     t::kMaPowersCount, t::kMaPowerRange, t::kMaCoefficientRange,
                                     t::kMaCoefficientCount});
      v.failed)
    return v;
  NormaliseCoefficients(p.txtStartmod9);
  NormaliseCoefficients(p.txtStartmod12);
  return {};
}

Validation ValidateInputmod(InputmodPage& p) {
  if (!Within(p.txtInputmod2, -1.0, 1.0)) return Range(S(t::kLambdaRange), "txtInputmod2");
  int nd = Count(p.txtInputmod3), den = Count(p.txtInputmod5), num = Count(p.txtInputmod6);
  if (nd < 0 || nd > 3) return Range(S(t::kDifferencingRange), "txtInputmod3");
  if (den < 0 || den > 1) return Range(S(t::kDenRange), "txtInputmod5");
  if (num < 1 || num > 3) return Range(S(t::kNumRange), "txtInputmod6");
  if (den > 0 && !Within(p.txtInputmod7, 1, 2)) return Range(S(t::kDenParamsField), "txtInputmod7");

  const std::pair<TextField*, std::pair<std::string_view, const char*>> shapes[] = {
      {&p.txtInputmod4, {t::kDiffItemRange, "txtInputmod4"}},
      {&p.txtInputmod7, {t::kShapeDenParams, "txtInputmod7"}},
      {&p.txtInputmod8, {t::kShapeDenPowers, "txtInputmod8"}},
      {&p.txtInputmod10, {t::kShapeNumParams, "txtInputmod10"}},
      {&p.txtInputmod11, {t::kShapeNumPowers, "txtInputmod11"}}};
  for (const auto& [field, what] : shapes)
    if (HasAny(field->text, "-.,;")) return Range(S(what.first), what.second);

  PolyKind dk{den, &p.txtInputmod7, &p.txtInputmod8, &p.txtInputmod9,
              "txtInputmod7", "txtInputmod8", "txtInputmod9"};
  if (auto v = Agreement(dk, {t::kDenNoCoefficients, t::kDenNoPowers, t::kDenNoParams,
                              t::kDenNeedCoefficients, t::kDenNeedPowers, t::kDenNeedParams});
      v.failed)
    return v;
  {
    // The numerator's own order: back orders, coefficients, parameters.
    std::string head = S(t::kSinceThereAre) + N(num);
    if (num == 0) {
      if (Given(p.txtInputmod11)) return Fail(text::kInputError, head + S(t::kNumNoPowers), "txtInputmod11");
      if (Given(p.txtInputmod12)) return Fail(text::kInputError, head + S(t::kNumNoCoefficients), "txtInputmod12");
      if (Given(p.txtInputmod10)) return Fail(text::kInputError, head + S(t::kNumNoParams), "txtInputmod10");
    } else {
      if (!Given(p.txtInputmod10)) return Fail(text::kInputError, head + S(t::kNumNeedParams), "txtInputmod10");
      if (!Given(p.txtInputmod11)) return Fail(text::kInputError, head + S(t::kNumNeedPowers), "txtInputmod11");
      if (!Given(p.txtInputmod12)) return Fail(text::kInputError, head + S(t::kNumNeedCoefficients), "txtInputmod12");
    }
  }
  if (auto v = Differencing(p.txtInputmod3, p.txtInputmod4, "txtInputmod4"); v.failed) return v;

  if (den > 0) {
    auto params = SplitList(p.txtInputmod7.text);
    for (const auto& i : params) {
      double v = Val(i);
      if (v < 1 || v > 2) return Range(S(t::kDenParamRange), "txtInputmod7");
    }
    if (static_cast<int>(params.size()) != den)
      return Fail(text::kInputError, S(t::kSinceThereAre) + N(den) + S(t::kDenParamCount), "txtInputmod7");
    auto powers = SplitList(p.txtInputmod8.text);
    if (!Ascending(params, powers)) return Fail(text::kInputError, S(t::kAscending), "txtInputmod8");
    int expected = Sum(params);
    if (static_cast<int>(powers.size()) < expected)
      return Fail(text::kInputError, S(t::kSinceThereAre) + N(expected) + S(t::kDenPowersCount), "txtInputmod8");
    for (const auto& i : powers) {
      double v = Val(i);
      if (v < 1 || v > 2) return Range(S(t::kDenPowerRange), "txtInputmod8");
    }
    auto coefficients = SplitList(p.txtInputmod9.text);
    if (!SingleCoefficientsInRange(params, coefficients))
      return Range(S(t::kDenCoefficientRange), "txtInputmod9");
    if (LoneDecimal(coefficients)) return Fail(text::kInputError, S(t::kLoneDecimal), "txtInputmod9");
    if (static_cast<int>(coefficients.size()) != expected)
      return Fail(text::kInputError, S(t::kSinceThereAre) + N(expected) + S(t::kDenCoefficientCount),
                  "txtInputmod9");
  }
  {
    auto params = SplitList(p.txtInputmod10.text);
    for (const auto& i : params) {
      double v = Val(i);
      if (v < 1 || v > 15) return Range(S(t::kNumParamRange), "txtInputmod10");
    }
    if (static_cast<int>(params.size()) != num)
      return Fail(text::kInputError,
                  S(t::kSinceThereAre) + N(num) + S(t::kNumParamCount) + N(num) + S(t::kNumParamCountTail),
                  "txtInputmod10");
    int expected = Sum(params);
    auto powers = SplitList(p.txtInputmod11.text);
    if (static_cast<int>(powers.size()) < expected)
      return Fail(text::kInputError, S(t::kSinceThereAre) + N(expected) + S(t::kNumPowersCount), "txtInputmod11");
    for (const auto& i : powers) {
      double v = Val(i);
      if (v < 0 || v > 104) return Range(S(t::kNumPowerRange), "txtInputmod11");
    }
    auto coefficients = SplitList(p.txtInputmod12.text);
    if (LoneDecimal(coefficients)) return Fail(text::kInputError, S(t::kLoneDecimal), "txtInputmod12");
    if (static_cast<int>(coefficients.size()) != expected)
      return Fail(text::kInputError, S(t::kSinceThereAre) + N(expected) + S(t::kNumCoefficientCount),
                  "txtInputmod12");
  }
  NormaliseCoefficients(p.txtInputmod9);
  NormaliseCoefficients(p.txtInputmod12);
  return {};
}

}  // namespace tessaly::rules
