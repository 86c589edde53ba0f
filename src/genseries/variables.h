#pragma once
// The generation variables file "rwf.his": every choice of the Add Series wizard, written
// beside the project file and read back for each ASC file that is adjusted. The reader goes
// by position (child 1 to 33 of BP_Variables after its comment), not by name, so a file with
// an element missing or a comment inserted shifts every later value: the file must keep the
// order the writer gives it.
#include <array>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/dates.h"

namespace tessaly::genseries {

namespace fs = std::filesystem;

inline constexpr const char* kVariablesFileName = "rwf.his";
inline constexpr const char* kNoDate = "00/00/01";
inline constexpr int kMaxHolidays = 18;

// The values as text, as the file holds them (the generator reads numbers where it needs
// them). Names follow the properties of the generator, the misspelled BPSeaonality
// included; its element is BPSeasonality.
struct GenerationVariables {
  std::string FirstObjective = "0";
  std::string SecondObjective = "0";
  std::string ThirdObjective = "0";
  std::string NumberOfNewSeries = "0";
  std::string BPSeaonality;
  std::string MajorPeriod;
  std::string MinorPeriod;
  std::string LevelStartYear, LevelStartPeriod, LevelEndYear, LevelEndPeriod;
  std::string PulseStartYear, PulseStartPeriod, PulseEndYear, PulseEndPeriod;
  std::string SPStartYear, SPStartPeriod, SPEndYear, SPEndPeriod;
  std::string TrendStartYear, TrendStartPeriod, TrendEndYear, TrendEndPeriod;
  // SelectedHolidays: the holiday key of each non-empty HolidayN element, keyed by N.
  std::map<int, std::string> SelectedHolidays;
  std::string Dateof1stHolidayObservation = kNoDate;
  std::string NumberofHolidaysSelected = "0";
  std::string UserDefName;
  std::string UserDefType = "0";
  std::string UserDefMethod;
  std::string DateOfFirstObservation = kNoDate;
  std::string SelectedDay = "0";
  std::string SelectedMonth = "0";
  std::string SelectedQuarter = "0";

  // The holiday array: the selected names, trimmed and not blank, in key order (at most 18).
  std::vector<std::string> HolidayNames() const;
};

// The element names of places 1 to 33, in file order (place 24 is "Holidays").
const std::array<const char*, 33>& VariableElementNames();

struct LoadResult {
  bool ok = false;
  std::string reason;  // the parser's reason when not ok
};

// LoadXmlFile: reads `path` place by place into `vars`. On a parse failure shows
// "You have error <reason>" through the dialog host and leaves `vars` as it was. A file
// cut short leaves the places it does not reach as they were.
LoadResult LoadXmlFile(const fs::path& path, GenerationVariables& vars, bool show_errors = true);

// BuildXML: writes all 33 places with the processing instruction, the comment and the root's
// attributes (`inputpath`, `outputpath`, the schema location in `program_folder`/DEFAULTXSD).
// After saving checks the file exists; if not shows "<path> was not made." and returns false.
bool BuildXML(const fs::path& path, const GenerationVariables& vars, const std::string& inputpath,
              const std::string& outputpath, const fs::path& program_folder);

// A date field's value: nullopt for "00/00/01", an empty text or any text that is not a date.
std::optional<platform::dates::Date> VariableDate(const std::string& text);
// "mm/dd/yyyy", as the wizard writes a date.
std::string FormatVariableDate(const platform::dates::Date& date);

}  // namespace tessaly::genseries
