#pragma once
// The optional trace file: one file a day, "YYYY-MM-DD.txt", appended to when it exists.
// A Log never throws; what went wrong stands in its LogError.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

namespace tessaly::shell {

class LogError {
 public:
  LogError() { Clear(); }
  const std::string& Description() const { return description_; }
  int16_t Number() const { return number_; }

 private:
  friend class Log;
  void Set(int16_t number, std::string description) {
    number_ = number;
    description_ = std::move(description);
  }
  void Clear() {
    number_ = 0;
    description_.clear();
  }
  std::string description_;
  int16_t number_ = 0;
};

inline constexpr int16_t kLogNoFile = 1000;            // "No file has been assigned"
inline constexpr int16_t kLogCreationFailed = 1001;    // "File Creation failed"

class Log {
 public:
  Log() = default;
  ~Log();
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  const LogError& Error() const { return error_; }
  void WriteLine(std::string_view text);
  void CloseFile();
  void WriteFooter();
  void WriteHeader();
  // Opens today's log in `folder` for appending, or makes it. False on failure (1001).
  [[nodiscard]] bool CreateFile(const std::string& folder, const std::string& title);

  bool IsOpen() const { return file_ != nullptr; }
  const std::filesystem::path& Path() const { return path_; }

 private:
  std::FILE* file_ = nullptr;
  std::string title_;
  std::filesystem::path path_;
  LogError error_;
};

// The log's file name for a day: "YYYY-MM-DD.txt".
std::string LogFileName();

}  // namespace tessaly::shell
