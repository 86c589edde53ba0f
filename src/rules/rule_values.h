#pragma once
// How the wizard's field texts become the fixed-width values of the rules file and back.
// Four-wide integers are right-justified by bands: the band a value falls in decides how
// many blanks stand in front and how many of the text's last characters follow. Values
// outside every band are written as they stand.
#include <string>
#include <string_view>

namespace tessaly::rules {

// Text helpers in the manner of the rules file.
std::string Trim(std::string_view text);
std::string LeftChars(std::string_view text, size_t n);
std::string RightChars(std::string_view text, size_t n);
bool IsBlank(std::string_view text);  // empty or only blanks

// ---- Reading --------------------------------------------------------------------------
// A flag is on when the last character of the trimmed value is "1".
bool FlagOn(std::string_view value);
// The trimmed value as an integer; empty or blanks give 0.
int IntegerValue(std::string_view value);
// The last character of the trimmed value; empty or blanks give "0".
std::string LastDigit(std::string_view value);

// ---- Writing --------------------------------------------------------------------------
std::string FlagValue(bool on);  // three blanks and the digit

// One band: values from `low` to `high` are written as `blanks` blanks and the last
// `keep` characters of the text.
struct Band {
  double low, high;
  int blanks;
  size_t keep;
};
std::string ByBands(std::string_view text, std::initializer_list<Band> bands);

std::string IterationsValue(std::string_view text);          // 1-9, 10-99, 100-200
std::string HundredsValue(std::string_view text);            // 1-9, 10-99, 100-999
std::string ResidualsToPoolValue(std::string_view text);     // 5-9, 10-99, 100-999
std::string SmallLevelValue(std::string_view text);          // 0.0-0.99: one blank, last three
std::string NoiseSeriesValue(std::string_view text);         // 0.0-9.9: one blank, last three
std::string SeedValue(std::string_view text);                // 0-9, 10-99, 100-999
std::string ValuesToComputeValue(int forecasts);             // 0-9, 10-99, else one blank, last three
std::string MaximumLeadValue(std::string_view text);         // three blanks, last character
std::string NumberOfGroupsValue(int groups);                 // zero writes one group
std::string CountValue(int count);                           // lambda count 0-10

}  // namespace tessaly::rules
