#pragma once
// The main window's right-hand side after a project is open: the report tree trvMenu on
// the left of a splitter and the viewer brsReport on the right. The tree shows the plain
// report-tree model; the viewer shows HTML as HTML, pictures as pictures and text files
// as plain text, and can hand the same file to the desktop's default browser.
#include <QIcon>
#include <QWidget>
#include <filesystem>
#include <map>
#include <string>

#include "batch/report_tree.h"

class QAction;
class QLabel;
class QSplitter;
class QTextBrowser;
class QToolBar;
class QTreeWidget;
class QTreeWidgetItem;
class QStackedWidget;

namespace tessaly::report {
class SeriesChart;
}

namespace tessaly::app {

namespace fs = std::filesystem;

class ReportPane : public QWidget {
  Q_OBJECT
 public:
  explicit ReportPane(QWidget* parent = nullptr);

  // Adds the model's nodes the widget does not show yet, in the model's order, and drops
  // those the model no longer has. Called as a run adds nodes, and after PopulateTree.
  void SyncTree(const batch::ReportTree& model);
  void ClearTree();
  // The tree's icons: folders, pages and graphs from the program's gifs folder.
  void LoadIcons(const fs::path& gifs_folder);
  // Shows the file in the viewer (navigate).
  void navigate(const fs::path& file);
  const fs::path& CurrentFile() const { return current_; }
  // The key of a tree item (its model node).
  static std::string KeyOf(const QTreeWidgetItem* item);
  QTreeWidgetItem* ItemByKey(const std::string& key) const;

  QSplitter* splitter = nullptr;
  QTreeWidget* trvMenu = nullptr;
  QTextBrowser* brsReport = nullptr;
  QLabel* lblFile = nullptr;
  QAction* actOpenInBrowser = nullptr;
  // A dataset's graph shows as an interactive chart when its data are at hand; this action
  // switches between the chart and the JPEG picture the run drew.
  QAction* actInteractive = nullptr;
  QStackedWidget* stkViewer = nullptr;
  report::SeriesChart* chtSeries = nullptr;
  // True while the viewer shows the interactive chart.
  bool ShowingChart() const;

 signals:
  // A node was clicked (or chosen with the keyboard): its model key.
  void NodeActivated(const QString& key);
  // The keyboard moved the current node (arrow keys, Home, End...).
  void NodeCurrent(const QString& key);

 private:
  void OpenInBrowser();
  // Shows the chart for a graph file of a dataset when its data can be read; false otherwise.
  bool ShowChart(const fs::path& file);
  std::map<std::string, QTreeWidgetItem*> items_;
  QIcon folder_icon_, doc_icon_, graph_icon_;
  fs::path current_;
};

}  // namespace tessaly::app
