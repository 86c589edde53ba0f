#include "engine/model/arma.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

#include <Eigen/Dense>
#include <emmintrin.h>

namespace quorvane {

namespace {
// Two doubles operated on together (one SSE2 register on x86-64), each half by the same
// IEEE arithmetic as a double alone.
typedef double Pair __attribute__((vector_size(16)));

Pair Load(const double* p) {
  Pair v;
  __builtin_memcpy(&v, p, sizeof v);
  return v;
}
void Store(double* p, Pair v) { __builtin_memcpy(p, &v, sizeof v); }

// Whether small models take their own paths (see ArmaUseSmallModelPaths).
thread_local bool small_paths = true;
}  // namespace

void ArmaUseSmallModelPaths(bool use) { small_paths = use; }

void ExpandArma(const ArmaCoefficients& c, std::vector<double>& phi, std::vector<double>& theta) {
  const int s = std::max(1, c.period);
  const int p = static_cast<int>(c.ar.size()), P = static_cast<int>(c.sar.size());
  const int q = static_cast<int>(c.ma.size()), Q = static_cast<int>(c.sma.size());
  // Polynomials with their unit lead: a(B) = 1 - sum ar B^i. The products run in every
  // likelihood evaluation of every candidate, so their workspace is kept per thread.
  thread_local std::vector<double> a, as, prod, b, bs, prodm;
  if (P == 0 && Q == 0) {
    // No seasonal factor: each product below is a term times the unit lead of 1, added to
    // zero, which is what is written here (the sign of a zero kept as the products make it).
    phi.resize(p);
    for (int i = 0; i < p; ++i) phi[i] = -(0.0 + -c.ar[i]);
    theta.resize(q);
    for (int i = 0; i < q; ++i) theta[i] = 0.0 + c.ma[i];
    return;
  }
  a.assign(p + 1, 0.0);
  as.assign(s * P + 1, 0.0);
  a[0] = 1.0;
  for (int i = 0; i < p; ++i) a[i + 1] = -c.ar[i];
  as[0] = 1.0;
  for (int j = 0; j < P; ++j) as[s * (j + 1)] = -c.sar[j];
  prod.assign(p + s * P + 1, 0.0);
  for (int i = 0; i <= p; ++i)
    for (int j = 0; j <= s * P; ++j) prod[i + j] += a[i] * as[j];
  phi.assign(p + s * P, 0.0);
  for (size_t k = 1; k < prod.size(); ++k) phi[k - 1] = -prod[k];

  b.assign(q + 1, 0.0);
  bs.assign(s * Q + 1, 0.0);
  b[0] = 1.0;
  for (int i = 0; i < q; ++i) b[i + 1] = c.ma[i];
  bs[0] = 1.0;
  for (int j = 0; j < Q; ++j) bs[s * (j + 1)] = c.sma[j];
  prodm.assign(q + s * Q + 1, 0.0);
  for (int i = 0; i <= q; ++i)
    for (int j = 0; j <= s * Q; ++j) prodm[i + j] += b[i] * bs[j];
  theta.assign(q + s * Q, 0.0);
  for (size_t k = 1; k < prodm.size(); ++k) theta[k - 1] = prodm[k];
}

namespace {

// The step-down recursion on the polynomial held in `a` (its first values), stepping into
// `next`; both are per-thread workspace, since the check runs for every trial step of every
// estimation and fresh vectors at each order cost more than the arithmetic.
bool StepDownStationary(std::vector<double>& a, std::vector<double>& next, double margin) {
  while (!a.empty() && a.back() == 0.0) a.pop_back();
  for (double v : a)
    if (!std::isfinite(v)) return false;
  const double limit = 1.0 - margin;
  next.resize(a.size());
  for (int k = static_cast<int>(a.size()); k >= 1; --k) {
    const double kappa = a[k - 1];
    if (!(std::fabs(kappa) < limit)) return false;
    const double den = 1.0 - kappa * kappa;
    for (int j = 1; j < k; ++j) next[j - 1] = (a[j - 1] + kappa * a[k - j - 1]) / den;
    a.swap(next);
  }
  return true;
}

thread_local std::vector<double> step_a, step_next;

// The same recursion for short polynomials (the estimator's own coefficient vectors), in
// arrays on the stack: the check runs at every trial point, where moving the values in and out
// of the workspace costs more than the recursion. `sign` -1 takes the coefficients negated.
constexpr int kShortPolynomial = 8;
bool StepDownShort(const std::vector<double>& in, double sign, double margin) {
  double a[kShortPolynomial], next[kShortPolynomial];
  int size = static_cast<int>(in.size());
  for (int i = 0; i < size; ++i) a[i] = sign < 0.0 ? -in[i] : in[i];
  while (size > 0 && a[size - 1] == 0.0) --size;
  for (int i = 0; i < size; ++i)
    if (!std::isfinite(a[i])) return false;
  const double limit = 1.0 - margin;
  double* from = a;
  double* to = next;
  for (int k = size; k >= 1; --k) {
    const double kappa = from[k - 1];
    if (!(std::fabs(kappa) < limit)) return false;
    const double den = 1.0 - kappa * kappa;
    for (int j = 1; j < k; ++j) to[j - 1] = (from[j - 1] + kappa * from[k - j - 1]) / den;
    std::swap(from, to);
  }
  return true;
}

}  // namespace

bool IsStationary(const std::vector<double>& a_in, double margin) {
  if (a_in.size() <= kShortPolynomial) return StepDownShort(a_in, 1.0, margin);
  step_a.assign(a_in.begin(), a_in.end());
  return StepDownStationary(step_a, step_next, margin);
}

bool IsInvertible(const std::vector<double>& b, double margin) {
  if (b.size() <= kShortPolynomial) return StepDownShort(b, -1.0, margin);
  step_a.resize(b.size());
  for (size_t i = 0; i < b.size(); ++i) step_a[i] = -b[i];
  return StepDownStationary(step_a, step_next, margin);
}

double SmallestRootModulus(const std::vector<double>& a_in) {
  std::vector<double> a = a_in;
  while (!a.empty() && a.back() == 0.0) a.pop_back();
  const int p = static_cast<int>(a.size());
  if (p == 0) return std::numeric_limits<double>::infinity();
  // Roots of z^p - a1 z^{p-1} - ... - ap are the inverses of the roots of 1 - sum a z^k.
  Eigen::MatrixXd companion = Eigen::MatrixXd::Zero(p, p);
  for (int j = 0; j < p; ++j) companion(0, j) = a[j];
  for (int i = 1; i < p; ++i) companion(i, i - 1) = 1.0;
  Eigen::EigenSolver<Eigen::MatrixXd> es(companion, false);
  double largest = 0.0;
  for (int i = 0; i < p; ++i) largest = std::max(largest, std::abs(es.eigenvalues()[i]));
  if (!(largest > 0.0)) return std::numeric_limits<double>::infinity();
  return 1.0 / largest;
}

std::vector<double> PsiWeights(const std::vector<double>& phi, const std::vector<double>& theta, int count) {
  std::vector<double> psi(std::max(count, 0), 0.0);
  for (int j = 0; j < count; ++j) {
    double v = (j == 0) ? 1.0 : (j - 1 < static_cast<int>(theta.size()) ? theta[j - 1] : 0.0);
    for (int k = 1; k <= j && k <= static_cast<int>(phi.size()); ++k) v += phi[k - 1] * psi[j - k];
    psi[j] = v;
  }
  return psi;
}

// The ARMA w = theta(B) x with x = a / phi(B): the autocovariances of x come from the
// partial autocorrelations of phi (the step-down recursion and back), in the square of the
// AR order rather than the cube of a linear system, which matters for seasonal models whose
// AR polynomial spans several cycles; those of w are sums of x's over the lags of theta.
namespace {

// ArmaAutocovariances into g (resized to max_lag + 1): every likelihood evaluation starts its
// filter from them, and a fresh vector each time costs about as much as the arithmetic.
bool AutocovariancesInto(const std::vector<double>& phi, const std::vector<double>& theta, int max_lag,
                         std::vector<double>& g) {
  int p = static_cast<int>(phi.size());
  while (p > 0 && phi[p - 1] == 0.0) --p;
  for (int i = 0; i < p; ++i)
    if (!std::isfinite(phi[i])) return false;
  const int q = static_cast<int>(theta.size());
  const int m = std::max(max_lag, 0);
  // The predictor coefficients of every order from p down to 1, order k's k values at k(k-1)/2
  // of one per-thread array (this runs at every likelihood evaluation); kappa is the last of
  // each, and the recursion stops as soon as one reaches the unit circle (not stationary).
  thread_local std::vector<double> by_order, gx, shift;
  thread_local std::vector<std::pair<int, double>> th;
  by_order.resize(static_cast<size_t>(p) * (p + 1) / 2);
  auto order = [&](int k) { return by_order.data() + static_cast<size_t>(k) * (k - 1) / 2; };
  std::copy(phi.begin(), phi.begin() + p, order(p));
  double variance = 1.0;
  for (int k = p; k >= 1; --k) {
    const double* a = order(k);
    const double kappa = a[k - 1];
    if (!(std::fabs(kappa) < 1.0)) return false;
    const double den = 1.0 - kappa * kappa;
    variance /= den;
    double* next = order(k - 1);
    for (int j = 1; j < k; ++j) next[j - 1] = (a[j - 1] + kappa * a[k - j - 1]) / den;
  }
  gx.resize(m + q + 1);
  gx[0] = variance;
  for (int k = 1; k <= m + q; ++k) {
    const int len = std::min(k, p);
    const double* a = order(len);
    double v = 0.0;
    for (int j = 1; j <= len && j <= k; ++j) v += a[j - 1] * gx[k - j];
    gx[k] = v;
  }
  // Products of theta with itself at each shift d (theta_0 = 1), over its nonzero lags.
  th.assign(1, {0, 1.0});
  for (int i = 1; i <= q; ++i)
    if (theta[i - 1] != 0.0) th.emplace_back(i, theta[i - 1]);
  shift.assign(q + 1, 0.0);
  for (size_t a = 0; a < th.size(); ++a)
    for (size_t b = a; b < th.size(); ++b) shift[th[b].first - th[a].first] += th[a].second * th[b].second;
  g.assign(m + 1, 0.0);
  for (int k = 0; k <= m; ++k) {
    double v = shift[0] * gx[k];
    for (int d = 1; d <= q; ++d)
      if (shift[d] != 0.0) v += shift[d] * (gx[k + d] + gx[std::abs(k - d)]);
    g[k] = v;
  }
  return std::isfinite(g[0]) && g[0] > 0.0;
}

}  // namespace

std::vector<double> ArmaAutocovariances(const std::vector<double>& phi, const std::vector<double>& theta,
                                        int max_lag) {
  std::vector<double> g;
  if (!AutocovariancesInto(phi, theta, max_lag, g)) return {};
  return g;
}

namespace {

// The innovations filter both exact passes share. The state holds the predictions of
// w(t..t+r-1) given the innovations up to t, started at its stationary covariance P, whose first
// column is gamma(0..r-1). The filter needs only the prediction variance f = P(0,0) and the gain
// G = T P e1 (T the shift with the AR row), and because it starts from the stationary
// covariance, each change P(t+1) - P(t) has rank one, W M W'. Carrying W and M (the
// Chandrasekhar recursions) costs O(r) a step in place of the O(r^2) of the full Riccati
// update, which matters for seasonal models, whose state spans a whole cycle or more.
class ChandrasekharFilter {
 public:
  // Starts the filter of an ARMA model with unit innovation variance, its state of size
  // max(p, q + 1); false when the model has no stationary autocovariances. A filter is
  // started again for every likelihood evaluation, so one object per thread and use keeps
  // its arrays from one start to the next.
  bool Start(const std::vector<double>& phi, const std::vector<double>& theta) {
    r_ = std::max(static_cast<int>(phi.size()), static_cast<int>(theta.size()) + 1);
    if (!AutocovariancesInto(phi, theta, r_, gamma_)) return false;
    // The nonzero AR lags only: seasonal models have few among many.
    lag_.clear();
    coef_.clear();
    for (int k = 1; k <= static_cast<int>(phi.size()); ++k)
      if (phi[k - 1] != 0.0) {
        lag_.push_back(k);
        coef_.push_back(phi[k - 1]);
      }
    f = gamma_[0];
    G.assign(gamma_.begin(), gamma_.begin() + r_);
    Advance(G);
    W_ = G;
    M_ = -1.0 / f;  // P(2) - P(1) = -G G' / f
    steady_ = false;
    return true;
  }

