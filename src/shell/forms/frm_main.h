#pragma once
// frmMain: the desktop's main window. It binds the shell's start-up and exit steps, the
// File menu with the recent files, the Preferences menu and the developer's Test menu.
// Other parts of the program add their menus and their central pane through the hooks
// below, so that menus of features that are not built are never shown.
#include <QMainWindow>
#include <array>
#include <functional>
#include <string>
#include <vector>

class QAction;
class QLabel;
class QMenu;

namespace tessaly::shell {

class frmMain : public QMainWindow {
  Q_OBJECT
 public:
  explicit frmMain(QWidget* parent = nullptr);

  // The recent-file items from the settings (LoadMenu).
  void LoadRecentMenu();
  // The Test menu, shown with "/DEV" only.
  void ShowTestMenu(bool visible);
  // Replaces the central pane (the report tree and browser when they exist).
  void SetCentralPane(QWidget* pane);

  QMenu* mnuFile = nullptr;
  QMenu* mnuPrefs = nullptr;
  QMenu* mnuTest = nullptr;
  QLabel* lblStatus = nullptr;

  // Menus contributed by other parts of the program, called once when the window is built.
  using MenuContributor = std::function<void(frmMain&)>;
  static std::vector<MenuContributor>& MenuContributors();
  // What opening a recent project does; unset until projects can be opened.
  static std::function<void(const std::string&)>& RecentFileOpener();

 public slots:
  void mnuFileExit_Click();
  void mnuPrefsDecimals_Click();
  void mnuPrefsGraphs_Click();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void OpenRecent(int index);
  void mnuTestState_Click();
  std::array<QAction*, 5> mnuFileMRU_{};
  QAction* mnuFileMRUSep_ = nullptr;
  bool unloaded_ = false;
};

}  // namespace tessaly::shell
