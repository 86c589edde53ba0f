#include "spreadsheet/import_job.h"

#include "platform/dialogs.h"
#include "platform/paths.h"
#include "spreadsheet/import.h"
#include "spreadsheet/texts.h"

namespace tessaly::spreadsheet {

namespace {
using platform::Dialogs;
namespace mb = platform::mb;

ImportJobResult Refused(const std::string& text, const std::string& title) {
  Dialogs().Message(text, mb::OKOnly + mb::Exclamation, title);
  return {};
}
}  // namespace

ImportJobResult RunImportJob(const ImportJob& job) {
  ImportOpen open = OpenForImport(job.book);
  if (!open.ok()) return Refused(open.message, texts::kWizardTitle);
  const Sheet* sheet = nullptr;
  if (!job.sheet.empty()) {
    sheet = open.book.Find(job.sheet);
    if (!sheet) return Refused(texts::kOpenSheetError, texts::kWizardTitle);
  } else {
    for (const auto& s : open.book.sheets)
      if (!platform::EqualsNoCase(s.name, texts::kPropertiesSheet)) {
        sheet = &s;
        break;
      }
  }
  if (!sheet || sheet->grid.MaxRows() == 0)
    return Refused(std::string(texts::kBlankSheet) + "\n" + texts::kSelectSheet, texts::kWizardTitle);
  const Grid& grid = sheet->grid;
  const bool tabular = !job.rows, names = !job.no_names;
  if (!names && CkBlankR1C1(grid))
    return Refused(std::string(texts::kFirstBlank) + "\n" + texts::kFirstBlankNeedName, texts::kFirstBlankTitle);

  bool truncated = false, illegal = false;
  std::vector<ImpField> fields = SeriesFields(grid, tabular, names, truncated, illegal);
  if (fields.empty()) return Refused(std::string(texts::kBlankSheet) + "\n" + texts::kSelectSheet, texts::kWizardTitle);
  // A series without a single number (a row of period headings, a column of codes) is
  // what the wizard's person would untick.
  std::vector<std::string> skipped;
  for (auto& field : fields)
    if (field.numeric_cells == 0) {
      field.Skip = true;
      skipped.push_back(field.FieldName);
    }
  std::string repairs = SeriesNameErrorMessage(truncated, illegal);
  if (!repairs.empty()) Dialogs().Message(repairs, mb::OKOnly + mb::Information, texts::kHeaderTitle);

  SheetFigures defaults;
  PropertiesRead props = ReadPropertiesSheet(open.book, defaults);
  if (!props.MessageText().empty())
    Dialogs().Message(props.MessageText(), mb::OKOnly + mb::Information, texts::kRunPropertiesTitle);
  SheetFigures f = props.figures;
  if (job.seasonality) {
    f.seasonality = *job.seasonality;
    if (!job.forecasts) f.forecasts = 3 * f.seasonality;
  }
  if (job.major) f.major = *job.major;
  if (job.minor) f.minor = *job.minor;
  if (job.forecasts) f.forecasts = *job.forecasts;

  ImportRequest request;
  request.layout = {&grid, tabular, names, AllRecords(grid, tabular, names)};
  request.fields = fields;
  auto text = [](int v) { return v > 0 ? std::to_string(v) : std::string(); };
  request.figures.seasonality = std::to_string(f.seasonality);
  request.figures.begin_year = text(f.major);
  request.figures.begin_period = text(f.minor);
  request.figures.observations = std::to_string(request.layout.records.size());
  request.figures.forecasts = std::to_string(f.forecasts);
  request.figures.directory = (job.out.empty() ? fs::absolute(job.book).parent_path() : job.out).string();
  request.figures.output_series = job.output_series;
  if (auto problem = ValidateFigures(request.figures)) return Refused(problem->message, problem->title);
  auto missing = IncompleteData(request.figures);
  if (!missing.empty()) {
    std::string list;
    for (const auto& m : missing) list += (list.empty() ? "" : ", ") + m;
    return Refused("Missing " + list + ": give --start YEAR/PERIOD, or MAJOR and MINOR in a PROPERTIES sheet.",
                   texts::kPropertiesTitle);
  }
  if (!job.single.empty()) {
    request.mode = ImportMode::OneFile;
    request.one_file = job.single.has_parent_path() ? job.single : fs::path(request.figures.directory) / job.single;
    if (!job.output_series.empty()) {
      bool known = false;
      for (const auto& field : fields) known = known || field.NewName == job.output_series;
      if (!known) return Refused("There is no series named " + job.output_series + ".", texts::kImportTitle);
    }
    if (fs::exists(request.one_file) &&
        Dialogs().Message(texts::kOverwrite, mb::YesNoCancel + mb::Question, texts::kImportTitle) != mb::Yes)
      return {};
  } else if (!job.project.empty()) {
    request.mode = ImportMode::BatchRun;
    request.project_file = job.project.has_parent_path() ? job.project : fs::path(request.figures.directory) / job.project;
  }
  ImportResult done = FinishImport(request);
  ImportJobResult result;
  result.written = done.written;
  result.end_message = done.end_message;
  result.skipped = skipped;
  if (!done.ok) Dialogs().Message(done.ErrorString, mb::OKOnly + mb::Exclamation, texts::kImportTitle);
  result.status = done.written.empty() ? 2 : (done.ok ? 0 : 1);
  return result;
}

}  // namespace tessaly::spreadsheet
