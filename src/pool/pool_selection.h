#pragma once
// The chosen files' tests of a pooling run: the selection logic shared with aggregation, in
// its pooling form (series counts compared, no Retained Data test, pooling's texts).
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace tessaly::pool {

enum class SelectionVerdict {
  Passed,   // the flow goes on
  Stay,     // the count was refused: the dialog stays open
  Refused,  // a file failed: the flow is given up
};

// Runs the count and file tests; their messages go through platform::Dialogs() and `status`
// receives the captions (the refusal's among them).
SelectionVerdict ValidatePoolSelection(const std::vector<std::string>& chosen, const std::filesystem::path& in_directory,
                           const std::function<void(const std::string&)>& status);

}  // namespace tessaly::pool
