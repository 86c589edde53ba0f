#pragma once
// The modelling core's own texts: warnings and the headings of its notes.
namespace quorvane::texts {

inline constexpr const char* kObjectiveAsAutomatic =
    "Objective %d is not available yet; the series was modelled automatically.";
inline constexpr const char* kMissingInterpolated =
    "%d missing value(s) in the output series were filled by linear interpolation.";
inline constexpr const char* kTooFewObservations =
    "Too few observations to estimate a model; the forecast repeats the last value.";
inline constexpr const char* kConstantSeries =
    "The output series is constant; the forecast repeats its value with no uncertainty.";
inline constexpr const char* kNotConverged =
    "Estimation stopped at the maximum number of iterations before the convergence criteria were met.";
inline constexpr const char* kFallbackModel =
    "No model of the search could be estimated; a simple model was used instead.";
inline constexpr const char* kEstimationDisabled =
    "Model estimation is disabled in the rules; the starting values were kept.";
inline constexpr const char* kForecastingDisabled = "Model forecasting is disabled in the rules.";
inline constexpr const char* kHorizonTooLong = "More than 600 forecasts were asked for; 600 are given.";

inline constexpr const char* kHeadData = "Data";
inline constexpr const char* kHeadTransform = "Transformation";
inline constexpr const char* kHeadDifferencing = "Differencing";
inline constexpr const char* kHeadSearch = "Model search";
inline constexpr const char* kHeadNecessity = "Necessity";
inline constexpr const char* kHeadSufficiency = "Sufficiency";
inline constexpr const char* kHeadModel = "Final model";
inline constexpr const char* kHeadDiagnosis = "Diagnosis";

}  // namespace quorvane::texts
