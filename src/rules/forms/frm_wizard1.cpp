#include "rules/forms/frm_wizard1.h"

#include <QApplication>
#include <algorithm>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFocusEvent>
#include <QFormLayout>
#include <QFrame>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QTabWidget>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "rules/texts.h"

namespace tessaly::rules {

namespace {
QString Q(std::string_view s) { return QString::fromUtf8(s.data(), static_cast<int>(s.size())); }

QLabel* Note(QWidget* parent, const QString& text) {
  auto* l = new QLabel(text, parent);
  l->setWordWrap(true);
  return l;
}

QLabel* Heading(QWidget* parent, const QString& text) {
  auto* l = new QLabel(text, parent);
  QFont f = l->font();
  f.setBold(true);
  l->setFont(f);
  return l;
}

// Sub-pages of steps 3 and 4 by their place in the stacks.
int Step3Index(SubPage p) {
  switch (p) {
    case SubPage::Startmod: return 1;
    case SubPage::Inputmod: return 2;
    default: return 0;
  }
}
int Step4Index(SubPage p) {
  switch (p) {
    case SubPage::AutoModelID: return 0;
    case SubPage::ModelEstimation0: return 1;
    case SubPage::ModelEstimation1: return 2;
    case SubPage::GroupPC: return 3;
    case SubPage::LambdaEst: return 4;
    case SubPage::ModelForecasting: return 5;
    case SubPage::Simulation: return 6;
    default: return 0;
  }
}
}  // namespace

frmWizard1::frmWizard1(RulesWizard& wizard, QWidget* parent) : QDialog(parent), w_(wizard) {
  setObjectName("frmWizard1");
  setModal(true);
  auto* layout = new QVBoxLayout(this);

  auto* banner = new QFrame(this);
  banner->setObjectName("fraBanner");
  banner->setStyleSheet("#fraBanner { background: #2b4a6f; } QLabel { color: white; }");
  auto* banner_layout = new QVBoxLayout(banner);
  lblStepTitle = Heading(banner, "");
  lblStepTitle->setObjectName("lblStepTitle");
  QFont big = lblStepTitle->font();
  big.setPointSizeF(big.pointSizeF() * 1.3);
  lblStepTitle->setFont(big);
  lblInstruction = Note(banner, "");
  lblInstruction->setObjectName("lblInstruction");
  banner_layout->addWidget(lblStepTitle);
  banner_layout->addWidget(lblInstruction);
  layout->addWidget(banner);

  lblPageTitle = Heading(this, "");
  lblPageTitle->setObjectName("lblPageTitle");
  lblPageTitle->setContentsMargins(9, 4, 0, 0);
  layout->addWidget(lblPageTitle);

  fraStep = new QStackedWidget(this);
  fraStep->setObjectName("fraStep");
  fraStep->addWidget(BuildStep0());
  fraStep->addWidget(BuildStep1());
  fraStep->addWidget(BuildStep2());
  fraStep->addWidget(BuildStep3());
  fraStep->addWidget(BuildStep4());
  fraStep->addWidget(BuildStep5());
  layout->addWidget(fraStep, 1);

  auto* line = new QFrame(this);
  line->setFrameShape(QFrame::HLine);
  layout->addWidget(line);
  auto* buttons = new QHBoxLayout();
  for (int i = 0; i < 5; ++i) {
    cmdNav[i] = new QPushButton(Q(text::kButtons[i]), this);
    cmdNav[i]->setObjectName(QString("cmdNav%1").arg(i));
    cmdNav[i]->setAutoDefault(false);
    cmdNav[i]->setMinimumWidth(90);
    connect(cmdNav[i], &QPushButton::clicked, this, [this, i] { Act([this, i] { w_.cmdNav_Click(i); }); });
  }
  // Help is not offered.
  cmdNav[0]->setVisible(false);
  cmdNav[0]->setEnabled(false);
  buttons->addWidget(cmdNav[0]);
  buttons->addStretch(1);
  buttons->addWidget(cmdNav[1]);
  buttons->addSpacing(12);
  buttons->addWidget(cmdNav[2]);
  buttons->addWidget(cmdNav[3]);
  buttons->addSpacing(12);
  buttons->addWidget(cmdNav[4]);
  layout->addLayout(buttons);

  resize(760, 580);
  Refresh();
}

QWidget* frmWizard1::Control(const std::string& name) const {
  for (const auto& t : texts_)
    if (t.name == name) return t.edit;
  for (const auto& c : checks_)
    if (c.name == name) return c.box;
  return findChild<QWidget*>(QString::fromStdString(name));
}

// ---- Building the pages ------------------------------------------------------------------

QLineEdit* frmWizard1::Text(QWidget* page, QFormLayout* form, const QString& caption,
                            const std::string& name, TextField& field, int width) {
  auto* edit = new QLineEdit(page);
  edit->setObjectName(QString::fromStdString(name));
  edit->setMaximumWidth(width > 0 ? width : QWIDGETSIZE_MAX);
  edit->installEventFilter(this);
  auto* label = new QLabel(caption, page);
  // Long captions wrap on their own line above the field (the form's WrapLongRows).
  label->setWordWrap(caption.size() > 70);
  label->setBuddy(edit);
  if (form) form->addRow(label, edit);
  connect(edit, &QLineEdit::textEdited, this, [&field](const QString& t) { field.text = t.toStdString(); });
  texts_.push_back({edit, &field, label, name});
  return edit;
}

QCheckBox* frmWizard1::Check(QWidget* page, const QString& caption, const std::string& name,
                             CheckField& field, std::function<void(bool)> then) {
  auto* box = new QCheckBox(caption, page);
  box->setObjectName(QString::fromStdString(name));
  connect(box, &QCheckBox::clicked, this, [this, &field, then](bool on) {
    if (refreshing_) return;
    Act([&field, then, on] {
      field.value = on;
      if (then) then(on);
    });
  });
  checks_.push_back({box, &field, name});
  return box;
}

QComboBox* frmWizard1::Combo(QWidget* page, ComboField& field, std::function<void(const std::string&)> then) {
  auto* box = new QComboBox(page);
  box->setMinimumWidth(260);
  connect(box, &QComboBox::activated, this, [this, box, &field, then](int) {
    if (refreshing_) return;
    std::string entry = box->currentText().toStdString();
    Act([&field, then, entry] {
      field.text = entry;
      if (then) then(entry);
    });
  });
  combos_.push_back({box, &field});
  return box;
}

QWidget* frmWizard1::UpDown(QWidget* page, QLineEdit* edit, int low, int high) {
  auto* holder = new QWidget(page);
  auto* row = new QHBoxLayout(holder);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(2);
  edit->setParent(holder);
  row->addWidget(edit);
  for (int step : {-1, 1}) {
    auto* button = new QToolButton(holder);
    button->setArrowType(step > 0 ? Qt::UpArrow : Qt::DownArrow);
    button->setObjectName(edit->objectName() + (step > 0 ? "Up" : "Down"));
    button->setFocusPolicy(Qt::NoFocus);
    button->setAutoRepeat(true);
    row->addWidget(button);
    connect(button, &QToolButton::clicked, this, [this, edit, step, low, high] {
      for (auto& t : texts_) {
        if (t.edit != edit || !t.field->enabled) continue;
        bool ok = false;
        int value = QString::fromStdString(t.field->text).trimmed().toInt(&ok);
        if (!ok) value = low - step;
        value = std::clamp(value + step, low, high);
        t.field->text = std::to_string(value);
        Refresh();
      }
    });
  }
  row->addStretch(1);
  return holder;
}

QWidget* frmWizard1::BuildStep0() {
  auto* page = new QWidget(this);
  auto* layout = new QVBoxLayout(page);
  auto* group = new QButtonGroup(page);
  for (int i = 0; i < 6; ++i) {
    optModelingType[i] = new QRadioButton(Q(text::kModelingTypeCaptions[i]), page);
    optModelingType[i]->setObjectName(QString("optModelingType%1").arg(i));
    group->addButton(optModelingType[i], i);
  }
  connect(group, &QButtonGroup::idClicked, this, [this](int i) {
    if (!refreshing_) Act([this, i] { w_.ClickModelingType(i); });
  });
  // The choices in the order of their numbers, under their headings.
  const int order[] = {2, 0, 3, 1, 4, 5};
  std::string_view heading;
  for (int i : order) {
    if (text::kModelingTypeHeadings[i] != heading) {
      heading = text::kModelingTypeHeadings[i];
      layout->addSpacing(6);
      layout->addWidget(Heading(page, Q(heading)));
    }
    layout->addWidget(optModelingType[i]);
    if (i == 2) {
      auto* trend = Check(page, Q(text::kLocalTimeTrendCaption), "cboLocalTimeTrend", w_.cboLocalTimeTrend);
      trend->setContentsMargins(24, 0, 0, 0);
      auto* indent = new QHBoxLayout();
      indent->addSpacing(24);
      indent->addWidget(trend);
      layout->addLayout(indent);
    }
  }
  layout->addStretch(1);
  return page;
}

QWidget* frmWizard1::BuildStep1() {
  auto* page = new QWidget(this);
  auto* layout = new QVBoxLayout(page);
  lblConditionsFrame_ = Heading(page, "");
  layout->addWidget(lblConditionsFrame_);
  auto* group = new QButtonGroup(page);
  for (int i = 0; i < 7; ++i) {
    optConditions[i] = new QRadioButton(Q(text::kConditionCaptions[i]), page);
    optConditions[i]->setObjectName(QString("optConditions%1").arg(i));
    group->addButton(optConditions[i], i);
    if (i == 2) {
      auto* row = new QHBoxLayout();
      row->addWidget(optConditions[i]);
      auto* combo = Combo(page, w_.cboEditConditions, [this](const std::string& e) { w_.SelectEditConditions(e); });
      combo->setObjectName("cboEditConditions");
      row->addWidget(combo);
      row->addStretch(1);
      layout->addLayout(row);
    } else {
      layout->addWidget(optConditions[i]);
    }
  }
  connect(group, &QButtonGroup::idClicked, this, [this](int i) {
    if (!refreshing_) Act([this, i] { w_.ClickConditions(i); });
  });
  txtConditions1_ = Note(page, "");
  txtConditions1_->setObjectName("txtConditions1");
  txtConditions1_->setFrameShape(QFrame::StyledPanel);
  txtConditions1_->setMinimumHeight(48);
  layout->addSpacing(8);
  layout->addWidget(txtConditions1_);
  layout->addStretch(1);
  return page;
}

QWidget* frmWizard1::BuildStep2() {
  auto* page = new QWidget(this);
  auto* layout = new QVBoxLayout(page);
  auto* group = new QButtonGroup(page);
  std::string_view fixed[] = {text::kImplicitModelCaption, text::kIdentificationOnlyCaption,
                              text::kExplicitModelCaption};
  for (int i = 0; i < 3; ++i) {
    optModels[i] = new QRadioButton(Q(fixed[i]), page);
    optModels[i]->setObjectName(QString("optModels%1").arg(i));
    group->addButton(optModels[i], i);
    auto* row = new QHBoxLayout();
    row->addWidget(optModels[i]);
    if (i == 0) {
      auto* combo = Combo(page, w_.cboModelsinMemory, [this](const std::string& e) { w_.SelectPreset(e); });
      combo->setObjectName("cboModelsinMemory");
      combo->setMinimumWidth(340);
      row->addWidget(combo);
    } else if (i == 2) {
      auto* combo = Combo(page, w_.cboEditModel, [this](const std::string& e) { w_.SelectEditModel(e); });
      combo->setObjectName("cboEditModel");
      combo->setMinimumWidth(340);
      row->addWidget(combo);
    }
    row->addStretch(1);
    layout->addLayout(row);
    if (i == 0) {
      auto* allow = Check(page, Q(text::kAllowModificationsCaption), "chkAllowModifications",
                          w_.chkAllowModifications);
      auto* indent = new QHBoxLayout();
      indent->addSpacing(24);
      indent->addWidget(allow);
      layout->addLayout(indent);
    }
  }
  connect(group, &QButtonGroup::idClicked, this, [this](int i) {
    if (!refreshing_) Act([this, i] { w_.ClickModels(i); });
  });
  txtModels_ = Note(page, "");
  txtModels_->setObjectName("txtModels");
  txtModels_->setFrameShape(QFrame::StyledPanel);
  txtModels_->setMinimumHeight(48);
  layout->addSpacing(8);
  layout->addWidget(txtModels_);
  layout->addStretch(1);
  return page;
}

QWidget* frmWizard1::BuildStep3() {
  fraStep3 = new QStackedWidget(this);
  // fraReviewEditUse
  auto* review = new QWidget(fraStep3);
  auto* rl = new QVBoxLayout(review);
  rl->addWidget(Check(review, Q(text::kReviewEditCaption), "chkModelOptions1", w_.review.chkModelOptions1));
  rl->addWidget(Check(review, Q(text::kUseModelCaption), "chkModeOptions2", w_.review.chkModeOptions2));
  rl->addStretch(1);
  fraStep3->addWidget(review);

  // fraStartmod
  auto* start = new QWidget(fraStep3);
  auto* sl = new QVBoxLayout(start);
  lblStartmodTitle_ = Heading(start, "");
  sl->addWidget(lblStartmodTitle_);
  auto* sf = new QFormLayout();
  auto& m = w_.startmod;
  Text(start, sf, "Constant", "txtStartmod1", m.txtStartmod1, 120);
  Text(start, sf, "Lambda", "txtStartmod2", m.txtStartmod2);
  auto* diff = Text(start, nullptr, "# Of Differencing Operators", "txtStartmod3", m.txtStartmod3, 50);
  sf->addRow(texts_.back().label, UpDown(start, diff, 0, 3));
  Text(start, sf, "Back Order Power Of Differencing Operators", "txtStartmod4", m.txtStartmod4, 240);
  auto* ar = Text(start, nullptr, "# Of AR Polynomials", "txtStartmod5", m.txtStartmod5, 50);
  sf->addRow(texts_.back().label, UpDown(start, ar, 0, 4));
  auto* ma = Text(start, nullptr, "# Of MA Polynomials", "txtStartmod6", m.txtStartmod6, 50);
  sf->addRow(texts_.back().label, UpDown(start, ma, 0, 4));
  Text(start, sf, "# Of Parameters In Each AR Polynomials", "txtStartmod7", m.txtStartmod7, 240);
  Text(start, sf, "Back Order Powers For All AR Polynomials", "txtStartmod8", m.txtStartmod8, 240);
  Text(start, sf, "Coefficents For All AR Polynomials", "txtStartmod9", m.txtStartmod9, 240);
  Text(start, sf, "# Of Parameters In Each MA Polynomial", "txtStartmod10", m.txtStartmod10, 240);
  Text(start, sf, "Back Order Powers For All MA Polynomials", "txtStartmod11", m.txtStartmod11, 240);
  Text(start, sf, "Coefficients For All MA Polynomials", "txtStartmod12", m.txtStartmod12, 240);
  sl->addLayout(sf);
  sl->addStretch(1);
  fraStep3->addWidget(start);

  // fraInputmod
  auto* input = new QWidget(fraStep3);
  auto* il = new QHBoxLayout(input);
  auto* left = new QVBoxLayout();
  lblInputmodTitle_ = Heading(input, "");
  left->addWidget(lblInputmodTitle_);
  auto* inf = new QFormLayout();
  auto& n = w_.inputmod;
  Text(input, inf, "Lambda", "txtInputmod2", n.txtInputmod2);
  auto* idiff = Text(input, nullptr, "# Of Differencing Operators", "txtInputmod3", n.txtInputmod3, 50);
  inf->addRow(texts_.back().label, UpDown(input, idiff, 0, 3));
  Text(input, inf, "Back Order Power Of Differencing Operators", "txtInputmod4", n.txtInputmod4, 200);
  auto* den = Text(input, nullptr, "# Of Denominator Polynomials", "txtInputmod5", n.txtInputmod5, 50);
  inf->addRow(texts_.back().label, UpDown(input, den, 0, 1));
  auto* num = Text(input, nullptr, "# Of NumeratorPolynomials", "txtInputmod6", n.txtInputmod6, 50);
  inf->addRow(texts_.back().label, UpDown(input, num, 0, 3));
  Text(input, inf, "# Of Parameters In Each Denominator Polynomials", "txtInputmod7", n.txtInputmod7, 200);
  Text(input, inf, "Back Order Powers For All Denominator Polynomials", "txtInputmod8", n.txtInputmod8, 200);
  Text(input, inf, "Coefficients For All Denominator Polynomials", "txtInputmod9", n.txtInputmod9, 200);
  Text(input, inf, "# Of Parameters In Each Numerator Polynomial", "txtInputmod10", n.txtInputmod10, 200);
  Text(input, inf, "Back Order Powers for all Numerator Polynomials", "txtInputmod11", n.txtInputmod11, 200);
  Text(input, inf, "Coefficients For All Numerator Polynomials", "txtInputmod12", n.txtInputmod12, 200);
  left->addLayout(inf);
  left->addStretch(1);
  il->addLayout(left, 3);
  auto* right = new QVBoxLayout();
  right->addWidget(new QLabel("Copy Parameters To:  ", input));
  Treeview4 = new QTreeWidget(input);
  Treeview4->setObjectName("Treeview4");
  Treeview4->setHeaderHidden(true);
  connect(Treeview4, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item, int) {
    if (refreshing_) return;
    int i = Treeview4->indexOfTopLevelItem(item);
    if (i < 0 || i >= static_cast<int>(w_.inputmod.copy_to.size())) return;
    w_.inputmod.copy_to[i].second = item->checkState(0) == Qt::Checked;
    item->setExpanded(w_.inputmod.copy_to[i].second);
  });
  right->addWidget(Treeview4, 1);
  il->addLayout(right, 1);
  fraStep3->addWidget(input);
  return fraStep3;
}

