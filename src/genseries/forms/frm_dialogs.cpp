#include "genseries/forms/frm_dialogs.h"

#include <QCheckBox>
#include <QDate>
#include <QDateEdit>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "genseries/wizard.h"
#include "genseries/wizard_texts.h"
#include "platform/dialogs.h"

namespace tessaly::genseries {

namespace {
QDialogButtonBox* OkCancel(QDialog* d) {
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, d);
  buttons->button(QDialogButtonBox::Ok)->setObjectName("cmdOK");
  buttons->button(QDialogButtonBox::Cancel)->setObjectName("cmdCancel");
  QObject::connect(buttons, &QDialogButtonBox::accepted, d, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, d, &QDialog::reject);
  return buttons;
}
}  // namespace

frmManualGrid::frmManualGrid(QWidget* parent, const QString& name, const QString& title,
                             const std::vector<std::string>& labels)
    : QDialog(parent) {
  setObjectName(name);
  setWindowTitle(title);
  auto* layout = new QVBoxLayout(this);
  grdData = new QTableWidget(static_cast<int>(labels.size()), 2, this);
  grdData->setObjectName("grdData");
  grdData->setHorizontalHeaderLabels({texts::kPeriodTime, "Value"});
  grdData->verticalHeader()->setVisible(false);
  grdData->horizontalHeader()->setStretchLastSection(true);
  for (int r = 0; r < static_cast<int>(labels.size()); ++r) {
    auto* label = new QTableWidgetItem(QString::fromStdString(labels[r]));
    label->setFlags(label->flags() & ~Qt::ItemIsEditable);
    grdData->setItem(r, 0, label);
    grdData->setItem(r, 1, new QTableWidgetItem("0"));
  }
  layout->addWidget(grdData);
  layout->addWidget(OkCancel(this));
  resize(360, 420);
}

std::vector<std::string> frmManualGrid::Values() const {
  std::vector<std::string> values;
  for (int r = 0; r < grdData->rowCount(); ++r) {
    QTableWidgetItem* item = grdData->item(r, 1);
    values.push_back(item ? item->text().toStdString() : std::string());
  }
  return values;
}

void frmManualGrid::accept() {
  if (!CheckManualData(Values())) return;
  QDialog::accept();
}

std::optional<std::vector<std::string>> ShowManualGrid(QWidget* parent, const QString& name,
                                                       const QString& title,
                                                       const std::vector<std::string>& labels) {
  frmManualGrid grid(parent, name, title, labels);
  if (grid.exec() != QDialog::Accepted) return std::nullopt;
  return grid.Values();
}

frmFirstobservation::frmFirstobservation(QWidget* parent) : QDialog(parent) {
  setObjectName("frmFirstobservation");
  setWindowTitle(texts::kFirstObservationTitle);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(new QLabel(texts::kUserDateLabel, this));
  dtpFirst = new QDateEdit(QDate(2001, 1, 1), this);
  dtpFirst->setObjectName("dtpFirst");
  dtpFirst->setDisplayFormat("MM/dd/yyyy");
  dtpFirst->setCalendarPopup(true);
  dtpFirst->setMaximumDate(QDate::currentDate());
  layout->addWidget(dtpFirst);
  layout->addWidget(OkCancel(this));
}

platform::dates::Date frmFirstobservation::Date() const {
  QDate d = dtpFirst->date();
  return {d.year(), d.month(), d.day()};
}

std::optional<platform::dates::Date> AskFirstObservation(QWidget* parent) {
  frmFirstobservation form(parent);
  if (form.exec() == QDialog::Accepted) return form.Date();
  platform::Dialogs().Message(texts::kNeedDate, platform::mb::OKOnly | platform::mb::Information,
                              texts::kForYourInformation);
  return std::nullopt;
}

frmMethod::frmMethod(QWidget* parent, const std::string& method) : QDialog(parent) {
  setObjectName("frmMethod");
  setWindowTitle(QString::fromStdString(method));
  auto* layout = new QVBoxLayout(this);
  if (method == "Quarter") {
    layout->addWidget(new QLabel(texts::kSelectQuarter, this));
    for (int q = 1; q <= 4; ++q) {
      auto* option = new QRadioButton(QString("Quarter %1").arg(q), this);
      option->setObjectName(QString("OptionQuarter%1").arg(q));
      quarters_.push_back(option);
      layout->addWidget(option);
    }
    quarters_.front()->setChecked(true);
  } else {
    lblNote = new QLabel(texts::kManualNote, this);
    lblNote->setWordWrap(true);
    lblNote->setMinimumWidth(380);
    layout->addWidget(lblNote);
    chkDontShow = new QCheckBox(texts::kDontShowAgain, this);
    chkDontShow->setObjectName("chkDontShow");
    layout->addWidget(chkDontShow);
  }
  layout->addWidget(OkCancel(this));
}

int frmMethod::SelectedQuarter() const {
  for (size_t i = 0; i < quarters_.size(); ++i)
    if (quarters_[i]->isChecked()) return static_cast<int>(i) + 1;
  return 0;
}

}  // namespace tessaly::genseries
