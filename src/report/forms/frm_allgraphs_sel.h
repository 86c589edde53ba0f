#pragma once
// frmAllgraphsSel: the small modal dialog of the "All" walks, with "<===", "===>" and
// Cancel. Each button closes it; closing the window answers neither direction.
#include <functional>

#include <QDialog>
#include <QString>

#include "report/report_tree_logic.h"

class QPushButton;

namespace tessaly::report {

class frmAllgraphsSel : public QDialog {
  Q_OBJECT
 public:
  explicit frmAllgraphsSel(QWidget* parent = nullptr);

  // Shows the dialog modally for one stop of a walk and returns the answer.
  StepChoice Ask(const QString& title, bool left_enabled, bool right_enabled);

  QPushButton* cmdLeft() const { return cmd_left_; }
  QPushButton* cmdRight() const { return cmd_right_; }
  QPushButton* cmdCancel() const { return cmd_cancel_; }

  // The flags the buttons raise; each direction clears the other.
  bool GraphStepLeft = false;
  bool GraphStepRight = false;
  bool Canceled = false;

 private:
  QPushButton* cmd_left_;
  QPushButton* cmd_right_;
  QPushButton* cmd_cancel_;
};

// The step dialog for a ReportViewer of the desktop: one frmAllgraphsSel over `parent`.
StepChoice ShowAllGraphsSel(QWidget* parent, const std::string& title, bool left_enabled,
                            bool right_enabled);

// A ReportViewer for the main window: `navigate` is the window's (it shows the browser
// pane), the step dialog is frmAllgraphsSel over the window.
class DesktopReportViewer : public ReportViewer {
 public:
  DesktopReportViewer(QWidget* window, std::function<void(const fs::path&)> navigate)
      : window_(window), navigate_(std::move(navigate)) {}
  void navigate(const fs::path& file) override {
    if (navigate_) navigate_(file);
  }
  StepChoice ShowStepDialog(const std::string& title, bool left, bool right) override {
    return ShowAllGraphsSel(window_, title, left, right);
  }

 private:
  QWidget* window_;
  std::function<void(const fs::path&)> navigate_;
};

}  // namespace tessaly::report
