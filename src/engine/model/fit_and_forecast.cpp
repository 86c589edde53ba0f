// Automatic univariate modelling: data preparation, identification, estimation, diagnosis
// and forecasting of one output series, in the order the work is done.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>

#include "engine/model.h"
#include "engine/model/combination.h"
#include "engine/model/equation_text.h"
#include "engine/model/estimate.h"
#include "engine/model/forecast.h"
#include "engine/model/interventions.h"
#include "engine/model/intervention_parts.h"
#include "engine/model/intermittent.h"
#include "engine/model/limits.h"
#include "engine/model/model_parts.h"
#include "engine/model/constancy.h"
#include "engine/model/variance_change.h"
#include "engine/model/search.h"
#include "engine/model/seasonal_fixup.h"
#include "engine/model/simulation.h"
#include "engine/model/structured.h"
#include "engine/model/series_stats.h"
#include "engine/model/texts.h"
#include "engine/model/transform.h"
#include "engine/model/unit_root.h"

namespace quorvane {

namespace {

constexpr int16_t kCodeObservations = 2180;
constexpr int16_t kCodeCuriousValue = 2189;
// Half the 95 % point of a chi-square with one degree of freedom.
constexpr double kTransformGain = 1.92;
constexpr int kMinForTransform = 30;

std::string FormatInt(const char* fmt, int v) {
  char buf[256];
  std::snprintf(buf, sizeof buf, fmt, v);
  return buf;
}

std::string Equation(const ArimaFit& f, double lambda, const std::string& name) {
  std::string lhs = Factor(f.coef.ar, 1, -1.0) + Factor(f.coef.sar, f.orders.period, -1.0);
  for (int i = 0; i < f.orders.d; ++i) lhs += "(1 - B)";
  for (int i = 0; i < f.orders.D; ++i) lhs += "(1 - B**" + std::to_string(f.orders.period) + ")";
  lhs += (lhs.empty() ? "" : " ") + TransformName(lambda, name) + "(t)";
  std::string rhs;
  if (f.orders.constant) {
    double phi1 = 1.0;
    for (double v : f.coef.ar) phi1 -= v;
    double Phi1 = 1.0;
    for (double v : f.coef.sar) Phi1 -= v;
    rhs = Format("%.6g", phi1 * Phi1 * f.mean) + " + ";
  }
  const std::string ma = Factor(f.coef.ma, 1, 1.0) + Factor(f.coef.sma, f.orders.period, 1.0);
  rhs += ma + (ma.empty() ? "" : " ") + "a(t)";
  return lhs + " = " + rhs;
}

// Removes trailing held-at-zero terms so the orders say what the model holds.
void TrimOrders(ArimaOrders& s) {
  auto trim = [](int& order, std::vector<bool>& zero) {
    zero.resize(order, false);
    while (order > 0 && zero[order - 1]) {
      --order;
      zero.pop_back();
    }
  };
  trim(s.p, s.ar_zero);
  trim(s.q, s.ma_zero);
  trim(s.P, s.sar_zero);
  trim(s.Q, s.sma_zero);
}

struct TermRef {
  int group;  // 0 ar, 1 ma, 2 sar, 3 sma, 4 constant
  int index;
};

std::vector<Coefficient> Coefficients(const ArimaFit& f, std::vector<TermRef>* refs) {
  std::vector<Coefficient> out;
  const int df = std::max(1, f.n - (f.orders.FreeCount() + (f.orders.constant ? 1 : 0)));
  AddArmaCoefficients(f, 1.0, df, out);
  // The automatic model's table lists the constant last, after the ARMA terms.
  if (f.orders.constant) std::rotate(out.begin(), out.begin() + 1, out.end());
  if (refs) {
    const std::vector<bool>* zeros[] = {&f.orders.ar_zero, &f.orders.ma_zero, &f.orders.sar_zero, &f.orders.sma_zero};
    const size_t sizes[] = {f.coef.ar.size(), f.coef.ma.size(), f.coef.sar.size(), f.coef.sma.size()};
    for (int group = 0; group < 4; ++group)
      for (size_t i = 0; i < sizes[group]; ++i)
        if (i >= zeros[group]->size() || !(*zeros[group])[i]) refs->push_back({group, static_cast<int>(i)});
    if (f.orders.constant) refs->push_back({4, 0});
  }
  return out;
}

// Sufficiency of the stochastic structure: while the residuals fail the Ljung-Box test and a
// residual autocorrelation stands out at the rules' confidence, the ARMA term at that lag
// is added (a lag up to 3 as an MA term of exactly that lag, a seasonal lag as one more
// seasonal MA order) and kept when its own coefficient is significant at the same level
// and the model's AICc improves. At most two terms are added; fewer than 50 residuals are
// not judged.
std::string Sufficiency(const std::vector<double>& z, ArimaFit& fit, const ConvergenceCriteria& crit,
                        double level_pct) {
  const double level = std::clamp(level_pct, 50.0, 99.99);
  const double alpha = 1.0 - level / 100.0;
  std::string text;
  std::vector<std::string> tried;
  for (int added = 0; added < 2;) {
    const std::vector<double> pred = OneStepPredictions(z, fit);
    std::vector<double> e;
    for (size_t t = 0; t < z.size(); ++t)
      if (!std::isnan(pred[t])) e.push_back(z[t] - pred[t]);
    const int m = static_cast<int>(e.size());
    if (m < 50) break;  // too few residuals to judge their autocorrelations
    const int s = fit.orders.period;
    const int max_lag = std::min(s > 1 ? 2 * s : 10, m / 4);
    // With as many lags as these, single autocorrelations stand out by chance: only when
    // the portmanteau test rejects the residuals as a whole is the structure insufficient.
    if (LjungBox(e, max_lag, fit.orders.FreeCount()).p_value >= alpha) break;
    const std::vector<double> acf = Autocorrelations(e, max_lag);
    const double limit = CentralNormalQuantile(level) / std::sqrt(static_cast<double>(m));
    // Candidate lags in order of the size of their autocorrelation.
    std::vector<int> lags;
    for (int k = 1; k <= max_lag; ++k)
      if (std::fabs(acf[k - 1]) > limit) lags.push_back(k);
    std::sort(lags.begin(), lags.end(), [&](int a, int b) { return std::fabs(acf[a - 1]) > std::fabs(acf[b - 1]); });
    bool improved = false;
    for (int k : lags) {
      ArimaOrders sp = fit.orders;
      std::string term;
      if (s > 1 && k % s == 0) {
        if (sp.Q >= 2 || k / s != sp.Q + 1) continue;
        sp.Q += 1;
        sp.sma_zero.resize(sp.Q, false);
        term = "SMA(" + std::to_string(k) + ")";
      } else {
        if (k > 3 || k <= sp.q) continue;
        sp.ma_zero.resize(sp.q, false);
        for (int j = sp.q; j < k - 1; ++j) sp.ma_zero.push_back(true);
        sp.ma_zero.push_back(false);
        sp.q = k;
        term = "MA(" + std::to_string(k) + ")";
      }
      if (std::find(tried.begin(), tried.end(), term) != tried.end()) continue;
      tried.push_back(term);
      ArimaFit next = FitArima(z, sp, crit, true, &fit.coef);
      if (!next.ok) continue;
      std::vector<Coefficient> cs = Coefficients(next, nullptr);
      const auto it = std::find_if(cs.begin(), cs.end(), [&](const Coefficient& c) { return c.term == term; });
      if (it == cs.end() || !(it->std_error > 0.0) || it->p_value > alpha || !(next.aicc < fit.aicc)) {
        text += "residual autocorrelation " + Format("%.3f", acf[k - 1]) + " at lag " + std::to_string(k) + ": " +
                term + " not significant or no better by AICc, not added. ";
        continue;
      }
      text += "residual autocorrelation " + Format("%.3f", acf[k - 1]) + " at lag " + std::to_string(k) + ": " +
              term + " added (p-value " + Format("%.3f", it->p_value) + "). ";
      fit = next;
      improved = true;
      ++added;
      break;
    }
    if (!improved) break;
  }
  return text.empty() ? "No residual autocorrelation stands out at " + Format("%.1f", level) + " %." : text;
}

// Fills the in-sample vectors, forecasts and statistics of a result whose model is fixed.
void Finish(ModelResult& r, const std::vector<double>& y, const std::vector<double>& z, const ArimaFit& fit,
            double lambda, double scale, int horizon, double coverage, const std::vector<double>& effects = {},
            int effect_count = 0, const LimitAllowances& allow = {}, bool holdout = false,
            const KnownEffects& known = {}) {
  const int n = static_cast<int>(y.size());
  // With interventions the noise model runs on the series less their effects (n values,
  // then the forecast periods), which are added back to its predictions.
  std::vector<double> u = z;
  for (int t = 0; t < n && t < static_cast<int>(effects.size()); ++t) u[t] -= effects[t];
  std::vector<double> pred = OneStepPredictions(u, fit);
  for (int t = 0; t < n && t < static_cast<int>(effects.size()); ++t) pred[t] += effects[t];
  r.fitted.assign(n, 0.0);
  r.residuals.assign(n, 0.0);
  InSampleTally tally;
  for (int t = 0; t < n; ++t) {
    if (std::isnan(pred[t])) {
      r.fitted[t] = y[t];
      r.residuals[t] = 0.0;
      continue;
    }
    const double fz = InverseBoxCox(pred[t] * scale, lambda);
    r.fitted[t] = fz;
    r.residuals[t] = tally.Add(y[t], fz, (z[t] - pred[t]) * scale, z[t] * scale);
  }
  r.cleansed = y;
  if (!effects.empty())
    for (int t = 0; t < n; ++t) r.cleansed[t] = InverseBoxCox(u[t] * scale, lambda);
  r.parameters = fit.orders.FreeCount() + (fit.orders.constant ? 1 : 0) + effect_count;
  tally.Finish(r, fit.loglik - fit.n * std::log(scale), fit);

  if (horizon > 0) {
    ArimaForecast fc = ForecastArima(u, fit, horizon, coverage, allow);
    if (holdout) {
      // Not after a change of variance, whose limits rest on the latest segment's already.
      const HoldoutCheck check = CheckLimitsOnHoldout(known ? z : u, known, fit, horizon, coverage, allow);
      const double f = check.factor;
      for (int h = 0; h < horizon; ++h) {
        fc.lower[h] = fc.mean[h] - f * (fc.mean[h] - fc.lower[h]);
        fc.upper[h] = fc.mean[h] + f * (fc.upper[h] - fc.mean[h]);
      }
      if (!check.note.empty()) r.notes.push_back({texts::kHeadModel, check.note});
    }
    for (int h = 0; h < horizon && n + h < static_cast<int>(effects.size()); ++h) {
      fc.mean[h] += effects[n + h];
      fc.lower[h] += effects[n + h];
      fc.upper[h] += effects[n + h];
    }
    r.forecasts.resize(horizon);
    r.lower.resize(horizon);
    r.upper.resize(horizon);
    for (int h = 0; h < horizon; ++h) {
      r.forecasts[h] = InverseBoxCox(fc.mean[h] * scale, lambda);
      r.lower[h] = InverseBoxCox(fc.lower[h] * scale, lambda);
      r.upper[h] = InverseBoxCox(fc.upper[h] * scale, lambda);
    }
  }
}

// What the forecast limits allow for beyond the model taken as known: the estimation
// (EstimationAllowances), and the interventions found, which stand for events that may
// happen again (level shifts, seasonal pulses and trends as recurring events; pulses within
// the innovations), at the rate and of the size seen: a model that explains the past by a few
// shifts must not forecast as if the future held none. `sigma2` is the variance the limits
// start from (the fit's, or the last segment's after a change of variance).
LimitAllowances ForecastAllowances(const ArimaFit& fit, double sigma2, const std::vector<DetectedIntervention>& found) {
  const int span = std::max(1, static_cast<int>(fit.n));
  // Pulses are one-period shocks like the innovations, only larger: the ones found are taken
  // back into the innovation variance the limits rest on, as if they had not been removed.
  // They are the largest errors of the sample, picked out, and a variance without them
  // understates the spread of the errors to come.
  double pulse_squares = 0.0;
  for (const DetectedIntervention& d : found)
    if (d.type == kPulse) pulse_squares += d.impact * d.impact;
  LimitAllowances a = EstimationAllowances(
      fit, fit.orders.FreeCount() + (fit.orders.constant ? 1 : 0) + static_cast<int>(found.size()),
      sigma2 + pulse_squares / span);
  const std::pair<int, EventShape> shapes[] = {{kLevelShift, EventShape::Step},
                                               {kSeasonalPulse, EventShape::SeasonalPulse},
                                               {kLocalTrend, EventShape::Ramp}};
  for (const auto& [type, shape] : shapes) {
    int count = 0;
    double squares = 0.0;
    for (const DetectedIntervention& d : found)
      if (d.type == type) {
        ++count;
        squares += d.impact * d.impact;
      }
    if (count > 0) a.events.push_back({shape, static_cast<double>(count) / span, squares / count});
  }
  return a;
}

std::vector<double> Scaled(const std::vector<double>& z, double scale) {
  std::vector<double> out(z.size());
  for (size_t i = 0; i < z.size(); ++i) out[i] = z[i] / scale;
  return out;
}

void Trivial(ModelResult& r, const std::vector<double>& y, int horizon, const char* why) {
  const int n = static_cast<int>(y.size());
  const double last = y.back();
  r.warnings.push_back(why);
  r.notes.push_back({texts::kHeadModel, why});
  r.description = "CONSTANT";
  r.fitted = y;
  r.residuals.assign(n, 0.0);
  r.cleansed = y;
  r.observations = n;
  SetConstantModel(r, last, horizon);
  r.equation = "Y(t) = " + Format("%.6g", last);
}

}  // namespace

namespace {
ModelResult ModelAndForecast(const ModelingProblem& problem, const StageCallback& on_stage);
}  // namespace

// Every kind of model ends with the rules' conversions of its forecasts.
ModelResult FitAndForecast(const ModelingProblem& problem, const StageCallback& on_stage) {
  ModelResult r = ModelAndForecast(problem, on_stage);
  // Simulation replaces the limits of any kind of model (automatic, preset, the user's)
  // before the conversions, which then act on the simulated figures.
  ApplySimulation(problem, r);
  ConvertForecastValues(r.forecasts, r.lower, r.upper, problem.rules.convert_positive,
                        problem.rules.convert_integers);
  // Data at the edge of what a double holds (alternating +-1e308) can give limits that
  // overflow: no forecast file is written with infinite or undefined values.
  if (r.error_code == 0) {
    for (const auto* v : {&r.forecasts, &r.lower, &r.upper})
      for (double x : *v)
        if (!std::isfinite(x)) r.error_code = kCodeCuriousValue;
  }
  return r;
}

namespace {

// What automatic modelling carries from one step to the next: the series as given (missing
// values filled), on the model's scale, the choices made so far and the model as it stands.
struct AutomaticWork {
  std::vector<double> y;              // the output series, missing values filled
  std::vector<double> z;              // transformed and scaled
  int n = 0;
  int horizon = 0;
  int period = 1;
  double coverage = 95.0;
  double lambda = 1.0;
  double scale = 1.0;
  ConvergenceCriteria crit;
  SearchOptions so;
  ArimaFit fit;
  std::vector<DetectedIntervention> found;
  std::vector<double> effects;        // of the interventions and seasonal dummies, n + horizon
  RegressionArimaFit with_effects;
  SeasonalFixup fixup;
  int first_position = 0;             // place in the cycle of the first observation
};

// Data preparation: the arrays checked, missing values filled, the horizon, the period and
// the convergence criteria. False when r is final (an error, or a series too short or
// constant to model, answered by a constant forecast).
bool PrepareSeries(const ModelingProblem& problem, ModelResult& r, AutomaticWork& w) {
  const EngineRules& rules = problem.rules;
  if (problem.objective != 0)
    r.warnings.push_back(FormatInt(texts::kObjectiveAsAutomatic, problem.objective));
  std::vector<double>& y = w.y;
  y = problem.y;
  const int n = w.n = static_cast<int>(y.size());
  if (n == 0) {
    r.error_code = kCodeObservations;
    return false;
  }
  for (double v : y)
    if (!std::isfinite(v)) {
      r.error_code = kCodeCuriousValue;
      return false;
    }
  const int filled = FillMissing(y);
  if (filled == n) {
    r.error_code = kCodeObservations;
    return false;
  }
  if (filled > 0) r.warnings.push_back(FormatInt(texts::kMissingInterpolated, filled));

  const int horizon = w.horizon = ForecastHorizon(problem, r.warnings);
  w.coverage = rules.forecast_confidence;
  int& period = w.period;
  period = problem.seasonality > 1 ? problem.seasonality : 1;
  {
    const double lo = *std::min_element(y.begin(), y.end());
    const double hi = *std::max_element(y.begin(), y.end());
    r.notes.push_back({texts::kHeadData, std::to_string(n) + " observations from " + Format("%.6g", lo) +
                                             " to " + Format("%.6g", hi) + ", mean " + Format("%.6g", Mean(y)) +
                                             ", seasonality " + std::to_string(problem.seasonality) + "."});
    if (!(hi - lo > 1e-12 * std::max(std::fabs(lo), std::fabs(hi)))) {
      Trivial(r, y, horizon, texts::kConstantSeries);
      return false;
    }
  }
  if (n < 3) {
    Trivial(r, y, horizon, texts::kTooFewObservations);
    return false;
  }
  // Seasonal terms need at least two full periods beyond the first.
  if (period > 1 && n < 2 * period + 3) {
    r.notes.push_back({texts::kHeadData, "Too few observations for seasonal terms of period " +
                                             std::to_string(period) + "; none are used."});
    period = 1;
  }
  ConvergenceCriteria& crit = w.crit;
  crit.sse_change_pct = rules.sse_change_pct;
  crit.parameter_change_pct = rules.parameter_change_pct;
  crit.max_iterations = rules.estimation_enabled ? std::max(0, rules.max_iterations) : 0;
  if (!rules.estimation_enabled) r.warnings.push_back(texts::kEstimationDisabled);
  return true;
}

// Box-Cox power from the rules' list by profile likelihood (with the Jacobian), under
// a fixed ARIMA(1,d,1)(0,D,1) whose differencing comes from the untransformed series.
double ChoosePower(const EngineRules& rules, const std::vector<double>& y, int period, const ConvergenceCriteria& crit,
                   ModelResult& r) {
  const int n = static_cast<int>(y.size());
  double lambda = 1.0;
  std::vector<double> candidates;
  for (double l : rules.lambdas)
    if (std::isfinite(l) && l >= -1.0 && l <= 1.0 && PowerApplies(y, l)) candidates.push_back(l);
  const bool only_none =
      candidates.empty() || (candidates.size() == 1 && std::fabs(candidates[0] - 1.0) < 1e-12);
  if (!only_none && n < kMinForTransform) {
    r.notes.push_back({texts::kHeadTransform, "Too few observations (" + std::to_string(n) +
                                                  ") to choose a power transform; none is used."});
  } else if (!only_none) {
    const int D0 = period > 1 ? SeasonalDifferences(y, period, nullptr) : 0;
    const int d0 = RegularDifferences(Difference(y, period, D0), 2, nullptr);
    ArimaOrders s;
    s.p = 1; s.q = 1; s.d = d0; s.D = D0; s.Q = period > 1 ? 1 : 0; s.period = period;
    s.constant = d0 + D0 <= 1;
    double best = -std::numeric_limits<double>::infinity();
    double ll_none = -std::numeric_limits<double>::infinity();
    std::string story;
    for (double l : candidates) {
      const std::vector<double> zl = BoxCox(y, l);
      const double sc = ScaleOf(zl);
      ConvergenceCriteria quick = crit;
      quick.max_iterations = std::min(std::max(crit.max_iterations, 5), 10);
      const ArimaFit f = FitArima(Scaled(zl, sc), s, quick, false);
      if (!f.ok) continue;
      const int burn = n - f.n;
      const double ll = f.loglik - f.n * std::log(sc) + BoxCoxLogJacobian(y, l, burn);
      story += "lambda " + Format("%.2f", l) + ": log-likelihood " + Format("%.3f", ll) + "; ";
      if (std::fabs(l - 1.0) < 1e-12) ll_none = ll;
      if (ll > best) {
        best = ll;
        lambda = l;
      }
    }
    // A transform must earn its place: without a clear gain in likelihood (a
    // likelihood-ratio test at 5 %, one degree of freedom) the series stays as it is, since
    // a needless power bends the forecasts of a trending series.
    if (std::isfinite(ll_none) && best - ll_none < kTransformGain) {
      if (std::fabs(lambda - 1.0) > 1e-12) story += "gain below " + Format("%.2f", kTransformGain) + "; ";
      lambda = 1.0;
    }
    r.notes.push_back({texts::kHeadTransform, story + "chosen lambda " + Format("%.2f", lambda) + "."});
  } else {
    r.notes.push_back({texts::kHeadTransform, "No power transform (lambda 1)."});
  }
  return lambda;
}

// Identification: the differencing from the unit-root tests, then the ARMA orders by the
// stepwise search (simpler models when it finds none that can be estimated). False when r
// is final.
bool IdentifyOrders(ModelResult& r, AutomaticWork& w, ArimaFit& best) {
  const std::vector<double>& z = w.z;
  const int n = w.n, period = w.period;
  const ConvergenceCriteria& crit = w.crit;
  int D = 0;
  if (period > 1) {
    double strength = 0.0;
    D = SeasonalDifferences(z, period, &strength);
    r.notes.push_back({texts::kHeadDifferencing, "Seasonal strength " + Format("%.3f", strength) +
                                                     " (threshold 0.64): " + std::to_string(D) +
                                                     " seasonal difference(s) of period " + std::to_string(period) + "."});
  }
  std::vector<DifferencingStep> steps;
  const int max_d = n - period * D > 10 ? 2 : 1;
  const int d = RegularDifferences(Difference(z, period, D), max_d, &steps);
  {
    std::string text;
    for (size_t i = 0; i < steps.size(); ++i) {
      const KpssResult& k = steps[i].kpss;
      text += "KPSS after " + std::to_string(i) + " difference(s): statistic " + Format("%.4f", k.statistic) +
              ", p-value " + Format("%.3f", k.p_value) + ", lags " + std::to_string(k.lags) + ". ";
      // Where KPSS was in doubt the Dickey-Fuller test decided: say so, or the note would
      // show a p-value above 5 % beside a difference taken.
      const AdfResult& a = steps[i].adf;
      if (a.computed)
        text += "Augmented Dickey-Fuller: statistic " + Format("%.4f", a.statistic) + ", 5 % point " +
                Format("%.4f", a.critical_5) + ", lags " + std::to_string(a.lags) + ", unit root " +
                (a.statistic < a.critical_5 ? "rejected" : "not rejected") + ". ";
    }
    r.notes.push_back({texts::kHeadDifferencing, text + std::to_string(d) + " regular difference(s)."});
  }

  SearchOptions& so = w.so;
  so.criteria = crit;
  // Long periods make the state large (its size grows with the period times P or Q):
  // weekly and longer cycles get one seasonal term at most, very long ones none.
  if (period > 60) so.max_P = so.max_Q = 0;
  else if (period > 24) so.max_P = so.max_Q = 1;
  std::vector<SearchStep> trail;
  best = StepwiseSearch(z, d, D, period, so, &trail);
  {
    std::string text;
    for (const SearchStep& s : trail)
      text += s.model + (s.usable ? ": AICc " + Format("%.3f", s.aicc) : std::string(": not usable")) + "; ";
    r.notes.push_back({texts::kHeadSearch, text + "chosen " + (best.ok ? best.orders.Name() : std::string("none")) + "."});
  }
  if (!best.ok) {
    // Simpler and simpler models until one can be estimated.
    r.warnings.push_back(texts::kFallbackModel);
    const int ds[][2] = {{d, D}, {1, 0}, {0, 0}};
    for (const auto& dd : ds) {
      ArimaOrders s;
      s.d = dd[0];
      s.D = period > 1 ? dd[1] : 0;
      s.period = period;
      s.constant = s.d + s.D == 0;
      best = FitArima(z, s, crit, false);
      if (best.ok) break;
    }
    if (!best.ok) {
      Trivial(r, w.y, w.horizon, texts::kTooFewObservations);
      return false;
    }
  }
  return true;
}

// Constancy of parameters: when they changed, the latest stable segment is modelled alone
// and its result is the answer (true, in `segment`).
bool ChangedParameters(const ModelingProblem& problem, const StageCallback& on_stage, ModelResult& r,
                       const AutomaticWork& w, const ArimaFit& best, ModelResult& segment) {
  const EngineRules& rules = problem.rules;
  const std::vector<double>& z = w.z;
  const int n = w.n;
  const ConvergenceCriteria& crit = w.crit;
  const ParameterChange pc = TestConstancy(z, best.orders, crit, rules.constancy_level, rules.min_group_size);
  const std::string at = ObservationPeriodText(pc.index, problem.seasonality, problem.begin_year, problem.begin_period);
  if (pc.found) {
    ModelResult seg = ModelLatestSegment(problem, pc.index, on_stage);
    const std::string why = "The parameters of the model changed at " + at + " (F " + Format("%.2f", pc.statistic) +
                            ", critical " + Format("%.2f", pc.critical) + "); the model was fitted to the " +
                            std::to_string(n - pc.index) + " observations from then on.";
    seg.notes.insert(seg.notes.begin(), r.notes.begin(), r.notes.end());
    seg.notes.insert(seg.notes.begin() + static_cast<long>(r.notes.size()), {kHeadConstancy, why});
    seg.warnings.push_back(why);
    DiagnosticChange change;
    change.observation = pc.index + 1;
    change.statistic = pc.statistic;
    change.critical = pc.critical;
    seg.parameter_changes.push_back(change);
    segment = std::move(seg);
    return true;
  }
  r.notes.push_back({kHeadConstancy, pc.breaks_tried == 0
                                         ? std::string("Too few observations to test the constancy of parameters.")
                                         : "No change of parameters at " + Format("%.1f", rules.constancy_level) +
                                               " % (largest F " + Format("%.2f", pc.statistic) + " at " + at +
                                               ", critical " + Format("%.2f", pc.critical) + ")."});
  return false;
}

// One term dropped and the model estimated again (by `refit`, from the given estimates) while a
// term is not significant at the rules' necessity level. Returns what was dropped, or nothing.
using Refit = std::function<ArimaFit(const ArimaOrders&, const ArmaCoefficients&)>;
std::string DropUnneededTerms(const EngineRules& rules, const Refit& refit, ArimaFit& fit) {
  const double alpha = 1.0 - std::clamp(rules.necessity_level, 1.0, 99.99) / 100.0;
  std::string text;
  for (int round = 0; round < 20; ++round) {
    std::vector<TermRef> refs;
    const std::vector<Coefficient> cs = Coefficients(fit, &refs);
    std::vector<int> weak;
    for (size_t i = 0; i < cs.size(); ++i)
      if (cs[i].std_error > 0.0 && cs[i].p_value > alpha) weak.push_back(static_cast<int>(i));
    if (weak.empty()) break;
    // Of the terms that fail the test, the one whose removal leaves the best model (lowest
    // AICc) goes first, not simply the one with the largest p-value: in a model with nearly
    // cancelling AR and MA factors every term of the pair has a large standard error, and the
    // largest p-value points at whichever term the estimates happen to blur most. Every term
    // left at the end is still significant at the level. On a tie the larger p-value goes.
    std::stable_sort(weak.begin(), weak.end(), [&](int a, int b) { return cs[a].p_value > cs[b].p_value; });
    ArimaFit chosen;
    int chosen_i = -1;
    for (int worst : weak) {
      ArimaOrders s = fit.orders;
      const TermRef ref = refs[worst];
      auto hold = [](std::vector<bool>& zero, int order, int index) {
        zero.resize(order, false);
        zero[index] = true;
      };
      switch (ref.group) {
        case 0: hold(s.ar_zero, s.p, ref.index); break;
        case 1: hold(s.ma_zero, s.q, ref.index); break;
        case 2: hold(s.sar_zero, s.P, ref.index); break;
        case 3: hold(s.sma_zero, s.Q, ref.index); break;
        default: s.constant = false; break;
      }
      TrimOrders(s);
      // From the model's own estimates (the dropped term's simply left out): the optimum
      // nearest the model that was judged, not whichever one a fresh start finds.
      ArimaFit next = refit(s, fit.coef);
      if (!next.ok) continue;
      if (chosen_i < 0 || next.aicc < chosen.aicc) {
        chosen = std::move(next);
        chosen_i = worst;
      }
    }
    if (chosen_i < 0) break;
    text += cs[chosen_i].term + " dropped (p-value " + Format("%.3f", cs[chosen_i].p_value) + "). ";
    fit = chosen;
  }
  return text;
}

// Estimation: the chosen orders again with standard errors; sufficiency, then necessity.
void EstimateModel(const EngineRules& rules, ModelResult& r, AutomaticWork& w, const ArimaFit& best) {
  const std::vector<double>& z = w.z;
  const ConvergenceCriteria& crit = w.crit;
  ArimaFit& fit = w.fit;
  fit = FitArima(z, best.orders, crit, true);
  if (!fit.ok) fit = best;
  // Sufficiency first, so that the final model passes the necessity test whatever the
  // two levels.
  if (rules.sufficiency_stochastic) {
    const std::string text = Sufficiency(z, fit, crit, rules.sufficiency_ss_level);
    r.notes.push_back({texts::kHeadSufficiency, text});
  }
  if (rules.necessity) {
    const std::string text = DropUnneededTerms(
        rules, [&](const ArimaOrders& s, const ArmaCoefficients& c) { return FitArima(z, s, crit, true, &c); }, fit);
    r.notes.push_back({texts::kHeadNecessity,
                       text.empty() ? "Every term is significant at " + Format("%.1f", rules.necessity_level) + " %." : text});
  }
  if (!fit.converged && crit.max_iterations > 0) r.warnings.push_back(texts::kNotConverged);
}

// The model kept after detection passes the necessity test too: an ARMA term that stood in
// for outliers, steps or trends, and was significant only while they were in the noise, is
// not needed once they are estimated beside it. The noise model of the joint fit is the one
// of the series less the effects, so the terms are judged there, the effects held at their
// estimates (a plain fit per term tried, not a joint one), and the effects are estimated
// again with the noise model that is left.
void NeededBesideEffects(const ModelingProblem& problem, ModelResult& r, AutomaticWork& w) {
  const EngineRules& rules = problem.rules;
  const std::vector<double>& z = w.z;
  const ConvergenceCriteria& crit = w.crit;
  ArimaFit& fit = w.fit;
  if (w.found.empty()) {
    if (fit.std_errors.empty()) {
      const ArimaFit with_se = FitArima(z, fit.orders, crit, true, &fit.coef);
      if (with_se.ok) fit = with_se;
    }
    const std::string text = DropUnneededTerms(
        rules, [&](const ArimaOrders& s, const ArmaCoefficients& c) { return FitArima(z, s, crit, true, &c); }, fit);
    if (!text.empty()) r.notes.push_back({texts::kHeadNecessity, "After detection: " + text});
    return;
  }
  const std::vector<std::vector<double>> X = intervention_parts::Regressors(w.found, w.period, w.n);
  const std::vector<double> u = RemoveRegressors(z, X, w.with_effects.beta);
  ArimaFit noise = FitArima(u, fit.orders, crit, true, &fit.coef);
  if (!noise.ok) return;
  const std::string text = DropUnneededTerms(
      rules, [&](const ArimaOrders& s, const ArmaCoefficients& c) { return FitArima(u, s, crit, true, &c); }, noise);
  if (text.empty()) return;
  const RegressionArimaFit joint = FitRegressionArima(z, X, noise.orders, crit, true, &noise.coef);
  if (!joint.ok) return;
  w.with_effects = joint;
  fit = joint.arima;
  intervention_parts::TakeEstimates(w.found, joint);
  w.effects =
      InterventionEffects(w.found, w.period, w.n, w.horizon, rules.last_pulse_to_step, rules.pulse_to_seasonal);
  r.notes.push_back({texts::kHeadNecessity, "With the interventions in the model: " + text});
}

// Interventions: unusual events found and estimated together with the model, which may
// then differ from the one identified (see DetectWithIdentification); then seasonal pulses
// at several periods of the cycle replaced by a full set of seasonal dummies when that
// fits better.
void FindInterventions(const ModelingProblem& problem, ModelResult& r, AutomaticWork& w) {
  const EngineRules& rules = problem.rules;
  const std::vector<double>& z = w.z;
  const int n = w.n, period = w.period, horizon = w.horizon;
  const ConvergenceCriteria& crit = w.crit;
  ArimaFit& fit = w.fit;
  std::vector<DetectedIntervention>& found = w.found;
  std::vector<double>& effects = w.effects;
  RegressionArimaFit& with_effects = w.with_effects;
  if (rules.sufficiency_deterministic && crit.max_iterations > 0) {
    const DetectionResult det = DetectWithIdentification(z, fit, DetectionOptionsFromRules(rules, period, crit), w.so);
    // A model with fewer differences is kept even when it came back without effects.
    if (det.fit.ok && (!det.found.empty() || det.fit.arima.orders.d != fit.orders.d)) {
      fit = det.fit.arima;
      found = det.found;
      with_effects = det.fit;
      effects = InterventionEffects(found, period, n, horizon, rules.last_pulse_to_step, rules.pulse_to_seasonal);
    }
    r.notes.push_back({kHeadInterventions, InterventionStory(det)});
    if (rules.necessity) NeededBesideEffects(problem, r, w);
  }
  // Seasonal pulses at several periods of the cycle: a full set of seasonal dummies tried in
  // their place. Not with the change-of-variance test, which weighs the interventions alone.
  SeasonalFixup& fixup = w.fixup;
  const int first_position = w.first_position = ((problem.begin_period - 1) % period + period) % period;
  if (rules.fixup_seasonal_dummies && !found.empty() && !rules.variance_change) {
    fixup = TrySeasonalDummies(z, found, with_effects, period, first_position, horizon, crit);
    if (fixup.applied) {
      fit = fixup.fit.arima;
      found = fixup.found;
      with_effects = fixup.fit;
      effects = InterventionEffects(found, period, n, horizon, rules.last_pulse_to_step, rules.pulse_to_seasonal);
      effects.resize(fixup.effects.size(), 0.0);
      for (size_t t = 0; t < effects.size(); ++t) effects[t] += fixup.effects[t];
    }
    if (fixup.tried) r.notes.push_back({kHeadInterventions, fixup.note});
  }
}

// Discrete change of variance: the forecast limits rest on the variance of the last
// segment of the residuals.
void AllowForVarianceChange(const ModelingProblem& problem, ModelResult& r, AutomaticWork& w) {
  const EngineRules& rules = problem.rules;
  const std::vector<double>& z = w.z;
  const int n = w.n, period = w.period;
  const double scale = w.scale;
  ArimaFit& fit = w.fit;
  const std::vector<DetectedIntervention>& found = w.found;
  RegressionArimaFit& with_effects = w.with_effects;
  if (found.empty()) {
    with_effects = RegressionArimaFit{};
    with_effects.ok = true;
    with_effects.arima = fit;
  }
  int first = 0;
  const std::vector<double> e = ModelInnovations(z, found, period, with_effects, first);
  const std::vector<VarianceChange> changes =
      FindVarianceChanges(e, first, rules.variance_level, rules.min_residuals_to_pool);
  std::string text;
  for (const VarianceChange& c : changes) {
    DiagnosticChange change;
    change.observation = c.index + 1;
    change.before = c.before * scale * scale;
    change.after = c.after * scale * scale;
    change.statistic = c.statistic;
    r.variance_changes.push_back(change);
  }
  for (const VarianceChange& c : changes)
    text += "at " + ObservationPeriodText(c.index, problem.seasonality, problem.begin_year, problem.begin_period) +
            " from " + Format("%.6g", c.before * scale * scale) + " to " + Format("%.6g", c.after * scale * scale) +
            "; ";
  if (changes.empty()) {
    r.notes.push_back({kHeadVarianceChange, "No change of the residual variance at " +
                                                Format("%.1f", rules.variance_level) + " %."});
  } else {
    // Each one-step error weighted by the inverse of its segment's standard deviation: the
    // noisy stretch no longer outweighs the quiet one, and the innovation variance that
    // comes out is the last segment's, on which the limits rest.
    std::vector<double> u = z;
    for (int t = 0; t < n && t < static_cast<int>(w.effects.size()); ++t) u[t] -= w.effects[t];
    const ArimaFit weighted = FitArimaWeighted(u, fit, SegmentScales(n, changes), w.crit);
    const bool reweighted = weighted.ok;
    if (reweighted) fit = weighted;
    else fit.sigma2 = LastSegmentVariance(e, first, changes);
    const std::string since = ObservationPeriodText(changes.back().index, problem.seasonality, problem.begin_year,
                                                    problem.begin_period);
    r.notes.push_back({kHeadVarianceChange, "The residual variance changed " + text +
                                                (reweighted ? "the model was estimated again with each observation "
                                                              "weighted by the inverse of its segment's standard "
                                                              "deviation; "
                                                            : std::string()) +
                                                "the forecast limits use the variance since " + since + "."});
    r.warnings.push_back("The residual variance changed; the forecast limits use the variance since " + since + ".");
  }
}

// The model on the scale of the data: orders, coefficients, interventions and equation.
void DescribeModel(const ModelingProblem& problem, ModelResult& r, const AutomaticWork& w) {
  const ArimaFit& fit = w.fit;
  const double scale = w.scale, lambda = w.lambda;
  const std::vector<DetectedIntervention>& found = w.found;
  const SeasonalFixup& fixup = w.fixup;
  const int period = w.period, first_position = w.first_position;
  const int dummy_count = static_cast<int>(fixup.dummies.size());
  ArimaFit shown = fit;
  shown.mean = fit.mean * scale;
  if (!shown.std_errors.empty() && fit.orders.constant) shown.std_errors.back() *= scale;
  SetOrders(r, fit.orders);
  r.coefficients = Coefficients(shown, nullptr);
  DescribeInterventions(found, scale, problem.seasonality, problem.begin_year, problem.begin_period,
                        std::max(1, fit.n - fit.orders.FreeCount() - (fit.orders.constant ? 1 : 0) -
                                        static_cast<int>(found.size()) - dummy_count),
                        r.interventions, r.coefficients);
  DescribeSeasonalDummies(fixup, scale, period, first_position,
                          fit.n - fit.orders.FreeCount() - (fit.orders.constant ? 1 : 0) -
                              static_cast<int>(found.size()) - dummy_count,
                          r.coefficients);
  r.description = fit.orders.Name();
  r.equation = Equation(shown, lambda, problem.output_name.empty() ? "Y" : problem.output_name);
  if (!found.empty() || fixup.applied) {
    // Seasonal dummies are terms of the equation as the interventions are.
    std::vector<Coefficient> terms = r.coefficients;
    for (Coefficient& c : terms)
      if (c.kind == "dummy") c.kind = "intervention";
    r.equation = InterventionEquation(terms,
                                      TransformName(lambda, problem.output_name.empty() ? "Y" : problem.output_name)) +
                 "\n" + Equation(shown, 1.0, "N");
  }
}

// Diagnosis and forecasts, and the notes that sum the model up.
void DiagnoseAndForecast(ModelResult& r, const AutomaticWork& w) {
  const ArimaFit& fit = w.fit;
  const int n = w.n;
  const double scale = w.scale;
  const int dummy_count = static_cast<int>(w.fixup.dummies.size());
  // What a forecast from an earlier origin knew: the interventions that began before it and
  // the seasonal dummies; the later ones are surprises the limits must allow for.
  const KnownEffects known = [&w](int origin) {
    std::vector<DetectedIntervention> before;
    for (const DetectedIntervention& d : w.found)
      if (d.index < origin) before.push_back(d);
    std::vector<double> e = InterventionEffects(before, w.period, w.n, 0, false, false);
    for (int t = 0; t < w.n && t < static_cast<int>(w.fixup.effects.size()); ++t) e[t] += w.fixup.effects[t];
    return e;
  };
  LimitAllowances allow = ForecastAllowances(fit, fit.sigma2, w.found);
  // The shape of the innovations' tails; not after a change of variance, where the errors
  // of the noisier stretch would pass for heavy tails of the last one's.
  if (r.variance_changes.empty() && w.horizon > 0) {
    std::vector<double> u = w.z;
    for (int t = 0; t < n && t < static_cast<int>(w.effects.size()); ++t) u[t] -= w.effects[t];
    std::vector<int> at;
    std::vector<double> size;
    for (const DetectedIntervention& d : w.found)
      if (d.type == kPulse) {
        at.push_back(d.index);
        size.push_back(d.impact);
      }
    allow.tail_ratio = TailRatios(InnovationsWithPulses(u, fit, at, size), fit, w.horizon, w.coverage);
    if (!allow.tail_ratio.empty())
      r.notes.push_back({texts::kHeadModel, "The residuals are far from normal (Jarque-Bera); the limits follow "
                                            "their own distribution run through the model: one period ahead " +
                                                Format("%.3f", allow.tail_ratio[0]) + " times the normal width."});
  }
  Finish(r, w.y, w.z, fit, w.lambda, scale, w.horizon, w.coverage, w.effects,
         static_cast<int>(w.found.size()) + dummy_count, allow, r.variance_changes.empty(), known);
  std::string text = r.description + ", " + std::to_string(r.parameters) + " parameter(s), sigma^2 " +
                     Format("%.6g", fit.sigma2 * scale * scale) + ", log-likelihood " + Format("%.3f", r.loglik) +
                     ", AIC " + Format("%.3f", r.aic) + ", BIC " + Format("%.3f", r.bic) + ".";
  r.notes.push_back({texts::kHeadModel, text});
  const int burn = n - fit.n;
  if (burn > 0)
    r.notes.push_back({texts::kHeadModel, "The first " + std::to_string(burn) +
                                              " observation(s) start the differencing; their fitted values equal the actuals."});
  r.notes.push_back({texts::kHeadDiagnosis,
                     "Ljung-Box Q " + Format("%.3f", r.ljung_box_q) + " over " + std::to_string(r.ljung_box_lags) +
                         " lags, p-value " + Format("%.4f", r.ljung_box_p) + "; Jarque-Bera " +
                         Format("%.3f", r.normality_stat) + ", p-value " + Format("%.4f", r.normality_p) +
                         "; R-squared " + Format("%.4f", r.r_squared) + "; in-sample MAPE " +
                         Format("%.3f", r.mape) + " %."});
}

ModelResult ModelAndForecast(const ModelingProblem& problem, const StageCallback& on_stage) {
  // Presets, the user's model and problems with input series are models of a given
  // structure or transfer functions (structured.h), which come back here for one series.
  if (IsPresetObjective(problem.objective) || (problem.objective == 99 && !problem.start_model.empty()) ||
      !problem.inputs.empty())
    return FitModel(problem, on_stage);
  // Intermittent demand under its rule: Croston-type modelling, or the usual way with a note.
  if (problem.rules.intermittent) return FitIntermittentDemand(problem, on_stage, FitAndForecast);
  if (problem.objective == kObjectiveCombination) return FitCombination(problem, on_stage, ModelAndForecast);
  ModelResult r;
  const EngineRules& rules = problem.rules;
  auto stage = [&](Stage s) { return Stage_(on_stage, s, r); };
  AutomaticWork w;

  if (!stage(Stage::DataPreparation)) return r;
  if (!PrepareSeries(problem, r, w)) return r;
  w.lambda = r.lambda = ChoosePower(rules, w.y, w.period, w.crit, r);
  const std::vector<double> zt = BoxCox(w.y, w.lambda);
  w.scale = ScaleOf(zt);
  w.z = Scaled(zt, w.scale);

  if (!stage(Stage::Identification)) return r;
  ArimaFit best;
  if (!IdentifyOrders(r, w, best)) return r;
  if (rules.constancy && problem.inputs.empty()) {
    ModelResult segment;
    if (ChangedParameters(problem, on_stage, r, w, best, segment)) return segment;
  }

  if (!stage(Stage::Estimation)) return r;
  EstimateModel(rules, r, w, best);
  FindInterventions(problem, r, w);
  if (rules.variance_change) AllowForVarianceChange(problem, r, w);
  DescribeModel(problem, r, w);

  if (!stage(Stage::Diagnosis)) return r;
  DiagnoseAndForecast(r, w);
  return r;
}

}  // namespace

}  // namespace quorvane