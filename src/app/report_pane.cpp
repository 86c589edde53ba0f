#include "app/report_pane.h"

#include <algorithm>

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QFile>
#include <QFontDatabase>
#include <QHeaderView>
#include <QImage>
#include <QKeyEvent>
#include <QLabel>
#include <QSplitter>
#include <QStackedWidget>
#include <QTextBrowser>
#include <QToolBar>
#include <QTreeWidget>
#include <QUrl>
#include <QVBoxLayout>

#include "platform/paths.h"
#include "report/chart_data.h"
#include "report/forms/series_chart.h"
#include "report/graph_plan.h"

namespace tessaly::app {

namespace {
constexpr int kKeyRole = Qt::UserRole + 1;

QString Native(const fs::path& p) { return QString::fromStdString(p.string()); }

bool IsHtml(const std::string& ext) { return ext == ".HTM" || ext == ".HTML"; }
bool IsPicture(const std::string& ext) {
  return ext == ".JPG" || ext == ".JPEG" || ext == ".PNG" || ext == ".GIF" || ext == ".BMP";
}
// The viewer: pictures inside an HTML page are drawn no wider than about half the pane,
// so that a page of tables with a graph beside them keeps its columns readable.
class ReportBrowser : public QTextBrowser {
 public:
  using QTextBrowser::QTextBrowser;
  QVariant loadResource(int type, const QUrl& name) override {
    QVariant data = QTextBrowser::loadResource(type, name);
    if (type != QTextDocument::ImageResource || name.scheme() == "tessaly-picture") return data;
    QImage image;
    if (data.canConvert<QImage>()) image = data.value<QImage>();
    else if (data.canConvert<QByteArray>()) image.loadFromData(data.toByteArray());
    if (image.isNull()) return data;
    int room = std::max(320, viewport()->width() / 2);
    if (image.width() > room) return image.scaledToWidth(room, Qt::SmoothTransformation);
    return image;
  }
};
}  // namespace

ReportPane::ReportPane(QWidget* parent) : QWidget(parent) {
  setObjectName("paneReports");
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);

  splitter = new QSplitter(Qt::Horizontal, this);
  splitter->setObjectName("splMain");
  splitter->setChildrenCollapsible(false);

  trvMenu = new QTreeWidget(splitter);
  trvMenu->setObjectName("trvMenu");
  trvMenu->setHeaderHidden(true);
  trvMenu->setColumnCount(1);
  trvMenu->setMinimumWidth(180);
  trvMenu->setUniformRowHeights(true);
  trvMenu->header()->setStretchLastSection(true);
  // A click shows the node; so do Enter and the arrow keys, so the reports can be read
  // one after the other without the mouse.
  connect(trvMenu, &QTreeWidget::itemClicked, this,
          [this](QTreeWidgetItem* item, int) { emit NodeActivated(QString::fromStdString(KeyOf(item))); });
  connect(trvMenu, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
    if (item && QApplication::mouseButtons() == Qt::NoButton) emit NodeCurrent(QString::fromStdString(KeyOf(item)));
  });
  // Right-click: the shown file in the default browser.
  trvMenu->setContextMenuPolicy(Qt::ActionsContextMenu);
  connect(trvMenu, &QTreeWidget::itemActivated, this,
          [this](QTreeWidgetItem* item, int) { emit NodeActivated(QString::fromStdString(KeyOf(item))); });

  auto* right = new QWidget(splitter);
  auto* right_layout = new QVBoxLayout(right);
  right_layout->setContentsMargins(0, 0, 0, 0);
  right_layout->setSpacing(0);
  auto* bar = new QToolBar(right);
  bar->setObjectName("barReport");
  bar->setIconSize(QSize(16, 16));
  lblFile = new QLabel(bar);
  lblFile->setObjectName("lblFile");
  lblFile->setTextInteractionFlags(Qt::TextSelectableByMouse);
  lblFile->setContentsMargins(6, 0, 6, 0);
  actOpenInBrowser = new QAction("Open in &Browser", this);
  actOpenInBrowser->setObjectName("actOpenInBrowser");
  actOpenInBrowser->setShortcut(QKeySequence("Ctrl+B"));
  actOpenInBrowser->setToolTip("Open the report shown here in the default web browser (Ctrl+B)");
  actOpenInBrowser->setEnabled(false);
  connect(actOpenInBrowser, &QAction::triggered, this, &ReportPane::OpenInBrowser);
  trvMenu->addAction(actOpenInBrowser);
  bar->addAction(actOpenInBrowser);
  actInteractive = new QAction("&Interactive Graph", this);
  actInteractive->setObjectName("actInteractive");
  actInteractive->setCheckable(true);
  actInteractive->setChecked(true);
  actInteractive->setShortcut(QKeySequence("Ctrl+G"));
  actInteractive->setToolTip("Show a dataset's graph as an interactive chart (zoom, values, lines on and off) "
                             "or as the picture the run drew (Ctrl+G)");
  actInteractive->setEnabled(false);
  connect(actInteractive, &QAction::toggled, this, [this](bool on) {
    if (on && ShowChart(current_)) return;
    stkViewer->setCurrentWidget(brsReport);
  });
  bar->addAction(actInteractive);
  bar->addSeparator();
  bar->addWidget(lblFile);
  stkViewer = new QStackedWidget(right);
  stkViewer->setObjectName("stkViewer");
  brsReport = new ReportBrowser(stkViewer);
  brsReport->setObjectName("brsReport");
  brsReport->setOpenLinks(false);
  connect(brsReport, &QTextBrowser::anchorClicked, this, [this](const QUrl& url) {
    if (url.isLocalFile() || url.isRelative()) {
      QUrl base = QUrl::fromLocalFile(Native(current_));
      QUrl target = url.isRelative() ? base.resolved(url) : url;
      fs::path file = target.toLocalFile().toStdString();
      if (fs::exists(file)) {
        navigate(file);
        return;
      }
    }
    QDesktopServices::openUrl(url);
  });
  chtSeries = new report::SeriesChart(stkViewer);
  stkViewer->addWidget(brsReport);
  stkViewer->addWidget(chtSeries);
  right_layout->addWidget(bar);
  right_layout->addWidget(stkViewer, 1);

  splitter->addWidget(trvMenu);
  splitter->addWidget(right);
  splitter->setStretchFactor(0, 0);
  splitter->setStretchFactor(1, 1);
  splitter->setSizes({260, 840});
  layout->addWidget(splitter);
}

