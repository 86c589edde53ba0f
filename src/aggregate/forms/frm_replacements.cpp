#include "aggregate/forms/frm_replacements.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "aggregate/reconcile.h"
#include "aggregate/replacements.h"
#include "platform/dialogs.h"
#include "platform/paths.h"

namespace tessaly::aggregate {

namespace {
QHBoxLayout* OkCancel(QDialog* dialog, const std::function<void()>& ok) {
  auto* row = new QHBoxLayout;
  auto* b_ok = new QPushButton("OK", dialog);
  b_ok->setObjectName("cmdOK");
  auto* b_cancel = new QPushButton("Cancel", dialog);
  b_cancel->setObjectName("cmdCancel");
  row->addStretch();
  row->addWidget(b_ok);
  row->addWidget(b_cancel);
  QObject::connect(b_ok, &QPushButton::clicked, dialog, ok);
  QObject::connect(b_cancel, &QPushButton::clicked, dialog, &QDialog::reject);
  return row;
}
}  // namespace

frmSelChildren::frmSelChildren(const std::vector<std::string>& children, QWidget* parent) : QDialog(parent) {
  setObjectName("frmSelChildren");
  setWindowTitle("Select Children for Replacement");
  auto* layout = new QVBoxLayout(this);
  auto* note = new QLabel("Click on the Children series.  If you change your mind, merely click on it again.  "
                          "Click on the \"Select All\" to select all  files.", this);
  note->setWordWrap(true);
  lstChildren = new QListWidget(this);
  lstChildren->setObjectName("lstChildren");
  lstChildren->setSelectionMode(QAbstractItemView::MultiSelection);
  for (const auto& c : children) lstChildren->addItem(QString::fromStdString(c));
  chkSelectAll = new QCheckBox("Select All", this);
  chkSelectAll->setObjectName("chkSelectAll");
  connect(chkSelectAll, &QCheckBox::clicked, this, [this](bool on) {
    for (int i = 0; i < lstChildren->count(); ++i) lstChildren->item(i)->setSelected(on);
  });
  layout->addWidget(note);
  layout->addWidget(lstChildren);
  layout->addWidget(chkSelectAll);
  layout->addLayout(OkCancel(this, [this] {
    if (Chosen().empty() &&
        platform::Dialogs().Message("No Children have been selected. Do you wish to make a selection? ",
                                    platform::mb::YesNo + platform::mb::Question, kReplaceTitle) == platform::mb::Yes)
      return;
    accept();
  }));
}

std::vector<int> frmSelChildren::Chosen() const {
  std::vector<int> chosen;
  for (int i = 0; i < lstChildren->count(); ++i)
    if (lstChildren->item(i)->isSelected()) chosen.push_back(i);
  return chosen;
}

frmSelReplacements::frmSelReplacements(std::filesystem::path in_directory, std::string child,
                                       std::string observations, std::string forecasts, QWidget* parent)
    : QDialog(parent) {
  setObjectName("frmSelReplacements");
  setWindowTitle(QString::fromStdString("Select Replacement file for " + child));
  auto* layout = new QVBoxLayout(this);
  filFiles = new QListWidget(this);
  filFiles->setObjectName("filFiles");
  for (const auto& f : platform::FilesEndingNoCase(in_directory, ".ASC"))
    filFiles->addItem(QString::fromStdString(f.filename().string()));
  lstChoice = new QListWidget(this);
  lstChoice->setObjectName("lstChoice");
  lstChoice->setMaximumHeight(40);
  cmdSelect = new QPushButton("Select", this);
  cmdSelect->setObjectName("cmdSelect");
  cmdRemove = new QPushButton("Remove", this);
  cmdRemove->setObjectName("cmdRemove");
  cmdRemove->setEnabled(false);
  auto* moves = new QHBoxLayout;
  moves->addWidget(cmdSelect);
  moves->addWidget(cmdRemove);
  layout->addWidget(new QLabel(QString::fromStdString(in_directory.string()), this));
  layout->addWidget(filFiles);
  layout->addLayout(moves);
  layout->addWidget(lstChoice);
  connect(cmdSelect, &QPushButton::clicked, this, [this] {
    if (!filFiles->currentItem()) return;
    lstChoice->clear();
    lstChoice->addItem(filFiles->currentItem()->text());
    cmdSelect->setEnabled(false);
    cmdRemove->setEnabled(true);
  });
  connect(cmdRemove, &QPushButton::clicked, this, [this] {
    lstChoice->clear();
    cmdSelect->setEnabled(true);
    cmdRemove->setEnabled(false);
  });
  layout->addLayout(OkCancel(this, [=, this] {
    if (AcceptReplacement(in_directory, child, Choice(), observations, forecasts)) accept();
  }));
}

std::string frmSelReplacements::Choice() const {
  return lstChoice->count() ? lstChoice->item(0)->text().toStdString() : std::string();
}

ReplacementChooser DesktopReplacementChooser(QWidget* parent, std::filesystem::path in_directory,
                                             std::string observations, std::string forecasts) {
  return [=](const std::vector<std::string>& children) -> std::optional<std::vector<std::string>> {
    std::vector<std::string> replacement(children.size(), kNoReplacement);
    frmSelChildren pick(children, parent);
    if (pick.exec() != QDialog::Accepted) return replacement;
    for (int c : pick.Chosen()) {
      frmSelReplacements file(in_directory, children[static_cast<std::size_t>(c)], observations, forecasts, parent);
      if (file.exec() != QDialog::Accepted) return std::nullopt;
      replacement[static_cast<std::size_t>(c)] = file.Choice();
    }
    return replacement;
  };
}

}  // namespace tessaly::aggregate
