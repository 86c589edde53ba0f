#include "engine/model/forecast.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <boost/math/distributions/students_t.hpp>

#include "engine/model/estimate_parts.h"
#include "engine/model/series_stats.h"

namespace quorvane {

namespace {

// The differenced series less the fit's constant: predictions use the model as given.
std::vector<double> Centred(std::vector<double> w, const ArimaFit& fit) {
  if (fit.orders.constant)
    for (double& v : w) v -= fit.mean;
  return w;
}

// Point forecasts 1..H with the constant taken as `mu` (the fit's own, or a shifted one to
// see how the forecasts move with it: they are linear in it).
std::vector<double> ForecastPath(const std::vector<double>& z, const ArimaFit& fit, const std::vector<double>& phi,
                                 const std::vector<double>& theta, const std::vector<double>& delta, int H,
                                 double mu) {
  std::vector<double> w = DifferenceSeries(z, fit.orders);
  if (fit.orders.constant)
    for (double& v : w) v -= mu;
  const ArmaLikelihood L = ArmaExactLikelihood(w, phi, theta, false, true);
  std::vector<double> dev(H + 1, 0.0);  // 1-based forecasts of w - mean
  if (L.ok) {
    const int r = static_cast<int>(L.state.size());
    for (int h = 1; h <= H; ++h) {
      if (h <= r) {
        dev[h] = L.state[h - 1];
      } else {
        double v = 0.0;
        for (size_t k = 1; k <= phi.size(); ++k) v += phi[k - 1] * dev[h - k];
        dev[h] = v;
      }
    }
  }
  const double level = fit.orders.constant ? mu : 0.0;
  std::vector<double> hist = z;
  std::vector<double> mean(H);
  for (int h = 1; h <= H; ++h) {
    double v = level + dev[h];
    const int t = static_cast<int>(hist.size());
    for (size_t k = 1; k <= delta.size(); ++k)
      if (t - static_cast<int>(k) >= 0) v += delta[k - 1] * hist[t - k];
    hist.push_back(v);
    mean[h - 1] = v;
  }
  return mean;
}

// Sum over the periods j = 1..h of the square of an event's effect at h when it begins at j.
double EventReach(EventShape shape, int h, int period) {
  switch (shape) {
    case EventShape::Pulse: return 1.0;
    case EventShape::Step: return h;
    case EventShape::SeasonalPulse: return period > 1 ? (h - 1) / period + 1 : 1.0;
    case EventShape::Ramp: return h * (h + 1.0) * (2.0 * h + 1.0) / 6.0;
  }
  return 0.0;
}

// The variance of each forecast 1..H from the error of the estimated ARMA coefficients:
// g' C g, g the forecast's derivatives along the free coefficients (central differences where
// both sides are admissible), C their covariance. Empty when the fit has none.
std::vector<double> CoefficientVariance(const std::vector<double>& z, const ArimaFit& fit,
                                        const std::vector<double>& delta, int H) {
  const auto slots = Slots(fit.orders);
  const int k = static_cast<int>(slots.size());
  if (k == 0 || fit.covariance.size() != static_cast<size_t>(k) * k) return {};
  const Eigen::Map<const Eigen::MatrixXd> C(fit.covariance.data(), k, k);
  const Eigen::VectorXd x = Pack(fit.coef, slots);
  Eigen::MatrixXd g(H, k);
  std::vector<double> phi, theta;
  auto path = [&](const Eigen::VectorXd& xv, std::vector<double>& out) {
    const ArmaCoefficients c = Unpack(fit.orders, slots, xv);
    if (!Admissible(c, 1e-6)) return false;
    ExpandArma(c, phi, theta);
    out = ForecastPath(z, fit, phi, theta, delta, H, fit.mean);
    return static_cast<int>(out.size()) == H;
  };
  std::vector<double> base, up, down;
  if (!path(x, base)) return {};
  for (int j = 0; j < k; ++j) {
    const double step = 1e-4 * std::max(1.0, std::fabs(x(j)));
    Eigen::VectorXd xp = x, xm = x;
    xp(j) += step;
    xm(j) -= step;
    const bool okp = path(xp, up), okm = path(xm, down);
    for (int h = 0; h < H; ++h) {
      if (okp && okm) g(h, j) = (up[h] - down[h]) / (2.0 * step);
      else if (okp) g(h, j) = (up[h] - base[h]) / step;
      else if (okm) g(h, j) = (base[h] - down[h]) / step;
      else return {};
    }
  }
  std::vector<double> out(H);
  for (int h = 0; h < H; ++h) {
    const Eigen::VectorXd gh = g.row(h).transpose();
    out[h] = std::max(0.0, gh.dot(C * gh));
    if (!std::isfinite(out[h])) return {};
  }
  return out;
}

}  // namespace

double MixtureHalfWidth(double base_variance, double event_count, double event_variance, double coverage_pct,
                        int degrees_of_freedom) {
  const double zq = CentralNormalQuantile(coverage_pct);
  // Heavier tails of an estimated variance: the t quantile's ratio to the normal one.
  double t_ratio = 1.0;
  if (degrees_of_freedom > 0) {
    const double p = std::clamp(coverage_pct, 0.01, 99.99) / 100.0;
    const boost::math::students_t t(degrees_of_freedom);
    t_ratio = boost::math::quantile(t, 0.5 + p / 2.0) / zq;
  }
  base_variance = std::max(base_variance, 0.0);
  if (!(event_count > 0.0) || !(event_variance > 0.0)) return t_ratio * zq * std::sqrt(base_variance);
  // Many events by the horizon: their sum is near normal (and the Poisson weights would need
  // hundreds of terms).
  if (event_count > 50.0) return t_ratio * zq * std::sqrt(base_variance + event_count * event_variance);
  // Poisson weights of 0, 1, 2, ... events, until what is left is negligible.
  std::vector<double> weight;
  double p = std::exp(-event_count), total = 0.0;
  for (int k = 0; k < 200 && total < 1.0 - 1e-12; ++k) {
    weight.push_back(p);
    total += p;
    p *= event_count / (k + 1);
  }
  const double alpha = 1.0 - std::clamp(coverage_pct, 0.01, 99.99) / 100.0;
  auto outside = [&](double x) {  // P(|error| > x)
    double s = 0.0;
    for (size_t k = 0; k < weight.size(); ++k) {
      const double sd = std::sqrt(base_variance + k * event_variance);
      if (sd > 0.0) s += weight[k] * std::erfc(x / (sd * std::sqrt(2.0)));
    }
    return s + (1.0 - total);
  };
  double lo = zq * std::sqrt(base_variance), hi = zq * std::sqrt(base_variance + event_count * event_variance);
  while (outside(hi) > alpha && hi < 1e300) hi *= 2.0;
  for (int it = 0; it < 60 && hi - lo > 1e-10 * hi; ++it) {
    const double mid = 0.5 * (lo + hi);
    (outside(mid) > alpha ? lo : hi) = mid;
  }
  return t_ratio * hi;
}

LimitAllowances EstimationAllowances(const ArimaFit& fit, int parameters, double sigma2) {
  LimitAllowances a;
  const int m = fit.n;
  const int df = m - std::max(parameters, 0);
  a.sigma2 = df > 0 ? sigma2 * m / df : sigma2;
  a.degrees_of_freedom = std::max(df, 1);
  a.coefficient_share = m > 0 ? static_cast<double>(fit.orders.FreeCount()) / m : 0.0;
  a.coefficient_delta = true;
  a.constant_error = true;
  a.period = fit.orders.period;
  return a;
}

ArimaForecast ForecastArima(const std::vector<double>& z, const ArimaFit& fit, int horizon, double coverage_pct,
                            const LimitAllowances& allow) {
  ArimaForecast out;
  if (horizon < 1 || !fit.ok) return out;
  std::vector<double> phi, theta;
  ExpandArma(fit.coef, phi, theta);
  const int H = horizon;
  const std::vector<double> delta = DifferencingPolynomial(fit.orders.d, fit.orders.D, fit.orders.period);
  out.mean = ForecastPath(z, fit, phi, theta, delta, H, fit.mean);

  const double sigma2 = std::max(allow.sigma2 >= 0.0 ? allow.sigma2 : fit.sigma2, 0.0);
  // How much each forecast moves per unit of the constant, and the variance of its estimate
  // (generalised least squares under the model, for unit innovations).
  std::vector<double> reach(H, 0.0);
  double constant_var = 0.0;
  if (allow.constant_error && fit.orders.constant) {
    const std::vector<double> shifted = ForecastPath(z, fit, phi, theta, delta, H, fit.mean + 1.0);
    for (int h = 0; h < H; ++h) reach[h] = shifted[h] - out.mean[h];
    const ArmaLikelihood L = ArmaExactLikelihood(DifferenceSeries(z, fit.orders), phi, theta, true);
    if (L.ok && L.sigma2 > 0.0) constant_var = sigma2 * L.mean_variance / L.sigma2;
  }
  const std::vector<double> psi = PsiWeights(MultiplyRegression(phi, delta), theta, H);
  const std::vector<double> coefficient_var = allow.coefficient_delta ? CoefficientVariance(z, fit, delta, H)
                                                                       : std::vector<double>{};
  const double share = std::max(allow.coefficient_share, 0.0);
  out.se.resize(H);
  out.lower.resize(H);
  out.upper.resize(H);
  double acc = 0.0;
  for (int h = 0; h < H; ++h) {
    acc += psi[h] * psi[h];
    // The coefficients' part: their share of the innovation part, or, where the forecast leans
    // on them more, their error carried through the forecast function.
    double coefficients = share * sigma2 * acc;
    if (!coefficient_var.empty()) coefficients = std::max(coefficients, std::min(coefficient_var[h], sigma2 * acc));
    const double base = sigma2 * acc + coefficients + reach[h] * reach[h] * constant_var;
    double count = 0.0, event_var = 0.0;
    for (const RecurringEvents& e : allow.events) {
      if (!(e.rate > 0.0) || !(e.mean_square > 0.0)) continue;
      count += e.rate * (h + 1);
      event_var += e.rate * e.mean_square * EventReach(e.shape, h + 1, allow.period);
    }
    if (count > 0.0) event_var /= count;  // per event, averaged over the shapes by their rates
    out.se[h] = std::sqrt(base + count * event_var);
    double half = MixtureHalfWidth(base, count, event_var, coverage_pct, allow.degrees_of_freedom);
    if (!allow.tail_ratio.empty()) half *= allow.tail_ratio[std::min<size_t>(h, allow.tail_ratio.size() - 1)];
    out.lower[h] = out.mean[h] - half;
    out.upper[h] = out.mean[h] + half;
  }
  return out;
}

void ConvertForecastValues(std::vector<double>& forecasts, std::vector<double>& lower, std::vector<double>& upper,
                           bool positive, bool integers) {
  auto convert = [&](std::vector<double>& v, double (*round)(double)) {
    for (double& x : v) {
      if (!std::isfinite(x)) continue;
      if (positive && x < 0.0) x = 0.0;
      if (integers) x = round(x);
    }
  };
  convert(forecasts, [](double x) { return std::round(x); });
  convert(lower, [](double x) { return std::floor(x); });
  convert(upper, [](double x) { return std::ceil(x); });
}

std::vector<double> OneStepPredictions(const std::vector<double>& z, const ArimaFit& fit) {
  std::vector<double> pred(z.size(), std::numeric_limits<double>::quiet_NaN());
  if (!fit.ok) return pred;
  const std::vector<double> w = Centred(DifferenceSeries(z, fit.orders), fit);
  std::vector<double> phi, theta;
  ExpandArma(fit.coef, phi, theta);
  const ArmaLikelihood L = ArmaExactLikelihood(w, phi, theta, false, true);
  if (!L.ok) return pred;
  const size_t burn = z.size() - w.size();
  for (size_t t = burn; t < z.size(); ++t) pred[t] = z[t] - L.innovations[t - burn];
  return pred;
}

}  // namespace quorvane
