#pragma once
// The rules file held as one string, exactly as read, and the only two operations that
// read and change a rule in it. There is no parsed structure: a rule is found by the first
// occurrence of its key, its value runs from the first bar after the key to the line end.
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tessaly::rules {

namespace fs = std::filesystem;

class RulesText {
 public:
  // The value of the rule whose key occurs first in the text: the characters between the
  // first "|" after the key and the carriage return (or line feed) that ends the line.
  // A key that is missing gives an empty value.
  std::string GetRule(std::string_view key) const;

  // Rebuilds the text as everything up to and including the bar, then `value`, then
  // everything from the line end on. Nothing pads the value here. A key that is missing
  // is added as a line of its own at the end; no other rule changes.
  void PutRule(std::string_view key, std::string_view value);

  // Reads a file whole into the text; false when it cannot be read (the text is kept).
  bool ReadFrom(const fs::path& file);
  // Writes the text as it stands, no line end added; false on failure.
  bool WriteTo(const fs::path& file) const;

  const std::string& Text() const { return text_; }
  void SetText(std::string text) { text_ = std::move(text); }
  bool Empty() const { return text_.empty(); }
  void Clear() { text_.clear(); length_read_ = 0; }
  size_t LengthRead() const { return length_read_; }

 private:
  struct Span {
    size_t value_begin;  // first character after the bar
    size_t value_end;    // the line end (or the end of the text)
  };
  std::optional<Span> Find(std::string_view key) const;

  std::string text_;
  size_t length_read_ = 0;
};

}  // namespace tessaly::rules
