#include "platform/text.h"

namespace tessaly::platform {

std::string_view TrimView(std::string_view text, std::string_view drop) {
  const size_t first = text.find_first_not_of(drop);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(drop) - first + 1);
}

std::string Trim(std::string_view text, std::string_view drop) {
  return std::string(TrimView(text, drop));
}

std::string TrimEnd(std::string_view text, std::string_view drop) {
  const size_t last = text.find_last_not_of(drop);
  return last == std::string_view::npos ? std::string() : std::string(text.substr(0, last + 1));
}

std::string HtmlEscape(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      default: out += c;
    }
  }
  return out;
}

}  // namespace tessaly::platform
