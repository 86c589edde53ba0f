#pragma once
// The rules on disk: loading the present rules (restoring the defaults when they are
// missing), saving them, the numbered archive copies, and the small control files that
// the engine looks for beside them in the program's folder.
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "rules/pages.h"
#include "rules/rules_text.h"

namespace tessaly::rules {

namespace fs = std::filesystem;

enum class LoadStatus { Loaded, DefaultsRestored, NoRules };

// Loads the file that the rules list names: an archive ("NAME.U01(date)" -> NAME.U01),
// or ENGINE.USR for "Select File", "Present Rules" and an empty text. A missing file brings
// the defaults back from ENGINE.CND with a message; both failures raise `validation_failed`.
LoadStatus LoadRules(const fs::path& folder, std::string_view edit_conditions_text,
                     RulesText& rules, bool& validation_failed);
// Writes the whole text to ENGINE.USR, replacing it, with no line end added.
bool SaveRules(const fs::path& folder, const RulesText& rules);
// "Restore Default Rules": ENGINE.CND copied over an existing ENGINE.USR line by line.
bool RestoreDefaultRules(const fs::path& folder);

// ---- Archives ----------------------------------------------------------------------------

// The entry text of a saved file in a list: the name, "(", its file date, ")".
std::string ListEntry(const fs::path& file);
// The file name a list entry stands for: the text up to the first "(", trimmed.
std::string EntryFileName(std::string_view entry);

// The first free "<stem>.<letter><i><j>": <i> 0 to 9, <j> 1 to 9 for <i> = 0 and 0 to 9
// otherwise. Existing names are compared without regard to case. Empty when all are taken.
std::string NextArchiveName(const fs::path& folder, std::string_view stem, char letter);

struct ConditionsList {
  std::vector<std::string> items;  // "Present Rules", then each archive entry
  bool archive_in_use = false;
  std::string next_archive;        // upper case
};
// Lists "Present Rules" and every "*.U??" whose name ends in a digit; walks the project's
// archive names for the next free one.
ConditionsList Check4ExistingConditions(const fs::path& folder, std::string_view project_stem);

// The archive step at Finish, with the save-model marker and the "STORE" rule.
struct SaveFilesInput {
  bool save_conditions = false;     // chkSaveConditions
  int condition_choice = 0;         // optConditions index
  int objective2 = 0;
  bool save_models = false;         // chkSaveModels
  bool final_model = false;         // chkFinalModel
  std::string project_stem;
};
// Returns the save-model flag.
bool SetSaveFiles(const fs::path& folder, const SaveFilesInput& in, RulesText& rules);

// ---- Control files -----------------------------------------------------------------------

// A marker file holding one line, replacing any earlier one.
bool WriteMarker(const fs::path& folder, std::string_view name, std::string_view line);
bool RemoveMarker(const fs::path& folder, std::string_view name);
bool MarkerExists(const fs::path& folder, std::string_view name);

// A pooling run's groups of equal size: GROUPLST.QVX with the count and each group's size,
// or no such file when there are no groups.
void PostPooledGroups(const fs::path& folder, int groups, long observations);
// The sample sizes of a pooled cross-section: GROUPLST.QVX with " n " and one size a line,
// removed when estimation is off or there are no groups; "# OF GROUPS" follows the count.
void PostGroupPC(const fs::path& folder, const GroupPage& groups, bool estimation_on,
                 RulesText& rules);

}  // namespace tessaly::rules
