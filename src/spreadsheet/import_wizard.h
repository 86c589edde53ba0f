#pragma once
// The Import Wizard's state and steps without its window: the file and its sheets, the
// orientation and name mode, the name grid with its ticks, the filter, the series
// properties, the summary, and the finish. Each refused step shows its message through the
// dialog host and stays where it is. frmWizardBP draws this state and forwards its buttons.
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "spreadsheet/import.h"

namespace tessaly::spreadsheet {

class ImportWizard {
 public:
  static constexpr int kLastStep = 6;

  // Load: reads the file and its PROPERTIES sheet. False (with the message shown) when the
  // file is refused.
  [[nodiscard]] bool Load(const fs::path& file);
  const fs::path& File() const { return file_; }
  const Workbook& Book() const { return book_; }
  std::vector<std::string> Sheets() const;  // the sheets other than PROPERTIES

  int step = 0;
  std::string sheet;
  bool tabular = true;         // "Series are Column Oriented"
  bool names_in_first = true;  // "First row contains Series Names."
  ImportMode mode = ImportMode::BatchImport;
  std::vector<ImpField> fields;  // the name grid: one per series, Skip the cleared tick
  int filter_field = 0;          // 0: no filter; else a field's index
  std::string filter_value;
  ImportFigures figures;

  const Grid* SheetGrid() const;
  // The records the filter keeps (lblRecordCount shows their number).
  std::vector<int> Records() const;
  // The tick row's title: "Batch Run" or "Batch Import".
  std::string TickTitle() const;
  int MarkedCount() const;
  void SelectAll(bool marked);

  // Next from the present step: its checks, then the next step's preparation. False when
  // a check refused (message shown, step unchanged).
  [[nodiscard]] bool Next();
  void Back();
  std::string Summary() const { return SummaryHtml(file_, MarkedCount(), figures); }

  // The finish: `target` is the dataset (one file) or, for Batch Run, the project file;
  // the per-series files go to figures.directory.
  ImportResult Finish(const fs::path& target,
                      const std::function<void(const std::string&)>& status = {});

 private:
  bool PrepareNames();
  fs::path file_;
  Workbook book_;
};

}  // namespace tessaly::spreadsheet
