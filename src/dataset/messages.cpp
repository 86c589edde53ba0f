#include "dataset/messages.h"

namespace tessaly::dataset::msg {

namespace {
std::string S(std::string_view v) { return std::string(v); }
std::string N(long long v) { return std::to_string(v); }
}  // namespace

std::string SizeCheckEmpty(std::string_view name) {
  return S(name) + " is empty and cannot be processed.";
}

std::string SizeCheckRetained(std::string_view name) {
  return "Since " + S(name) + " contains Retained Data, you cannot add generated series.";
}

std::string SizeCheckTooManySeries(std::string_view name) {
  return "The number of series in " + S(name) +
         " exceeds the maximum allowed and cannot be processed.";
}

std::string SizeMismatch(std::string_view name) {
  return "The total size of " + S(name) +
         " does not agree with the anticipated size based on the individual DataProp()s and the "
         "fixed number of objectives and dataproperties. You must determine if the problem lies "
         "in the values supplied or the DataProp()s; and correct your .asc file accordingly. "
         "Please see \"Create Your Own ASC File\" in the user's guide for detailed instructions.";
}

std::string FileNotFound(std::string_view folder) {
  return "The asc file was not found in the input folder " + std::string(folder) +
         ". Check the project's input folder.";
}

std::string DifferentSeasonality(int run_seasonality, std::string_view name, int seasonality) {
  return "You cannot process datasets with different seasonalities in the same xml. Since the "
         "initial series seasonality is " +
         N(run_seasonality) + " and " + S(name) + " seasonality is " + N(seasonality) +
         ",it will not be processed.";
}

std::string CausalInUnivariateRun(std::string_view project, std::string_view name) {
  return S(project) +
         " You cannot process univariate and causal series in the same xml. Since the initial "
         "series is a univariate and " +
         S(name) + " is a causal, it will not be processed.";
}

std::string UnivariateInCausalRun(std::string_view project, std::string_view name) {
  return S(project) +
         " You cannot process univariate and causal series in the same xml. Since the initial "
         "series is a causal and " +
         S(name) + " is a univariate, it will not be processed.";
}

std::string Malformed(std::string_view name) {
  return S(name) + " is malformed. Please review and correct your file and try again.";
}

std::string DataPropNonNumeric(int index) {
  return "Your .asc file indicates that DataProp(" + N(index) +
         ") contains a nonnumeric character. Please correct your asc file.";
}

std::string NumberOfSeriesRange(int limit) {
  return "Your .asc file indicates that the Number of Series in the problem set is outside the "
         "range for this property, 1 to " +
         N(limit) +
         ". Please ascertain the actual number of series and correct DataProp(1) in your .asc "
         "file .";
}

std::string SeasonalityRange(int limit) {
  return "Your .asc file indicates that the Seasonality used in the problem set is outside the "
         "range for this property, 1 to " +
         N(limit) +
         ".  Please ascertain the actual Seasonality and correct DataProp(2) in your .asc file.";
}

std::string BeginningYearRange() {
  return "Your .asc file indicates that the Beginning Year/Major Period used in the problem set "
         "is outside the range for this property, 1 to 9999. Please ascertain the actual "
         "Beginning Year/Major Period and correct DataProp(3) in your .asc file.";
}

std::string BeginningPeriodRange(int seasonality) {
  return "Your .asc file indicates that the Beginning/Minor Period used in the problem set is "
         "outside the range for this property, 1 to " +
         N(seasonality) +
         ". Please ascertain the actual Beginning/Minor Period and correct DataProp(4) in your "
         ".asc file.";
}

std::string HistoricalValuesRange(int value, int limit) {
  return "Your .asc file indicates that the Number of Historical Values for each series in the "
         "problem set, " +
         N(value) + ", is outside the range for this property, 1 to " + N(limit) +
         ". Please ascertain the actual Number of Historical Values for each series and correct "
         "DataProp(5) in your .asc file.";
}

std::string FutureValuesRange(int value, int limit) {
  return "Your .asc file indicates that the Number of Future Values used in the problem set, " +
         N(value) + ", is outside the range for this property, 0 to " + N(limit) +
         ". Please ascertain the actual Number of Future Values and correct DataProp(1) in your "
         ".asc file.";
}

std::string RetainedDataRange(int value, int limit) {
  return "Your .asc file indicates that the Number of Retained Data used in the problem set, " +
         N(value) + ", is outside the range for this property, 0 to " + N(limit) +
         ". Please ascertain the actual Number of Retained Data and correct DataProp(1) in your "
         ".asc file.";
}

std::string RetainedValuesRange(int value, int limit) {
  return "Your .asc file indicates that the Number of Retained Values used in the problem set, " +
         N(value) + ", is outside the range for this property, 0 to " + N(limit) +
         ". Please ascertain the actual Number of Future Values and correct DataProp(1) in your "
         ".asc file.";
}

std::string ForecastsRange(int limit) {
  return "Your .asc file indicates that the Number of Forecast Values to be Calculated used in "
         "the problem set is outside the range for this property, 0 to " +
         N(limit) +
         ". Please ascertain the actual Number of Forecast Values to be Calculated; and correct "
         "DataProp(8) in your .asc file.";
}

std::string InputNameTooLong(std::string_view name) {
  return "The input series name (" + S(name) +
         ") exceeds the limit of 22 characters. Please correct the name in your .asc file. ";
}

std::string OutputNameTooLong(std::string_view name) {
  return "The ouput series name (" + S(name) +
         ") exceeds the limit of 14 characters. Please correct the name in your .asc file. ";
}

std::string DataTypeInvalid(int index, std::string_view value) {
  return "Your .asc file indicates that DataType(" + N(index) + ") is " + S(value) +
         ". Datatypes can only be 0, 1, 2, or 3. Please ascertain the proper DataType; and "
         "correct  DataType(" +
         N(index) + ") in your .asc file.";
}

std::string FutureValuesMustEqualForecasts() {
  return "When DataProperties(8)[number of forecasts to be calculated] is greater than zero(0) "
         "and DataProperties(7) is less than DataProperties(8), DataProperties(6)[number of "
         "future values] must equal DataProperties(8). Please ascertain the correct number for "
         "each variable; and correct your .asc file.";
}

std::string NameRepaired(std::string_view name) {
  return "The series name, " + S(name) +
         ", is not in the correct format. The series name cannot include spaces, period(.), "
         "exclamation point(!), backquote('), Brackets([]). wild card characters such as * or ?, "
         "and ASCII character 0 through 31.  All unacceptable characters will be replaced by an "
         "Underscore(_). You may wish to correct the .asc file later.";
}

std::string ExceedsRecordBounds(std::string_view what, long long count, long long bound) {
  return "Your .asc file asks for " + N(count) + " " + S(what) +
         ", more than the " + N(bound) +
         " a dataset can hold. Please ascertain the actual numbers in DataProp() and correct "
         "your .asc file.";
}

std::string CodeNotFound(long code) {
  return "Error number " + N(code) + " occured.  This error was" +
         " not found in your \"report.xml\", making it potentially " +
         "outdated.  Please contact QVX for details.";
}

std::string ErrorPageLine1(std::string_view asc_name) {
  return "<html><title>" + S(asc_name) + " error report</title>";
}

std::string ErrorPageLine2(std::string_view asc_name) {
  return "<center><h1><u>Error Report for " + S(asc_name) + "</u></h1><br><br>";
}

}  // namespace tessaly::dataset::msg
