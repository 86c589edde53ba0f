#include "platform/working_folder.h"

#include <unistd.h>

#include <cstdlib>
#include <system_error>

#include "platform/paths.h"

namespace tessaly::platform {

fs::path ExecutableFolder() {
  std::error_code ec;
  fs::path exe = fs::read_symlink("/proc/self/exe", ec);
  if (ec || exe.empty()) return fs::current_path(ec);
  return exe.parent_path();
}

EnvironmentLookup ProcessEnvironment() {
  return [](std::string_view name) -> std::optional<std::string> {
    const char* value = std::getenv(std::string(name).c_str());
    if (!value) return std::nullopt;
    return std::string(value);
  };
}

std::optional<fs::path> PerUserWorkingFolder(const EnvironmentLookup& environment) {
  // A relative XDG_DATA_HOME is invalid and is ignored, as the base-directory rules ask.
  if (auto data = environment("XDG_DATA_HOME"); data && !data->empty() && fs::path(*data).is_absolute())
    return fs::path(*data) / "tessaly";
  if (auto home = environment("HOME"); home && !home->empty() && fs::path(*home).is_absolute())
    return fs::path(*home) / ".local" / "share" / "tessaly";
  return std::nullopt;
}

bool FolderWritable(const fs::path& folder) {
  return ::access(folder.c_str(), W_OK | X_OK) == 0;
}

namespace {

bool Executable(const fs::directory_entry& entry) {
  std::error_code ec;
  auto perms = entry.status(ec).permissions();
  if (ec) return false;
  return (perms & (fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec)) != fs::perms::none;
}

bool CopyShipped(const fs::path& from, const fs::path& to, std::string* error) {
  std::error_code ec;
  fs::create_directories(to, ec);
  if (ec || !fs::is_directory(to)) {
    if (error) *error = "cannot make " + to.string() + (ec ? ": " + ec.message() : std::string());
    return false;
  }
  for (const auto& entry : fs::directory_iterator(from, ec)) {
    const fs::path target = to / entry.path().filename();
    std::error_code kind;
    if (entry.is_directory(kind)) {
      if (!CopyShipped(entry.path(), target, error)) return false;
    } else if (entry.is_regular_file(kind) && !Executable(entry) && !fs::exists(target, kind)) {
      if (!CopyFileOver(entry.path(), target)) {
        if (error) *error = "cannot copy " + entry.path().string() + " to " + target.string();
        return false;
      }
      // The copy belongs to the user even when the install's file was read-only.
      fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write, fs::perm_options::add, kind);
    }
  }
  if (ec) {
    if (error) *error = "cannot read " + from.string() + ": " + ec.message();
    return false;
  }
  return true;
}

}  // namespace

bool PrepareWorkingFolder(const fs::path& shipped, const fs::path& working, std::string* error) {
  return CopyShipped(shipped, working, error);
}

WorkingFolderChoice ChooseWorkingFolder(const fs::path& executable_folder,
                                        const EnvironmentLookup& environment) {
  WorkingFolderChoice choice{executable_folder, false, {}};
  if (FolderWritable(executable_folder)) return choice;
  auto per_user = PerUserWorkingFolder(environment);
  if (!per_user) {
    choice.problem = "the program's folder " + executable_folder.string() +
                     " is read-only and neither XDG_DATA_HOME nor HOME names a folder for the working files";
    return choice;
  }
  std::string error;
  if (!PrepareWorkingFolder(executable_folder, *per_user, &error)) {
    choice.problem = "the program's folder " + executable_folder.string() +
                     " is read-only and the working folder could not be prepared: " + error;
    return choice;
  }
  choice.folder = *per_user;
  choice.per_user = true;
  return choice;
}

fs::path ShippedFile(const fs::path& folder, std::string_view name) {
  fs::path here = folder / std::string(name);
  std::error_code ec;
  if (fs::exists(here, ec)) return here;
  return ExecutableFolder() / std::string(name);
}

}  // namespace tessaly::platform
