#include "batch/forms/frm_project_forms.h"

#include <QCheckBox>
#include <QDir>
#include <QFileSystemModel>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSettings>
#include <QTreeView>
#include <QVBoxLayout>
#include <algorithm>

#include "batch/batch_texts.h"
#include "platform/dialogs.h"
#include "platform/paths.h"

namespace tessaly::batch {

namespace {
QString Q(const std::string& s) { return QString::fromStdString(s); }

std::vector<std::string> Items(const QListWidget* list) {
  std::vector<std::string> out;
  for (int i = 0; i < list->count(); ++i) out.push_back(list->item(i)->text().toStdString());
  return out;
}
}  // namespace

// ---- FolderBox -------------------------------------------------------------------------

FolderBox::FolderBox(QWidget* parent) : QWidget(parent) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  txtFolder = new QLineEdit(this);
  txtFolder->setObjectName("txtFolder");
  txtFolder->setPlaceholderText("Type a folder, or pick one below");
  model_ = new QFileSystemModel(this);
  model_->setFilter(QDir::AllDirs | QDir::NoDotAndDotDot | QDir::Drives);
  model_->setRootPath("/");
  dirFolders = new QTreeView(this);
  dirFolders->setObjectName("dirFolders");
  dirFolders->setModel(model_);
  for (int c = 1; c < model_->columnCount(); ++c) dirFolders->hideColumn(c);
  dirFolders->setHeaderHidden(true);
  dirFolders->setMinimumHeight(200);
  layout->addWidget(txtFolder);
  layout->addWidget(dirFolders, 1);
  connect(dirFolders->selectionModel(), &QItemSelectionModel::currentChanged, this,
          [this](const QModelIndex& index) {
            QString path = model_->filePath(index);
            if (path == txtFolder->text()) return;
            txtFolder->setText(path);
            emit FolderChanged(path);
          });
  connect(txtFolder, &QLineEdit::textEdited, this, [this](const QString& text) {
    if (QDir(text).exists()) {
      QModelIndex index = model_->index(text);
      dirFolders->setCurrentIndex(index);
      dirFolders->scrollTo(index);
    }
    emit FolderChanged(text);
  });
}

void FolderBox::SetFolder(const QString& folder) {
  txtFolder->setText(folder);
  QModelIndex index = model_->index(folder);
  if (index.isValid()) {
    dirFolders->setCurrentIndex(index);
    dirFolders->expand(index);
    dirFolders->scrollTo(index, QAbstractItemView::PositionAtCenter);
  }
  txtFolder->setText(folder);
  emit FolderChanged(folder);
}

QString FolderBox::Folder() const { return txtFolder->text().trimmed(); }

// ---- ProjectPage -----------------------------------------------------------------------

ProjectPage::ProjectPage(QWidget* parent, const QString& title, bool with_back,
                         const QString& next_caption)
    : QDialog(parent) {
  setWindowTitle(title);
  setModal(true);
  auto* layout = new QVBoxLayout(this);
  body_ = new QWidget(this);
  layout->addWidget(body_, 1);
  auto* buttons = new QHBoxLayout();
  buttons->addStretch(1);
  cmdCancel = new QPushButton("Cancel", this);
  cmdCancel->setObjectName("cmdCancel");
  cmdBack = new QPushButton("< &Back", this);
  cmdBack->setObjectName("cmdBack");
  cmdBack->setVisible(with_back);
  cmdNext = new QPushButton(next_caption, this);
  cmdNext->setObjectName("cmdNext");
  cmdNext->setDefault(true);
  for (auto* b : {cmdCancel, cmdBack, cmdNext}) {
    b->setAutoDefault(false);
    b->setMinimumWidth(90);
  }
  cmdNext->setAutoDefault(true);
  buttons->addWidget(cmdCancel);
  buttons->addWidget(cmdBack);
  buttons->addWidget(cmdNext);
  layout->addLayout(buttons);
  connect(cmdCancel, &QPushButton::clicked, this, [this] {
    result_ = PageResult::Cancel;
    reject();
  });
  connect(cmdBack, &QPushButton::clicked, this, [this] {
    result_ = PageResult::Back;
    done(QDialog::Rejected);
  });
  connect(cmdNext, &QPushButton::clicked, this, [this] {
    result_ = PageResult::Next;
    accept();
  });
  resize(640, 480);
}

PageResult ProjectPage::Ask() {
  result_ = PageResult::Cancel;
  exec();
  return result_;
}

// ---- frmASCLoc -------------------------------------------------------------------------

