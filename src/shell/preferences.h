#pragma once
// The user's report preferences: fourteen process-wide 16-bit values, the file
// DEFAULTXSD/UserPreferences.xml that holds them, its schema file, and the rules of the two
// preference dialogs as plain functions.
#include <array>
#include <cstdint>
#include <filesystem>
#include <string>

namespace tessaly::shell {

// Stored booleans use -1 for true, as they mix with small integers elsewhere.
inline constexpr int16_t kTrue = -1;
inline constexpr int16_t kFalse = 0;

inline constexpr size_t kPreferenceCount = 14;
// The elements in file order; the reader assigns by position, not by name.
inline constexpr std::array<const char*, kPreferenceCount> kPreferenceNames = {
    "Decimals", "AllGraphs", "NOGRAPHS", "SelGraphs", "Act",  "ActClen", "ActFit",
    "ActFore",  "ActFitFore", "ActRes",  "Fore",      "FitFore", "Res", "NoLimits"};

struct PreferenceValues {
  int16_t Decimals = 2;
  int16_t AllGraphs = kTrue;
  int16_t NOGRAPHS = kFalse;
  int16_t SelGraphs = kFalse;
  int16_t Act = kFalse;
  int16_t ActClen = kFalse;
  int16_t ActFit = kFalse;
  int16_t ActFore = kFalse;
  int16_t ActFitFore = kFalse;
  int16_t ActRes = kFalse;
  int16_t Fore = kFalse;
  int16_t FitFore = kFalse;
  int16_t Res = kFalse;
  int16_t NoLimits = kFalse;

  // The value at a file position, 0 to 13.
  int16_t& At(size_t position);
  int16_t At(size_t position) const { return const_cast<PreferenceValues*>(this)->At(position); }
  // The nine graph preferences in the dialog's order (Act ... Res).
  std::array<int16_t*, 9> Graphs();
};

// The process-wide values.
PreferenceValues& Prefs();

// DEFAULTXSD/UserPreferences.xml and DEFAULTXSD/UserPrefschema.xsd under a program folder.
std::filesystem::path PreferencesFile(const std::filesystem::path& program_folder);
std::filesystem::path PreferencesSchemaFile(const std::filesystem::path& program_folder);

// Writes the preferences file; on failure a box says the path and " was not made.".
bool WritePreferencesFile(const std::filesystem::path& program_folder,
                          const PreferenceValues& values);
// Reads the file into `values` by position. A file that does not parse is told in a box
// ("You have error " and the parser's reason) and the values stay as they were.
void LoadPrefXmlFile(const std::filesystem::path& program_folder, PreferenceValues& values);

// The schema's text, line by line (CR LF ends), the same as earlier versions wrote it, so a
// schema file left by one of them compares equal.
std::string UserPrefSchemaText();
bool WriteUserPrefSchema(const std::filesystem::path& path);

// The decimals field's rule: a text from "2" up to "9" in text order is taken, anything
// else gives 2 ("10" sorts below "2"). A taken text that is not a whole number from 2 to 9
// ("25", "2x") gives 2 as well.
int16_t DecimalsFromText(const std::string& text);

// The graph dialog's choice: optSelect 0 all graphs, 1 selected graphs, 2 no graphs.
struct GraphDialogChoice {
  std::string decimals_text;
  int option = 0;
  std::array<bool, 9> graphs{};  // chkact ... chkres
  bool no_limits = false;
};
// The option the dialog shows for the present values.
int GraphOptionFor(const PreferenceValues& values);
// OK of the graph dialog (the file is written by the caller).
void ApplyGraphDialog(const GraphDialogChoice& choice, PreferenceValues& values);

}  // namespace tessaly::shell
