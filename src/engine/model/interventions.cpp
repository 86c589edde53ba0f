// Intervention detection, the search: effects taken one at a time where their t-values pass
// the critical value, their places settled together, the weakest dropped, and the noise
// model re-identified with the effects known.
#include "engine/model/interventions.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>
#include <numeric>
#include <unordered_map>

#include <Eigen/Dense>
#include <boost/math/distributions/normal.hpp>

#include "engine/model/arma.h"
#include "engine/model/fewer_differences.h"
#include "engine/model/forecast.h"
#include "engine/model/intervention_evidence.h"
#include "engine/model/regression_noise.h"
#include "engine/model/series_stats.h"
#include "engine/model/unit_root.h"

#include "engine/model/intervention_parts.h"

namespace quorvane {

using namespace intervention_parts;

namespace {

std::string Place(int type, int index) {
  return InterventionTypeName(type) + " at observation " + std::to_string(index + 1);
}

std::string Label(int type, int index, double t) {
  char buf[32];
  std::snprintf(buf, sizeof buf, " (t %.2f)", t);
  return Place(type, index) + buf;
}

// Places are settled together: an effect taken first can sit a little off its true place
// while a later one makes up the difference (a trend begun early, then a step down). Each
// effect may move by up to three observations, or change its type there, when that lowers
// the residual sum of squares with the others and the ARMA coefficients held. True when
// something moved.
// Conditional whitening, phi(B) then 1/theta(B) with zeros before the start: the exact
// filter's start-up matters little when only places are compared, and this is cheap enough
// to try every place.
bool Whiten(const std::vector<double>& w, const std::vector<double>& phi, const std::vector<double>& theta,
            Eigen::VectorXd& out, bool conditional) {
  if (!conditional) return intervention_parts::Whiten(w, phi, theta, out);
  const int m = static_cast<int>(w.size());
  out.resize(m);
  // Only the nonzero lags: a seasonal model's polynomials are mostly zeros.
  std::vector<std::pair<int, double>> ar, ma;
  for (size_t k = 1; k <= phi.size(); ++k)
    if (phi[k - 1] != 0.0) ar.emplace_back(static_cast<int>(k), phi[k - 1]);
  for (size_t k = 1; k <= theta.size(); ++k)
    if (theta[k - 1] != 0.0) ma.emplace_back(static_cast<int>(k), theta[k - 1]);
  for (int t = 0; t < m; ++t) {
    double v = w[t];
    for (const auto& [k, c] : ar)
      if (k <= t) v -= c * w[t - k];
    for (const auto& [k, c] : ma)
      if (k <= t) v -= c * out(t - k);
    out(t) = v;
  }
  return out.allFinite();
}

// Kept whole: the trial swaps share the whitened columns and the cross-products made once at
// the top; split, each part would have to carry them all.
bool SettlePlaces(const std::vector<double>& z, const ArimaOrders& orders, const ArmaCoefficients& coef,
                  const DetectionOptions& opt, std::vector<DetectedIntervention>& found,
                  std::vector<std::vector<double>>& X, std::vector<std::string>& trail) {
  const int n = static_cast<int>(z.size());
  std::vector<double> phi, theta;
  ExpandArma(coef, phi, theta);
  Eigen::VectorXd ws;
  if (!Whiten(DifferenceSeries(z, orders), phi, theta, ws, true)) return false;
  const int m = static_cast<int>(ws.size());
  const int k = static_cast<int>(X.size());
  const int cols = k + (orders.constant ? 1 : 0);
  if (k == 0 || m <= cols + 1) return false;
  // The coefficients stay fixed here, so each place's whitened column is made once. The
  // filter starts from zeros and every place lies where the differencing has begun, so a
  // place's column is the column of the first place shifted: one filter pass per type.
  const int burn = BurnIn(orders);
  std::unordered_map<int, Eigen::VectorXd> first_column;
  auto whitened = [&](int type, int T, Eigen::VectorXd& c) {
    if (!Whiten(DifferenceSeries(InterventionRegressor(type, T, opt.period, n), orders), phi, theta, c, true))
      c.resize(0);
  };
  // The columns in one table by place, type * (n + 1) + T, each made on first use: the
  // products and parts of the trials below are then found by a column's place in the table.
  // The trials run in the tens of thousands per detection, and maps of their own, a node and
  // a vector per entry, cost more than the arithmetic.
  const int places = (kLocalTrend + 1) * (n + 1);
  std::vector<Eigen::VectorXd> cache(places);
  std::vector<char> made(places, 0);
  auto column = [&](int type, int T) -> const Eigen::VectorXd* {
    const int key = type * (n + 1) + T;
    Eigen::VectorXd& c = cache[key];
    if (!made[key]) {
      made[key] = 1;
      const int shift = T - burn;
      if (shift < 0 || shift >= m) {
        whitened(type, T, c);
      } else {
        auto b = first_column.find(type);
        if (b == first_column.end()) {
          Eigen::VectorXd f;
          whitened(type, burn, f);
          b = first_column.emplace(type, std::move(f)).first;
        }
        if (b->second.size() == m) {
          c = Eigen::VectorXd::Zero(m);
          c.tail(m - shift) = b->second.head(m - shift);
        }
      }
    }
    return c.size() == m ? &c : nullptr;
  };
  auto place_of = [&](const Eigen::VectorXd& c) { return static_cast<size_t>(&c - cache.data()); };
  Eigen::MatrixXd A(m, cols);
  for (int j = 0; j < k; ++j) {
    const Eigen::VectorXd* c = column(found[j].type, found[j].index);
    if (!c) return false;
    A.col(j) = *c;
  }
  if (orders.constant) {
    Eigen::VectorXd c;
    if (!Whiten(std::vector<double>(m, 1.0), phi, theta, c, true)) return false;
    A.col(k) = c;
  }
  // Trials swap one or two columns: the cross-products change in those rows alone, so each
  // costs a pass over the series per column swapped, not a new product of the whole matrix.
  Eigen::MatrixXd G = A.transpose() * A;
  Eigen::VectorXd Aw = A.transpose() * ws;
  const double ww = ws.squaredNorm();
  auto ssr = [&](const Eigen::MatrixXd& Gm, const Eigen::VectorXd& bw) {
    Eigen::LDLT<Eigen::MatrixXd> ldlt(Gm);
    if (ldlt.info() != Eigen::Success || !(ldlt.vectorD().minCoeff() > 1e-10 * Gm.diagonal().maxCoeff()))
      return std::numeric_limits<double>::infinity();
    const Eigen::VectorXd b = ldlt.solve(bw);
    return std::max(ww - b.dot(bw), 0.0);
  };
  // A column's products with the design as it stands and with the series, made once for
  // each design: the trials of a round try the same columns many times over.
  struct Products {
    int design = -1;
    Eigen::VectorXd cross;
    double own = 0.0, with_series = 0.0;
  };
  int design = 0;
  std::vector<int> committed;  // the column replaced by each change of design
  std::vector<Products> products(places);
  auto products_of = [&](const Eigen::VectorXd& c) -> const Products& {
    Products& p = products[place_of(c)];
    if (p.design < 0) {
      p.own = c.squaredNorm();
      p.with_series = c.dot(ws);
    }
    if (p.design >= 0 && p.design != design && design - p.design < cols) {
      // Only the columns committed since then have moved.
      for (int d = p.design; d < design; ++d) p.cross(committed[d]) = A.col(committed[d]).dot(c);
      p.design = design;
    } else if (p.design != design) {
      p.cross.noalias() = A.transpose() * c;
      p.design = design;
    }
    return p;
  };
  // Column j of the design taken to be c, A's other columns as they stand.
  auto swap_in = [&](Eigen::MatrixXd& Gm, Eigen::VectorXd& bw, int j, const Eigen::VectorXd& c) {
    const Products& p = products_of(c);
    Gm.col(j) = p.cross;
    Gm(j, j) = p.own;
    Gm.row(j) = Gm.col(j).transpose();
    bw(j) = p.with_series;
  };
  auto commit = [&](int j, const Eigen::VectorXd& c) {
    A.col(j) = c;
    committed.push_back(j);
    ++design;
    swap_in(G, Aw, j, c);
  };
  // A trial replaces one or two columns: the regression on the columns kept is solved once
  // for all the trials of those columns, and each trial's sum of squares is what the new
  // columns take off it (their Schur complement), the products of two or three small
  // vectors instead of a factorisation of the whole design.
  // Each column's part of a trial against the kept columns depends on that column alone:
  // y = Gk^-1 x (x its products with the kept columns), its own sum of squares and its
  // product with the series, both less what the kept columns explain. Made once per column
  // for each set kept, a trial is then a few short products.
  struct Part {
    Eigen::VectorXd x, y;
    double own = 0.0, with_series = 0.0;
    const Products* products = nullptr;
  };
  struct Kept {
    std::vector<int> index;
    Eigen::LDLT<Eigen::MatrixXd> ldlt;
    Eigen::VectorXd u;  // the kept columns' coefficients on the series
    double base = 0.0;  // their residual sum of squares
    double top = 0.0;   // their largest own product, the scale of the singularity test
    bool ok = false;
    int number = 0;     // which set kept: the parts made for it carry the same number
  };
  // One set is kept at a time, so the parts share one table by place, each entry marked
  // with the set it was made for; an entry's vectors keep their storage from set to set.
  std::vector<Part> parts(places);
  std::vector<int> part_for(places, 0);
  int sets = 0;
  auto keep_all_but = [&](int a, int b) {
    Kept kept;
    kept.number = ++sets;
    for (int i = 0; i < cols; ++i)
      if (i != a && i != b) kept.index.push_back(i);
    const int r = static_cast<int>(kept.index.size());
    Eigen::MatrixXd Gk(r, r);
    Eigen::VectorXd bk(r);
    for (int x = 0; x < r; ++x) {
      bk(x) = Aw(kept.index[x]);
      for (int y = 0; y < r; ++y) Gk(x, y) = G(kept.index[x], kept.index[y]);
    }
    kept.base = ww;
    kept.ok = true;
    if (r > 0) {
      kept.top = Gk.diagonal().maxCoeff();
      kept.ldlt.compute(Gk);
      kept.ok = kept.ldlt.info() == Eigen::Success && kept.ldlt.vectorD().minCoeff() > 1e-10 * kept.top;
      if (kept.ok) {
        kept.u = kept.ldlt.solve(bk);
        kept.base = ww - bk.dot(kept.u);
      }
    }
    return kept;
  };
  auto part_of = [&](Kept& kept, const Eigen::VectorXd& c) -> const Part& {
    const size_t at = place_of(c);
    Part& part = parts[at];
    if (part_for[at] == kept.number) return part;
    part_for[at] = kept.number;
    part.products = &products_of(c);
    part.own = part.products->own;
    part.with_series = part.products->with_series;
    const int r = static_cast<int>(kept.index.size());
    if (r > 0) {
      part.x.resize(r);
      for (int i = 0; i < r; ++i) part.x(i) = part.products->cross(kept.index[i]);
      part.y = kept.ldlt.solve(part.x);
      part.own -= part.x.dot(part.y);
      part.with_series -= part.x.dot(kept.u);
    }
    return part;
  };
  // The sum of squares with the kept columns and c1 (and c2); infinite when the columns are
  // (nearly) collinear.
  auto trial = [&](Kept& kept, const Eigen::VectorXd& c1, const Eigen::VectorXd* c2 = nullptr) {
    const double inf = std::numeric_limits<double>::infinity();
    if (!kept.ok) return inf;
    const Part& a = part_of(kept, c1);
    double top = std::max(kept.top, a.products->own);
    if (!c2) {
      if (!(a.own > 1e-10 * top)) return inf;
      return std::max(kept.base - a.with_series * a.with_series / a.own, 0.0);
    }
    const Part& b = part_of(kept, *c2);
    top = std::max(top, b.products->own);
    const double tol = 1e-10 * top;
    if (!(a.own > tol)) return inf;
    double s01 = c1.dot(*c2);
    if (!kept.index.empty()) s01 -= a.x.dot(b.y);
    const double s11 = b.own - s01 * s01 / a.own;
    if (!(s11 > tol)) return inf;
    const double g1 = b.with_series - s01 / a.own * a.with_series;
    return std::max(kept.base - a.with_series * a.with_series / a.own - g1 * g1 / s11, 0.0);
  };
  double now = ssr(G, Aw);
  if (!std::isfinite(now)) return false;
  bool any = false;
  bool moved = true;
  for (int round = 0; round < 10 && moved; ++round) {
    moved = false;
    for (int j = 0; j < k; ++j) {
      DetectedIntervention best = found[j];
      const Eigen::VectorXd* best_col = nullptr;
      double best_ssr = now;
      Kept kept = keep_all_but(j, -1);
      for (int type : EnabledTypes(opt)) {
        const auto [lo, hi] = CandidateRange(type, n, orders, opt);
        for (int T = std::max(lo, found[j].index - 3); T <= std::min(hi, found[j].index + 3); ++T) {
          if (type == found[j].type && T == found[j].index) continue;
          bool clash = false;
          for (int i = 0; i < k; ++i) clash = clash || (i != j && found[i].type == type && found[i].index == T);
          if (clash) continue;
          const Eigen::VectorXd* c = column(type, T);
          if (!c) continue;
          const double v = trial(kept, *c);
          if (v < best_ssr * (1.0 - 1e-9)) {
            best_ssr = v;
            best.type = type;
            best.index = T;
            best_col = c;
          }
        }
      }
      if (best_col) {
        trail.push_back("moved " + Place(found[j].type, found[j].index) + " to " + Place(best.type, best.index));
        found[j] = best;
        commit(j, *best_col);
        X[j] = InterventionRegressor(best.type, best.index, opt.period, n);
        now = best_ssr;
        moved = any = true;
      }
    }
    // Some places are reached only by moving two effects at once: a ramp begun two
    // observations early and ended one late fits worse than the true one, but better than
    // either end moved alone. Pairs move within two observations each, keeping their types.
    for (int i = 0; i < k; ++i) {
      for (int j = i + 1; j < k; ++j) {
        if (std::abs(found[i].index - found[j].index) > 60) continue;
        const auto [loi, hii] = CandidateRange(found[i].type, n, orders, opt);
        const auto [loj, hij] = CandidateRange(found[j].type, n, orders, opt);
        int bi = found[i].index, bj = found[j].index;
        double best_ssr = now;
        Kept kept = keep_all_but(i, j);
        for (int Ti = std::max(loi, found[i].index - 2); Ti <= std::min(hii, found[i].index + 2); ++Ti) {
          if (Ti == found[i].index) continue;
          const Eigen::VectorXd* ci = column(found[i].type, Ti);
          if (!ci) continue;
          for (int Tj = std::max(loj, found[j].index - 2); Tj <= std::min(hij, found[j].index + 2); ++Tj) {
            if (Tj == found[j].index) continue;
            const Eigen::VectorXd* cj = column(found[j].type, Tj);
            if (!cj) continue;
            const double v = trial(kept, *ci, cj);
            if (v < best_ssr * (1.0 - 1e-9)) {
              best_ssr = v;
              bi = Ti;
              bj = Tj;
            }
          }
        }
        if (bi == found[i].index) continue;
        bool clash = false;
        for (int o = 0; o < k; ++o)
          clash = clash || (o != i && o != j &&
                            ((found[o].type == found[i].type && found[o].index == bi) ||
                             (found[o].type == found[j].type && found[o].index == bj)));
        if (clash) continue;
        trail.push_back("moved " + Place(found[i].type, found[i].index) + " and " +
                        Place(found[j].type, found[j].index) + " together to observations " +
                        std::to_string(bi + 1) + " and " + std::to_string(bj + 1));
        found[i].index = bi;
        found[j].index = bj;
        X[i] = InterventionRegressor(found[i].type, bi, opt.period, n);
        X[j] = InterventionRegressor(found[j].type, bj, opt.period, n);
        commit(i, *column(found[i].type, bi));
        commit(j, *column(found[j].type, bj));
        now = best_ssr;
        moved = any = true;
      }
    }
  }
  return any;
}

}  // namespace

std::vector<std::vector<double>> intervention_parts::Regressors(const std::vector<DetectedIntervention>& found, int period, int n) {
  std::vector<std::vector<double>> X;
  for (const auto& f : found) X.push_back(InterventionRegressor(f.type, f.index, period, n));
  return X;
}

void intervention_parts::TakeEstimates(std::vector<DetectedIntervention>& found, const RegressionArimaFit& fit) {
  for (size_t j = 0; j < found.size() && j < fit.beta.size(); ++j) {
    found[j].impact = fit.beta[j];
    found[j].std_error = j < fit.beta_se.size() ? fit.beta_se[j] : 0.0;
    found[j].t_value = found[j].std_error > 0.0 ? found[j].impact / found[j].std_error : 0.0;
  }
}
namespace {

struct Candidate {
  DetectionResult result;
  double score = std::numeric_limits<double>::infinity();
};

// Schwarz-type criterion on the one-step prediction errors from observation `from` on.
double Score(const std::vector<double>& z, const DetectionResult& r, int period, int from) {
  if (!r.fit.ok) return std::numeric_limits<double>::infinity();
  const int n = static_cast<int>(z.size());
  const std::vector<double> e = RegressionInnovations(z, Regressors(r.found, period, n), r.fit);
  double sse = 0.0;
  int m = 0;
  for (int t = from; t < n; ++t) {
    if (!std::isfinite(e[t])) return std::numeric_limits<double>::infinity();
    sse += e[t] * e[t];
    ++m;
  }
  if (m < 4 || !(sse > 0.0)) return std::numeric_limits<double>::infinity();
  const ArimaOrders& s = r.fit.arima.orders;
  const int k = s.FreeCount() + (s.constant ? 1 : 0) + 2 * static_cast<int>(r.found.size());
  return m * std::log(sse / m) + std::log(static_cast<double>(m)) * k;
}

// The effect to drop next: beyond the rules' maximum the weakest whatever its t, otherwise
// the weakest below the critical value; -1 when none.
int Weakest(const std::vector<double>& t_values, int max_count, double critical) {
  int weakest = -1;
  double bar = static_cast<int>(t_values.size()) > max_count ? std::numeric_limits<double>::infinity() : critical;
  for (size_t j = 0; j < t_values.size(); ++j)
    if (std::fabs(t_values[j]) < bar) {
      bar = std::fabs(t_values[j]);
      weakest = static_cast<int>(j);
    }
  return weakest;
}

// Generalised least squares of the differenced series on the effects' columns under one
// noise model, each column whitened once for all the regressions that use it: the search
// solves many that share all their columns but one or two.
class WhitenedEffects {
 public:
  WhitenedEffects(const std::vector<double>& w, const ArimaOrders& orders, const ArmaCoefficients& coef,
                  int period, int n)
      : orders_(orders), period_(period), n_(n) {
    ExpandArma(coef, phi_, theta_);
    series_ = Whitened(w);
    if (orders.constant) ones_ = Whitened(std::vector<double>(w.size(), 1.0));
  }

