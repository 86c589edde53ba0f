#include "engine/model/variance_change.h"

#include <algorithm>
#include <cmath>

#include <boost/math/distributions/chi_squared.hpp>

namespace quorvane {

namespace {

struct Split {
  int at = -1;      // index into the residuals
  double lr = 0.0;
};

// The best single split of e[lo, hi) by the likelihood ratio of two variances against one.
Split BestSplit(const std::vector<double>& e, int lo, int hi, int min_segment) {
  Split best;
  const int m = hi - lo;
  if (m < 2 * min_segment) return best;
  std::vector<double> cum(m + 1, 0.0);
  for (int i = 0; i < m; ++i) cum[i + 1] = cum[i] + e[lo + i] * e[lo + i];
  const double s = cum[m] / m;
  if (!(s > 0.0)) return best;
  for (int k = min_segment; k <= m - min_segment; ++k) {
    const double s1 = cum[k] / k, s2 = (cum[m] - cum[k]) / (m - k);
    if (!(s1 > 0.0) || !(s2 > 0.0)) continue;
    const double lr = m * std::log(s) - k * std::log(s1) - (m - k) * std::log(s2);
    if (lr > best.lr) {
      best.lr = lr;
      best.at = lo + k;
    }
  }
  return best;
}

}  // namespace

std::vector<VarianceChange> FindVarianceChanges(const std::vector<double>& residuals, int first,
                                                double confidence_pct, int min_segment, int max_changes) {
  std::vector<VarianceChange> out;
  const int m = static_cast<int>(residuals.size());
  min_segment = std::max(min_segment, 2);
  if (m < 2 * min_segment || max_changes < 1) return out;
  const double alpha = (100.0 - std::clamp(confidence_pct, 50.0, 99.99)) / 100.0;
  const int places = std::max(1, m - 2 * min_segment + 1);
  const boost::math::chi_squared chi1(1.0);
  const double critical = boost::math::quantile(boost::math::complement(chi1, alpha / places));

  // Binary segmentation: split where the evidence is strongest, then look inside each part.
  std::vector<int> cuts;
  std::vector<std::pair<int, int>> open{{0, m}};
  while (!open.empty() && static_cast<int>(cuts.size()) < max_changes) {
    int pick = -1;
    Split pick_split;
    for (size_t i = 0; i < open.size(); ++i) {
      const Split s = BestSplit(residuals, open[i].first, open[i].second, min_segment);
      if (s.at >= 0 && s.lr > critical && s.lr > pick_split.lr) {
        pick_split = s;
        pick = static_cast<int>(i);
      }
    }
    if (pick < 0) break;
    const auto [lo, hi] = open[pick];
    open.erase(open.begin() + pick);
    open.push_back({lo, pick_split.at});
    open.push_back({pick_split.at, hi});
    cuts.push_back(pick_split.at);
  }
  std::sort(cuts.begin(), cuts.end());
  for (size_t i = 0; i < cuts.size(); ++i) {
    const int lo = i == 0 ? 0 : cuts[i - 1];
    const int hi = i + 1 < cuts.size() ? cuts[i + 1] : m;
    double a = 0.0, b = 0.0;
    for (int t = lo; t < cuts[i]; ++t) a += residuals[t] * residuals[t];
    for (int t = cuts[i]; t < hi; ++t) b += residuals[t] * residuals[t];
    VarianceChange c;
    c.index = first + cuts[i];
    c.before = a / (cuts[i] - lo);
    c.after = b / (hi - cuts[i]);
    const Split s = BestSplit(residuals, lo, hi, std::min(min_segment, std::min(cuts[i] - lo, hi - cuts[i])));
    c.statistic = s.lr;
    out.push_back(c);
  }
  return out;
}

double LastSegmentVariance(const std::vector<double>& residuals, int first,
                           const std::vector<VarianceChange>& changes) {
  const int m = static_cast<int>(residuals.size());
  const int from = changes.empty() ? 0 : std::clamp(changes.back().index - first, 0, m);
  double s = 0.0;
  for (int t = from; t < m; ++t) s += residuals[t] * residuals[t];
  return m > from ? s / (m - from) : 0.0;
}

}  // namespace quorvane