QWidget* frmWizard1::BuildModelEstimationTree() {
  auto* page = new QWidget(this);
  auto* layout = new QHBoxLayout(page);
  TreeView5 = new QTreeWidget(page);
  TreeView5->setObjectName("TreeView5");
  TreeView5->setHeaderHidden(true);
  TreeView5->setRootIsDecorated(false);
  TreeView5->setMaximumWidth(210);
  // The chosen group of options stands out: bold on green, the others plain on white.
  TreeView5->setStyleSheet(
      "QTreeWidget { background: white; }"
      "QTreeWidget::item { padding: 3px; }"
      "QTreeWidget::item:selected { background: #9cd68c; color: black; }");
  for (int i = 0; i < 4; ++i) {
    auto* item = new QTreeWidgetItem(TreeView5, QStringList(Q(text::kTreeTexts[i])));
    item->setData(0, Qt::UserRole, Q(text::kTreeKeys[i]));
  }
  connect(TreeView5, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
    if (refreshing_ || !item) return;
    int i = TreeView5->indexOfTopLevelItem(item);
    Act([this, i] { w_.SelectTreeNode(i); });
  });
  layout->addWidget(TreeView5);

  fraModelEstimationPanes = new QStackedWidget(page);
  auto& e = w_.estimation;
  // ME1
  auto* me1 = new QWidget(fraModelEstimationPanes);
  auto* l1 = new QVBoxLayout(me1);
  l1->addWidget(new QLabel("Groups In Pooled Cross-Section T/S ?", me1));
  auto* g1 = new QButtonGroup(me1);
  auto* row1 = new QHBoxLayout();
  optGroups_[0] = new QRadioButton("Yes", me1);
  optGroups_[1] = new QRadioButton("No", me1);
  optGroups_[0]->setObjectName("optGroupsYes");
  optGroups_[1]->setObjectName("optGroupsNo");
  g1->addButton(optGroups_[0], 0);
  g1->addButton(optGroups_[1], 1);
  row1->addWidget(optGroups_[0]);
  row1->addWidget(optGroups_[1]);
  row1->addStretch(1);
  l1->addLayout(row1);
  connect(g1, &QButtonGroup::idClicked, this, [this](int i) {
    if (!refreshing_) Act([this, i] { w_.AnswerGroups(i == 0 ? YesNo::Yes : YesNo::No); });
  });
  l1->addStretch(1);
  fraModelEstimationPanes->addWidget(me1);
  // ME2
  auto* me2 = new QWidget(fraModelEstimationPanes);
  auto* f2 = new QFormLayout(me2);
  Text(me2, f2, "% Change In Error Sum of Squares", "txtModelEst1", e.txtModelEst1);
  Text(me2, f2, "% Change In The Parameter Values", "txtModelEst2", e.txtModelEst2);
  Text(me2, f2, "Maximum Number Of Iterations", "txtModelEst3", e.txtModelEst3);
  fraModelEstimationPanes->addWidget(me2);
  // ME3
  auto* me3 = new QWidget(fraModelEstimationPanes);
  auto* f3 = new QFormLayout(me3);
  f3->addRow(Check(me3, "Necessity", "chkModelEst11", e.chkModelEst11));
  Text(me3, f3, "Confidence Level for Necessity Test (%)", "txtModelEst9", e.txtModelEst9);
  f3->addRow(Check(me3, "Enable Test For Constancy Of Parameters", "chkModelEst14", e.chkModelEst14));
  Text(me3, f3, "Confidence Level for Constancy Test (%)", "txtModelEst12", e.txtModelEst12);
  fraModelEstimationPanes->addWidget(me3);
  // ME4
  auto* me4 = new QWidget(fraModelEstimationPanes);
  auto* f4 = new QFormLayout(me4);
  f4->addRow(Check(me4, "Sufficiency (Stochastic Structure)", "chkModelEst2", e.chkModelEst2));
  Text(me4, f4, "Confidence Level for Sufficiency Test (%)", "txtModelEst4", e.txtModelEst4);
  f4->addRow(Check(me4, "Sufficiency (Deterministic Structure)", "chkModelEst3", e.chkModelEst3));
  Text(me4, f4, "Confidence Level (%)", "txtModelEst5", e.txtModelEst5);
  Text(me4, f4, "Maximum Number of Outliers to be Identified", "txtModelEst6", e.txtModelEst6);
  auto* kinds = new QHBoxLayout();
  kinds->addWidget(Check(me4, "Include Pulse", "chkModelEst5", e.chkModelEst5));
  kinds->addWidget(Check(me4, "Include Step", "chkModelEst7", e.chkModelEst7));
  kinds->addWidget(Check(me4, "Include Seasonal Pulse", "chkModelEst9", e.chkModelEst9));
  kinds->addWidget(Check(me4, "Local Trend", "chkModelEst8", e.chkModelEst8));
  f4->addRow(kinds);
  Text(me4, f4, "Minimum No. of Observations in Group", "txtModelEst7", e.txtModelEst7);
  f4->addRow(Check(me4, "Fixup For Fixed Effects", "chkModelEst15", e.chkModelEst15));
  f4->addRow(Check(me4, "Enable The Automatic Fixup For Variance Stability", "chkModelEst13", e.chkModelEst13));
  Text(me4, f4, "Confidence Level For Variance Stability Test (%)", "txtModelEst10", e.txtModelEst10);
  Text(me4, f4, "Minimum Number of Residuals to Pool", "txtModelEst11", e.txtModelEst11);
  auto* g4 = new QButtonGroup(me4);
  auto* row4 = new QHBoxLayout();
  row4->addWidget(new QLabel("Enter Lambda Values?", me4));
  optLambdas_[0] = new QRadioButton("Yes", me4);
  optLambdas_[1] = new QRadioButton("No", me4);
  optLambdas_[0]->setObjectName("optLambdasYes");
  optLambdas_[1]->setObjectName("optLambdasNo");
  g4->addButton(optLambdas_[0], 0);
  g4->addButton(optLambdas_[1], 1);
  row4->addWidget(optLambdas_[0]);
  row4->addWidget(optLambdas_[1]);
  row4->addStretch(1);
  f4->addRow(row4);
  connect(g4, &QButtonGroup::idClicked, this, [this](int i) {
    if (!refreshing_) Act([this, i] { w_.AnswerLambdas(i == 0 ? YesNo::Yes : YesNo::No); });
  });
  fraModelEstimationPanes->addWidget(me4);
  layout->addWidget(fraModelEstimationPanes, 1);
  return page;
}

