// Interventions as columns and as effects: the regressor of each type, the effects removed
// from a series, the detection options the rules give, and the texts that describe them.
#include "engine/model/interventions.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <numeric>
#include <unordered_map>

#include <Eigen/Dense>
#include <boost/math/distributions/normal.hpp>

#include "engine/model/arma.h"
#include "engine/model/forecast.h"
#include "engine/model/intervention_parts.h"
#include "engine/model/regression_noise.h"
#include "engine/model/series_stats.h"
#include "engine/model/unit_root.h"

namespace quorvane {

using intervention_parts::Regressors;

std::vector<double> InterventionRegressor(int type, int at, int period, int length) {
  std::vector<double> x(std::max(length, 0), 0.0);
  if (at < 0) return x;
  const int s = period > 1 ? period : 0;
  for (int t = at; t < length; ++t) {
    switch (type) {
      case kPulse: x[t] = t == at ? 1.0 : 0.0; break;
      case kLevelShift: x[t] = 1.0; break;
      case kSeasonalPulse: x[t] = (s > 0 ? (t - at) % s == 0 : t == at) ? 1.0 : 0.0; break;
      case kLocalTrend: x[t] = static_cast<double>(t - at + 1); break;
      default: break;
    }
  }
  return x;
}

std::string InterventionTypeName(int type) {
  switch (type) {
    case kPulse: return "PULSE";
    case kLevelShift: return "LEVEL SHIFT";
    case kSeasonalPulse: return "SEASONAL PULSE";
    case kLocalTrend: return "LOCAL TREND";
    default: return "INTERVENTION";
  }
}

std::vector<double> RemoveRegressors(const std::vector<double>& z, const std::vector<std::vector<double>>& X,
                                     const std::vector<double>& beta) {
  std::vector<double> u = z;
  for (size_t j = 0; j < X.size() && j < beta.size(); ++j)
    for (size_t t = 0; t < u.size() && t < X[j].size(); ++t) u[t] -= beta[j] * X[j][t];
  return u;
}

std::vector<double> RegressionInnovations(const std::vector<double>& z, const std::vector<std::vector<double>>& X,
                                          const RegressionArimaFit& fit) {
  std::vector<double> out(z.size(), std::numeric_limits<double>::quiet_NaN());
  if (!fit.ok) return out;
  const std::vector<double> u = RemoveRegressors(z, X, fit.beta);
  const std::vector<double> pred = OneStepPredictions(u, fit.arima);
  for (size_t t = 0; t < z.size(); ++t) out[t] = u[t] - pred[t];
  return out;
}

DetectionOptions DetectionOptionsFromRules(const EngineRules& rules, int period, const ConvergenceCriteria& crit) {
  DetectionOptions opt;
  opt.pulse = rules.include_pulse;
  opt.level_shift = rules.include_step;
  opt.seasonal_pulse = rules.include_seasonal_pulse;
  opt.trend = rules.include_local_trend && !rules.no_trend;
  opt.max_count = std::max(0, rules.max_outliers);
  opt.confidence = rules.sufficiency_ds_level;
  opt.period = period > 1 ? period : 1;
  opt.criteria = crit;
  return opt;
}

std::vector<double> InterventionEffects(const std::vector<DetectedIntervention>& found, int period, int n,
                                        int horizon, bool last_pulse_to_step, bool pulse_to_seasonal) {
  const int length = n + std::max(0, horizon);
  std::vector<double> e(length, 0.0);
  for (const auto& f : found) {
    int type = f.type;
    if (type == kPulse && last_pulse_to_step && f.index == n - 1) type = kLevelShift;
    std::vector<double> x = InterventionRegressor(type, f.index, period, length);
    if (type == kPulse && pulse_to_seasonal && period > 1 && f.index >= n - period &&
        !(last_pulse_to_step && f.index == n - 1) && f.index != n - 1) {
      for (int t = f.index + period; t < length; t += period) x[t] = 1.0;
    }
    for (int t = 0; t < length; ++t) e[t] += f.impact * x[t];
  }
  return e;
}

void DescribeInterventions(const std::vector<DetectedIntervention>& found, double scale, int seasonality,
                           int begin_year, int begin_period, int df, std::vector<Intervention>& interventions,
                           std::vector<Coefficient>& coefficients) {
  for (const auto& f : found) {
    Intervention iv;
    iv.type = f.type;
    iv.observation = f.index + 1;
    if (seasonality <= 1) {
      iv.major = begin_year + f.index;
      iv.minor = 0;
    } else {
      const int offset = std::max(0, begin_period - 1) + f.index;
      iv.major = begin_year + offset / seasonality;
      iv.minor = offset % seasonality + 1;
    }
    iv.impact = f.impact * scale;
    iv.t_value = f.t_value;
    interventions.push_back(iv);

    Coefficient c;
    c.term = InterventionTypeName(f.type) + " " + std::to_string(iv.major) +
             (seasonality > 1 ? "/" + std::to_string(iv.minor) : std::string());
    c.kind = f.type == kLocalTrend ? "trend" : "intervention";
    c.lag = 0;
    c.value = f.impact * scale;
    c.std_error = f.std_error * scale;
    c.t_value = f.t_value;
    c.p_value = TwoSidedTPValue(f.t_value, df);
    coefficients.push_back(c);
  }
}

std::string InterventionStory(const DetectionResult& detection) {
  char buf[160];
  std::snprintf(buf, sizeof buf, "Critical value %.2f over %d observations tested. ", detection.critical_value,
                detection.candidates);
  std::string text = detection.candidates > 0 ? buf : "Too few observations to test for interventions. ";
  for (const auto& line : detection.trail) text += line + "; ";
  if (detection.found.empty()) return text + "no interventions kept.";
  text += std::to_string(detection.found.size()) + " intervention(s) kept with " +
          detection.fit.arima.orders.Name() + ".";
  return text;
}

std::string InterventionEquation(const std::vector<Coefficient>& coefficients, const std::string& lhs) {
  std::string rhs;
  for (const auto& c : coefficients) {
    if (c.kind != "intervention" && c.kind != "trend") continue;
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.6g", std::fabs(c.value));
    rhs += std::string(rhs.empty() ? (c.value < 0 ? "-" : "") : (c.value < 0 ? " - " : " + ")) + buf + " " +
           c.term + "(t)";
  }
  return lhs + "(t) = " + rhs + (rhs.empty() ? "" : " + ") + "N(t)";
}

std::string ObservationPeriodText(int index, int seasonality, int begin_year, int begin_period) {
  if (seasonality <= 1) return std::to_string(begin_year + index);
  const int offset = std::max(0, begin_period - 1) + index;
  return std::to_string(begin_year + offset / seasonality) + "/" + std::to_string(offset % seasonality + 1);
}

std::vector<double> ModelInnovations(const std::vector<double>& z, const std::vector<DetectedIntervention>& found,
                                     int period, const RegressionArimaFit& fit, int& first) {
  const int n = static_cast<int>(z.size());
  const std::vector<double> e = RegressionInnovations(z, Regressors(found, period, n), fit);
  first = 0;
  while (first < n && !std::isfinite(e[first])) ++first;
  return std::vector<double>(e.begin() + first, e.end());
}

}  // namespace quorvane