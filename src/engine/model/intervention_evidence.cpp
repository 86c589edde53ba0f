// Effects carried into the forecasts on the strength of a few observations at the end of
// the series: kept only with more evidence than the critical value asks of the others.
#include "engine/model/intervention_evidence.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include "engine/model/intervention_parts.h"

namespace quorvane {

bool RestsOnFewObservations(int type, int index, int n, int period) {
  const int after = n - index;  // observations from the effect's place to the end
  const int cycle = std::max(1, period);
  switch (type) {
    case kLevelShift:
    case kLocalTrend: return after <= std::max(kRampMinGap, cycle);
    case kSeasonalPulse: return cycle > 1 && after <= 2 * cycle;
    default: return false;
  }
}

bool DropWeakLateEffects(const std::vector<double>& z, const DetectionOptions& opt, DetectionResult& r) {
  const int n = static_cast<int>(z.size());
  if (r.found.empty() || !r.fit.ok) return false;
  const double bar = r.critical_value + kLateEffectMargin;
  bool any = false;
  while (!r.found.empty()) {
    int weakest = -1;
    double lowest = bar;
    for (size_t j = 0; j < r.found.size(); ++j) {
      const DetectedIntervention& f = r.found[j];
      if (!RestsOnFewObservations(f.type, f.index, n, opt.period)) continue;
      if (std::fabs(f.t_value) < lowest) {
        lowest = std::fabs(f.t_value);
        weakest = static_cast<int>(j);
      }
    }
    if (weakest < 0) break;
    const DetectedIntervention gone = r.found[weakest];
    char buf[48];
    std::snprintf(buf, sizeof buf, " (t %.2f)", gone.t_value);
    r.trail.push_back("dropped " + InterventionTypeName(gone.type) + " at observation " +
                      std::to_string(gone.index + 1) + buf + ": too few observations after it to carry it forward");
    r.found.erase(r.found.begin() + weakest);
    any = true;
    const ArimaOrders orders = r.fit.arima.orders;
    RegressionArimaFit next = FitRegressionArima(z, intervention_parts::Regressors(r.found, opt.period, n), orders,
                                                 opt.criteria, true, &r.fit.arima.coef);
    if (!next.ok && !r.found.empty()) {
      // The others cannot be estimated without it: none are kept.
      r.trail.push_back("the model without it could not be estimated; no interventions kept");
      r.found.clear();
      next = FitRegressionArima(z, {}, orders, opt.criteria, true, &r.fit.arima.coef);
    }
    if (!next.ok) {
      // The noise model alone, as it was estimated beside the effects.
      r.found.clear();
      r.fit.beta.clear();
      r.fit.beta_se.clear();
      return true;
    }
    r.fit = next;
    intervention_parts::TakeEstimates(r.found, r.fit);
  }
  return any;
}

}  // namespace quorvane
