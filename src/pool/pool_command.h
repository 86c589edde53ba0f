#pragma once
// Pooling without a window (`tsly pool`): the chosen files of a project, the model given as
// a model file in STARTMOD.123's layout or as a canned model's number, the rules wizard of
// the pooling run driven to Finish with that choice, and the groups set to the files.
#include <filesystem>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "batch/run.h"
#include "pool/pool_headless.h"

namespace tessaly::pool {

namespace fs = std::filesystem;

struct PoolCommandOptions {
  fs::path program_folder;  // empty: the running program's folder
  bool no_graphs = true;
  std::shared_ptr<batch::RunReports> reports;  // graphs and the link-tree site, when drawn
};

// Exit status: 0 the run finished, 1 it was incomplete (or cancelled), 2 the selection or
// the usage was refused (the reason on `err`, the system's messages through its dialogs).
// The F-test's figures are printed on `out`.
[[nodiscard]] int RunPoolCommand(const fs::path& project, const std::vector<std::string>& files, const ModelChoice& choice,
                   const PoolCommandOptions& options, std::ostream& out, std::ostream& err);

}  // namespace tessaly::pool
