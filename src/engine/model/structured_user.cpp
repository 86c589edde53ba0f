// The user's model of STARTMOD.123, and the tuning and extension of a model of a given
// structure that ALLOWMOD.QVX asks for (also used by transfer-function models).
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

namespace {

bool SameName(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (std::toupper(static_cast<unsigned char>(a[i])) != std::toupper(static_cast<unsigned char>(b[i]))) return false;
  return true;
}

// The user's noise block as an ARIMA orders with its coefficients as start values. False
// when the block cannot be expressed (differencing of two different periods, or powers
// out of range).
bool NoiseFromBlock(const ModelBlock& b, int seasonality, ArimaOrders& orders, ArmaCoefficients& start,
                    std::string& why) {
  orders = ArimaOrders();
  int period = seasonality > 1 ? seasonality : 1;
  for (int p : b.differencing) {
    if (p == 1) {
      ++orders.d;
    } else if (p > 1) {
      if (orders.D > 0 && p != period) {
        why = "differencing of two seasonal periods";
        return false;
      }
      period = p;
      ++orders.D;
    } else {
      why = "a differencing power below 1";
      return false;
    }
  }
  orders.period = period;
  orders.constant = b.has_constant;
  start = ArmaCoefficients();
  start.period = period;
  auto take = [&](const std::vector<Polynomial>& polys, int& order, std::vector<bool>& zero, std::vector<double>& coef,
                  int& sorder, std::vector<bool>& szero, std::vector<double>& scoef) {
    for (const auto& poly : polys) {
      bool seasonal = period > 1;
      for (int pw : poly.powers) seasonal = seasonal && pw > 0 && pw % period == 0;
      int& o = seasonal ? sorder : order;
      std::vector<bool>& zz = seasonal ? szero : zero;
      std::vector<double>& cc = seasonal ? scoef : coef;
      for (size_t i = 0; i < poly.powers.size(); ++i) {
        const int pw = poly.powers[i];
        const int k = seasonal ? pw / period : pw;
        if (k < 1 || k > 60) {
          why = "a polynomial power of " + std::to_string(pw);
          return false;
        }
        if (k > o) {
          o = k;
          zz.resize(k, true);
          cc.resize(k, 0.0);
        }
        zz[k - 1] = false;
        cc[k - 1] = i < poly.coefficients.size() ? poly.coefficients[i] : 0.0;
      }
    }
    return true;
  };
  if (!take(b.first, orders.p, orders.ar_zero, start.ar, orders.P, orders.sar_zero, start.sar)) return false;
  if (!take(b.second, orders.q, orders.ma_zero, start.ma, orders.Q, orders.sma_zero, start.sma)) return false;
  orders.ar_zero.resize(orders.p, false);
  orders.ma_zero.resize(orders.q, false);
  orders.sar_zero.resize(orders.P, false);
  orders.sma_zero.resize(orders.Q, false);
  start.ar.resize(orders.p, 0.0);
  start.ma.resize(orders.q, 0.0);
  start.sar.resize(orders.P, 0.0);
  start.sma.resize(orders.Q, 0.0);
  return true;
}

// Drops the least significant term (ARMA term or column) while one is above `alpha`.
// Returns the notes of what was dropped.
}  // namespace

std::string structured_parts::Necessity(const ModelingProblem& problem, const std::vector<double>& y, StructuredModel& m,
                      const ConvergenceCriteria& crit, int horizon, double alpha, ModelResult& r,
                      bool columns_only) {
  std::string text;
  for (int round = 0; round < 30; ++round) {
    double worst_p = alpha;
    const int worst = LeastSignificant(r.coefficients, columns_only, worst_p);
    if (worst < 0) break;
    const Coefficient c = r.coefficients[worst];
    StructuredModel next = m;
    auto hold = [](std::vector<bool>& zero, int& order, int index) {
      zero.resize(order, false);
      zero[index] = true;
      while (order > 0 && zero[order - 1]) {
        --order;
        zero.pop_back();
      }
    };
    ArimaOrders& s = next.noise;
    if (c.kind == "ar") hold(s.ar_zero, s.p, c.lag - 1);
    else if (c.kind == "ma") hold(s.ma_zero, s.q, c.lag - 1);
    else if (c.kind == "sar") hold(s.sar_zero, s.P, c.lag / s.period - 1);
    else if (c.kind == "sma") hold(s.sma_zero, s.Q, c.lag / s.period - 1);
    else if (c.kind == "constant") s.constant = false;
    else {
      auto it = std::find_if(next.columns.begin(), next.columns.end(),
                             [&](const RegressorColumn& col) { return col.term == c.term; });
      if (it == next.columns.end()) break;
      next.columns.erase(it);
    }
    next.start.ar.resize(s.p, 0.0);
    next.start.ma.resize(s.q, 0.0);
    next.start.sar.resize(s.P, 0.0);
    next.start.sma.resize(s.Q, 0.0);
    ModelResult nr = FitStructured(problem, y, next, crit, horizon);
    if (nr.error_code) break;
    text += c.term + " dropped (p-value " + Format("%.3f", worst_p) + "). ";
    m = next;
    r = nr;
  }
  return text;
}