  // a <- T a : shift up, last from phi.
  void Advance(std::vector<double>& a) const {
    const double last = Last(a.data());
    for (int i = 0; i + 1 < r_; ++i) a[i] = a[i + 1];
    a[r_ - 1] = last;
  }

  // The last element of T a, for the state a[0..r-1]. A state kept as a window sliding
  // along a longer array advances with no copying: the window moves on by one and this
  // value goes at its new end, a[r].
  template <int R = 0>
  double Last(const double* a) const {
    const int r = R > 0 ? R : r_;
    const int* lag = lag_.data();
    const double* coef = coef_.data();
    const int lags = static_cast<int>(lag_.size());
    double last = 0.0;
    for (int m = 0; m < lags; ++m) last += coef[m] * a[r - lag[m]];
    return last;
  }

  // The gain of the next step: f' = f + M w0^2, G' = G + T W M w0, W' = (T W f - G w0) / f',
  // M' = M f' / f. Converged, the gain no longer changes.
  void NextGain() { Step<false, double>(nullptr, 0.0); }

  // One step of a filter whose state window has just moved on (a[0..r-1], its last value
  // already T a's): the state takes its share of the innovation, a += G s, and the gain moves
  // to the next step's, in one pass over the state. Elements go two at a time, each half by
  // exactly its own arithmetic, so the numbers are those of one element at a time; the
  // state's update uses each G before the gain's update overwrites it.
  template <bool kWithState, typename S, int R = 0>
  void Step(S* a, S s) {
    const int r = R > 0 ? R : r_;
    if (steady_) {
      if constexpr (kWithState) StateOnly(a, s, r);
      return;
    }
    double* W = W_.data();
    double* g = G.data();
    const double w0 = W[0];
    const double fn = f + M_ * w0 * w0;
    const double mw = M_ * w0, inv = 1.0 / fn;
    // T W is W shifted up with the AR row last: W is updated in place, each element read
    // (as the one before's shifted value) before it is written.
    const int* lag = lag_.data();
    const double* coef = coef_.data();
    const int lags = static_cast<int>(lag_.size());
    double last = 0.0;
    for (int m = 0; m < lags; ++m) last += coef[m] * W[r - lag[m]];
    const Pair mw2{mw, mw}, f2{f, f}, w02{w0, w0}, inv2{inv, inv};
    int i = 0;
    for (; i + 2 < r; i += 2) {
      const Pair tw = Load(W + i + 1), gi = Load(g + i);
      if constexpr (kWithState) StateAt(a, s, gi, i);
      Store(g + i, gi + tw * mw2);
      Store(W + i, (tw * f2 - gi * w02) * inv2);
    }
    auto update = [&](int j, double tw) {
      const double gj = g[j];
      if constexpr (kWithState) a[j] += gj * s;
      g[j] = gj + tw * mw;
      W[j] = (tw * f - gj * w0) * inv;
    };
    for (; i + 1 < r; ++i) update(i, W[i + 1]);
    update(r - 1, last);
    M_ = M_ * fn / f;
    f = fn;
    if (std::fabs(f - 1.0) < 1e-9) steady_ = true;
  }

