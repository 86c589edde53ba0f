// Transfer-function models of the output series on its input series: inputs identified from
// the cross-correlations of the prewhitened series, the noise's ARIMA from what they leave.
#include "engine/model/structured.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <limits>

#include <Eigen/Dense>

#include "engine/model/equation_text.h"
#include "engine/model/forecast.h"
#include "engine/model/holt_winters.h"
#include "engine/model/model_parts.h"
#include "engine/model/search.h"
#include "engine/model/series_stats.h"
#include "engine/model/structured_parts.h"
#include "engine/model/transform.h"
#include "engine/model/unit_root.h"

namespace quorvane {

using namespace structured_parts;

// Kept whole: the stages of the model (inputs prewhitened and their lags chosen, the
// noise identified on what they leave, estimation, necessity, interventions, forecasts) read
// and extend one model and its notes in order, as the report tells them.
ModelResult FitTransferFunction(const ModelingProblem& problem, const StageCallback& on_stage) {
  ModelResult r;
  if (!Stage_(on_stage, Stage::DataPreparation, r)) return r;
  std::vector<double> y;
  if (!PrepareOutput(problem, y, r)) return r;
  const int horizon = HorizonOf(problem, r);
  const int n = static_cast<int>(y.size());
  const EngineRules& rules = problem.rules;
  std::vector<Note> notes;
  int period = problem.seasonality > 1 ? problem.seasonality : 1;
  if (period > 1 && n < 2 * period + 3) period = 1;
  // The output series alone, modelled automatically: too short a series for a transfer
  // function, or no input that helps.
  auto univariate = [&](const std::string& why) {
    ModelingProblem own = problem;
    own.inputs.clear();
    own.objective = 0;
    ModelResult u = FitAndForecast(own, on_stage);
    notes.push_back({"Inputs", why});
    Prepend(u, notes, {});
    return u;
  };
  if (n < 12) return univariate("Too few observations for a transfer-function model; the output series was modelled alone.");

  // Differencing of the output series decides the noise's differencing, which the inputs
  // share when the rules say so.
  if (!Stage_(on_stage, Stage::Identification, r)) return r;
  const int D = period > 1 ? SeasonalDifferences(y, period, nullptr) : 0;
  const int d = RegularDifferences(Difference(y, period, D), n - period * D > 10 ? 2 : 1, nullptr);
  ArimaOrders diff;
  diff.d = d;
  diff.D = D;
  diff.period = period;
  notes.push_back({"Differencing", std::to_string(d) + " regular and " + std::to_string(D) +
                                       " seasonal difference(s) of the output series" +
                                       (rules.difference_inputs ? ", applied to the inputs too." : "; inputs enter undifferenced.")});
  const std::vector<double> wy = DifferenceSeries(y, diff);
  const int m_w = static_cast<int>(wy.size());
  const int max_lag = std::clamp(m_w / 8, 2, 12);

  StructuredModel model;
  model.name = "TRANSFER FUNCTION";
  std::vector<std::string> dropped;
  std::vector<std::pair<std::string, std::vector<double>>> paths;  // each input's values
  for (const InputSeries& in : problem.inputs) {
    const int lead = in.type == 3 ? std::clamp(rules.maximum_lead, 0, 6) : 0;
    std::vector<std::string> found;
    const std::vector<double> path = InputPath(in, n, horizon, lead, rules, &found, problem.seasonality);
    for (const auto& t : found) notes.push_back({"Inputs", t});
    paths.emplace_back(in.name, path);
    const std::vector<double> xs(path.begin(), path.begin() + n);
    std::vector<double> wx = rules.difference_inputs ? DifferenceSeries(xs, diff)
                                                     : std::vector<double>(xs.end() - m_w, xs.end());
    // Prewhitening: the AR model of the input (order by AIC) filters both series.
    ArimaFit best_ar;
    for (int p = 0; p <= std::min(6, m_w / 10); ++p) {
      ArimaOrders s;
      s.p = p;
      s.constant = true;
      const ArimaFit f = FitArima(wx, s, ConvergenceCriteria(), false);
      if (f.ok && (!best_ar.ok || f.aic < best_ar.aic)) best_ar = f;
    }
    std::vector<double> phi = best_ar.ok ? best_ar.coef.ar : std::vector<double>();
    const double mx = best_ar.ok ? best_ar.mean : Mean(wx), my = Mean(wy);
    const int p = static_cast<int>(phi.size());
    std::vector<double> ex, ey;
    for (int t = p; t < m_w; ++t) {
      double a = wx[t] - mx, b = wy[t] - my;
      for (int k = 1; k <= p; ++k) {
        a -= phi[k - 1] * (wx[t - k] - mx);
        b -= phi[k - 1] * (wy[t - k] - my);
      }
      ex.push_back(a);
      ey.push_back(b);
    }
    const int me = static_cast<int>(ex.size());
    const double sx = std::sqrt(Variance(ex)), sy = std::sqrt(Variance(ey));
    const double limit = 2.0 / std::sqrt(std::max(1, me));
    std::vector<int> lags;
    std::string ccf;
    for (int k = -lead; k <= max_lag; ++k) {
      double c = 0.0;
      for (int t = std::max(0, k); t < me && t - k < me; ++t) c += ex[t - k] * ey[t];
      const double rk = sx > 0 && sy > 0 ? c / (me * sx * sy) : 0.0;
      ccf += (k < 0 ? "lead " + std::to_string(-k) : "lag " + std::to_string(k)) + " " + Format("%.3f", rk) +
             (std::fabs(rk) > limit ? "*" : "") + "; ";
      if (std::fabs(rk) > limit) lags.push_back(k);
    }
    notes.push_back({"Transfer function", in.name + " prewhitened by AR(" + std::to_string(p) +
                                              "); cross-correlations with the output (limit " + Format("%.3f", limit) +
                                              "): " + ccf});
    if (lags.empty()) {
      dropped.push_back(in.name);
      continue;
    }
    for (int k : lags) {
      RegressorColumn c;
      c.input = in.name;
      c.kind = "input";
      c.lag = k;
      c.term = in.name + (k >= 0 ? " LAG " + std::to_string(k) : " LEAD " + std::to_string(-k));
      c.values = LagColumn(path, k, 0.0, n + horizon);
      if (!rules.difference_inputs && d + D > 0) c.values = Integrated(c.values, diff);
      model.columns.push_back(std::move(c));
      model.leading = std::max(model.leading, k);
    }
  }

  // Redundant columns are dropped, and reported.
  {
    std::vector<std::vector<double>> X;
    for (const auto& c : model.columns) X.emplace_back(c.values.begin() + model.leading, c.values.begin() + n);
    std::vector<int> redundant = RedundantColumns(X, diff);
    if (!redundant.empty()) {
      r.warnings.push_back(std::string(kRedundancyText).substr(1) + " (2155)");
      std::sort(redundant.rbegin(), redundant.rend());
      for (int j : redundant) {
        r.warnings.push_back(model.columns[j].term + " is a linear combination of the other terms; it was left out.");
        model.columns.erase(model.columns.begin() + j);
      }
    }
  }

  if (model.columns.empty())
    return univariate("No input series is correlated with the output series; it was modelled alone.");

  // The noise: its ARMA orders searched on what the inputs leave (least squares on the
  // differenced scale).
  std::vector<double> u(y.begin() + model.leading, y.end());
  if (!model.columns.empty()) {
    ArimaOrders white = diff;
    white.constant = d + D <= 1;
    std::vector<std::vector<double>> X;
    for (const auto& c : model.columns) X.emplace_back(c.values.begin() + model.leading, c.values.begin() + n);
    const RegressionArimaFit ols = FitRegressionArima(u, X, white, ConvergenceCriteria(), false);
    if (ols.ok) u = RemoveRegressors(u, X, ols.beta);
  }
  const double us = ScaleOf(u);
  for (double& v : u) v /= us;
  SearchOptions so;
  so.criteria = CriteriaOf(rules);
  so.allow_constant = d + D <= 1;
  if (period > 60) so.max_P = so.max_Q = 0;
  else if (period > 24) so.max_P = so.max_Q = 1;
  ArimaFit noise = StepwiseSearch(u, d, D, period, so, nullptr);
  model.noise = noise.ok ? noise.orders : diff;
  if (!noise.ok) model.noise.constant = d + D <= 1;
  notes.push_back({"Model search", "Noise model on what the inputs leave: " + model.noise.Name() + "."});

  if (!Stage_(on_stage, Stage::Estimation, r)) return r;
  const ConvergenceCriteria crit = CriteriaOf(rules);
  std::vector<std::string> warnings = r.warnings;
  r = FitStructured(problem, y, model, crit, horizon);
  if (r.error_code) return r;
  std::string necessity;
  if (rules.necessity) {
    const double alpha = 1.0 - std::clamp(rules.necessity_level, 1.0, 99.99) / 100.0;
    necessity = Necessity(problem, y, model, crit, horizon, alpha, r, true);
  }
  if (rules.constrain_causal) {
    // Constrained causal coefficients: the terms of an input keep the sign of its
    // strongest term; a term of the other sign is left out.
    for (int round = 0; round < 10; ++round) {
      std::string drop;
      for (const auto& in : problem.inputs) {
        const Coefficient* strongest = nullptr;
        for (const auto& c : r.coefficients)
          if (c.kind == "input" && c.term.rfind(in.name + " ", 0) == 0 &&
              (!strongest || std::fabs(c.t_value) > std::fabs(strongest->t_value)))
            strongest = &c;
        if (!strongest) continue;
        for (const auto& c : r.coefficients)
          if (c.kind == "input" && c.term.rfind(in.name + " ", 0) == 0 && c.value * strongest->value < 0) drop = c.term;
      }
      if (drop.empty()) break;
      StructuredModel next = model;
      next.columns.erase(std::remove_if(next.columns.begin(), next.columns.end(),
                                        [&](const RegressorColumn& c) { return c.term == drop; }),
                         next.columns.end());
      ModelResult nr = FitStructured(problem, y, next, crit, horizon);
      if (nr.error_code) break;
      necessity += drop + " dropped (sign against the input's strongest term). ";
      model = next;
      r = nr;
    }
  }
  // Rational form: a run of three or more consecutive lags of one sign, b, b+1, ..., is a
  // decaying response; it becomes omega B**b / (1 - delta B) when that lowers the AIC, with
  // delta chosen by the likelihood.
  for (const auto& [name, path] : paths) {
    std::vector<const Coefficient*> terms;
    for (const auto& c : r.coefficients)
      if (c.kind == "input" && c.lag >= 0 && c.term.rfind(name + " ", 0) == 0) terms.push_back(&c);
    std::sort(terms.begin(), terms.end(), [](const Coefficient* a, const Coefficient* b) { return a->lag < b->lag; });
    size_t run_at = 0, run_len = 0;
    for (size_t i = 0; i < terms.size();) {
      size_t j = i + 1;
      while (j < terms.size() && terms[j]->lag == terms[j - 1]->lag + 1 && terms[j]->value * terms[i]->value > 0) ++j;
      if (j - i > run_len) {
        run_at = i;
        run_len = j - i;
      }
      i = j;
    }
    if (run_len < 3) continue;
    const int b = terms[run_at]->lag;
    std::vector<std::string> run_terms;
    for (size_t i = run_at; i < run_at + run_len; ++i) run_terms.push_back(terms[i]->term);
    auto with_delta = [&, b = b, &path = path, &name = name](double delta) {
      StructuredModel next = model;
      next.columns.erase(std::remove_if(next.columns.begin(), next.columns.end(),
                                        [&](const RegressorColumn& c) {
                                          return std::find(run_terms.begin(), run_terms.end(), c.term) != run_terms.end();
                                        }),
                         next.columns.end());
      // The denominator is the input's: its other terms are filtered through it too.
      for (auto& other : next.columns) {
        if (other.input != name) continue;
        other.denominator = delta;
        other.values = LagColumn(path, other.lag, delta, n + horizon);
        if (!rules.difference_inputs && d + D > 0) other.values = Integrated(other.values, diff);
      }
      RegressorColumn c;
      c.input = name;
      c.kind = "input";
      c.lag = b;
      c.denominator = delta;
      c.term = name + " LAG " + std::to_string(b);
      c.values = LagColumn(path, b, delta, n + horizon);
      if (!rules.difference_inputs && d + D > 0) c.values = Integrated(c.values, diff);
      next.columns.push_back(std::move(c));
      // The input's terms in the order of their lags, in the places its terms held.
      std::vector<size_t> at;
      std::vector<RegressorColumn> mine;
      for (size_t i = 0; i < next.columns.size(); ++i)
        if (next.columns[i].input == name) {
          at.push_back(i);
          mine.push_back(next.columns[i]);
        }
      std::sort(mine.begin(), mine.end(), [](const RegressorColumn& x, const RegressorColumn& y2) { return x.lag < y2.lag; });
      for (size_t i = 0; i < at.size(); ++i) next.columns[at[i]] = std::move(mine[i]);
      return next;
    };
    auto loglik = [&](double delta) {
      const ModelResult t = FitStructured(problem, y, with_delta(delta), crit, 0);
      return t.error_code ? -std::numeric_limits<double>::infinity() : t.loglik;
    };
    // Golden-section search of delta on (0, 0.95).
    double lo = 0.0, hi = 0.95;
    const double g = 0.5 * (std::sqrt(5.0) - 1.0);
    double a = hi - g * (hi - lo), bb = lo + g * (hi - lo);
    double fa = loglik(a), fb = loglik(bb);
    for (int it = 0; it < 14; ++it) {
      if (fa > fb) {
        hi = bb;
        bb = a;
        fb = fa;
        a = hi - g * (hi - lo);
        fa = loglik(a);
      } else {
        lo = a;
        a = bb;
        fa = fb;
        bb = lo + g * (hi - lo);
        fb = loglik(bb);
      }
    }
    const double delta = std::round((fa > fb ? a : bb) * 1e4) / 1e4;
    StructuredModel next = with_delta(delta);
    ModelResult nr = FitStructured(problem, y, next, crit, horizon);
    if (nr.error_code == 0 && nr.aic < r.aic) {
      notes.push_back({"Transfer function", name + ": lags " + std::to_string(b) + " to " +
                                                std::to_string(b + static_cast<int>(run_len) - 1) +
                                                " replaced by a decaying response omega B**" + std::to_string(b) +
                                                " / (1 - " + Format("%.4f", delta) + " B) (AIC " + Format("%.3f", r.aic) +
                                                " to " + Format("%.3f", nr.aic) + ")."});
      model = next;
      r = nr;
    }
  }
  AddInterventions(problem, y, model, crit, horizon, r, notes);
  for (const auto& in : problem.inputs)
    if (std::find(r.inputs_kept.begin(), r.inputs_kept.end(), in.name) == r.inputs_kept.end() &&
        std::find(dropped.begin(), dropped.end(), in.name) == dropped.end())
      dropped.push_back(in.name);
  if (!necessity.empty()) notes.push_back({"Necessity", necessity});
  if (!dropped.empty()) {
    std::string text;
    for (const auto& name : dropped) text += (text.empty() ? "" : ", ") + name;
    notes.push_back({"Inputs", "Not needed, left out of the model: " + text + "."});
  }
  if (!Stage_(on_stage, Stage::Diagnosis, r)) return r;
  Prepend(r, notes, warnings);
  return r;
}

}  // namespace quorvane
