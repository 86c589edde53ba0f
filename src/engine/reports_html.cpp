// DETAILS.HTM (the whole story of one dataset) and STAT.HTM (fit statistics and the
// residual autocorrelations): self-contained pages with their style inline.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>

#include "engine/model/series_stats.h"
#include "engine/model/transform.h"
#include "engine/report_util.h"
#include "engine/reports.h"
#include "platform/text.h"

namespace quorvane {

using namespace report;

namespace {

const char* kStyle = R"(<style>
body { font-family: "Segoe UI", "DejaVu Sans", Arial, sans-serif; color: #1f2933; background: #f4f6f8; margin: 0; }
.page { max-width: 980px; margin: 0 auto; background: #ffffff; padding: 28px 40px 40px; box-shadow: 0 0 8px rgba(0,0,0,0.08); }
header { border-bottom: 3px solid #1f5f8b; margin-bottom: 18px; padding-bottom: 10px; }
h1 { font-size: 24px; margin: 0 0 4px; color: #1f5f8b; }
.subtitle { color: #52606d; font-size: 13px; }
h2 { font-size: 17px; color: #1f5f8b; border-bottom: 1px solid #d9e2ec; padding-bottom: 4px; margin: 26px 0 10px; }
p { font-size: 14px; line-height: 1.5; margin: 6px 0; }
table { border-collapse: collapse; font-size: 13px; margin: 6px 0 10px; }
th { background: #1f5f8b; color: #ffffff; font-weight: 600; padding: 5px 10px; text-align: left; }
td { padding: 4px 10px; border-bottom: 1px solid #e4e7eb; }
tr:nth-child(even) td { background: #f5f7fa; }
th.num { text-align: right; }
td.num { text-align: right; font-variant-numeric: tabular-nums; font-family: "DejaVu Sans Mono", Consolas, monospace; }
table.facts td:first-child { color: #52606d; width: 260px; }
.equation { font-family: "DejaVu Sans Mono", Consolas, monospace; background: #f0f4f8; border-left: 4px solid #1f5f8b; padding: 10px 14px; font-size: 13px; white-space: pre-wrap; }
.ok { color: #1d7a46; font-weight: 600; }
.warn { color: #b44d12; font-weight: 600; }
.note { background: #fff8e6; border-left: 4px solid #e0a800; padding: 8px 12px; font-size: 13px; margin: 6px 0; }
ol.steps li { font-size: 14px; margin: 4px 0; }
table.facts { min-width: 640px; }
td.barcell, th.barcell { width: 320px; padding: 2px 10px; }
table.bars { border-collapse: collapse; margin: 0; }
table.bars td { padding: 0; border: 0; height: 12px; background: transparent; }
table.bars td.tick { height: auto; font-weight: 600; }
footer { margin-top: 30px; font-size: 11px; color: #9aa5b1; border-top: 1px solid #e4e7eb; padding-top: 8px; }
</style>)";

using tessaly::platform::HtmlEscape;

std::string Today() {
  std::time_t now = std::time(nullptr);
  char buf[64];
  std::strftime(buf, sizeof buf, "%Y-%m-%d %H:%M", std::localtime(&now));
  return buf;
}

std::string Head(const std::string& title) {
  return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>" +
         HtmlEscape(title) + "</title>\n" + kStyle + "\n</head>\n<body>\n<div class=\"page\">\n";
}

std::string Foot() {
  return "<footer>Produced by the Quorvane forecasting engine on " + Today() +
         ".</footer>\n</div>\n</body>\n</html>\n";
}

std::string Fact(const std::string& name, const std::string& value) {
  return "<tr><td>" + HtmlEscape(name) + "</td><td>" + value + "</td></tr>\n";
}

std::string Num(double v, int decimals) { return FormatNumber(v, decimals); }

std::string Cell(const std::string& text, bool numeric = false) {
  return numeric ? "<td class=\"num\">" + text + "</td>" : "<td>" + HtmlEscape(text) + "</td>";
}

std::string Stars(double p) {
  if (p < 0.001) return "***";
  if (p < 0.01) return "**";
  if (p < 0.05) return "*";
  return "";
}

std::string OnOff(bool on) { return on ? "on" : "off"; }

// The rules' display lines, in the file's order: 2098 outlier tests, 2099 constancy test,
// 2101 forecasting information, 2103 model parameters, 2104 model equation, 2106 table of
// transformed forecasts, 2107 table of forecasts. A value of 0 leaves that part out of
// DETAILS.HTM; a line the rules do not hold shows it.
bool Displayed(const EngineRules& rules, int code) {
  static const int order[] = {2098, 2099, 2101, 2103, 2104, 2106, 2107};
  for (size_t i = 0; i < std::size(order); ++i)
    if (order[i] == code) return i >= rules.display_options.size() || rules.display_options[i] != 0;
  return true;
}

std::string NotDisplayed(const char* label) {
  return "<p class=\"subtitle\">Not displayed: the rules' \"" + std::string(label) + "\" line is 0.</p>\n";
}

std::string Subtitle(const ReportInput& in) {
  const DatasetShape& s = in.request->shape;
  return std::to_string(s.observations) + " " + FrequencyWord(s.seasonality) +
         " observations, " + ObservationLabel(in, 0) + " to " +
         ObservationLabel(in, s.observations - 1);
}

std::string FitFacts(const ReportInput& in) {
  const ModelResult& r = Result(in);
  std::string h = "<table class=\"facts\">\n";
  h += Fact("Observations used", std::to_string(r.observations));
  h += Fact("Estimated parameters", std::to_string(r.parameters));
  h += Fact("Degrees of freedom", std::to_string(r.degrees_of_freedom));
  h += Fact("Error sum of squares", Num(r.sse, 4));
  h += Fact("Residual variance", Num(r.variance, 4));
  h += Fact("Residual standard deviation", Num(std::sqrt(std::max(0.0, r.variance)), 4));
  h += Fact("R-squared", Num(r.r_squared, 4));
  h += Fact("Log-likelihood", Num(r.loglik, 3));
  h += Fact("AIC", Num(r.aic, 3));
  h += Fact("BIC", Num(r.bic, 3));
  h += Fact("In-sample MAPE", Num(r.mape, 2) + "%");
  if (r.ljung_box_lags > 0) {
    bool ok = r.ljung_box_p >= 0.05;
    h += Fact("Ljung-Box Q (" + std::to_string(r.ljung_box_lags) + " lags)",
              Num(r.ljung_box_q, 3) + " &nbsp; p = " + Num(r.ljung_box_p, 4) + " &nbsp; " +
                  (ok ? "<span class=\"ok\">no significant autocorrelation</span>"
                      : "<span class=\"warn\">autocorrelation remains</span>"));
  }
  bool normal = r.normality_p >= 0.05;
  h += Fact("Normality (Jarque-Bera)",
            Num(r.normality_stat, 3) + " &nbsp; p = " + Num(r.normality_p, 4) + " &nbsp; " +
                (normal ? "<span class=\"ok\">consistent with normal errors</span>"
                        : "<span class=\"warn\">not normal</span>"));
  h += "</table>\n";
  return h;
}

std::string IdentificationHtml(const ReportInput& in) {
  IdentificationTable t = Identify(in);
  std::string h = "<table class=\"facts\">\n";
  h += Fact("Series examined", HtmlEscape(t.series_text));
  h += Fact("Values", std::to_string(t.n));
  h += Fact("Mean", Num(t.mean, 4));
  h += Fact("Standard deviation", Num(t.sd, 4));
  h += Fact("Limits of the correlations", "&plusmn;" + Num(t.limit, 4) + " (two standard errors)");
  h += "</table>\n<table>\n<tr><th class=\"num\">Lag</th><th class=\"num\">ACF</th><th></th>"
       "<th class=\"num\">PACF</th><th></th></tr>\n";
  auto mark = [&](double v) {
    return std::fabs(v) > t.limit ? std::string("<td class=\"warn\">significant</td>") : "<td></td>";
  };
  for (size_t k = 0; k < t.acf.size(); ++k)
    h += "<tr>" + Cell(std::to_string(k + 1), true) + Cell(Num(t.acf[k], 4), true) + mark(t.acf[k]) +
         Cell(Num(k < t.pacf.size() ? t.pacf[k] : 0.0, 4), true) +
         mark(k < t.pacf.size() ? t.pacf[k] : 0.0) + "</tr>\n";
  h += "</table>\n";
  return h;
}

// The chart area of a correlation bar: 320 pixels, zero at 160, +-half at the edges.
constexpr int kChartWidth = 320;
constexpr int kChartZero = 160;

int ChartX(double v, double half) {
  int x = static_cast<int>(kChartZero + v / half * (kChartZero - 1) + (v < 0 ? -0.5 : 0.5));
  return std::clamp(x, 0, kChartWidth - 1);
}

std::string ColourCell(int width, const char* colour) {
  std::string w = std::to_string(width);
  if (!colour) return "<td width=\"" + w + "\"></td>";
  return std::string("<td width=\"") + w + "\" bgcolor=\"" + colour +
         "\" style=\"background-color:" + colour + "\"></td>";
}

// One bar from zero to `v`, with the zero line and the two limits marked.
std::string BarHtml(double v, double half, double limit) {
  const char* kBar = "#1f5f8b";
  const char* kBarOut = "#d64545";
  const char* kAxis = "#52606d";
  const char* kLimit = "#e8a0a0";
  int from = std::min(kChartZero, ChartX(v, half)), to = std::max(kChartZero, ChartX(v, half));
  int lo = limit > 0 ? ChartX(-limit, half) : -1, hi = limit > 0 ? ChartX(limit, half) : -1;
  const char* bar = limit > 0 && std::fabs(v) > limit ? kBarOut : kBar;
  auto colour_at = [&](int x) -> const char* {
    if (x == kChartZero) return kAxis;
    if (x >= from && x < to) return bar;
    if (x == lo || x == hi) return kLimit;
    return nullptr;
  };
  std::string cells;
  int start = 0;
  const char* current = colour_at(0);
  for (int x = 1; x <= kChartWidth; ++x) {
    const char* c = x < kChartWidth ? colour_at(x) : nullptr;
    if (x == kChartWidth || c != current) {
      cells += ColourCell(x - start, current);
      start = x;
      current = c;
    }
  }
  return "<table class=\"bars\" width=\"" + std::to_string(kChartWidth) +
         "\" cellspacing=\"0\" cellpadding=\"0\"><tr>" + cells + "</tr></table>";
}

// The scale above the bars: -half, 0, +half.
std::string ScaleHtml(double half) {
  std::string top = Num(half, 1);
  return "<table class=\"bars\" width=\"" + std::to_string(kChartWidth) +
         "\" cellspacing=\"0\" cellpadding=\"0\"><tr><td class=\"tick\" align=\"left\" width=\"33%\">-" +
         top + "</td><td class=\"tick\" align=\"center\" width=\"34%\">0</td>"
         "<td class=\"tick\" align=\"right\" width=\"33%\">+" + top + "</td></tr></table>";
}

}  // namespace

IdentificationTable Identify(const ReportInput& in) {
  const ModelResult& r = Result(in);
  const ModelingProblem& p = Problem(in);
  IdentificationTable t;
  std::vector<double> x(p.y.begin() + std::min<size_t>(r.leading_left_out, p.y.size()), p.y.end());
  std::string name = p.output_name;
  if (r.lambda != 1.0 && PowerApplies(x, r.lambda)) {
    x = BoxCox(x, r.lambda);
    name = (r.lambda == 0.0 ? "ln " : "Box-Cox(" + Num(r.lambda, 2) + ") ") + name;
  }
  std::string ops;
  for (int i = 0; i < r.d; ++i) ops += "(1 - B)";
  for (int i = 0; i < r.D; ++i) ops += "(1 - B**" + std::to_string(r.period) + ")";
  x = Difference(x, 1, r.d);
  if (r.D > 0) x = Difference(x, r.period, r.D);
  t.series_text = name + (ops.empty() ? "" : ", differenced " + ops);
  t.n = static_cast<int>(x.size());
  t.mean = Mean(x);
  t.sd = std::sqrt(Variance(x));
  int lags = std::min(std::max(2 * std::max(p.seasonality, 1), 24), std::max(t.n / 4, 1));
  if (p.rules.robust_acf) {
    x = RobustlyClipped(x);
    t.series_text += " (robust: values held within 2.5 robust standard deviations of the median)";
  }
  if (t.n > 2) {
    t.acf = Autocorrelations(x, lags);
    t.pacf = PartialAutocorrelations(x, lags);
    t.limit = 2.0 / std::sqrt(static_cast<double>(t.n));
  }
  return t;
}

// Kept whole: the sections of the page one after another, in the order a reader meets
// them, each short and all writing to the one page.
std::string DetailsHtml(const ReportInput& in) {
  const ModelResult& r = Result(in);
  const ModelingProblem& p = Problem(in);
  const DatasetShape& s = in.request->shape;
  const EngineRules& rules = p.rules;
  std::string h = Head("Model details: " + p.output_name);
  h += "<header><h1>Model details: " + HtmlEscape(p.output_name) + "</h1><div class=\"subtitle\">" +
       HtmlEscape(Subtitle(in)) + " &middot; " + HtmlEscape(ModelName(r)) + "</div></header>\n";

  // Data.
  Summary sum = Summarize(p.y);
  h += "<h2>1. Data</h2>\n<table class=\"facts\">\n";
  h += Fact("Output series", HtmlEscape(p.output_name));
  h += Fact("Frequency", HtmlEscape(FrequencyWord(s.seasonality)) + " (seasonality " +
                             std::to_string(s.seasonality) + ")");
  h += Fact("Observations as given", std::to_string(s.observations) + " (" +
                                         HtmlEscape(ObservationLabel(in, 0)) + " to " +
                                         HtmlEscape(ObservationLabel(in, s.observations - 1)) + ")");
  if (IsPooledRun(in)) h += Fact("Pooled cross-section", HtmlEscape(PoolSentence(in)));
  if (s.retained > 0) h += Fact("Retained for comparison", std::to_string(s.retained));
  h += Fact("Estimation sample", std::to_string(p.y.size()));
  if (r.leading_left_out > 0)
    h += Fact("Left out at the start", std::to_string(r.leading_left_out) +
                                           " (the model uses the most recent stable segment)");
  h += Fact("Mean", Num(sum.mean, 4));
  h += Fact("Standard deviation", Num(sum.sd, 4));
  h += Fact("Minimum / maximum", Num(sum.min, 4) + " / " + Num(sum.max, 4));
  if (!p.inputs.empty()) {
    std::string names;
    for (const auto& x : p.inputs)
      names += (names.empty() ? "" : ", ") + HtmlEscape(x.name) + " (type " + std::to_string(x.type) + ")";
    h += Fact("Input series", names);
  }
  h += "</table>\n";

  // Rules.
  h += "<h2>2. Rules in force</h2>\n<table class=\"facts\">\n";
  h += Fact("Source", HtmlEscape(in.rules_source));
  h += Fact("Estimation", OnOff(rules.estimation_enabled) + ", at most " +
                              std::to_string(rules.max_iterations) + " iterations");
  h += Fact("Necessity test", OnOff(rules.necessity) + " at " + PercentText(rules.necessity_level));
  h += Fact("Sufficiency (stochastic)",
            OnOff(rules.sufficiency_stochastic) + " at " + PercentText(rules.sufficiency_ss_level));
  std::string kinds;
  if (rules.include_pulse) kinds += "pulses";
  if (rules.include_step) kinds += std::string(kinds.empty() ? "" : ", ") + "level shifts";
  if (rules.include_seasonal_pulse) kinds += std::string(kinds.empty() ? "" : ", ") + "seasonal pulses";
  if (rules.include_local_trend) kinds += std::string(kinds.empty() ? "" : ", ") + "local trends";
  h += Fact("Intervention detection",
            rules.sufficiency_deterministic
                ? "on at " + PercentText(rules.sufficiency_ds_level) + ", at most " +
                      std::to_string(rules.max_outliers) + ": " + (kinds.empty() ? "none" : kinds)
                : std::string("off"));
  std::string lambdas;
  for (double l : rules.lambdas) lambdas += (lambdas.empty() ? "" : ", ") + Num(l, 2);
  h += Fact("Power transforms evaluated", lambdas);
  h += Fact("Constancy of parameters", OnOff(rules.constancy));
  h += Fact("Change of variance", OnOff(rules.variance_change));
  h += Fact("Forecasting", OnOff(rules.forecasting_enabled) + ", limits at " +
                               PercentText(rules.forecast_confidence));
  h += "</table>\n";
  for (const auto& note : in.notes) h += "<div class=\"note\">" + HtmlEscape(note) + "</div>\n";

  // Transform.
  h += "<h2>3. Transformation</h2>\n<p>";
  if (r.lambda == 1.0)
    h += "The series is modelled as it stands: no power transformation improved the likelihood.";
  else
    h += "The series is modelled after a " + HtmlEscape(TransformName(r.lambda)) +
         " transformation (&lambda; = " + Num(r.lambda, 2) +
         "), chosen by likelihood; forecasts and limits are transformed back to the original scale.";
  h += "</p>\n";

  // Steps.
  h += "<h2>4. Identification and diagnosis</h2>\n";
  if (r.notes.empty()) {
    h += "<p>No steps were recorded.</p>\n";
  } else {
    h += "<ol class=\"steps\">\n";
    for (const auto& n : r.notes) {
      if (!Displayed(rules, 2099) && (n.heading == "Constancy of parameters" || n.heading == "Change of variance"))
        continue;
      if (!Displayed(rules, 2098) && n.heading == "Interventions") continue;
      h += "<li><strong>" + HtmlEscape(n.heading) + "</strong>" + (n.heading.empty() ? "" : ": ") +
           HtmlEscape(n.text) + "</li>\n";
    }
    h += "</ol>\n";
  }

  if (in.identification_only) {
    h += "<h2>Identification only</h2>\n<p>Descriptive measures of the series as the model "
         "sees it; no forecasts were computed.</p>\n" + IdentificationHtml(in);
  }

  // Model.
  h += "<h2>5. Final model</h2>\n<p><strong>" + HtmlEscape(ModelName(r)) + "</strong>";
  if (r.has_constant && ModelName(r).find("constant") == std::string::npos) h += " with a constant";
  h += "</p>\n";
  if (!Displayed(rules, 2104)) h += NotDisplayed("DISPLAY FORECAST MODEL EQUATION");
  else if (!r.equation.empty()) h += "<div class=\"equation\">" + HtmlEscape(r.equation) + "</div>\n";
  if (!Displayed(rules, 2103)) {
    h += NotDisplayed("DISPLAY FORECAST MODEL PARAMETERS");
  } else {
    h += "<table>\n<tr><th>Term</th><th class=\"num\">Coefficient</th><th class=\"num\">Std error</th>"
         "<th class=\"num\">t-value</th><th class=\"num\">p-value</th><th></th></tr>\n";
    for (const auto& c : r.coefficients)
      h += "<tr>" + Cell(c.term) + Cell(Num(c.value, 6), true) + Cell(Num(c.std_error, 6), true) +
           Cell(Num(c.t_value, 2), true) + Cell(Num(c.p_value, 4), true) + Cell(Stars(c.p_value)) +
           "</tr>\n";
    if (r.coefficients.empty()) h += "<tr><td colspan=\"6\">No estimated terms.</td></tr>\n";
    h += "</table>\n<p class=\"subtitle\">Significance: *** p &lt; 0.001, ** p &lt; 0.01, * p &lt; 0.05.</p>\n";
  }

  // Interventions.
  h += "<h2>6. Interventions</h2>\n";
  if (!Displayed(rules, 2098)) {
    h += NotDisplayed("DISPLAY OUTLIER TEST RESULTS");
  } else if (r.interventions.empty()) {
    h += "<p>No pulses, level shifts, seasonal pulses or local trends were found.</p>\n";
  } else {
    h += "<table>\n<tr><th>Type</th><th>Period</th><th class=\"num\">Observation</th>"
         "<th class=\"num\">Impact</th><th class=\"num\">t-value</th></tr>\n";
    for (const auto& iv : r.interventions)
      h += "<tr>" + Cell(InterventionName(iv.type)) + Cell(ObservationLabel(in, iv.observation - 1)) +
           Cell(std::to_string(iv.observation), true) + Cell(Num(iv.impact, 4), true) +
           Cell(Num(iv.t_value, 2), true) + "</tr>\n";
    h += "</table>\n";
  }

  // Diagnostics.
  h += "<h2>7. Diagnostics</h2>\n" + FitFacts(in) +
       "<p>The residual autocorrelations are listed in the statistics report (STAT.HTM).</p>\n";

  // Forecasts.
  h += "<h2>8. Forecasts</h2>\n";
  if (r.forecasts.empty()) {
    h += "<p>No forecasts were asked for.</p>\n";
  } else {
    std::string level = PercentText(rules.forecast_confidence);
    if (Displayed(rules, 2101)) {
      if (r.simulation.done)
        h += "<p>" + std::to_string(r.forecasts.size()) + " forecasts from the end of the estimation sample: the "
             "medians of " + std::to_string(r.simulation.paths) + " simulated futures of the model, with " + level +
             " limits from their quantiles (see Simulation below). Before the simulation the model's own forecasts "
             "had limits";
      else
        h += "<p>" + std::to_string(r.forecasts.size()) + " forecasts from the end of the estimation sample, with " +
             level + " limits";
      h += " from the model's psi-weights";
      if (r.lambda != 1.0) h += ", transformed back from the " + HtmlEscape(TransformName(r.lambda)) + " scale (the "
                                "forecast is the median there, the limits its quantiles)";
      if (r.simulation.done)
        h += ". The simulated limits are those of the model taken as known: unlike the model's own, they make no "
             "allowance for the estimation of the model or for interventions happening again.";
      else
        h += ". The limits allow for the estimation of the model (degrees of freedom, t quantiles, the error of "
             "the coefficients and of the constant); in automatic modelling also for interventions like those "
             "found happening again at the rate seen.";
      if (rules.convert_positive) h += " Negative values are set to 0.";
      if (rules.convert_integers) h += " Forecasts are rounded to integers, the limits outwards.";
      h += "</p>\n";
    }
    if (r.lambda != 1.0 && Displayed(rules, 2106)) {
      h += "<p>On the " + HtmlEscape(TransformName(r.lambda)) + " scale the model works in:</p>\n<table>\n<tr>"
           "<th>Period</th><th class=\"num\">Forecast</th><th class=\"num\">Lower " + level +
           "</th><th class=\"num\">Upper " + level + "</th></tr>\n";
      auto on_scale = [&](double v) { return v > 0.0 ? Num(BoxCox(v, r.lambda), 6) : std::string("-"); };
      for (size_t k = 0; k < r.forecasts.size(); ++k)
        h += "<tr>" + Cell(ForecastLabel(in, static_cast<int>(k))) + Cell(on_scale(r.forecasts[k]), true) +
             Cell(on_scale(k < r.lower.size() ? r.lower[k] : r.forecasts[k]), true) +
             Cell(on_scale(k < r.upper.size() ? r.upper[k] : r.forecasts[k]), true) + "</tr>\n";
      h += "</table>\n";
    }
    if (!Displayed(rules, 2107)) {
      h += NotDisplayed("DISPLAY TABLE OF FORECAST VALUES");
    } else {
      h += "<table>\n<tr><th>Period</th><th class=\"num\">Forecast</th><th class=\"num\">Lower " +
           level + "</th><th class=\"num\">Upper " + level + "</th></tr>\n";
      for (size_t k = 0; k < r.forecasts.size(); ++k)
        h += "<tr>" + Cell(ForecastLabel(in, static_cast<int>(k))) + Cell(Num(r.forecasts[k], 4), true) +
             Cell(Num(k < r.lower.size() ? r.lower[k] : r.forecasts[k], 4), true) +
             Cell(Num(k < r.upper.size() ? r.upper[k] : r.forecasts[k], 4), true) + "</tr>\n";
      h += "</table>\n";
    }
  }

  // Simulation: the paths behind the forecasts and limits when the rules asked for it.
  if (r.simulation.done) {
    const SimulationSummary& sim = r.simulation;
    const std::string level = PercentText(sim.coverage);
    h += "<h2>9. Simulation</h2>\n<table class=\"facts\">\n";
    h += Fact("Simulated paths", std::to_string(sim.paths));
    h += Fact("Seed used", std::to_string(sim.seed) + (sim.seed_from_clock ? " (from the clock)" : ""));
    h += Fact("Noise variance", Num(sim.noise_variance, 6) +
                                    (sim.variance_estimated ? " (the model's estimate; the rules gave none)" : ""));
    h += "</table>\n<p>Each path runs the model's difference equation forward from the end of the sample with "
         "normal innovations of that variance on the " +
         HtmlEscape(r.lambda != 1.0 ? TransformName(r.lambda) + " scale" : std::string("series' scale")) +
         "; inputs take their given future values. The forecasts above are the simulated medians, the limits the "
         "simulated quantiles.</p>\n";
    h += "<table>\n<tr><th>Period</th><th class=\"num\">Mean</th><th class=\"num\">Median</th>"
         "<th class=\"num\">Std deviation</th><th class=\"num\">Lower " + level + "</th><th class=\"num\">Upper " +
         level + "</th><th class=\"num\">Sample path</th></tr>\n";
    for (size_t k = 0; k < sim.median.size(); ++k)
      h += "<tr>" + Cell(ForecastLabel(in, static_cast<int>(k))) + Cell(Num(sim.mean[k], 4), true) +
           Cell(Num(sim.median[k], 4), true) + Cell(Num(sim.sd[k], 4), true) + Cell(Num(sim.lower[k], 4), true) +
           Cell(Num(sim.upper[k], 4), true) +
           Cell(k < sim.sample_path.size() ? Num(sim.sample_path[k], 4) : std::string("-"), true) + "</tr>\n";
    h += "</table>\n";
  }

  // "PRINT EXCEPTION REPORT": what an analyst of many series should look at in this one.
  if (rules.exception_report) {
    std::vector<std::string> items;
    const int last = static_cast<int>(p.y.size());
    for (const auto& iv : r.interventions)
      if (iv.observation > last - kEarlySignalWindow)
        items.push_back(std::string("Early signal: ") + InterventionName(iv.type) + " at " +
                        ObservationLabel(in, iv.observation - 1) + " (impact " + Num(iv.impact, 4) + ").");
    for (const auto& c : r.parameter_changes)
      items.push_back("The parameters changed at " + ObservationLabel(in, c.observation - 1) + ".");
    for (const auto& c : r.variance_changes)
      items.push_back("The residual variance changed at " + ObservationLabel(in, c.observation - 1) + " from " +
                      Num(c.before, 4) + " to " + Num(c.after, 4) + ".");
    if (r.ljung_box_lags > 0 && r.ljung_box_p < 0.05)
      items.push_back("The residuals are autocorrelated (Ljung-Box p-value " + Num(r.ljung_box_p, 4) + ").");
    int outside = 0;
    for (const auto& f : in.retained)
      if (f.actual < f.lower || f.actual > f.upper) ++outside;
    if (outside > 0)
      items.push_back(std::to_string(outside) + " of " + std::to_string(in.retained.size()) +
                      " retained values lie outside the limits.");
    h += "<h2>Exceptions</h2>\n";
    if (items.empty()) h += "<p>None.</p>\n";
    for (const auto& item : items) h += "<div class=\"note\">" + HtmlEscape(item) + "</div>\n";
  }

  std::vector<std::string> warnings = in.request->warnings;
  warnings.insert(warnings.end(), r.warnings.begin(), r.warnings.end());
  if (!warnings.empty()) {
    h += "<h2>Warnings</h2>\n";
    for (const auto& w : warnings) h += "<div class=\"note\">" + HtmlEscape(w) + "</div>\n";
  }
  h += Foot();
  return h;
}

std::string StatHtml(const ReportInput& in) {
  const ModelResult& r = Result(in);
  const ModelingProblem& p = Problem(in);
  std::string h = Head("Statistics: " + p.output_name);
  h += "<header><h1>Statistics: " + HtmlEscape(p.output_name) + "</h1><div class=\"subtitle\">" +
       HtmlEscape(Subtitle(in)) + " &middot; " + HtmlEscape(ModelName(r)) + "</div></header>\n";
  if (in.identification_only)
    h += "<h2>Identification: autocorrelations of the series</h2>\n" + IdentificationHtml(in);
  h += "<h2>Fit statistics</h2>\n" + FitFacts(in);

  h += "<h2>Residual autocorrelations</h2>\n";
  if (r.residual_acf.empty()) {
    h += "<p>No residual autocorrelations were computed.</p>\n";
  } else {
    double limit = r.residual_acf_limit;
    h += "<p>The thin red marks are the limits &plusmn;" + Num(limit, 4) +
         " (two standard errors); a bar beyond them is drawn in red.</p>\n";
    // The bars share one scale: wide enough for the largest value and the limits. Each bar
    // is a row of coloured cells, which every HTML viewer draws, the program's own included.
    double largest = 2 * limit;
    for (double v : r.residual_acf) largest = std::max(largest, std::fabs(v));
    double half = std::min(1.0, std::ceil(largest * 10.0 + 1e-9) / 10.0);
    h += "<table>\n<tr><th class=\"num\">Lag</th><th class=\"num\">ACF</th><th class=\"barcell\">" +
         ScaleHtml(half) + "</th><th></th></tr>\n";
    for (size_t k = 0; k < r.residual_acf.size(); ++k) {
      double v = r.residual_acf[k];
      bool outside = limit > 0 && std::fabs(v) > limit;
      h += "<tr>" + Cell(std::to_string(k + 1), true) + Cell(Num(v, 4), true) +
           "<td class=\"barcell\">" + BarHtml(v, half, limit) + "</td>" +
           (outside ? "<td class=\"warn\">outside the limits</td>" : "<td></td>") + "</tr>\n";
    }
    h += "</table>\n";
  }
  h += Foot();
  return h;
}

}  // namespace quorvane