  // The AR row's lags and coefficients in local arrays, for the passes below that keep them
  // in registers (at most R of them; the rest stay zero).
  template <int R>
  void LocalLags(int (&lag)[R], double (&coef)[R]) const {
    for (size_t m = 0; m < lag_.size(); ++m) {
      lag[m] = lag_[m];
      coef[m] = coef_[m];
    }
  }

  // The whole pass of a filter with a state of R values (the common small models), its
  // gain, state and AR row held in local arrays that the compiler keeps in registers: the
  // arithmetic of Step, operation for operation, without a load and a store of every value
  // at every step. S is a double for the series alone, a Pair for the series beside the
  // unit series (with a mean), as in ExactLikelihood. The final state goes to end[0..R-1].
  template <int R, typename S>
  bool Run(const double* w, int n, S* end, double* vw, double* vx, double* F, double& sxx, double& sxw) const {
    constexpr bool kPair = std::is_same_v<S, Pair>;
    double g[R], W[R], fc = f, M = M_;
    bool steady = steady_;
    #pragma GCC unroll 8
    for (int i = 0; i < R; ++i) {
      g[i] = G[i];
      W[i] = W_[i];
    }
    const int lags = static_cast<int>(lag_.size());
    int lag[R] = {};
    double coef[R] = {};
    LocalLags<R>(lag, coef);
    S a[R];
    #pragma GCC unroll 8
    for (int i = 0; i < R; ++i) a[i] = S{};
    // Step t's prediction error, kept with its variance, and its weight s = v / f; then
    // a <- T a (the share a += G s follows).
    auto innovate = [&](int t) {
      S s;
      double v1;
      if constexpr (kPair) {
        v1 = w[t] - a[0][0];
        const double v2 = 1.0 - a[0][1];
        vx[t] = v2;
        s = Pair{v1 / fc, v2 / fc};
        sxx += v2 * v2 / fc;
        sxw += v2 * v1 / fc;
      } else {
        v1 = w[t] - a[0];
        vx[t] = 0.0;
        s = v1 / fc;
      }
      vw[t] = v1;
      F[t] = fc;
      S last{};
      #pragma GCC unroll 8
      for (int m = 0; m < R; ++m)
        if (m < lags) last += coef[m] * a[R - lag[m]];
      #pragma GCC unroll 8
      for (int i = 0; i + 1 < R; ++i) a[i] = a[i + 1];
      a[R - 1] = last;
      return s;
    };
    int t = 0;
    for (; t < n && !steady; ++t) {
      if (!(fc > 0.0) || !std::isfinite(fc)) return false;
      const S s = innovate(t);
      // The state's share beside the gain's move to the next step.
      const double w0 = W[0];
      const double fn = fc + M * w0 * w0;
      const double mw = M * w0, inv = 1.0 / fn;
      double lastw = 0.0;
      #pragma GCC unroll 8
      for (int m = 0; m < R; ++m)
        if (m < lags) lastw += coef[m] * W[R - lag[m]];
      #pragma GCC unroll 8
      for (int i = 0; i < R; ++i) {
        const double tw = i + 1 < R ? W[i + 1] : lastw;
        const double gi = g[i];
        a[i] += gi * s;
        g[i] = gi + tw * mw;
        W[i] = (tw * fc - gi * w0) * inv;
      }
      M = M * fn / fc;
      fc = fn;
      if (std::fabs(fc - 1.0) < 1e-9) steady = true;
    }
    // Converged, the gain and the variance hold still: the variance passed its check once.
    if (t < n && (!(fc > 0.0) || !std::isfinite(fc))) return false;
    for (; t < n; ++t) {
      const S s = innovate(t);
      #pragma GCC unroll 8
      for (int i = 0; i < R; ++i) a[i] += g[i] * s;
    }
    #pragma GCC unroll 8
    for (int i = 0; i < R; ++i) end[i] = a[i];
    return true;
  }

