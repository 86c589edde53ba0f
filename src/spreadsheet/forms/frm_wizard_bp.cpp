#include "spreadsheet/forms/frm_wizard_bp.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QTableWidget>
#include <QTextBrowser>
#include <QVBoxLayout>

#include "platform/dialogs.h"
#include "spreadsheet/forms/grid_view.h"
#include "spreadsheet/texts.h"

namespace tessaly::spreadsheet {

namespace {
QString Q(const std::string& s) { return QString::fromStdString(s); }
std::string S(const QString& s) { return s.toStdString(); }

const char* kStepTitles[] = {"Step 1: Choose the sheet and the orientation",
                             "Step 2: Series names",
                             "Step 3: The series and their names",
                             "Step 4: Filter the rows",
                             "Step 5: Mark the series to import",
                             "Step 6: Series properties",
                             "Step 7: Summary"};

QWidget* Page(QStackedWidget* stack, QVBoxLayout*& layout) {
  auto* page = new QWidget(stack);
  layout = new QVBoxLayout(page);
  stack->addWidget(page);
  return page;
}
}  // namespace

frmWizardBP::frmWizardBP(QWidget* parent) : QDialog(parent) {
  setObjectName("frmWizardBP");
  setWindowTitle(texts::kWizardTitle);
  resize(760, 520);
  auto* top = new QVBoxLayout(this);
  lblStep = new QLabel(this);
  QFont bold = lblStep->font();
  bold.setBold(true);
  lblStep->setFont(bold);
  top->addWidget(lblStep);
  fraStep = new QStackedWidget(this);
  top->addWidget(fraStep, 1);

  BuildSheetPage();
  BuildNamesPage();
  BuildSeriesNamesPage();
  BuildFilterPage();
  BuildMarksPage();
  BuildPropertiesPage();
  BuildSummaryPage();
  BuildButtons(top);
}

// The sheet and the orientation.
void frmWizardBP::BuildSheetPage() {
  QVBoxLayout* l;
  Page(fraStep, l);
  auto* sheetRow = new QHBoxLayout;
  sheetRow->addWidget(new QLabel("Worksheet:"));
  cboSheet = new QComboBox;
  cboSheet->setObjectName("cboSheet");
  sheetRow->addWidget(cboSheet, 1);
  l->addLayout(sheetRow);
  optColumns = new QRadioButton(texts::kColumnOriented);
  optColumns->setObjectName("optColumns");
  optRows = new QRadioButton(texts::kRowOriented);
  optRows->setObjectName("optRows");
  auto* orient = new QButtonGroup(this);
  orient->addButton(optColumns);
  orient->addButton(optRows);
  l->addWidget(optColumns);
  l->addWidget(optRows);
  auto* note = new QLabel(texts::kCausalNote);
  note->setWordWrap(true);
  l->addWidget(note);
  TslySpread = new QTableWidget;
  TslySpread->setObjectName("TslySpread");
  l->addWidget(TslySpread, 1);
  connect(cboSheet, &QComboBox::currentTextChanged, this, [this](const QString& s) {
    if (refreshing_) return;
    w_.sheet = S(s);
    if (const Grid* g = w_.SheetGrid()) ShowGrid(TslySpread, *g);
  });
}

// Whether the first row (column) holds the names.
void frmWizardBP::BuildNamesPage() {
  QVBoxLayout* l;
  Page(fraStep, l);
  chkNames = new QCheckBox;
  chkNames->setObjectName("chkNames");
  l->addWidget(chkNames);
  // The sheet again, so that the first row and column can be seen while choosing.
  tblNamesPreview = new QTableWidget;
  tblNamesPreview->setObjectName("tblNamesPreview");
  l->addWidget(tblNamesPreview, 1);
}

// The name grid and the import mode.
void frmWizardBP::BuildSeriesNamesPage() {
  QVBoxLayout* l;
  Page(fraStep, l);
  auto* modes = new QHBoxLayout;
  optOneFile = new QRadioButton("One dataset, output series last");
  optOneFile->setObjectName("optOneFile");
  optBatchImport = new QRadioButton(texts::kBatchImport);
  optBatchImport->setObjectName("optBatchImport");
  optBatchRun = new QRadioButton(texts::kBatchRun);
  optBatchRun->setObjectName("optBatchRun");
  auto* modeGroup = new QButtonGroup(this);
  for (auto* b : {optOneFile, optBatchImport, optBatchRun}) {
    modeGroup->addButton(b);
    modes->addWidget(b);
  }
  l->addLayout(modes);
  TslySNSpread = new QTableWidget;
  TslySNSpread->setObjectName("TslySNSpread");
  l->addWidget(TslySNSpread, 1);
  connect(modeGroup, &QButtonGroup::buttonClicked, this, [this] {
    Collect();
    Refresh();
  });
}

// The filter of the rows.
void frmWizardBP::BuildFilterPage() {
  QVBoxLayout* l;
  Page(fraStep, l);
  auto* filter = new QFormLayout;
  cboFieldSelect = new QComboBox;
  cboFieldSelect->setObjectName("cboFieldSelect");
  cboValueSelect = new QComboBox;
  cboValueSelect->setObjectName("cboValueSelect");
  filter->addRow("Field:", cboFieldSelect);
  filter->addRow("Value:", cboValueSelect);
  l->addLayout(filter);
  lblRecordCount = new QLabel;
  lblRecordCount->setObjectName("lblRecordCount");
  l->addWidget(lblRecordCount);
  l->addStretch(1);
  connect(cboFieldSelect, &QComboBox::currentIndexChanged, this, [this](int i) {
    if (refreshing_) return;
    w_.filter_field = i <= 0 ? 0 : cboFieldSelect->itemData(i).toInt();
    ShowFilterValues();
    w_.filter_value = S(cboValueSelect->currentText());
    lblRecordCount->setText(QString("Records: %1").arg(w_.Records().size()));
  });
  connect(cboValueSelect, &QComboBox::currentTextChanged, this, [this](const QString& v) {
    if (refreshing_) return;
    w_.filter_value = S(v);
    lblRecordCount->setText(QString("Records: %1").arg(w_.Records().size()));
  });
}

// The marks of the series to import.
void frmWizardBP::BuildMarksPage() {
  QVBoxLayout* l;
  Page(fraStep, l);
  lstSeries = new QTableWidget;
  lstSeries->setObjectName("lstSeries");
  l->addWidget(lstSeries, 1);
  auto* marks = new QHBoxLayout;
  auto* all = new QPushButton("Select All");
  all->setObjectName("cmdSelectAll");
  auto* none = new QPushButton("Deselect All");
  none->setObjectName("cmdDeselectAll");
  marks->addWidget(all);
  marks->addWidget(none);
  marks->addStretch(1);
  l->addLayout(marks);
  connect(all, &QPushButton::clicked, this, [this] {
    w_.SelectAll(true);
    ShowSeriesList();
  });
  connect(none, &QPushButton::clicked, this, [this] {
    w_.SelectAll(false);
    ShowSeriesList();
  });
}

// The series properties.
void frmWizardBP::BuildPropertiesPage() {
  QVBoxLayout* l;
  Page(fraStep, l);
  auto* form = new QFormLayout;
  auto field = [&](QLineEdit*& edit, const char* name, const char* label) {
    edit = new QLineEdit;
    edit->setObjectName(name);
    form->addRow(label, edit);
  };
  field(txtOutSeriesName, "txtOutSeriesName", "Output Series Name:");
  cboOutputSeries = new QComboBox;
  cboOutputSeries->setObjectName("cboOutputSeries");
  form->addRow("Output Series:", cboOutputSeries);
  field(txtSeasonality, "txtSeasonality", "Seasonality:");
  field(txtBegYear, "txtBegYear", "Major Period:");
  field(txtBegPeriod, "txtBegPeriod", "Minor Period:");
  field(txtObservations, "txtObservations", "Observations:");
  txtObservations->setReadOnly(true);
  field(txtImpForecast, "txtImpForecast", "Forecasts:");
  field(txtDirectory, "txtDirectory", "Directory:");
  l->addLayout(form);
  lbl5or7 = new QLabel("A seasonality of 5 or 7 is a daily series: the calendar of the dates counts.");
  lbl5or7->setObjectName("lbl5or7");
  l->addWidget(lbl5or7);
  l->addStretch(1);
  connect(txtSeasonality, &QLineEdit::textChanged, this,
          [this](const QString& s) { lbl5or7->setVisible(ShowsFiveOrSevenNote(S(s))); });
}

// The summary.
void frmWizardBP::BuildSummaryPage() {
  QVBoxLayout* l;
  Page(fraStep, l);
  brwSummary = new QTextBrowser;
  brwSummary->setObjectName("brwSummary");
  brwSummary->setContextMenuPolicy(Qt::NoContextMenu);
  l->addWidget(brwSummary, 1);
}

// The status line and the buttons under the pages.
void frmWizardBP::BuildButtons(QVBoxLayout* top) {
  lblStatus = new QLabel;
  lblStatus->setObjectName("lblStatus");
  top->addWidget(lblStatus);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  cmdCancel = new QPushButton("Cancel");
  cmdCancel->setObjectName("cmdCancel");
  cmdBack = new QPushButton("< Back");
  cmdBack->setObjectName("cmdBack");
  cmdNext = new QPushButton("Next >");
  cmdNext->setObjectName("cmdNext");
  cmdFinish = new QPushButton("Finish");
  cmdFinish->setObjectName("cmdFinish");
  for (auto* b : {cmdCancel, cmdBack, cmdNext, cmdFinish}) buttons->addWidget(b);
  top->addLayout(buttons);
  connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
  connect(cmdBack, &QPushButton::clicked, this, &frmWizardBP::cmdBack_Click);
  connect(cmdNext, &QPushButton::clicked, this, &frmWizardBP::cmdNext_Click);
  connect(cmdFinish, &QPushButton::clicked, this, &frmWizardBP::cmdFinish_Click);
}

bool frmWizardBP::AskForFile() {
  platform::FileDialogRequest request{texts::kWizardTitle, texts::kOpenFilter, "", "", true};
  auto file = platform::Dialogs().OpenFile(request);
  return file && LoadFile(*file);
}

bool frmWizardBP::LoadFile(const std::filesystem::path& file) {
  if (!w_.Load(file)) return false;
  Refresh();
  return true;
}

void frmWizardBP::Collect() {
  switch (w_.step) {
    case 0:
      w_.sheet = S(cboSheet->currentText());
      w_.tabular = !optRows->isChecked();
      break;
    case 1:
      w_.names_in_first = chkNames->isChecked();
      break;
    case 2:
      w_.mode = optOneFile->isChecked() ? ImportMode::OneFile
                : optBatchRun->isChecked() ? ImportMode::BatchRun
                                           : ImportMode::BatchImport;
      for (int c = 0; c < TslySNSpread->columnCount() && c < static_cast<int>(w_.fields.size()); ++c) {
        if (auto* tick = TslySNSpread->item(0, c)) w_.fields[c].Skip = tick->checkState() != Qt::Checked;
        if (auto* name = TslySNSpread->item(1, c)) w_.fields[c].NewName = S(name->text());
      }
      break;
    case 4:
      for (int r = 0; r < lstSeries->rowCount() && r < static_cast<int>(w_.fields.size()); ++r)
        w_.fields[r].Skip = lstSeries->item(r, 0)->checkState() != Qt::Checked;
      break;
    case 5:
      w_.figures.output_series_name = S(txtOutSeriesName->text());
      w_.figures.output_series = cboOutputSeries->currentIndex() <= 0 ? "" : S(cboOutputSeries->currentText());
      w_.figures.seasonality = S(txtSeasonality->text());
      w_.figures.begin_year = S(txtBegYear->text());
      w_.figures.begin_period = S(txtBegPeriod->text());
      w_.figures.forecasts = S(txtImpForecast->text());
      w_.figures.directory = S(txtDirectory->text());
      break;
    default:
      break;
  }
}

void frmWizardBP::ShowNames() {
  TslySNSpread->clear();
  TslySNSpread->setRowCount(2);
  TslySNSpread->setColumnCount(static_cast<int>(w_.fields.size()));
  TslySNSpread->setVerticalHeaderLabels({Q(w_.TickTitle()), texts::kSeriesNameRow});
  for (int c = 0; c < static_cast<int>(w_.fields.size()); ++c) {
    auto* tick = new QTableWidgetItem;
    tick->setFlags(Qt::ItemIsUserCheckable | Qt::ItemIsEnabled);
    tick->setCheckState(w_.fields[c].Skip ? Qt::Unchecked : Qt::Checked);
    TslySNSpread->setItem(0, c, tick);
    TslySNSpread->setItem(1, c, new QTableWidgetItem(Q(w_.fields[c].NewName)));
  }
}

void frmWizardBP::ShowSeriesList() {
  lstSeries->clear();
  lstSeries->setColumnCount(3);
  lstSeries->setHorizontalHeaderLabels({"Series", "Source", "Type"});
  lstSeries->setRowCount(static_cast<int>(w_.fields.size()));
  for (int r = 0; r < static_cast<int>(w_.fields.size()); ++r) {
    const auto& f = w_.fields[r];
    auto* item = new QTableWidgetItem(Q(f.NewName));
    item->setFlags(Qt::ItemIsUserCheckable | Qt::ItemIsEnabled);
    item->setCheckState(f.Skip ? Qt::Unchecked : Qt::Checked);
    lstSeries->setItem(r, 0, item);
    lstSeries->setItem(r, 1, new QTableWidgetItem(Q(f.FieldName)));
    lstSeries->setItem(r, 2, new QTableWidgetItem(Q(f.FieldType)));
  }
  lstSeries->horizontalHeader()->setStretchLastSection(true);
}

void frmWizardBP::ShowFilterValues() {
  bool was = refreshing_;
  refreshing_ = true;
  cboValueSelect->clear();
  if (w_.filter_field > 0 && w_.SheetGrid())
    for (const auto& v : FieldValues(*w_.SheetGrid(), w_.tabular, w_.names_in_first, w_.filter_field))
      cboValueSelect->addItem(Q(v));
  refreshing_ = was;
}

void frmWizardBP::Refresh() {
  refreshing_ = true;
  int step = w_.step;
  fraStep->setCurrentIndex(step);
  lblStep->setText(kStepTitles[step]);
  cboSheet->clear();
  for (const auto& s : w_.Sheets()) cboSheet->addItem(Q(s));
  cboSheet->setCurrentText(Q(w_.sheet));
  optColumns->setChecked(w_.tabular);
  optRows->setChecked(!w_.tabular);
  if (const Grid* g = w_.SheetGrid(); g && step == 0) ShowGrid(TslySpread, *g);
  if (const Grid* g = w_.SheetGrid(); g && step == 1) ShowGrid(tblNamesPreview, *g, 50);
  chkNames->setText(w_.tabular ? texts::kFirstRowNames : texts::kFirstColumnNames);
  chkNames->setChecked(w_.names_in_first);
  optOneFile->setChecked(w_.mode == ImportMode::OneFile);
  optBatchImport->setChecked(w_.mode == ImportMode::BatchImport);
  optBatchRun->setChecked(w_.mode == ImportMode::BatchRun);
  if (step == 2) ShowNames();
  if (step == 3) {
    cboFieldSelect->clear();
    cboFieldSelect->addItem("(no filter)", 0);
    for (const auto& f : w_.fields) cboFieldSelect->addItem(Q(f.NewName), f.index);
    int at = cboFieldSelect->findData(w_.filter_field);
    cboFieldSelect->setCurrentIndex(at < 0 ? 0 : at);
    refreshing_ = false;
    ShowFilterValues();
    refreshing_ = true;
    if (!w_.filter_value.empty()) cboValueSelect->setCurrentText(Q(w_.filter_value));
    lblRecordCount->setText(QString("Records: %1").arg(w_.Records().size()));
  }
  if (step == 4) ShowSeriesList();
  if (step == 5) {
    txtOutSeriesName->setText(Q(w_.figures.output_series_name));
    cboOutputSeries->clear();
    cboOutputSeries->addItem("(none)");
    for (const auto& f : w_.fields)
      if (!f.Skip) cboOutputSeries->addItem(Q(f.NewName));
    if (!w_.figures.output_series.empty()) cboOutputSeries->setCurrentText(Q(w_.figures.output_series));
    cboOutputSeries->setEnabled(w_.mode == ImportMode::OneFile);
    txtOutSeriesName->setEnabled(w_.mode == ImportMode::OneFile);
    txtSeasonality->setText(Q(w_.figures.seasonality));
    txtBegYear->setText(Q(w_.figures.begin_year));
    txtBegPeriod->setText(Q(w_.figures.begin_period));
    txtObservations->setText(Q(w_.figures.observations));
    txtImpForecast->setText(Q(w_.figures.forecasts));
    txtDirectory->setText(Q(w_.figures.directory));
    lbl5or7->setVisible(ShowsFiveOrSevenNote(w_.figures.seasonality));
  }
  if (step == 6) brwSummary->setHtml(Q(w_.Summary()));
  cmdBack->setEnabled(step > 0);
  cmdNext->setEnabled(step < ImportWizard::kLastStep);
  cmdFinish->setEnabled(step == ImportWizard::kLastStep);
  refreshing_ = false;
}

void frmWizardBP::cmdNext_Click() {
  Collect();
  if (w_.Next()) Refresh();
}

void frmWizardBP::cmdBack_Click() {
  Collect();
  w_.Back();
  Refresh();
}

void frmWizardBP::cmdFinish_Click() {
  std::filesystem::path target;
  namespace mb = platform::mb;
  if (w_.mode == ImportMode::OneFile) {
    // Asked until the person takes a new name, agrees to overwrite, or cancels.
    for (;;) {
      platform::FileDialogRequest request{texts::kImportTitle, texts::kAscFilter, w_.figures.directory,
                                          w_.figures.output_series_name.empty() ? "" : w_.figures.output_series_name + ".asc",
                                          false};
      auto file = platform::Dialogs().SaveFile(request);
      if (!file) return;
      target = *file;
      if (!std::filesystem::exists(target)) break;
      int16_t answer = platform::Dialogs().Message(texts::kOverwrite, mb::YesNoCancel + mb::Question, texts::kImportTitle);
      if (answer == mb::Yes) break;
      if (answer == mb::Cancel) return;
    }
  } else if (w_.mode == ImportMode::BatchRun) {
    target = std::filesystem::path(w_.figures.directory) / (w_.sheet + ".xml");
  }
  lblStatus->setText(w_.mode == ImportMode::OneFile ? Q(texts::kWriting + target.filename().string())
                                                    : QString(texts::kWritingHistorical));
  QApplication::processEvents();
  ImportResult r = w_.Finish(target, [this](const std::string& s) {
    lblStatus->setText(Q(s));
    QApplication::processEvents();
  });
  if (!r.written.empty()) accept();
}

void ShowImportWizard(QWidget* parent) {
  frmWizardBP wizard(parent);
  if (!wizard.AskForFile()) return;
  wizard.exec();
}

}  // namespace tessaly::spreadsheet
