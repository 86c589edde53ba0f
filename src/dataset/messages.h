#pragma once
// Every text the dataset checks show or write, in one place. The wording, spacing and
// spelling are the system's own and are kept exactly as users and their scripts know them.
#include <cstdint>
#include <string>
#include <string_view>

namespace tessaly::dataset::msg {

// ---- the quick check before series are added (title "FYI") ----
inline constexpr const char* kFyiTitle = "FYI";
std::string SizeCheckEmpty(std::string_view name);
std::string SizeCheckRetained(std::string_view name);
std::string SizeCheckTooManySeries(std::string_view name);
std::string SizeMismatch(std::string_view name);

// ---- the run's checks, written to Process Errors.Err ----
inline constexpr const char* kEmptyFile = "The asc file is empty.";
// A project entry that names no file: a wrong input folder, a file moved or a broken link.
std::string FileNotFound(std::string_view folder);
inline constexpr const char* kNotAFile =
    "The asc file is not a data file (a folder, a device or a pipe); it was not read.";
inline constexpr const char* kTooManySeries =
    "The number of series in the dataset exceeds the maximum allowed.";
std::string DifferentSeasonality(int run_seasonality, std::string_view name, int seasonality);
std::string CausalInUnivariateRun(std::string_view project, std::string_view name);
std::string UnivariateInCausalRun(std::string_view project, std::string_view name);
std::string Malformed(std::string_view name);

std::string DataPropNonNumeric(int index);
std::string NumberOfSeriesRange(int limit);
std::string SeasonalityRange(int limit);
std::string BeginningYearRange();
std::string BeginningPeriodRange(int seasonality);
std::string HistoricalValuesRange(int value, int limit);
std::string FutureValuesRange(int value, int limit);
std::string RetainedDataRange(int value, int limit);
std::string RetainedValuesRange(int value, int limit);
std::string ForecastsRange(int limit);
std::string InputNameTooLong(std::string_view name);
std::string OutputNameTooLong(std::string_view name);
std::string DataTypeInvalid(int index, std::string_view value);
std::string FutureValuesMustEqualForecasts();
std::string NameRepaired(std::string_view name);

// Beyond the checks above: a header whose blocks cannot fit the record's fixed bounds.
std::string ExceedsRecordBounds(std::string_view what, long long count, long long bound);

// ---- the error catalogue ----
std::string CodeNotFound(long code);
std::string ErrorPageLine1(std::string_view asc_name);
std::string ErrorPageLine2(std::string_view asc_name);
inline constexpr const char* kErrorPageLine4 = "</center></html>";

}  // namespace tessaly::dataset::msg
