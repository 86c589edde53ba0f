#include "engine/model/forecast.h"

#include <cmath>
#include <limits>

#include "engine/model/series_stats.h"

namespace quorvane {

namespace {

// Product of two polynomials in regression form (1 - sum a B^k)(1 - sum b B^k).
std::vector<double> MultiplyRegression(const std::vector<double>& a, const std::vector<double>& b) {
  std::vector<double> pa(a.size() + 1), pb(b.size() + 1);
  pa[0] = pb[0] = 1.0;
  for (size_t i = 0; i < a.size(); ++i) pa[i + 1] = -a[i];
  for (size_t i = 0; i < b.size(); ++i) pb[i + 1] = -b[i];
  std::vector<double> prod(pa.size() + pb.size() - 1, 0.0);
  for (size_t i = 0; i < pa.size(); ++i)
    for (size_t j = 0; j < pb.size(); ++j) prod[i + j] += pa[i] * pb[j];
  std::vector<double> out(prod.size() - 1);
  for (size_t k = 1; k < prod.size(); ++k) out[k - 1] = -prod[k];
  return out;
}

// The differenced series less the fit's constant: predictions use the model as given.
std::vector<double> Centred(std::vector<double> w, const ArimaFit& fit) {
  if (fit.orders.constant)
    for (double& v : w) v -= fit.mean;
  return w;
}

}  // namespace

ArimaForecast ForecastArima(const std::vector<double>& z, const ArimaFit& fit, int horizon, double coverage_pct) {
  ArimaForecast out;
  if (horizon < 1 || !fit.ok) return out;
  const std::vector<double> w = Centred(DifferenceSeries(z, fit.orders), fit);
  std::vector<double> phi, theta;
  ExpandArma(fit.coef, phi, theta);
  const ArmaLikelihood L = ArmaExactLikelihood(w, phi, theta, false, true);
  const int H = horizon;
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
  const double mu = fit.orders.constant ? fit.mean : 0.0;
  const std::vector<double> delta = DifferencingPolynomial(fit.orders.d, fit.orders.D, fit.orders.period);
  std::vector<double> hist = z;
  out.mean.resize(H);
  for (int h = 1; h <= H; ++h) {
    double v = mu + dev[h];
    const int t = static_cast<int>(hist.size());
    for (size_t k = 1; k <= delta.size(); ++k)
      if (t - static_cast<int>(k) >= 0) v += delta[k - 1] * hist[t - k];
    hist.push_back(v);
    out.mean[h - 1] = v;
  }
  const std::vector<double> psi = PsiWeights(MultiplyRegression(phi, delta), theta, H);
  const double zq = CentralNormalQuantile(coverage_pct);
  out.se.resize(H);
  out.lower.resize(H);
  out.upper.resize(H);
  double acc = 0.0;
  for (int h = 0; h < H; ++h) {
    acc += psi[h] * psi[h];
    out.se[h] = std::sqrt(std::max(fit.sigma2, 0.0) * acc);
    out.lower[h] = out.mean[h] - zq * out.se[h];
    out.upper[h] = out.mean[h] + zq * out.se[h];
  }
  return out;
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
