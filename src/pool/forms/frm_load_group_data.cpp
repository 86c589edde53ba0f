#include "pool/forms/frm_load_group_data.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include "platform/dialogs.h"
#include "pool/group_data.h"
#include "pool/pool_texts.h"

namespace tessaly::pool {

frmLoadGroupData::frmLoadGroupData(QWidget* parent, long observations) : QDialog(parent), observations_(observations) {
  setObjectName("frmLoadGroupData");
  setWindowTitle(texts::kGroupCaption);
  auto* layout = new QVBoxLayout(this);
  auto* row = new QHBoxLayout;
  row->addWidget(new QLabel(texts::kGroupLabel, this));
  txtGroupData = new QLineEdit(this);
  txtGroupData->setObjectName("txtGroupData");
  txtGroupData->setMaximumWidth(80);
  txtGroupData->installEventFilter(this);
  row->addWidget(txtGroupData);
  row->addStretch();
  layout->addLayout(row);
  layout->addWidget(new QLabel(QString(texts::kGroupNote1) + "\n" + texts::kGroupNote2, this));
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  cmdYes = new QPushButton("Yes", this);
  cmdYes->setObjectName("cmdYes");
  cmdNo = new QPushButton("Cancel", this);
  cmdNo->setObjectName("cmdNo");
  buttons->addWidget(cmdYes);
  buttons->addWidget(cmdNo);
  layout->addLayout(buttons);
  connect(cmdYes, &QPushButton::clicked, this, &frmLoadGroupData::cmdYes_Click);
  connect(cmdNo, &QPushButton::clicked, this, &QDialog::reject);
}

bool frmLoadGroupData::eventFilter(QObject* watched, QEvent* event) {
  if (watched == txtGroupData && event->type() == QEvent::FocusIn)
    QTimer::singleShot(0, txtGroupData, &QLineEdit::selectAll);
  return QDialog::eventFilter(watched, event);
}

void frmLoadGroupData::cmdYes_Click() {
  GroupCountCheck check = CheckGroupCount(txtGroupData->text().toStdString(), observations_);
  platform::Dialogs().Message(check.message, platform::mb::OKOnly, check.title);
  if (!check.accepted) {
    txtGroupData->setFocus();
    txtGroupData->selectAll();
    return;
  }
  groups_ = check.groups;
  accept();
}

}  // namespace tessaly::pool
