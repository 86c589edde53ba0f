#pragma once
// The import wizard's logic without its window: opening a workbook for import, the name
// repairs, the series of a sheet by orientation, the filter of records, the checks of the
// series properties, the summary page and the finish. frmWizardBP and `tsly import` both
// work through this.
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "spreadsheet/asc_from_table.h"
#include "spreadsheet/properties_sheet.h"
#include "spreadsheet/workbook.h"

namespace tessaly::spreadsheet {

namespace fs = std::filesystem;

// clFileInfo: a path broken into its parts.
struct clFileInfo {
  std::string Drive, Ext, Filename, SourcePath, FullPath;
  void parsepath(const std::string& path);
};

// The name repair: trimmed, cut after 14 characters, every character other than
// ( ) + - digits letters _ made "_".
std::string CheckSeriesName(const std::string& name, bool& truncated, bool& illegal);
// The box text for the repairs that happened ("" when none).
std::string SeriesNameErrorMessage(bool truncated, bool illegal);

// ImpField: one series of the source.
struct ImpField {
  std::string FieldName;  // as in the source
  std::string NewName;    // as it will be written
  std::string FieldType;  // "Integer", "Double", "Currency", "Date", "Boolean", "Char", "Unknown"
  bool Skip = false;
  std::string filter;
  int index = 0;          // column (or row) of the grid
  int numeric_cells = 0;  // cells that hold numbers (a heading row of dates holds none)
};

// Opening a file for import: the workbook, or the message that refuses it.
struct ImportOpen {
  Workbook book;
  std::string message;  // "" when opened
  bool ok() const { return message.empty(); }
};
ImportOpen OpenForImport(const fs::path& path);

// The number of series of a sheet: columns (rows) from the first, stopping at the first
// whose first cell is blank.
int CheckNumOfSeries(const Grid& grid, bool tabular);
// True when the first cell is blank: refused when the sheet holds no names.
bool CkBlankR1C1(const Grid& grid);

// The sheet's series with their names: from the first row (column) with line feeds
// removed and repaired, or "S-" + number without names. The flags tell which repairs were made.
std::vector<ImpField> SeriesFields(const Grid& grid, bool tabular, bool names_in_first,
                                   bool& truncated, bool& illegal);

// The filter of step 3: the records whose cell of the chosen series shows `value`
// (as the grid shows it); every record when the field is 0.
std::vector<int> FilterRecords(const Grid& grid, bool tabular, bool names_in_first, int field_index,
                               const std::string& value);
// The distinct values of a series, for the value list of the filter.
std::vector<std::string> FieldValues(const Grid& grid, bool tabular, bool names_in_first, int field_index);

// The series properties as the wizard's fields hold them.
struct ImportFigures {
  std::string seasonality, begin_year, begin_period, observations, forecasts;
  std::string output_series_name;  // txtOutSeriesName
  std::string output_series;       // cboOutputSeries ("" none)
  std::string directory;
};
// The first refused figure: message and title; nullopt when all are good.
struct FigureProblem {
  std::string message, title;
};
[[nodiscard]] std::optional<FigureProblem> ValidateFigures(const ImportFigures& f);
// The labels of the empty fields that block Next (IncompleteData).
std::vector<std::string> IncompleteData(const ImportFigures& f);
// Whether the seasonality note for 5 or 7 shows.
bool ShowsFiveOrSevenNote(const std::string& seasonality);

// The summary page.
std::string SummaryHtml(const fs::path& file, int series_count, const ImportFigures& f);

// The finish: one file per marked series (Batch Import, and Batch Run with a project of
// them), or one file of all marked series with the output series last.
enum class ImportMode { BatchImport, BatchRun, OneFile };
struct ImportRequest {
  GridLayout layout;
  std::vector<ImpField> fields;
  ImportFigures figures;
  ImportMode mode = ImportMode::BatchImport;
  fs::path one_file;      // OneFile: the dataset
  fs::path project_file;  // BatchRun: the project to write (empty: none)
};
struct [[nodiscard]] ImportResult {
  bool ok = true;
  std::string ErrorString;
  std::vector<fs::path> written;
  std::string end_message;  // "Finished importing N series."
};
ImportResult FinishImport(const ImportRequest& request,
                          const std::function<void(const std::string&)>& status = {});

}  // namespace tessaly::spreadsheet
