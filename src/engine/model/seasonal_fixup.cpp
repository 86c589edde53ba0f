#include "engine/model/seasonal_fixup.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <set>

#include "engine/model/series_stats.h"

namespace quorvane {

namespace {

std::string Num(double v) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.6g", v);
  return buf;
}

// AICc of the one-step prediction errors of a regression with ARIMA errors from
// observation `first` on, every ARMA coefficient, the constant and every regressor counted.
// Models of different differencing are compared on the same observations this way.
double OneStepAicc(const std::vector<double>& z, const std::vector<std::vector<double>>& X,
                   const RegressionArimaFit& f, int first) {
  const std::vector<double> e = RegressionInnovations(z, X, f);
  double sse = 0.0;
  int m = 0;
  for (size_t t = std::max(first, 0); t < e.size(); ++t) {
    if (!std::isfinite(e[t])) return std::numeric_limits<double>::infinity();
    sse += e[t] * e[t];
    ++m;
  }
  const int k = f.arima.orders.FreeCount() + (f.arima.orders.constant ? 1 : 0) + static_cast<int>(X.size()) + 1;
  if (m - k - 1 <= 0 || !(sse > 0.0)) return std::numeric_limits<double>::infinity();
  return m * std::log(sse / m) + 2.0 * k + 2.0 * k * (k + 1.0) / (m - k - 1.0);
}

// The period of the cycle (1..s) of a 0-based cycle position.
int CyclePeriod(int position, int first_position, int period) { return (first_position + position) % period + 1; }

}  // namespace

std::vector<double> SeasonalDummy(int j, int period, int length) {
  std::vector<double> x(std::max(length, 0), -1.0 / period);
  for (int t = j; t < length; t += period) x[t] += 1.0;
  return x;
}

SeasonalFixup TrySeasonalDummies(const std::vector<double>& z, const std::vector<DetectedIntervention>& found,
                                 const RegressionArimaFit& with_pulses, int period, int first_position,
                                 int horizon, const ConvergenceCriteria& crit) {
  SeasonalFixup out;
  const int n = static_cast<int>(z.size());
  std::set<int> positions;
  for (const DetectedIntervention& d : found)
    if (d.type == kSeasonalPulse && period > 1) positions.insert(d.index % period);
  if (positions.size() < 2) return out;
  out.tried = true;
  std::string where;
  for (int pos : positions) where += (where.empty() ? "" : ", ") + std::to_string(CyclePeriod(pos, first_position, period));
  const std::string head = "Seasonal pulses at " + std::to_string(positions.size()) + " periods of the cycle (" + where +
                           "): ";
  // A seasonal difference lets the pattern wander; fixed dummies hold it still, so with
  // them the seasonal difference (and the seasonal ARMA terms that went with it) is left out.
  const ArimaOrders& was = with_pulses.arima.orders;
  ArimaOrders orders = was;
  if (was.D > 0) {
    orders.D = 0;
    orders.P = orders.Q = 0;
    orders.sar_zero.clear();
    orders.sma_zero.clear();
    orders.constant = orders.d == 0;
  }
  std::vector<std::vector<double>> X_pulses;
  std::vector<std::vector<double>> X;
  for (const DetectedIntervention& d : found) {
    X_pulses.push_back(InterventionRegressor(d.type, d.index, period, n));
    if (d.type == kSeasonalPulse) continue;
    out.found.push_back(d);
    X.push_back(InterventionRegressor(d.type, d.index, period, n));
  }
  const size_t kept = X.size();
  for (int j = 0; j + 1 < period; ++j) X.push_back(SeasonalDummy(j, period, n));
  const RegressionArimaFit fit =
      FitRegressionArima(z, X, orders, crit, true, was.D == 0 ? &with_pulses.arima.coef : nullptr);
  // Both on the observations the model with more differencing can predict.
  const int first = was.d + was.D * period;
  out.aicc_pulses = OneStepAicc(z, X_pulses, with_pulses, first);
  const std::string tried = std::to_string(period - 1) + " seasonal dummies" +
                            (was.D > 0 ? " without the seasonal difference" : "");
  if (!fit.ok) {
    out.note = head + tried + " could not be estimated; the pulses are kept.";
    out.found.clear();
    return out;
  }
  out.aicc_dummies = OneStepAicc(z, X, fit, first);
  if (!(out.aicc_dummies < out.aicc_pulses)) {
    out.note = head + tried + " in their place tried (AICc of the one-step errors " + Num(out.aicc_dummies) +
               " against " + Num(out.aicc_pulses) + "); the pulses are kept.";
    out.found.clear();
    return out;
  }
  out.applied = true;
  out.fit = fit;
  for (size_t c = kept; c < fit.beta.size(); ++c) {
    out.dummies.push_back(fit.beta[c]);
    out.dummies_se.push_back(c < fit.beta_se.size() ? fit.beta_se[c] : 0.0);
  }
  out.effects.assign(n + std::max(horizon, 0), 0.0);
  for (int j = 0; j + 1 < period; ++j) {
    const std::vector<double> x = SeasonalDummy(j, period, n + std::max(horizon, 0));
    for (size_t t = 0; t < x.size(); ++t) out.effects[t] += out.dummies[j] * x[t];
  }
  out.note = head + "replaced by " + std::to_string(period - 1) +
             " centred seasonal dummies (fixed effects) estimated with the model" +
             (was.D > 0 ? ", which no longer takes the seasonal difference" : "") +
             "; AICc of the one-step errors " + Num(out.aicc_dummies) + " against " + Num(out.aicc_pulses) +
             " with the pulses.";
  return out;
}

void DescribeSeasonalDummies(const SeasonalFixup& fixup, double scale, int period, int first_position, int df,
                             std::vector<Coefficient>& coefficients) {
  if (!fixup.applied) return;
  for (size_t j = 0; j < fixup.dummies.size(); ++j) {
    Coefficient c;
    c.lag = CyclePeriod(static_cast<int>(j), first_position, period);
    c.term = "SEASONAL DUMMY " + std::to_string(c.lag);
    c.kind = "dummy";
    c.value = fixup.dummies[j] * scale;
    c.std_error = fixup.dummies_se[j] * scale;
    c.t_value = c.std_error > 0.0 ? c.value / c.std_error : 0.0;
    c.p_value = c.std_error > 0.0 ? TwoSidedTPValue(c.t_value, std::max(1, df)) : 0.0;
    coefficients.push_back(c);
  }
}

}  // namespace quorvane
