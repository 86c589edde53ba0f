#pragma once
// The screenshot session (TESSALY_SCREENSHOT_DIR): the main window, the preference
// dialogs, the project forms, a run of the sample project with every wizard page it
// passes, the progress window, the report tree with a report and a graph shown, the step
// dialog of the "All" walks, and the model pages of the wizard. Each picture is a PNG file
// in the folder; the program exits when done.
#include <QString>
#include <filesystem>

class QWidget;

namespace tessaly::shell {
class frmMain;
}

namespace tessaly::app {
class DesktopSession;
void TakeScreenshots(shell::frmMain& form, DesktopSession& session, const QString& dir);
// The pooling dialogs and a pooling run's analysis (screenshots_pool.cpp).
void PoolScreenshots(QWidget* parent, DesktopSession& session, const QString& dir,
                     const std::filesystem::path& program);
// The Import Wizard's pages and the Command Line Runner (screenshots_spreadsheet.cpp).
void SpreadsheetScreenshots(QWidget* parent, const QString& dir, const std::filesystem::path& program);
}  // namespace tessaly::app
