#include "engine/model/constancy.h"

#include <algorithm>
#include <cmath>

#include <boost/math/distributions/fisher_f.hpp>

namespace quorvane {

namespace {

// Sum of squared one-step errors of the fit, on the differenced series (n * sigma2).
double ErrorSum(const ArimaFit& f) { return f.sigma2 * f.n; }

}  // namespace

ParameterChange TestConstancy(const std::vector<double>& z, const ArimaOrders& orders, const ConvergenceCriteria& crit,
                              double confidence_pct, int min_group, int max_breaks) {
  ParameterChange out;
  const int n = static_cast<int>(z.size());
  const int burn = orders.d + orders.D * std::max(1, orders.period);
  const int k = orders.FreeCount() + (orders.constant ? 1 : 0) + 1;  // + the variance
  // Each side must carry its own differencing start and enough to estimate the orders.
  const int side = std::max({min_group, k + 2, 3}) + burn;
  if (n < 2 * side) return out;
  ConvergenceCriteria quick = crit;
  quick.polish = false;
  const ArimaFit whole = FitArima(z, orders, quick, false);
  if (!whole.ok) return out;
  const double S = ErrorSum(whole);
  const int m = whole.n;

  const int lo = side, hi = n - side;
  const int count = std::min(std::max(1, max_breaks), hi - lo + 1);
  double best_f = -1.0;
  int best_at = -1;
  for (int i = 0; i < count; ++i) {
    const int at = count == 1 ? (lo + hi) / 2 : lo + static_cast<int>(std::lround((hi - lo) * i / (count - 1.0)));
    const std::vector<double> a(z.begin(), z.begin() + at), b(z.begin() + at, z.end());
    const ArimaFit fa = FitArima(a, orders, quick, false, &whole.coef);
    const ArimaFit fb = FitArima(b, orders, quick, false, &whole.coef);
    if (!fa.ok || !fb.ok) continue;
    ++out.breaks_tried;
    const double s12 = ErrorSum(fa) + ErrorSum(fb);
    const int df2 = fa.n + fb.n - 2 * k;
    if (df2 < 1 || !(s12 > 0.0)) continue;
    // The parts lose the differencing start of the later segment; compare like with like
    // by the error variance of the whole over the same count.
    const double s_whole = S * (fa.n + fb.n) / static_cast<double>(m);
    const double f = ((s_whole - s12) / k) / (s12 / df2);
    if (f > best_f) {
      best_f = f;
      best_at = at;
    }
  }
  if (best_at < 0 || out.breaks_tried == 0) return out;
  const int df2 = std::max(1, m - burn - 2 * k);
  const boost::math::fisher_f F(k, df2);
  const double alpha = (100.0 - std::clamp(confidence_pct, 50.0, 99.99)) / 100.0;
  out.critical = boost::math::quantile(boost::math::complement(F, alpha / out.breaks_tried));
  out.statistic = best_f;
  out.index = best_at;
  out.p_value = best_f > 0.0 ? boost::math::cdf(boost::math::complement(F, best_f)) : 1.0;
  out.found = best_f > out.critical;
  return out;
}

ModelResult ModelLatestSegment(const ModelingProblem& problem, int from, const StageCallback& on_stage) {
  const int n = static_cast<int>(problem.y.size());
  const int L = std::clamp(from, 0, std::max(0, n - 1));
  ModelingProblem sub = problem;
  sub.rules.constancy = false;
  sub.y.assign(problem.y.begin() + L, problem.y.end());
  for (auto& input : sub.inputs)
    if (static_cast<int>(input.history.size()) > L) input.history.erase(input.history.begin(), input.history.begin() + L);
  if (problem.seasonality <= 1) {
    sub.begin_year = problem.begin_year + L;
  } else {
    const int offset = std::max(0, problem.begin_period - 1) + L;
    sub.begin_year = problem.begin_year + offset / problem.seasonality;
    sub.begin_period = offset % problem.seasonality + 1;
  }
  const StageCallback later = [&](Stage s) {
    if (s == Stage::DataPreparation || s == Stage::Identification) return true;
    return on_stage ? on_stage(s) : true;
  };
  ModelResult r = FitAndForecast(sub, later);
  r.leading_left_out = L;
  auto pad = [&](std::vector<double>& v, bool actual) {
    if (v.empty()) return;
    std::vector<double> head(L);
    for (int t = 0; t < L; ++t) head[t] = actual ? problem.y[t] : 0.0;
    v.insert(v.begin(), head.begin(), head.end());
  };
  pad(r.fitted, true);
  pad(r.residuals, false);
  pad(r.cleansed, true);
  for (auto& iv : r.interventions) iv.observation += L;
  return r;
}

}  // namespace quorvane
