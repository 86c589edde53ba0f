#include "spreadsheet/import_wizard.h"

#include "platform/dialogs.h"
#include "platform/paths.h"
#include "spreadsheet/texts.h"

namespace tessaly::spreadsheet {

namespace {
using platform::Dialogs;
namespace mb = platform::mb;
void Say(const std::string& text, const std::string& title) { Dialogs().Message(text, mb::OKOnly + mb::Exclamation, title); }
}  // namespace

bool ImportWizard::Load(const fs::path& file) {
  ImportOpen open = OpenForImport(file);
  if (!open.ok()) {
    Say(open.message, texts::kWizardTitle);
    return false;
  }
  file_ = file;
  book_ = std::move(open.book);
  PropertiesRead props = ReadPropertiesSheet(book_, SheetFigures{12, 0, 0, 36});
  if (!props.MessageText().empty()) Say(props.MessageText(), texts::kRunPropertiesTitle);
  figures.seasonality = std::to_string(props.figures.seasonality);
  figures.begin_year = props.figures.major > 0 ? std::to_string(props.figures.major) : "";
  figures.begin_period = props.figures.minor > 0 ? std::to_string(props.figures.minor) : "";
  figures.forecasts = std::to_string(props.figures.forecasts);
  figures.directory = file.parent_path().string();
  auto sheets = Sheets();
  sheet = sheets.empty() ? "" : sheets.front();
  step = 0;
  return true;
}

std::vector<std::string> ImportWizard::Sheets() const {
  std::vector<std::string> names;
  for (const auto& s : book_.sheets)
    if (!platform::EqualsNoCase(s.name, texts::kPropertiesSheet)) names.push_back(s.name);
  return names;
}

const Grid* ImportWizard::SheetGrid() const {
  const Sheet* s = book_.Find(sheet);
  return s ? &s->grid : nullptr;
}

std::vector<int> ImportWizard::Records() const {
  const Grid* g = SheetGrid();
  if (!g) return {};
  return FilterRecords(*g, tabular, names_in_first, filter_field, filter_value);
}

std::string ImportWizard::TickTitle() const { return mode == ImportMode::BatchRun ? texts::kBatchRun : texts::kBatchImport; }

int ImportWizard::MarkedCount() const {
  int n = 0;
  for (const auto& f : fields) n += f.Skip ? 0 : 1;
  return n;
}

void ImportWizard::SelectAll(bool marked) {
  for (auto& f : fields) f.Skip = !marked;
}

bool ImportWizard::PrepareNames() {
  bool truncated = false, illegal = false;
  fields = SeriesFields(*SheetGrid(), tabular, names_in_first, truncated, illegal);
  // A series without a single number (a row of period headings, a column of codes) starts unticked.
  for (auto& f : fields) f.Skip = f.numeric_cells == 0;
  std::string repairs = SeriesNameErrorMessage(truncated, illegal);
  if (!repairs.empty()) Say(repairs, texts::kHeaderTitle);
  filter_field = 0;
  filter_value.clear();
  return true;
}

bool ImportWizard::Next() {
  const Grid* g = SheetGrid();
  switch (step) {
    case 0:
      if (!g || g->MaxRows() == 0) {
        Say(std::string(texts::kBlankSheet) + "\n" + texts::kSelectSheet, texts::kWizardTitle);
        return false;
      }
      break;
    case 1:
      if (!names_in_first && CkBlankR1C1(*g)) {
        Say(std::string(texts::kFirstBlank) + "\n" + texts::kFirstBlankNeedName, texts::kFirstBlankTitle);
        return false;
      }
      PrepareNames();
      break;
    case 2: {
      // Names edited in the grid are tested again.
      bool truncated = false, illegal = false;
      for (auto& f : fields) f.NewName = CheckSeriesName(f.NewName, truncated, illegal);
      std::string repairs = SeriesNameErrorMessage(truncated, illegal);
      if (!repairs.empty()) Say(repairs, texts::kHeaderTitle);
      break;
    }
    case 3:
      if (Records().empty()) {
        Say("No rows are left by the filter.", texts::kWizardTitle);
        return false;
      }
      break;
    case 4:
      if (MarkedCount() == 0) {
        Say("Please select at least one series to import.", texts::kWizardTitle);
        return false;
      }
      figures.observations = std::to_string(Records().size());
      break;
    case 5: {
      figures.observations = std::to_string(Records().size());
      if (auto problem = ValidateFigures(figures)) {
        Say(problem->message, problem->title);
        return false;
      }
      auto missing = IncompleteData(figures);
      if (!missing.empty()) {
        std::string list;
        for (const auto& m : missing) list += "\n" + m;
        Say("Please complete the following fields:" + list, texts::kPropertiesTitle);
        return false;
      }
      break;
    }
    default:
      return false;
  }
  ++step;
  return true;
}

void ImportWizard::Back() {
  if (step > 0) --step;
}

ImportResult ImportWizard::Finish(const fs::path& target, const std::function<void(const std::string&)>& status) {
  ImportRequest q;
  q.layout = {SheetGrid(), tabular, names_in_first, Records()};
  q.fields = fields;
  q.figures = figures;
  q.mode = mode;
  if (mode == ImportMode::OneFile) q.one_file = target;
  if (mode == ImportMode::BatchRun) q.project_file = target;
  ImportResult r = FinishImport(q, status);
  if (!r.ok) Say(r.ErrorString, texts::kImportTitle);
  if (!r.end_message.empty()) Dialogs().Message(r.end_message, mb::OKOnly + mb::Information, texts::kImportTitle);
  return r;
}

}  // namespace tessaly::spreadsheet
