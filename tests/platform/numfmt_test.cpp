#include "platform/numfmt.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tessaly::platform {
namespace {

TEST(NumericText, AcceptsTheFormsDatasetsAndRulesUse) {
  for (const char* text : {"0", "112", " 42 ", "\t-3\t", "1.5", "-.5", "3.", "+2", "1E5", "2.5e-3",
                           "4D2", "-1e+300", "&H1F", "&o17", "00012"}) {
    EXPECT_TRUE(IsNumeric(text)) << text;
  }
  for (const char* text : {"", " ", ".", "-", "+", "1e", "1e+", "abc", "12a", "1,000", "1.2.3",
                           "--1", "1 2", "&H", "&HZ", "e5", "1E400", "\x1a"}) {
    EXPECT_FALSE(IsNumeric(text)) << text;
  }
  EXPECT_DOUBLE_EQ(*ToDouble(" 112.25 "), 112.25);
  EXPECT_DOUBLE_EQ(*ToDouble("4D2"), 400);
  EXPECT_DOUBLE_EQ(*ToDouble("&H1F"), 31);
  EXPECT_DOUBLE_EQ(*ToDouble("1e-400"), 0);  // underflow is a number, zero
  EXPECT_EQ(ToNumber("1E400").status, NumberStatus::Overflow);
  EXPECT_EQ(ToNumber("1E4x").status, NumberStatus::NotNumeric);
}

TEST(NumericText, SixteenBitConversionRoundsHalfToEvenAndOverflows) {
  EXPECT_EQ(ToInt16("12").value, 12);
  EXPECT_EQ(ToInt16("2.5").value, 2);
  EXPECT_EQ(ToInt16("3.5").value, 4);
  EXPECT_EQ(ToInt16("-2.5").value, -2);
  EXPECT_EQ(ToInt16("32767").value, 32767);
  EXPECT_EQ(ToInt16("-32768").value, -32768);
  EXPECT_EQ(ToInt16("32768").status, Int16Status::Overflow);
  EXPECT_EQ(ToInt16("32767.5").status, Int16Status::Overflow);
  EXPECT_EQ(ToInt16("1E400").status, Int16Status::Overflow);
  EXPECT_EQ(ToInt16("x").status, Int16Status::NotNumeric);
  EXPECT_EQ(ToInt16("").status, Int16Status::NotNumeric);
  EXPECT_EQ(ToInt16(std::nan("")).status, Int16Status::Overflow);
}

TEST(NumericText, ValReadsTheLeadingNumberAndNeverFails) {
  const std::pair<const char*, double> cases[] = {{"1 2", 12},         {"  150  ", 150}, {"12abc", 12}, {"abc", 0},
                                                   {"", 0},              {"-3.75xyz", -3.75}, {"1e3e", 1000},
                                                   {"&HFF", 255}};
  for (const auto& [text, value] : cases) EXPECT_EQ(Val(text), value) << text;
  EXPECT_TRUE(std::isinf(Val("9e999")));
  EXPECT_EQ(Val(std::string(200000, '9')), INFINITY);
}

TEST(NumberText, DefaultFormKeepsFifteenDigitsAndTheLeadingZero) {
  const struct {
    double value;
    const char* text;
  } cases[] = {
      {0, "0"}, {-0.0, "0"}, {112, "112"}, {0.5, "0.5"}, {-0.25, "-0.25"}, {0.1 + 0.2, "0.3"},
      {1.0 / 3.0, "0.333333333333333"}, {123456789012345.0, "123456789012345"}, {1e15, "1E+15"},
      {-2.5e20, "-2.5E+20"}, {0.0001, "0.0001"}, {0.00001, "0.00001"}, {0.0000015, "1.5E-06"},
      {99999999999.0, "99999999999"}, {1e-300, "1E-300"},
  };
  for (const auto& c : cases) EXPECT_EQ(NumberToText(c.value), c.text) << c.value;
  // What is written is read back to the same 15 digits.
  for (double v : {3.14159265358979, -1234.5678, 6.02214076e23, 1e-7}) {
    EXPECT_EQ(NumberToText(*ToDouble(NumberToText(v))), NumberToText(v));
  }
}

TEST(NumberText, MasksOfTheSystem) {
  // Half away from zero; 1.005 rounds up in its 15-digit decimal form, not its binary one.
  const struct {
    double value;
    const char* mask;
    const char* text;
  } cases[] = {
      {3, "###0", "3"}, {0, "###0", "0"}, {12345, "###0", "12345"}, {2.5, "###0", "3"}, {-7, "###0", "-7"},
      {0, "###", ""}, {42.4, "###", "42"}, {95, "##.0", "95.0"}, {0.5, "##.0", ".5"}, {0, "##.0", ".0"},
      {0.1, "00.0", "00.1"}, {95, "00.0", "95.0"}, {5.25, "00.0", "05.3"}, {1.005, "0.00;-0.0", "1.01"},
      {0.125, "0.00;-0.0", "0.13"}, {-1.25, "0.00;-0.0", "-1.3"}, {0, "0.00;-0.0", "0.00"},
      {0.5, "#.00;-#.0", ".50"}, {-0.46, "#.00;-#.0", "-.5"}, {12.345, "#.00;-#.0", "12.35"},
      {0.123456789012, "0.0000000000", "0.1234567890"}, {9.99999999999, "0.0000000000", "10.0000000000"},
      {-0.001, "0.00", "0.00"}, {1e20, "###0", "100000000000000000000"}, {0.5, "", "0.5"},
  };
  for (const auto& c : cases) EXPECT_EQ(FormatNumber(c.value, c.mask), c.text) << c.value << " " << c.mask;
}

TEST(NumberText, TimesOfDay) {
  EXPECT_EQ(FormatNumber(0.5, "hh:mm:ss"), "12:00:00");
  EXPECT_EQ(FormatTimeOfDay(45000.75), "18:00:00");
  EXPECT_EQ(FormatTimeOfDay(1.0 / 86400 * 3661), "01:01:01");
  EXPECT_EQ(FormatTimeOfDay(0.999999999), "00:00:00");  // rounds to midnight
  EXPECT_EQ(FormatClockSeconds(3725.4), "01:02:05");
  EXPECT_EQ(FormatClockSeconds(86400 + 59), "00:00:59");
  EXPECT_EQ(RightJustify("12", 6), "    12");
  EXPECT_EQ(RightJustify("1234567", 6), "1234567");
}

}  // namespace
}  // namespace tessaly::platform
