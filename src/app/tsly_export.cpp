// tsly export: every forecast of a run project in one wide CSV and one workbook.
#include <filesystem>
#include <ostream>

#include "app/tsly.h"
#include "batch/batch_file.h"
#include "platform/paths.h"
#include "spreadsheet/forecast_export.h"

namespace tessaly::app::tsly {

int ExportCommand(const Args& args, std::ostream& out, std::ostream& err) {
  namespace fs = std::filesystem;
  std::string project_name;
  fs::path folder;
  for (size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--out") {
      if (i + 1 >= args.size()) return UsageError("export", "--out needs a folder.", err);
      folder = args[++i];
    } else if (project_name.empty()) {
      project_name = args[i];
    } else {
      return UsageError("export", "name one project file.", err);
    }
  }
  if (project_name.empty()) return UsageError("export", "name one project file.", err);
  if (platform::ToUpper(fs::path(project_name).extension().string()) != ".XML")
    return UsageError("export", "'" + project_name + "' is not a project (.xml).", err);
  InstallUnattendedHost();
  std::error_code ec;
  batch::cBatchFile project(platform::ProgramFolder());
  if (!project.Load(fs::absolute(project_name, ec))) return kExitNothing;
  if (!folder.empty() && !fs::is_directory(folder, ec))
    return UsageError("export", "'" + folder.string() + "' is not a folder.", err);
  const fs::path output = platform::ResolveNoCase(project.OutDirectory(), "OUTPUT");
  spreadsheet::ForecastExport result;
  std::string error;
  bool written = spreadsheet::ExportForecasts(project, output, folder, result, error);
  for (const std::string& name : result.missing) out << name << ": no forecasts (not run, rejected or failed)\n";
  if (!written) {
    err << "tsly export: " << error << "\n";
    return kExitNothing;
  }
  out << result.exported.size() << " series" << " of "
      << project.Count() << " exported to " << result.csv.string() << " and " << result.xlsx.string() << "\n";
  return result.missing.empty() ? kExitDone : kExitPartly;
}

}  // namespace tessaly::app::tsly
