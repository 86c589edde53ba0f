// frmWizard1's model pages: the noise and input series models of step 3, and step 4's
// identification, estimation tree, pooled groups, lambdas, forecasting and simulation.
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
#include "rules/forms/frm_wizard1_detail.h"

namespace tessaly::rules {

using namespace frm_wizard1_detail;

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

}  // namespace tessaly::rules
