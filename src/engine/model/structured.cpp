// Models of a given structure (presets, the user's model) and transfer-function models of
// input series, all estimated as a regression with ARIMA errors.
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


namespace {

constexpr double kMissing = 99999999999.0;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int16_t kCodeEstimation = 3;
constexpr int16_t kCodeObservations = 2180;
constexpr int16_t kCodeRedundancy = 2155;
constexpr int16_t kCodeSeasonalPreset = 2163;
constexpr int16_t kCodeRegressionPreset = 2164;
constexpr int16_t kCodeModelMalformed = 2190;
constexpr const char* kRedundancyText = " TESSALY HAS IDENTIFIED A LINEAR REDUNDANCY. DELETE REDUNDANT VARIABLES.";

bool SameName(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (std::toupper(static_cast<unsigned char>(a[i])) != std::toupper(static_cast<unsigned char>(b[i]))) return false;
  return true;
}

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

}  // namespace

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

namespace {

void Prepend(ModelResult& r, const std::vector<Note>& notes, const std::vector<std::string>& warnings) {
  r.notes.insert(r.notes.begin(), notes.begin(), notes.end());
  r.warnings.insert(r.warnings.begin(), warnings.begin(), warnings.end());
}

void TuneAndExtend(const ModelingProblem& problem, const std::vector<double>& y, StructuredModel& m,
                   const ConvergenceCriteria& crit, int horizon, ModelResult& r, std::vector<Note>& notes);

}  // namespace

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

namespace {

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
std::string Necessity(const ModelingProblem& problem, const std::vector<double>& y, StructuredModel& m,
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
bool AddInterventions(const ModelingProblem& problem, const std::vector<double>& y, StructuredModel& m,
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
void TuneAndExtend(const ModelingProblem& problem, const std::vector<double>& y, StructuredModel& m,
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

}  // namespace

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

ModelResult FitModel(const ModelingProblem& problem, const StageCallback& on_stage) {
  if (IsPresetObjective(problem.objective)) return FitPreset(problem, on_stage);
  if (problem.objective == 99 && !problem.start_model.empty()) return FitUserModel(problem, on_stage);
  if (!problem.inputs.empty()) return FitTransferFunction(problem, on_stage);
  return FitAndForecast(problem, on_stage);
}

}  // namespace quorvane
