#include "rules/rules_text.h"

#include "platform/textfile.h"

namespace tessaly::rules {

std::optional<RulesText::Span> RulesText::Find(std::string_view key) const {
  size_t at = text_.find(key);
  if (at == std::string::npos) return std::nullopt;
  size_t bar = text_.find('|', at);
  size_t begin = bar == std::string::npos ? text_.size() : bar + 1;
  size_t end = text_.find_first_of("\r\n", begin);
  if (end == std::string::npos) end = text_.size();
  return Span{begin, end};
}

std::string RulesText::GetRule(std::string_view key) const {
  auto s = Find(key);
  if (!s) return {};
  return text_.substr(s->value_begin, s->value_end - s->value_begin);
}

void RulesText::PutRule(std::string_view key, std::string_view value) {
  auto found = Find(key);
  if (!found) {
    // A rules file of an older version lacks the rule: it gets a line of its own at the
    // end, its key padded to the bar of the file's first line, and no other rule changes.
    size_t first_end = text_.find_first_of("\r\n");
    size_t bar = text_.find('|');
    size_t column = bar != std::string::npos && bar < first_end ? bar : 60;
    std::string line(key);
    if (line.size() < column) line.append(column - line.size(), ' ');
    if (!text_.empty() && text_.back() != '\n') text_ += "\r\n";
    text_ += line + "|" + std::string(value) + "\r\n";
    return;
  }
  Span s = *found;
  std::string rebuilt;
  rebuilt.reserve(text_.size() + value.size());
  rebuilt.append(text_, 0, s.value_begin);
  rebuilt.append(value);
  rebuilt.append(text_, s.value_end, std::string::npos);
  text_ = std::move(rebuilt);
}

bool RulesText::ReadFrom(const fs::path& file) {
  auto bytes = platform::ReadWholeFile(file);
  if (!bytes) return false;
  length_read_ = bytes->size();
  text_ = std::move(*bytes);
  return true;
}

bool RulesText::WriteTo(const fs::path& file) const {
  return platform::WriteWholeFile(file, text_);
}

}  // namespace tessaly::rules