  // The same as Gls on the effects' differenced columns.
  GlsOutcome Solve(const std::vector<std::pair<int, int>>& effects) {
    GlsOutcome out;
    const int m = static_cast<int>(series_.size());
    const int k = static_cast<int>(effects.size());
    const int cols = k + (orders_.constant ? 1 : 0);
    if (m == 0 || m <= cols || (orders_.constant && ones_.empty())) return out;
    Eigen::MatrixXd A(m, cols);
    for (int j = 0; j < k; ++j) {
      auto it = columns_.find(effects[j]);
      if (it == columns_.end())
        it = columns_.emplace(effects[j], Whitened(DifferenceSeries(InterventionRegressor(
                                              effects[j].first, effects[j].second, period_, n_), orders_))).first;
      if (static_cast<int>(it->second.size()) != m) return out;
      A.col(j) = Eigen::Map<const Eigen::VectorXd>(it->second.data(), m);
    }
    if (orders_.constant) A.col(k) = Eigen::Map<const Eigen::VectorXd>(ones_.data(), m);
    return WhitenedLeastSquares(A, Eigen::Map<const Eigen::VectorXd>(series_.data(), m), k);
  }

 private:
  // A series through the filter alone is what it is beside others: each has its own state.
  std::vector<double> Whitened(const std::vector<double>& x) const {
    std::vector<std::vector<double>> white = ArmaWhitenAll({&x}, phi_, theta_);
    return white.empty() ? std::vector<double>{} : std::move(white[0]);
  }

