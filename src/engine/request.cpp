#include "engine/request.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace quorvane {

namespace {

// Series whose values continue into the forecast periods as given.
bool HasFutureValues(int type) { return type >= 1 && type <= 3; }

void Fail(PreparedRequest& out, int16_t code, std::string detail) {
  out.error_code = code;
  out.error_detail = std::move(detail);
}

std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

}  // namespace

PreparedRequest PrepareRequest(const EngineArrays& a, const EngineRules& rules) {
  PreparedRequest out;
  DatasetShape& s = out.shape;
  const auto& dp = a.property_values;
  s.series = dp[0];
  s.seasonality = dp[1];
  s.begin_year = dp[2];
  s.begin_period = dp[3];
  s.observations = dp[4];
  s.future = dp[5];
  s.retained = dp[6];
  s.forecasts = dp[7];

  if (s.series < 1 || s.series > kSeriesNames) {
    Fail(out, 2201, "DataProp(1) = " + std::to_string(s.series) + " series; 1 to 150 are possible.");
    return out;
  }
  if (s.observations < 1 || s.observations > kDoubles10000) {
    Fail(out, 2180, "DataProp(5) = " + std::to_string(s.observations) +
                        " observations; 1 to 10000 are possible.");
    return out;
  }
  if (static_cast<long>(s.series) * s.observations > kSeriesData) {
    Fail(out, 2201, "The series hold more observations than the data array can carry.");
    return out;
  }
  if (s.seasonality < 1 || s.seasonality > 200) {
    Fail(out, 2189, "DataProp(2) = " + std::to_string(s.seasonality) + " is not a seasonality.");
    return out;
  }
  int inputs_with_future = 0;
  for (int i = 0; i < s.series; ++i) {
    out.names.push_back(a.series_names[i]);
    out.types.push_back(a.series_types[i]);
    if (i < s.series - 1 && HasFutureValues(a.series_types[i])) ++inputs_with_future;
  }
  if (out.types.back() != 0) {
    Fail(out, 2219, "The last series, " + out.names.back() + ", has type " +
                        std::to_string(out.types.back()) + ".");
    return out;
  }
  if (s.future < 0 || s.future > 600 ||
      static_cast<long>(inputs_with_future) * s.future > kFutureData) {
    Fail(out, 2181, "DataProp(6) = " + std::to_string(s.future) + " future values.");
    return out;
  }
  if (s.retained < 0 || s.retained > 600 || s.retained >= s.observations ||
      static_cast<long>(s.series) * s.retained > kRetainedData) {
    Fail(out, 2182, "DataProp(7) = " + std::to_string(s.retained) + " retained values with " +
                        std::to_string(s.observations) + " observations.");
    return out;
  }
  if (s.forecasts < 0 || s.forecasts > 600) {
    Fail(out, 2222, "DataProp(8) = " + std::to_string(s.forecasts) + " forecasts.");
    return out;
  }

  const int n = s.observations;
  const int used = n - s.retained;
  ModelingProblem& p = out.problem;
  p.rules = rules;
  p.output_name = out.names.back();
  p.seasonality = s.seasonality;
  p.begin_year = s.begin_year;
  p.begin_period = s.begin_period;
  p.objective = a.objective_values[0];
  const double* output = a.series_data.data() + static_cast<size_t>(s.series - 1) * n;
  out.output_all.assign(output, output + n);
  p.y.assign(output, output + used);
  p.retained.assign(output + used, output + n);

  int future_block = 0;
  for (int i = 0; i + 1 < s.series; ++i) {
    InputSeries in;
    in.name = out.names[i];
    in.type = out.types[i];
    const double* x = a.series_data.data() + static_cast<size_t>(i) * n;
    in.history.assign(x, x + used);
    in.retained.assign(x + used, x + n);
    if (HasFutureValues(in.type)) {
      const double* f = a.future_data.data() + static_cast<size_t>(future_block++) * s.future;
      in.future.assign(f, f + s.future);
    }
    p.inputs.push_back(std::move(in));
  }

  p.horizon = rules.forecasting_enabled ? s.forecasts : 0;
  // Inputs given as future values carry the forecasts only as far as those values reach
  // (past the retained periods, which they cover from the data).
  if (inputs_with_future > 0 && p.horizon > s.future + s.retained) {
    out.warnings.push_back("Forecasts cut from " + std::to_string(p.horizon) + " to " +
                           std::to_string(s.future + s.retained) +
                           ": the input series have future values only that far.");
    p.horizon = s.future + s.retained;
  }
  return out;
}