frmASCLoc::frmASCLoc(QWidget* parent) : ProjectPage(parent, "New Project - ASC Files", false, "&Next >") {
  setObjectName("frmASCLoc");
  auto* layout = new QGridLayout(body_);
  layout->setContentsMargins(0, 0, 0, 0);
  auto* label = new QLabel("Select the directory where the ASC files are located:", body_);
  label->setObjectName("lblDirectory");
  folder = new FolderBox(body_);
  label->setBuddy(folder->txtFolder);
  filFiles = new QListWidget(body_);
  filFiles->setObjectName("filFiles");
  filFiles->setSelectionMode(QAbstractItemView::NoSelection);
  lblCount = new QLabel(body_);
  lblCount->setObjectName("lblCount");
  layout->addWidget(label, 0, 0, 1, 2);
  layout->addWidget(folder, 1, 0);
  layout->addWidget(filFiles, 1, 1);
  layout->addWidget(lblCount, 2, 1);
  layout->setColumnStretch(0, 3);
  layout->setColumnStretch(1, 2);
  connect(folder, &FolderBox::FolderChanged, this, [this] { Refresh(); });
}

void frmASCLoc::SetFolder(const QString& f) {
  folder->SetFolder(f);
  Refresh();
}

void frmASCLoc::Refresh() {
  filFiles->clear();
  auto files = ProjectCommands::AscFilesIn(folder->Folder().toStdString());
  for (const auto& f : files) filFiles->addItem(Q(f));
  lblCount->setText(files.empty() ? "No .asc files here" : QString("%1 .asc file(s)").arg(files.size()));
}

// ---- TwoLists --------------------------------------------------------------------------

TwoLists::TwoLists(QWidget* parent) : QWidget(parent) {
  auto* layout = new QGridLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  auto* available = new QLabel("&Available:", this);
  auto* selected = new QLabel("S&elected:", this);
  lstRoster = new QListWidget(this);
  lstRoster->setObjectName("lstRoster");
  lstChosen = new QListWidget(this);
  lstChosen->setObjectName("lstChosen");
  available->setBuddy(lstRoster);
  selected->setBuddy(lstChosen);
  for (auto* l : {lstRoster, lstChosen}) {
    l->setSelectionMode(QAbstractItemView::ExtendedSelection);
    l->setMinimumWidth(200);
  }
  cmdAdd = new QPushButton("Add ---->", this);
  cmdAdd->setObjectName("cmdAdd");
  cmdRemove = new QPushButton("<---- Remove", this);
  cmdRemove->setObjectName("cmdRemove");
  chkAddAll = new QCheckBox("Select All", this);
  chkAddAll->setObjectName("chkAddAll");
  chkRemoveAll = new QCheckBox("Select All", this);
  chkRemoveAll->setObjectName("chkRemoveAll");
  auto* middle = new QVBoxLayout();
  middle->addStretch(1);
  middle->addWidget(cmdAdd);
  middle->addWidget(cmdRemove);
  middle->addStretch(1);
  layout->addWidget(available, 0, 0);
  layout->addWidget(selected, 0, 2);
  layout->addWidget(lstRoster, 1, 0);
  layout->addLayout(middle, 1, 1);
  layout->addWidget(lstChosen, 1, 2);
  layout->addWidget(chkAddAll, 2, 0);
  layout->addWidget(chkRemoveAll, 2, 2);
  connect(cmdAdd, &QPushButton::clicked, this, &TwoLists::Add);
  connect(cmdRemove, &QPushButton::clicked, this, &TwoLists::Remove);
  connect(lstRoster, &QListWidget::itemDoubleClicked, this, [this] { Add(); });
  connect(lstChosen, &QListWidget::itemDoubleClicked, this, [this] { Remove(); });
  connect(chkAddAll, &QCheckBox::toggled, this, [this](bool on) {
    on ? lstRoster->selectAll() : lstRoster->clearSelection();
  });
  connect(chkRemoveAll, &QCheckBox::toggled, this, [this](bool on) {
    on ? lstChosen->selectAll() : lstChosen->clearSelection();
  });
  connect(lstRoster, &QListWidget::itemSelectionChanged, this, &TwoLists::UpdateButtons);
  connect(lstChosen, &QListWidget::itemSelectionChanged, this, &TwoLists::UpdateButtons);
  UpdateButtons();
}

void TwoLists::Fill(const std::vector<std::string>& available, const std::vector<std::string>& chosen) {
  lstRoster->clear();
  lstChosen->clear();
  for (const auto& name : available) {
    bool taken = std::any_of(chosen.begin(), chosen.end(),
                             [&](const std::string& c) { return platform::EqualsNoCase(c, name); });
    if (!taken) lstRoster->addItem(Q(name));
  }
  for (const auto& name : chosen) lstChosen->addItem(Q(name));
  if (lstRoster->count()) lstRoster->setCurrentRow(0, QItemSelectionModel::NoUpdate);
  UpdateButtons();
}

