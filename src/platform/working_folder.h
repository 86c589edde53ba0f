#pragma once
// Where the program keeps its working files. A program folder the user may write to (the
// relocatable build folder, a copy in the user's home) is its own working folder, as it has
// always been. An installed program sits under a read-only prefix: there the rules, the
// engine's request and report files, OUTPUT, the logs and the sample projects live in a
// per-user working folder, filled at first start with the files that ship beside the
// executables; the executables and the engine library are still taken from the install.
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tessaly::platform {

namespace fs = std::filesystem;

// The folder of the running executable (symbolic links resolved).
fs::path ExecutableFolder();

// Reads an environment variable; nullopt when unset.
using EnvironmentLookup = std::function<std::optional<std::string>(std::string_view)>;
EnvironmentLookup ProcessEnvironment();

// $XDG_DATA_HOME/tessaly, else $HOME/.local/share/tessaly; nullopt when neither is set
// (or the first is not absolute and there is no home).
std::optional<fs::path> PerUserWorkingFolder(const EnvironmentLookup& environment);

// True when this process may create and delete files in `folder`.
bool FolderWritable(const fs::path& folder);

// Copies what ships beside the executables into `working`: every file without an execute
// bit and every folder, recursively; what the working folder already holds is kept (the
// user's rules, projects and results survive a new start and a new version). False with
// `error` filled when the folder cannot be made or a file cannot be copied.
bool PrepareWorkingFolder(const fs::path& shipped, const fs::path& working, std::string* error);

struct WorkingFolderChoice {
  fs::path folder;
  bool per_user = false;
  std::string problem;  // why the per-user folder could not be used (the program folder is kept)
};
// The executable's folder when it is writable; else the per-user folder, prepared.
WorkingFolderChoice ChooseWorkingFolder(const fs::path& executable_folder,
                                        const EnvironmentLookup& environment);

// A file that ships with the executables (the engine, its library, tsly): in `folder` when
// it is there (the build's program folder and its test copies), else beside the running
// executable (an install whose working folder is per user).
fs::path ShippedFile(const fs::path& folder, std::string_view name);

}  // namespace tessaly::platform
