#include "platform/numfmt.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <vector>

#include "platform/text.h"
namespace tessaly::platform {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// A number taken apart: sign, integer digits, fraction digits, decimal exponent.
struct DecimalParts {
  bool negative = false;
  std::string int_digits;
  std::string frac_digits;
  long long exponent = 0;
};

// Converts parts to a double without regard to the process locale. nullopt on overflow;
// an underflow gives 0.
std::optional<double> PartsToDouble(const DecimalParts& parts) {
  // Leading zeros of the integer part say nothing; dropping them keeps the text short
  // and the overflow test honest.
  size_t first = parts.int_digits.find_first_not_of('0');
  std::string int_digits = first == std::string::npos ? "" : parts.int_digits.substr(first);
  std::string text = int_digits.empty() ? "0" : int_digits;
  if (!parts.frac_digits.empty()) text += "." + parts.frac_digits;
  text += "e" + std::to_string(parts.exponent);
  double value = 0;
  auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec == std::errc::result_out_of_range) {
    // Out of range either way: tell overflow from underflow by the magnitude's exponent.
    size_t lead = int_digits.size();
    long long magnitude = parts.exponent + static_cast<long long>(lead);
    if (lead == 0) {
      size_t nz = parts.frac_digits.find_first_not_of('0');
      if (nz == std::string::npos) return parts.negative ? -0.0 : 0.0;
      magnitude = parts.exponent - static_cast<long long>(nz);
    }
    if (magnitude > 0) return std::nullopt;
    value = 0;
  } else if (ec != std::errc()) {
    return std::nullopt;
  }
  if (!std::isfinite(value)) return std::nullopt;
  return parts.negative ? -value : value;
}

// Parses a hex or octal literal "&H..." / "&O..." (text already trimmed).
std::optional<double> ParseRadixLiteral(std::string_view text) {
  if (text.size() < 3 || text[0] != '&') return std::nullopt;
  char kind = static_cast<char>(text[1] | 0x20);
  int base = kind == 'h' ? 16 : kind == 'o' ? 8 : 0;
  if (base == 0) return std::nullopt;
  std::string_view digits = text.substr(2);
  if (digits.size() > 16) return std::nullopt;
  unsigned long long value = 0;
  auto [ptr, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), value, base);
  if (ec != std::errc() || ptr != digits.data() + digits.size()) return std::nullopt;
  return static_cast<double>(value);
}

// Strict parse of a whole text as one number. A text can be well formed and still have
// no value: a number beyond the range of a double.
struct StrictParse {
  bool well_formed = false;
  std::optional<double> value;
};

std::optional<double> ParseStrictForm(std::string_view text, bool& well_formed);

StrictParse ParseStrictText(std::string_view text) {
  StrictParse out;
  out.value = ParseStrictForm(text, out.well_formed);
  return out;
}

std::optional<double> ParseStrict(std::string_view text) {
  bool well_formed = false;
  return ParseStrictForm(text, well_formed);
}

std::optional<double> ParseStrictForm(std::string_view text, bool& well_formed) {
  well_formed = false;
  text = TrimView(text, kBlanksAndTabs);
  if (text.empty()) return std::nullopt;
  if (text[0] == '&') {
    auto v = ParseRadixLiteral(text);
    well_formed = v.has_value();
    return v;
  }
  // Fast path for the common form: sign '-' at most, digits, point, exponent 'e'.
  {
    size_t i = text[0] == '-' ? 1 : 0;
    size_t digits = 0;
    while (i < text.size() && IsDigit(text[i])) ++i, ++digits;
    if (i < text.size() && text[i] == '.') {
      ++i;
      while (i < text.size() && IsDigit(text[i])) ++i, ++digits;
    }
    bool plain = digits > 0;
    if (plain && i < text.size()) {
      plain = (text[i] == 'e' || text[i] == 'E') && i + 1 < text.size();
      if (plain) {
        ++i;
        if (text[i] == '+' || text[i] == '-') ++i;
        plain = i < text.size();
        while (plain && i < text.size()) plain = IsDigit(text[i++]);
      }
    }
    if (plain) {
      double value = 0;
      auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
      if (ec == std::errc() && ptr == text.data() + text.size() && std::isfinite(value)) {
        well_formed = true;
        return value;
      }
    }
  }
  DecimalParts parts;
  size_t i = 0;
  if (text[i] == '+' || text[i] == '-') {
    parts.negative = text[i] == '-';
    ++i;
  }
  while (i < text.size() && IsDigit(text[i])) parts.int_digits.push_back(text[i++]);
  if (i < text.size() && text[i] == '.') {
    ++i;
    while (i < text.size() && IsDigit(text[i])) parts.frac_digits.push_back(text[i++]);
  }
  if (parts.int_digits.empty() && parts.frac_digits.empty()) return std::nullopt;
  if (i < text.size()) {
    char e = static_cast<char>(text[i] | 0x20);
    if (e != 'e' && e != 'd') return std::nullopt;
    ++i;
    bool exp_negative = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
      exp_negative = text[i] == '-';
      ++i;
    }
    if (i >= text.size()) return std::nullopt;
    long long exponent = 0;
    for (; i < text.size(); ++i) {
      if (!IsDigit(text[i])) return std::nullopt;
      if (exponent < 100000000) exponent = exponent * 10 + (text[i] - '0');
    }
    parts.exponent = exp_negative ? -exponent : exponent;
  }
  well_formed = true;
  return PartsToDouble(parts);
}

