#pragma once
// The import without a window: the wizard's steps taken in order on the figures given,
// each refusal shown through the dialog host as the wizard shows it. `tsly import` runs this.
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tessaly::spreadsheet {

namespace fs = std::filesystem;

struct ImportJob {
  fs::path book;
  std::string sheet;              // empty: the first sheet other than PROPERTIES
  bool rows = false;              // series run along the rows
  bool no_names = false;          // the first row (column) holds data, not names
  std::optional<int> seasonality; // over the PROPERTIES sheet, over 12
  std::optional<int> major, minor;
  std::optional<int> forecasts;   // default 3 x seasonality
  fs::path out;                   // empty: the workbook's folder
  fs::path project;               // a project of the files, ready to run
  fs::path single;                // one dataset of all series instead of one file each
  std::string output_series;      // with `single`: the dependent series (default the last)
};

struct [[nodiscard]] ImportJobResult {
  int status = 2;  // 0 all written, 1 some series refused, 2 nothing written
  std::vector<fs::path> written;
  std::string end_message;
  std::vector<std::string> skipped;  // series without a single number (headings, codes)
};

ImportJobResult RunImportJob(const ImportJob& job);

}  // namespace tessaly::spreadsheet
