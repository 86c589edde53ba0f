#include "spreadsheet/runner.h"

#include <algorithm>
#include <cmath>

#include "batch/engine/engine_call.h"
#include "batch/engine/engine_client.h"
#include "batch/run_outputs.h"
#include "dataset/asc_dataset.h"
#include "dataset/error_catalogue.h"
#include "platform/dates.h"
#include "platform/numfmt.h"
#include "platform/paths.h"
#include "platform/progress_wait.h"
#include "spreadsheet/texts.h"

namespace tessaly::spreadsheet {

namespace {

constexpr const char* kMonths[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

std::string EngineErrorText(int code) {
  for (const auto& row : dataset::EngineCatalogue())
    if (row.code == code) return row.text;
  return "Error code " + std::to_string(code);
}

// Raised by a step of the run: its text ends the sheet.
struct SheetError {
  std::string text;
};

// What every row of a run gets: the seasonality, the first period and the forecasts.
struct RunFigures {
  int seasonality = 12, year = 0, period = 0, forecasts = 36;
};

// The command line takes the defaults (monthly, the date's year and month, 3 x seasonality
// forecasts); the dialog its fields.
RunFigures FiguresOf(const SheetLayout& layout, const RunnerSettings& settings) {
  RunFigures f{12, layout.year, layout.month, 36};
  if (settings.use_figures) {
    f.seasonality = settings.figures.seasonality;
    if (settings.figures.major > 0) f.year = settings.figures.major;
    if (settings.figures.minor > 0)
      f.period = settings.figures.minor;
    else if (f.seasonality != 12)
      // The month of the date as a period of the chosen year: a quarter for 4, else the first.
      f.period = 12 % f.seasonality == 0 ? (f.period - 1) / (12 / f.seasonality) + 1 : 1;
    f.forecasts = settings.figures.forecasts;
  }
  f.forecasts = std::clamp(f.forecasts, 1, dataset::MaxForecasts);
  return f;
}

// The row as a dataset of one series: its cells from column 2 up to the first blank one.
// Returns the number of observations; a cell of text ends the sheet.
int FillRowDataset(const Grid& grid, int row, int last_column, const RunFigures& f, const std::string& name,
                   dataset::AscDataset& d) {
  d.Objectives(1) = 0;
  d.Objectives(2) = 0;
  d.Objectives(3) = 1;
  int n = 0;
  for (int c = 2; c <= last_column && n < dataset::MaxObservations; ++c) {
    if (grid.At(row, c).Empty()) break;
    double v;
    if (!grid.NumericValue(row, c, v))
      throw SheetError{"Type mismatch: row " + std::to_string(row) + ", column " + std::to_string(c) + " holds \"" +
                       grid.Text(row, c) + "\", not a number."};
    d.DataValues(++n) = v;
  }
  const int props[8] = {1, f.seasonality, f.year, f.period, n, 0, 0, f.forecasts};
  for (int k = 0; k < 8; ++k) d.DataProp(k + 1) = static_cast<int16_t>(props[k]);
  d.DataNames(1) = name;
  d.DataTypes(1) = 0;
  d.K = 0;
  return n;
}

// The forecasts go into the row from the column after its last observation. When the
// heading there is free (or the row ends the sheet), the headings of the next periods are
// written too, by the walk of one period at a time.
void WriteForecastsBack(Grid& grid, int row, int n, const std::vector<double>& values, int nf, const RunFigures& f) {
  int last = n + 1;
  if (last == grid.MaxCols() || grid.At(1, last + 1).Empty()) {
    int y = f.year, p = f.period;
    for (int k = 1; k <= n + nf; ++k) {
      if (k > n) grid.SetText(1, last + (k - n), PeriodHeading(y, p, f.seasonality));
      if (++p > f.seasonality) {
        p = 1;
        ++y;
      }
    }
  }
  for (int k = 0; k < nf; ++k) grid.SetNumber(row, last + 1 + k, values[k]);
}

}  // namespace

RunnerSwitches RunnerSwitches::Parse(const std::vector<std::string>& tokens) {
  RunnerSwitches s;
  for (const auto& token : tokens) {
    std::string t = platform::ToUpper(token);
    bool* kind = nullptr;
    if (t == "/ALL") s.all = true;
    else if (t == "/NG") s.no_graphs = true;
    else if (t == "/S") s.status = true;
    else if (t == "/P") s.limits = true;
    else if (t == "/NL") s.nl = true;
    else if (t == "/A") kind = &s.act;
    else if (t == "/AC") kind = &s.act_cleanse;
    else if (t == "/AFIT") kind = &s.act_fit;
    else if (t == "/AF") kind = &s.act_fore;
    else if (t == "/AFF") kind = &s.act_fit_fore;
    else if (t == "/AR") kind = &s.act_res;
    else if (t == "/F") kind = &s.fit_fore;
    else if (t == "/FF") kind = &s.fore;
    else if (t == "/R") kind = &s.res;
    if (kind) *kind = s.graphs_wanted = true;
  }
  if (!s.no_graphs) s.graphs_wanted = true;
  return s;
}

bool RunnerSwitches::AnyKind() const {
  return act || act_cleanse || act_fit || act_fore || act_fit_fore || act_res || fit_fore || fore || res;
}

batch::GraphPreferences RunnerSwitches::Preferences() const {
  batch::GraphPreferences p;
  p.no_graphs = !graphs_wanted;
  p.all_graphs = all || !AnyKind();
  p.sel_graphs = !p.all_graphs;
  p.act = act;
  p.act_cleanse = act_cleanse;
  p.act_fit = act_fit;
  p.act_fore = act_fore;
  p.act_fit_fore = act_fit_fore;
  p.act_res = act_res;
  p.fit_fore = fit_fore;
  p.fore = fore;
  p.res = res;
  p.no_limits = !limits;
  return p;
}

bool ReadSheetLayout(const Grid& grid, SheetLayout& layout, std::string& message) {
  const Cell& date = grid.At(1, 2);
  if (date.Empty()) {
    message = texts::kDateBlank;
    return false;
  }
  if (date.IsNumber() && date.is_date) {
    auto d = platform::dates::FromDaySerial(static_cast<long>(std::floor(date.number)));
    layout.year = d.year;
    layout.month = d.month;
  } else {
    std::string t = dataset::TrimBlanks(grid.Text(1, 2));
    layout.month = 0;
    if (t.size() >= 7) {
      auto year = platform::ToDouble(t.substr(0, 4));
      std::string mon = platform::ToUpper(t.substr(t.size() - 3));
      for (int m = 0; m < 12; ++m)
        if (mon == platform::ToUpper(kMonths[m])) layout.month = m + 1;
      layout.year = year && *year >= 1 && *year <= dataset::MaxYear && *year == std::floor(*year)
                        ? static_cast<int>(*year)
                        : 0;
    }
    if (layout.month == 0 || layout.year == 0) {
      message = texts::kDateMalformed;
      return false;
    }
  }
  layout.last_column = 0;
  for (int c = grid.MaxCols(); c >= 1; --c)
    if (!grid.At(1, c).Empty()) {
      layout.last_column = c;
      break;
    }
  return true;
}

std::string PeriodHeading(int year, int period, int seasonality) {
  if (seasonality == 12 && period >= 1 && period <= 12) return std::to_string(year) + kMonths[period - 1];
  return std::to_string(year) + "/" + std::to_string(period);
}

RunnerResult XLSEngine(const fs::path& file, const std::string& worksheet, const RunnerSettings& settings,
                       RunnerHost& host) {
  RunnerResult result;
  auto log = [&](const std::string& line) {
    if (host.log) host.log(line);
  };
  fs::path program = host.program_folder.empty() ? platform::ProgramFolder() : host.program_folder;
  if (!host.engine_call)
    host.engine_call = [program](quorvane::EngineArrays& a, batch::EngineReturn& r,
                                 const batch::EngineCallContext& c) {
      return batch::CallEngine(a, r, program, c, platform::ProgressWaiter());
    };
  try {
    // The grid's import: the file as a spreadsheet, its sheets, the sheet.
    WorkbookFormat format = FormatOfExtension(file);
    if (format != WorkbookFormat::Xlsx && format != WorkbookFormat::Xls) throw SheetError{texts::kBadExtension};
    Workbook book;
    if (!ReadWorkbook(file, book).ok()) throw SheetError{texts::kNotSpreadsheet};
    Sheet* found = book.Find(worksheet);
    if (!found || dataset::TrimBlanks(worksheet).empty()) throw SheetError{texts::kOpenSheetError};
    result.opened = true;
    Sheet out{texts::kResultSheet, found->grid};
    Grid& grid = out.grid;

    SheetLayout layout;
    std::string message;
    if (!ReadSheetLayout(grid, layout, message)) throw SheetError{message};
    log(texts::kFileName + file.string());
    log(texts::kWorksheet + found->name);

    const RunFigures figures = FiguresOf(layout, settings);
    while (!grid.At(result.rows + 2, 1).Empty()) ++result.rows;

    auto dataset = std::make_unique<dataset::AscDataset>();
    auto arrays = std::make_unique<quorvane::EngineArrays>();
    batch::EngineReturn returned;
    fs::path graphs_folder = file.parent_path() / "OUTPUT";

    for (int row = 2; !grid.At(row, 1).Empty(); ++row) {
      std::string name = dataset::TrimBlanks(grid.Text(row, 1));
      log(texts::kSeries + name + texts::kRow + std::to_string(row));
      dataset::AscDataset& d = *dataset;
      const int n = FillRowDataset(grid, row, layout.last_column, figures, name, d);

      // A report of the row before must not pass for this row's.
      while (platform::RemoveNoCase(program, "DETAILS.HTM")) {
      }
      quorvane::EngineArrays& a = *arrays;
      batch::FillRequest(d, a);
      a.run_mode = quorvane::kRunModeSpreadsheet;
      batch::EngineCallContext context{row - 1, result.rows, name};
      context.session = host.session.get();
      batch::EngineCallResult call = host.engine_call(a, returned, context);
      if (call.outcome == batch::EngineCallOutcome::Canceled || host.session->canceled) {
        result.canceled = true;
        log(texts::kUserCancel);
        log(texts::kOutahere);
        return result;
      }
      if (call.error_code > 0) {
        log(texts::kEngineError + EngineErrorText(call.error_code));
        continue;
      }
      if (!platform::ExistsNoCase(program, "DETAILS.HTM")) {
        log(texts::kDetailsMissing);
        log(texts::kEngineRunError);
        continue;
      }
      // The series' name as a file name: a slash would make it a path.
      std::string stem = name;
      std::replace(stem.begin(), stem.end(), '/', '_');
      // A file that cannot be renamed stays under the engine's own name in the program folder.
      if (auto pro = platform::FindNoCase(program, "ts50pro.123")) (void)batch::MoveFileOver(*pro, program / (stem + ".pro"));
      if (auto mod = platform::FindNoCase(program, "pass2mod.123")) (void)batch::MoveFileOver(*mod, program / (stem + ".mod"));

      if (settings.switches.graphs_wanted && host.reports) {
        log(texts::kGeneratingGraphs);
        std::error_code ec;
        fs::create_directories(graphs_folder, ec);
        batch::SeriesResult series{d, a, returned, graphs_folder, stem + ".asc", stem, name};
        batch::ClearEarlierGraphs(graphs_folder, stem);
        host.reports->DrawGraphs(series);
      }

      int nf = returned.returned_data_prop.size() >= 8 ? returned.returned_data_prop[7] : 0;
      nf = std::clamp(nf, 0, std::min<int>(figures.forecasts, static_cast<int>(a.forecast_values.size())));
      WriteForecastsBack(grid, row, n, a.forecast_values, nf, figures);
      log(texts::kWritingForecasts);
      if (nf > 0) ++result.forecast_rows;
    }
    result.result_book = file.parent_path() / texts::kResultBook;
    if (!SaveXlsx(result.result_book, {&out}))
      throw SheetError{"Path/File access error: " + result.result_book.string()};
    result.finished = true;
    log(texts::kFinished);
  } catch (const SheetError& e) {
    result.error = e.text;
    log(e.text);
  }
  return result;
}

}  // namespace tessaly::spreadsheet
