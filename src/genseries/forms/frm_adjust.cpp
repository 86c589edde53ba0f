#include "genseries/forms/frm_adjust.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "batch/batch_file.h"
#include "batch/forms/frm_project_forms.h"
#include "dataset/messages.h"
#include "genseries/forms/frm_dialogs.h"
#include "genseries/forms/frm_wizard2.h"
#include "genseries/texts.h"
#include "genseries/wizard.h"
#include "genseries/wizard_texts.h"
#include "platform/dialogs.h"
#include "platform/paths.h"

namespace tessaly::genseries {

namespace {
void Tell(const std::string& text) {
  platform::Dialogs().Message(text, platform::mb::OKOnly | platform::mb::Information, texts::kFyiTitle);
}

QLabel* Wrapped(QWidget* parent, const char* text) {
  auto* l = new QLabel(text, parent);
  l->setWordWrap(true);
  return l;
}

std::vector<std::string> ProjectFiles(const batch::cBatchFile& project) {
  std::vector<std::string> files;
  for (int i = 0; i < static_cast<int>(project.Count()); ++i) files.push_back(project.List(i));
  return files;
}
}  // namespace

frmSelAdjSeries::frmSelAdjSeries(QWidget* parent, fs::path folder, fs::path variables_file,
                                 ManualData manual, fs::path program_folder)
    : QDialog(parent),
      folder_(std::move(folder)),
      variables_(std::move(variables_file)),
      program_(std::move(program_folder)),
      manual_(std::move(manual)) {
  setObjectName("frmSelAdjSeries");
  setWindowTitle("Select ASC Files To Adjust");
  auto* v = new QVBoxLayout(this);
  v->addWidget(Wrapped(this, texts::kSelAdjText));
  lists = new batch::TwoLists(this);
  v->addWidget(lists, 1);
  auto* nav = new QHBoxLayout;
  nav->addStretch(1);
  cmdNext = new QPushButton("&Next >", this);
  cmdNext->setObjectName("cmdNext");
  cmdCancel = new QPushButton("Cancel", this);
  cmdCancel->setObjectName("cmdCancel");
  nav->addWidget(cmdNext);
  nav->addWidget(cmdCancel);
  v->addLayout(nav);
  connect(cmdNext, &QPushButton::clicked, this, &frmSelAdjSeries::cmdNext_Click);
  connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
  resize(560, 400);
}

void frmSelAdjSeries::cmdNext_Click() {
  std::vector<std::string> chosen = lists->Chosen();
  if (chosen.empty()) {
    Tell(texts::kNoFilesChosen);
    return;
  }
  run_ = AdjustChosenFiles(folder_, chosen, variables_, manual_, program_);
  Tell(run_.Message());
  accept();
}

frmAdjSeries::frmAdjSeries(QWidget* parent, fs::path folder, std::vector<std::string> adjusted,
                           std::vector<std::string> project_files)
    : QDialog(parent), folder_(std::move(folder)), adjusted_(std::move(adjusted)),
      project_files_(std::move(project_files)) {
  setObjectName("frmAdjSeries");
  setWindowTitle(texts::kAdjTitle);
  auto* v = new QVBoxLayout(this);
  v->addWidget(Wrapped(this, texts::kAdjText));
  lists = new batch::TwoLists(this);
  lists->Fill(adjusted_, {});
  v->addWidget(lists, 1);
  optDoNotSave = new QRadioButton(texts::kDoNotSave, this);
  optDoNotSave->setObjectName("optDoNotSave");
  optSave = new QRadioButton(texts::kSaveFiles, this);
  optSave->setObjectName("optSave");
  optSave->setChecked(true);
  auto* group = new QButtonGroup(this);
  group->addButton(optDoNotSave);
  group->addButton(optSave);
  auto* options = new QHBoxLayout;
  options->addWidget(optSave);
  options->addWidget(optDoNotSave);
  options->addStretch(1);
  cmdNext = new QPushButton("&Next >", this);
  cmdNext->setObjectName("cmdNext");
  options->addWidget(cmdNext);
  v->addLayout(options);
  connect(cmdNext, &QPushButton::clicked, this, &frmAdjSeries::cmdNext_Click);
  resize(560, 400);
}

void frmAdjSeries::cmdNext_Click() {
  if (optSave->isChecked()) {
    std::vector<std::string> chosen = lists->Chosen();
    if (chosen.empty()) {
      Tell(texts::kNoFilesChosen);
      return;
    }
    KeepChosenAdjustedFiles(folder_, adjusted_, chosen);
  } else {
    RestoreOriginals(folder_, project_files_);
  }
  accept();
}

fs::path VariablesFileOf(const batch::cBatchFile& project, const fs::path& project_file) {
  fs::path folder = project_file.empty() ? fs::path(project.OutDirectory()) : project_file.parent_path();
  return folder / kVariablesFileName;
}

void mnu_Adjust_ASCfiles(QWidget* parent, const batch::cBatchFile& project,
                         const fs::path& variables_file, const ManualData& manual,
                         const fs::path& program_folder) {
  std::error_code ec;
  if (!fs::exists(variables_file, ec)) {
    Tell(variables_file.string() + " does not exist. Choose Add Generated Series to make it.");
    return;
  }
  const fs::path folder = project.InDirectory();
  const std::vector<std::string> files = ProjectFiles(project);
  frmSelAdjSeries select(parent, folder, variables_file, manual, program_folder);
  select.lists->Fill(AdjustableFiles(folder, files), {});
  if (select.exec() != QDialog::Accepted || select.Result().adjusted.empty()) return;
  frmAdjSeries keep(parent, folder, select.Result().adjusted, files);
  keep.exec();
}

std::optional<SeriesRequest> AskForSeries(QWidget* parent, const fs::path& asc, const std::string& name,
                                          const fs::path& variables, const std::string& in_directory,
                                          const std::string& out_directory, const fs::path& program_folder) {
  std::optional<WizardDataset> ds = WizardDataset::FromFile(asc);
  if (!ds) {
    Tell(dataset::msg::Malformed(name));
    return std::nullopt;
  }
  AddSeriesWizard wizard(*ds);
  if (!wizard.CheckSeasonality()) return std::nullopt;
  frmWizard2 form(wizard, parent);
  if (form.exec() != QDialog::Accepted) return std::nullopt;

  // Do_Finish: the manual grids, then the variables file.
  SeriesRequest request{variables, {}};
  ManualData& manual = request.manual;
  if (wizard.chkAddUserDef && wizard.user_method == "Manual") {
    if (wizard.user_type == 0) {
      auto values = ShowManualGrid(parent, "frmUserDefData", "Manual Data", wizard.PeriodLabels(false));
      if (!values) return std::nullopt;
      manual.history = *values;
    } else {
      auto history = ShowManualGrid(parent, "frmUserDefManualData", "Manual Data", wizard.PeriodLabels(false));
      if (!history) return std::nullopt;
      auto future = ShowManualGrid(parent, "frmUserDefManualFV", texts::kManualFVTitle, wizard.PeriodLabels(true));
      if (!future) return std::nullopt;
      manual.history = *history;
      manual.future = *future;
    }
  }
  if (!BuildXML(variables, wizard.Variables(), in_directory, out_directory, program_folder)) return std::nullopt;
  return request;
}

fs::path mnu_Select_Generated_Series(QWidget* parent, const batch::cBatchFile& project,
                                     const fs::path& project_file, const fs::path& program_folder) {
  if (project.Count() == 0) return {};
  const std::string first = project.List(0);
  const fs::path first_file = platform::ResolveNoCase(project.InDirectory(), first);
  auto request = AskForSeries(parent, first_file, first, VariablesFileOf(project, project_file),
                              project.InDirectory(), project.OutDirectory(), program_folder);
  if (!request) return {};
  mnu_Adjust_ASCfiles(parent, project, request->variables, request->manual, program_folder);
  return request->variables;
}

}  // namespace tessaly::genseries
