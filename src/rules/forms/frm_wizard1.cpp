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

#include "rules/forms/frm_wizard1_detail.h"
#include "rules/texts.h"

namespace tessaly::rules {

using namespace frm_wizard1_detail;

namespace {
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
  RefreshStep();
  RefreshOptions();
  RefreshFields();
  RefreshModelPages();
  RefreshFocus();
  refreshing_ = false;
}

// The window's and step's titles, the page shown, and the buttons.
void frmWizard1::RefreshStep() {
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
}

// The option groups of the start, rules and models pages, with the texts beside them.
void frmWizard1::RefreshOptions() {
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
}

// Every bound list, tick and text box from its field.
void frmWizard1::RefreshFields() {
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
}

// The model pages' answers, titles, the series to copy parameters to and the option tree.
void frmWizard1::RefreshModelPages() {
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
}

// The field the wizard put the focus on; on the first step, the chosen modelling type.
void frmWizard1::RefreshFocus() {
  if (!w_.FocusField().empty()) {
    QWidget* target = Control(w_.FocusField());
    if (target && target->isVisible() && target->isEnabled() && !target->hasFocus()) target->setFocus();
  } else if (w_.Step() <= 0 && optModelingType[w_.modeling_type]->isVisible() && !optModelingType[w_.modeling_type]->hasFocus()) {
    optModelingType[w_.modeling_type]->setFocus();
  }
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

