#pragma once
// Pieces of the model's equation text, shared by automatic modelling and the structured
// (preset, user and transfer-function) models so both write the same notation.
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace quorvane {

// A number through a printf format, e.g. Format("%.4f", 0.4012).
inline std::string Format(const char* fmt, double v) {
  char buf[64];
  std::snprintf(buf, sizeof buf, fmt, v);
  return buf;
}

// The series as modelled: its name, LN(name) for lambda 0, BOXCOX(name,l) otherwise.
inline std::string TransformName(double lambda, const std::string& name) {
  if (std::fabs(lambda - 1.0) < 1e-12) return name;
  if (std::fabs(lambda) < 1e-12) return "LN(" + name + ")";
  return "BOXCOX(" + name + "," + Format("%.2f", lambda) + ")";
}

// One factor "(1 - 0.4012B - 0.1B**2)" in regression sign convention, or "" when empty.
inline std::string Factor(const std::vector<double>& c, int step, double sign) {
  std::string s;
  bool any = false;
  for (size_t i = 0; i < c.size(); ++i) {
    if (c[i] == 0.0) continue;
    any = true;
    const double v = sign * c[i];
    s += v < 0 ? " - " : " + ";
    s += Format("%.4f", std::fabs(v)) + "B";
    const int lag = static_cast<int>(i + 1) * step;
    if (lag > 1) s += "**" + std::to_string(lag);
  }
  return any ? "(1" + s + ")" : "";
}

}  // namespace quorvane
