#pragma once
// The run's log of rejected files, "Process Errors.Err" in the program's folder: one pair
// of lines (the ASC file name, then the reason) for each file turned down, from whatever
// source. The program deletes it at start and at the start of each run, and shows it at
// the end of a run; within a run it only grows.
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tessaly::dataset {

namespace fs = std::filesystem;

inline constexpr const char* kProcessErrorsFileName = "Process Errors.Err";
// Deleted at the same points as the log; nothing in the system writes it.
inline constexpr const char* kProcessingErrorsFileName = "Processing Errors.Err";

class ProcessErrorsLog {
 public:
  // The log `file_name` in `folder` (the program's folder for the run's log).
  explicit ProcessErrorsLog(fs::path folder, std::string file_name = kProcessErrorsFileName);

  const fs::path& Path() const { return path_; }

  // Appends the two lines of one rejection or warning. False when the file cannot be written.
  [[nodiscard]] bool Append(std::string_view asc_name, std::string_view text) const;
  // Appends one line as it stands.
  [[nodiscard]] bool AppendLine(std::string_view line) const;

  bool Exists() const;
  // The whole text, nullopt when there is no log.
  std::optional<std::string> Text() const;
  // Deletes the log and its twin "Processing Errors.Err" from the folder.
  void DeleteBoth() const;

 private:
  fs::path folder_;
  fs::path path_;
};

}  // namespace tessaly::dataset