std::vector<std::string> TwoLists::Chosen() const { return Items(lstChosen); }

void TwoLists::Add() {
  auto selected = lstRoster->selectedItems();
  if (selected.isEmpty()) return;
  if (may_add && !may_add(Chosen(), selected.size())) return;
  for (auto* item : selected) lstChosen->addItem(lstRoster->takeItem(lstRoster->row(item)));
  chkAddAll->setChecked(false);
  UpdateButtons();
}

void TwoLists::Remove() {
  auto selected = lstChosen->selectedItems();
  for (auto* item : selected) lstRoster->addItem(lstChosen->takeItem(lstChosen->row(item)));
  lstRoster->sortItems();
  chkRemoveAll->setChecked(false);
  UpdateButtons();
}

void TwoLists::UpdateButtons() {
  cmdAdd->setEnabled(!lstRoster->selectedItems().isEmpty());
  cmdRemove->setEnabled(!lstChosen->selectedItems().isEmpty());
}

// ---- frmSelect, frmChooseOut, frmXMLName, frmEdit -------------------------------------

frmSelect::frmSelect(QWidget* parent) : ProjectPage(parent, "New Project - Select Series", true, "&Next >") {
  setObjectName("frmSelect");
  auto* layout = new QVBoxLayout(body_);
  layout->setContentsMargins(0, 0, 0, 0);
  auto* hint = new QLabel("Highlight the files to run and click \"Add\" (or double-click them).", body_);
  lists = new TwoLists(body_);
  layout->addWidget(hint);
  layout->addWidget(lists, 1);
}

frmChooseOut::frmChooseOut(QWidget* parent) : ProjectPage(parent, "New Project - Output Folder", true, "&Save") {
  setObjectName("frmChooseOut");
  cmdNext->setObjectName("cmdSave");
  auto* layout = new QVBoxLayout(body_);
  layout->setContentsMargins(0, 0, 0, 0);
  auto* label = new QLabel(
      "Select the directory for the project and its reports (they go to its OUTPUT folder):", body_);
  folder = new FolderBox(body_);
  label->setBuddy(folder->txtFolder);
  cmdMake = new QPushButton("New &Folder...", body_);
  cmdMake->setObjectName("cmdMake");
  connect(cmdMake, &QPushButton::clicked, this, [this] {
    bool ok = false;
    QString name = QInputDialog::getText(this, "New Folder", "Name of the new folder:", QLineEdit::Normal, "", &ok);
    if (!ok || name.trimmed().isEmpty()) return;
    QDir base(folder->Folder());
    if (base.mkpath(name.trimmed())) folder->SetFolder(base.filePath(name.trimmed()));
  });
  layout->addWidget(label);
  layout->addWidget(folder, 1);
  layout->addWidget(cmdMake, 0, Qt::AlignLeft);
}

frmXMLName::frmXMLName(QWidget* parent) : ProjectPage(parent, "New Project - Name", true, "&Save") {
  setObjectName("frmXMLName");
  cmdNext->setObjectName("cmdSave");
  auto* layout = new QVBoxLayout(body_);
  layout->setContentsMargins(0, 0, 0, 0);
  auto* label = new QLabel("&Name of the project file (\".xml\" is added when missing):", body_);
  txtName = new QLineEdit(body_);
  txtName->setObjectName("txtName");
  label->setBuddy(txtName);
  lblFolder = new QLabel(body_);
  lblFolder->setObjectName("lblFolder");
  lblFolder->setWordWrap(true);
  lblFolder->setStyleSheet("color: #555;");
  layout->addWidget(label);
  layout->addWidget(txtName);
  layout->addWidget(lblFolder);
  layout->addStretch(1);
  resize(480, 170);
}

frmEdit::frmEdit(QWidget* parent) : ProjectPage(parent, "Edit Series in Project", false, "&Finish") {
  setObjectName("frmEdit");
  cmdNext->setObjectName("cmdFinish");
  auto* layout = new QVBoxLayout(body_);
  layout->setContentsMargins(0, 0, 0, 0);
  lists = new TwoLists(body_);
  lblStatus = new QLabel(body_);
  lblStatus->setObjectName("lblStatus");
  lblStatus->setWordWrap(true);
  layout->addWidget(lists, 1);
  layout->addWidget(lblStatus);
}

// ---- frmSelectSeries -------------------------------------------------------------------

