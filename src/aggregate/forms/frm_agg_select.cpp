#include "aggregate/forms/frm_agg_select.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace tessaly::aggregate {

namespace {
QPushButton* Button(const char* name, const char* text, QWidget* parent) {
  auto* b = new QPushButton(text, parent);
  b->setObjectName(name);
  return b;
}
}  // namespace

frmAggSelect::frmAggSelect(SelectionFlow flow, const std::vector<std::string>& project_files,
                           FinishHandler finish, QWidget* parent)
    : QDialog(parent), lists_(flow), finish_(std::move(finish)) {
  setObjectName(flow == SelectionFlow::Pooling ? "frmPoolSelect" : "frmAggSelect");
  setWindowTitle(QString::fromStdString(SelectionCaption(flow)));
  auto* grid = new QGridLayout(this);
  auto list = [this](const char* name) {
    auto* l = new QListWidget(this);
    l->setObjectName(name);
    l->setSelectionMode(QAbstractItemView::ExtendedSelection);
    l->setMinimumSize(220, 260);
    return l;
  };
  auto count = [this](const char* name) {
    auto* e = new QLineEdit(this);
    e->setObjectName(name);
    e->setReadOnly(true);
    e->setMaximumWidth(60);
    return e;
  };
  lstRoster = list("lstRoster");
  lstChosen = list("lstChosen");
  txtAvailable = count("txtAvailable");
  txtSelected = count("txtSelected");
  chkAddAll = new QCheckBox("Select All", this);
  chkAddAll->setObjectName("chkAddAll");
  chkRemoveAll = new QCheckBox("Select All", this);
  chkRemoveAll->setObjectName("chkRemoveAll");
  cmdAdd = Button("cmdAdd", "Add ---->", this);
  cmdRemove = Button("cmdRemove", "<---- Remove", this);
  cmdFinish = Button("cmdFinish", "Finish", this);
  cmdCancel = Button("cmdCancel", "Cancel", this);
  auto* note = new QLabel(QString::fromStdString(SelectionNote()), this);
  note->setWordWrap(true);

  grid->addWidget(new QLabel("Available:", this), 0, 0);
  grid->addWidget(txtAvailable, 0, 1);
  grid->addWidget(new QLabel("Selected:", this), 0, 3);
  grid->addWidget(txtSelected, 0, 4);
  grid->addWidget(lstRoster, 1, 0, 1, 2);
  auto* moves = new QVBoxLayout;
  moves->addStretch();
  moves->addWidget(cmdAdd);
  moves->addWidget(cmdRemove);
  moves->addStretch();
  grid->addLayout(moves, 1, 2);
  grid->addWidget(lstChosen, 1, 3, 1, 2);
  grid->addWidget(chkAddAll, 2, 0);
  grid->addWidget(chkRemoveAll, 2, 3);
  grid->addWidget(note, 3, 0, 1, 5);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(cmdFinish);
  buttons->addWidget(cmdCancel);
  grid->addLayout(buttons, 4, 0, 1, 5);

  connect(lstRoster, &QListWidget::itemSelectionChanged, this, [this] { TakeHighlights(); });
  connect(lstChosen, &QListWidget::itemSelectionChanged, this, [this] { TakeHighlights(); });
  connect(lstRoster, &QListWidget::itemDoubleClicked, this, [this](QListWidgetItem* item) {
    lists_.AddOne(static_cast<std::size_t>(lstRoster->row(item)));
    Sync();
  });
  connect(lstChosen, &QListWidget::itemDoubleClicked, this, [this](QListWidgetItem* item) {
    lists_.RemoveOne(static_cast<std::size_t>(lstChosen->row(item)));
    Sync();
  });
  connect(chkAddAll, &QCheckBox::clicked, this, [this](bool on) {
    lists_.SelectAll(ListSide::Roster, on);
    Sync();
  });
  connect(chkRemoveAll, &QCheckBox::clicked, this, [this](bool on) {
    lists_.SelectAll(ListSide::Chosen, on);
    Sync();
  });
  connect(cmdAdd, &QPushButton::clicked, this, [this] {
    lists_.Add();
    Sync();
  });
  connect(cmdRemove, &QPushButton::clicked, this, [this] {
    lists_.Remove();
    Sync();
  });
  connect(cmdFinish, &QPushButton::clicked, this, [this] {
    if (finish_ && finish_(lists_.ChosenNames())) accept();
  });
  connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);

  lists_.Fill(project_files);
  Sync();
}

void frmAggSelect::TakeHighlights() {
  if (syncing_) return;
  for (int i = 0; i < lstRoster->count(); ++i)
    lists_.Highlight(ListSide::Roster, static_cast<std::size_t>(i), lstRoster->item(i)->isSelected());
  for (int i = 0; i < lstChosen->count(); ++i)
    lists_.Highlight(ListSide::Chosen, static_cast<std::size_t>(i), lstChosen->item(i)->isSelected());
}

void frmAggSelect::Sync() {
  syncing_ = true;
  auto fill = [](QListWidget* widget, const std::vector<ListEntry>& entries) {
    QSignalBlocker quiet(widget);
    widget->clear();
    for (const ListEntry& e : entries) {
      auto* item = new QListWidgetItem(QString::fromStdString(e.name), widget);
      item->setSelected(e.highlighted);
    }
  };
  fill(lstRoster, lists_.Roster());
  fill(lstChosen, lists_.Chosen());
  txtAvailable->setText(QString::number(lists_.AvailableCount()));
  txtSelected->setText(QString::number(lists_.SelectedCount()));
  const ListControls& c = lists_.Controls();
  cmdAdd->setEnabled(c.add_enabled);
  cmdRemove->setEnabled(c.remove_enabled);
  chkAddAll->setVisible(c.add_all_visible);
  chkAddAll->setChecked(c.add_all_checked);
  chkRemoveAll->setVisible(c.remove_all_visible);
  chkRemoveAll->setChecked(c.remove_all_checked);
  syncing_ = false;
}

}  // namespace tessaly::aggregate
