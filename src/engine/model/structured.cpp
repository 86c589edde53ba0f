// Models of a given structure: the fit of a regression with ARIMA errors that every one of
// them ends in, the preset models, and the choice among the kinds of model.
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
#include "engine/model/transform.h"
#include "engine/model/structured_parts.h"
#include "engine/model/unit_root.h"

namespace quorvane {

void FillResidualDiagnostics(ModelResult& r, const std::vector<double>& residuals, int period,
                             int arma_parameters, int used) {
  const int lb_lags = std::max(1, std::min(period > 1 ? 2 * period : 10, std::max(1, used / 5)));
  const TestResult lb = LjungBox(residuals, lb_lags, arma_parameters);
  r.ljung_box_q = lb.statistic;
  r.ljung_box_p = lb.p_value;
  r.ljung_box_lags = lb_lags;
  const TestResult jb = JarqueBera(residuals);
  r.normality_stat = jb.statistic;
  r.normality_p = jb.p_value;
  const int acf_lags = std::max(1, std::min(period > 1 ? 2 * period : 12, std::max(1, used / 4)));
  r.residual_acf = Autocorrelations(residuals, acf_lags);
  r.residual_acf_limit = used > 0 ? 2.0 / std::sqrt(static_cast<double>(used)) : 0.0;
}

namespace structured_parts {

int HorizonOf(const ModelingProblem& p, ModelResult& r) {
  int h = p.horizon > 0 ? p.horizon : p.rules.forecasts;
  if (!p.rules.forecasting_enabled) {
    h = 0;
    r.warnings.push_back("Model forecasting is disabled in the rules.");
  }
  return std::clamp(h, 0, 600);
}

// The output series ready for modelling, or an error code in r.
bool PrepareOutput(const ModelingProblem& p, std::vector<double>& y, ModelResult& r) {
  y = p.y;
  if (y.empty()) {
    r.error_code = kCodeObservations;
    return false;
  }
  const int filled = FillMissing(y);
  if (filled == static_cast<int>(y.size())) {
    r.error_code = kCodeObservations;
    return false;
  }
  if (filled > 0)
    r.warnings.push_back(std::to_string(filled) +
                         " missing value(s) in the output series were filled by linear interpolation.");
  return true;
}

// Integrates a column so that the model's differencing gives it back: an input that the
// rules say not to difference enters the differenced equation as it is.
std::vector<double> Integrated(const std::vector<double>& x, const ArimaOrders& orders) {
  const std::vector<double> delta = DifferencingPolynomial(orders.d, orders.D, orders.period);
  if (delta.empty()) return x;
  std::vector<double> out(x.size(), 0.0);
  for (size_t t = 0; t < x.size(); ++t) {
    double v = std::isfinite(x[t]) ? x[t] : 0.0;
    for (size_t k = 1; k <= delta.size() && k <= t; ++k) v += delta[k - 1] * out[t - k];
    out[t] = v;
  }
  return out;
}

// Columns (over the sample) that are a linear combination of the ones before them (and of
// the constant) once the model's differencing is applied.
std::vector<int> RedundantColumns(const std::vector<std::vector<double>>& X, const ArimaOrders& orders) {
  std::vector<int> out;
  if (X.empty()) return out;
  std::vector<std::vector<double>> cols;
  for (const auto& x : X) cols.push_back(DifferenceSeries(x, orders));
  const int m = static_cast<int>(cols[0].size());
  if (m == 0) return out;
  const bool constant = orders.d + orders.D == 0 || orders.constant;
  std::vector<Eigen::VectorXd> kept;
  if (constant) kept.push_back(Eigen::VectorXd::Ones(m));
  for (size_t j = 0; j < cols.size(); ++j) {
    Eigen::VectorXd c = Eigen::Map<const Eigen::VectorXd>(cols[j].data(), m);
    const double norm = c.norm();
    Eigen::MatrixXd A(m, kept.size() + 1);
    for (size_t i = 0; i < kept.size(); ++i) A.col(i) = kept[i];
    A.col(kept.size()) = c;
    Eigen::ColPivHouseholderQR<Eigen::MatrixXd> qr(A);
    qr.setThreshold(1e-9);
    if (!(norm > 0.0) || qr.rank() < static_cast<int>(kept.size()) + 1) {
      out.push_back(static_cast<int>(j));
      continue;
    }
    kept.push_back(c);
  }
  return out;
}

void Prepend(ModelResult& r, const std::vector<Note>& notes, const std::vector<std::string>& warnings) {
  r.notes.insert(r.notes.begin(), notes.begin(), notes.end());
  r.warnings.insert(r.warnings.begin(), warnings.begin(), warnings.end());
}

}  // namespace structured_parts

using namespace structured_parts;

bool IsPresetObjective(int objective) { return (objective >= 1 && objective <= 15) || objective == 51 || objective == 52; }

bool IsSeasonalPreset(int objective) {
  return objective == 10 || objective == 11 || objective == 13 || objective == 14 || objective == 15;
}

std::string PresetName(int objective) {
  switch (objective) {
    case 1: return "MEAN";
    case 2: return "AUTOREGRESSIVE(1) WITH CONSTANT";
    case 3: return "AUTOREGRESSIVE(2) WITH CONSTANT";
    case 4: return "SIMPLE EXPONENTIAL SMOOTHING NO CONSTANT";
    case 5: return "LINEAR (HOLT) EXPONENTIAL SMOOTHING NO CONSTANT";
    case 6: return "RANDOM WALK NO CONSTANT";
    case 7: return "RANDOM WALK WITH CONSTANT";
    case 8: return "TIME TREND";
    case 9: return "TIME TREND PLUS AR(1) CORRECTION";
    case 10: return "FOURIER";
    case 11: return "HOLT LINEAR TREND PLUS ADDITIVE SEASONAL FACTORS";
    case 12: return "DAMPED TREND LINEAR EXPONENTIAL SMOOTHING NO CONSTANT";
    case 13: return "SEASONAL EXPONENTIAL SMOOTHING NO CONSTANT";
    case 14: return "HOLT LINEAR TREND PLUS ADDITIVE SEASONAL FACTORS (ARIMA FORM)";
    case 15: return "AIRLINE";
    case 51: return "REGRESSION";
    case 52: return "REGRESSION WITH AR(1) CORRECTION";
    default: return "";
  }
}

std::vector<double> LagColumn(const std::vector<double>& path, int lag, double delta, int length) {
  std::vector<double> x(std::max(length, 0), kNaN);
  const int size = static_cast<int>(path.size());
  for (int t = 0; t < length; ++t) {
    const int at = t - lag;
    if (at >= 0 && at < size) x[t] = path[at];
    else if (at >= size && size > 0) x[t] = path.back();
  }
  if (delta != 0.0) {
    // v(t) = delta v(t-1) + x(t), started at the first defined value.
    bool started = false;
    double prev = 0.0;
    for (int t = 0; t < length; ++t) {
      if (!std::isfinite(x[t])) continue;
      prev = started ? delta * prev + x[t] : x[t] / (1.0 - delta);
      started = true;
      x[t] = prev;
    }
  }
  return x;
}

std::vector<double> InputPath(const InputSeries& input, int n, int horizon, int extra, const EngineRules& rules,
                              std::vector<std::string>* notes, int seasonality) {
  std::vector<double> path = input.history;
  path.resize(n, kMissing);
  FillMissing(path);
  const int want = n + std::max(horizon, 0) + std::max(extra, 0);
  if (input.type >= 1 && input.type <= 3) {
    std::vector<double> known = input.retained;
    known.insert(known.end(), input.future.begin(), input.future.end());
    for (double v : known) {
      if (static_cast<int>(path.size()) >= want) break;
      path.push_back(v == kMissing || !std::isfinite(v) ? path.back() : v);
    }
  } else if (want > n) {
    ModelingProblem own;
    own.output_name = input.name;
    own.y.assign(path.begin(), path.begin() + n);
    own.seasonality = std::max(1, seasonality);
    own.horizon = want - n;
    own.rules = rules;
    own.rules.forecasting_enabled = true;
    own.rules.forecasts = own.horizon;
    own.rules.convert_positive = own.rules.convert_integers = false;  // the output's conversions
    const ModelResult f = FitAndForecast(own, nullptr);
    if (f.error_code == 0 && !f.forecasts.empty()) {
      path.insert(path.end(), f.forecasts.begin(), f.forecasts.end());
      if (notes)
        notes->push_back(input.name + " has no future values: it was forecast by its own model, " +
                         f.description + ".");
    }
  }
  while (!path.empty() && static_cast<int>(path.size()) < want) path.push_back(path.back());
  path.resize(want);
  return path;
}

// Kept whole: the model, its inputs, the in-sample figures and the forecasts fill one result
// in turn, each stage marked below.
ModelResult FitStructured(const ModelingProblem& problem, const std::vector<double>& y_all,
                          const StructuredModel& model, const ConvergenceCriteria& crit, int horizon,
                          RegressionArimaFit* fit_out) {
  ModelResult r;
  const int n = static_cast<int>(y_all.size());
  const int L = std::clamp(model.leading, 0, std::max(0, n - 1));
  const std::vector<double> y(y_all.begin() + L, y_all.end());
  double lambda = model.lambda;
  if (!PowerApplies(y, lambda)) {
    r.warnings.push_back("The power transform " + Format("%.2f", lambda) +
                         " cannot be applied to values that are not positive; none was used.");
    lambda = 1.0;
  }
  const std::vector<double> zt = BoxCox(y, lambda);
  const double scale = ScaleOf(zt);
  std::vector<double> z(zt.size());
  for (size_t t = 0; t < z.size(); ++t) z[t] = zt[t] / scale;
  const int m = static_cast<int>(z.size());

  std::vector<std::vector<double>> X;
  for (const auto& c : model.columns) {
    std::vector<double> x(m, 0.0);
    for (int t = 0; t < m; ++t) {
      const size_t at = static_cast<size_t>(t + L);
      x[t] = at < c.values.size() && std::isfinite(c.values[at]) ? c.values[at] : 0.0;
    }
    X.push_back(std::move(x));
  }

  RegressionArimaFit fr = FitRegressionArima(z, X, model.noise, crit, true, model.has_start ? &model.start : nullptr);
  if (!fr.ok && model.has_start) fr = FitRegressionArima(z, X, model.noise, crit, true, nullptr);
  if (!fr.ok) {
    r.error_code = kCodeEstimation;
    r.warnings.push_back("The model " + model.name + " (" + model.noise.Name() +
                         ") could not be estimated on these data.");
    return r;
  }
  if (fit_out) *fit_out = fr;
  const ArimaFit& f = fr.arima;

  // The model.
  r.lambda = lambda;
  r.leading_left_out = L;
  SetOrders(r, f.orders);
  r.parameters = f.orders.FreeCount() + (f.orders.constant ? 1 : 0) + static_cast<int>(X.size());
  const int df = std::max(1, f.n - r.parameters);
  AddArmaCoefficients(f, scale, df, r.coefficients);
  r.cleansed = y_all;
  for (size_t j = 0; j < model.columns.size(); ++j) {
    const RegressorColumn& col = model.columns[j];
    const Coefficient c = ColumnCoefficient(col.term, col.kind, col.lag, fr, j, scale, df);
    r.coefficients.push_back(c);
    if (col.intervention != 0) {
      Intervention iv;
      iv.type = col.intervention;
      iv.observation = col.at + 1;
      const int s = problem.seasonality;
      if (s <= 1) {
        iv.major = problem.begin_year + col.at;
      } else {
        const int offset = std::max(0, problem.begin_period - 1) + col.at;
        iv.major = problem.begin_year + offset / s;
        iv.minor = offset % s + 1;
      }
      iv.impact = c.value;
      iv.t_value = c.t_value;
      r.interventions.push_back(iv);
      // The cleansed series: the actuals less the effect (on the scale of the data when
      // there is no power transform).
      if (lambda == 1.0)
        for (int t = 0; t < n; ++t)
          if (static_cast<size_t>(t) < col.values.size() && std::isfinite(col.values[t]))
            r.cleansed[t] -= c.value * col.values[t];
    }
    if (col.denominator != 0.0) r.coefficients.push_back(DenominatorCoefficient(col.input, col.denominator));
    if (!col.input.empty() &&
        std::find(r.inputs_kept.begin(), r.inputs_kept.end(), col.input) == r.inputs_kept.end())
      r.inputs_kept.push_back(col.input);
  }
  // Inputs in the order of the dataset.
  std::vector<std::string> ordered;
  for (const auto& in : problem.inputs)
    if (std::find(r.inputs_kept.begin(), r.inputs_kept.end(), in.name) != r.inputs_kept.end())
      ordered.push_back(in.name);
  r.inputs_kept = ordered;
  r.description = (model.name.empty() ? std::string() : model.name + ": ") + f.orders.Name();
  {
    const std::string name = problem.output_name.empty() ? "Y" : problem.output_name;
    std::string eq = TransformName(lambda, name) + "(t) =";
    bool first = true;
    auto add_term = [&](double value, const std::string& text) {
      eq += (first ? " " : (value < 0 ? " - " : " + ")) + Format("%.6g", first ? value : std::fabs(value)) + text;
      first = false;
    };
    std::vector<std::string> inputs_done;
    for (size_t j = 0; j < model.columns.size(); ++j) {
      const RegressorColumn& col = model.columns[j];
      if (col.input.empty()) {
        add_term(fr.beta[j] * scale, " " + col.term);
        continue;
      }
      if (std::find(inputs_done.begin(), inputs_done.end(), col.input) != inputs_done.end()) continue;
      inputs_done.push_back(col.input);
      // One input: its numerator terms over its denominator, "(w0 + w1 B**2) / (1 - d B) X(t)".
      std::string num;
      double delta = 0.0;
      for (size_t i = j; i < model.columns.size(); ++i) {
        const RegressorColumn& c = model.columns[i];
        if (c.input != col.input) continue;
        delta = c.denominator;
        const double v = fr.beta[i] * scale;
        num += (num.empty() ? Format("%.6g", v) : (v < 0 ? " - " : " + ") + Format("%.6g", std::fabs(v)));
        if (c.lag != 0) num += "B**" + std::to_string(c.lag);
      }
      const std::string den = delta != 0.0 ? " / (1 - " + Format("%.4f", delta) + "B)" : "";
      eq += (first ? " (" : " + (") + num + ")" + den + " " + col.input + "(t)";
      first = false;
    }
    eq += (first ? " N(t)" : " + N(t)");
    std::string lhs = Factor(f.coef.ar, 1, -1.0) + Factor(f.coef.sar, f.orders.period, -1.0);
    for (int i = 0; i < f.orders.d; ++i) lhs += "(1 - B)";
    for (int i = 0; i < f.orders.D; ++i) lhs += "(1 - B**" + std::to_string(f.orders.period) + ")";
    std::string rhs = f.orders.constant ? Format("%.6g", f.mean * scale) + " + " : "";
    const std::string ma = Factor(f.coef.ma, 1, 1.0) + Factor(f.coef.sma, f.orders.period, 1.0);
    rhs += ma + (ma.empty() ? "" : " ") + "a(t)";
    r.equation = eq + "\n" + lhs + (lhs.empty() ? "" : " ") + "N(t) = " + rhs;
  }

  // In-sample figures.
  const std::vector<double> innov = RegressionInnovations(z, X, fr);
  r.fitted.assign(n, kMissing);
  r.residuals.assign(n, kMissing);
  InSampleTally tally;
  for (int t = 0; t < m; ++t) {
    if (!std::isfinite(innov[t])) continue;
    const double pred = z[t] - innov[t];
    const double fit = InverseBoxCox(pred * scale, lambda);
    r.fitted[t + L] = fit;
    r.residuals[t + L] = tally.Add(y[t], fit, innov[t] * scale, z[t] * scale);
  }
  tally.Finish(r, f.loglik - f.n * std::log(scale) + (lambda != 1.0 ? BoxCoxLogJacobian(y, lambda, m - f.n) : 0.0),
               f);

  // Forecasts: the noise forecast from its own model plus the columns' future values.
  if (horizon > 0) {
    const std::vector<double> u = RemoveRegressors(z, X, fr.beta);
    const ArimaForecast fc = ForecastArima(u, f, horizon, problem.rules.forecast_confidence,
                                           EstimationAllowances(f, r.parameters, f.sigma2));
    r.forecasts.resize(horizon);
    r.lower.resize(horizon);
    r.upper.resize(horizon);
    for (int h = 0; h < horizon; ++h) {
      double xb = 0.0;
      for (size_t j = 0; j < model.columns.size(); ++j) {
        xb += fr.beta[j] * FutureValue(model.columns[j].values, static_cast<size_t>(n + h));
      }
      SetForecast(r, h, fc, xb, scale, lambda);
    }
  }
  r.notes.push_back({"Final model", r.description + ", " + std::to_string(r.parameters) +
                                        " parameter(s), log-likelihood " + Format("%.3f", r.loglik) + ", AIC " +
                                        Format("%.3f", r.aic) + ", BIC " + Format("%.3f", r.bic) + "."});
  r.notes.push_back(DiagnosisNote(r));
  if (!f.converged && crit.max_iterations > 0)
    r.warnings.push_back("Estimation stopped at the maximum number of iterations before the convergence criteria were met.");
  return r;
}


ModelResult FitPreset(const ModelingProblem& problem, const StageCallback& on_stage) {
  ModelResult r;
  const int obj = problem.objective;
  if (!Stage_(on_stage, Stage::DataPreparation, r)) return r;
  if ((obj == 51 || obj == 52) && problem.inputs.empty()) {
    r.error_code = kCodeRegressionPreset;
    r.warnings.push_back(" PROBLEMS WITH OLS OR OLSP MODEL. REQUIRES CAUSAL VARIABLES.");
    return r;
  }
  const int s = problem.seasonality;
  if (IsSeasonalPreset(obj) && s < 4) {
    r.error_code = kCodeSeasonalPreset;
    r.warnings.push_back(" PROBLEMS WITH SEASONAL TIME TREND MODEL. NOT VALID FOR THIS SEASONALITY.");
    return r;
  }
  std::vector<double> y;
  if (!PrepareOutput(problem, y, r)) return r;
  const int horizon = HorizonOf(problem, r);
  const int n = static_cast<int>(y.size());
  const int total = n + horizon;
  std::vector<Note> notes;

  StructuredModel m;
  m.name = PresetName(obj);
  if (obj == 11) {
    // A true additive Holt-Winters smoother (its ARIMA form is preset 14).
    if (n < 2 * s + 3) {
      r.error_code = kCodeEstimation;
      r.warnings.push_back("Too few observations (" + std::to_string(n) + ") for the seasonal preset " + m.name + ".");
      return r;
    }
    notes.push_back({"Model", "Preset model 11, " + m.name + ": additive Holt-Winters smoothing of level, trend and " +
                                  std::to_string(s) + " seasonal states, no power transform and no search for "
                                  "interventions."});
    if (!Stage_(on_stage, Stage::Identification, r)) return r;
    if (!Stage_(on_stage, Stage::Estimation, r)) return r;
    const std::vector<std::string> warnings = r.warnings;
    r = FitHoltWintersModel(problem, y, s, horizon);
    if (!Stage_(on_stage, Stage::Diagnosis, r)) return r;
    Prepend(r, notes, warnings);
    return r;
  }
  ArimaOrders& a = m.noise;
  PresetNoise(obj, s, a);
  auto add_column = [&](std::string term, std::string kind, std::vector<double> values) {
    RegressorColumn c;
    c.term = std::move(term);
    c.kind = std::move(kind);
    c.values = std::move(values);
    m.columns.push_back(std::move(c));
  };
  switch (obj) {
    case 8:
    case 9: add_column("TREND", "trend", TrendColumn(total)); break;
    case 10: {
      // A constant and the harmonics of the seasonal cycle (at most six pairs).
      const int K = std::min(s / 2, 6);
      for (int k = 1; k <= K; ++k) {
        std::vector<double> c(total), sn(total);
        for (int t = 0; t < total; ++t) {
          const double w = 2.0 * M_PI * k * (problem.begin_period - 1 + t) / s;
          c[t] = std::cos(w);
          sn[t] = std::sin(w);
        }
        add_column("COS(" + std::to_string(k) + ")", "fourier", c);
        if (2 * k != s) add_column("SIN(" + std::to_string(k) + ")", "fourier", sn);
      }
      break;
    }
    case 51:
    case 52: {
      for (const auto& in : problem.inputs) {
        RegressorColumn c;
        c.term = in.name;
        c.kind = "input";
        c.input = in.name;
        std::vector<std::string> found;
        c.values = LagColumn(InputPath(in, n, horizon, 0, problem.rules, &found, problem.seasonality), 0, 0.0, total);
        for (const auto& t : found) notes.push_back({"Inputs", t});
        m.columns.push_back(std::move(c));
      }
      std::vector<std::vector<double>> X;
      for (const auto& c : m.columns) X.emplace_back(c.values.begin(), c.values.begin() + n);
      const std::vector<int> redundant = RedundantColumns(X, a);
      if (!redundant.empty()) {
        r.error_code = kCodeRedundancy;
        r.warnings.push_back(kRedundancyText);
        for (int j : redundant) r.warnings.push_back(m.columns[j].term + " is a linear combination of the other inputs.");
        return r;
      }
      break;
    }
    default: break;
  }
  if (a.D > 0 || a.P > 0 || a.Q > 0) {
    if (n < 2 * s + 3) {
      r.error_code = kCodeEstimation;
      r.warnings.push_back("Too few observations (" + std::to_string(n) + ") for the seasonal preset " + m.name + ".");
      return r;
    }
  }
  notes.push_back({"Model", "Preset model " + std::to_string(obj) + ", " + m.name + ": " + a.Name() +
                                (m.columns.empty() ? std::string() : " with " + std::to_string(m.columns.size()) + " regressor(s)") +
                                ", no power transform."});
  if (!Stage_(on_stage, Stage::Identification, r)) return r;
  if (!Stage_(on_stage, Stage::Estimation, r)) return r;
  std::vector<std::string> warnings = r.warnings;
  const ConvergenceCriteria crit = CriteriaOf(problem.rules);
  r = FitStructured(problem, y, m, crit, horizon);
  if (r.error_code) return r;
  if (problem.rules.allow_modifications && problem.rules.estimation_enabled)
    TuneAndExtend(problem, y, m, crit, horizon, r, notes);
  if (!Stage_(on_stage, Stage::Diagnosis, r)) return r;
  Prepend(r, notes, warnings);
  return r;
}

ModelResult FitModel(const ModelingProblem& problem, const StageCallback& on_stage) {
  if (IsPresetObjective(problem.objective)) return FitPreset(problem, on_stage);
  if (problem.objective == 99 && !problem.start_model.empty()) return FitUserModel(problem, on_stage);
  if (!problem.inputs.empty()) return FitTransferFunction(problem, on_stage);
  return FitAndForecast(problem, on_stage);
}

}  // namespace quorvane