  // The gains of n steps of a filter with a state of R values, step t's at Gs[t R ..], and
  // their variances into F: Step's arithmetic, in registers. False where a variance is not
  // positive and finite.
  template <int R>
  bool Gains(int n, double* F, double* Gs) const {
    double g[R], W[R], fc = f, M = M_;
    bool steady = steady_;
    #pragma GCC unroll 8
    for (int i = 0; i < R; ++i) {
      g[i] = G[i];
      W[i] = W_[i];
    }
    const int lags = static_cast<int>(lag_.size());
    for (int t = 0; t < n; ++t) {
      if (!(fc > 0.0) || !std::isfinite(fc)) return false;
      F[t] = fc;
      #pragma GCC unroll 8
      for (int i = 0; i < R; ++i) Gs[static_cast<size_t>(t) * R + i] = g[i];
      if (steady) continue;
      const double w0 = W[0];
      const double fn = fc + M * w0 * w0;
      const double mw = M * w0, inv = 1.0 / fn;
      double lastw = 0.0;
      for (int m = 0; m < lags; ++m) lastw += coef_[m] * W[R - lag_[m]];
      #pragma GCC unroll 8
      for (int i = 0; i < R; ++i) {
        const double tw = i + 1 < R ? W[i + 1] : lastw;
        const double gi = g[i];
        g[i] = gi + tw * mw;
        W[i] = (tw * fc - gi * w0) * inv;
      }
      M = M * fn / fc;
      fc = fn;
      if (std::fabs(fc - 1.0) < 1e-9) steady = true;
    }
    return true;
  }

