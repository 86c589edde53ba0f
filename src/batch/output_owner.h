#pragma once
// Whose reports an OUTPUT folder holds. A run empties its OUTPUT first; when two projects
// point at the same folder, the second would silently delete the first one's reports. The
// run therefore leaves the project file's path in the folder, and before emptying a folder
// that another project filled it asks the person.
#include <filesystem>
#include <optional>
#include <string>

namespace tessaly::batch {

namespace fs = std::filesystem;

// The file in OUTPUT that names the project whose reports the folder holds.
inline constexpr const char* kOutputOwnerFile = ".tessaly-project";

// The project that filled `output` last: the path the owner file names, else the name of
// the project whose link-tree menu page ("<name>menu.html") is there; none for an empty or
// new folder.
std::optional<std::string> OutputOwner(const fs::path& output);

// True when a run of `project` may empty `output`: the folder is this project's, nobody's,
// or the person said Yes to "The folder ... holds the reports of the project ...".
[[nodiscard]] bool ConfirmOutputOwner(const fs::path& output, const fs::path& project);

// Marks `output` as holding the reports of `project`.
[[nodiscard]] bool WriteOutputOwner(const fs::path& output, const fs::path& project);

}  // namespace tessaly::batch
