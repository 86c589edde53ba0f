#include "engine/model/fewer_differences.h"

#include <algorithm>
#include <cmath>

#include "engine/model/intervention_parts.h"
#include "engine/model/series_stats.h"
#include "engine/model/unit_root.h"

namespace quorvane {

bool WithoutLevelMoves(const std::vector<double>& z, const ArimaOrders& base, const DetectionResult& candidate,
                       const DetectionOptions& opt, int m, DetectionResult& out, double& extra) {
  if (candidate.fit.arima.orders.d != 0) return false;
  const AdfResult adf = Adf(Difference(z, base.period, base.D));
  if (!adf.computed || !(adf.statistic < adf.critical_5)) return false;
  out = candidate;
  out.found.clear();
  for (const auto& f : candidate.found)
    if (f.type != kLevelShift && f.type != kLocalTrend) out.found.push_back(f);
  const size_t dropped = candidate.found.size() - out.found.size();
  if (dropped == 0) return false;
  const int n = static_cast<int>(z.size());
  const ArimaFit& noise = candidate.fit.arima;
  out.fit = FitRegressionArima(z, intervention_parts::Regressors(out.found, opt.period, n), noise.orders, opt.criteria,
                               true, &noise.coef);
  if (!out.fit.ok) return false;
  intervention_parts::TakeEstimates(out.found, out.fit);
  const double searched =
      std::max(1, candidate.candidates) * static_cast<double>(intervention_parts::EnabledTypes(opt).size());
  extra = (2.0 * std::log(searched) - std::log(static_cast<double>(std::max(m, 2)))) * static_cast<double>(dropped);
  out.trail.push_back("without a difference the series passes the Dickey-Fuller test, and its model explains it as "
                      "well without the steps and trends once their search is counted: they are not kept");
  return true;
}

}  // namespace quorvane
