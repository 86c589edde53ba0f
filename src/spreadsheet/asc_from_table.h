#pragma once
// ASC files from tabular data: from a recordset (clsCreateASC, a field a series) and from
// the import wizard's grid (one dataset of the marked series with the output series last,
// or one file per series).
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "dataset/series_properties.h"
#include "spreadsheet/data_access.h"
#include "spreadsheet/grid.h"

namespace tessaly::spreadsheet {

namespace fs = std::filesystem;

class clsCreateASC {
 public:
  fs::path Filename;        // relative names go to OutputFolder
  fs::path OutputFolder;    // empty: the program's folder
  std::string ErrorString;  // why nothing was written
  Recordset* ADO_Recordset = nullptr;
  dataset::clSeriesProperties SeriesProperties;

  // Writes the header from SeriesProperties, a series per field (its name the field's),
  // type 0 each, and every field's values from the first record on (a null writes 0).
  // A value that is no number writes nothing and says so in ErrorString.
  [[nodiscard]] bool Write_File();
};

// One series of the wizard's grid: where it lies (a column in column orientation, a row
// in row orientation) and the name it gets.
struct GridSeries {
  int index = 0;          // column or row of the grid, 1-based
  std::string FieldName;  // as the sheet has it
  std::string NewName;    // as the file gets it
  bool marked = true;     // the "Batch Run" tick
};

// Where a grid's values lie, and which records (rows in column orientation, columns in
// row orientation) the filter kept.
struct GridLayout {
  const Grid* grid = nullptr;
  bool tabular = true;          // series run down the columns
  bool names_in_first = true;   // the first row (column) holds names and is skipped
  std::vector<int> records;     // the kept records, in order
  // The value of series `s` at record `r` (grid indices); false when the cell is text.
  [[nodiscard]] bool Value(int s, int r, std::optional<double>& value) const;
};

// The records of a grid: every row (column) after the names, up to the last used one.
std::vector<int> AllRecords(const Grid& grid, bool tabular, bool names_in_first);

struct [[nodiscard]] GridWriteResult {
  bool ok = true;
  std::string ErrorString;
  std::vector<fs::path> written;
};

// One file of the marked series: the others in order, then the output series (named
// `output_series`, or with none chosen the last marked series under `output_name`).
GridWriteResult WriteAscFromGrid(const GridLayout& layout, const std::vector<GridSeries>& series,
                                 const std::string& output_series, const std::string& output_name,
                                 dataset::clSeriesProperties properties, const fs::path& file);

// One file per marked series, <NewName>.asc in `folder`; `status` hears "Open File",
// "Gather Data", "Write File" for each.
GridWriteResult WriteAscPerSeries(const GridLayout& layout, const std::vector<GridSeries>& series,
                                  dataset::clSeriesProperties properties, const fs::path& folder,
                                  const std::function<void(const std::string&)>& status = {});

}  // namespace tessaly::spreadsheet
