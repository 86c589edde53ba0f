// Intervention detection, the statistics of the candidates: whitening and generalised least
// squares under the noise model, the regression with ARIMA errors, the critical value, and
// the t-value of every type of effect at every place.
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
#include "engine/model/regression_noise.h"
#include "engine/model/series_stats.h"
#include "engine/model/unit_root.h"
#include "engine/model/intervention_parts.h"
#include "engine/model/regression_noise.h"
#include "engine/model/series_stats.h"
#include "engine/model/unit_root.h"

namespace quorvane {

using namespace intervention_parts;

// Prediction errors scaled to a common variance: whitening under the ARMA's exact
// covariance. Linear in the series for fixed coefficients, so regressions on whitened
// columns are generalised least squares. The common factor of the core's scaled residuals
// cancels in every ratio used here.
bool intervention_parts::Whiten(const std::vector<double>& w, const std::vector<double>& phi, const std::vector<double>& theta,
                                Eigen::VectorXd& out) {
  const ArmaLikelihood L = ArmaExactLikelihood(w, phi, theta, false);
  if (!L.ok) return false;
  out = Eigen::Map<const Eigen::VectorXd>(L.scaled.data(), static_cast<int>(L.scaled.size()));
  return out.allFinite();
}

// beta of w = Xw beta (+ mean) + ARMA noise. The mean column, when asked for, is estimated
// alongside but not returned: the noise model keeps its own constant.
GlsOutcome intervention_parts::Gls(const std::vector<double>& w, const std::vector<std::vector<double>>& Xw,
                                   const ArmaCoefficients& coef, bool with_mean) {
  GlsOutcome out;
  std::vector<double> phi, theta;
  ExpandArma(coef, phi, theta);
  const int m = static_cast<int>(w.size());
  const int k = static_cast<int>(Xw.size());
  const int cols = k + (with_mean ? 1 : 0);
  if (m <= cols) return out;
  // The series and its columns through one filter.
  const std::vector<double> ones(with_mean ? m : 0, 1.0);
  std::vector<const std::vector<double>*> series{&w};
  for (const auto& x : Xw) series.push_back(&x);
  if (with_mean) series.push_back(&ones);
  const std::vector<std::vector<double>> white = ArmaWhitenAll(series, phi, theta);
  for (const auto& v : white)
    if (v.empty()) return out;
  Eigen::MatrixXd A(m, cols);
  for (int j = 0; j < cols; ++j) A.col(j) = Eigen::Map<const Eigen::VectorXd>(white[j + 1].data(), m);
  const Eigen::VectorXd ws = Eigen::Map<const Eigen::VectorXd>(white[0].data(), m);
  return WhitenedLeastSquares(A, ws, k);
}

namespace {

double Median(std::vector<double> v) {
  if (v.empty()) return 0.0;
  const size_t mid = v.size() / 2;
  std::nth_element(v.begin(), v.begin() + mid, v.end());
  double m = v[mid];
  if (v.size() % 2 == 0) {
    const double lo = *std::max_element(v.begin(), v.begin() + mid);
    m = 0.5 * (m + lo);
  }
  return m;
}
}  // namespace

// The first and last observation where an effect of the type can be told apart from the
// model's own terms: nothing before the differencing has started; a step or a trend at the
// very start is the constant or the drift; a step or a trend at the last observations is a
// pulse; a seasonal pulse needs a second occurrence to differ from a pulse.
std::pair<int, int> intervention_parts::CandidateRange(int type, int n, const ArimaOrders& orders, const DetectionOptions& opt) {
  const int burn = BurnIn(orders);
  switch (type) {
    case kPulse: return {burn, n - 1};
    case kLevelShift: return {std::max(burn, 1), n - 2};
    case kSeasonalPulse:
      if (opt.period < 2) return {1, 0};
      return {burn, n - 1 - opt.period};
    case kLocalTrend: return {std::max(burn, 1) + 1, n - 3};
    default: return {1, 0};
  }
}

std::vector<int> intervention_parts::EnabledTypes(const DetectionOptions& opt) {
  std::vector<int> types;
  if (opt.pulse) types.push_back(kPulse);
  if (opt.level_shift) types.push_back(kLevelShift);
  if (opt.seasonal_pulse && opt.period > 1) types.push_back(kSeasonalPulse);
  if (opt.trend) types.push_back(kLocalTrend);
  return types;
}
RegressionArimaFit FitRegressionArima(const std::vector<double>& z, const std::vector<std::vector<double>>& X,
                                      const ArimaOrders& orders, const ConvergenceCriteria& crit, bool with_errors,
                                      const ArmaCoefficients* start) {
  RegressionArimaFit out;
  if (X.empty()) {
    out.arima = FitArima(z, orders, crit, with_errors, start);
    out.ok = out.arima.ok;
    return out;
  }
  const std::vector<double> w = DifferenceSeries(z, orders);
  std::vector<std::vector<double>> Xw;
  Xw.reserve(X.size());
  for (const auto& x : X) Xw.push_back(DifferenceSeries(x, orders));
  return AlternateRegressionArima(
      orders, crit, with_errors, start,
      [&](const std::vector<double>& beta, const ConvergenceCriteria& c, bool errors, const ArmaCoefficients* from) {
        return FitArima(RemoveRegressors(z, X, beta), orders, c, errors, from);
      },
      [&](const ArmaCoefficients& coef) { return Gls(w, Xw, coef, orders.constant); });
}

double InterventionCriticalValue(double confidence_pct, int candidates) {
  const double conf = std::clamp(confidence_pct, 50.0, 99.99);
  const double alpha = (100.0 - conf) / 100.0;
  const double tail = alpha / (2.0 * std::max(1, candidates));
  const boost::math::normal normal;
  const double c = boost::math::quantile(boost::math::complement(normal, tail));
  return std::max(c, 3.0);
}

namespace {
constexpr int kMaxSpan = 250;
}  // namespace

// An effect whose residual pattern pi(B) p runs to the end of the series has, with a column
// x, the product sum over s of p(s) u(q + s), u being x run backwards through pi: for every
// place at once a pass over the series, where each place alone would take one.
Eigen::MatrixXd intervention_parts::BackFiltered(const Eigen::MatrixXd& X, const std::vector<double>& a, const std::vector<double>& theta) {
  const int m = static_cast<int>(X.rows());
  std::vector<std::pair<int, double>> ar, ma;
  for (size_t k = 0; k < a.size(); ++k)
    if (a[k] != 0.0) ar.emplace_back(static_cast<int>(k), a[k]);
  for (size_t k = 1; k <= theta.size(); ++k)
    if (theta[k - 1] != 0.0) ma.emplace_back(static_cast<int>(k), theta[k - 1]);
  Eigen::MatrixXd U(m, X.cols());
  for (int col = 0; col < X.cols(); ++col) {
    const double* x = X.col(col).data();
    double* u = U.col(col).data();
    for (int q = m - 1; q >= 0; --q) {
      double v = 0.0;
      for (const auto& [k, c] : ar)
        if (q + k < m) v += c * x[q + k];
      for (const auto& [k, c] : ma)
        if (q + k < m) v -= c * u[q + k];
      u[q] = v;
    }
  }
  return U;
}

// Each row from the one after it (or a period after it): a pulse's pattern is one at s = 0, a
// step's one everywhere, a seasonal pulse's one at every period, a trend's 1, 2, 3, ...
Eigen::MatrixXd intervention_parts::PatternProducts(const Eigen::MatrixXd& U, int type, int period) {
  const int m = static_cast<int>(U.rows());
  if (type == kPulse) return U;
  Eigen::MatrixXd P(m, U.cols());
  for (int col = 0; col < U.cols(); ++col) {
    const double* u = U.col(col).data();
    double* out = P.col(col).data();
    if (type == kLocalTrend) {
      double level = 0.0, trend = 0.0;
      for (int q = m - 1; q >= 0; --q) {
        level += u[q];
        trend += level;
        out[q] = trend;
      }
      continue;
    }
    const int step = type == kSeasonalPulse ? std::max(1, period) : 1;
    for (int q = m - 1; q >= 0; --q) out[q] = u[q] + (q + step < m ? out[q + step] : 0.0);
  }
  return P;
}

// Kept whole: one pass over the candidate places that shares the robust scale, the filter and
// the partialled-out terms made at its top.
std::vector<CandidateStatistic> CandidateStatistics(const std::vector<double>& z,
                                                    const std::vector<std::vector<double>>& X,
                                                    const RegressionArimaFit& fit, const DetectionOptions& opt,
                                                    int ramp_gap) {
  std::vector<CandidateStatistic> out;
  if (!fit.ok) return out;
  const ArimaOrders& orders = fit.arima.orders;
  const int n = static_cast<int>(z.size());
  const int burn = BurnIn(orders);
  const std::vector<double> w = DifferenceSeries(RemoveRegressors(z, X, fit.beta), orders);
  const int m = static_cast<int>(w.size());
  if (m < 8) return out;
  std::vector<double> phi, theta;
  ExpandArma(fit.arima.coef, phi, theta);
  const ArmaLikelihood L = ArmaExactLikelihood(w, phi, theta, orders.constant);
  if (!L.ok || !(L.sigma2 > 0.0)) return out;
  const double g = std::sqrt(L.scaled_ssq / (L.n * L.sigma2));
  std::vector<double> e(m);
  for (int i = 0; i < m; ++i) e[i] = L.scaled[i] / g;
  // A robust scale: the outliers being looked for must not inflate it.
  const double med = Median(e);
  std::vector<double> dev(m);
  for (int i = 0; i < m; ++i) dev[i] = std::fabs(e[i] - med);
  double sigma = 1.4826 * Median(dev);
  if (!(sigma > 0.0)) sigma = std::sqrt(L.sigma2);
  if (!(sigma > 0.0)) return out;

  // a(B) = phi(B) delta(B) with its unit lead: the residual of an effect x is pi(B) x with
  // pi(B) = a(B) / theta(B).
  const std::vector<double> delta = DifferencingPolynomial(orders.d, orders.D, orders.period);
  std::vector<double> a(phi.size() + delta.size() + 1, 0.0);
  {
    std::vector<double> pa(phi.size() + 1), pd(delta.size() + 1);
    pa[0] = pd[0] = 1.0;
    for (size_t i = 0; i < phi.size(); ++i) pa[i + 1] = -phi[i];
    for (size_t i = 0; i < delta.size(); ++i) pd[i + 1] = -delta[i];
    for (size_t i = 0; i < pa.size(); ++i)
      for (size_t j = 0; j < pd.size(); ++j) a[i + j] += pa[i] * pd[j];
  }
  const int na = static_cast<int>(a.size());
  const int nq = static_cast<int>(theta.size());

  // The terms already in the model (the constant, the effects found) are partialled out of
  // each candidate: a step is otherwise measured against a mean that it has itself moved.
  Eigen::MatrixXd Q;
  {
    std::vector<std::vector<double>> cols;
    if (orders.constant) cols.push_back(std::vector<double>(m, 1.0));
    for (const auto& x : X) cols.push_back(DifferenceSeries(x, orders));
    Eigen::MatrixXd A(m, static_cast<int>(cols.size()));
    int used = 0;
    std::vector<const std::vector<double>*> series;
    for (const auto& c : cols)
      if (static_cast<int>(c.size()) == m) series.push_back(&c);
    for (const auto& v : ArmaWhitenAll(series, phi, theta))
      if (!v.empty()) A.col(used++) = Eigen::Map<const Eigen::VectorXd>(v.data(), m);
    if (used > 0) {
      Eigen::ColPivHouseholderQR<Eigen::MatrixXd> qr(A.leftCols(used));
      const int rank = static_cast<int>(qr.rank());
      // The thin factor only: the full square one costs the cube of the length.
      Q = qr.householderQ() * Eigen::MatrixXd::Identity(m, rank);
    }
  }
  const int K = static_cast<int>(Q.cols());
  // The residuals beside the partialled-out terms: a place's numerator and projection are
  // one product of a block of these rows with the effect's pattern.
  Eigen::MatrixXd EQ(m, K + 1);
  EQ.col(0) = Eigen::Map<const Eigen::VectorXd>(e.data(), m);
  if (K > 0) EQ.rightCols(K) = Q;
  Eigen::VectorXd both(K + 1);
  const Eigen::MatrixXd U = BackFiltered(EQ, a, theta);
  // At most one statistic per type and place, and one ramp per place.
  out.reserve(static_cast<size_t>(n) * (EnabledTypes(opt).size() + (ramp_gap > 1 ? 1 : 0)));

  for (int type : EnabledTypes(opt)) {
    const auto [lo, hi] = CandidateRange(type, n, orders, opt);
    if (lo > hi) continue;
    const Eigen::MatrixXd products = PatternProducts(U, type, opt.period);
    const int len = n - lo;
    const std::vector<double> p = InterventionRegressor(type, 0, opt.period, len);
    std::vector<double> c(len), cum(len);
    for (int j = 0; j < len; ++j) {
      double v = 0.0;
      for (int k = 0; k < na && k <= j; ++k) v += a[k] * p[j - k];
      for (int k = 1; k <= nq && k <= j; ++k) v -= theta[k - 1] * c[j - k];
      c[j] = v;
      cum[j] = (j ? cum[j - 1] : 0.0) + v * v;
    }
    // A trend's numerator, own sum of squares and projection at each place, kept for ramps.
    const bool ramps = type == kLocalTrend && ramp_gap > 1;
    std::vector<double> nums, dens;
    Eigen::MatrixXd projs;
    if (ramps) {
      nums.assign(hi - lo + 1, 0.0);
      dens.assign(hi - lo + 1, 0.0);
      projs.setZero(K, hi - lo + 1);
    }
    for (int T = lo; T <= hi; ++T) {
      // Long series: the statistic looks at most kMaxSpan observations ahead, which keeps a
      // pass linear in the length; by then a pulse's trace has died away and a step or a
      // trend is measured over plenty.
      const int span = std::min(n - T, kMaxSpan);
      if (span == n - T) {
        both = products.row(T - burn).transpose();
      } else {
        // One pass over the span for the numerator and every projection together.
        const Eigen::Map<const Eigen::VectorXd> cs(c.data(), span);
        both.noalias() = EQ.middleRows(T - burn, span).transpose() * cs;
      }
      const double num = both(0);
      const auto proj = both.tail(K);
      const double own = cum[span - 1];
      double den = own;
      if (K > 0) den -= proj.squaredNorm();
      if (ramps) {
        nums[T - lo] = num;
        dens[T - lo] = own;
        if (K > 0) projs.col(T - lo) = proj;
      }
      if (!(den > 1e-12)) continue;
      CandidateStatistic s;
      s.type = type;
      s.index = T;
      s.impact = num / den;
      s.tau = num / (sigma * std::sqrt(den));
      out.push_back(s);
    }
    if (!ramps) continue;
    // The ramp from T to T + g has the pattern c[j] - c[j - g]: its numerator and projection
    // are differences of the two trends', and its sum of squares needs only the lagged
    // cross-products of c, kept as running sums for each gap.
    const int gaps = std::min(ramp_gap, hi - lo);
    std::vector<std::vector<double>> cross(gaps + 1);
    for (int g = kRampMinGap; g <= gaps; ++g) {
      cross[g].assign(len - g + 1, 0.0);
      for (int i = 0; i + g < len; ++i) cross[g][i + 1] = cross[g][i] + c[i] * c[i + g];
    }
    for (int T = lo; T < hi; ++T) {
      const int span = std::min(n - T, kMaxSpan);
      CandidateStatistic best;
      for (int g = kRampMinGap; g <= gaps && T + g <= hi; ++g) {
        const int U = T + g;
        const int tail = std::min(span - g, std::min(n - U, kMaxSpan));
        if (tail < 1) break;
        const double num = nums[T - lo] - nums[U - lo];
        double den = dens[T - lo] + cum[tail - 1] - 2.0 * cross[g][std::min(span - g, len - g)];
        if (K > 0) den -= (projs.col(T - lo) - projs.col(U - lo)).squaredNorm();
        if (!(den > 1e-12)) continue;
        const double tau = num / (sigma * std::sqrt(den));
        if (best.end < 0 || std::fabs(tau) > std::fabs(best.tau)) {
          best.type = kLocalTrend;
          best.index = T;
          best.end = U;
          best.impact = num / den;
          best.tau = tau;
        }
      }
      if (best.end >= 0) out.push_back(best);
    }
  }
  return out;
}

}  // namespace quorvane
