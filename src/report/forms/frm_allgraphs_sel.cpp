#include "report/forms/frm_allgraphs_sel.h"

#include <QHBoxLayout>
#include <QPushButton>

namespace tessaly::report {

frmAllgraphsSel::frmAllgraphsSel(QWidget* parent) : QDialog(parent) {
  setWindowTitle(QStringLiteral("Select Graph"));
  setModal(true);
  cmd_left_ = new QPushButton(QStringLiteral("<==="), this);
  cmd_right_ = new QPushButton(QStringLiteral("===>"), this);
  cmd_cancel_ = new QPushButton(QStringLiteral("Cancel"), this);
  cmd_left_->setObjectName(QStringLiteral("cmdLeft"));
  cmd_right_->setObjectName(QStringLiteral("cmdRight"));
  cmd_cancel_->setObjectName(QStringLiteral("cmdCancel"));
  auto* row = new QHBoxLayout(this);
  row->addWidget(cmd_left_);
  row->addWidget(cmd_right_);
  row->addSpacing(12);
  row->addWidget(cmd_cancel_);
  connect(cmd_left_, &QPushButton::clicked, this, [this] {
    GraphStepLeft = true;
    GraphStepRight = false;
    accept();
  });
  connect(cmd_right_, &QPushButton::clicked, this, [this] {
    GraphStepRight = true;
    GraphStepLeft = false;
    accept();
  });
  connect(cmd_cancel_, &QPushButton::clicked, this, [this] {
    Canceled = true;
    reject();
  });
}

StepChoice frmAllgraphsSel::Ask(const QString& title, bool left_enabled, bool right_enabled) {
  setWindowTitle(title);
  GraphStepLeft = GraphStepRight = Canceled = false;
  cmd_left_->setEnabled(left_enabled);
  cmd_right_->setEnabled(right_enabled);
  (right_enabled ? cmd_right_ : left_enabled ? cmd_left_ : cmd_cancel_)->setDefault(true);
  exec();
  if (Canceled) return StepChoice::Cancel;
  if (GraphStepLeft) return StepChoice::Left;
  if (GraphStepRight) return StepChoice::Right;
  return StepChoice::Closed;
}

StepChoice ShowAllGraphsSel(QWidget* parent, const std::string& title, bool left_enabled,
                            bool right_enabled) {
  frmAllgraphsSel dialog(parent);
  return dialog.Ask(QString::fromStdString(title), left_enabled, right_enabled);
}

}  // namespace tessaly::report
