#pragma once
// Screenshots of the series overview and the interactive graphs, after the sample run.
#include <QString>

namespace tessaly::shell {
class frmMain;
}

namespace tessaly::app {
class DesktopSession;
void OverviewScreenshots(shell::frmMain& form, DesktopSession& session, const QString& dir);
}  // namespace tessaly::app
