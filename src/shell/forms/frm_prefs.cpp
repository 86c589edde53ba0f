#include "shell/forms/frm_prefs.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QEvent>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QVBoxLayout>

#include "shell/error_context.h"
#include "shell/preferences.h"
#include "shell/startup.h"

namespace tessaly::shell {

namespace {
constexpr const char* kDecimalsLabel = "Number Of Decimal Places In Data(2 to 9)";

// Focus in the decimals field selects its text, so a new figure replaces the old one.
class SelectOnFocus : public QObject {
 public:
  using QObject::QObject;
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::FocusIn)
      if (auto* edit = qobject_cast<QLineEdit*>(watched))
        QTimer::singleShot(0, edit, &QLineEdit::selectAll);
    return false;
  }
};

QLineEdit* DecimalsField(QWidget* owner) {
  auto* edit = new QLineEdit(QString::number(Prefs().Decimals), owner);
  edit->setObjectName("txtPref1");
  edit->setMaxLength(2);
  edit->setFixedWidth(56);
  edit->setAlignment(Qt::AlignRight);
  edit->installEventFilter(new SelectOnFocus(edit));
  return edit;
}

QDialogButtonBox* OkCancel(QDialog* dialog) {
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, dialog);
  buttons->button(QDialogButtonBox::Ok)->setObjectName("cmdOK");
  buttons->button(QDialogButtonBox::Cancel)->setObjectName("cmdCancel");
  QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
  return buttons;
}
}  // namespace

frmPrefsDecimals::frmPrefsDecimals(QWidget* parent) : QDialog(parent) {
  EnterProcedure("frmPrefsDecimals", "Form_Load");
  setObjectName("frmPrefsDecimals");
  setWindowTitle("Decimal Preference");
  auto* layout = new QVBoxLayout(this);
  auto* row = new QHBoxLayout;
  auto* label = new QLabel(kDecimalsLabel, this);
  txtPref1 = DecimalsField(this);
  label->setBuddy(txtPref1);
  row->addWidget(label);
  row->addSpacing(12);
  row->addWidget(txtPref1);
  layout->addLayout(row);
  layout->addSpacing(8);
  auto* buttons = OkCancel(this);
  connect(buttons, &QDialogButtonBox::accepted, this, &frmPrefsDecimals::cmdOK_Click);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  txtPref1->setFocus();
}

void frmPrefsDecimals::cmdOK_Click() {
  EnterProcedure("frmPrefsDecimals", "cmdOK_Click");
  Prefs().Decimals = DecimalsFromText(txtPref1->text().toStdString());
  WritePreferencesFile(Shell().program_folder, Prefs());
  accept();
}

frmPrefsGraphs::frmPrefsGraphs(QWidget* parent) : QDialog(parent) {
  EnterProcedure("frmPrefsGraphs", "Form_Load");
  setObjectName("frmPrefsGraphs");
  setWindowTitle("User Preferences");
  auto* layout = new QVBoxLayout(this);

  auto* decimals_row = new QHBoxLayout;
  auto* label = new QLabel(kDecimalsLabel, this);
  txtPref1 = DecimalsField(this);
  label->setBuddy(txtPref1);
  decimals_row->addWidget(label);
  decimals_row->addSpacing(12);
  decimals_row->addWidget(txtPref1);
  decimals_row->addStretch();
  layout->addLayout(decimals_row);

  auto* which = new QGroupBox("Graphs", this);
  auto* which_layout = new QHBoxLayout(which);
  const char* options[] = {"All Graphs", "Selected Graphs", "No Graphs"};
  for (int i = 0; i < 3; ++i) {
    optSelect[i] = new QRadioButton(options[i], which);
    optSelect[i]->setObjectName(QString("optSelect_%1").arg(i));
    which_layout->addWidget(optSelect[i]);
    connect(optSelect[i], &QRadioButton::clicked, this, &frmPrefsGraphs::optSelect_Click);
  }
  which_layout->addStretch();
  layout->addWidget(which);

  auto* graphs = new QGroupBox("Selected Graphs", this);
  auto* grid = new QGridLayout(graphs);
  const char* names[] = {"chkact",     "chkactclen",    "chkactfit", "chkactfore", "chkactfitfore",
                         "chkactres",  "chkfore",       "chkfitfore", "chkres"};
  const char* captions[] = {"Actuals",
                            "Actuals Cleansed",
                            "Actuals and Fit",
                            "Actuals and Forecasts",
                            "Actuals, Fit and Forecasts",
                            "Actuals and Residuals",
                            "Forecasts",
                            "Fit and Forecasts",
                            "Residuals"};
  auto values = Prefs().Graphs();
  for (int i = 0; i < 9; ++i) {
    chkGraphs[i] = new QCheckBox(captions[i], graphs);
    chkGraphs[i]->setObjectName(names[i]);
    chkGraphs[i]->setChecked(*values[i] != 0);
    grid->addWidget(chkGraphs[i], i % 5, i / 5);
  }
  grid->setColumnStretch(2, 1);
  layout->addWidget(graphs);

  chkNoLimits = new QCheckBox("Forecasts Only, No Lower or Upper Limits", this);
  chkNoLimits->setObjectName("chkNoLimits");
  chkNoLimits->setChecked(Prefs().NoLimits != 0);
  layout->addWidget(chkNoLimits);
  layout->addSpacing(6);

  auto* buttons = OkCancel(this);
  connect(buttons, &QDialogButtonBox::accepted, this, &frmPrefsGraphs::cmdOK_Click);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);

  optSelect[GraphOptionFor(Prefs())]->setChecked(true);
  optSelect_Click();
  txtPref1->setFocus();
}

void frmPrefsGraphs::optSelect_Click() {
  bool selected = optSelect[1]->isChecked();
  for (QCheckBox* box : chkGraphs) {
    if (!selected) box->setChecked(false);
    box->setEnabled(selected);
  }
}

void frmPrefsGraphs::cmdOK_Click() {
  EnterProcedure("frmPrefsGraphs", "cmdOK_Click");
  GraphDialogChoice choice;
  choice.decimals_text = txtPref1->text().toStdString();
  for (int i = 0; i < 3; ++i)
    if (optSelect[i]->isChecked()) choice.option = i;
  for (int i = 0; i < 9; ++i) choice.graphs[i] = chkGraphs[i]->isChecked();
  choice.no_limits = chkNoLimits->isChecked();
  ApplyGraphDialog(choice, Prefs());
  WritePreferencesFile(Shell().program_folder, Prefs());
  accept();
}

}  // namespace tessaly::shell