QWidget* frmWizard1::BuildGroups() {
  auto* page = new QWidget(this);
  auto* layout = new QVBoxLayout(page);
  layout->addWidget(new QLabel("Sample Size of Each Group (up to 100 groups):", page));
  tabGroups_ = new QTabWidget(page);
  tabGroups_->setObjectName("tabGroups");
  for (int tab = 0; tab < 10; ++tab) {
    auto* sheet = new QWidget(tabGroups_);
    auto* form = new QFormLayout(sheet);
    for (int i = tab * 10; i < tab * 10 + 10; ++i)
      Text(sheet, form, QString("Group %1").arg(i + 1), "txtGroup_PC(" + std::to_string(i) + ")",
           w_.groups.txtGroup_PC[i]);
    tabGroups_->addTab(sheet, QString("%1-%2").arg(tab * 10 + 1).arg(tab * 10 + 10));
  }
  connect(tabGroups_, &QTabWidget::currentChanged, this, [this](int t) {
    if (!refreshing_) w_.groups.current_tab = t;
  });
  layout->addWidget(tabGroups_, 1);
  return page;
}

QWidget* frmWizard1::BuildStep4() {
  fraStep4 = new QStackedWidget(this);
  // fraAutoModelID
  auto* auto_id = new QWidget(fraStep4);
  auto* af = new QFormLayout(auto_id);
  af->setRowWrapPolicy(QFormLayout::WrapLongRows);
  auto& a = w_.auto_model_id;
  Text(auto_id, af,
       "Maximum Lead For All Input Series That Are Data Type 3 Which Allows Lead Effects To Be "
       "Incorporated Reflecting Anticipation Of An Activity In The Series",
       "txtAutoModelID1", a.txtAutoModelID1);
  af->addRow(Check(auto_id, "Intermittent Series (Many Zero Values)", "chkAutoModelID1", a.chkAutoModelID1));
  af->addRow(Check(auto_id, "Difference Input Series When Identifying", "chkAutoModelID2", a.chkAutoModelID2));
  af->addRow(Check(auto_id, "Constrain Input Series Effects", "chkAutoModelID3", a.chkAutoModelID3));
  fraStep4->addWidget(auto_id);
  // fraModelEstimation(0)
  auto* est0 = new QWidget(fraStep4);
  auto* e0 = new QVBoxLayout(est0);
  e0->addWidget(Check(est0, "Enable Model Estimation", "chkModelEst1", w_.estimation.chkModelEst1,
                      [this](bool on) { w_.SetEstimationEnabled(on); }));
  e0->addStretch(1);
  fraStep4->addWidget(est0);
  // fraModelEstimation(1)
  fraStep4->addWidget(BuildModelEstimationTree());
  // fraGroupPCSTS
  fraStep4->addWidget(BuildGroups());
  // fraLambdaEst
  auto* lam = new QWidget(fraStep4);
  auto* lf = new QFormLayout(lam);
  for (int i = 0; i < 10; ++i)
    Text(lam, lf, QString("Lambda %1").arg(i + 1), "txtLambda_Est(" + std::to_string(i) + ")",
         w_.lambdas.txtLambda_Est[i]);
  fraStep4->addWidget(lam);
  // fraModelForecasting
  auto* fc = new QWidget(fraStep4);
  auto* ff = new QFormLayout(fc);
  auto& f = w_.forecasting;
  ff->addRow(Check(fc, "Enable Model Forecasting", "chkModelForecasting1", f.chkModelForecasting1,
                   [this](bool on) { w_.SetForecastingEnabled(on); }));
  Text(fc, ff, "Confidence Limit for the Forecasts(%)", "txtModelForecasting2", f.txtModelForecasting2);
  ff->addRow(Check(fc, "Forecasts Must Be Positive Values", "chkModelForecasting3", f.chkModelForecasting3));
  ff->addRow(Check(fc, "Forecasts Must Be Integers", "chkModelForecasting4", f.chkModelForecasting4));
  ff->addRow(Check(fc, "Forecasts Begin At The Last Observation", "chkModelForecasting5", f.chkModelForecasting5));
  ff->addRow(Check(fc, "Convert Pulses To Seasonal Pulses", "chkModelForecasting6", f.chkModelForecasting6));
  fraStep4->addWidget(fc);
  // fraSimulation
  auto* sim = new QWidget(fraStep4);
  auto* sf = new QFormLayout(sim);
  auto& s = w_.simulation;
  sf->addRow(Check(sim, "Enable Simulation", "chkSimulation1", s.chkSimulation1,
                   [this](bool on) { w_.SetSimulationEnabled(on); }));
  Text(sim, sf, "Variance of the Noise Series", "txtSimulation1", s.txtSimulation1);
  Text(sim, sf, "Seed Value to Start ( 0 for Clock)", "txtSimulation2", s.txtSimulation2);
  fraStep4->addWidget(sim);
  return fraStep4;
}