  ArimaOrders orders_;
  int period_, n_;
  std::vector<double> phi_, theta_, series_, ones_;
  std::map<std::pair<int, int>, std::vector<double>> columns_;
};

std::vector<std::pair<int, int>> Places(const std::vector<DetectedIntervention>& found) {
  std::vector<std::pair<int, int>> places;
  for (const auto& f : found) places.push_back({f.type, f.index});
  return places;
}

}  // namespace

// Kept whole: its stages (search and re-estimation until the same effects come back,
// settling of places, pruning, the final fit, the trends-first reading) pass the effects, the
// fit and the trail from one to the next, and each stage is marked below.
DetectionResult DetectInterventions(const std::vector<double>& z, const ArimaFit& initial,
                                    const DetectionOptions& opt) {
  DetectionResult res;
  res.fit.arima = initial;
  res.fit.ok = initial.ok;
  if (!initial.ok || opt.max_count < 1) return res;
  const ArimaOrders orders = initial.orders;
  const int n = static_cast<int>(z.size());
  int first = n, last = -1;
  for (int type : EnabledTypes(opt)) {
    const auto [lo, hi] = CandidateRange(type, n, orders, opt);
    if (lo > hi) continue;
    first = std::min(first, lo);
    last = std::max(last, hi);
  }
  res.candidates = std::max(0, last - first + 1);
  if (res.candidates == 0) return res;
  res.critical_value = InterventionCriticalValue(opt.confidence, res.candidates);
  const double C = res.critical_value;
  // Candidates enter a little below the critical value and two more than the rules allow may
  // be held for a while: an effect seen only once its neighbours are in the model gets its
  // chance, and each must still pass the critical value beside all the others at the end.
  // (Further below, or more held, and spurious effects near the end begin to move forecasts.)
  const double C_in = C - 0.4;
  const int cap = opt.max_count + 2;
  // Ramps: a trend taken back within three years of monthly data (a quarter of the series
  // at most), tested at the critical value of that many more candidates.
  const int ramp_gap = opt.trend ? std::min(36, n / 4) : 0;
  const double C_ramp_in =
      ramp_gap > 1 ? InterventionCriticalValue(opt.confidence, res.candidates * ramp_gap) - 0.4 : C_in;

  ConvergenceCriteria quick = opt.criteria;
  quick.polish = false;
  const std::vector<double> w = DifferenceSeries(z, orders);

  // Each effect in turn is taken out and put back where, with the others in the model, it
  // explains most: anywhere in the series and of any type. A search that took a step in the
  // middle of a ramp first finds the ramp's true beginning this way, which moving a little
  // at a time would not reach. Until nothing moves (six passes at most); true when something
  // did.
  auto Relocate = [&](std::vector<DetectedIntervention>& found, std::vector<std::vector<double>>& X,
                      const ArimaFit& noise, std::vector<std::string>& trail) {
    bool any = false;
    const int k = static_cast<int>(found.size());
    WhitenedEffects gls(w, orders, noise.coef, opt.period, n);
    for (int pass = 0; pass < 6; ++pass) {
      bool moved = false;
      for (int j = 0; j < k; ++j) {
        std::vector<std::vector<double>> others;
        std::vector<std::pair<int, int>> places;
        for (int i = 0; i < k; ++i)
          if (i != j) {
            others.push_back(X[i]);
            places.push_back({found[i].type, found[i].index});
          }
        const GlsOutcome g = gls.Solve(places);
        if (!g.ok) continue;
        RegressionArimaFit partial;
        partial.ok = true;
        partial.arima = noise;
        partial.beta = g.beta;
        const std::vector<CandidateStatistic> stats = CandidateStatistics(z, others, partial, opt);
        const CandidateStatistic* best = nullptr;
        double current = 0.0;
        for (const auto& st : stats) {
          if (st.type == found[j].type && st.index == found[j].index) current = std::fabs(st.tau);
          bool clash = false;
          for (int i = 0; i < k; ++i)
            clash = clash || (i != j && found[i].type == st.type && found[i].index == st.index);
          if (!clash && (!best || std::fabs(st.tau) > std::fabs(best->tau))) best = &st;
        }
        if (!best || (best->type == found[j].type && best->index == found[j].index) ||
            !(std::fabs(best->tau) > current * (1.0 + 1e-6)))
          continue;
        trail.push_back("moved " + Place(found[j].type, found[j].index) + " to " + Place(best->type, best->index));
        found[j].type = best->type;
        found[j].index = best->index;
        X[j] = InterventionRegressor(best->type, best->index, opt.period, n);
        moved = any = true;
      }
      if (!moved) break;
    }
    return any;
  };

  // One search with the ARMA coefficients held: the candidate with the largest statistic
  // joins while it passes the critical value, the effects' sizes estimated again after
  // each addition (generalised least squares) and their places settled together.
  DetectionOptions no_steps = opt;
  no_steps.level_shift = false;
  auto forward = [&](const ArimaFit& noise, std::vector<DetectedIntervention>& found,
                     std::vector<std::vector<double>>& X, std::vector<std::string>& trail, bool trends_first) {
    found.clear();
    X.clear();
    WhitenedEffects gls(w, orders, noise.coef, opt.period, n);
    RegressionArimaFit fit;
    fit.ok = true;
    fit.arima = noise;
    std::vector<std::pair<int, int>> refused;  // candidates whose joint fit failed
    auto taken = [&](int type, int index) {
      for (const auto& f : found)
        if (f.type == type && f.index == index) return true;
      for (const auto& r : refused)
        if (r.first == type && r.second == index) return true;
      return false;
    };
    for (int phase = trends_first ? 0 : 1; phase < 2; ++phase)
    for (int attempts = 0; static_cast<int>(found.size()) < cap && attempts < 3 * cap;
         ++attempts) {
      const DetectionOptions& types = phase == 0 ? no_steps : opt;
      std::vector<CandidateStatistic> stats = CandidateStatistics(z, X, fit, types);
      const CandidateStatistic* best = nullptr;
      for (const auto& s : stats)
        if (!taken(s.type, s.index) && (!best || std::fabs(s.tau) > std::fabs(best->tau))) best = &s;
      // A ramp is one of many more candidates than single effects, so it enters only over
      // its own bar, and only once no single effect passes: it is there for what single
      // effects cannot show, not to stand in for a step. Its statistics are worked out only
      // then.
      const CandidateStatistic* ramp = nullptr;
      if ((!best || std::fabs(best->tau) < C_in) && ramp_gap > 1 && static_cast<int>(found.size()) + 2 <= cap) {
        stats = CandidateStatistics(z, X, fit, types, ramp_gap);
        best = nullptr;
        for (const auto& s : stats)
          if (s.end >= 0 && !taken(s.type, s.index) && !taken(s.type, s.end) &&
              (!ramp || std::fabs(s.tau) > std::fabs(ramp->tau)))
            ramp = &s;
        if (ramp && std::fabs(ramp->tau) < C_ramp_in) ramp = nullptr;
      }
      if (!ramp && (!best || std::fabs(best->tau) < C_in)) break;
      if (ramp) best = ramp;
      std::vector<std::vector<double>> X2 = X;
      X2.push_back(InterventionRegressor(best->type, best->index, opt.period, n));
      if (ramp) X2.push_back(InterventionRegressor(best->type, best->end, opt.period, n));
      std::vector<std::pair<int, int>> places = Places(found);
      places.push_back({best->type, best->index});
      if (ramp) places.push_back({best->type, best->end});
      const GlsOutcome g = gls.Solve(places);
      if (!g.ok) {
        refused.push_back({best->type, best->index});
        continue;
      }
      DetectedIntervention d;
      d.type = best->type;
      d.index = best->index;
      found.push_back(d);
      if (ramp) {
        d.index = ramp->end;
        found.push_back(d);
        char t[32];
        std::snprintf(t, sizeof t, " (t %.2f)", ramp->tau);
        trail.push_back("added a ramp: " + Place(kLocalTrend, ramp->index) + " taken back at observation " +
                        std::to_string(ramp->end + 1) + t);
      } else {
        trail.push_back("added " + Label(best->type, best->index, best->tau));
      }
      X = std::move(X2);
      fit.beta = g.beta;
      if (found.size() > 1 && SettlePlaces(z, orders, noise.coef, opt, found, X, trail)) {
        const GlsOutcome g2 = gls.Solve(Places(found));
        if (g2.ok) fit.beta = g2.beta;
      }
    }
  };
  auto same_set = [](const std::vector<DetectedIntervention>& a, const std::vector<DetectedIntervention>& b) {
    if (a.size() != b.size()) return false;
    for (const auto& f : a) {
      bool in = false;
      for (const auto& g : b) in = in || (f.type == g.type && f.index == g.index);
      if (!in) return false;
    }
    return true;
  };

  // Chen and Liu's first stage: the effects mislead the estimates of the noise model that
  // looks for them (a level shift makes an AR coefficient creep towards one, and then hides
  // itself, or the first effect found sits off its place). So after each search the noise
  // model is estimated again together with what was found, and the search starts over with
  // those coefficients, until it finds the same effects again.
  auto search = [&](bool trends_first) {
  DetectionResult res0 = res;
  DetectionResult& res = res0;
  std::vector<std::vector<double>> X;
  std::vector<DetectedIntervention> found;
  RegressionArimaFit fit = res.fit;
  ArimaFit noise = initial;
  for (int round = 0; round < 4; ++round) {
    std::vector<DetectedIntervention> f;
    std::vector<std::vector<double>> Xr;
    std::vector<std::string> trail;
    forward(noise, f, Xr, trail, trends_first);
    if (round > 0 && same_set(f, found)) {
      res.trail.push_back("the same effects found again");
      break;
    }
    for (auto& line : trail) res.trail.push_back(line);
    if (f.empty()) break;
    const RegressionArimaFit next = FitRegressionArima(z, Xr, orders, quick, false, &noise.coef);
    if (!next.ok) {
      res.trail.push_back("the model with the effects found could not be estimated; none are kept");
      if (found.empty()) return res;
      break;
    }
    found = std::move(f);
    X = std::move(Xr);
    fit = next;
    noise = next.arima;
    if (round < 3) res.trail.push_back("noise model estimated again with the effects; search made again");
  }
  res.fit = fit;
  if (found.empty()) return res;
  // Each effect may then still move anywhere, or change its type, under the noise model
  // estimated with all of them: the later additions are what show where the first belong.
  if (found.size() > 1 && Relocate(found, X, fit.arima, res.trail)) {
    SettlePlaces(z, orders, fit.arima.coef, opt, found, X, res.trail);
    const RegressionArimaFit next = FitRegressionArima(z, X, orders, quick, false, &fit.arima.coef);
    if (next.ok) fit = next;
  }

  // In order of time, estimated together with standard errors; effects that are no longer
  // significant beside the others leave one at a time, the weakest first.
  std::vector<size_t> order(found.size());
  std::iota(order.begin(), order.end(), 0);
  std::sort(order.begin(), order.end(), [&](size_t i, size_t j) {
    return found[i].index != found[j].index ? found[i].index < found[j].index : found[i].type < found[j].type;
  });
  std::vector<DetectedIntervention> sorted;
  std::vector<std::vector<double>> Xs;
  for (size_t i : order) {
    sorted.push_back(found[i]);
    Xs.push_back(X[i]);
  }
  found.swap(sorted);
  X.swap(Xs);
  // Those that fall short beside the others leave first under the noise model held, which
  // costs one regression each; beyond the rules' maximum the weakest leave whatever their t.
  // Without any effect left, the noise model alone (as given when it cannot be estimated).
  auto none_kept = [&](const ArmaCoefficients& coef) {
    res.fit = FitRegressionArima(z, {}, orders, opt.criteria, true, &coef);
    if (!res.fit.ok) {
      res.fit.arima = initial;
      res.fit.ok = true;
    }
    return res;
  };
  auto drop = [&](int k, double t) {
    res.trail.push_back("dropped " + Label(found[k].type, found[k].index, t));
    found.erase(found.begin() + k);
    X.erase(X.begin() + k);
  };
  while (!found.empty()) {
    std::vector<std::vector<double>> Xw;
    for (const auto& x : X) Xw.push_back(DifferenceSeries(x, orders));
    const GlsOutcome g = Gls(w, Xw, fit.arima.coef, orders.constant);
    if (!g.ok) break;
    std::vector<double> t(found.size());
    for (size_t j = 0; j < found.size(); ++j) t[j] = g.se[j] > 0.0 ? g.beta[j] / g.se[j] : 0.0;
    const int weakest = Weakest(t, opt.max_count, C);
    if (weakest < 0) break;
    drop(weakest, t[weakest]);
  }
  if (found.empty()) return none_kept(fit.arima.coef);
  // A seasonal pulse is judged under the noise model detection started from as well (fitted
  // without any effect), by the smaller of its two t-values: estimated again beside it, the
  // seasonal terms give up the persistence of that period of the cycle and its t grows by
  // what it took from them (on clean airline-type series nearly half of the seasonal pulses
  // found passed only so). One period of the cycle bends the starting model little, so a
  // real one passes there too. Not steps or trends: a real one bends it most (an AR
  // coefficient near one hides a step) and would fail there.
  auto judged_at_start = [&](std::vector<double>& t) {
    bool seasonal = false;
    for (const auto& f : found) seasonal = seasonal || f.type == kSeasonalPulse;
    if (!seasonal) return;
    std::vector<std::vector<double>> Xw;
    for (const auto& x : X) Xw.push_back(DifferenceSeries(x, orders));
    const GlsOutcome g = Gls(w, Xw, initial.coef, orders.constant);
    if (!g.ok) return;
    for (size_t j = 0; j < found.size(); ++j)
      if (found[j].type == kSeasonalPulse && g.se[j] > 0.0 && std::fabs(g.beta[j] / g.se[j]) < std::fabs(t[j]))
        t[j] = g.beta[j] / g.se[j];
  };
  // The t-values come from generalised least squares; the Hessian of the noise model is
  // needed only once, for the model finally kept.
  RegressionArimaFit joint = FitRegressionArima(z, X, orders, opt.criteria, false, &fit.arima.coef);
  while (true) {
    if (!joint.ok) {
      // Cannot happen for a set that was estimable one by one; keep the model without effects.
      res.trail.push_back("the joint estimate failed; no interventions kept");
      return res;
    }
    std::vector<double> t(found.size());
    for (size_t j = 0; j < found.size(); ++j) {
      t[j] = joint.beta_se[j] > 0.0 ? joint.beta[j] / joint.beta_se[j] : 0.0;
      found[j].impact = joint.beta[j];
      found[j].std_error = joint.beta_se[j];
      found[j].t_value = t[j];
    }
    judged_at_start(t);
    const int weakest = Weakest(t, opt.max_count, C);
    if (weakest < 0) break;
    drop(weakest, t[weakest]);
    if (found.empty()) return none_kept(joint.arima.coef);
    joint = FitRegressionArima(z, X, orders, opt.criteria, false, &joint.arima.coef);
  }
  res.fit = FitRegressionArima(z, X, orders, opt.criteria, true, &joint.arima.coef);
  if (!res.fit.ok) res.fit = joint;
  TakeEstimates(found, res.fit);
  res.found = found;
  return res;
  };

  DetectionResult best = search(false);
  // A greedy search meets a ramp that later levels off as a staircase of steps, each the best
  // single addition at its turn. The same search with the trends taken first (steps after
  // them) is the other reading; the one with the lower criterion stays.
  int level_moves = 0;
  for (const auto& f : best.found) level_moves += f.type == kLevelShift || f.type == kLocalTrend;
  if (opt.trend && opt.level_shift && level_moves >= 2) {
    DetectionResult other = search(true);
    const int from = BurnIn(orders);
    if (Score(z, other, opt.period, from) < Score(z, best, opt.period, from)) {
      other.trail.push_back("trends taken before steps explain the series better");
      best = std::move(other);
    }
  }
  return best;
}

namespace {

std::string Describe(const DetectionResult& r) {
  std::string text = r.fit.arima.orders.Name() + " with ";
  if (r.found.empty()) return text + "no interventions";
  text += std::to_string(r.found.size()) + " intervention(s)";
  return text;
}

}  // namespace

DetectionResult DetectWithIdentification(const std::vector<double>& z, const ArimaFit& identified,
                                         const DetectionOptions& opt, const SearchOptions& search) {
  if (!identified.ok) return DetectInterventions(z, identified, opt);
  const int n = static_cast<int>(z.size());
  const ArimaOrders base = identified.orders;
  const int from = BurnIn(base);

  // The orders searched again from one start are often another start's, or the other way
  // round, and their estimates on the same series then agree: detection from a model it has
  // already started from (same orders, coefficients and mean alike) is not made again.
  // Estimates that reached another optimum are searched afresh.
  auto close = [](const std::vector<double>& a, const std::vector<double>& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
      if (!(std::fabs(a[i] - b[i]) <= 1e-4)) return false;
    return true;
  };
  std::vector<std::pair<ArimaFit, DetectionResult>> searched;
  auto detect = [&](const ArimaFit& start) {
    const ArimaOrders& o = start.orders;
    for (const auto& [f, r] : searched) {
      const ArimaOrders& k = f.orders;
      if (k.p == o.p && k.d == o.d && k.q == o.q && k.P == o.P && k.D == o.D && k.Q == o.Q &&
          k.period == o.period && k.constant == o.constant && close(f.coef.ar, start.coef.ar) &&
          close(f.coef.ma, start.coef.ma) && close(f.coef.sar, start.coef.sar) &&
          close(f.coef.sma, start.coef.sma) && close({f.mean}, {start.mean}))
        return r;
    }
    // Effects carried into the forecasts on few observations face the stricter test here,
    // before the candidates are compared: each start's model is judged as it would be kept.
    searched.emplace_back(start, DetectInterventions(z, start, opt));
    DropWeakLateEffects(z, opt, searched.back().second);
    return searched.back().second;
  };

  // Detection with a model, then the orders searched again on the cleansed series; when they
  // change, detection starts over from the new orders.
  // The search is the costly part; it is made again only where the model began as the
  // simplest one of its differencing and effects that move the level were found.
  auto run = [&](const ArimaFit& start, std::vector<std::string>& story, bool search_again) {
    DetectionResult r = detect(start);
    if (r.found.empty() || !search_again) return r;
    bool moves_level = false;
    for (const auto& f : r.found) moves_level = moves_level || f.type == kLevelShift || f.type == kLocalTrend;
    if (!moves_level) return r;
    const std::vector<double> u = RemoveRegressors(z, Regressors(r.found, opt.period, n), r.fit.beta);
    ArimaFit again = StepwiseSearch(u, start.orders.d, start.orders.D, start.orders.period, search, nullptr);
    if (!again.ok) return r;
    ArimaOrders s = again.orders;
    if (s.p == start.orders.p && s.q == start.orders.q && s.P == start.orders.P && s.Q == start.orders.Q &&
        s.constant == start.orders.constant)
      return r;
    const ArimaFit refit = FitArima(z, s, opt.criteria, false, &again.coef);
    if (!refit.ok) return r;
    DetectionResult r2 = detect(refit);
    const double s1 = Score(z, r, opt.period, from), s2 = Score(z, r2, opt.period, from);
    story.push_back("orders searched again on the cleansed series: " + s.Name() +
                    (s2 < s1 ? ", detection repeated with it" : ", not better than before"));
    return s2 < s1 ? r2 : r;
  };

  std::vector<std::string> story;
  Candidate best;
  best.result = run(identified, story, false);
  best.score = Score(z, best.result, opt.period, from);
  story.push_back(Describe(best.result) + ": criterion " + std::to_string(best.score));

  // Fewer regular differences, when effects that move the level could explain the rest.
  if (opt.level_shift || opt.trend) {
    for (int d = base.d - 1; d >= 0; --d) {
      // The simplest model of that differencing to begin with: orders searched on the
      // series as it stands would take the effects for persistence and hide them.
      ArimaOrders simple;
      simple.d = d;
      simple.D = base.D;
      simple.period = base.period;
      simple.Q = base.D > 0 ? 1 : 0;
      simple.constant = search.allow_constant && d + base.D <= 1;
      // Also the identified orders with that differencing: short-term dependence that the
      // simplest model lacks would otherwise pass for effects, or hide them.
      std::vector<ArimaOrders> starts{simple};
      ArimaOrders same = base;
      same.d = d;
      same.constant = simple.constant;
      if (same.p != simple.p || same.q != simple.q || same.P != simple.P || same.Q != simple.Q)
        starts.push_back(same);
      Candidate c;
      for (const ArimaOrders& orders : starts) {
        const ArimaFit start = FitArima(z, orders, opt.criteria, false);
        if (!start.ok) continue;
        Candidate one;
        one.result = run(start, story, true);
        one.score = Score(z, one.result, opt.period, from);
        story.push_back(Describe(one.result) + ": criterion " + std::to_string(one.score));
        if (!one.result.found.empty() && one.score < c.score) c = std::move(one);
      }
      // Only effects are a reason to doubt the differencing the tests chose, and only if the
      // series cleansed of them passes the same test with fewer differences.
      // Nor is a staircase: a level that moves at more than three places is better left to
      // the differencing. Once differenced, what would stand in for the difference given up
      // is a slope that moves: steps in the level of an integrated series are no staircase.
      int level_moves = 0;
      for (const auto& f : c.result.found)
        level_moves += f.type == kLocalTrend || (d == 0 && f.type == kLevelShift);
      if (c.result.found.empty() || level_moves > 3 || !(c.score < best.score)) continue;
      const std::vector<double> u =
          RemoveRegressors(z, Regressors(c.result.found, opt.period, n), c.result.fit.beta);
      const int needed = RegularDifferences(Difference(u, base.period, base.D), base.d, nullptr);
      story.push_back("the cleansed series asks for " + std::to_string(needed) + " regular difference(s)");
      if (needed <= d) {
        // Unless the steps and trends were found for a difference given up for nothing.
        DetectionResult plain;
        double extra = 0.0;
        if (WithoutLevelMoves(z, base, c.result, opt, n - from, plain, extra)) {
          const double score = Score(z, plain, opt.period, from);
          if (score < c.score + extra) c = Candidate{std::move(plain), score};
        }
        best = std::move(c);
      }
      // The best effects with one difference fewer leave every difference needed: they do not
      // stand in for persistence, and fewer differences still would not be accepted either.
      else if (needed >= base.d) break;
    }
  }
  if (best.result.found.empty() && best.result.fit.arima.std_errors.empty()) {
    const ArimaFit with_se =
        FitArima(z, best.result.fit.arima.orders, opt.criteria, true, &best.result.fit.arima.coef);
    if (with_se.ok) best.result.fit.arima = with_se;
  }
  for (auto& line : best.result.trail) story.push_back(line);
  best.result.trail = std::move(story);
  return best.result;
}

}  // namespace quorvane
