#include "engine_test_data.h"

#include <cmath>

#include "support/program_folder.h"

namespace quorvane::testdata {

std::filesystem::path RepoPath(const std::string& relative) {
  auto direct = tessaly::testing::SourcePath(relative);
  if (std::filesystem::exists(direct)) return direct;
  return tessaly::testing::SourcePath("../" + relative);
}

std::string ShippedRules() { return tessaly::testing::ReadFile(RepoPath("resources/program/ENGINE.CND")); }

std::string RulesWith(std::string text, const std::vector<std::pair<std::string, std::string>>& values) {
  for (const auto& [key, value] : values) {
    const size_t bar = text.find('|', text.find(key));
    const size_t end = text.find_first_of("\r\n", bar);
    text.replace(bar + 1, end - bar - 1, value);
  }
  return text;
}

const std::vector<double>& AirlinePassengers() {
  static const std::vector<double> y = {
      112, 118, 132, 129, 121, 135, 148, 148, 136, 119, 104, 118, 115, 126, 141, 135, 125, 149,
      170, 170, 158, 133, 114, 140, 145, 150, 178, 163, 172, 178, 199, 199, 184, 162, 146, 166,
      171, 180, 193, 181, 183, 218, 230, 242, 209, 191, 172, 194, 196, 196, 236, 235, 229, 243,
      264, 272, 237, 211, 180, 201, 204, 188, 235, 227, 234, 264, 302, 293, 259, 229, 203, 229,
      242, 233, 267, 269, 270, 315, 364, 347, 312, 274, 237, 278, 284, 277, 317, 313, 318, 374,
      413, 405, 355, 306, 271, 306, 315, 301, 356, 348, 355, 422, 465, 467, 404, 347, 305, 336,
      340, 318, 362, 348, 363, 435, 491, 505, 404, 359, 310, 337, 360, 342, 406, 396, 420, 472,
      548, 559, 463, 407, 362, 405, 417, 391, 419, 461, 472, 535, 622, 606, 508, 461, 390, 432};
  return y;
}

EngineArrays MonthlyRequest(const std::vector<double>& y, int forecasts, int retained,
                            const std::string& name) {
  EngineArrays a;
  a.objective_values = {0, 0, 0};
  int n = static_cast<int>(y.size());
  a.property_values = {1, 12, 1949, 1, static_cast<int16_t>(n), 0, static_cast<int16_t>(retained),
                       static_cast<int16_t>(forecasts)};
  a.series_names[0] = name;
  a.series_types[0] = 0;
  for (int t = 0; t < n; ++t) a.series_data[t] = y[t];
  for (int t = 0; t < retained; ++t) a.retained_data[t] = y[n - retained + t];
  return a;
}

EngineArrays CausalRequest(int n, int future, int forecasts) {
  EngineArrays a;
  a.objective_values = {0, 0, 0};
  a.property_values = {3, 4, 2001, 2, static_cast<int16_t>(n), static_cast<int16_t>(future), 0,
                       static_cast<int16_t>(forecasts)};
  a.series_names[0] = "ADVERT";
  a.series_names[1] = "PRICE";
  a.series_names[2] = "SALES";
  a.series_types[0] = 1;
  a.series_types[1] = 0;
  a.series_types[2] = 0;
  for (int t = 0; t < n; ++t) {
    a.series_data[t] = 10 + (t % 4);
    a.series_data[n + t] = 5 + 0.1 * t;
    a.series_data[2 * n + t] = 100 + 2 * a.series_data[t] - a.series_data[n + t];
  }
  for (int t = 0; t < future; ++t) a.future_data[t] = 20 + t;
  return a;
}

ModelResult KnownResult(int n, int h, int left_out) {
  ModelResult r;
  r.lambda = 0.0;
  r.p = 1;
  r.Q = 1;
  r.period = 12;
  r.has_constant = true;
  r.coefficients = {
      {"CONSTANT", "constant", 0, 12.5, 1.25, 10.0, 0.0},
      {"AR(1)", "ar", 1, 0.6123456789, 0.05, 12.25, 0.0},
      {"SMA(12)", "sma", 12, -0.4, 0.1, -4.0, 0.0001},
      {"LEVEL SHIFT 1951/6", "intervention", 0, 25.0, 5.0, 5.0, 0.00002},
  };
  r.interventions = {{2, 30, 1951, 6, 25.0, 5.0}, {1, n, 1949 + (n - 1) / 12, (n - 1) % 12 + 1, -40.0, -4.2}};
  r.equation = "log PASSENGERS(t) = 12.5 + 25 LS(1951/6) + N(t)\n(1 - 0.6123B) N(t) = (1 + 0.4B**12) a(t)";
  r.description = "ARIMA(1,0,0)(0,0,1)12";
  r.leading_left_out = left_out;
  for (int t = 0; t < n; ++t) {
    bool fitted = t >= left_out + 1;
    r.fitted.push_back(fitted ? 100.0 + t : kMissingValue);
    r.residuals.push_back(fitted ? (t % 2 ? 1.5 : -1.5) : kMissingValue);
    r.cleansed.push_back(100.0 + t - (t >= 29 ? 25.0 : 0.0));
  }
  for (int k = 0; k < h; ++k) {
    r.forecasts.push_back(500.0 + k);
    r.lower.push_back(450.0 + k);
    r.upper.push_back(550.0 + k);
  }
  r.observations = n - left_out;
  r.parameters = 4;
  r.degrees_of_freedom = r.observations - r.parameters;
  r.sse = 1234.5;
  r.variance = 9.5;
  r.r_squared = 0.987;
  r.aic = 501.25;
  r.bic = 512.5;
  r.loglik = -246.625;
  r.mape = 2.75;
  r.ljung_box_q = 18.2;
  r.ljung_box_p = 0.79;
  r.ljung_box_lags = 24;
  r.normality_stat = 1.1;
  r.normality_p = 0.58;
  r.residual_acf = {0.05, -0.21, 0.1};
  r.residual_acf_limit = 2.0 / std::sqrt(static_cast<double>(n));
  r.notes = {{"Transform", "log chosen by likelihood"}, {"Differencing", "none"}};
  r.warnings = {"A test warning."};
  return r;
}

}  // namespace quorvane::testdata