// Interventions found in the noise of a fitted model (the output less its columns' effects)
// join the model as columns, estimated jointly with the rest. True when some were added.
bool structured_parts::AddInterventions(const ModelingProblem& problem, const std::vector<double>& y, StructuredModel& m,
                      const ConvergenceCriteria& crit, int horizon, ModelResult& r, std::vector<Note>& notes) {
  const EngineRules& rules = problem.rules;
  if (!rules.sufficiency_deterministic || rules.max_outliers <= 0 || m.lambda != 1.0) return false;
  RegressionArimaFit fr;
  const ModelResult base = FitStructured(problem, y, m, crit, 0, &fr);
  if (base.error_code != 0 || !fr.ok) return false;
  const int n = static_cast<int>(y.size());
  const int L = std::clamp(m.leading, 0, std::max(0, n - 1));
  std::vector<double> z(y.begin() + L, y.end());
  const double scale = ScaleOf(z);
  for (double& v : z) v /= scale;
  std::vector<std::vector<double>> X;
  for (const auto& c : m.columns) {
    std::vector<double> x(z.size(), 0.0);
    for (size_t t = 0; t < z.size(); ++t) {
      const size_t at = t + L;
      x[t] = at < c.values.size() && std::isfinite(c.values[at]) ? c.values[at] : 0.0;
    }
    X.push_back(std::move(x));
  }
  const std::vector<double> u = RemoveRegressors(z, X, fr.beta);
  const DetectionOptions opt = DetectionOptionsFromRules(rules, m.noise.period, crit);
  const DetectionResult det = DetectInterventions(u, fr.arima, opt);
  notes.push_back({"Interventions", InterventionStory(det) +
                                        (L > 0 ? " (Observations counted from observation " + std::to_string(L + 1) +
                                                     ", the first the model fits.)"
                                               : std::string())});
  if (det.found.empty()) return false;
  StructuredModel next = m;
  for (const auto& f : det.found) {
    RegressorColumn c;
    c.kind = "intervention";
    c.intervention = f.type;
    c.at = f.index + L;
    const int s = problem.seasonality;
    const int offset = std::max(0, problem.begin_period - 1) + c.at;
    c.term = InterventionTypeName(f.type) + " " +
             (s <= 1 ? std::to_string(problem.begin_year + c.at)
                     : std::to_string(problem.begin_year + offset / s) + "/" + std::to_string(offset % s + 1));
    c.values = InterventionRegressor(f.type, c.at, m.noise.period, n + horizon);
    next.columns.push_back(std::move(c));
  }
  ModelResult nr = FitStructured(problem, y, next, crit, horizon);
  if (nr.error_code != 0) return false;
  m = next;
  r = nr;
  return true;
}

// With ALLOWMOD.QVX a preset or user model is tuned (terms that are not needed dropped) and
// extended (ARMA terms added while the residuals stay autocorrelated and the criterion
// improves; interventions searched).
void structured_parts::TuneAndExtend(const ModelingProblem& problem, const std::vector<double>& y, StructuredModel& m,
                   const ConvergenceCriteria& crit, int horizon, ModelResult& r, std::vector<Note>& notes) {
  // Tuned: terms that are not needed are dropped; extended: ARMA terms are added while
  // the residuals stay autocorrelated and the criterion improves.
  if (problem.rules.necessity) {
    const double alpha = 1.0 - std::clamp(problem.rules.necessity_level, 1.0, 99.99) / 100.0;
    const std::string text = Necessity(problem, y, m, crit, horizon, alpha, r, false);
    notes.push_back({"Necessity", text.empty() ? "Every term of the model is needed." : text});
  }
  if (problem.rules.sufficiency_stochastic) {
    const double alpha = 1.0 - std::clamp(problem.rules.sufficiency_ss_level, 1.0, 99.99) / 100.0;
    for (int round = 0; round < 3 && r.ljung_box_p < alpha; ++round) {
      ModelResult best;
      StructuredModel best_model;
      for (int which = 0; which < 2; ++which) {
        StructuredModel next = m;
        AddArmaOrder(next.noise, next.start, which == 0);
        ModelResult nr = FitStructured(problem, y, next, crit, horizon);
        if (nr.error_code == 0 && nr.aic < r.aic && (best.coefficients.empty() || nr.aic < best.aic)) {
          best = nr;
          best_model = next;
        }
      }
      if (best.coefficients.empty()) break;
      notes.push_back({"Sufficiency", "Residuals autocorrelated (Ljung-Box p-value " + Format("%.4f", r.ljung_box_p) +
                                          "): extended to " + best_model.noise.Name() + "."});
      m = best_model;
      r = best;
    }
  }
  AddInterventions(problem, y, m, crit, horizon, r, notes);
}