void FillResponse(const PreparedRequest& req, const ModelResult& r, EngineArrays& out) {
  const DatasetShape& s = req.shape;
  const int n = s.observations;
  out.error_code = r.error_code;

  // Series left in the model: the kept inputs in their order, the output series last.
  std::vector<int> kept;
  for (const auto& name : r.inputs_kept) {
    for (int i = 0; i + 1 < s.series; ++i) {
      if (req.names[i] == name && std::find(kept.begin(), kept.end(), i) == kept.end()) {
        kept.push_back(i);
        break;
      }
    }
  }
  kept.push_back(s.series - 1);

  // Only the used parts of the big arrays are rewritten: SeriesData alone is 12 MB.
  const long used_values = static_cast<long>(s.series) * n;
  std::vector<double> given(out.series_data.begin(), out.series_data.begin() + used_values);
  std::fill(out.series_data.begin(), out.series_data.begin() + used_values, 0.0);
  long future_used = 0;
  for (int i = 0; i + 1 < s.series; ++i)
    if (HasFutureValues(req.types[i])) future_used += s.future;
  std::fill(out.future_data.begin(), out.future_data.begin() + future_used, 0.0);
  std::fill(out.series_names.begin(), out.series_names.begin() + s.series, std::string());
  long future_at = 0;
  for (size_t j = 0; j < kept.size(); ++j) {
    int i = kept[j];
    out.series_names[j] = req.names[i];
    std::copy_n(given.begin() + static_cast<long>(i) * n, n,
                out.series_data.begin() + static_cast<long>(j) * n);
    if (i + 1 < s.series && HasFutureValues(req.types[i])) {
      const auto& f = req.problem.inputs[i].future;
      std::copy(f.begin(), f.end(), out.future_data.begin() + future_at);
      future_at += s.future;
    }
  }

  int forecasts = static_cast<int>(std::min<size_t>(r.forecasts.size(), 600));
  out.property_values[0] = static_cast<int16_t>(kept.size());
  out.property_values[4] = static_cast<int16_t>(n);
  out.property_values[7] = static_cast<int16_t>(forecasts);

  std::fill(out.forecast_values.begin(), out.forecast_values.end(), 0.0);
  for (int h = 0; h < forecasts; ++h) {
    out.forecast_values[h] = r.forecasts[h];
    out.forecast_values[600 + h] = h < static_cast<int>(r.lower.size()) ? r.lower[h] : r.forecasts[h];
    out.forecast_values[1200 + h] = h < static_cast<int>(r.upper.size()) ? r.upper[h] : r.forecasts[h];
  }

  // Fitted values, residuals and the cleansed series, one per observation as given; the
  // retained periods and any point the model does not fit carry the missing value.
  auto per_observation = [&](const std::vector<double>& values, std::vector<double>& target,
                             bool actual_when_missing) {
    std::fill(target.begin(), target.end(), 0.0);
    for (int t = 0; t < n && t < kDoubles10000; ++t) {
      double v = kMissingValue;
      if (t < static_cast<int>(values.size())) v = values[t];
      else if (actual_when_missing) v = req.output_all[t];
      target[t] = v;
    }
  };
  per_observation(r.fitted, out.doubles10000a, false);
  per_observation(r.residuals, out.doubles10000b, false);
  // The model has no fit before its first fitted point: the leading observations left out
  // and those that start the differencing, which the core may hand back as their actuals
  // with a zero residual.
  const int no_fit = std::min(n, std::max(0, r.leading_left_out) + r.d + r.D * std::max(1, r.period));
  for (int t = 0; t < no_fit && t < kDoubles10000; ++t) {
    if (out.doubles10000b[t] == 0.0 || out.doubles10000b[t] == kMissingValue) {
      out.doubles10000a[t] = kMissingValue;
      out.doubles10000b[t] = kMissingValue;
    }
  }
  per_observation(r.cleansed, out.doubles10000c, true);

  // Interventions; the observation is counted from the first modelled observation, as
  // the front-end adds the leading observations left out back on.
  std::fill(out.doubles745.begin(), out.doubles745.end(), 0.0);
  int count = static_cast<int>(std::min<size_t>(r.interventions.size(), kMaxInterventions));
  for (int k = 0; k < count; ++k) {
    const Intervention& iv = r.interventions[k];
    out.doubles745[5 * k + 0] = iv.type;
    out.doubles745[5 * k + 1] = iv.observation - r.leading_left_out;
    out.doubles745[5 * k + 2] = iv.major;
    out.doubles745[5 * k + 3] = iv.minor;
    out.doubles745[5 * k + 4] = iv.impact;
  }

  std::fill(out.integers20.begin(), out.integers20.end(), 0);
  auto i20set = [&](int pos, int v) { out.integers20[pos - 1] = static_cast<int16_t>(v); };
  i20set(i20::kLeadingLeftOut, r.leading_left_out);
  i20set(i20::kObservationsUsed, r.observations);
  i20set(i20::kForecasts, forecasts);
  i20set(i20::kInterventions, count);
  i20set(i20::kP, r.p);
  i20set(i20::kD, r.d);
  i20set(i20::kQ, r.q);
  i20set(i20::kSeasonalP, r.P);
  i20set(i20::kSeasonalD, r.D);
  i20set(i20::kSeasonalQ, r.Q);
  i20set(i20::kPeriod, r.period);
  i20set(i20::kInputsKept, static_cast<int>(kept.size()) - 1);
  i20set(i20::kConstant, r.has_constant ? 1 : 0);

  std::fill(out.doubles20.begin(), out.doubles20.end(), 0.0);
  auto d20set = [&](int pos, double v) { out.doubles20[pos - 1] = v; };
  d20set(d20::kVariance, r.variance);
  d20set(d20::kRSquared, r.r_squared);
  d20set(d20::kAic, r.aic);
  d20set(d20::kBic, r.bic);
  d20set(d20::kLogLikelihood, r.loglik);
  d20set(d20::kLambda, r.lambda);
  d20set(d20::kMape, r.mape);
  d20set(d20::kObservations, r.observations);
  d20set(d20::kSse, r.sse);
  d20set(d20::kDegreesOfFreedom, r.degrees_of_freedom);
  d20set(d20::kParameters, r.parameters);
  d20set(d20::kLjungBoxQ, r.ljung_box_q);
  d20set(d20::kLjungBoxP, r.ljung_box_p);
  d20set(d20::kStdError, r.variance > 0 ? std::sqrt(r.variance) : 0.0);
  d20set(d20::kConfidence, req.problem.rules.forecast_confidence);
  d20set(d20::kNormality, r.normality_stat);
  d20set(d20::kNormalityP, r.normality_p);
  d20set(d20::kLjungBoxLags, r.ljung_box_lags);
  d20set(d20::kResidualAcfLimit, r.residual_acf_limit);
  d20set(d20::kForecastsReturned, forecasts);

  std::fill(out.strings400.begin(), out.strings400.end(), std::string());
  auto equation = SplitLines(r.equation);
  for (size_t i = 0; i < equation.size() && i < out.strings400.size(); ++i)
    out.strings400[i] = equation[i];

  std::fill(out.strings2250.begin(), out.strings2250.end(), std::string());
  std::vector<std::string> warnings = req.warnings;
  warnings.insert(warnings.end(), r.warnings.begin(), r.warnings.end());
  for (size_t i = 0; i < warnings.size() && i < out.strings2250.size(); ++i)
    out.strings2250[i] = warnings[i];
}

void FillFailure(int16_t code, const std::string& text, EngineArrays& out) {
  out.error_code = code;
  std::fill(out.strings2250.begin(), out.strings2250.end(), std::string());
  if (!text.empty()) out.strings2250[0] = text;
}

}  // namespace quorvane