std::string ReportPane::KeyOf(const QTreeWidgetItem* item) {
  return item ? item->data(0, kKeyRole).toString().toStdString() : std::string();
}

QTreeWidgetItem* ReportPane::ItemByKey(const std::string& key) const {
  auto it = items_.find(key);
  return it == items_.end() ? nullptr : it->second;
}

void ReportPane::LoadIcons(const fs::path& gifs) {
  auto load = [&](const char* name) {
    fs::path file = gifs / name;
    return fs::exists(file) ? QIcon(Native(file)) : QIcon();
  };
  folder_icon_ = load("folderclosed.gif");
  doc_icon_ = load("doc.gif");
  graph_icon_ = load("graph.gif");
  trvMenu->setIconSize(QSize(16, 20));
}

void ReportPane::ClearTree() {
  trvMenu->clear();
  items_.clear();
}

void ReportPane::SyncTree(const batch::ReportTree& model) {
  // Nodes the model dropped (a run starting over, a tree cleared) go first.
  for (auto it = items_.begin(); it != items_.end();) {
    if (!model.Contains(it->first)) {
      QTreeWidgetItem* item = it->second;
      it = items_.erase(it);
      // Children of a removed item are removed with it; forget them as well.
      for (auto jt = items_.begin(); jt != items_.end();) {
        QTreeWidgetItem* p = jt->second->parent();
        bool under = false;
        for (; p; p = p->parent()) under = under || p == item;
        jt = under ? items_.erase(jt) : std::next(jt);
      }
      delete item;
      it = items_.begin();
    } else {
      ++it;
    }
  }
  for (const batch::ReportNode& node : model.Nodes()) {
    if (items_.count(node.key)) continue;
    QTreeWidgetItem* item = nullptr;
    if (node.parent.empty()) {
      item = new QTreeWidgetItem(trvMenu);
    } else {
      QTreeWidgetItem* parent = ItemByKey(node.parent);
      if (!parent) continue;
      item = new QTreeWidgetItem(parent);
    }
    item->setText(0, QString::fromStdString(node.text));
    item->setData(0, kKeyRole, QString::fromStdString(node.key));
    if (node.kind == batch::NodeKind::Series || node.parent.empty()) {
      QFont f = item->font(0);
      f.setBold(true);
      item->setFont(0, f);
    }
    item->setToolTip(0, QString::fromStdString(node.text));
    switch (node.kind) {
      case batch::NodeKind::Series:
      case batch::NodeKind::Heading: item->setIcon(0, folder_icon_); break;
      case batch::NodeKind::Graph:
      case batch::NodeKind::AllGraphs: item->setIcon(0, graph_icon_); break;
      default: item->setIcon(0, doc_icon_); break;
    }
    items_[node.key] = item;
  }
}

