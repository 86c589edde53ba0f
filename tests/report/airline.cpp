#include "airline.h"

#include <cmath>

#include "platform/textfile.h"
#include "support/program_folder.h"

namespace tessaly::testing {

report::GraphInput AirlineInput(int horizon) {
  report::GraphInput in;
  in.series_name = "AIRLINE";
  in.begin_year = 1949;
  in.begin_period = 1;
  in.seasonality = 12;
  in.date_text = "11/22/2026";
  const int n = 144, s = 12;
  // The sample ASC file holds the passengers from its fourteenth line on.
  const auto lines = platform::ReadAllLines(SourcePath("tests/dataset/data/files/airline.asc"));
  for (int t = 0; t < n; ++t) in.actuals.push_back(std::stod(lines.value().at(13 + t)));

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
