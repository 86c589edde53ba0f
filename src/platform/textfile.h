#pragma once
// Text files as the system reads and writes them: lines ended by CR LF when written,
// CR LF or LF accepted when read, a trailing carriage return never part of a line.
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessaly::platform {

// Reads a file line by line without loading it whole. A final line without a line
// end is still a line; an empty file has no lines.
class LineReader {
 public:
  explicit LineReader(const std::filesystem::path& path);
  ~LineReader();
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;

  bool IsOpen() const { return file_ != nullptr; }
  // Next line without its end; nullopt at the end of the file.
  std::optional<std::string> Next();
  // Skips n lines; false when the file ended first.
  bool Skip(long n);
  long LinesRead() const { return lines_read_; }

 private:
  std::FILE* file_ = nullptr;
  long lines_read_ = 0;
};

// All lines of a file; nullopt when it cannot be opened.
std::optional<std::vector<std::string>> ReadAllLines(const std::filesystem::path& path);
// The whole file as bytes; nullopt when it cannot be opened.
std::optional<std::string> ReadWholeFile(const std::filesystem::path& path);

// Writes lines, each followed by CR LF. Opened for output (truncate) or append.
class TextWriter {
 public:
  enum class Mode { Truncate, Append };
  explicit TextWriter(const std::filesystem::path& path, Mode mode = Mode::Truncate);
  ~TextWriter();
  TextWriter(const TextWriter&) = delete;
  TextWriter& operator=(const TextWriter&) = delete;

  bool IsOpen() const { return file_ != nullptr; }
  void Line(std::string_view text);  // text + CR LF
  void Raw(std::string_view text);   // as given
  bool Close();                      // false when a write failed

 private:
  std::FILE* file_ = nullptr;
  bool failed_ = false;
};

// Convenience forms; false on failure.
bool WriteAllLines(const std::filesystem::path& path, const std::vector<std::string>& lines);
bool AppendLine(const std::filesystem::path& path, std::string_view line);
bool WriteWholeFile(const std::filesystem::path& path, std::string_view bytes);

}  // namespace tessaly::platform