// The value's 15 significant digits and its decimal exponent: value = d.ddd... x 10^exp.
struct SignificantDigits {
  std::string digits;  // 15 digits
  int exponent = 0;
};

SignificantDigits FifteenDigits(double magnitude) {
  char buf[64];
  auto [ptr, ec] = std::to_chars(buf, buf + sizeof buf, magnitude, std::chars_format::scientific, 14);
  std::string_view text(buf, static_cast<size_t>(ptr - buf));
  SignificantDigits out;
  size_t e = text.find('e');
  for (size_t i = 0; i < e; ++i) {
    if (IsDigit(text[i])) out.digits.push_back(text[i]);
  }
  int exponent = 0;
  std::from_chars(text.data() + e + 1 + (text[e + 1] == '+' ? 1 : 0), text.data() + text.size(),
                  exponent);
  out.exponent = exponent;
  return out;
}

std::string TwoDigits(long long v) {
  std::string s = std::to_string(v);
  return s.size() < 2 ? "0" + s : s;
}

std::string ClockText(long long seconds) {
  seconds %= 86400;
  if (seconds < 0) seconds += 86400;
  return TwoDigits(seconds / 3600) + ":" + TwoDigits(seconds / 60 % 60) + ":" +
         TwoDigits(seconds % 60);
}

struct MaskSection {
  std::string prefix, suffix;
  int min_int = 0;      // '0's before the point
  int decimals = 0;     // placeholders after the point
  int min_decimals = 0; // '0's after the point
  bool has_point = false;
};

MaskSection ParseSection(std::string_view mask) {
  MaskSection s;
  size_t first = mask.find_first_of("0#.");
  size_t last = mask.find_last_of("0#.");
  if (first == std::string_view::npos) {
    s.prefix = std::string(mask);
    return s;
  }
  s.prefix = std::string(mask.substr(0, first));
  s.suffix = std::string(mask.substr(last + 1));
  bool after_point = false;
  for (size_t i = first; i <= last; ++i) {
    char c = mask[i];
    if (c == '.') {
      after_point = true;
      s.has_point = true;
    } else if (c == '0' || c == '#') {
      if (after_point) {
        ++s.decimals;
        if (c == '0') s.min_decimals = s.decimals;
      } else if (c == '0') {
        ++s.min_int;
      }
    }
  }
  return s;
}

// Formats a non-negative value under one mask section.
std::string FormatSection(double magnitude, const MaskSection& s) {
  std::string int_part, frac_part;
  if (magnitude != 0) {
    SignificantDigits sd = FifteenDigits(magnitude);
    // Place the digits around the point: int digits are those before it.
    long long point = static_cast<long long>(sd.exponent) + 1;  // digits before the point
    std::string all;  // int digits then exactly s.decimals + 1 fraction digits
    if (point > 0) {
      for (long long i = 0; i < point; ++i)
        all.push_back(i < 15 ? sd.digits[static_cast<size_t>(i)] : '0');
    }
    long long int_len = point > 0 ? point : 0;
    for (long long k = 0; k <= s.decimals; ++k) {
      long long idx = point + k;  // index into sd.digits of fraction digit k
      all.push_back(idx >= 0 && idx < 15 ? sd.digits[static_cast<size_t>(idx)] : '0');
    }
    // Round half away from zero at the last kept digit.
    bool round_up = all.back() >= '5';
    all.pop_back();
    if (round_up) {
      long long i = static_cast<long long>(all.size()) - 1;
      for (; i >= 0; --i) {
        if (all[static_cast<size_t>(i)] == '9') {
          all[static_cast<size_t>(i)] = '0';
        } else {
          ++all[static_cast<size_t>(i)];
          break;
        }
      }
      if (i < 0) {
        all.insert(all.begin(), '1');
        ++int_len;
      }
    }
    int_part = all.substr(0, static_cast<size_t>(int_len));
    frac_part = all.substr(static_cast<size_t>(int_len));
  } else {
    frac_part.assign(static_cast<size_t>(s.decimals), '0');
  }
  size_t nz = int_part.find_first_not_of('0');
  int_part = nz == std::string::npos ? "" : int_part.substr(nz);
  if (static_cast<int>(int_part.size()) < s.min_int)
    int_part.insert(0, static_cast<size_t>(s.min_int) - int_part.size(), '0');
  while (static_cast<int>(frac_part.size()) > s.min_decimals && !frac_part.empty() &&
         frac_part.back() == '0')
    frac_part.pop_back();
  std::string out = s.prefix + int_part;
  if (s.has_point) out += "." + frac_part;
  return out + s.suffix;
}

}  // namespace

