#include "rules/rules_text.h"

#include "platform/textfile.h"

namespace tessaly::rules {

RulesText::Span RulesText::Find(std::string_view key) const {
  size_t at = text_.find(key);
  if (at == std::string::npos) at = 0;
  size_t bar = text_.find('|', at);
  size_t begin = bar == std::string::npos ? text_.size() : bar + 1;
  size_t end = text_.find_first_of("\r\n", begin);
  if (end == std::string::npos) end = text_.size();
  return {begin, end};
}

std::string RulesText::GetRule(std::string_view key) const {
  Span s = Find(key);
  return text_.substr(s.value_begin, s.value_end - s.value_begin);
}

void RulesText::PutRule(std::string_view key, std::string_view value) {
  Span s = Find(key);
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
