// Intermittent demand: the test that sends a series to Croston-type modelling, the method
// itself, the choice of its smoothing constants, and the model the reports show.
#include "engine/model/intermittent.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "engine/model/equation_text.h"
#include "engine/model/model_parts.h"
#include "engine/model/series_stats.h"
#include "engine/model/structured.h"
#include "engine/model/texts.h"

namespace quorvane {

namespace {

constexpr double kMissing = 99999999999.0;
constexpr double kPi = 3.14159265358979323846;
constexpr const char* kHeadIntermittent = "Intermittent demand";

std::string Percent(double share) { return Format("%.1f", 100.0 * share); }

std::string Fixed(double v, int digits) {
  const std::string fmt = "%." + std::to_string(digits) + "f";
  return Format(fmt.c_str(), v);
}

std::string Num(double v) { return Format("%.6g", v); }

double Quantile(const std::vector<double>& sorted, double p) {
  if (sorted.empty()) return 0.0;
  const double at = std::clamp(p, 0.0, 1.0) * static_cast<double>(sorted.size() - 1);
  const size_t i = static_cast<size_t>(std::floor(at));
  const double w = at - static_cast<double>(i);
  return i + 1 < sorted.size() ? sorted[i] + w * (sorted[i + 1] - sorted[i]) : sorted[i];
}

}  // namespace

IntermittentCheck CheckIntermittent(const std::vector<double>& y) {
  IntermittentCheck c;
  const int n = static_cast<int>(y.size());
  for (int t = 0; t < n; ++t) {
    if (y[t] == kMissing || !std::isfinite(y[t])) {
      c.why = "it has missing values (the first at observation " + std::to_string(t + 1) + ")";
      return c;
    }
    if (y[t] < 0.0) {
      c.why = "it has negative values (the first at observation " + std::to_string(t + 1) + ")";
      return c;
    }
    if (y[t] == 0.0) ++c.zeros;
    else ++c.demands;
  }
  const double share = n > 0 ? static_cast<double>(c.zeros) / n : 0.0;
  const std::string counted = std::to_string(c.zeros) + " of its " + std::to_string(n) + " periods (" + Percent(share) +
                              " %) are without demand";
  if (share < kIntermittentZeroShare) {
    c.why = "only " + counted + ", fewer than " + Percent(kIntermittentZeroShare) + " %";
    return c;
  }
  if (c.demands < 2) {
    c.why = counted + " and fewer than two have a demand";
    return c;
  }
  c.intermittent = true;
  c.why = counted + " and no value is negative";
  return c;
}

CrostonRun CrostonFilter(const std::vector<double>& y, double alpha_size, double alpha_interval,
                         CrostonVariant variant) {
  CrostonRun r;
  const int n = static_cast<int>(y.size());
  r.fitted.assign(n, 0.0);
  r.factor = variant == CrostonVariant::Sba ? 1.0 - alpha_interval / 2.0 : 1.0;
  int first = -1;
  for (int t = 0; t < n && first < 0; ++t)
    if (y[t] > 0.0) first = t;
  r.first_demand = first;
  if (first < 0) return r;
  double size = y[first], interval = first + 1.0;
  int last = first;
  for (int t = 0; t < n; ++t) {
    const double f = r.factor * size / interval;
    r.fitted[t] = f;
    const double e = y[t] - f;
    r.sse += e * e;
    if (t > first) {
      r.fit_sse += e * e;
      if (y[t] > 0.0) {
        size += alpha_size * (y[t] - size);
        interval += alpha_interval * ((t - last) - interval);
        last = t;
      }
    }
  }
  r.size = size;
  r.interval = interval;
  r.forecast = r.factor * size / interval;
  return r;
}

CrostonEstimate EstimateCroston(const std::vector<double>& y, CrostonVariant variant) {
  CrostonEstimate best;
  double best_sse = std::numeric_limits<double>::infinity();
  // The usual range for intermittent demand: the correction is derived for small constants,
  // and larger ones chase the few demands of a short history.
  for (int i = kCrostonMinPercent; i <= kCrostonMaxPercent; ++i)
    for (int j = kCrostonMinPercent; j <= kCrostonMaxPercent; ++j) {
      const double az = i / 100.0, ap = j / 100.0;
      CrostonRun run = CrostonFilter(y, az, ap, variant);
      // Ties keep the smaller constants: steadier forecasts for the same fit.
      if (run.fit_sse < best_sse * (1.0 - 1e-12)) {
        best_sse = run.fit_sse;
        best.alpha_size = az;
        best.alpha_interval = ap;
        best.run = std::move(run);
      }
    }
  return best;
}

FlatLimits EmpiricalLimits(const std::vector<double>& errors, double f, double coverage_pct) {
  std::vector<double> sorted = errors;
  std::sort(sorted.begin(), sorted.end());
  const double tail = (1.0 - std::clamp(coverage_pct, 1.0, 99.9999) / 100.0) / 2.0;
  FlatLimits l;
  l.lower = std::max(0.0, std::min(f, f + Quantile(sorted, tail)));
  l.upper = std::max(f, f + Quantile(sorted, 1.0 - tail));
  return l;
}

ModelResult FitCroston(const ModelingProblem& problem, const IntermittentCheck& check, const StageCallback& on_stage) {
  ModelResult r;
  auto stage = [&](Stage s) { return Stage_(on_stage, s, r); };
  if (!stage(Stage::DataPreparation)) return r;
  const std::vector<double>& y = problem.y;
  const int n = static_cast<int>(y.size());
  const EngineRules& rules = problem.rules;
  const int horizon = ForecastHorizon(problem, r.warnings);
  r.notes.push_back({kHeadIntermittent, "The rule INTERMITTENT is on and the series is intermittent: " + check.why +
                                            ". Demand sizes and the intervals between demands are smoothed "
                                            "separately (Croston's method with the Syntetos-Boylan correction); no power transform "
                                            "and no search for interventions apply to it."});
  r.warnings.push_back("The series is intermittent (" + std::to_string(check.zeros) + " of " + std::to_string(n) +
                       " periods without demand): it was forecast by Croston's method with the Syntetos-Boylan "
                       "correction, a flat demand per period.");

  if (!stage(Stage::Identification)) return r;
  if (!stage(Stage::Estimation)) return r;
  CrostonEstimate est;
  std::string chosen;
  if (rules.estimation_enabled) {
    est = EstimateCroston(y);
    chosen = "Smoothing constants from " + Fixed(kCrostonMinPercent / 100.0, 2) + " to " +
             Fixed(kCrostonMaxPercent / 100.0, 2) + " in steps of 0.01, chosen by the least squares of the ";
  } else {
    est.alpha_size = est.alpha_interval = kCrostonDefaultAlpha;
    est.run = CrostonFilter(y, est.alpha_size, est.alpha_interval);
    r.warnings.push_back("Model estimation is disabled in the rules; the smoothing constants were held at " +
                         Fixed(kCrostonDefaultAlpha, 2) + ".");
    chosen = "Smoothing constants held at " + Fixed(kCrostonDefaultAlpha, 2) + " (estimation is off); over the ";
  }
  const CrostonRun& run = est.run;
  const CrostonRun classic = CrostonFilter(y, est.alpha_size, est.alpha_interval, CrostonVariant::Classic);
  const int after = n - run.first_demand - 1;
  r.notes.push_back({texts::kHeadSearch,
                     chosen + std::to_string(after) + " one-step errors after the first demand: size " +
                         Fixed(est.alpha_size, 2) + ", interval " + Fixed(est.alpha_interval, 2) + " (mean squared error " +
                         Num(after > 0 ? run.fit_sse / after : 0.0) + "). Demand size " + Num(run.size) +
                         ", interval " + Num(run.interval) + " periods: Croston's forecast " + Num(classic.forecast) +
                         ", corrected by " + Fixed(run.factor, 4) + " to " + Num(run.forecast) + " per period."});

  // The model.
  const std::string name = problem.output_name.empty() ? "Y" : problem.output_name;
  r.lambda = 1.0;
  r.has_constant = true;
  r.period = 1;
  r.parameters = 2;
  r.observations = n;
  r.degrees_of_freedom = std::max(0, n - r.parameters);
  auto add = [&](const char* term, const char* kind, double value) {
    Coefficient c;
    c.term = term;
    c.kind = kind;
    c.value = value;
    r.coefficients.push_back(c);
  };
  add("ALPHA (SIZE)", "smoothing", est.alpha_size);
  add("ALPHA (INTERVAL)", "smoothing", est.alpha_interval);
  add("DEMAND SIZE", "state", run.size);
  add("DEMAND INTERVAL", "state", run.interval);
  // The flat forecast is the model's constant: PASS2MOD.123 holds it as a mean model.
  add("CONSTANT", "constant", run.forecast);
  r.description = "CROSTON (SBA) ALPHA SIZE " + Fixed(est.alpha_size, 2) + " ALPHA INTERVAL " +
                  Fixed(est.alpha_interval, 2);
  r.equation = name + "(t) = " + Fixed(run.factor, 4) + " Z(t-1) / P(t-1) + a(t)\n" +
               "Z(t) = Z(t-1) + " + Fixed(est.alpha_size, 2) + " (" + name +
               "(t) - Z(t-1)) when " + name + "(t) > 0, else Z(t-1)\n" +
               "P(t) = P(t-1) + " + Fixed(est.alpha_interval, 2) +
               " (Q(t) - P(t-1)) when " + name + "(t) > 0, else P(t-1); Q(t) the periods since the demand before\n" +
               "Forecast per period: " + Fixed(run.factor, 4) + " x " + Num(run.size) + " / " + Num(run.interval) +
               " = " + Num(run.forecast);

  // In-sample figures: every period has a fitted value, those up to the first demand the
  // first estimate.
  if (!stage(Stage::Diagnosis)) return r;
  r.fitted = run.fitted;
  r.residuals.resize(n);
  r.cleansed = y;
  std::vector<double> after_first;
  double sst = 0.0, ape = 0.0;
  int ape_n = 0;
  const double ybar = Mean(y);
  for (int t = 0; t < n; ++t) {
    r.residuals[t] = y[t] - r.fitted[t];
    if (t > run.first_demand) after_first.push_back(r.residuals[t]);
    sst += (y[t] - ybar) * (y[t] - ybar);
    if (y[t] != 0.0) {
      ape += std::fabs(r.residuals[t] / y[t]);
      ++ape_n;
    }
  }
  r.sse = run.sse;
  r.variance = r.degrees_of_freedom > 0 ? r.sse / r.degrees_of_freedom : 0.0;
  r.r_squared = sst > 0.0 ? 1.0 - r.sse / sst : 0.0;
  r.loglik = r.sse > 0.0 ? -0.5 * n * (std::log(2.0 * kPi * r.sse / n) + 1.0) : 0.0;
  const int k = r.parameters + 1;
  r.aic = -2.0 * r.loglik + 2.0 * k;
  r.bic = -2.0 * r.loglik + std::log(std::max(1, n)) * k;
  r.mape = ape_n ? 100.0 * ape / ape_n : 0.0;
  FillResidualDiagnostics(r, r.residuals, std::max(1, problem.seasonality), r.parameters, n);

  // A flat forecast; its limits are the in-sample errors' quantiles around it.
  const FlatLimits limits = EmpiricalLimits(after_first, run.forecast, rules.forecast_confidence);
  r.forecasts.assign(horizon, run.forecast);
  r.lower.assign(horizon, limits.lower);
  r.upper.assign(horizon, limits.upper);
  r.notes.push_back({texts::kHeadModel,
                     r.description + ", forecast " + Num(run.forecast) + " per period; limits at " +
                         Format("%.1f", rules.forecast_confidence) + " % from the quantiles of the " +
                         std::to_string(after_first.size()) + " in-sample errors after the first demand: " +
                         Num(limits.lower) + " to " + Num(limits.upper) + " (never below 0)."});
  r.notes.push_back({texts::kHeadDiagnosis, "Ljung-Box Q " + Format("%.3f", r.ljung_box_q) + " over " +
                                                std::to_string(r.ljung_box_lags) + " lags, p-value " +
                                                Format("%.4f", r.ljung_box_p) + "; R-squared " +
                                                Format("%.4f", r.r_squared) + "; in-sample MAPE over the periods "
                                                "with demand " + Format("%.3f", r.mape) + " %."});
  return r;
}

ModelResult FitIntermittentDemand(const ModelingProblem& problem, const StageCallback& on_stage, UsualModelling usual) {
  const IntermittentCheck check = CheckIntermittent(problem.y);
  if (check.intermittent) return FitCroston(problem, check, on_stage);
  ModelingProblem plain = problem;
  plain.rules.intermittent = false;
  ModelResult r = usual(plain, on_stage);
  r.notes.insert(r.notes.begin(), {kHeadIntermittent, "The rule INTERMITTENT is on, but the series is not "
                                                      "intermittent: " + check.why +
                                                      ". It was modelled the usual way."});
  return r;
}

}  // namespace quorvane