frmSelectSeries::frmSelectSeries(QWidget* parent, const QString& folder, bool for_generated_series)
    : ProjectPage(parent, "Select Series", true, "&Next >"),
      folder_(folder.toStdString()),
      for_generated_series_(for_generated_series) {
  setObjectName("frmSelectSeries");
  auto* layout = new QVBoxLayout(body_);
  layout->setContentsMargins(0, 0, 0, 0);
  lists = new TwoLists(body_);
  lists->lstRoster->setSelectionMode(QAbstractItemView::SingleSelection);
  lists->chkAddAll->setVisible(false);
  lists->may_add = [](const std::vector<std::string>& chosen, int adding) {
    if (!SelectSeriesAdd(chosen).empty()) return false;
    if (adding > 1) return SelectSeriesAdd({""}).empty();
    return true;
  };
  layout->addWidget(lists, 1);
  lists->Fill(ProjectCommands::AscFilesIn(folder_), {});
}

void frmSelectSeries::accept() {
  if (result_ == PageResult::Next &&
      !SelectSeriesNext(lists->Chosen(), folder_, for_generated_series_).empty())
    return;  // the message was shown; the page stays
  QDialog::accept();
}

std::optional<std::string> SelectOneSeries(QWidget* parent, const std::string& folder,
                                           bool for_generated_series) {
  frmSelectSeries form(parent, Q(folder), for_generated_series);
  if (form.Ask() != PageResult::Next) return std::nullopt;
  auto chosen = form.lists->Chosen();
  if (chosen.empty()) return std::nullopt;
  return chosen.front();
}

// ---- DesktopProjectForms ----------------------------------------------------------------

namespace {
template <typename T>
PageAnswer<T> Answer(PageResult result, T value) {
  switch (result) {
    case PageResult::Next: return PageAnswer<T>::Next(std::move(value));
    case PageResult::Back: return PageAnswer<T>::Back();
    default: return PageAnswer<T>::Cancel();
  }
}
}  // namespace

PageAnswer<std::string> DesktopProjectForms::AscFolder(const std::string& start_folder) {
  // The page opens where the ASC files were found the last time, in this session or an
  // earlier one; the very first time, at the samples beside the program.
  QSettings settings(QSettings::IniFormat, QSettings::UserScope, "tessaly", "window");
  std::string start = last_asc_folder_;
  if (start.empty()) start = settings.value("frmASCLoc/folder").toString().toStdString();
  if (start.empty() || !fs::is_directory(start)) {
    start = start_folder;
    if (fs::is_directory(fs::path(start_folder) / "examples")) start = (fs::path(start_folder) / "examples").string();
  }
  frmASCLoc form(parent_);
  form.SetFolder(Q(start));
  PageResult result = form.Ask();
  std::string folder = form.folder->Folder().toStdString();
  if (result == PageResult::Next) {
    if (folder != last_asc_folder_) last_chosen_.clear();
    last_asc_folder_ = folder;
    settings.setValue("frmASCLoc/folder", Q(folder));
  }
  return Answer(result, folder);
}

PageAnswer<std::vector<std::string>> DesktopProjectForms::SelectFiles(const std::vector<std::string>& available) {
  frmSelect form(parent_);
  form.lists->Fill(available, last_chosen_);
  PageResult result = form.Ask();
  last_chosen_ = form.lists->Chosen();
  return Answer(result, last_chosen_);
}

PageAnswer<std::string> DesktopProjectForms::OutputFolder(const std::string& start_folder) {
  frmChooseOut form(parent_);
  form.folder->SetFolder(Q(start_folder.empty() ? last_asc_folder_ : start_folder));
  PageResult result = form.Ask();
  std::string folder = form.folder->Folder().toStdString();
  if (result == PageResult::Next && !folder.empty() && folder.back() != '/') folder += '/';
  return Answer(result, folder);
}

PageAnswer<std::string> DesktopProjectForms::XmlName(const std::string& folder) {
  frmXMLName form(parent_);
  form.lblFolder->setText("It is saved in " + Q(folder));
  PageResult result = form.Ask();
  return Answer(result, form.txtName->text().trimmed().toStdString());
}

PageAnswer<std::vector<std::string>> DesktopProjectForms::EditSeries(const std::vector<std::string>& available,
                                                                   const std::vector<std::string>& chosen,
                                                                   const std::string& status) {
  frmEdit form(parent_);
  form.lists->Fill(available, chosen);
  form.lblStatus->setText(Q(status));
  PageResult result = form.Ask();
  return Answer(result, form.lists->Chosen());
}

}  // namespace tessaly::batch