QWidget* frmWizard1::BuildStep5() {
  auto* page = new QWidget(this);
  auto* layout = new QVBoxLayout(page);
  layout->addWidget(Note(page, "Press Finish to run the project with these choices, or Back to change them."));
  layout->addSpacing(8);
  auto& p = w_.finish;
  layout->addWidget(Check(page, "Save Rules", "chkSaveConditions", p.chkSaveConditions));
  layout->addWidget(Check(page, "Save Models", "chkSaveModels", p.chkSaveModels,
                          [this](bool on) { w_.SetSaveModels(on); }));
  auto* models = new QHBoxLayout();
  models->addSpacing(24);
  models->addWidget(Check(page, "Initial Model", "chkInitialModel", p.chkInitialModel));
  models->addWidget(Check(page, "Final Model", "chkFinalModel", p.chkFinalModel));
  models->addStretch(1);
  layout->addLayout(models);
  layout->addStretch(1);
  return page;
}

// ---- Binding -------------------------------------------------------------------------------

void frmWizard1::Act(const std::function<void()>& step) {
  if (acting_) return;
  acting_ = true;
  step();
  acting_ = false;
  QApplication::processEvents();
  if (w_.Closed()) {
    if (w_.Finished())
      QDialog::accept();
    else
      QDialog::reject();
    return;
  }
  Refresh();
}

