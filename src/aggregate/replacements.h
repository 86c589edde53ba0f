#pragma once
// A priori data in place of a child: the checks of "Replace Files" before a file of the
// input folder may stand in for a child in the children's run.
#include <filesystem>
#include <string>

namespace tessaly::aggregate {

inline constexpr const char* kReplaceTitle = "Replace Children Files?";

// OK of the replacement dialog for `child` and the chosen `file` (a name in `in_directory`;
// empty when none was chosen). Keeps a safety copy of the child in ASCBACKUP, then refuses a
// file that is empty or whose observations (line 8) or forecasts (line 11) differ from the
// children's, each with its message; a passed file is taken when the person confirms.
[[nodiscard]] bool AcceptReplacement(const std::filesystem::path& in_directory, const std::string& child,
                       const std::string& file, const std::string& observations,
                       const std::string& forecasts);

}  // namespace tessaly::aggregate