bool IsNumeric(std::string_view text) { return ParseStrict(text).has_value(); }

std::optional<double> ToDouble(std::string_view text) { return ParseStrict(text); }

NumberConversion ToNumber(std::string_view text) {
  StrictParse parsed = ParseStrictText(text);
  NumberConversion out;
  if (parsed.value) {
    out.status = NumberStatus::Ok;
    out.value = *parsed.value;
  } else {
    out.status = parsed.well_formed ? NumberStatus::Overflow : NumberStatus::NotNumeric;
  }
  return out;
}

Int16Conversion ToInt16(double value) {
  Int16Conversion out;
  if (!std::isfinite(value)) {
    out.status = Int16Status::Overflow;
    return out;
  }
  double rounded = std::nearbyint(value);  // ties to even under the default rounding mode
  if (rounded < -32768.0 || rounded > 32767.0) {
    out.status = Int16Status::Overflow;
    return out;
  }
  out.status = Int16Status::Ok;
  out.value = static_cast<int16_t>(rounded);
  return out;
}

Int16Conversion ToInt16(std::string_view text) {
  StrictParse parsed = ParseStrictText(text);
  if (!parsed.value) {
    Int16Conversion out;
    out.status = parsed.well_formed ? Int16Status::Overflow : Int16Status::NotNumeric;
    return out;
  }
  return ToInt16(*parsed.value);
}

int ToIntClamped(double value) {
  if (std::isnan(value)) return 0;
  if (value >= 2147483647.0) return 2147483647;
  if (value <= -2147483648.0) return -2147483647 - 1;
  return static_cast<int>(value);
}

double Val(std::string_view text) {
  std::string compact;
  compact.reserve(text.size() < 64 ? text.size() : 64);
  for (char c : text) {
    if (c == ' ' || c == '\t' || c == '\n' || c == '\r') continue;
    compact.push_back(c);
  }
  if (compact.size() >= 2 && compact[0] == '&') {
    size_t end = 2;
    int base = (compact[1] | 0x20) == 'h' ? 16 : (compact[1] | 0x20) == 'o' ? 8 : 0;
    if (base == 0) return 0;
    unsigned long long v = 0;
    auto [ptr, ec] = std::from_chars(compact.data() + end, compact.data() + compact.size(), v, base);
    return ec == std::errc() ? static_cast<double>(v) : 0.0;
  }
  DecimalParts parts;
  size_t i = 0;
  if (i < compact.size() && (compact[i] == '+' || compact[i] == '-')) {
    parts.negative = compact[i] == '-';
    ++i;
  }
  while (i < compact.size() && IsDigit(compact[i])) parts.int_digits.push_back(compact[i++]);
  if (i < compact.size() && compact[i] == '.') {
    ++i;
    while (i < compact.size() && IsDigit(compact[i])) parts.frac_digits.push_back(compact[i++]);
  }
  if (parts.int_digits.empty() && parts.frac_digits.empty()) return 0;
  if (i < compact.size() && ((compact[i] | 0x20) == 'e' || (compact[i] | 0x20) == 'd')) {
    size_t j = i + 1;
    bool exp_negative = false;
    if (j < compact.size() && (compact[j] == '+' || compact[j] == '-')) {
      exp_negative = compact[j] == '-';
      ++j;
    }
    long long exponent = 0;
    bool any = false;
    for (; j < compact.size() && IsDigit(compact[j]); ++j) {
      any = true;
      if (exponent < 100000000) exponent = exponent * 10 + (compact[j] - '0');
    }
    if (any) parts.exponent = exp_negative ? -exponent : exponent;
  }
  std::optional<double> value = PartsToDouble(parts);
  if (!value) return parts.negative ? -std::numeric_limits<double>::infinity()
                                    : std::numeric_limits<double>::infinity();
  return *value;
}

