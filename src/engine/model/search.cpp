#include "engine/model/search.h"

#include "engine/model/series_stats.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <tuple>

namespace quorvane {

// Every root of 1 - sum a_k z^k at modulus 1.01 or more is every root of 1 - sum a_k
// (1.01 w)^k outside the unit circle: the step-down test of that polynomial, in the square of
// its order, in place of the eigenvalues of a companion matrix of two seasonal cycles.
bool RootsClearOfUnitCircle(const ArimaFit& fit) {
  std::vector<double> phi, theta;
  ExpandArma(fit.coef, phi, theta);
  auto clear = [](std::vector<double> a, double sign) {
    double scale = 1.0;
    for (double& v : a) {
      scale *= 1.01;
      v *= sign * scale;
    }
    return IsStationary(a);
  };
  return clear(phi, 1.0) && clear(theta, -1.0);
}

ArimaFit StepwiseWalk(int d, int D, int period, const SearchOptions& limits, const CandidateFit& fit,
                      const CandidateSeen& seen) {
  const bool seasonal = period > 1;
  const bool constant_ok = limits.allow_constant && d + D <= 1;
  using Key = std::tuple<int, int, int, int, bool>;
  std::map<Key, bool> tried;
  ArimaFit best;
  double best_ic = std::numeric_limits<double>::infinity();
  int models = 0;

  ConvergenceCriteria quick = limits.criteria;
  quick.polish = false;
  auto consider = [&](int p, int q, int P, int Q, bool c) -> bool {
    if (p < 0 || q < 0 || P < 0 || Q < 0) return false;
    if (p > limits.max_p || q > limits.max_q || P > limits.max_P || Q > limits.max_Q) return false;
    if (p + q + P + Q > limits.max_order) return false;
    if (!seasonal && (P || Q)) return false;
    if (c && !constant_ok) return false;
    const Key key{p, q, P, Q, c};
    if (tried.count(key)) return false;
    if (models >= limits.max_models) return false;
    ++models;
    tried[key] = true;
    ArimaOrders s;
    s.p = p; s.d = d; s.q = q; s.P = P; s.D = D; s.Q = Q;
    s.period = seasonal ? period : 1;
    s.constant = c;
    // Neighbours start from the best model's estimates: most of their terms are the same.
    ArimaFit f = fit(s, quick, best.ok ? &best.coef : nullptr);
    const bool usable = f.ok && std::isfinite(f.aicc) && RootsClearOfUnitCircle(f);
    if (seen) seen(s, f, usable);
    if (usable && f.aicc < best_ic - 1e-9) {
      best_ic = f.aicc;
      best = std::move(f);
      return true;
    }
    return false;
  };

  if (seasonal) {
    consider(2, 2, 1, 1, constant_ok);
    consider(0, 0, 0, 0, constant_ok);
    consider(1, 0, 1, 0, constant_ok);
    consider(0, 1, 0, 1, constant_ok);
    if (constant_ok) consider(0, 0, 0, 0, false);
  } else {
    consider(2, 2, 0, 0, constant_ok);
    consider(0, 0, 0, 0, constant_ok);
    consider(1, 0, 0, 0, constant_ok);
    consider(0, 1, 0, 0, constant_ok);
    if (constant_ok) consider(0, 0, 0, 0, false);
  }
  if (!best.ok) return best;

  bool moved = true;
  while (moved && models < limits.max_models) {
    moved = false;
    const int p = best.orders.p, q = best.orders.q, P = best.orders.P, Q = best.orders.Q;
    const bool c = best.orders.constant;
    const int moves[][4] = {{0, 0, -1, 0}, {0, 0, 1, 0}, {0, 0, 0, -1}, {0, 0, 0, 1},  {0, 0, -1, -1},
                            {0, 0, 1, 1},  {-1, 0, 0, 0}, {1, 0, 0, 0}, {0, -1, 0, 0}, {0, 1, 0, 0},
                            {-1, -1, 0, 0}, {1, 1, 0, 0}, {-1, 1, 0, 0}, {1, -1, 0, 0}};
    for (const auto& m : moves) {
      if (consider(p + m[0], q + m[1], P + m[2], Q + m[3], c)) {
        moved = true;
        break;
      }
    }
    if (!moved && constant_ok && consider(p, q, P, Q, !c)) moved = true;
  }
  return best;
}

namespace {

// On a short nonseasonal series the stepwise walk can stop at a poor local choice (a
// cycle of a few years read as a random walk's drift), and every order within the limits
// costs little there: all are fitted, and one with a lower AICc than the walk's choice
// replaces it.
constexpr int kWideSearchLength = 120;
void WideSearch(const std::vector<double>& z, int d, int D, int period, const SearchOptions& o,
                ArimaFit& best, std::vector<SearchStep>* trail) {
  if (period > 1 || D > 0 || static_cast<int>(z.size()) > kWideSearchLength) return;
  ConvergenceCriteria quick = o.criteria;
  quick.polish = false;
  for (int p = 0; p <= o.max_p; ++p)
    for (int q = 0; q <= o.max_q && p + q <= o.max_order; ++q)
      for (int c = 0; c < 2; ++c) {
        ArimaOrders s;
        s.d = d; s.p = p; s.q = q;
        s.constant = c == 1;
        if (s.constant && !(o.allow_constant && d <= 1)) continue;
        ArimaFit f = FitArima(z, s, quick, false);
        const bool usable = f.ok && std::isfinite(f.aicc) && RootsClearOfUnitCircle(f);
        if (usable && (!best.ok || f.aicc < best.aicc - 1e-9)) {
          if (trail) trail->push_back({s.Name(), f.aicc, usable});
          best = std::move(f);
        }
      }
}

}  // namespace

ArimaFit StepwiseSearch(const std::vector<double>& z, int d, int D, int period, const SearchOptions& o,
                        std::vector<SearchStep>* trail) {
  // Seasonal orders need the cycles to estimate them: at least three per order after
  // differencing, or a second seasonal lag is fitted to a handful of values.
  SearchOptions limits = o;
  if (period > 1) {
    const int usable = static_cast<int>(z.size()) - d - D * period;
    const int cap = std::max(0, usable / (3 * period));
    limits.max_P = std::min(o.max_P, cap);
    limits.max_Q = std::min(o.max_Q, cap);
  }
  ArimaFit best = StepwiseWalk(
      d, D, period, limits,
      [&](const ArimaOrders& s, const ConvergenceCriteria& quick, const ArmaCoefficients* start) {
        return FitArima(z, s, quick, false, start);
      },
      [&](const ArimaOrders& s, const ArimaFit& f, bool usable) {
        if (trail) trail->push_back({s.Name(), f.ok ? f.aicc : std::numeric_limits<double>::quiet_NaN(), usable});
      });
  WideSearch(z, d, D, period, o, best, trail);
  return best;
}

}  // namespace quorvane
