#pragma once
// Discrete changes of the residual variance: the places where the spread of a model's
// one-step errors steps up or down, found by likelihood ratio and binary segmentation.
// Forecast limits then rest on the variance of the last segment, not on an average over
// regimes that no longer hold.
#include <vector>

#include "engine/model/estimate.h"

namespace quorvane {

inline constexpr const char* kHeadVarianceChange = "Change of variance";

struct VarianceChange {
  int index = 0;            // 0-based observation where the new variance begins
  double before = 0.0;      // variance of the segment before it
  double after = 0.0;       // variance of the segment from it
  double statistic = 0.0;   // likelihood-ratio statistic
};

// Changes in the variance of `residuals` (finite values; `first` is the observation number
// of residuals[0]) at the given confidence (percent, shared out over the places tested),
// with at least `min_segment` residuals between changes, at most `max_changes`, in order
// of time. Fewer than 2 * min_segment residuals: none.
std::vector<VarianceChange> FindVarianceChanges(const std::vector<double>& residuals, int first,
                                                double confidence_pct, int min_segment, int max_changes = 5);

// Mean square of the residuals from the last change on (of all of them when there is none).
double LastSegmentVariance(const std::vector<double>& residuals, int first,
                           const std::vector<VarianceChange>& changes);

// Standard deviation of each observation 0..n-1 relative to the last segment's (which is 1),
// from the variances before and after each change.
std::vector<double> SegmentScales(int n, const std::vector<VarianceChange>& changes);

// The ARIMA of `fit` estimated again on z with each one-step error weighted by the inverse of
// its observation's relative standard deviation (`scales`, one per observation of z): the exact
// Gaussian likelihood with an innovation variance that changes by segment, so that a noisy
// stretch weighs no more than its share of information. Starts from the coefficients of `fit`;
// sigma2 of the result is the innovation variance of the last segment, loglik the likelihood
// of z under the changing variance. Standard errors (when `fit` had them) from the
// Gauss-Newton approximation. A fit that cannot be made comes back with ok false.
ArimaFit FitArimaWeighted(const std::vector<double>& z, const ArimaFit& fit, const std::vector<double>& scales,
                          const ConvergenceCriteria& crit);

}  // namespace quorvane
