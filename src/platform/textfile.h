#pragma once
// Text files as the system reads and writes them: lines ended by CR LF when written,
// CR LF or LF accepted when read, a trailing carriage return never part of a line.
#include <cstddef>
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
  // True once a line longer than kMaxLineBytes or more than kMaxReadBytes in all was
  // met: the reader then ends as if the file ended there.
  bool TooLarge() const { return too_large_; }

 private:
  std::FILE* file_ = nullptr;
  long lines_read_ = 0;
  std::size_t bytes_read_ = 0;
  bool too_large_ = false;
};

// No file the system reads is larger than this: the biggest dataset (150 series of
// 10,600 values with their names) is a few MiB, a project, rules or report file far less.
// A reader that meets more (a link to /dev/zero, a pipe fed without end) stops there.
inline constexpr std::size_t kMaxReadBytes = 64u << 20;
// No line the system reads is longer than this; a longer one is cut and the reader
// reports the file as too large.
inline constexpr std::size_t kMaxLineBytes = 1u << 20;

// True when the path names something a reader may open: a regular file (or a link to
// one). Folders, devices, pipes and sockets are refused before they are opened, so a
// read never blocks on a pipe or runs on without end on a device.
bool IsReadableFile(const std::filesystem::path& path);

// All lines of a file; nullopt when it cannot be opened, is not a regular file, or is
// larger than kMaxReadBytes.
[[nodiscard]] std::optional<std::vector<std::string>> ReadAllLines(const std::filesystem::path& path);
// The whole file as bytes; nullopt when it cannot be opened, is not a regular file, or
// is larger than kMaxReadBytes.
[[nodiscard]] std::optional<std::string> ReadWholeFile(const std::filesystem::path& path);

// Writes lines, each followed by CR LF. Opened for output (Truncate) or append.
//
// Truncate never touches the file named until the end: the text goes to a temporary
// file in the same folder, which Close() renames over the old file once every byte is
// written. A full disk, a failed write or a kill mid-write leaves the old file whole
// and at worst a temporary ".<name>.tmp-..." beside it. Close() reports whether the
// file was opened, written and put in place; a writer that could not open its file
// never reports success.
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
  [[nodiscard]] bool Close();                      // false when the open, a write or the rename failed
  // Gives up: the temporary file is removed and the old file (if any) stays as it was.
  void Abandon();
  // Why the last open, write or rename failed ("No space left on device"); empty if none.
  const std::string& Error() const { return error_; }

 private:
  void Fail(int err);
  std::FILE* file_ = nullptr;
  std::filesystem::path target_;
  std::filesystem::path temp_;  // empty in Append mode
  bool failed_ = false;
  bool closed_ = false;
  std::string error_;
};

// Convenience forms; false on failure.
[[nodiscard]] bool WriteAllLines(const std::filesystem::path& path, const std::vector<std::string>& lines);
[[nodiscard]] bool AppendLine(const std::filesystem::path& path, std::string_view line);
[[nodiscard]] bool WriteWholeFile(const std::filesystem::path& path, std::string_view bytes);
// As WriteWholeFile, and fills `reason` with the system's reason on failure.
[[nodiscard]] bool WriteWholeFile(const std::filesystem::path& path, std::string_view bytes, std::string* reason);

}  // namespace tessaly::platform
