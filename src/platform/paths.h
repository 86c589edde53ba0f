#pragma once
// File-system helpers every subsystem shares: the program's folder, and names
// that the system compares without regard to case.
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessaly::platform {

namespace fs = std::filesystem;

// The program's folder as the system means it: where everything it keeps "in the program's
// folder" lives, and the engine's working folder. The running executable's folder when it
// is writable, else the per-user working folder (platform/working_folder.h).
fs::path ProgramFolder();

// Upper-case copy (ASCII), for comparisons without regard to case.
std::string ToUpper(std::string_view text);
bool EqualsNoCase(std::string_view a, std::string_view b);
bool EndsWithNoCase(std::string_view text, std::string_view suffix);

// The existing entry of `folder` whose name equals `name` without regard to case,
// the exact-case entry first. nullopt when there is none or the folder is missing.
[[nodiscard]] std::optional<fs::path> FindNoCase(const fs::path& folder, std::string_view name);

// The existing entry as FindNoCase finds it, else folder/name with the case as given:
// the path to read an existing file by, or to create a new one under.
fs::path ResolveNoCase(const fs::path& folder, std::string_view name);

bool ExistsNoCase(const fs::path& folder, std::string_view name);

// Removes the entry named `name` (any case) from `folder`; true when one was removed.
bool RemoveNoCase(const fs::path& folder, std::string_view name);

// The regular files of `folder` whose names end in `suffix` without regard to case,
// sorted by name. An unreadable or missing folder gives an empty list.
std::vector<fs::path> FilesEndingNoCase(const fs::path& folder, std::string_view suffix);

// Makes the subfolder `name` of `parent` when no entry of that name (any case) exists;
// returns the folder's path either way.
fs::path EnsureSubfolder(const fs::path& parent, std::string_view name);

// A folder as the system keeps it in texts: with a closing "/".
std::string WithTrailingSlash(std::string folder);

// Copies a file over any existing target. False (and no throw) on failure.
[[nodiscard]] bool CopyFileOver(const fs::path& from, const fs::path& to);

}  // namespace tessaly::platform
