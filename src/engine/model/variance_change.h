#pragma once
// Discrete changes of the residual variance: the places where the spread of a model's
// one-step errors steps up or down, found by likelihood ratio and binary segmentation.
// Forecast limits then rest on the variance of the last segment, not on an average over
// regimes that no longer hold.
#include <vector>

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

}  // namespace quorvane
