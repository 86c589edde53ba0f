#pragma once
// The Pool menu of the main window (Mnu_Pool): frmPoolSelect, the rules wizard narrowed for
// pooling with frmLoadGroupData, and the pooling run with the main window as its view.
#include <filesystem>

class QWidget;

namespace tessaly::app {

class DesktopSession;

// Runs the flow on the session's open project (the caller opens one first).
void RunPoolFlow(DesktopSession& session, QWidget* window, const std::filesystem::path& program);

}  // namespace tessaly::app
