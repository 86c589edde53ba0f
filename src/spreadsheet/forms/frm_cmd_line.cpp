#include "spreadsheet/forms/frm_cmd_line.h"

#include <QApplication>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "batch/engine/engine_client.h"
#include "platform/dates.h"
#include "platform/dialogs.h"
#include "platform/numfmt.h"
#include "platform/paths.h"
#include "spreadsheet/texts.h"

namespace tessaly::spreadsheet {

namespace {
QString Q(const std::string& s) { return QString::fromStdString(s); }
namespace mb = platform::mb;

// The tree's kinds with their switches, in the order of the switch list.
struct Kind {
  const char* label;
  const char* token;
};
constexpr Kind kKinds[] = {{"Actuals", "/A"},
                           {"Actuals & Cleansed", "/AC"},
                           {"Actuals & Fit", "/AFIT"},
                           {"Actuals & Forecasts", "/AF"},
                           {"Actuals, Fit & Forecasts", "/AFF"},
                           {"Actuals & Residuals", "/AR"},
                           {"Fit & Forecasts", "/F"},
                           {"Forecasts", "/FF"},
                           {"Residuals", "/R"},
                           {"Include Limits", "/P"}};
}  // namespace

frmCmdLine::frmCmdLine(std::filesystem::path program_folder, QWidget* parent)
    : QDialog(parent), program_folder_(std::move(program_folder)) {
  setObjectName("frmCmdLine");
  setWindowTitle(texts::kRunnerTitle);
  resize(780, 540);
  auto* top = new QVBoxLayout(this);
  auto* fileRow = new QHBoxLayout;
  fileRow->addWidget(new QLabel("Workbook:"));
  txtFile = new QLineEdit;
  txtFile->setObjectName("txtFile");
  txtFile->setReadOnly(true);
  fileRow->addWidget(txtFile, 1);
  cmdBrowse = new QPushButton("Browse...");
  cmdBrowse->setObjectName("cmdBrowse");
  fileRow->addWidget(cmdBrowse);
  top->addLayout(fileRow);

  auto* middle = new QHBoxLayout;
  auto* props = new QFormLayout;
  cboWorksheet = new QComboBox;
  cboWorksheet->setObjectName("cboWorksheet");
  props->addRow("Worksheet:", cboWorksheet);
  auto field = [&](QLineEdit*& e, const char* name, const char* label) {
    e = new QLineEdit;
    e->setObjectName(name);
    props->addRow(label, e);
  };
  field(txtSeasonality, "txtSeasonality", "Seasonality:");
  field(txtMajor, "txtMajor", "Major:");
  field(txtMinor, "txtMinor", "Minor:");
  field(txtForecasts, "txtForecasts", "Forecasts:");
  txtSeasonality->setText("12");
  txtForecasts->setText("36");
  middle->addLayout(props, 1);

  tvwSwitches = new QTreeWidget;
  tvwSwitches->setObjectName("tvwSwitches");
  tvwSwitches->setHeaderLabel("Charts");
  auto* charts = new QTreeWidgetItem(tvwSwitches, {"Enable Charts"});
  charts->setFlags(charts->flags() | Qt::ItemIsUserCheckable | Qt::ItemIsAutoTristate);
  for (const Kind& k : kKinds) {
    auto* item = new QTreeWidgetItem(charts, {k.label});
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    item->setCheckState(0, std::string(k.token) == "/P" ? Qt::Unchecked : Qt::Checked);
  }
  charts->setExpanded(true);
  middle->addWidget(tvwSwitches, 1);
  top->addLayout(middle);

  auto* split = new QSplitter(Qt::Horizontal);
  tvwProgress = new QTreeWidget;
  tvwProgress->setObjectName("tvwProgress");
  tvwProgress->setHeaderLabels({"Series", "Row", "Result"});
  split->addWidget(tvwProgress);
  txtLog = new QPlainTextEdit;
  txtLog->setObjectName("txtLog");
  txtLog->setReadOnly(true);
  split->addWidget(txtLog);
  top->addWidget(split, 1);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  cmdRun = new QPushButton("Run");
  cmdRun->setObjectName("cmdRun");
  cmdCancel = new QPushButton("Cancel");
  cmdCancel->setObjectName("cmdCancel");
  buttons->addWidget(cmdRun);
  buttons->addWidget(cmdCancel);
  top->addLayout(buttons);
  connect(cmdBrowse, &QPushButton::clicked, this, &frmCmdLine::cmdBrowse_Click);
  connect(cmdRun, &QPushButton::clicked, this, &frmCmdLine::cmdRun_Click);
  connect(cmdCancel, &QPushButton::clicked, this, &frmCmdLine::cmdCancel_Click);
}

std::vector<std::string> frmCmdLine::CMDLineOptions() const {
  std::vector<std::string> tokens;
  QTreeWidgetItem* charts = tvwSwitches->topLevelItem(0);
  if (charts->checkState(0) == Qt::Unchecked) return {"/NG"};
  bool every = true, any = false;
  for (int i = 0; i < charts->childCount(); ++i) {
    bool on = charts->child(i)->checkState(0) == Qt::Checked;
    std::string token = kKinds[i].token;
    if (token == "/P") {
      if (on) tokens.push_back(token);
      continue;
    }
    every = every && on;
    any = any || on;
    if (on) tokens.push_back(token);
  }
  // Limits alone draw nothing: no kind ticked is no graphs.
  if (!any) return {"/NG"};
  if (every) {
    std::vector<std::string> all = {"/ALL"};
    if (charts->child(charts->childCount() - 1)->checkState(0) == Qt::Checked) all.push_back("/P");
    return all;
  }
  return tokens;
}

void frmCmdLine::Log(const std::string& line) {
  txtLog->appendPlainText(Q(line));
  if (line.rfind(texts::kSeries, 0) == 0) {
    size_t at = line.rfind(texts::kRow);
    std::string name = line.substr(std::string(texts::kSeries).size(), at - std::string(texts::kSeries).size());
    std::string row = at == std::string::npos ? "" : line.substr(at + std::string(texts::kRow).size());
    current_row_ = new QTreeWidgetItem(tvwProgress, {Q(name), Q(row), "Running"});
    tvwProgress->scrollToItem(current_row_);
  } else if (current_row_ && line == texts::kWritingForecasts) {
    current_row_->setText(2, "Forecasts written");
  } else if (current_row_ && (line.rfind(texts::kEngineError, 0) == 0 || line == texts::kEngineRunError)) {
    current_row_->setText(2, Q(line));
  }
  QApplication::processEvents();
}

bool frmCmdLine::LoadFile(const std::filesystem::path& file) {
  WorkbookFormat format = FormatOfExtension(file);
  if (format != WorkbookFormat::Xlsx && format != WorkbookFormat::Xls) {
    platform::Dialogs().Message(texts::kOnlyXls, mb::OKOnly + mb::Exclamation, texts::kRunnerTitle);
    return false;
  }
  Workbook book;
  bool wrong = format == WorkbookFormat::Xlsx && std::filesystem::exists(file) && !IsExcel2007File(file);
  WorkbookRead read = wrong ? WorkbookRead{WorkbookStatus::Malformed, ""} : ReadWorkbook(file, book);
  if (!read.ok()) {
    std::string text = read.status == WorkbookStatus::Malformed
                           ? (format == WorkbookFormat::Xls ? texts::kBadXls : texts::kBadXlsx)
                           : texts::kOpenError;
    platform::Dialogs().Message(text, mb::OKOnly + mb::Exclamation, texts::kRunnerTitle);
    return false;
  }
  file_ = file;
  txtFile->setText(Q(file.string()));
  cboWorksheet->clear();
  for (const auto& s : book.sheets)
    if (!platform::EqualsNoCase(s.name, texts::kPropertiesSheet)) cboWorksheet->addItem(Q(s.name));
  PropertiesRead props = ReadPropertiesSheet(book, SheetFigures{12, 0, 0, 36});
  if (!props.MessageText().empty())
    platform::Dialogs().Message(props.MessageText(), mb::OKOnly + mb::Information, texts::kRunPropertiesTitle);
  txtSeasonality->setText(QString::number(props.figures.seasonality));
  txtMajor->setText(props.figures.major > 0 ? QString::number(props.figures.major) : "");
  txtMinor->setText(props.figures.minor > 0 ? QString::number(props.figures.minor) : "");
  txtForecasts->setText(QString::number(props.figures.forecasts));
  return true;
}

void frmCmdLine::cmdBrowse_Click() {
  platform::FileDialogRequest request{texts::kRunnerTitle, texts::kRunnerFilter, "", "", true};
  if (auto file = platform::Dialogs().OpenFile(request)) (void)LoadFile(*file);  // it says why it could not
}

void frmCmdLine::cmdRun_Click() {
  if (running_) return;
  if (file_.empty() || cboWorksheet->currentText().trimmed().isEmpty()) {
    platform::Dialogs().Message(texts::kNeedWorksheet, mb::OKOnly + mb::Exclamation, texts::kRunnerTitle);
    return;
  }
  auto number = [](QLineEdit* e) { return platform::ToDouble(e->text().toStdString()); };
  auto seasonality = number(txtSeasonality), forecasts = number(txtForecasts);
  auto major = number(txtMajor), minor = number(txtMinor);
  std::string problem, title = texts::kRunPropertiesTitle;
  if (!seasonality || *seasonality < 1 || *seasonality > 200)
    problem = texts::kSeasonalityMax + std::string("200") + ".";
  else if (forecasts && *forecasts > 600)
    problem = texts::kForecastsExceed + std::string("600");
  else if (minor && *minor > *seasonality)
    problem = "Minor value is greater than the Seasonality.";
  if (!problem.empty()) {
    platform::Dialogs().Message(problem, mb::OKOnly + mb::Exclamation, title);
    return;
  }
  RunnerSettings settings;
  settings.switches = RunnerSwitches::Parse(CMDLineOptions());
  settings.use_figures = true;
  settings.figures = {static_cast<int>(*seasonality), major ? static_cast<int>(*major) : 0,
                      minor ? static_cast<int>(*minor) : 0, forecasts ? static_cast<int>(*forecasts) : 36};
  RunnerHost host;
  host.program_folder = program_folder_;
  host.log = [this](const std::string& line) { Log(line); };
  host.engine_call = engine_call_;
  host.reports = reports_;
  tvwProgress->clear();
  current_row_ = nullptr;
  Log(texts::kRunStarted + platform::dates::FormatTime(platform::dates::Now()));
  running_ = true;
  session_->canceled = false;
  host.session = session_;
  cmdRun->setEnabled(false);
  last_ = XLSEngine(file_, cboWorksheet->currentText().toStdString(), settings, host);
  running_ = false;
  cmdRun->setEnabled(true);
  if (last_.finished) Log(texts::kFinishedProcessing);
  else if (!last_.error.empty() && !last_.canceled)
    platform::Dialogs().Message(last_.error, mb::OKOnly + mb::Exclamation, texts::kRunnerTitle);
}

void frmCmdLine::cmdCancel_Click() {
  if (running_) {
    session_->canceled = true;
    return;
  }
  reject();
}

void ShowCmdLineRunner(QWidget* parent, const std::filesystem::path& program_folder, RunnerReportsFactory reports) {
  frmCmdLine dialog(program_folder, parent);
  if (reports) {
    // The graphs follow the tree as it stands when Run is pressed.
    auto* form = &dialog;
    QObject::connect(dialog.cmdRun, &QPushButton::pressed, form, [form, reports] {
      form->SetReports(reports(RunnerSwitches::Parse(form->CMDLineOptions()).Preferences()));
    });
  }
  dialog.exec();
}

}  // namespace tessaly::spreadsheet
