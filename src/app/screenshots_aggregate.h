#pragma once
// The aggregation for the screenshot session.
#include <QString>
#include <filesystem>

namespace tessaly::shell {
class frmMain;
}

namespace tessaly::app {
class DesktopSession;
// The two dialogs at each stage, then an aggregation of the quarterly sample run from the
// Batch menu: the progress window and the main window's tree with the parent and children.
void TakeAggregationScreenshots(shell::frmMain& form, DesktopSession& session, const QString& dir,
                                const std::filesystem::path& program);
}  // namespace tessaly::app
