#pragma once
// The Box-Cox power transform of the output series. lambda 1 means no transform (the
// series is used as given, not shifted), 0 the natural logarithm.
#include <vector>

namespace quorvane {

// True when the power can be applied to every value: lambda 1 always; any other power
// only when every value is positive and finite.
bool PowerApplies(const std::vector<double>& y, double lambda);

// Transformed value. Domain: y > 0 unless lambda == 1. Outside it: NaN.
double BoxCox(double y, double lambda);

// Inverse of BoxCox. Where the inverse does not exist (lambda*z + 1 <= 0) it gives 0,
// the edge of the positive range the series came from.
double InverseBoxCox(double z, double lambda);

std::vector<double> BoxCox(const std::vector<double>& y, double lambda);

// Log of the Jacobian of the transform summed over y[from..]: (lambda - 1) * sum(log y).
// Zero for lambda 1. Domain as BoxCox.
double BoxCoxLogJacobian(const std::vector<double>& y, double lambda, int from = 0);

}  // namespace quorvane
