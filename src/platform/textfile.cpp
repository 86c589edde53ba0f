#include "platform/textfile.h"

namespace tessaly::platform {

LineReader::LineReader(const std::filesystem::path& path) {
  file_ = std::fopen(path.c_str(), "rb");
}

LineReader::~LineReader() {
  if (file_) std::fclose(file_);
}

std::optional<std::string> LineReader::Next() {
  if (!file_) return std::nullopt;
  std::string line;
  int c;
  bool any = false;
  while ((c = std::fgetc(file_)) != EOF) {
    any = true;
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
  return lines;
}

std::optional<std::string> ReadWholeFile(const std::filesystem::path& path) {
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) return std::nullopt;
  std::string out;
  char buf[65536];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) out.append(buf, n);
  std::fclose(f);
  return out;
}

TextWriter::TextWriter(const std::filesystem::path& path, Mode mode) {
  file_ = std::fopen(path.c_str(), mode == Mode::Append ? "ab" : "wb");
}

TextWriter::~TextWriter() { Close(); }

void TextWriter::Line(std::string_view text) {
  Raw(text);
  Raw("\r\n");
}

void TextWriter::Raw(std::string_view text) {
  if (!file_ || text.empty()) return;
  if (std::fwrite(text.data(), 1, text.size(), file_) != text.size()) failed_ = true;
}

bool TextWriter::Close() {
  if (!file_) return !failed_;
  if (std::fclose(file_) != 0) failed_ = true;
  file_ = nullptr;
  return !failed_;
}

bool WriteAllLines(const std::filesystem::path& path, const std::vector<std::string>& lines) {
  TextWriter w(path);
  if (!w.IsOpen()) return false;
  for (const auto& l : lines) w.Line(l);
  return w.Close();
}

bool AppendLine(const std::filesystem::path& path, std::string_view line) {
  TextWriter w(path, TextWriter::Mode::Append);
  if (!w.IsOpen()) return false;
  w.Line(line);
  return w.Close();
}

bool WriteWholeFile(const std::filesystem::path& path, std::string_view bytes) {
  TextWriter w(path);
  if (!w.IsOpen()) return false;
  w.Raw(bytes);
  return w.Close();
}

}  // namespace tessaly::platform
