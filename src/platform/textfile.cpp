#include "platform/textfile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace tessaly::platform {

bool IsReadableFile(const std::filesystem::path& path) {
  struct stat st {};
  return ::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

namespace {

// Opens for reading only what IsReadableFile accepts; the check is made again on the
// open descriptor so a file swapped for a pipe in between is still refused.
std::FILE* OpenForReading(const std::filesystem::path& path) {
  if (!IsReadableFile(path)) return nullptr;
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) return nullptr;
  struct stat st {};
  if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
    ::close(fd);
    return nullptr;
  }
  int flags = ::fcntl(fd, F_GETFL);
  if (flags >= 0) ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
  std::FILE* f = ::fdopen(fd, "rb");
  if (!f) ::close(fd);
  return f;
}

}  // namespace

LineReader::LineReader(const std::filesystem::path& path) { file_ = OpenForReading(path); }

LineReader::~LineReader() {
  if (file_) std::fclose(file_);
}

std::optional<std::string> LineReader::Next() {
  if (!file_ || too_large_) return std::nullopt;
  std::string line;
  int c;
  bool any = false;
  while ((c = std::getc(file_)) != EOF) {
    any = true;
    if (++bytes_read_ > kMaxReadBytes || line.size() >= kMaxLineBytes) {
      too_large_ = true;
      return std::nullopt;
    }
    if (c == '\n') break;
    line.push_back(static_cast<char>(c));
  }
  if (!any) return std::nullopt;
  if (!line.empty() && line.back() == '\r') line.pop_back();
  ++lines_read_;
  return line;
}

bool LineReader::Skip(long n) {
  for (long i = 0; i < n; ++i) {
    if (!Next()) return false;
  }
  return true;
}

std::optional<std::vector<std::string>> ReadAllLines(const std::filesystem::path& path) {
  LineReader reader(path);
  if (!reader.IsOpen()) return std::nullopt;
  std::vector<std::string> lines;
  while (auto line = reader.Next()) lines.push_back(std::move(*line));
  if (reader.TooLarge()) return std::nullopt;
  return lines;
}

std::optional<std::string> ReadWholeFile(const std::filesystem::path& path) {
  std::FILE* f = OpenForReading(path);
  if (!f) return std::nullopt;
  std::string out;
  char buf[65536];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) {
    out.append(buf, n);
    if (out.size() > kMaxReadBytes) {
      std::fclose(f);
      return std::nullopt;
    }
  }
  std::fclose(f);
  return out;
}

namespace {

std::atomic<unsigned> temp_counter{0};

// The file a rewrite replaces: through a link to the file it names, so the link stays.
std::filesystem::path RewriteTarget(const std::filesystem::path& path) {
  std::error_code ec;
  if (std::filesystem::is_symlink(path, ec)) {
    auto real = std::filesystem::weakly_canonical(path, ec);
    if (!ec) return real;
  }
  return path;
}

}  // namespace

TextWriter::TextWriter(const std::filesystem::path& path, Mode mode) : target_(path) {
  if (mode == Mode::Append) {
    file_ = std::fopen(path.c_str(), "ab");
    if (!file_) Fail(errno);
    return;
  }
  target_ = RewriteTarget(path);
  auto folder = target_.parent_path();
  // A name no real file of the system uses, unique for this process and call.
  for (int attempt = 0; attempt < 100 && !file_; ++attempt) {
    auto name = "." + target_.filename().string() + ".tmp-" + std::to_string(::getpid()) + "-" +
                std::to_string(temp_counter++);
    temp_ = folder.empty() ? std::filesystem::path(name) : folder / name;
    int fd = ::open(temp_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0) {
      if (errno == EEXIST) continue;
      Fail(errno);
      temp_.clear();
      return;
    }
    // The new file keeps the permissions of the one it replaces.
    struct stat st {};
    if (::stat(target_.c_str(), &st) == 0 && S_ISREG(st.st_mode)) ::fchmod(fd, st.st_mode & 07777);
    file_ = ::fdopen(fd, "wb");
    if (!file_) {
      Fail(errno);
      ::close(fd);
      ::unlink(temp_.c_str());
      temp_.clear();
      return;
    }
  }
  if (!file_) Fail(EEXIST);
}

// A destructor has no one to tell: a caller that must know whether the file was written calls
// Close() itself and reads its result.
TextWriter::~TextWriter() { (void)Close(); }

void TextWriter::Fail(int err) {
  failed_ = true;
  if (error_.empty()) error_ = std::strerror(err);
}

void TextWriter::Line(std::string_view text) {
  Raw(text);
  Raw("\r\n");
}

void TextWriter::Raw(std::string_view text) {
  if (!file_ || text.empty() || failed_) return;
  if (std::fwrite(text.data(), 1, text.size(), file_) != text.size()) Fail(errno ? errno : EIO);
}

bool TextWriter::Close() {
  if (closed_) return !failed_;
  closed_ = true;
  if (!file_) {
    failed_ = true;
    return false;
  }
  if (std::fflush(file_) != 0) Fail(errno);
  if (std::fclose(file_) != 0) Fail(errno);
  file_ = nullptr;
  if (temp_.empty()) return !failed_;
  if (!failed_ && ::rename(temp_.c_str(), target_.c_str()) != 0) Fail(errno);
  if (failed_) ::unlink(temp_.c_str());
  return !failed_;
}

void TextWriter::Abandon() {
  if (closed_) return;
  closed_ = true;
  failed_ = true;
  if (file_) std::fclose(file_);
  file_ = nullptr;
  if (!temp_.empty()) ::unlink(temp_.c_str());
}

bool WriteAllLines(const std::filesystem::path& path, const std::vector<std::string>& lines) {
  TextWriter w(path);
  for (const auto& l : lines) w.Line(l);
  return w.Close();
}

bool AppendLine(const std::filesystem::path& path, std::string_view line) {
  TextWriter w(path, TextWriter::Mode::Append);
  w.Line(line);
  return w.Close();
}

bool WriteWholeFile(const std::filesystem::path& path, std::string_view bytes, std::string* reason) {
  TextWriter w(path);
  w.Raw(bytes);
  bool ok = w.Close();
  if (!ok && reason) *reason = path.string() + ": " + w.Error();
  return ok;
}

bool WriteWholeFile(const std::filesystem::path& path, std::string_view bytes) {
  return WriteWholeFile(path, bytes, nullptr);
}

}  // namespace tessaly::platform
