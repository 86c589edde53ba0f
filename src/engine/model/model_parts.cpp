#include "engine/model/model_parts.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "engine/model/equation_text.h"
#include "engine/model/series_stats.h"
#include "engine/model/structured.h"
#include "engine/model/transform.h"
#include "engine/model/texts.h"

namespace quorvane {

namespace {

constexpr double kMissing = 99999999999.0;
constexpr int kMaxForecasts = 600;

double PowerOfTwoNear(double largest) {
  if (!(largest > 0.0) || !std::isfinite(largest)) return 1.0;
  return std::ldexp(1.0, std::ilogb(largest));
}

double LargestMagnitude(const std::vector<double>& z, double m) {
  for (double v : z)
    if (std::isfinite(v)) m = std::max(m, std::fabs(v));
  return m;
}

}  // namespace

int FillMissing(std::vector<double>& y) {
  int filled = 0;
  const int n = static_cast<int>(y.size());
  auto missing = [](double v) { return v == kMissing || !std::isfinite(v); };
  for (int t = 0; t < n; ++t) {
    if (!missing(y[t])) continue;
    int a = t - 1, b = t + 1;
    while (b < n && missing(y[b])) ++b;
    for (int k = t; k < b; ++k) {
      if (a >= 0 && b < n) y[k] = y[a] + (y[b] - y[a]) * (k - a) / static_cast<double>(b - a);
      else if (a >= 0) y[k] = y[a];
      else if (b < n) y[k] = y[b];
      else y[k] = 0.0;
      ++filled;
    }
    t = b - 1;
  }
  return filled;
}

double ScaleOf(const std::vector<double>& z) { return PowerOfTwoNear(LargestMagnitude(z, 0.0)); }

double ScaleOf(const std::vector<std::vector<double>>& groups) {
  double m = 0.0;
  for (const auto& g : groups) m = LargestMagnitude(g, m);
  return PowerOfTwoNear(m);
}

ConvergenceCriteria CriteriaOf(const EngineRules& rules) {
  ConvergenceCriteria c;
  c.sse_change_pct = rules.sse_change_pct;
  c.parameter_change_pct = rules.parameter_change_pct;
  c.max_iterations = rules.estimation_enabled ? std::max(0, rules.max_iterations) : 0;
  return c;
}

void AddArmaCoefficients(const ArimaFit& f, double scale, int df, std::vector<Coefficient>& out) {
  size_t se_index = 0;
  auto add = [&](const std::vector<double>& v, const std::vector<bool>& zero, const char* prefix, const char* kind,
                 int step) {
    for (size_t i = 0; i < v.size(); ++i) {
      const double se = se_index < f.std_errors.size() ? f.std_errors[se_index] : 0.0;
      ++se_index;
      if (i < zero.size() && zero[i]) continue;
      Coefficient c;
      c.lag = static_cast<int>(i + 1) * step;
      c.term = std::string(prefix) + "(" + std::to_string(c.lag) + ")";
      c.kind = kind;
      c.value = v[i];
      c.std_error = se;
      c.t_value = se > 0.0 ? v[i] / se : 0.0;
      c.p_value = se > 0.0 ? TwoSidedTPValue(c.t_value, df) : 0.0;
      out.push_back(c);
    }
  };
  add(f.coef.ar, f.orders.ar_zero, "AR", "ar", 1);
  add(f.coef.ma, f.orders.ma_zero, "MA", "ma", 1);
  add(f.coef.sar, f.orders.sar_zero, "SAR", "sar", f.orders.period);
  add(f.coef.sma, f.orders.sma_zero, "SMA", "sma", f.orders.period);
  if (f.orders.constant) {
    Coefficient c;
    c.term = "CONSTANT";
    c.kind = "constant";
    c.value = f.mean * scale;
    c.std_error = se_index < f.std_errors.size() ? f.std_errors[se_index] * scale : 0.0;
    c.t_value = c.std_error > 0.0 ? c.value / c.std_error : 0.0;
    c.p_value = c.std_error > 0.0 ? TwoSidedTPValue(c.t_value, df) : 0.0;
    out.insert(out.begin(), c);
  }
}

void SetOrders(ModelResult& r, const ArimaOrders& orders) {
  r.d = orders.d;
  r.D = orders.D;
  r.p = orders.p;
  r.q = orders.q;
  r.P = orders.P;
  r.Q = orders.Q;
  r.period = orders.period;
  r.has_constant = orders.constant;
}

Coefficient ColumnCoefficient(const std::string& term, const std::string& kind, int lag,
                              const RegressionArimaFit& fr, size_t j, double scale, int df) {
  Coefficient c;
  c.term = term;
  c.kind = kind;
  c.lag = lag;
  c.value = fr.beta[j] * scale;
  c.std_error = j < fr.beta_se.size() ? fr.beta_se[j] * scale : 0.0;
  c.t_value = c.std_error > 0.0 ? c.value / c.std_error : 0.0;
  c.p_value = c.std_error > 0.0 ? TwoSidedTPValue(c.t_value, df) : 0.0;
  return c;
}

Coefficient DenominatorCoefficient(const std::string& input, double delta) {
  Coefficient den;
  den.term = input + " DENOMINATOR(1)";
  den.kind = "denominator";
  den.lag = 1;
  den.value = delta;
  return den;
}

int LeastSignificant(const std::vector<Coefficient>& coefficients, bool columns_only, double& p) {
  int worst = -1;
  for (size_t i = 0; i < coefficients.size(); ++i) {
    const Coefficient& c = coefficients[i];
    const bool column = c.kind == "input" || c.kind == "trend" || c.kind == "fourier" || c.kind == "seasonal";
    if (columns_only && !column) continue;
    if (c.kind == "denominator") continue;
    if (c.std_error > 0.0 && c.p_value > p) {
      p = c.p_value;
      worst = static_cast<int>(i);
    }
  }
  return worst;
}

std::string InputDenominator(const ModelBlock& b, double& delta) {
  delta = 0.0;
  if (b.first.empty()) return "";
  if (b.first.size() != 1 || b.first[0].powers.size() != 1 || b.first[0].powers[0] != 1)
    return "the denominator of " + b.name + " is of an order above one";
  delta = b.first[0].coefficients.empty() ? 0.0 : b.first[0].coefficients[0];
  if (!(std::fabs(delta) < 1.0)) return "the denominator of " + b.name + " is not stable";
  return "";
}

int MaxLead(const ModelBlock& b) {
  int max_lead = 0;
  for (const auto& poly : b.second)
    for (int pw : poly.powers) max_lead = std::max(max_lead, -pw);
  return max_lead;
}

void PresetNoise(int objective, int seasonality, ArimaOrders& a) {
  const int s = seasonality;
  a.period = s > 1 ? s : 1;
  switch (objective) {
    case 1: a.constant = true; break;
    case 2: a.p = 1; a.constant = true; break;
    case 3: a.p = 2; a.constant = true; break;
    case 4: a.d = 1; a.q = 1; break;
    case 5: a.d = 2; a.q = 2; break;
    case 6: a.d = 1; break;
    case 7: a.d = 1; a.constant = true; break;
    case 8: a.constant = true; break;             // with a trend
    case 9: a.p = 1; a.constant = true; break;    // with a trend
    case 10: a.constant = true; break;            // with the harmonics of the cycle
    case 12: a.p = 1; a.d = 1; a.q = 2; break;
    case 13: a.D = 1; a.Q = 1; break;
    case 14:
      // The ARIMA form of additive Holt-Winters: (1-B)(1-B**s) y = MA(s+1) noise, with the
      // terms at lags 1, s and s+1 (the others of the form are small and held at zero).
      a.d = 1;
      a.D = 1;
      a.q = s + 1;
      a.ma_zero.assign(s + 1, true);
      a.ma_zero[0] = a.ma_zero[s - 1] = a.ma_zero[s] = false;
      break;
    case 15: a.d = 1; a.q = 1; a.D = 1; a.Q = 1; break;
    case 51: a.constant = true; break;                   // with the inputs
    case 52: a.p = 1; a.constant = true; break;          // with the inputs
    default: break;
  }
}

void SetConstantModel(ModelResult& r, double value, int horizon) {
  r.has_constant = true;
  Coefficient c;
  c.term = "CONSTANT";
  c.kind = "constant";
  c.value = value;
  c.p_value = 0.0;
  r.coefficients.push_back(c);
  r.parameters = 1;
  r.degrees_of_freedom = std::max(0, r.observations - 1);
  r.forecasts.assign(horizon, value);
  r.lower.assign(horizon, value);
  r.upper.assign(horizon, value);
}

Note DiagnosisNote(const ModelResult& r) {
  return {"Diagnosis", "Ljung-Box Q " + Format("%.3f", r.ljung_box_q) + " over " + std::to_string(r.ljung_box_lags) +
                           " lags, p-value " + Format("%.4f", r.ljung_box_p) + "; R-squared " +
                           Format("%.4f", r.r_squared) + "; in-sample MAPE " + Format("%.3f", r.mape) + " %."};
}

void AddArmaOrder(ArimaOrders& s, ArmaCoefficients& start, bool ar) {
  if (ar) {
    ++s.p;
    s.ar_zero.resize(s.p, false);
    start.ar.resize(s.p, 0.0);
  } else {
    ++s.q;
    s.ma_zero.resize(s.q, false);
    start.ma.resize(s.q, 0.0);
  }
}

double FutureValue(const std::vector<double>& v, size_t at) {
  const double x = at < v.size() && std::isfinite(v[at]) ? v[at] : (v.empty() ? 0.0 : v.back());
  return std::isfinite(x) ? x : 0.0;
}

void SetForecast(ModelResult& r, int h, const ArimaForecast& fc, double xb, double scale, double lambda) {
  r.forecasts[h] = InverseBoxCox((fc.mean[h] + xb) * scale, lambda);
  r.lower[h] = InverseBoxCox((fc.lower[h] + xb) * scale, lambda);
  r.upper[h] = InverseBoxCox((fc.upper[h] + xb) * scale, lambda);
}

std::vector<double> TrendColumn(int length) {
  std::vector<double> x(length);
  for (int t = 0; t < length; ++t) x[t] = t + 1.0;
  return x;
}

double InSampleTally::Add(double actual, double fitted, double innovation, double z) {
  const double residual = actual - fitted;
  model_resid.push_back(innovation);
  used_z.push_back(z);
  sse += residual * residual;
  if (actual != 0.0) {
    ape += std::fabs(residual / actual);
    ++ape_n;
  }
  ++used;
  return residual;
}

void InSampleTally::Finish(ModelResult& r, double loglik, const ArimaFit& f) const {
  const double zbar = Mean(used_z);
  double sst = 0.0, mss = 0.0;
  for (size_t i = 0; i < used_z.size(); ++i) {
    sst += (used_z[i] - zbar) * (used_z[i] - zbar);
    mss += model_resid[i] * model_resid[i];
  }
  r.observations = used;
  r.degrees_of_freedom = std::max(0, used - r.parameters);
  r.sse = sse;
  r.variance = r.degrees_of_freedom > 0 ? sse / r.degrees_of_freedom : 0.0;
  r.r_squared = sst > 0.0 ? 1.0 - mss / sst : 0.0;
  r.loglik = loglik;
  const int kk = r.parameters + 1;
  r.aic = -2.0 * r.loglik + 2.0 * kk;
  r.bic = -2.0 * r.loglik + std::log(std::max(1, f.n)) * kk;
  r.mape = ape_n ? 100.0 * ape / ape_n : 0.0;
  FillResidualDiagnostics(r, model_resid, f.orders.period, f.orders.FreeCount(), used);
}

int ForecastHorizon(const ModelingProblem& problem, std::vector<std::string>& warnings) {
  const EngineRules& rules = problem.rules;
  int horizon = problem.horizon > 0 ? problem.horizon : rules.forecasts;
  if (!rules.forecasting_enabled) {
    horizon = 0;
    warnings.push_back(texts::kForecastingDisabled);
  }
  if (horizon > kMaxForecasts) {
    horizon = kMaxForecasts;
    warnings.push_back(texts::kHorizonTooLong);
  }
  return std::max(horizon, 0);
}

bool Stage_(const StageCallback& on_stage, Stage s, ModelResult& r) {
  if (on_stage && !on_stage(s)) {
    r.cancelled = true;
    return false;
  }
  return true;
}

}  // namespace quorvane