void frmWizard1::Refresh() {
  refreshing_ = true;
  setWindowTitle(QString::fromStdString(w_.WindowTitle()));
  int step = std::clamp<int>(w_.Step(), 0, 5);
  lblStepTitle->setText(QString::fromStdString(w_.StepTitle()));
  std::string_view instruction;
  switch (step) {
    case 0: instruction = text::kInstructionIntro; break;
    case 1: instruction = text::kInstructionRules; break;
    case 2: instruction = text::kInstructionModels; break;
    case 5: instruction = text::kInstructionFinished; break;
    default: break;
  }
  lblInstruction->setText(Q(instruction));
  lblInstruction->setVisible(!instruction.empty());
  QString page_title = step == 3 || step == 4 ? QString::fromStdString(w_.PageTitle()) : QString();
  lblPageTitle->setText(page_title);
  lblPageTitle->setVisible(!page_title.isEmpty());
  fraStep->setCurrentIndex(step);
  fraStep3->setCurrentIndex(Step3Index(w_.Current()));
  fraStep4->setCurrentIndex(Step4Index(w_.Current()));

  const NavButtons& b = w_.Buttons();
  cmdNav[1]->setEnabled(b.cancel);
  cmdNav[2]->setEnabled(b.back);
  cmdNav[3]->setEnabled(b.next);
  cmdNav[4]->setEnabled(b.finish);
  // Enter presses Finish when it is there to press, otherwise Next.
  cmdNav[3]->setDefault(b.next && !b.finish);
  cmdNav[4]->setDefault(b.finish);

  for (int i = 0; i < 6; ++i) {
    optModelingType[i]->setChecked(w_.modeling_type == i);
    optModelingType[i]->setEnabled(w_.optModelingType[i].enabled);
    optModelingType[i]->setVisible(w_.optModelingType[i].visible);
  }
  lblConditionsFrame_->setText(QString::fromStdString(w_.conditions_frame_title));
  for (int i = 0; i < 7; ++i) {
    optConditions[i]->setChecked(w_.conditions == i);
    optConditions[i]->setEnabled(w_.optConditions[i].enabled);
    optConditions[i]->setVisible(w_.optConditions[i].visible && !text::kConditionCaptions[i].empty());
  }
  txtConditions1_->setText(QString::fromStdString(w_.txtConditions1));
  optModels[0]->setText(QString::fromStdString(w_.optModels0_caption.empty() ? std::string(text::kImplicitModelCaption)
                                                                              : w_.optModels0_caption));
  for (int i = 0; i < 3; ++i) {
    optModels[i]->setChecked(w_.models == i);
    optModels[i]->setEnabled(w_.optModels[i].enabled);
    optModels[i]->setVisible(w_.optModels[i].visible);
  }
  txtModels_->setText(QString::fromStdString(w_.txtModels));
  for (auto& c : combos_) {
    QStringList items;
    for (const auto& item : c.field->items) items << QString::fromStdString(item);
    QStringList now;
    for (int i = 0; i < c.box->count(); ++i) now << c.box->itemText(i);
    if (now != items) {
      c.box->clear();
      c.box->addItems(items);
    }
    QString text = QString::fromStdString(c.field->text);
    int at = c.box->findText(text);
    if (at < 0 && !text.isEmpty()) {
      c.box->addItem(text);
      at = c.box->count() - 1;
    }
    c.box->setCurrentIndex(at);
    c.box->setEnabled(c.field->enabled);
    c.box->setVisible(c.field->visible);
  }
  for (auto& c : checks_) {
    c.box->setChecked(c.field->value);
    c.box->setEnabled(c.field->enabled);
    c.box->setVisible(c.field->visible);
  }
  for (auto& t : texts_) {
    QString text = QString::fromStdString(t.field->text);
    if (t.edit->text() != text) t.edit->setText(text);
    t.edit->setEnabled(t.field->enabled);
    t.edit->setVisible(t.field->visible);
    if (t.label) t.label->setVisible(t.field->visible);
  }
  optGroups_[0]->setChecked(w_.groups.answer == YesNo::Yes);
  optGroups_[1]->setChecked(w_.groups.answer == YesNo::No);
  optLambdas_[0]->setChecked(w_.lambdas.answer == YesNo::Yes);
  optLambdas_[1]->setChecked(w_.lambdas.answer == YesNo::No);
  if (tabGroups_->currentIndex() != w_.groups.current_tab) tabGroups_->setCurrentIndex(w_.groups.current_tab);

  // The sub-page's own title is shown once, above the page.
  lblStartmodTitle_->setText(QString::fromStdString(w_.startmod.title));
  lblStartmodTitle_->setVisible(w_.startmod.title != w_.PageTitle());
  lblInputmodTitle_->setText(QString::fromStdString(w_.inputmod.title));
  lblInputmodTitle_->setVisible(w_.inputmod.title != w_.PageTitle());
  // Copy Parameters To: the series and their checks.
  if (Treeview4->topLevelItemCount() != static_cast<int>(w_.inputmod.copy_to.size())) {
    Treeview4->clear();
    for (const auto& entry : w_.inputmod.copy_to) {
      auto* item = new QTreeWidgetItem(Treeview4, QStringList(QString::fromStdString(entry.first)));
      item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    }
  }
  for (int i = 0; i < Treeview4->topLevelItemCount(); ++i) {
    Treeview4->topLevelItem(i)->setText(0, QString::fromStdString(w_.inputmod.copy_to[i].first));
    Treeview4->topLevelItem(i)->setCheckState(0, w_.inputmod.copy_to[i].second ? Qt::Checked : Qt::Unchecked);
  }

  // The option tree: the selected node bold on green, the others plain on white.
  int node = std::clamp(w_.TreeNode(), 0, 3);
  for (int i = 0; i < TreeView5->topLevelItemCount(); ++i) {
    QTreeWidgetItem* item = TreeView5->topLevelItem(i);
    QFont f = item->font(0);
    f.setBold(i == node);
    item->setFont(0, f);
    item->setBackground(0, i == node ? QColor(0x9c, 0xd6, 0x8c) : QColor(Qt::white));
  }
  TreeView5->setCurrentItem(TreeView5->topLevelItem(node));
  fraModelEstimationPanes->setCurrentIndex(node);

  // The field the wizard put the focus on.
  if (!w_.FocusField().empty()) {
    QWidget* target = Control(w_.FocusField());
    if (target && target->isVisible() && target->isEnabled() && !target->hasFocus()) target->setFocus();
  } else if (step == 0 && optModelingType[w_.modeling_type]->isVisible() && !optModelingType[w_.modeling_type]->hasFocus()) {
    optModelingType[w_.modeling_type]->setFocus();
  }
  refreshing_ = false;
}

