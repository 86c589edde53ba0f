#include "airline.h"

#include <cmath>

namespace tessaly::testing {

namespace {

constexpr double kPassengers[144] = {
    112, 118, 132, 129, 121, 135, 148, 148, 136, 119, 104, 118,  // 1949
    115, 126, 141, 135, 125, 149, 170, 170, 158, 133, 114, 140,  // 1950
    145, 150, 178, 163, 172, 178, 199, 199, 184, 162, 146, 166,  // 1951
    171, 180, 193, 181, 183, 218, 230, 242, 209, 191, 172, 194,  // 1952
    196, 196, 236, 235, 229, 243, 264, 272, 237, 211, 180, 201,  // 1953
    204, 188, 235, 227, 234, 264, 302, 293, 259, 229, 203, 229,  // 1954
    242, 233, 267, 269, 270, 315, 364, 347, 312, 274, 237, 278,  // 1955
    284, 277, 317, 313, 318, 374, 413, 405, 355, 306, 271, 306,  // 1956
    315, 301, 356, 348, 355, 422, 465, 467, 404, 347, 305, 336,  // 1957
    340, 318, 362, 348, 363, 435, 491, 505, 404, 359, 310, 337,  // 1958
    360, 342, 406, 396, 420, 472, 548, 559, 463, 407, 362, 405,  // 1959
    417, 391, 419, 461, 472, 535, 622, 606, 508, 461, 390, 432,  // 1960
};

}  // namespace

report::GraphInput AirlineInput(int horizon) {
  report::GraphInput in;
  in.series_name = "AIRLINE";
  in.begin_year = 1949;
  in.begin_period = 1;
  in.seasonality = 12;
  in.date_text = "11/22/2026";
  const int n = 144, s = 12;
  in.actuals.assign(kPassengers, kPassengers + n);

  // Drift and spread of the yearly log growth.
  double drift = 0, spread = 0;
  for (int t = s; t < n; ++t) drift += std::log(in.actuals[t] / in.actuals[t - s]);
  drift /= n - s;
  for (int t = s; t < n; ++t) {
    const double e = std::log(in.actuals[t] / in.actuals[t - s]) - drift;
    spread += e * e;
  }
  spread = std::sqrt(spread / (n - s - 1));

  in.fitted.assign(n, report::kMissingValue);
  in.residuals.assign(n, report::kMissingValue);
  in.cleansed = in.actuals;
  for (int t = s; t < n; ++t) {
    in.fitted[t] = in.actuals[t - s] * std::exp(drift);
    in.residuals[t] = in.actuals[t] - in.fitted[t];
    // A point far from its fit is taken as an outlier and cleansed to the fit.
    if (std::fabs(std::log(in.actuals[t] / in.fitted[t]) ) > 2.2 * spread)
      in.cleansed[t] = in.fitted[t];
  }
  for (int h = 1; h <= horizon; ++h) {
    const int years = (h - 1) / s + 1;
    const double base = in.actuals[n - s + (h - 1) % s];
    const double centre = std::log(base) + drift * years;
    const double width = 1.96 * spread * std::sqrt(static_cast<double>(years));
    in.forecasts.push_back(std::exp(centre));
    in.lower.push_back(std::exp(centre - width));
    in.upper.push_back(std::exp(centre + width));
  }
  return in;
}

}  // namespace tessaly::testing