bool NoiseOrdersFromBlock(const ModelBlock& block, int seasonality, ArimaOrders& orders, ArmaCoefficients& start,
                          std::string& why) {
  return NoiseFromBlock(block, seasonality, orders, start, why);
}

ModelResult FitUserModel(const ModelingProblem& problem, const StageCallback& on_stage) {
  ModelResult r;
  if (!Stage_(on_stage, Stage::DataPreparation, r)) return r;
  if (problem.start_model.empty()) {
    r.error_code = 2208;
    r.warnings.push_back(" USEMOD.QVX REQUIRES A STARTING MODEL");
    return r;
  }
  std::vector<double> y;
  if (!PrepareOutput(problem, y, r)) return r;
  const int horizon = HorizonOf(problem, r);
  const int n = static_cast<int>(y.size());
  std::vector<Note> notes;
  auto malformed = [&](const std::string& why) {
    r.error_code = kCodeModelMalformed;
    r.warnings.push_back(" STARTMOD.123 MALFORMED");
    r.warnings.push_back("The starting model cannot be used: " + why + ".");
    return r;
  };

  StructuredModel m;
  m.name = "USER MODEL";
  const ModelBlock& noise = problem.start_model[0];
  std::string why;
  if (!NoiseFromBlock(noise, problem.seasonality, m.noise, m.start, why)) return malformed(why);
  m.has_start = true;
  m.lambda = noise.lambda;
  if (!(m.lambda >= -1.0 && m.lambda <= 1.0)) return malformed("a lambda of " + Format("%g", noise.lambda));

  int leading = 0;
  for (size_t k = 1; k < problem.start_model.size(); ++k) {
    const ModelBlock& b = problem.start_model[k];
    auto in = std::find_if(problem.inputs.begin(), problem.inputs.end(),
                           [&](const InputSeries& s) { return SameName(s.name, b.name); });
    if (in == problem.inputs.end()) return malformed("the input " + b.name + " is not in the dataset");
    double delta = 0.0;
    const std::string bad = InputDenominator(b, delta);
    if (!bad.empty()) return malformed(bad);
    const int max_lead = MaxLead(b);
    std::vector<std::string> found;
    const std::vector<double> path = InputPath(*in, n, horizon, max_lead, problem.rules, &found, problem.seasonality);
    for (const auto& t : found) notes.push_back({"Inputs", t});
    for (const auto& poly : b.second) {
      for (int pw : poly.powers) {
        RegressorColumn c;
        c.input = in->name;
        c.kind = "input";
        c.lag = pw;
        c.denominator = delta;
        c.term = in->name + (pw >= 0 ? " LAG " + std::to_string(pw) : " LEAD " + std::to_string(-pw));
        c.values = LagColumn(path, pw, delta, n + horizon);
        m.columns.push_back(std::move(c));
        leading = std::max(leading, pw);
      }
    }
  }
  m.leading = leading;
  notes.push_back({"Model", "The user's model from STARTMOD.123: " + m.noise.Name() +
                                (m.columns.empty() ? std::string() : " with " + std::to_string(m.columns.size()) + " input term(s)") +
                                (problem.rules.allow_modifications ? "; ALLOWMOD.QVX: it may be tuned and extended."
                                                                   : "; its structure is held fixed.")});
  if (!Stage_(on_stage, Stage::Identification, r)) return r;
  if (!Stage_(on_stage, Stage::Estimation, r)) return r;
  const ConvergenceCriteria crit = CriteriaOf(problem.rules);
  std::vector<std::string> warnings = r.warnings;
  if (!problem.rules.estimation_enabled)
    warnings.push_back("Model estimation is disabled in the rules; the model's own coefficients were kept.");
  r = FitStructured(problem, y, m, crit, horizon);
  if (r.error_code) return r;
  if (problem.rules.allow_modifications && problem.rules.estimation_enabled)
    TuneAndExtend(problem, y, m, crit, horizon, r, notes);
  if (!Stage_(on_stage, Stage::Diagnosis, r)) return r;
  Prepend(r, notes, warnings);
  return r;
}

}  // namespace quorvane
