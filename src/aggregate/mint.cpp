#include "aggregate/mint.h"

#include <algorithm>
#include <cmath>

namespace tessaly::aggregate {

std::optional<Eigen::MatrixXd> ShrunkCovariance(const std::vector<std::vector<double>>& residuals,
                                                double* lambda) {
  const std::size_t m = residuals.size();
  if (m == 0) return std::nullopt;
  std::size_t length = residuals[0].size();
  for (const auto& r : residuals) length = std::min(length, r.size());
  std::vector<std::size_t> times;
  for (std::size_t t = 0; t < length; ++t) {
    bool all = true;
    for (const auto& r : residuals) all = all && std::isfinite(r[t]);
    if (all) times.push_back(t);
  }
  const auto n = static_cast<Eigen::Index>(times.size());
  if (n < 2) return std::nullopt;
  Eigen::MatrixXd x(n, static_cast<Eigen::Index>(m));
  for (Eigen::Index i = 0; i < n; ++i)
    for (std::size_t j = 0; j < m; ++j) x(i, static_cast<Eigen::Index>(j)) = residuals[j][times[static_cast<std::size_t>(i)]];

  // Residuals are taken about zero, as one-step errors of unbiased forecasts are.
  const Eigen::MatrixXd cov = x.transpose() * x / static_cast<double>(n);
  const Eigen::VectorXd sd = cov.diagonal().cwiseSqrt();
  if ((sd.array() <= 0).any()) return std::nullopt;
  const Eigen::MatrixXd xs = x * sd.cwiseInverse().asDiagonal();
  // The variance of each sample correlation, and the correlations themselves off the diagonal.
  const Eigen::MatrixXd xs2 = xs.array().square().matrix();
  const Eigen::MatrixXd r = xs.transpose() * xs / static_cast<double>(n);
  Eigen::MatrixXd v = (xs2.transpose() * xs2 - static_cast<double>(n) * r.array().square().matrix()) /
                      (static_cast<double>(n) * static_cast<double>(n - 1));
  v.diagonal().setZero();
  Eigen::MatrixXd off = r;
  off.diagonal().setZero();
  const double denominator = off.array().square().sum();
  double intensity = denominator > 0 ? v.sum() / denominator : 1.0;
  intensity = std::clamp(intensity, 0.0, 1.0);
  if (lambda) *lambda = intensity;
  Eigen::MatrixXd w = (1 - intensity) * cov;
  w.diagonal() = cov.diagonal();
  return w;
}

MinTReconciler::MinTReconciler(const Eigen::MatrixXd& w) {
  const Eigen::Index m = w.rows(), children = m - 1;
  // S: the parent's row of ones over the children's identity.
  Eigen::MatrixXd s = Eigen::MatrixXd::Zero(m, children);
  s.row(0).setOnes();
  s.bottomRows(children).setIdentity();
  const Eigen::LDLT<Eigen::MatrixXd> w_ldlt(w);
  const Eigen::MatrixXd winv_s = w_ldlt.solve(s);  // W^-1 S
  const Eigen::MatrixXd g = (s.transpose() * winv_s).ldlt().solve(winv_s.transpose());
  projection_ = g;
}

std::vector<double> MinTReconciler::Reconcile(const std::vector<double>& base) const {
  const Eigen::Map<const Eigen::VectorXd> y(base.data(), static_cast<Eigen::Index>(base.size()));
  const Eigen::VectorXd children = projection_ * y;
  std::vector<double> out{children.sum()};
  for (Eigen::Index c = 0; c < children.size(); ++c) out.push_back(children(c));
  return out;
}

}  // namespace tessaly::aggregate
