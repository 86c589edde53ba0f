// The workbook runner named on the command line: no window, messages on standard error.
#include <iostream>

#include "batch/engine/engine_client.h"
#include "batch/engine/unattended_wait.h"
#include "platform/dialogs.h"
#include "platform/paths.h"
#include "platform/progress_wait.h"
#include "shell/error_context.h"
#include "spreadsheet/runner.h"
#include "spreadsheet/texts.h"

namespace tessaly::spreadsheet {

int RunWorkbookFromCommandLine(const fs::path& file, const std::string& worksheet,
                               const std::vector<std::string>& options,
                               std::shared_ptr<batch::RunReports> reports) {
  if (!platform::Dialogs().Unattended())
    platform::SetDialogHost(std::make_shared<platform::StderrDialogHost>());
  platform::SetProgressWait(std::make_shared<batch::UnattendedProgressWait>());
  shell::EnterProcedure("frmMain", "XLSEngine");

  RunnerSettings settings;
  settings.switches = RunnerSwitches::Parse(options);
  RunnerHost host;
  host.program_folder = platform::ProgramFolder();
  host.reports = std::move(reports);
  const bool to_status = settings.switches.status;
  host.log = [to_status](const std::string& line) {
    shell::TraceText(line);
    if (to_status) std::cerr << line << std::endl;
  };
  std::shared_ptr<batch::EngineClient> engine;
  batch::CreateObjectError error;
  if (!batch::fCreateObject(batch::kEngineProgID, engine, host.program_folder, {}, &error)) {
    platform::Dialogs().Message("Error " + std::to_string(error.number) + ": " + error.description,
                                platform::mb::OKOnly, "Run Excel File");
    return 2;
  }
  engine.reset();
  RunnerResult result = XLSEngine(file, worksheet, settings, host);
  // Without a window the person reads only this line: it names the workbook.
  if (!result.error.empty())
    platform::Dialogs().Message(result.error + " (" + file.string() + ")", platform::mb::OKOnly, "Run Excel File");
  if (!result.opened) return 2;
  return result.finished ? 0 : 1;
}

}  // namespace tessaly::spreadsheet