  // Two series (x1 null: the first beside zeros) through the filter whose gains Gains gave,
  // their prediction errors into v, a pair per step.
  template <int R>
  void Errors(const double* x0, const double* x1, int n, const double* F, const double* Gs, Pair* v) const {
    const int lags = static_cast<int>(lag_.size());
    int lag[R] = {};
    double coef[R] = {};
    LocalLags<R>(lag, coef);
    Pair a[R];
    #pragma GCC unroll 8
    for (int i = 0; i < R; ++i) a[i] = Pair{0.0, 0.0};
    for (int t = 0; t < n; ++t) {
      const Pair x{x0[t], x1 ? x1[t] : 0.0};
      const Pair e = x - a[0];
      v[t] = e;
      Pair last{0.0, 0.0};
      #pragma GCC unroll 8
      for (int m = 0; m < R; ++m)
        if (m < lags) last += coef[m] * a[R - lag[m]];
      #pragma GCC unroll 8
      for (int i = 0; i + 1 < R; ++i) a[i] = a[i + 1];
      a[R - 1] = last;
      const Pair se = e / F[t];
      const double* gt = Gs + static_cast<size_t>(t) * R;
      #pragma GCC unroll 8
      for (int i = 0; i < R; ++i) a[i] += gt[i] * se;
    }
  }

  int size() const { return r_; }
  const std::vector<int>& lags() const { return lag_; }
  const std::vector<double>& coefficients() const { return coef_; }

  double f = 0.0;         // the present step's prediction variance
  std::vector<double> G;  // and its gain

 private:
  // a[i] += G[i] s and a[i + 1] += G[i + 1] s, for G[i], G[i + 1] in gi: a single state's
  // two elements as one pair, or a pair of states (a series and the unit series) each.
  static void StateAt(double* a, double s, Pair gi, int i) { Store(a + i, Load(a + i) + gi * Pair{s, s}); }
  static void StateAt(Pair* a, Pair s, Pair gi, int i) {
    a[i] += gi[0] * s;
    a[i + 1] += gi[1] * s;
  }
  template <typename S>
  void StateOnly(S* a, S s, int r) const {
    const double* g = G.data();
    int i = 0;
    for (; i + 1 < r; i += 2) StateAt(a, s, Load(g + i), i);
    for (; i < r; ++i) a[i] += g[i] * s;
  }

