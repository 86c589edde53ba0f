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
  // The window's size and place from the last session; false when none was kept.
  bool RestoreWindowGeometry();
  void SaveWindowGeometry();
  // Replaces the central pane (the report tree and browser when they exist).
  void SetCentralPane(QWidget* pane);

  QMenu* mnuFile = nullptr;
  QMenu* mnuPrefs = nullptr;
  QMenu* mnuTest = nullptr;
  QMenu* mnuHelp = nullptr;
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
  // Help: the contents and the user guide open in the help window; About.
  void mnu_help_Contents_Click();
  void mnu_help_UsersGuide_Click();
  void mnu_help_About_Click();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void OpenRecent(int index);
  void mnuTestState_Click();
  std::array<QAction*, 5> mnuFileMRU_{};
  QAction* mnuFileMRUSep_ = nullptr;
  void ShowHelpPage(const QString& file);
  bool unloaded_ = false;
  QWidget* help_window_ = nullptr;
};

}  // namespace tessaly::shell
