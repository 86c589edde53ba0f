#pragma once
// All forecasts of a project in one table: the run leaves one <stem>.PRO per forecast
// dataset in the project's OUTPUT folder (period, forecast and the limits); the export
// puts them side by side, one row per period and three columns per series, and writes the
// table as <project>FORECASTS.csv and <project>FORECASTS.xlsx. The File menu and
// `tsly export` both call this.
#include <filesystem>
#include <string>
#include <vector>

#include "spreadsheet/grid.h"

namespace tessaly::batch {
class cBatchFile;
}

namespace tessaly::spreadsheet {

namespace fs = std::filesystem;

struct ForecastExport {
  Grid table;                          // row 1 the headings, column 1 the periods
  std::vector<std::string> exported;   // the datasets whose forecasts are in the table
  std::vector<std::string> missing;    // the datasets with no forecasts (not run, rejected, failed)
  fs::path csv, xlsx;                  // the files written
};

// The table of the forecasts of the project's datasets found in `output`: "PERIOD", then
// for each dataset "<STEM> FORECAST" and its two limits with the headings the forecast file
// gives them ("<STEM> LOWER 95%", "<STEM> UPPER 95%"); the periods of all series in time
// order, a cell left empty where a series has no forecast for that period.
ForecastExport CollectForecasts(const batch::cBatchFile& project, const fs::path& output);

// Writes the table as CSV (RFC 4180, CR LF) and as a workbook of one sheet "Forecasts" into
// `folder` (the project's OUTPUT when empty). False, with `error` set, when nothing could be
// exported or a file could not be written.
[[nodiscard]] bool ExportForecasts(const batch::cBatchFile& project, const fs::path& output, const fs::path& folder,
                     ForecastExport& result, std::string& error);

}  // namespace tessaly::spreadsheet
