#pragma once
// The stricter pre-flight check of an ASC file, reporting by the codes 5000 to 5025 of the
// catalogue. It repairs small faults in the file itself (objectives 2 and 3, the beginning
// period of a non-seasonal series, the future values of a lone series, the output series'
// type) by rewriting one line at a time, and writes the error page of the first fault it
// meets. The run calls it only behind its PreCheck switch.
#include <filesystem>
#include <string>

#include "dataset/process_errors.h"

namespace tessaly::dataset {

namespace fs = std::filesystem;

// Set False when ValidateASC starts and True only when it ends with no fault.
extern bool AscValid;

struct [[nodiscard]] ValidateAscResult {
  bool valid = false;
  int code = 0;  // the code reported when not valid
};

// Checks `asc_name` (a file name, looked up in `in_directory` without regard to case).
// Writes report.xml into `output_path` when it is missing; on a fault writes the page
// `output_path`/<stem>err.html and the two lines in `log`.
ValidateAscResult ValidateASC(const std::string& asc_name, const fs::path& in_directory,
                              const fs::path& output_path, const ProcessErrorsLog& log);

// Rewrites line `line_number` (1-based) of `file` to `text`: the lines with the new text
// in place of that one go to a temporary file in the same folder, which is renamed over
// the file. False (and the file unchanged) when the copy cannot be made.
[[nodiscard]] bool ReplaceLine(const fs::path& file, long line_number, const std::string& text);

}  // namespace tessaly::dataset