  int r_ = 0;
  std::vector<int> lag_;
  std::vector<double> coef_, W_, gamma_;
  double M_ = 0.0;
  bool steady_ = false;
};

// The sum of the logarithms of the prediction variances, taken as the logarithms of their
// products over runs of values: a logarithm per run instead of one per observation. The
// variances lie between the innovation variance (1) and the series' variance, so a run's
// product stays far from overflow when cut off at 1e150.
double SumOfLogs(const std::vector<double>& F) {
  double sum = 0.0, product = 1.0;
  for (double f : F) {
    if (product > 1e150 || product < 1e-150) {
      sum += std::log(product);
      product = 1.0;
    }
    product *= f;
  }
  return sum + std::log(product);
}

}  // namespace

namespace {

// The filter's pass over the series, its prediction errors into vw (and the unit series'
// into vx, with a mean), their variances into F; the states slide along `both` (with a mean)
// or `aw`, n + r values. R is the state's size when fixed at compile time, 0 when not.
template <int R>
bool FilterPass(ChandrasekharFilter& kf, const std::vector<double>& w, bool with_mean, Pair* both, double* aw,
                double* vw, double* vx, double* F, double& sxx, double& sxw) {
  const int n = static_cast<int>(w.size());
  const int r = R > 0 ? R : kf.size();
  if (with_mean) {
    const int* lag = kf.lags().data();
    const double* coef = kf.coefficients().data();
    const int lags = static_cast<int>(kf.lags().size());
    for (int t = 0; t < n; ++t) {
      const double f = kf.f;
      if (!(f > 0.0) || !std::isfinite(f)) return false;
      Pair* a = both + t;
      const double v1 = w[t] - a[0][0];
      const double v2 = 1.0 - a[0][1];
      vw[t] = v1;
      vx[t] = v2;
      F[t] = f;
      // a <- T (a + P e1 v / f) = T a + G v / f, for both at once.
      Pair last{0.0, 0.0};
      for (int m = 0; m < lags; ++m) last += coef[m] * a[r - lag[m]];
      a[r] = last;
      ++a;
      const Pair s{v1 / f, v2 / f};
      sxx += v2 * v2 / f;
      sxw += v2 * v1 / f;
      kf.Step<true, Pair, R>(a, s);
    }
  } else {
    for (int t = 0; t < n; ++t) {
      const double f = kf.f;
      if (!(f > 0.0) || !std::isfinite(f)) return false;
      double* a1 = aw + t;
      const double v1 = w[t] - a1[0];
      vw[t] = v1;
      F[t] = f;
      a1[r] = kf.Last<R>(a1);
      ++a1;
      const double s1 = v1 / f;
      // Without a mean the unit series' filter is not needed: its errors stay unused.
      vx[t] = 0.0;
      kf.Step<true, double, R>(a1, s1);
    }
  }

  return true;
}

// The exact likelihood into `out`, its scaled residuals into `scaled` (n values) when given,
// else into out.scaled. The estimator asks for the residuals alone at every trial point:
// written straight into its own array, they need no vector of their own each time.
bool ExactLikelihood(const std::vector<double>& w, const std::vector<double>& phi, const std::vector<double>& theta,
                     bool with_mean, bool keep_series, ArmaLikelihood& out, double* scaled) {
  const int n = static_cast<int>(w.size());
  if (n < 1) return false;
  thread_local ChandrasekharFilter kf;
  if (!kf.Start(phi, theta)) return false;
  const int r = kf.size();
  double sxx = 0.0, sxw = 0.0;  // the unit series' weighted products, summed as the filter runs
  // The states at step t are aw[t..t+r-1] and ax[t..t+r-1]: windows sliding along. The
  // arrays are per-thread workspace: this runs at every step of every estimation.
  thread_local std::vector<double> aw, vw, vx, F;
  // With a mean, the series' and the unit series' states side by side in one array of
  // pairs: the two filters share every gain and AR coefficient, and each pair is updated
  // with one vector operation, each of its halves by exactly the arithmetic of the
  // filter alone.
  thread_local std::vector<Pair> both;
  vw.resize(n);
  vx.resize(n);
  F.resize(n);
  // The common small states get a pass of their own size, held in registers; only their
  // final values are kept, at the end of the arrays the larger states slide along.
  if (with_mean) both.resize(n + r);
  else aw.resize(n + r);
  auto small = [&](auto size) {
    constexpr int R = decltype(size)::value;
    return with_mean ? kf.Run<R>(w.data(), n, both.data() + n, vw.data(), vx.data(), F.data(), sxx, sxw)
                     : kf.Run<R>(w.data(), n, aw.data() + n, vw.data(), vx.data(), F.data(), sxx, sxw);
  };
  bool ran = false;
  switch (small_paths ? r : 0) {
    case 1: ran = small(std::integral_constant<int, 1>{}); break;
    case 2: ran = small(std::integral_constant<int, 2>{}); break;
    case 3: ran = small(std::integral_constant<int, 3>{}); break;
    case 4: ran = small(std::integral_constant<int, 4>{}); break;
    case 5: ran = small(std::integral_constant<int, 5>{}); break;
    case 6: ran = small(std::integral_constant<int, 6>{}); break;
    default:
      if (with_mean) both.assign(n + r, Pair{0.0, 0.0});
      else aw.assign(n + r, 0.0);
      ran = FilterPass<0>(kf, w, with_mean, both.data(), aw.data(), vw.data(), vx.data(), F.data(), sxx, sxw);
  }
  if (!ran) return false;

  const double sumlogf = SumOfLogs(F);
  double beta = 0.0;
  if (with_mean) {
    if (!(sxx > 0.0)) return false;
    beta = sxw / sxx;
  }
  // The scaled residuals are made in the same pass as their sum of squares (and are of no
  // account when the fit turns out to have no likelihood).
  const double g = std::exp(sumlogf / (2.0 * n));
  if (!scaled) {
    out.scaled.resize(n);
    scaled = out.scaled.data();
  }
  double ssq = 0.0, size = 0.0;
  // Two observations at a time, each by its own arithmetic; the sums still run in order.
  int t = 0;
  const Pair beta2{beta, beta}, g2{g, g};
  for (; t + 1 < n; t += 2) {
    const Pair v = Load(vw.data() + t), f = Load(F.data() + t);
    const Pair e = v - beta2 * Load(vx.data() + t);
    const Pair q = e * e / f, z = v * v / f;
    ssq += q[0];
    ssq += q[1];
    size += z[0];
    size += z[1];
    Store(scaled + t, e / Pair(_mm_sqrt_pd(__m128d(f))) * g2);
  }
  for (; t < n; ++t) {
    const double e = vw[t] - beta * vx[t];
    ssq += e * e / F[t];
    size += vw[t] * vw[t] / F[t];
    scaled[t] = e / std::sqrt(F[t]) * g;
  }
  // An exact fit (a constant series about its mean) has no likelihood.
  if (!std::isfinite(ssq) || !(ssq > 1e-24 * size)) return false;
  out.n = n;
  out.mean = beta;
  out.sigma2 = ssq / n;
  if (!(out.sigma2 > 0.0)) out.sigma2 = 0.0;
  const double kLog2Pi = std::log(2.0 * M_PI);
  if (out.sigma2 > 0.0)
    out.loglik = -0.5 * n * (kLog2Pi + 1.0 + std::log(out.sigma2)) - 0.5 * sumlogf;
  else
    out.loglik = std::numeric_limits<double>::infinity();
  out.mean_variance = with_mean ? out.sigma2 / sxx : 0.0;
  out.scaled_ssq = ssq * g * g;
  if (keep_series) {
    out.innovations.resize(n);
    for (int t = 0; t < n; ++t) out.innovations[t] = vw[t] - beta * vx[t];
    out.state.resize(r);
    for (int i = 0; i < r; ++i) out.state[i] = with_mean ? both[n + i][0] - beta * both[n + i][1] : aw[n + i];
  }
  out.ok = true;
  return true;
}

}  // namespace

ArmaLikelihood ArmaExactLikelihood(const std::vector<double>& w, const std::vector<double>& phi,
                                   const std::vector<double>& theta, bool with_mean, bool keep_series) {
  ArmaLikelihood out;
  if (!ExactLikelihood(w, phi, theta, with_mean, keep_series, out, nullptr)) return ArmaLikelihood{};
  return out;
}

bool ArmaScaledResiduals(const std::vector<double>& w, const std::vector<double>& phi,
                         const std::vector<double>& theta, bool with_mean, double* scaled,
                         ArmaLikelihood* figures) {
  ArmaLikelihood out;
  if (ExactLikelihood(w, phi, theta, with_mean, false, out, scaled)) {
    if (figures) *figures = std::move(out);
    return true;
  }
  if (figures) *figures = ArmaLikelihood{};
  return false;
}

std::vector<std::vector<double>> ArmaWhitenAll(const std::vector<const std::vector<double>*>& series,
                                               const std::vector<double>& phi, const std::vector<double>& theta) {
  const int k = static_cast<int>(series.size());
  std::vector<std::vector<double>> out(k);
  if (k == 0) return out;
  const int n = static_cast<int>(series[0]->size());
  for (const auto* x : series)
    if (static_cast<int>(x->size()) != n) return out;
  if (n < 1) return out;
  // The filter of ArmaExactLikelihood, step for step, with one state per series.
  thread_local ChandrasekharFilter kf;
  if (!kf.Start(phi, theta)) return out;
  const int r = kf.size();
  const double* G = kf.G.data();
  // The series go through in pairs, each pair's states side by side as in
  // ArmaExactLikelihood with a mean (a last odd series beside zeros). Pair p's state at step
  // t is a[p (n + r) + t ..][0..r-1], a window sliding along; its errors are v[p n + t]. The
  // arrays are per-thread workspace: detection whitens at every regression it solves.
  const int pairs = (k + 1) / 2;
  thread_local std::vector<Pair> a, v;
  thread_local std::vector<double> F, Gs;
  v.resize(static_cast<size_t>(pairs) * n);
  F.resize(n);
  // Small states: the gains of every step first, then each pair alone with its state in
  // registers; each pair's arithmetic is the same step for step.
  auto small = [&](auto size) {
    constexpr int R = decltype(size)::value;
    Gs.resize(static_cast<size_t>(n) * R);
    if (!kf.Gains<R>(n, F.data(), Gs.data())) return false;
    for (int p = 0; p < pairs; ++p)
      kf.Errors<R>(series[2 * p]->data(), 2 * p + 1 < k ? series[2 * p + 1]->data() : nullptr, n, F.data(),
                   Gs.data(), v.data() + static_cast<size_t>(p) * n);
    return true;
  };
  const bool general = r > 6 || !small_paths;
  bool ran = true;
  switch (general ? 0 : r) {
    case 1: ran = small(std::integral_constant<int, 1>{}); break;
    case 2: ran = small(std::integral_constant<int, 2>{}); break;
    case 3: ran = small(std::integral_constant<int, 3>{}); break;
    case 4: ran = small(std::integral_constant<int, 4>{}); break;
    case 5: ran = small(std::integral_constant<int, 5>{}); break;
    case 6: ran = small(std::integral_constant<int, 6>{}); break;
    default: ran = false;
  }
  if (!ran && !general) return std::vector<std::vector<double>>(k);
  if (general) a.assign(static_cast<size_t>(pairs) * (n + r), Pair{0.0, 0.0});
  const std::vector<int>& lag = kf.lags();
  const std::vector<double>& coef = kf.coefficients();
  const int lags = static_cast<int>(lag.size());
  for (int t = 0; t < n && general; ++t) {
    const double f = kf.f;
    if (!(f > 0.0) || !std::isfinite(f)) return std::vector<std::vector<double>>(k);
    F[t] = f;
    for (int p = 0; p < pairs; ++p) {
      Pair* ap = a.data() + static_cast<size_t>(p) * (n + r) + t;
      const Pair x{(*series[2 * p])[t], 2 * p + 1 < k ? (*series[2 * p + 1])[t] : 0.0};
      const Pair e = x - ap[0];
      v[static_cast<size_t>(p) * n + t] = e;
      Pair last{0.0, 0.0};
      for (int m = 0; m < lags; ++m) last += coef[m] * ap[r - lag[m]];
      ap[r] = last;
      ++ap;
      const Pair se = e / f;
      for (int i = 0; i < r; ++i) ap[i] += G[i] * se;
    }
    kf.NextGain();
  }
  auto error = [&](int j, int t) { return v[static_cast<size_t>(j / 2) * n + t][j % 2]; };
  const double sumlogf = SumOfLogs(F);
  const double g = std::exp(sumlogf / (2.0 * n));
  for (int j = 0; j < k; ++j) {
    double ssq = 0.0;
    for (int t = 0; t < n; ++t) ssq += error(j, t) * error(j, t) / F[t];
    if (!std::isfinite(ssq) || !(ssq > 1e-24 * ssq)) continue;
    out[j].resize(n);
    for (int t = 0; t < n; ++t) out[j][t] = error(j, t) / std::sqrt(F[t]) * g;
  }
  return out;
}

namespace {

// The conditional residuals' recursion for the orders P and Q known at compile time, the
// sums laid out in full and in the same order; the first Q steps, which reach back before
// the first residual, apart from the rest.
template <int P, int Q>
void CssFixed(const double* w, int n, double mean, const double* phi, const double* theta, double* out) {
  double ph[P > 0 ? P : 1], th[Q > 0 ? Q : 1];
  for (int k = 0; k < P; ++k) ph[k] = phi[k];
  for (int k = 0; k < Q; ++k) th[k] = theta[k];
  int t = P;
  for (; t < n && t < P + Q; ++t) {
    double v = w[t] - mean;
#pragma GCC unroll 8
    for (int k = 1; k <= P; ++k) v -= ph[k - 1] * (w[t - k] - mean);
    for (int k = 1; k <= Q && t - k >= P; ++k) v -= th[k - 1] * out[t - k - P];
    out[t - P] = v;
  }
  for (; t < n; ++t) {
    double v = w[t] - mean;
#pragma GCC unroll 8
    for (int k = 1; k <= P; ++k) v -= ph[k - 1] * (w[t - k] - mean);
#pragma GCC unroll 8
    for (int k = 1; k <= Q; ++k) v -= th[k - 1] * out[t - k - P];
    out[t - P] = v;
  }
}

using CssKernel = void (*)(const double*, int, double, const double*, const double*, double*);
constexpr int kCssOrders = 6;  // the non-seasonal orders 0..5 of the stepwise search

template <int... I>
constexpr std::array<CssKernel, sizeof...(I)> CssKernels(std::integer_sequence<int, I...>) {
  return {&CssFixed<I / kCssOrders, I % kCssOrders>...};
}

}  // namespace

bool CssResidualsInto(const std::vector<double>& w, double mean, const std::vector<double>& phi,
                      const std::vector<double>& theta, double* out) {
  const int n = static_cast<int>(w.size());
  const int p = static_cast<int>(phi.size());
  const int q = static_cast<int>(theta.size());
  if (n <= p) return false;
  static constexpr auto kKernels = CssKernels(std::make_integer_sequence<int, kCssOrders * kCssOrders>{});
  if (p < kCssOrders && q < kCssOrders && small_paths) {
    kKernels[p * kCssOrders + q](w.data(), n, mean, phi.data(), theta.data(), out);
    return true;
  }
  // out[i] is the residual at time p + i; those before p are zero and drop out of the sums.
  for (int t = p; t < n; ++t) {
    double v = w[t] - mean;
    for (int k = 1; k <= p; ++k) v -= phi[k - 1] * (w[t - k] - mean);
    for (int k = 1; k <= q && t - k >= p; ++k) v -= theta[k - 1] * out[t - k - p];
    out[t - p] = v;
  }
  return true;
}

std::vector<double> CssResiduals(const std::vector<double>& w, double mean, const std::vector<double>& phi,
                                 const std::vector<double>& theta) {
  const int n = static_cast<int>(w.size());
  const int p = static_cast<int>(phi.size());
  if (n <= p) return {};
  std::vector<double> e(n - p);
  CssResidualsInto(w, mean, phi, theta, e.data());
  return e;
}

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

}  // namespace quorvane
