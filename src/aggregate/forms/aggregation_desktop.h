#pragma once
// The aggregation on the desktop (mnu_Agg): the advisory, frmAggSelect with its Finish
// validation, frmAggParams, and the run with the main window's view, tree and progress
// window. The main window's session fills the context and calls mnu_Agg.
#include <QWidget>
#include <filesystem>
#include <memory>

#include "aggregate/aggregation_run.h"
#include "rules/wizard.h"

namespace tessaly::aggregate {

struct DesktopAggregation {
  QWidget* parent = nullptr;
  std::filesystem::path program_folder;
  batch::cBatchFile* project = nullptr;
  std::filesystem::path project_file;
  std::shared_ptr<batch::RunView> view;
  std::shared_ptr<batch::RunReports> reports;
  std::shared_ptr<rules::WizardUi> wizard_window;
  batch::ReportTree* tree = nullptr;  // the main window's report tree
};

// Runs the flow; true when a run took place (the tree then holds the parent and children).
[[nodiscard]] bool mnu_Agg(const DesktopAggregation& context);

}  // namespace tessaly::aggregate
