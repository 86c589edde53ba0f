#pragma once
// Numbers as the system's files and messages show them, and numbers read back from text
// in the same manner: the numeric test and conversions every reader of datasets and rules
// uses, the default number-to-text form, and the few format masks the system writes with.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tessaly::platform {

// ---- Reading numbers ------------------------------------------------------------------

// True when the text is one number: blanks and tabs around it are ignored; an optional
// sign, digits with at most one decimal point (at least one digit in all), and an optional
// exponent E or D with an optional sign ("1.5", "-.5", "3.", "+2E-3", "4D2"); or a hex or
// octal literal "&H1F" / "&O17". Empty text, a lone sign or point, thousands separators
// and values beyond the range of a double are not numeric.
bool IsNumeric(std::string_view text);

// The value of a numeric text (see IsNumeric); nullopt when the text is not numeric.
[[nodiscard]] std::optional<double> ToDouble(std::string_view text);

// The value with the reason when there is none: a text of a number's form whose value is
// beyond a double ("1E400") is an overflow, which the ASC reader reports as a malformed
// file rather than as a line that is no number.
enum class NumberStatus { Ok, NotNumeric, Overflow };
struct [[nodiscard]] NumberConversion {
  NumberStatus status = NumberStatus::NotNumeric;
  double value = 0;
  bool ok() const { return status == NumberStatus::Ok; }
};
NumberConversion ToNumber(std::string_view text);

// Converting to a 16-bit integer: the value is rounded half to even (2.5 -> 2, 3.5 -> 4)
// and must then lie in -32768..32767, so that the ASC files users already have keep being
// read to the same whole numbers.
enum class Int16Status { Ok, NotNumeric, Overflow };
struct [[nodiscard]] Int16Conversion {
  Int16Status status = Int16Status::NotNumeric;
  int16_t value = 0;
  bool ok() const { return status == Int16Status::Ok; }
};
Int16Conversion ToInt16(std::string_view text);
Int16Conversion ToInt16(double value);

// The leading number of a text, read the lenient way: blanks, tabs and line feeds are
// skipped anywhere ("1 2" is 12), reading stops at the first character that cannot
// continue a number, and text without a leading number gives 0. Never fails.
double Val(std::string_view text);

// A number read from a file made a whole number without undefined behaviour: the part
// before the point (as a cast would give), held within the range of int; NaN gives 0.
// "9e9999" read by Val is infinite and gives the largest int, never a wild value.
int ToIntClamped(double value);
// Val made a whole number the same way.
inline int ValInt(std::string_view text) { return ToIntClamped(Val(text)); }

// ---- Writing numbers ------------------------------------------------------------------

// The default number-to-text form: up to 15 significant digits, no trailing zeros,
// "0.5" and "-0.25" with their leading zero, and an exponent ("1E+15", "1.5E-07") only
// when the decimal exponent is 15 or more or below -5. NaN gives "NaN", infinities
// "Inf" / "-Inf".
std::string NumberToText(double value);

// Formats with a digit mask of up to three sections "positive;negative;zero": '0' is a
// digit always shown, '#' a digit shown only when significant, '.' the decimal point, and
// anything else is copied. Rounding is half away from zero on the value's 15-digit decimal
// form. A negative value under a one-section mask gets a leading "-"; under its own section
// it is shown without sign, the section's literals ("-") giving it. Masks used by the
// system: "###0", "###", "##.0", "00.0", "0.00;-0.0", "#.00;-#.0", "0.0000000000".
// The mask "hh:mm:ss" formats the value as a time of day given as a fraction of a day; an
// empty mask gives the default number text.
std::string FormatNumber(double value, std::string_view mask);

// "hh:mm:ss" for a time of day given as a fraction of a day (the fraction's whole part,
// the day, is ignored; rounded to the nearest second).
std::string FormatTimeOfDay(double day_fraction);
// "hh:mm:ss" for a number of seconds since midnight (wraps at 24 hours).
std::string FormatClockSeconds(double seconds);

// Left-pads with blanks to a width (no cut when the text is longer): the right-justified
// fixed columns of the engine's text files.
std::string RightJustify(std::string_view text, size_t width);

}  // namespace tessaly::platform
