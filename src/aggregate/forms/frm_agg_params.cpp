#include "aggregate/forms/frm_agg_params.h"

#include <QCheckBox>
#include <QEvent>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTimer>
#include <QVBoxLayout>

namespace tessaly::aggregate {

namespace {
const char* const kBoxNames[16] = {
    "chkForecastsYes", "chkForecastsNo", "chkASCFileYes",     "chkASCFileNo",      "chktemYes",
    "chkTempNo",       "chkAddGenSeriesYes", "chkAddGenSeriesNo", "chkCausalYes",  "chkCauslNo",
    "chkAutomatic1",   "chkAutomatic2",  "chkFixedEffectsYes", "chkFixedEffectsNo", "chkPtoC",
    "chCtoP"};
}  // namespace

frmAggParams::frmAggParams(ParamsSetup setup, QWidget* parent) : QDialog(parent), params_(std::move(setup)) {
  setObjectName("frmAggParams");
  setWindowTitle("Aggregation Parameters");
  auto* layout = new QVBoxLayout(this);
  auto make_box = [this](aggregate::Box box, const char* text, QWidget* owner) {
    auto* b = new QCheckBox(text, owner);
    b->setObjectName(kBoxNames[static_cast<int>(box)]);
    boxes_[static_cast<int>(box)] = b;
    connect(b, &QCheckBox::clicked, this, [this, box](bool on) { Clicked(box, on); });
    return b;
  };
  auto question = [&](const char* label, aggregate::Box yes) {
    auto* row = new QWidget(this);
    auto* h = new QHBoxLayout(row);
    h->setContentsMargins(0, 0, 0, 0);
    auto* l = new QLabel(label, row);
    l->setWordWrap(true);
    l->setMinimumWidth(460);
    h->addWidget(l, 1);
    h->addWidget(make_box(yes, "Yes", row));
    h->addWidget(make_box(static_cast<aggregate::Box>(static_cast<int>(yes) + 1), "No", row));
    layout->addWidget(row);
    return row;
  };
  rowForecasts = question("Do You Already Have Forecasts for Parent? (The Forecast file is required to be "
                          "named GROUPT.PRO)", Box::ForecastsYes);
  rowAsc = question("Do You Already Have An ASC File For Parent?  (The ASC file is required to be  named "
                    "GROUPT.ASC)", Box::AscYes);
  rowMixed = question("Is This Data \"Mixed Frequency\"?                 (If you have a mix of products or "
                      "regions, select \"No\")", Box::MixedYes);
  rowAddSeries = question("Add Series (ie Level Shift, Causal, 4-4-5 pattern, etc.)  to Parent ASC?",
                          Box::AddSeriesYes);
  rowCausal = question("Do You Wish To Use the Parent's Historical Data And Forecasts As A Causal in the "
                       "Children ASC files?", Box::CausalYes);

  fraRules = new QGroupBox("Parent Processing Options", this);
  auto* rules = new QVBoxLayout(fraRules);
  rules->addWidget(make_box(Box::Automatic1, "Automatic With Users Rules", fraRules));
  rules->addWidget(make_box(Box::Automatic2, "Automatic With QVX Rules", fraRules));
  layout->addWidget(fraRules);
  rowFixedEffects = question("Disable \"Fixed Effects for Children\"?  (A set of K-1 Seasonal dummies that "
                             "are introduced as possible support variables.) ", Box::FixedEffectsYes);

  fraReconcile = new QGroupBox("Reconciliation", this);
  auto* rec = new QGridLayout(fraReconcile);
  rec->addWidget(make_box(Box::PtoC, "Bottom Up", fraReconcile), 0, 0);
  rec->addWidget(new QLabel("(Parent forecasts will be adjusted to match Children)", fraReconcile), 0, 1);
  rec->addWidget(make_box(Box::CtoP, "Top Down", fraReconcile), 1, 0);
  rec->addWidget(new QLabel("(Children forecasts will be adjusted to match Parent)", fraReconcile), 1, 1);
  chkMinT = new QCheckBox("Optimal (MinT)", fraReconcile);
  chkMinT->setObjectName("chkMinT");
  rec->addWidget(chkMinT, 2, 0);
  rec->addWidget(new QLabel("(Parent and Children forecasts weighed together by their in-sample errors)",
                            fraReconcile), 2, 1);
  connect(chkMinT, &QCheckBox::clicked, this, [this](bool on) {
    params_.ChooseMinT(on);
    Sync();
  });
  layout->addWidget(fraReconcile);

  auto* number = new QHBoxLayout;
  lblNumberFore = new QLabel("Number of Forecasts to be Created", this);
  txtNumberFore = new QLineEdit(this);
  txtNumberFore->setObjectName("txtNumberFore");
  txtNumberFore->setMaximumWidth(80);
  txtNumberFore->installEventFilter(this);
  number->addWidget(lblNumberFore);
  number->addWidget(txtNumberFore);
  number->addStretch();
  layout->addLayout(number);
  connect(txtNumberFore, &QLineEdit::textEdited, this,
          [this](const QString& text) { params_.SetNumberText(text.toStdString()); });

  auto* buttons = new QHBoxLayout;
  auto* ok = new QPushButton("OK", this);
  ok->setObjectName("Command1");
  auto* cancel = new QPushButton("Cancel", this);
  cancel->setObjectName("Command2");
  buttons->addStretch();
  buttons->addWidget(ok);
  buttons->addWidget(cancel);
  layout->addStretch();
  layout->addLayout(buttons);
  connect(ok, &QPushButton::clicked, this, [this] {
    params_.LeaveNumberField();
    if (params_.Ok()) accept();
    Sync();
  });
  connect(cancel, &QPushButton::clicked, this, [this] {
    params_.Cancel();
    reject();
  });
  Sync();
}

bool frmAggParams::eventFilter(QObject* watched, QEvent* event) {
  if (watched == txtNumberFore) {
    if (event->type() == QEvent::FocusIn) QTimer::singleShot(0, txtNumberFore, &QLineEdit::selectAll);
    if (event->type() == QEvent::FocusOut && params_.state() == AggParams::State::Open) {
      params_.LeaveNumberField();
      Sync();
    }
  }
  return QDialog::eventFilter(watched, event);
}

void frmAggParams::Clicked(aggregate::Box box, bool checked) {
  params_.Click(box, checked);
  Sync();
  // A file that contradicts an answer may give the dialog up.
  if (params_.state() == AggParams::State::GivenUp) reject();
}

void frmAggParams::Sync() {
  for (int i = 0; i < 16; ++i) {
    QSignalBlocker quiet(boxes_[i]);
    boxes_[i]->setChecked(params_.Value(static_cast<aggregate::Box>(i)));
  }
  {
    QSignalBlocker quiet(chkMinT);
    chkMinT->setChecked(params_.MinT());
  }
  const ParamsVisibility& v = params_.Visible();
  rowAsc->setVisible(v.asc);
  rowMixed->setVisible(v.mixed && params_.MixedPairAllowed());
  rowAddSeries->setVisible(v.add_series);
  rowCausal->setVisible(v.causal);
  fraRules->setVisible(v.rules);
  rowFixedEffects->setVisible(v.fixed_effects);
  fraReconcile->setVisible(v.reconcile);
  lblNumberFore->setVisible(v.number_label);
  txtNumberFore->setVisible(v.number_label);
  txtNumberFore->setEnabled(v.number_enabled);
  if (txtNumberFore->text().toStdString() != params_.NumberText())
    txtNumberFore->setText(QString::fromStdString(params_.NumberText()));
  adjustSize();
}

}  // namespace tessaly::aggregate