std::string NumberToText(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value < 0 ? "-Inf" : "Inf";
  if (value == 0) return "0";
  const double magnitude = std::fabs(value);
  // The shortest text that reads back to the value is the 15-digit rounding whenever it
  // has 15 digits or fewer (any such decimal is unique among doubles); otherwise round.
  char sci[64];
  auto parse = [&](char* end, char* digits, int& count, int& exponent) {
    count = 0;
    char* p = sci;
    for (; p < end && *p != 'e'; ++p) {
      if (IsDigit(*p)) digits[count++] = *p;
    }
    exponent = 0;
    ++p;
    bool negative = *p == '-';
    if (*p == '+' || *p == '-') ++p;
    for (; p < end; ++p) exponent = exponent * 10 + (*p - '0');
    if (negative) exponent = -exponent;
  };
  char digits[32];
  int count = 0, exponent = 0;
  char* end = std::to_chars(sci, sci + sizeof sci, magnitude, std::chars_format::scientific).ptr;
  parse(end, digits, count, exponent);
  if (count > 15) {
    end = std::to_chars(sci, sci + sizeof sci, magnitude, std::chars_format::scientific, 14).ptr;
    parse(end, digits, count, exponent);
  }
  while (count > 1 && digits[count - 1] == '0') --count;

  char out[64];
  int n = 0;
  if (value < 0) out[n++] = '-';
  if (exponent >= 15 || exponent < -5) {
    out[n++] = digits[0];
    if (count > 1) {
      out[n++] = '.';
      for (int i = 1; i < count; ++i) out[n++] = digits[i];
    }
    out[n++] = 'E';
    out[n++] = exponent < 0 ? '-' : '+';
    int e = exponent < 0 ? -exponent : exponent;
    if (e >= 100) out[n++] = static_cast<char>('0' + e / 100);
    out[n++] = static_cast<char>('0' + e / 10 % 10);
    out[n++] = static_cast<char>('0' + e % 10);
  } else if (exponent < 0) {
    out[n++] = '0';
    out[n++] = '.';
    for (int i = 0; i < -exponent - 1; ++i) out[n++] = '0';
    for (int i = 0; i < count; ++i) out[n++] = digits[i];
  } else {
    int int_len = exponent + 1;
    for (int i = 0; i < int_len; ++i) out[n++] = i < count ? digits[i] : '0';
    if (count > int_len) {
      out[n++] = '.';
      for (int i = int_len; i < count; ++i) out[n++] = digits[i];
    }
  }
  return std::string(out, static_cast<size_t>(n));
}

std::string FormatNumber(double value, std::string_view mask) {
  if (mask == "hh:mm:ss" || mask == "HH:MM:SS") return FormatTimeOfDay(value);
  if (mask.empty() || !std::isfinite(value)) return NumberToText(value);
  std::vector<std::string_view> sections;
  size_t start = 0;
  while (true) {
    size_t semi = mask.find(';', start);
    sections.push_back(mask.substr(start, semi == std::string_view::npos ? semi : semi - start));
    if (semi == std::string_view::npos) break;
    start = semi + 1;
  }
  if (value < 0 && sections.size() >= 2 && !sections[1].empty()) {
    return FormatSection(-value, ParseSection(sections[1]));
  }
  if (value == 0 && sections.size() >= 3 && !sections[2].empty()) {
    return FormatSection(0, ParseSection(sections[2]));
  }
  MaskSection s = ParseSection(sections[0]);
  std::string body = FormatSection(std::fabs(value), s);
  if (value < 0 && body.find_first_of("123456789") != std::string::npos) return "-" + body;
  return body;
}

std::string FormatTimeOfDay(double day_fraction) {
  if (!std::isfinite(day_fraction)) return "00:00:00";
  double fraction = std::fabs(day_fraction - std::trunc(day_fraction));
  return ClockText(std::llround(fraction * 86400.0));
}

std::string FormatClockSeconds(double seconds) {
  if (!std::isfinite(seconds)) return "00:00:00";
  return ClockText(std::llround(std::fmod(seconds, 86400.0)));
}

std::string RightJustify(std::string_view text, size_t width) {
  std::string out;
  if (text.size() < width) out.assign(width - text.size(), ' ');
  out += text;
  return out;
}

}  // namespace tessaly::platform
