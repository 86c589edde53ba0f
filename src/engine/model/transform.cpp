#include "engine/model/transform.h"

#include <cmath>
#include <limits>

namespace quorvane {

namespace {
bool IsNone(double lambda) { return std::fabs(lambda - 1.0) < 1e-12; }
bool IsLog(double lambda) { return std::fabs(lambda) < 1e-12; }
}  // namespace

bool PowerApplies(const std::vector<double>& y, double lambda) {
  if (IsNone(lambda)) return true;
  if (!std::isfinite(lambda)) return false;
  for (double v : y)
    if (!(v > 0.0) || !std::isfinite(v)) return false;
  return true;
}

double BoxCox(double y, double lambda) {
  if (IsNone(lambda)) return y;
  if (!(y > 0.0)) return std::numeric_limits<double>::quiet_NaN();
  if (IsLog(lambda)) return std::log(y);
  return (std::pow(y, lambda) - 1.0) / lambda;
}

double InverseBoxCox(double z, double lambda) {
  if (IsNone(lambda)) return z;
  if (IsLog(lambda)) return std::exp(z);
  const double base = lambda * z + 1.0;
  if (!(base > 0.0)) return 0.0;
  return std::pow(base, 1.0 / lambda);
}

std::vector<double> BoxCox(const std::vector<double>& y, double lambda) {
  std::vector<double> z(y.size());
  for (size_t i = 0; i < y.size(); ++i) z[i] = BoxCox(y[i], lambda);
  return z;
}

double BoxCoxLogJacobian(const std::vector<double>& y, double lambda, int from) {
  if (IsNone(lambda)) return 0.0;
  double s = 0.0;
  for (size_t i = static_cast<size_t>(std::max(from, 0)); i < y.size(); ++i) s += std::log(y[i]);
  return (lambda - 1.0) * s;
}

}  // namespace quorvane