bool frmWizard1::eventFilter(QObject* watched, QEvent* event) {
  auto* edit = qobject_cast<QLineEdit*>(watched);
  if (!edit || refreshing_) return QDialog::eventFilter(watched, event);
  std::string name = edit->objectName().toStdString();
  switch (event->type()) {
    case QEvent::FocusIn:
      w_.FieldGotFocus(name);
      if (TextField* f = w_.FindField(name)) {
        refreshing_ = true;
        edit->setText(QString::fromStdString(f->text));
        refreshing_ = false;
      }
      if (edit->isEnabled()) QMetaObject::invokeMethod(edit, &QLineEdit::selectAll, Qt::QueuedConnection);
      break;
    case QEvent::FocusOut:
      if (static_cast<QFocusEvent*>(event)->reason() == Qt::PopupFocusReason) break;
      w_.FieldLostFocus(name);
      if (TextField* f = w_.FindField(name)) {
        refreshing_ = true;
        edit->setText(QString::fromStdString(f->text));
        refreshing_ = false;
      }
      break;
    case QEvent::KeyPress: {
      auto* key = static_cast<QKeyEvent*>(event);
      // Enter in a field does not press a button: the field keeps the focus.
      if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) &&
          RulesWizard::FieldKeyPress(13) != 13)
        return true;
      break;
    }
    default: break;
  }
  return QDialog::eventFilter(watched, event);
}

void frmWizard1::reject() {
  // Escape or the window's close button: the same question as Cancel.
  if (acting_) return;
  Act([this] { w_.Cancel(); });
}

void DesktopWizardUi::Run(RulesWizard& wizard) {
  frmWizard1 form(wizard, parent_);
  form.exec();
}

}  // namespace tessaly::rules
