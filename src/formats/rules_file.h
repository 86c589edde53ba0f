#pragma once
// The rules file (ENGINE.CND as shipped, ENGINE.USR as the wizard keeps it, ENGINE.GO as the
// engine reads it): one reader and one writer for the wizard and the engine alike.
//
// Each line is a label in capitals that holds the rule's key, a bar, and the value in fixed
// columns; lines end in CR LF (LF is read too). The file is held as the text it was read as,
// so that a write changes the values it is asked to and nothing else: other lines, their
// order, their padding and keys this program does not know all stay byte for byte.
//
// Two ways to find a rule, because the file is read two ways:
//  - by key in the text (`GetRule`, `PutRule`): the first occurrence of the key anywhere, its
//    value from the first bar after it to the line end. This is how the wizard has always
//    found and changed a rule, and how a file it wrote reads back the same.
//  - line by line (`Lines`, `KeyedValue`): the engine reads the rules in a fixed order and
//    checks that each line holds its key before its bar; what a value may be is the engine's
//    own check, made on the values read here.
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessaly::formats {

namespace fs = std::filesystem;

// One line of a rules file, its line end left off.
struct RulesLine {
  std::string_view text;
  size_t bar = std::string_view::npos;  // the first bar, npos when the line has none

  bool HasBar() const { return bar != std::string_view::npos; }
  // What stands before the bar (the whole line when there is none).
  std::string_view Label() const { return text.substr(0, HasBar() ? bar : text.size()); }
  // What follows the bar (empty when there is none).
  std::string_view Value() const { return HasBar() ? text.substr(bar + 1) : std::string_view{}; }
};

class RulesFile {
 public:
  RulesFile() = default;
  explicit RulesFile(std::string text) : text_(std::move(text)) {}

  // ---- Reading ----
  // Reads a file whole; false when it cannot be read (the text is kept).
  [[nodiscard]] bool ReadFrom(const fs::path& file);
  // The lines in file order. A text ending in a line end has no empty last line. The views
  // point into this object's text: valid until it changes.
  std::vector<RulesLine> Lines() const;
  // The value of the first line that holds `key` (anywhere in it), from the bar after the
  // key; nullopt when no line holds it or that line has no bar after it.
  std::optional<std::string> KeyedValue(std::string_view key) const;
  // The value of the rule whose key occurs first in the text: the characters between the
  // first "|" after the key and the carriage return (or line feed) that ends the line.
  // A key that is missing gives an empty value.
  std::string GetRule(std::string_view key) const;

  // ---- Writing ----
  // Rebuilds the text as everything up to and including the bar, then `value`, then
  // everything from the line end on. Nothing pads the value here. A key that is missing
  // is added as a line of its own at the end; no other rule changes.
  void PutRule(std::string_view key, std::string_view value);
  // Writes the text as it stands, no line end added; false on failure.
  [[nodiscard]] bool WriteTo(const fs::path& file) const;

  const std::string& Text() const { return text_; }
  void SetText(std::string text) { text_ = std::move(text); }
  bool Empty() const { return text_.empty(); }
  void Clear() {
    text_.clear();
    length_read_ = 0;
  }
  // How many bytes the last ReadFrom read.
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

}  // namespace tessaly::formats
