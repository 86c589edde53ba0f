#include "engine/rules_reader.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <optional>

#include "formats/rules_file.h"
#include "platform/numfmt.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/textfile.h"

// Generated from resources/program/ENGINE.CND at build time.
extern const char kQuorvaneBuiltinRules[];
extern const unsigned long kQuorvaneBuiltinRulesSize;

namespace quorvane {

namespace {

using RV = RuleValue;

std::string Trim(std::string_view s) { return tessaly::platform::Trim(s, tessaly::platform::kWhiteSpace); }

// A number written as the rules write it: digits, an optional sign and point, blanks
// around. Nothing else may stand in the field.
std::optional<double> ParseNumber(std::string_view field) {
  std::string t = Trim(field);
  if (t.empty()) return std::nullopt;
  char* end = nullptr;
  double v = std::strtod(t.c_str(), &end);
  if (end != t.c_str() + t.size() || !std::isfinite(v)) return std::nullopt;
  return v;
}

std::optional<int> ParseWhole(std::string_view field) {
  auto v = ParseNumber(field);
  // A whole number beyond an int (such as 1e300) is no count the rules know.
  if (!v || *v != std::floor(*v) || *v < -2147483648.0 || *v > 2147483647.0) return std::nullopt;
  return static_cast<int>(*v);
}

// Stores one value read from a line into the rules. False when the value is not
// acceptable for that line.
bool Store(const RuleLine& line_rule, std::string_view field, EngineRules& r,
           int& lambda_count) {
  if (line_rule.kind == RV::LambdaList) {
    std::vector<double> lambdas;
    for (int i = 0; i < lambda_count; ++i) {
      const size_t at = 4 * static_cast<size_t>(i);
      std::string_view f = field.size() > at
                               ? field.substr(at, 4)
                               : std::string_view{};
      auto v = ParseNumber(f);
      if (!v || *v < -1.0 || *v > 1.0) return false;
      lambdas.push_back(*v);
    }
    r.lambdas = lambdas.empty() ? std::vector<double>{1.0} : lambdas;
    return true;
  }
  auto number = ParseNumber(field);
  if (!number) return false;
  double v = *number;
  bool whole = v == std::floor(v);
  switch (line_rule.kind) {
    case RV::Flag:
      if (v != 0.0 && v != 1.0) return false;
      break;
    case RV::Template:
    case RV::Integer:
      if (!whole || v < line_rule.min || v > line_rule.max) return false;
      break;
    case RV::Real:
      if (v < line_rule.min || v > line_rule.max) return false;
      break;
    default:
      return false;
  }
  bool flag = v == 1.0;
  int whole_value = tessaly::platform::ToIntClamped(v);
  switch (line_rule.code) {
    case 2002: r.robust_acf = whole_value != 0; break;
    case 2015: r.maximum_lead = whole_value; break;
    case 2018: r.difference_inputs = flag; break;
    case 2020: r.estimation_enabled = flag; break;
    case 2024: r.sse_change_pct = v; break;
    case 2025: r.parameter_change_pct = v; break;
    case 2026: r.max_iterations = whole_value; break;
    case 2027: r.necessity = flag; break;
    case 2028: r.necessity_level = v; break;
    case 2029: r.constrain_causal = flag; break;
    case 2030: r.sufficiency_stochastic = flag; break;
    case 2031: r.sufficiency_ss_level = v; break;
    case 2035: r.sufficiency_deterministic = flag; break;
    case 2037: r.sufficiency_ds_level = v; break;
    case 2038: r.max_outliers = whole_value; break;
    case 2039: r.include_pulse = flag; break;
    case 2041: r.include_step = flag; break;
    case 2042: r.min_group_size = whole_value; break;
    case 2043: r.include_seasonal_pulse = flag; break;
    case 2044: r.include_local_trend = flag; break;
    case 2047: r.fixup_seasonal_dummies = flag; break;
    case 2050: lambda_count = whole_value; break;
    case 2053: r.variance_change = flag; break;
    case 2054: r.variance_level = v; break;
    case 2055: r.min_residuals_to_pool = whole_value; break;
    case 2056: r.constancy = flag; break;
    case 2057: r.constancy_level = v; break;
    case 2058: r.forecasting_enabled = flag; break;
    case 2060: r.forecasts = whole_value; break;
    case 2061: r.forecast_confidence = v; break;
    case 2062: r.convert_positive = flag; break;
    case 2063: r.convert_integers = flag; break;
    case 2064: r.last_pulse_to_step = flag; break;
    case 2065: r.pulse_to_seasonal = flag; break;
    case 2066: r.simulation = flag; break;
    case 2067: r.noise_variance = v; break;
    case 2068: r.seed = whole_value; break;
    case 2098: case 2099: case 2101: case 2103: case 2104: case 2106: case 2107:
      r.display_options.push_back(whole_value);
      break;
    case 2112: r.store_model = flag; break;
    case 2121: r.exception_report = whole_value != 0; break;
    default: break;
  }
  return true;
}

// The page of the rules editor that a line belongs to, by the code of the flag that switches
// the page on (0: a line of no such page). The editor writes only the flag of a page that is
// switched off, leaving that page's values as they were or empty.
int PageFlagOf(int code) {
  switch (code) {
    case 2024: case 2025: case 2026: case 2027: case 2028: case 2030: case 2031: case 2035:
    case 2037: case 2038: case 2039: case 2041: case 2042: case 2043: case 2044: case 2047:
    case 2053: case 2054: case 2055: case 2056: case 2057:
      return 2020;
    case 2060: case 2061: case 2062: case 2063: case 2064: case 2065:
      return 2058;
    case 2067: case 2068:
      return 2066;
    default:
      return 0;
  }
}

bool Blank(std::string_view s) {
  for (char c : s)
    if (!std::isspace(static_cast<unsigned char>(c))) return false;
  return true;
}

// The value (after the bar) of line `index` of the built-in rules, which follow the same order.
std::string_view BuiltinValue(size_t index) {
  static const tessaly::formats::RulesFile builtin{std::string(BuiltinRulesText())};
  static const std::vector<tessaly::formats::RulesLine> lines = builtin.Lines();
  if (index >= lines.size()) return {};
  return lines[index].Value();
}

}  // namespace

const std::vector<RuleLine>& RuleLines() {
  static const std::vector<RuleLine> lines_in_order = {
      {2002, "", "USE ROBUST AUTOCORRELATION FUNCTION", RV::Template, 0, 9999},
      {2015, "MAXIMUM LEAD", "MAXIMUM LEAD FOR SERIES NAMED MOVE+", RV::Integer, 0, 6},
      {2018, "DIFFERENCE", "USE DIFF FACTORS FROM ARIMA IN TF MODEL", RV::Flag},
      {2020, "MODEL ESTIMATION", "ENABLE MODEL ESTIMATION", RV::Flag},
      {2024, "SQUARES", "% CHANGE IN ERROR SUM OF SQUARES", RV::Real, 0, 100},
      {2025, "PARAMETER VALUES", "% CHANGE IN THE PARAMETER VALUES", RV::Real, 0, 100},
      {2026, "ITERATIONS", "MAXIMUM # OF ITERATIONS", RV::Integer, 0, 200},
      {2027, "NECESSITY TEST:", "NECESSITY:", RV::Flag},
      {2028, "LEVEL FOR NECESSITY", "CONFIDENCE LEVEL FOR NECESSITY", RV::Real, 0.01, 99.99},
      {2029, "CONSTRAIN", "CONSTRAIN  CAUSAL COEFFICIENTS  IN MODEL", RV::Flag},
      {2030, "STOCHASTIC", "SUFFICIENCY (STOCHASTIC STRUCTURE )", RV::Flag},
      {2031, "(SS)", "CONFIDENCE LEVEL FOR SUFFICIENCY (SS)", RV::Real, 0.01, 99.99},
      {2035, "DETERMINISTIC STRUCTURE", "SUFFICIENCY (DETERMINISTIC STRUCTURE )", RV::Flag},
      {2037, "(DS)", "CONFIDENCE LEVEL FOR SUFFICIENCY (DS)", RV::Real, 0.01, 99.99},
      {2038, "TO BE IDENTIFIED", "MAXIMUM NUM OF OUTLIERS TO BE IDENTIFIED", RV::Integer, 0, 999},
      {2039, "INCLUDE PULSE", "INCLUDE PULSE VARIABLES", RV::Flag},
      {2041, "INCLUDE STEP", "INCLUDE STEP VARIABLES", RV::Flag},
      {2042, "OBSERVATIONS IN GROUP", "MINIMUM NUMBER OF OBSERVATIONS IN GROUP", RV::Integer, 1, 9999},
      {2043, "INCLUDE SEASONAL PULSE", "INCLUDE SEASONAL PULSE VARIABLES", RV::Flag},
      {2044, "LOCAL TREND", "INCLUDE LOCAL TRENDS", RV::Flag},
      {2047, "FIXUP FOR FIXED EFFECTS", "ENABLE AUTO FIXUP FOR SEASONAL DUMMIES", RV::Flag},
      {2050, "EVALUATE IN EST", "NUMBER OF LAMBDA VAL TO EVALUATE IN EST", RV::Integer, 0, 10},
      {2051, "", "spacer", RV::Spacer},
      {2052, "(4F4.0)", "LAMBDA VALUES TO EVALUATE (4F4.0)", RV::LambdaList},
      {2053, "DISCRETE", "DISCRETE CHANGE TEST FOR VARIANCE", RV::Flag},
      {2054, "LEVEL FOR VARIANCE", "CONFIDENCE LEVEL FOR VARIANCE TEST", RV::Real, 0.01, 99.99},
      {2055, "RESIDUALS TO POOL", "MINIMUM NUMBER OF RESIDUALS TO POOL", RV::Integer, 1, 9999},
      {2056, "CONSTANCY OF PARAMETERS", "CONSTANCY OF PARAMETERS:", RV::Flag},
      {2057, "CONSTANCY TEST", "CONFIDENCE LEVEL FOR CONSTANCY TEST", RV::Real, 0.01, 99.99},
      {2058, "MODEL FORECASTING", "ENABLE MODEL FORECASTING", RV::Flag},
      {2060, "VALUES TO COMPUTE", "# OF FORECAST VALUES TO COMPUTE", RV::Integer, 0, 600},
      {2061, "FOR THE FORECASTS", "CONFIDENCE LIMIT FOR THE FORECASTS (%)", RV::Real, 0.01, 99.99},
      {2062, "POSITIVE VALUES", "CONVERT THE FORECAST VAL TO POSITIVE VAL", RV::Flag},
      {2063, "INTEGERS", "CONVERT THE FORECAST VALUES TO INTEGERS", RV::Flag},
      {2064, "LAST OBSERVATION", "CONVERT PULSE AT LAST OBSERVATION TO STEP", RV::Flag},
      {2065, "PULSE TO SEASONAL", "CONVERT PULSE TO SEASONAL PULSE (SAVE LAST OBS)", RV::Flag},
      {2066, "SIMULATION ENABLED", "SIMULATION ENABLED (0=NO 1=YES)", RV::Flag},
      {2067, "NOISE SERIES", "VARIANCE OF THE NOISE SERIES", RV::Real, 0, 1e9},
      {2068, "SEED VALUE", "SEED VALUE TO START ( 0 FOR CLOCK )", RV::Integer, 0, 9999},
      {2098, "", "DISPLAY OUTLIER TEST RESULTS", RV::Template, 0, 9999},
      {2099, "", "DISPLAY CONSTANCY TEST", RV::Template, 0, 9999},
      {2101, "", "DISPLAY FORECASTING INFORMATION", RV::Template, 0, 9999},
      {2103, "", "DISPLAY FORECAST MODEL PARAMETERS", RV::Template, 0, 9999},
      {2104, "", "DISPLAY FORECAST MODEL EQUATION", RV::Template, 0, 9999},
      {2106, "", "DISPLAY TABLE OF TRANSFORMED FORE VALUES", RV::Template, 0, 9999},
      {2107, "", "DISPLAY TABLE OF FORECAST VALUES", RV::Template, 0, 9999},
      {2112, "STORE", "STORE  MODEL FORM (YES/NO)", RV::Flag},
      {2121, "", "PRINT EXCEPTION REPORT", RV::Template, 0, 9999},
  };
  return lines_in_order;
}

std::string RulesErrorText(int code) {
  for (const auto& line_rule : RuleLines()) {
    if (line_rule.code != code) continue;
    std::string text = std::string(" ERR READ ENGINE.QVX ") + line_rule.label;
    if (code != 2121) text += " ADVISE QVX";
    return text;
  }
  return {};
}

namespace {

// The rules as the shared reader has read the file, checked line by line in the engine's
// reading order against the engine's own ranges.
RulesReadResult ParseRules(const tessaly::formats::RulesFile& file) {
  RulesReadResult result;
  EngineRules& r = result.rules;
  r.display_options.clear();
  const std::vector<tessaly::formats::RulesLine> lines = file.Lines();
  int lambda_count = 1;
  size_t index = 0;
  std::vector<int> pages_off;  // codes of the page flags read as 0
  for (const auto& line_rule : RuleLines()) {
    if (index >= lines.size()) {
      result.error_code = static_cast<int16_t>(line_rule.code);
      return result;
    }
    const tessaly::formats::RulesLine& line = lines[index++];
    if (line_rule.kind == RV::Spacer) continue;
    bool ok = line.HasBar();
    if (ok && line_rule.key[0] != '\0') ok = line.Label().find(line_rule.key) != std::string_view::npos;
    if (ok) {
      std::string_view value = line.Value();
      int page = PageFlagOf(line_rule.code);
      bool page_off = page != 0 && std::find(pages_off.begin(), pages_off.end(), page) != pages_off.end();
      // A value left empty on a page that is switched off takes the built-in rules' value.
      if (page_off && Blank(value)) value = BuiltinValue(index - 1);
      ok = Store(line_rule, value, r, lambda_count);
      if (ok && (line_rule.code == 2020 || line_rule.code == 2058 || line_rule.code == 2066)) {
        auto flag = ParseNumber(value);
        if (flag && *flag == 0.0) pages_off.push_back(line_rule.code);
      }
    }
    if (!ok) {
      result.error_code = static_cast<int16_t>(line_rule.code);
      return result;
    }
  }

  // The lines without a code of their own: a missing or unreadable one leaves its default.
  if (auto v = file.KeyedValue("INTERMITTENT")) {
    if (auto n = ParseWhole(*v); n && (*n == 0 || *n == 1)) r.intermittent = *n == 1;
  }
  if (auto v = file.KeyedValue("# OF GROUPS")) {
    if (auto n = ParseWhole(*v); n && *n >= 0) r.groups = *n == 0 ? 1 : *n;
  }
  if (auto v = file.KeyedValue("INITIAL MODEL")) r.initial_model = Trim(*v);
  return result;
}

}  // namespace

RulesReadResult ParseRulesText(std::string_view text) {
  return ParseRules(tessaly::formats::RulesFile{std::string(text)});
}

std::string_view BuiltinRulesText() {
  return std::string_view(kQuorvaneBuiltinRules, kQuorvaneBuiltinRulesSize);
}

RulesReadResult LoadRules(const std::filesystem::path& work_folder) {
  if (auto go = tessaly::platform::FindNoCase(work_folder, "ENGINE.GO")) {
    if (tessaly::formats::RulesFile file; file.ReadFrom(*go)) {
      RulesReadResult result = ParseRules(file);
      result.source = "ENGINE.GO";
      return result;
    }
  }
  RulesReadResult result = ParseRulesText(BuiltinRulesText());
  result.source = "built-in rules";
  return result;
}

std::vector<std::string> ApplyControlFiles(const std::filesystem::path& folder,
                                           EngineRules& rules) {
  namespace tp = tessaly::platform;
  std::vector<std::string> notes;
  if (tp::ExistsNoCase(folder, "NOTREND.QVX")) {
    rules.no_trend = true;
    rules.include_local_trend = false;
    notes.push_back("NOTREND.QVX: local time trends are not incorporated.");
  }
  if (tp::ExistsNoCase(folder, "ALLOWMOD.QVX")) {
    rules.allow_modifications = true;
    notes.push_back("ALLOWMOD.QVX: the engine may tune a preset or user model.");
  }
  if (tp::ExistsNoCase(folder, "SAVEMOD.QVX")) {
    rules.save_model_file = true;
    notes.push_back("SAVEMOD.QVX: the final model is saved under the output series' name.");
  }
  if (auto path = tp::FindNoCase(folder, "GROUPLST.QVX")) {
    auto lines = tp::ReadAllLines(*path);
    std::vector<int> sizes;
    int declared = -1;
    bool readable = lines && !lines->empty();
    if (readable) {
      auto n = ParseWhole((*lines)[0]);
      readable = n && *n > 0;
      if (readable) declared = *n;
      for (size_t i = 1; readable && i < lines->size(); ++i) {
        if (Trim((*lines)[i]).empty()) continue;
        auto size = ParseWhole((*lines)[i]);
        if (!size || *size <= 0) readable = false;
        else sizes.push_back(*size);
      }
    }
    if (readable && static_cast<int>(sizes.size()) == declared) {
      rules.groups = declared;
      rules.group_sizes = sizes;
      notes.push_back("GROUPLST.QVX: " + std::to_string(declared) +
                      " groups of a pooled cross-section.");
    } else {
      notes.push_back("GROUPLST.QVX could not be read (a group count and one size per "
                      "group are expected); it was ignored.");
    }
  }
  return notes;
}

}  // namespace quorvane
