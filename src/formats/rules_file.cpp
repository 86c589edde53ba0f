#include "formats/rules_file.h"

#include "platform/textfile.h"

namespace tessaly::formats {

bool RulesFile::ReadFrom(const fs::path& file) {
  auto bytes = platform::ReadWholeFile(file);
  if (!bytes) return false;
  length_read_ = bytes->size();
  text_ = std::move(*bytes);
  return true;
}

bool RulesFile::WriteTo(const fs::path& file) const { return platform::WriteWholeFile(file, text_); }

std::vector<RulesLine> RulesFile::Lines() const {
  std::vector<RulesLine> lines;
  const std::string_view text = text_;
  size_t pos = 0;
  while (pos < text.size()) {
    const size_t nl = text.find('\n', pos);
    std::string_view line = text.substr(pos, nl == std::string_view::npos ? nl : nl - pos);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    lines.push_back({line, line.find('|')});
    if (nl == std::string_view::npos) break;
    pos = nl + 1;
  }
  return lines;
}

std::optional<std::string> RulesFile::KeyedValue(std::string_view key) const {
  for (const RulesLine& line : Lines()) {
    const size_t at = line.text.find(key);
    if (at == std::string_view::npos) continue;
    const size_t bar = line.text.find('|', at);
    if (bar == std::string_view::npos) return std::nullopt;
    return std::string(line.text.substr(bar + 1));
  }
  return std::nullopt;
}

std::optional<RulesFile::Span> RulesFile::Find(std::string_view key) const {
  const size_t at = text_.find(key);
  if (at == std::string::npos) return std::nullopt;
  const size_t bar = text_.find('|', at);
  const size_t begin = bar == std::string::npos ? text_.size() : bar + 1;
  size_t end = text_.find_first_of("\r\n", begin);
  if (end == std::string::npos) end = text_.size();
  return Span{begin, end};
}

std::string RulesFile::GetRule(std::string_view key) const {
  auto s = Find(key);
  if (!s) return {};
  return text_.substr(s->value_begin, s->value_end - s->value_begin);
}

void RulesFile::PutRule(std::string_view key, std::string_view value) {
  auto found = Find(key);
  if (!found) {
    // A rules file of an older version lacks the rule: it gets a line of its own at the
    // end, its key padded to the bar of the file's first line, and no other rule changes.
    const size_t first_end = text_.find_first_of("\r\n");
    const size_t bar = text_.find('|');
    const size_t column = bar != std::string::npos && bar < first_end ? bar : 60;
    std::string line(key);
    if (line.size() < column) line.append(column - line.size(), ' ');
    if (!text_.empty() && text_.back() != '\n') text_ += "\r\n";
    text_ += line + "|" + std::string(value) + "\r\n";
    return;
  }
  const Span s = *found;
  std::string rebuilt;
  rebuilt.reserve(text_.size() + value.size());
  rebuilt.append(text_, 0, s.value_begin);
  rebuilt.append(value);
  rebuilt.append(text_, s.value_end, std::string::npos);
  text_ = std::move(rebuilt);
}

}  // namespace tessaly::formats
