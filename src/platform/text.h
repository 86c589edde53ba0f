#pragma once
// Trimming and HTML escaping, one of each for the whole program. Each file format pads its
// fields with its own characters, so a caller names what it drops: blanks alone in the fixed
// columns of ASC, model and rules files (a tab there belongs to the text), blanks and tabs
// where a person types, every white space where a line end may be left over.
#include <string>
#include <string_view>

namespace tessaly::platform {

inline constexpr std::string_view kBlanks = " ";
inline constexpr std::string_view kBlanksAndTabs = " \t";
// What std::isspace takes in the C locale.
inline constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

// `text` less the characters of `drop` at both ends.
[[nodiscard]] std::string_view TrimView(std::string_view text, std::string_view drop = kBlanks);
[[nodiscard]] std::string Trim(std::string_view text, std::string_view drop = kBlanks);
// `text` less the characters of `drop` at its end.
[[nodiscard]] std::string TrimEnd(std::string_view text, std::string_view drop = kBlanks);

// Text for an HTML page: &, <, > and " as entities, everything else as it stands.
[[nodiscard]] std::string HtmlEscape(std::string_view text);

}  // namespace tessaly::platform
