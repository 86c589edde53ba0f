#include "genseries/forms/frm_wizard2.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDate>
#include <QDateEdit>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QVBoxLayout>

#include "genseries/forms/frm_dialogs.h"
#include "genseries/wizard_texts.h"
#include "platform/dialogs.h"

namespace tessaly::genseries {

namespace {
const QDate kNoPickerDate(1753, 1, 1);
QString Q(const std::string& s) { return QString::fromStdString(s); }
const char* kMonths[] = {"January", "February", "March",     "April",   "May",      "June",
                         "July",    "August",   "September", "October", "November", "December"};
const char* kDays[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};

QDateEdit* Picker(QWidget* parent, const char* name) {
  auto* d = new QDateEdit(parent);
  d->setObjectName(name);
  d->setDisplayFormat("MM/dd/yyyy");
  d->setCalendarPopup(true);
  d->setMinimumDate(kNoPickerDate);
  d->setSpecialValueText(" ");
  d->setDate(kNoPickerDate);
  return d;
}

std::vector<std::string> Selected(QListWidget* list) {
  std::vector<std::string> out;
  for (QListWidgetItem* item : list->selectedItems()) out.push_back(item->text().toStdString());
  return out;
}

void Fill(QListWidget* list, const std::vector<std::string>& items) {
  list->clear();
  for (const auto& i : items) list->addItem(Q(i));
}
}  // namespace

std::string DateText(const QDateEdit* picker) {
  QDate d = picker->date();
  if (d == kNoPickerDate) return {};
  return FormatVariableDate({d.year(), d.month(), d.day()});
}

void SetDateText(QDateEdit* picker, const std::string& text) {
  std::optional<platform::dates::Date> d = VariableDate(text);
  picker->setDate(d ? QDate(d->year, d->month, d->day) : kNoPickerDate);
}

frmWizard2::frmWizard2(AddSeriesWizard& wizard, QWidget* parent) : QDialog(parent), w_(wizard) {
  setObjectName("frmWizard2");
  setWindowTitle(texts::kWizardTitle);
  auto* layout = new QVBoxLayout(this);
  lblInstruction = new QLabel(this);
  lblInstruction->setObjectName("lblInstruction");
  lblInstruction->setWordWrap(true);
  QFont bold = lblInstruction->font();
  bold.setBold(true);
  lblInstruction->setFont(bold);
  layout->addWidget(lblInstruction);
  fraStep = new QStackedWidget(this);
  fraStep->setObjectName("fraStep");
  fraStep->addWidget(BuildOptions());
  fraStep->addWidget(BuildIntervention("fraLevel", txtLevel));
  fraStep->addWidget(BuildIntervention("fraPulse", txtPulse));
  fraStep->addWidget(BuildIntervention("fraSP", txtSP));
  for (auto* fields : {&txtPulse, &txtSP}) {
    for (int i : {2, 3}) {
      (*fields)[i]->setReadOnly(true);
      connect((*fields)[i - 2], &QLineEdit::textChanged, (*fields)[i], &QLineEdit::setText);
    }
  }
  fraStep->addWidget(BuildIntervention("fraTrend", txtTrend));
  fraStep->addWidget(BuildHolidays());
  fraStep->addWidget(BuildUserDef());
  lblSummary = new QLabel(this);
  lblSummary->setObjectName("fraFinished");
  lblSummary->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  lblSummary->setWordWrap(true);
  fraStep->addWidget(lblSummary);
  layout->addWidget(fraStep, 1);

  auto* nav = new QHBoxLayout;
  nav->addStretch(1);
  const char* names[] = {"cmdBack", "cmdNext", "cmdCancel", "cmdFinish"};
  const char* captions[] = {"< &Back", "&Next >", "Cancel", "&Finish"};
  for (int i = 0; i < 4; ++i) {
    cmdNav[i] = new QPushButton(captions[i], this);
    cmdNav[i]->setObjectName(names[i]);
    cmdNav[i]->setAutoDefault(false);
    cmdNav[i]->setFocusPolicy(Qt::NoFocus);  // a click on Next does not leave the field first
    nav->addWidget(cmdNav[i]);
  }
  layout->addLayout(nav);
  connect(cmdNav[0], &QPushButton::clicked, this, &frmWizard2::cmdBack_Click);
  connect(cmdNav[1], &QPushButton::clicked, this, &frmWizard2::cmdNext_Click);
  connect(cmdNav[2], &QPushButton::clicked, this, &frmWizard2::cmdCancel_Click);
  connect(cmdNav[3], &QPushButton::clicked, this, &frmWizard2::cmdFinish_Click);
  resize(660, 540);
  Refresh();
}

QWidget* frmWizard2::BuildOptions() {
  auto* page = new QWidget(this);
  page->setObjectName("fraOptions");
  auto* v = new QVBoxLayout(page);
  auto box = [&](QCheckBox*& b, const char* name, const char* text, bool enabled) {
    b = new QCheckBox(text, page);
    b->setObjectName(name);
    b->setEnabled(enabled);
    v->addWidget(b);
  };
  box(chkAddLevel, "chkAddLevel", texts::kChkLevel, true);
  box(chkAddPulse, "chkAddPulse", texts::kChkPulse, true);
  box(chkAddSP, "chkAddSP", texts::kChkSP, w_.SPAllowed());
  box(chkAddTrend, "chkAddTrend", texts::kChkTrend, true);
  box(chkAddHoliday, "chkAddHoliday", texts::kChkHoliday, w_.HolidayAllowed());
  box(chkAddUserDef, "chkAddUserDef", texts::kChkUserDef, w_.UserDefAllowed());
  v->addStretch(1);
  return page;
}

QWidget* frmWizard2::BuildIntervention(const char* name, std::array<QLineEdit*, 4>& fields) {
  auto* page = new QWidget(this);
  page->setObjectName(name);
  auto* form = new QFormLayout(page);
  const char* labels[] = {"Starting Year", "Starting Period", "Ending Year", "Ending Period"};
  const QString stem = QString(name).mid(3);  // "Level", "Pulse", "SP", "Trend"
  for (int i = 0; i < 4; ++i) {
    fields[i] = new QLineEdit(page);
    fields[i]->setObjectName(QString("txt%1%2").arg(stem).arg(i + 1));
    fields[i]->setMaximumWidth(120);
    form->addRow(labels[i], fields[i]);
    // Each field is checked as it is left, and keeps the focus while it is in error.
    connect(fields[i], &QLineEdit::editingFinished, this, [this, &fields, i] {
      if (refreshing_ || !fields[i]->isVisible()) return;
      InterventionFields values;
      for (int k = 0; k < 4; ++k) values[k] = fields[k]->text().toStdString();
      if (!w_.CheckInterventionField(values, i)) {
        fields[i]->setFocus();
        fields[i]->selectAll();
      }
    });
  }
  const WizardDataset& d = w_.Dataset();
  auto* note = new QLabel(QString("The dataset runs from %1/%2 to %3/%4 (seasonality %5), future values included.")
                              .arg(d.begin_year).arg(d.begin_period).arg(d.last_year).arg(d.last_period).arg(d.seasonality),
                          page);
  note->setWordWrap(true);
  form->addRow(note);
  return page;
}

QWidget* frmWizard2::BuildHolidays() {
  auto* page = new QWidget(this);
  page->setObjectName("fraHolidays");
  auto* grid = new QGridLayout(page);
  grid->addWidget(new QLabel(texts::kAvailable, page), 0, 0);
  grid->addWidget(new QLabel(texts::kSelected, page), 0, 2);
  lstHolidays1 = new QListWidget(page);
  lstHolidays1->setObjectName("lstHolidays1");
  lstHolidays1->setSelectionMode(QAbstractItemView::ExtendedSelection);
  lstHolidays2 = new QListWidget(page);
  lstHolidays2->setObjectName("lstHolidays2");
  lstHolidays2->setSelectionMode(QAbstractItemView::ExtendedSelection);
  grid->addWidget(lstHolidays1, 1, 0);
  grid->addWidget(lstHolidays2, 1, 2);
  auto* buttons = new QVBoxLayout;
  cmdSelect = new QPushButton("Select >", page);
  cmdSelect->setObjectName("cmdSelect");
  cmdRemove = new QPushButton("< Remove", page);
  cmdRemove->setObjectName("cmdRemove");
  cmdSelectAll = new QPushButton("Select All >>", page);
  cmdSelectAll->setObjectName("cmdSelectAll");
  for (QPushButton* b : {cmdSelect, cmdRemove, cmdSelectAll}) {
    b->setAutoDefault(false);
    buttons->addWidget(b);
  }
  buttons->addStretch(1);
  grid->addLayout(buttons, 1, 1);
  auto* date_row = new QHBoxLayout;
  date_row->addWidget(new QLabel(texts::kHolidayDateLabel, page));
  dtpHolidays = Picker(page, "dtpHolidays");
  date_row->addWidget(dtpHolidays);
  date_row->addStretch(1);
  grid->addLayout(date_row, 2, 0, 1, 3);
  dtpHolidays->setEnabled(w_.HolidayDateNeeded());
  connect(cmdSelect, &QPushButton::clicked, this, [this] {
    Pull();
    w_.SelectHolidays(Selected(lstHolidays1));
    Refresh();
  });
  connect(cmdRemove, &QPushButton::clicked, this, [this] {
    Pull();
    w_.RemoveHolidays(Selected(lstHolidays2));
    Refresh();
  });
  connect(cmdSelectAll, &QPushButton::clicked, this, [this] {
    Pull();
    w_.SelectAllHolidays();
    Refresh();
  });
  return page;
}

QWidget* frmWizard2::BuildUserDef() {
  auto* page = new QWidget(this);
  page->setObjectName("fraUserDef");
  auto* v = new QVBoxLayout(page);
  auto* form = new QFormLayout;
  txtUserDef1 = new QLineEdit(page);
  txtUserDef1->setObjectName("txtUserDef1");
  form->addRow(texts::kNameLabel, txtUserDef1);
  cboUserDef1 = new QComboBox(page);
  cboUserDef1->setObjectName("cboUserDef1");
  cboUserDef1->addItems({texts::kTypeHeading, "0", "1", "2", "3"});
  form->addRow(texts::kTypeLabel, cboUserDef1);
  cboUserDef2 = new QComboBox(page);
  cboUserDef2->setObjectName("cboUserDef2");
  cboUserDef2->addItem(texts::kMethodHeading);
  for (const std::string& m : MethodsOffered(w_.Dataset())) cboUserDef2->addItem(Q(m));
  form->addRow(texts::kMethodLabel, cboUserDef2);
  dtpUserDef = Picker(page, "dtpUserDef");
  form->addRow(texts::kUserDateLabel, dtpUserDef);
  v->addLayout(form);
  auto* types = new QGroupBox(page);
  auto* tv = new QVBoxLayout(types);
  for (int i = 0; i < 4; ++i) {
    optDataType[i] = new QRadioButton(texts::kTypeTexts[i], types);
    optDataType[i]->setObjectName(QString("optDataType%1").arg(i + 1));
    tv->addWidget(optDataType[i]);
    connect(optDataType[i], &QRadioButton::toggled, this, [this, i](bool on) {
      if (on && !refreshing_) TypeChosen(i);
    });
  }
  v->addWidget(types);
  auto frame = [&](QGroupBox*& box, const char* name, const char* title, const std::vector<QString>& items,
                   std::vector<QRadioButton*>& options, int columns) {
    box = new QGroupBox(title, page);
    box->setObjectName(name);
    auto* g = new QGridLayout(box);
    for (size_t i = 0; i < items.size(); ++i) {
      auto* o = new QRadioButton(items[i], box);
      o->setObjectName(QString("%1%2").arg(name).arg(i + 1));
      options.push_back(o);
      g->addWidget(o, static_cast<int>(i) / columns, static_cast<int>(i) % columns);
    }
    v->addWidget(box);
  };
  frame(OptionQuarter, "OptionQuarter", texts::kSelectQuarter, {"1", "2", "3", "4"}, optQuarter, 4);
  std::vector<QString> months(std::begin(kMonths), std::end(kMonths));
  frame(OptionMonth, "OptionMonth", texts::kSelectMonth, months, optMonth, 4);
  std::vector<QString> days(std::begin(kDays), std::end(kDays));
  frame(OptionDay, "OptionDay", texts::kSelectDay, days, optDay, 4);
  lblMethodNote = new QLabel(page);
  lblMethodNote->setObjectName("lblMethodNote");
  lblMethodNote->setWordWrap(true);
  v->addWidget(lblMethodNote);
  v->addStretch(1);
  connect(cboUserDef2, &QComboBox::currentIndexChanged, this, [this] {
    if (!refreshing_) MethodChosen();
  });
  connect(cboUserDef1, &QComboBox::currentIndexChanged, this, [this](int index) {
    if (!refreshing_) TypeChosen(index - 1);
  });
  return page;
}

void frmWizard2::TypeChosen(int type) {
  Pull();
  w_.user_type = type;
  Refresh();
}

void frmWizard2::MethodChosen() {
  Pull();
  const std::string method = cboUserDef2->currentIndex() > 0 ? cboUserDef2->currentText().toStdString() : "";
  w_.ChooseMethod(method);
  Refresh();
  if (method == "Manual" && !manual_note_shown_) {
    frmMethod note(this, method);
    note.exec();
    manual_note_shown_ = note.chkDontShow && note.chkDontShow->isChecked();
  }
}

void frmWizard2::Pull() {
  w_.chkAddLevel = chkAddLevel->isChecked();
  w_.chkAddPulse = chkAddPulse->isChecked();
  w_.chkAddSP = chkAddSP->isChecked();
  w_.chkAddTrend = chkAddTrend->isChecked();
  w_.chkAddHoliday = chkAddHoliday->isChecked();
  w_.chkAddUserDef = chkAddUserDef->isChecked();
  auto read = [](const std::array<QLineEdit*, 4>& edits, InterventionFields& f) {
    for (int i = 0; i < 4; ++i) f[i] = edits[i]->text().toStdString();
  };
  read(txtLevel, w_.level);
  read(txtPulse, w_.pulse);
  read(txtSP, w_.sp);
  read(txtTrend, w_.trend);
  // A pulse ends where it starts; its end fields follow the start.
  for (InterventionFields* f : {&w_.pulse, &w_.sp}) (*f)[2] = (*f)[0], (*f)[3] = (*f)[1];
  w_.holiday_date = DateText(dtpHolidays);
  w_.user_name = txtUserDef1->text().toStdString();
  w_.user_date = DateText(dtpUserDef);
  auto chosen = [](const std::vector<QRadioButton*>& options) {
    for (size_t i = 0; i < options.size(); ++i)
      if (options[i]->isChecked()) return static_cast<int>(i) + 1;
    return 0;
  };
  w_.selected_quarter = chosen(optQuarter);
  w_.selected_month = chosen(optMonth);
  w_.selected_day = chosen(optDay);
}

void frmWizard2::Refresh() {
  refreshing_ = true;
  const WizardStep step = w_.Step();
  fraStep->setCurrentIndex(static_cast<int>(step));
  lblInstruction->setText(step == WizardStep::Finished ? QString() : Q(w_.Instruction()));
  chkAddLevel->setChecked(w_.chkAddLevel);
  chkAddPulse->setChecked(w_.chkAddPulse);
  chkAddSP->setChecked(w_.chkAddSP);
  chkAddTrend->setChecked(w_.chkAddTrend);
  chkAddHoliday->setChecked(w_.chkAddHoliday);
  chkAddUserDef->setChecked(w_.chkAddUserDef);
  auto write = [](const std::array<QLineEdit*, 4>& edits, const InterventionFields& f) {
    for (int i = 0; i < 4; ++i) edits[i]->setText(Q(f[i]));
  };
  write(txtLevel, w_.level);
  write(txtPulse, w_.pulse);
  write(txtSP, w_.sp);
  write(txtTrend, w_.trend);
  Fill(lstHolidays1, w_.lstHolidays1);
  Fill(lstHolidays2, w_.lstHolidays2);
  SetDateText(dtpHolidays, w_.holiday_date);
  txtUserDef1->setText(Q(w_.user_name));
  cboUserDef1->setCurrentIndex(w_.user_type + 1);
  for (int i = 0; i < 4; ++i) optDataType[i]->setChecked(w_.user_type == i);
  const bool locked = w_.NameAndTypeLocked();
  txtUserDef1->setEnabled(!locked);
  cboUserDef1->setEnabled(!locked);
  for (QRadioButton* o : optDataType) o->setEnabled(!locked);
  int method_index = cboUserDef2->findText(Q(w_.user_method));
  cboUserDef2->setCurrentIndex(method_index < 0 ? 0 : method_index);
  SetDateText(dtpUserDef, w_.user_date);
  dtpUserDef->setEnabled(w_.UserDateNeeded());
  OptionQuarter->setVisible(w_.user_method == "Quarter");
  OptionMonth->setVisible(w_.user_method == "Month");
  OptionDay->setVisible(w_.user_method == "Day");
  if (w_.selected_quarter > 0) optQuarter[w_.selected_quarter - 1]->setChecked(true);
  if (w_.selected_month > 0) optMonth[w_.selected_month - 1]->setChecked(true);
  if (w_.selected_day > 0) optDay[w_.selected_day - 1]->setChecked(true);
  QString note;
  if (w_.user_method == "Manual") note = texts::kManualNote;
  if (w_.user_method == "Business Days") {
    // The two opening lines, the holidays on one line, the closing line.
    const int n = static_cast<int>(std::size(texts::kBusinessDaysNote));
    QStringList holidays;
    for (int i = 2; i < n - 1; ++i) holidays << texts::kBusinessDaysNote[i];
    note = QString("%1\n%2 %3.\n%4").arg(texts::kBusinessDaysNote[0], texts::kBusinessDaysNote[1],
                                         holidays.join(", "), texts::kBusinessDaysNote[n - 1]);
  }
  lblMethodNote->setText(note.trimmed());
  if (step == WizardStep::Finished) lblSummary->setText(Summary());
  cmdNav[0]->setEnabled(step != WizardStep::Options);
  cmdNav[1]->setEnabled(step != WizardStep::Finished);
  cmdNav[3]->setEnabled(step == WizardStep::Finished);
  refreshing_ = false;
}

QString frmWizard2::Summary() const {
  const GenerationVariables v = w_.Variables();
  QStringList lines = {"Click Finish to save these choices and choose the files to adjust:", ""};
  auto range = [&](const char* what, const std::string& sy, const std::string& sp, const std::string& ey,
                   const std::string& ep, bool with_end) {
    if (sy.empty()) return;
    QString line = QString("%1 from %2/%3").arg(what, Q(sy), Q(sp));
    if (with_end) line += QString(" to %1/%2").arg(Q(ey), Q(ep));
    lines << line;
  };
  range("Level intervention", v.LevelStartYear, v.LevelStartPeriod, v.LevelEndYear, v.LevelEndPeriod, true);
  range("Pulse intervention", v.PulseStartYear, v.PulseStartPeriod, "", "", false);
  range("Seasonal pulse intervention", v.SPStartYear, v.SPStartPeriod, "", "", false);
  range("Trend", v.TrendStartYear, v.TrendStartPeriod, v.TrendEndYear, v.TrendEndPeriod, true);
  if (v.NumberofHolidaysSelected != "0") {
    QStringList names;
    for (const std::string& h : v.HolidayNames()) names << Q(h);
    lines << QString("Holidays: %1").arg(names.join(", "));
  }
  if (!v.UserDefName.empty())
    lines << QString("User defined series G_%1: %2, type %3").arg(Q(v.UserDefName), Q(v.UserDefMethod), Q(v.UserDefType));
  lines << "" << QString("%1 series in all.").arg(w_.NewSeriesCount());
  return lines.join("\n");
}

bool frmWizard2::EnsureDate(bool holidays) {
  const bool needed = holidays ? w_.HolidayDateNeeded() : w_.UserDateNeeded();
  std::string& date = holidays ? w_.holiday_date : w_.user_date;
  if (!needed || VariableDate(date)) return true;
  std::optional<platform::dates::Date> asked = AskFirstObservation(this);
  if (!asked) return false;
  date = FormatVariableDate(*asked);
  Refresh();
  return true;
}

void frmWizard2::cmdBack_Click() {
  Pull();
  w_.Back();
  Refresh();
}

void frmWizard2::cmdNext_Click() {
  Pull();
  if (w_.Step() == WizardStep::Holidays && !w_.lstHolidays2.empty() && !EnsureDate(true)) return;
  if (w_.Step() == WizardStep::UserDef && !w_.user_name.empty() && w_.user_type >= 0 &&
      !w_.user_method.empty() && !EnsureDate(false))
    return;
  (void)w_.Next();  // a step that does not pass has shown why and stays; the redraw shows where
  Refresh();
}

void frmWizard2::cmdFinish_Click() {
  if (w_.AtFinish()) accept();
}

void frmWizard2::cmdCancel_Click() {
  int16_t answer = platform::Dialogs().Message(texts::kCancelQuestion,
                                               platform::mb::YesNo | platform::mb::Question,
                                               texts::kCancelTitle);
  if (answer == platform::mb::Yes) QDialog::reject();
}

void frmWizard2::reject() { cmdCancel_Click(); }

}  // namespace tessaly::genseries
