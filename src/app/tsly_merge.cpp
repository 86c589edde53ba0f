// tsly merge: the shards of a project run joined into its OUTPUT folder and project file.
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <ostream>

#include "app/tsly.h"
#include "report/run_reports_binding.h"
#include "batch/shards.h"
#include "platform/paths.h"

namespace tessaly::app::tsly {

int MergeCommand(const Args& args, std::ostream& out, std::ostream& err) {
  std::string project;
  std::optional<int> shards;
  for (size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--shards") {
      char* end = nullptr;
      long n = i + 1 < args.size() ? std::strtol(args[i + 1].c_str(), &end, 10) : 0;
      if (n < 1 || *end != '\0') return UsageError("merge", "--shards takes a whole number of at least 1.", err);
      shards = static_cast<int>(n);
      ++i;
    } else if (args[i].rfind("--", 0) == 0) {
      return UsageError("merge", "unknown option " + args[i] + ".", err);
    } else if (project.empty()) {
      project = args[i];
    } else {
      return UsageError("merge", "name one project file.", err);
    }
  }
  if (project.empty() || platform::ToUpper(std::filesystem::path(project).extension().string()) != ".XML")
    return UsageError("merge", "name the project (.xml).", err);
  InstallUnattendedHost();
  const std::filesystem::path program = platform::ProgramFolder();
  batch::MergeOptions options{program, shards, std::make_shared<batch::ProgramRunReports>(program)};
  return batch::MergeShards(project, options);
}

}  // namespace tessaly::app::tsly
