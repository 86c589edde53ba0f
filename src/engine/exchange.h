#pragma once
// The arrays that cross the engine boundary, and the two files that carry them between
// the front-end's engine client and the qvxengine process.
//
// Each array keeps its fixed bounds on both sides. Element k (1-based in the contract)
// is stored at index k-1. The files hold only the used part of each array (up to its last
// element that differs from the default) together with the full bound, so a 12 MB
// SeriesData costs only what the dataset fills.
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace quorvane {

// Bounds of the contract.
constexpr int kStrings400 = 400;
constexpr int kDoubles20 = 20;
constexpr int kIntegers20 = 20;
constexpr int kDoubles10000 = 10000;
constexpr int kRetainedData = 7800;
constexpr int kSeriesTypes = 150;
constexpr int kObjectives = 3;
constexpr int kDoubles745 = 745;
constexpr int kForecastValues = 1800;
constexpr int kStrings2250 = 2250;
constexpr int kFutureData = 89400;
constexpr int kSeriesData = 1590000;
constexpr int kSeriesNames = 150;
constexpr int kPropertyValues = 8;

// The value the engine writes where it has no fit or residual.
constexpr double kMissingValue = 99999999999.0;

// RunMode values.
constexpr int16_t kRunModeProject = 4;
constexpr int16_t kRunModeSpreadsheet = 6;

// Error code for a run stopped through KILLQUOR.QVX.
constexpr int16_t kUserTerminated = 21;

struct EngineArrays {
  EngineArrays();  // every array at its full bound, zero / empty

  // Request side (set by the front-end).
  int16_t run_mode = kRunModeProject;
  bool array_input = true;
  std::string work_folder;
  std::vector<int16_t> objective_values;   // 3
  std::vector<int16_t> property_values;    // 8: DataProp in, ReturnedDataProp out
  std::vector<std::string> series_names;   // 150
  std::vector<int16_t> series_types;       // 150
  std::vector<double> series_data;         // 1,590,000
  std::vector<double> future_data;         // 89,400
  std::vector<double> retained_data;       // 7800

  // Work arrays: set on the way in, returned on the way out.
  std::vector<int16_t> integers20;         // 20
  std::vector<std::string> strings2250;    // 2250
  std::vector<std::string> strings400;     // 400
  std::vector<double> forecast_values;     // 1800: 1-600 forecasts, 601-1200 lower, 1201-1800 upper
  std::vector<double> doubles10000a;       // fitted values
  std::vector<double> doubles10000b;       // residuals
  std::vector<double> doubles10000c;       // cleansed series
  std::vector<double> doubles745;          // interventions, five elements each
  std::vector<double> doubles20;           // statistics

  // Response only.
  int16_t error_code = 0;
};

enum class ExchangeKind : uint32_t { Request = 1, Response = 2 };

// File names in the working folder.
inline constexpr const char* kRequestFile = "QVXREQUEST.BIN";
inline constexpr const char* kResponseFile = "QVXRESPONSE.BIN";

// Writes the arrays. False when the file cannot be written whole.
bool WriteExchangeFile(const std::filesystem::path& path, ExchangeKind kind,
                       const EngineArrays& arrays);

// Reads a file written by WriteExchangeFile. nullopt when it is missing, of another kind
// or version, truncated, or holds an array whose bound differs from the contract's.
std::optional<EngineArrays> ReadExchangeFile(const std::filesystem::path& path,
                                             ExchangeKind kind);

}  // namespace quorvane
