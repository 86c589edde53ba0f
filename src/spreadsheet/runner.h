#pragma once
// The workbook runner (XLSEngine): every row of a sheet is one series; each goes through
// the engine (RunMode 6) with the run's own engine call and cancel, its graphs are drawn
// when asked, and its forecasts are written back to the end of its row, with the next
// periods' headings, into "tslyb.xlsx" (sheet "tessaly") beside the input. The input
// workbook is only read.
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "batch/run.h"
#include "batch/graph_preferences.h"
#include "spreadsheet/properties_sheet.h"
#include "spreadsheet/workbook.h"

namespace tessaly::spreadsheet {

namespace fs = std::filesystem;

// The run's switches (CMDLineOptions), any order and any case.
struct RunnerSwitches {
  bool all = false, no_graphs = false, status = false, limits = false, nl = false;
  bool act = false, act_cleanse = false, act_fit = false, act_fore = false, act_fit_fore = false;
  bool act_res = false, fit_fore = false, fore = false, res = false;
  bool graphs_wanted = false;

  static RunnerSwitches Parse(const std::vector<std::string>& tokens);
  bool AnyKind() const;
  // The graphs to draw: none when no graphs are wanted; the named kinds when some are named
  // (and not "/ALL"); every kind otherwise. Limits only with "/P".
  batch::GraphPreferences Preferences() const;
};

// The layout of a sheet: the date of the first observation and the periods of row 1.
struct SheetLayout {
  int year = 0, month = 0;
  int last_column = 0;  // the last used column of row 1
  int observations() const { return last_column - 1; }
};
// Reads row 1: "2001Jan" (four-digit year, three-letter month) or a date cell in column 2.
// The message when it cannot: kDateBlank for an empty cell, kDateMalformed otherwise.
[[nodiscard]] bool ReadSheetLayout(const Grid& grid, SheetLayout& layout, std::string& message);

// The heading of a period: year + three-letter month for seasonality 12, else "year/period".
std::string PeriodHeading(int year, int period, int seasonality);

struct RunnerSettings {
  RunnerSwitches switches;
  // The dialog's figures (from its fields or the PROPERTIES sheet); the command line takes
  // the defaults: seasonality 12, the year and month of the date, 3 x seasonality forecasts.
  bool use_figures = false;
  SheetFigures figures;
};

// What the runner uses of the rest of the program; tests put fakes here.
struct RunnerHost {
  fs::path program_folder;
  // Each log line of the run; with "/S" the caller shows them in the status window.
  std::function<void(const std::string&)> log;
  // One engine call (default: the run's CallEngine with the installed progress wait).
  batch::EngineCallFunction engine_call;
  // The graphs; none drawn when null.
  std::shared_ptr<batch::RunReports> reports;
  // The run's engine state, which its cancel button sets; the caller keeps it for the run.
  std::shared_ptr<batch::EngineSession> session = std::make_shared<batch::EngineSession>();
};

struct [[nodiscard]] RunnerResult {
  bool opened = false;     // the workbook and sheet could be read
  bool finished = false;   // the result workbook was saved
  bool canceled = false;
  int rows = 0;            // series rows of the sheet
  int forecast_rows = 0;   // rows that got forecasts
  std::string error;       // the raised text that ended the sheet
  fs::path result_book;
};

// The run of one sheet. `worksheet` is found without regard to case.
RunnerResult XLSEngine(const fs::path& file, const std::string& worksheet, const RunnerSettings& settings,
                       RunnerHost& host);

// `tessaly BOOK.xlsx SHEET [switches]`: the run with messages on standard error, the log
// lines with "/S", graphs drawn by `reports`. 0 when the run ended, 1 when the sheet was
// ended by an error or a cancel, 2 when the file or sheet could not be opened.
[[nodiscard]] int RunWorkbookFromCommandLine(const fs::path& file, const std::string& worksheet,
                               const std::vector<std::string>& options,
                               std::shared_ptr<batch::RunReports> reports);

}  // namespace tessaly::spreadsheet
