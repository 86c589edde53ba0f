// Pooled cross-sections: the modelling of a pooled dataset, one model for the stacked groups
// with no lag crossing a group boundary: its fit, the necessity and sufficiency of its terms,
// and the whole flow from the data to the forecasts.
#include "engine/model/pooled.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <numeric>
#include <tuple>

#include <Eigen/Dense>
#include <boost/math/distributions/fisher_f.hpp>

#include "engine/model/arma.h"
#include "engine/model/equation_text.h"
#include "engine/model/estimate_parts.h"
#include "engine/model/forecast.h"
#include "engine/model/model_parts.h"
#include "engine/model/pooled_parts.h"
#include "engine/model/regression_noise.h"
#include "engine/model/search.h"
#include "engine/model/series_stats.h"
#include "engine/model/simulation.h"
#include "engine/model/structured.h"
#include "engine/model/texts.h"
#include "engine/model/transform.h"
#include "engine/model/unit_root.h"

namespace quorvane {

using namespace pooled_parts;

FitInput pooled_parts::MakeFitInput(const PooledData& d, const PooledModel& m) {
  FitInput in;
  in.lambda = m.lambda;
  for (const auto& seg : d.y)
    if (!PowerApplies(seg, in.lambda)) in.lambda = 1.0;
  int smallest = std::numeric_limits<int>::max();
  for (int s : d.sizes) smallest = std::min(smallest, s);
  in.leading = std::clamp(m.leading, 0, std::max(0, smallest - 1));
  std::vector<std::vector<double>> zt;
  for (const auto& seg : d.y) {
    in.y.emplace_back(seg.begin() + in.leading, seg.end());
    zt.push_back(BoxCox(in.y.back(), in.lambda));
  }
  in.scale = ScaleOf(zt);
  for (auto& seg : zt)
    for (double& v : seg) v /= in.scale;
  in.z = std::move(zt);
  in.X.resize(d.y.size());
  for (size_t g = 0; g < d.y.size(); ++g) {
    const int len = static_cast<int>(in.z[g].size());
    for (const auto& c : m.columns) {
      std::vector<double> x(len, 0.0);
      for (int t = 0; t < len; ++t) {
        const size_t at = static_cast<size_t>(t + in.leading);
        x[t] = at < c.values[g].size() && std::isfinite(c.values[g][at]) ? c.values[g][at] : 0.0;
      }
      in.X[g].push_back(std::move(x));
    }
  }
  return in;
}

namespace {

std::string Equation(const ModelingProblem& problem, const PooledModel& m, const RegressionArimaFit& fr,
                     double lambda, double scale) {
  const ArimaFit& f = fr.arima;
  const std::string name = problem.output_name.empty() ? "Y" : problem.output_name;
  std::string lhs = Factor(f.coef.ar, 1, -1.0) + Factor(f.coef.sar, f.orders.period, -1.0);
  for (int i = 0; i < f.orders.d; ++i) lhs += "(1 - B)";
  for (int i = 0; i < f.orders.D; ++i) lhs += "(1 - B**" + std::to_string(f.orders.period) + ")";
  std::string rhs = f.orders.constant ? Format("%.6g", f.mean * scale) + " + " : "";
  const std::string ma = Factor(f.coef.ma, 1, 1.0) + Factor(f.coef.sma, f.orders.period, 1.0);
  rhs += ma + (ma.empty() ? "" : " ") + "a(t)";
  if (m.columns.empty()) return lhs + (lhs.empty() ? "" : " ") + TransformName(lambda, name) + "(t) = " + rhs;
  std::string eq = TransformName(lambda, name) + "(t) =";
  for (size_t j = 0; j < m.columns.size(); ++j) {
    const double v = fr.beta[j] * scale;
    eq += (j == 0 ? " " + Format("%.6g", v) : (v < 0 ? " - " : " + ") + Format("%.6g", std::fabs(v))) + " " +
          m.columns[j].term;
    if (m.columns[j].denominator != 0.0) eq += " / (1 - " + Format("%.4f", m.columns[j].denominator) + "B)";
  }
  eq += " + N(t)";
  return eq + "\n" + lhs + (lhs.empty() ? "" : " ") + "N(t) = " + rhs;
}

// The residual autocorrelations and the Ljung-Box test within the groups (no product of
// residuals across a boundary), in place of those of the residuals one after another;
// the normality test stays as it is.
void PooledResidualChecks(ModelResult& r, const std::vector<std::vector<double>>& innov, double scale,
                          int arma_parameters, int used) {
  double sum = 0.0, ss = 0.0;
  int n = 0;
  for (const auto& seg : innov)
    for (double e : seg)
      if (std::isfinite(e)) {
        sum += e * scale;
        ++n;
      }
  if (n < 3) return;
  const double mean = sum / n;
  for (const auto& seg : innov)
    for (double e : seg)
      if (std::isfinite(e)) ss += (e * scale - mean) * (e * scale - mean);
  if (!(ss > 0.0)) return;
  auto acf = [&](int k) {
    double c = 0.0;
    for (const auto& seg : innov)
      for (size_t t = static_cast<size_t>(k); t < seg.size(); ++t)
        if (std::isfinite(seg[t]) && std::isfinite(seg[t - k])) c += (seg[t] * scale - mean) * (seg[t - k] * scale - mean);
    return c / ss;
  };
  const int acf_lags = static_cast<int>(r.residual_acf.size());
  for (int k = 1; k <= acf_lags; ++k) r.residual_acf[k - 1] = acf(k);
  const int lb_lags = r.ljung_box_lags;
  if (lb_lags < 1 || used < lb_lags + 2) return;
  double q = 0.0;
  for (int k = 1; k <= lb_lags; ++k) {
    const double a = acf(k);
    q += a * a / std::max(1, n - k);
  }
  q *= n * (n + 2.0);
  r.ljung_box_q = q;
  r.ljung_box_p = ChiSquareUpperTail(q, std::max(1, lb_lags - arma_parameters));
}

// Estimates the model on the groups and fills everything the reports need, the forecasts
// continuing the last group. error_code 3 when the model cannot be estimated.
ModelResult FitPooledModel(const ModelingProblem& problem, const PooledData& d, const PooledModel& m,
                           const ConvergenceCriteria& crit, int horizon, RegressionArimaFit* fit_out = nullptr) {
  ModelResult r;
  const FitInput in = MakeFitInput(d, m);
  if (in.lambda != m.lambda)
    r.warnings.push_back("The power transform " + Format("%.2f", m.lambda) +
                         " cannot be applied to values that are not positive; none was used.");
  const RegressionArimaFit fr =
      FitPooledRegressionArima(in.z, in.X, m.noise, crit, true, m.has_start ? &m.start : nullptr);
  if (!fr.ok) {
    r.error_code = kCodeEstimation;
    r.warnings.push_back("The pooled model " + (m.name.empty() ? std::string() : m.name + " ") + "(" +
                         m.noise.Name() + ") could not be estimated on these groups.");
    return r;
  }
  if (fit_out) *fit_out = fr;
  const ArimaFit& f = fr.arima;
  const double scale = in.scale;
  const double lambda = in.lambda;
  r.lambda = lambda;
  SetOrders(r, f.orders);
  r.parameters = f.orders.FreeCount() + (f.orders.constant ? 1 : 0) + static_cast<int>(m.columns.size());
  const int df = std::max(1, f.n - r.parameters);
  AddArmaCoefficients(f, scale, df, r.coefficients);
  for (size_t j = 0; j < m.columns.size(); ++j) {
    const PooledColumn& col = m.columns[j];
    const Coefficient c = ColumnCoefficient(col.term, col.kind, col.lag, fr, j, scale, df);
    r.coefficients.push_back(c);
    if (col.denominator != 0.0) r.coefficients.push_back(DenominatorCoefficient(col.input, col.denominator));
  }
  for (const auto& input : problem.inputs)
    for (const auto& col : m.columns)
      if (col.input == input.name) {
        r.inputs_kept.push_back(input.name);
        break;
      }
  r.description = (m.name.empty() ? std::string() : m.name + ": ") + f.orders.Name() + ", pooled over " +
                  std::to_string(d.sizes.size()) + " groups";
  r.equation = Equation(problem, m, fr, lambda, scale);

  // In-sample figures, group by group, in the places of the stacked series.
  const int n = static_cast<int>(problem.y.size());
  r.fitted.assign(n, kMissing);
  r.residuals.assign(n, kMissing);
  r.cleansed.assign(problem.y.begin(), problem.y.end());
  for (size_t g = 0; g < d.y.size(); ++g)
    for (size_t t = 0; t < d.y[g].size(); ++t) r.cleansed[d.offsets[g] + t] = d.y[g][t];
  const std::vector<std::vector<double>> innov = PooledInnovations(in.z, in.X, fr);
  InSampleTally tally;
  double jacobian = 0.0;
  const int burn = f.orders.d + f.orders.D * std::max(1, f.orders.period);
  for (size_t g = 0; g < in.z.size(); ++g) {
    if (lambda != 1.0) jacobian += BoxCoxLogJacobian(in.y[g], lambda, burn);
    for (size_t t = 0; t < in.z[g].size(); ++t) {
      if (!std::isfinite(innov[g][t])) continue;
      const double pred = in.z[g][t] - innov[g][t];
      const double fit = InverseBoxCox(pred * scale, lambda);
      const size_t at = static_cast<size_t>(d.offsets[g] + in.leading) + t;
      r.fitted[at] = fit;
      r.residuals[at] = tally.Add(in.y[g][t], fit, innov[g][t] * scale, in.z[g][t] * scale);
    }
  }
  tally.Finish(r, f.loglik - f.n * std::log(scale) + jacobian, f);
  PooledResidualChecks(r, innov, scale, f.orders.FreeCount(), tally.used);

  // Forecasts continue the last group: its noise from the common model, its columns'
  // future values.
  if (horizon > 0) {
    const size_t last = in.z.size() - 1;
    const std::vector<double> u =
        HasColumns(in.X) ? RemoveRegressors(in.z[last], in.X[last], fr.beta) : in.z[last];
    const ArimaForecast fc = ForecastArima(u, f, horizon, problem.rules.forecast_confidence);
    r.forecasts.resize(horizon);
    r.lower.resize(horizon);
    r.upper.resize(horizon);
    const size_t end = d.y[last].size();
    for (int h = 0; h < horizon; ++h) {
      double xb = 0.0;
      for (size_t j = 0; j < m.columns.size(); ++j) {
        xb += fr.beta[j] * FutureValue(m.columns[j].values[last], end + static_cast<size_t>(h));
      }
      SetForecast(r, h, fc, xb, scale, lambda);
    }
  }
  if (!f.converged && crit.max_iterations > 0) r.warnings.push_back(texts::kNotConverged);
  return r;
}

// Holds a term at zero (or drops a column, or the constant); false when there is no such term.
bool DropTerm(PooledModel& m, const Coefficient& c) {
  ArimaOrders& s = m.noise;
  auto hold = [](std::vector<bool>& zero, int& order, int index) {
    if (index < 0 || index >= order) return false;
    zero.resize(order, false);
    zero[index] = true;
    while (order > 0 && zero[order - 1]) {
      --order;
      zero.pop_back();
    }
    return true;
  };
  bool done = false;
  if (c.kind == "ar") done = hold(s.ar_zero, s.p, c.lag - 1);
  else if (c.kind == "ma") done = hold(s.ma_zero, s.q, c.lag - 1);
  else if (c.kind == "sar") done = hold(s.sar_zero, s.P, c.lag / std::max(1, s.period) - 1);
  else if (c.kind == "sma") done = hold(s.sma_zero, s.Q, c.lag / std::max(1, s.period) - 1);
  else if (c.kind == "constant") done = s.constant ? (s.constant = false, true) : false;
  else {
    auto it = std::find_if(m.columns.begin(), m.columns.end(), [&](const PooledColumn& col) { return col.term == c.term; });
    if (it != m.columns.end()) {
      m.columns.erase(it);
      done = true;
    }
  }
  m.start.ar.resize(s.p, 0.0);
  m.start.ma.resize(s.q, 0.0);
  m.start.sar.resize(s.P, 0.0);
  m.start.sma.resize(s.Q, 0.0);
  return done;
}

// Necessity: the least significant term dropped while one is above alpha.
std::string Necessity(const ModelingProblem& problem, const PooledData& d, PooledModel& m,
                      const ConvergenceCriteria& crit, double alpha, ModelResult& r) {
  std::string text;
  for (int round = 0; round < 30; ++round) {
    double worst_p = alpha;
    const int worst = LeastSignificant(r.coefficients, false, worst_p);
    if (worst < 0) break;
    PooledModel next = m;
    if (!DropTerm(next, r.coefficients[worst])) break;
    ModelResult nr = FitPooledModel(problem, d, next, crit, d.horizon);
    if (nr.error_code) break;
    text += r.coefficients[worst].term + " dropped (p-value " + Format("%.3f", worst_p) + "). ";
    m = next;
    r = nr;
  }
  return text;
}

// Sufficiency: while the pooled residuals fail the Ljung-Box test, one more AR or MA
// order, whichever lowers the AIC more, while one does.
std::string Sufficiency(const ModelingProblem& problem, const PooledData& d, PooledModel& m,
                        const ConvergenceCriteria& crit, double alpha, ModelResult& r) {
  std::string text;
  for (int round = 0; round < 2 && r.ljung_box_p < alpha; ++round) {
    ModelResult best;
    PooledModel best_model;
    bool found = false;
    for (int which = 0; which < 2; ++which) {
      PooledModel next = m;
      AddArmaOrder(next.noise, next.start, which == 0);
      ModelResult nr = FitPooledModel(problem, d, next, crit, d.horizon);
      if (nr.error_code == 0 && nr.aic < r.aic && (!found || nr.aic < best.aic)) {
        best = nr;
        best_model = next;
        found = true;
      }
    }
    if (!found) break;
    text += "Residuals autocorrelated (Ljung-Box p-value " + Format("%.4f", r.ljung_box_p) + "): extended to " +
            best_model.noise.Name() + ". ";
    m = best_model;
    r = best;
  }
  return text;
}

}  // namespace

// Kept whole: its stages (the groups prepared, constant groups, the model's structure,
// estimation and the tests of the terms, diagnosis) fill one result in the order the report
// tells them, each marked below.
ModelResult FitPooled(const ModelingProblem& problem, const StageCallback& on_stage) {
  ModelResult r;
  const EngineRules& rules = problem.rules;
  const int retained = static_cast<int>(problem.retained.size());
  const PoolLayout layout = PoolLayoutFor(rules, static_cast<int>(problem.y.size()) + retained);
  if (layout.error_code == 0 && !layout.pooled()) {
    ModelResult alone = FitModel(problem, on_stage);
    if (!layout.message.empty()) alone.warnings.insert(alone.warnings.begin(), layout.message);
    return alone;
  }
  if (!Stage_(on_stage, Stage::DataPreparation, r)) return r;
  if (layout.error_code) {
    r.error_code = layout.error_code;
    r.warnings.push_back(layout.message);
    return r;
  }

  // Data preparation: the groups of the estimation sample (the retained values come
  // off the last group).
  PooledData d;
  d.sizes = layout.sizes;
  d.sizes.back() -= retained;
  if (d.sizes.back() < kMinPoolGroupSize) {
    r.error_code = kCodePoolGroups;
    r.warnings.push_back("The last group of the pooled cross-section keeps " + std::to_string(d.sizes.back()) +
                         " observation(s) once the " + std::to_string(retained) +
                         " retained values are held out; at least " + std::to_string(kMinPoolGroupSize) +
                         " are needed.");
    return r;
  }
  int at = 0;
  for (int s : d.sizes) {
    d.offsets.push_back(at);
    at += s;
  }
  d.y = SplitGroups(problem.y, d.sizes);
  int filled = 0;
  for (size_t g = 0; g < d.y.size(); ++g) {
    const int f = FillMissing(d.y[g]);
    if (f == static_cast<int>(d.y[g].size())) {
      r.error_code = kCodePoolGroups;
      r.warnings.push_back("Group " + std::to_string(g + 1) + " of the pooled cross-section holds no values.");
      return r;
    }
    filled += f;
  }
  if (filled > 0)
    r.warnings.push_back(std::to_string(filled) +
                         " missing value(s) in the output series were filled by linear interpolation within their groups.");
  d.horizon = problem.horizon > 0 ? problem.horizon : rules.forecasts;
  if (!rules.forecasting_enabled) {
    d.horizon = 0;
    r.warnings.push_back(texts::kForecastingDisabled);
  }
  d.horizon = std::clamp(d.horizon, 0, 600);
  const int smallest = *std::min_element(d.sizes.begin(), d.sizes.end());

  // Groups that are each constant have no likelihood: the forecasts repeat the last
  // group's value.
  if (std::all_of(d.y.begin(), d.y.end(), [](const std::vector<double>& seg) {
        return std::all_of(seg.begin(), seg.end(), [&](double v) { return v == seg.front(); });
      })) {
    const double last = d.y.back().back();
    const std::string why = "Every group of the pooled cross-section is constant; the forecasts repeat the last "
                            "group's value with no uncertainty.";
    r.warnings.push_back(why);
    r.notes.push_back({kHeadPool, "The model is a pooled cross-section of " + PoolDescription(layout.sizes) + "."});
    r.notes.push_back({texts::kHeadModel, why});
    r.description = "CONSTANT, pooled over " + std::to_string(d.sizes.size()) + " groups";
    r.fitted = problem.y;
    r.residuals.assign(problem.y.size(), 0.0);
    r.cleansed = problem.y;
    for (size_t g = 0; g < d.y.size(); ++g)
      for (size_t t = 0; t < d.y[g].size(); ++t) r.fitted[d.offsets[g] + t] = r.cleansed[d.offsets[g] + t] = d.y[g][t];
    r.observations = static_cast<int>(problem.y.size());
    SetConstantModel(r, last, d.horizon);
    r.equation = (problem.output_name.empty() ? std::string("Y") : problem.output_name) + "(t) = " +
                 Format("%.6g", last);
    return r;
  }

  std::vector<Note> notes;
  notes.push_back({kHeadPool,
                   "The model is a pooled cross-section of " + PoolDescription(layout.sizes) +
                       ": one model for the stacked groups, with the same transform, differencing and "
                       "coefficients for all of them and no lag crossing a group boundary (each group is "
                       "differenced and filtered on its own). The forecasts continue the last group, the most "
                       "recent cross-section."});
  int period = problem.seasonality > 1 ? problem.seasonality : 1;
  if (period > 1 && smallest < 2 * period + 3) {
    notes.push_back({texts::kHeadData, "Too few observations in a group for seasonal terms of period " +
                                           std::to_string(period) + "; none are used."});
    period = 1;
  }
  const ConvergenceCriteria crit = CriteriaOf(rules);
  std::vector<std::string> warnings = r.warnings;
  if (!rules.estimation_enabled) warnings.push_back(texts::kEstimationDisabled);

  // The model's structure: the preset's, the user's, or identified from the groups.
  const int obj = problem.objective;
  const bool user = obj == 99 && !problem.start_model.empty();
  PooledModel m;
  bool identify = false;
  if (!Stage_(on_stage, Stage::Identification, r)) return r;
  if (IsPresetObjective(obj)) {
    if (!PresetStructure(problem, d, m, notes, r)) return r;
  } else if (user) {
    if (!UserStructure(problem, d, m, notes, r)) return r;
  } else {
    identify = true;
    if (obj != 0 && obj != 97 && obj != 99)
      warnings.push_back("Objective " + std::to_string(obj) + " is not available yet; the series was modelled automatically.");
    IdentifyStructure(problem, d, period, crit, m, notes, warnings);
  }

  // Estimation and the tests of the terms.
  if (!Stage_(on_stage, Stage::Estimation, r)) return r;
  r = FitPooledModel(problem, d, m, crit, d.horizon);
  if (r.error_code) {
    r.warnings.insert(r.warnings.begin(), warnings.begin(), warnings.end());
    return r;
  }
  const bool tune = identify || (rules.allow_modifications && rules.estimation_enabled);
  if (tune && rules.sufficiency_stochastic && rules.estimation_enabled) {
    const double alpha = 1.0 - std::clamp(rules.sufficiency_ss_level, 1.0, 99.99) / 100.0;
    const std::string text = Sufficiency(problem, d, m, crit, alpha, r);
    notes.push_back({texts::kHeadSufficiency,
                     text.empty() ? "The pooled residuals show no autocorrelation that a further term would remove."
                                  : text});
  }
  if (tune && rules.necessity && rules.estimation_enabled) {
    const double alpha = 1.0 - std::clamp(rules.necessity_level, 1.0, 99.99) / 100.0;
    const std::string text = Necessity(problem, d, m, crit, alpha, r);
    notes.push_back({texts::kHeadNecessity, text.empty() ? "Every term of the model is needed at " +
                                                               Format("%.1f", rules.necessity_level) + " %."
                                                         : text});
  }
  if (rules.sufficiency_deterministic)
    notes.push_back({"Interventions", "Intervention detection is not done for a pooled cross-section: an "
                                      "effect would belong to one group, the model to all of them."});
  if (rules.intermittent)
    notes.push_back({"Model", "Croston-type modelling of intermittent demand is not done for a pooled "
                              "cross-section; the groups were modelled as above."});
  if (rules.constancy || rules.variance_change)
    notes.push_back({"Diagnosis", "The tests of the constancy of parameters and of a change of variance are not "
                                  "done for a pooled cross-section: the stacked groups are not one time line."});
  if (r.forecasts.size() > 0)
    notes.push_back({"Forecasts", "The forecasts continue the last group (" + std::to_string(d.sizes.back()) +
                                      " observations), the most recent cross-section, with the pooled model."});

  // Diagnosis.
  if (!Stage_(on_stage, Stage::Diagnosis, r)) return r;
  r.notes.push_back({texts::kHeadModel, r.description + ", " + std::to_string(r.parameters) +
                                            " parameter(s) for all groups, error sum of squares " +
                                            Format("%.6g", r.sse) + ", log-likelihood " + Format("%.3f", r.loglik) +
                                            ", AIC " + Format("%.3f", r.aic) + ", BIC " + Format("%.3f", r.bic) + "."});
  r.notes.push_back({texts::kHeadDiagnosis,
                     "Ljung-Box Q " + Format("%.3f", r.ljung_box_q) + " over " + std::to_string(r.ljung_box_lags) +
                         " lags within the groups, p-value " + Format("%.4f", r.ljung_box_p) +
                         "; R-squared " + Format("%.4f", r.r_squared) + "; in-sample MAPE " + Format("%.3f", r.mape) +
                         " %."});
  r.notes.insert(r.notes.begin(), notes.begin(), notes.end());
  r.warnings.insert(r.warnings.begin(), warnings.begin(), warnings.end());
  return r;
}

ModelResult FitEngineModel(const ModelingProblem& problem, const StageCallback& on_stage) {
  const int observations = static_cast<int>(problem.y.size() + problem.retained.size());
  const PoolLayout layout = PoolLayoutFor(problem.rules, observations);
  if (layout.error_code == 0 && !layout.pooled()) return FitAndForecast(problem, on_stage);
  // A pooled model ends as every other kind does: simulated when the rules ask, then the
  // rules' conversions of its forecasts.
  ModelResult r = FitPooled(problem, on_stage);
  ApplySimulation(problem, r);
  ConvertForecastValues(r.forecasts, r.lower, r.upper, problem.rules.convert_positive,
                        problem.rules.convert_integers);
  return r;
}

}  // namespace quorvane