void ReportPane::navigate(const fs::path& file) {
  current_ = file;
  stkViewer->setCurrentWidget(brsReport);
  actInteractive->setEnabled(false);
  lblFile->setText(Native(file.filename()));
  lblFile->setToolTip(Native(file));
  bool exists = fs::exists(file);
  actOpenInBrowser->setEnabled(exists);
  if (!exists) {
    brsReport->document()->setDefaultFont(brsReport->font());
    brsReport->setHtml(QString("<p style=\"color:#555\">There is no <b>%1</b> yet in %2.</p>"
                               "<p style=\"color:#555\">Run the project (Batch &gt; Run Project, F5) to make "
                               "its reports.</p>")
                           .arg(Native(file.filename()).toHtmlEscaped(), Native(file.parent_path()).toHtmlEscaped()));
    return;
  }
  std::string ext = platform::ToUpper(file.extension().string());
  brsReport->document()->clear();
  brsReport->document()->setDefaultFont(brsReport->font());
  if (IsHtml(ext)) {
    brsReport->setSource(QUrl::fromLocalFile(Native(file)), QTextDocument::HtmlResource);
    return;
  }
  if (IsPicture(ext)) {
    QImage picture(Native(file));
    int room = brsReport->viewport()->width() - 24;
    if (room > 200 && picture.width() > room) picture = picture.scaledToWidth(room, Qt::SmoothTransformation);
    QUrl name("tessaly-picture:" + Native(file.filename()));
    brsReport->document()->addResource(QTextDocument::ImageResource, name, picture);
    brsReport->setHtml(QString("<p align=\"center\"><img src=\"%1\"></p>").arg(name.toString()));
    ShowChart(file);
    return;
  }
  QFile text(Native(file));
  if (!text.open(QIODevice::ReadOnly)) {
    brsReport->setPlainText(QString("%1 could not be read.").arg(Native(file)));
    return;
  }
  QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  brsReport->document()->setDefaultFont(fixed);
  brsReport->setPlainText(QString::fromLocal8Bit(text.readAll()));
}

bool ReportPane::ShowingChart() const { return stkViewer->currentWidget() == chtSeries; }

bool ReportPane::ShowChart(const fs::path& file) {
  // <dataset><suffix>.jpg: the graphs drawn from the actuals, the fit and the forecasts have
  // an interactive form; those of the residuals stay pictures.
  const std::string name = file.filename().string();
  // "fore.jpg" ends "actfore.jpg" too: the longest suffix names the graph.
  const report::GraphInfo* found = nullptr;
  for (const report::GraphInfo& graph : report::AllGraphs()) {
    const std::string_view suffix = graph.file_suffix;
    if (platform::EndsWithNoCase(name, suffix) && name.size() > suffix.size() &&
        (!found || suffix.size() > std::string_view(found->file_suffix).size()))
      found = &graph;
  }
  if (found) {
    const report::GraphInfo& graph = *found;
    const std::string suffix = graph.file_suffix;
    const bool drawable = graph.kind == report::GraphKind::Act || graph.kind == report::GraphKind::ActFore ||
                          graph.kind == report::GraphKind::Fore || graph.kind == report::GraphKind::ActCleanse ||
                          graph.kind == report::GraphKind::ActFitFore || graph.kind == report::GraphKind::ActFit ||
                          graph.kind == report::GraphKind::FitFore;
    if (!drawable) return false;
    auto data = report::ReadChartData(file.parent_path(), name.substr(0, name.size() - suffix.size()));
    if (!data) return false;
    actInteractive->setEnabled(true);
    if (!actInteractive->isChecked()) return false;
    const bool fit = graph.kind == report::GraphKind::ActFit || graph.kind == report::GraphKind::FitFore ||
                     graph.kind == report::GraphKind::ActFitFore;
    chtSeries->SetData(std::move(*data), graph.kind == report::GraphKind::ActCleanse, fit);
    stkViewer->setCurrentWidget(chtSeries);
    return true;
  }
  return false;
}

void ReportPane::OpenInBrowser() {
  if (!current_.empty() && fs::exists(current_)) QDesktopServices::openUrl(QUrl::fromLocalFile(Native(current_)));
}

}  // namespace tessaly::app
