#pragma once
// Optimal reconciliation of a two-level hierarchy (a parent that is the sum of its children)
// by the minimum-trace method: the base forecasts of all series are combined, weighted by
// the covariance of their in-sample one-step errors, into forecasts that add up. The
// covariance is shrunk toward its diagonal (Schäfer and Strimmer's intensity), which keeps it
// invertible when there are more series than observations.
#include <optional>
#include <string>
#include <vector>

#include <Eigen/Dense>

namespace tessaly::aggregate {

// The shrunk covariance of residual series (node by time, the parent first; NaN where a
// series has no residual). Only the times at which every series has one are used. nullopt
// with fewer than two such times. `lambda` receives the shrinkage intensity, 0 to 1.
[[nodiscard]] std::optional<Eigen::MatrixXd> ShrunkCovariance(const std::vector<std::vector<double>>& residuals,
                                                double* lambda = nullptr);

// The reconciliation of one period's base forecasts (parent first, then the children): the
// children's reconciled values and their sum as the parent's, parent first.
class MinTReconciler {
 public:
  explicit MinTReconciler(const Eigen::MatrixXd& covariance);
  std::vector<double> Reconcile(const std::vector<double>& base) const;

 private:
  Eigen::MatrixXd projection_;  // children x nodes: (S' W^-1 S)^-1 S' W^-1
};

}  // namespace tessaly::aggregate
