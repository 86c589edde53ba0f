#include "pool/forms/frm_pool_select.h"

#include <QCheckBox>
#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include "platform/dialogs.h"
#include "pool/group_data.h"
#include "pool/pool_selection.h"
#include "pool/pool_texts.h"

namespace tessaly::pool {

namespace {
QString Q(const std::string& s) { return QString::fromStdString(s); }
}  // namespace

frmPoolSelect::frmPoolSelect(QWidget* parent, const std::vector<std::string>& project_files,
                             std::string in_directory)
    : QDialog(parent), in_directory_(std::move(in_directory)) {
  setObjectName("frmPoolSelect");
  setWindowTitle(texts::kSelectCaption);
  auto* grid = new QGridLayout(this);
  auto* note = new QLabel(Q(aggregate::SelectionNote()), this);
  note->setWordWrap(true);
  grid->addWidget(note, 0, 0, 1, 3);
  auto count_box = [this](const char* name) {
    auto* box = new QLineEdit(this);
    box->setObjectName(name);
    box->setReadOnly(true);
    box->setMaximumWidth(60);
    return box;
  };
  auto list = [this](const char* name) {
    auto* l = new QListWidget(this);
    l->setObjectName(name);
    l->setSelectionMode(QAbstractItemView::ExtendedSelection);
    l->setMinimumSize(200, 260);
    return l;
  };
  auto* roster_head = new QHBoxLayout;
  roster_head->addWidget(new QLabel("Available:", this));
  roster_head->addWidget(txtAvailable = count_box("txtAvailable"));
  roster_head->addStretch();
  auto* chosen_head = new QHBoxLayout;
  chosen_head->addWidget(new QLabel("Selected:", this));
  chosen_head->addWidget(txtSelected = count_box("txtSelected"));
  chosen_head->addStretch();
  grid->addLayout(roster_head, 1, 0);
  grid->addLayout(chosen_head, 1, 2);
  grid->addWidget(lstRoster = list("lstRoster"), 2, 0);
  grid->addWidget(lstChosen = list("lstChosen"), 2, 2);
  auto* moves = new QVBoxLayout;
  cmdAdd = new QPushButton("Add ---->", this);
  cmdAdd->setObjectName("cmdAdd");
  cmdRemove = new QPushButton("<---- Remove", this);
  cmdRemove->setObjectName("cmdRemove");
  moves->addStretch();
  moves->addWidget(cmdAdd);
  moves->addWidget(cmdRemove);
  moves->addStretch();
  grid->addLayout(moves, 2, 1);
  chkAddAll = new QCheckBox("Select All", this);
  chkAddAll->setObjectName("chkAddAll");
  chkRemoveAll = new QCheckBox("Select All", this);
  chkRemoveAll->setObjectName("chkRemoveAll");
  grid->addWidget(chkAddAll, 3, 0);
  grid->addWidget(chkRemoveAll, 3, 2);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  cmdCancel = new QPushButton("Cancel", this);
  cmdCancel->setObjectName("cmdCancel");
  cmdFinish = new QPushButton("Finish", this);
  cmdFinish->setObjectName("cmdFinish");
  buttons->addWidget(cmdCancel);
  buttons->addWidget(cmdFinish);
  grid->addLayout(buttons, 4, 0, 1, 3);

  connect(cmdAdd, &QPushButton::clicked, this, &frmPoolSelect::cmdAdd_Click);
  connect(cmdRemove, &QPushButton::clicked, this, &frmPoolSelect::cmdRemove_Click);
  connect(cmdFinish, &QPushButton::clicked, this, &frmPoolSelect::cmdFinish_Click);
  connect(cmdCancel, &QPushButton::clicked, this, &frmPoolSelect::cmdCancel_Click);
  connect(lstRoster, &QListWidget::itemDoubleClicked, this, [this](QListWidgetItem* item) {
    lists_.AddOne(static_cast<size_t>(lstRoster->row(item)));
    Refresh();
  });
  connect(lstChosen, &QListWidget::itemDoubleClicked, this, [this](QListWidgetItem* item) {
    lists_.RemoveOne(static_cast<size_t>(lstChosen->row(item)));
    Refresh();
  });
  connect(chkAddAll, &QCheckBox::toggled, this, [this](bool on) {
    if (refreshing_) return;
    lists_.SelectAll(aggregate::ListSide::Roster, on);
    Refresh();
  });
  connect(chkRemoveAll, &QCheckBox::toggled, this, [this](bool on) {
    if (refreshing_) return;
    lists_.SelectAll(aggregate::ListSide::Chosen, on);
    Refresh();
  });
  lists_.Fill(project_files);
  Refresh();
}

// The person's highlights become the lists' before a move.
void frmPoolSelect::TakeHighlights() {
  for (int i = 0; i < lstRoster->count(); ++i)
    lists_.Highlight(aggregate::ListSide::Roster, static_cast<size_t>(i), lstRoster->item(i)->isSelected());
  for (int i = 0; i < lstChosen->count(); ++i)
    lists_.Highlight(aggregate::ListSide::Chosen, static_cast<size_t>(i), lstChosen->item(i)->isSelected());
}

void frmPoolSelect::Refresh() {
  refreshing_ = true;
  auto fill = [](QListWidget* list, const std::vector<aggregate::ListEntry>& entries) {
    list->clear();
    for (const auto& e : entries) {
      list->addItem(Q(e.name));
      list->item(list->count() - 1)->setSelected(e.highlighted);
    }
  };
  fill(lstRoster, lists_.Roster());
  fill(lstChosen, lists_.Chosen());
  txtAvailable->setText(QString::number(lists_.AvailableCount()));
  txtSelected->setText(QString::number(lists_.SelectedCount()));
  const aggregate::ListControls& c = lists_.Controls();
  cmdAdd->setEnabled(c.add_enabled);
  cmdRemove->setEnabled(c.remove_enabled);
  chkAddAll->setVisible(c.add_all_visible);
  chkAddAll->setChecked(c.add_all_checked);
  chkRemoveAll->setVisible(c.remove_all_visible);
  chkRemoveAll->setChecked(c.remove_all_checked);
  refreshing_ = false;
}

void frmPoolSelect::cmdAdd_Click() {
  TakeHighlights();
  lists_.Add();
  Refresh();
}

void frmPoolSelect::cmdRemove_Click() {
  TakeHighlights();
  lists_.Remove();
  Refresh();
}

void frmPoolSelect::cmdFinish_Click() {
  std::vector<std::string> names = lists_.ChosenNames();
  SelectionVerdict verdict = ValidatePoolSelection(names, in_directory_, status_);
  if (verdict == SelectionVerdict::Stay) return;
  if (verdict == SelectionVerdict::Refused) {
    reject();
    return;
  }
  chosen_ = names;
  accept();
}

void frmPoolSelect::cmdCancel_Click() { reject(); }

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
