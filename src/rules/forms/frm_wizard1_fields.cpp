// frmWizard1's bound fields (text boxes, ticks, lists, up-down boxes) and the pages built
// from them that are not model pages: the start, the rules, the models and the finish.
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

}  // namespace tessaly::rules
