#include "rules/rules_files.h"

#include <chrono>
#include <cstdio>
#include <ctime>

#include "platform/dialogs.h"
#include "platform/paths.h"
#include "platform/textfile.h"
#include "rules/page_rules.h"
#include "rules/rule_keys.h"
#include "rules/rule_values.h"
#include "rules/texts.h"

namespace tessaly::rules {

namespace {

void Inform(std::string_view message, std::string_view title) {
  platform::Dialogs().Message(std::string(message), platform::mb::OKOnly, std::string(title));
}

bool IsArchiveChoice(std::string_view entry) {
  return !entry.empty() && entry != text::kSelectFile && entry != text::kPresentRules;
}

}  // namespace

LoadStatus LoadRules(const fs::path& folder, std::string_view choice, RulesText& rules,
                     bool& validation_failed) {
  std::string name =
      IsArchiveChoice(choice) ? EntryFileName(choice) : std::string(text::kEngineUsr);
  LoadStatus status = LoadStatus::Loaded;
  if (!platform::ExistsNoCase(folder, name)) {
    auto cnd = platform::FindNoCase(folder, text::kEngineCnd);
    if (!cnd) {
      Inform(text::kNoRulesAtAll, text::kFileDoesNotExist);
      validation_failed = true;
      return LoadStatus::NoRules;
    }
    // Defaults that cannot be copied are read where they are.
    if (!platform::CopyFileOver(*cnd, platform::ResolveNoCase(folder, text::kEngineUsr)))
      name = cnd->filename().string();
    Inform(text::kDefaultsRestored, text::kFileDoesNotExist);
    validation_failed = true;
    status = LoadStatus::DefaultsRestored;
    // A vanished archive leaves the restored present rules to read.
    if (!platform::ExistsNoCase(folder, name)) name = std::string(text::kEngineUsr);
  }
  // A file that cannot be read leaves the rules as they were; the pages' checks judge them.
  (void)rules.ReadFrom(platform::ResolveNoCase(folder, name));
  return status;
}

bool SaveRules(const fs::path& folder, const RulesText& rules) {
  return rules.WriteTo(platform::ResolveNoCase(folder, text::kEngineUsr));
}

bool RestoreDefaultRules(const fs::path& folder) {
  auto usr = platform::FindNoCase(folder, text::kEngineUsr);
  auto cnd = platform::FindNoCase(folder, text::kEngineCnd);
  if (!usr || !cnd) return false;
  auto lines = platform::ReadAllLines(*cnd);
  if (!lines) return false;
  return platform::WriteAllLines(*usr, *lines);
}

// ---- Archives ----------------------------------------------------------------------------

std::string ListEntry(const fs::path& file) {
  std::string date;
  std::error_code ec;
  auto ftime = fs::last_write_time(file, ec);
  if (!ec) {
    auto sys = std::chrono::time_point_cast<std::chrono::system_clock::duration>(std::chrono::file_clock::to_sys(ftime));
    std::time_t t = std::chrono::system_clock::to_time_t(sys);
    std::tm tm{};
    localtime_r(&t, &tm);
    int hour12 = tm.tm_hour % 12 == 0 ? 12 : tm.tm_hour % 12;
    char buf[64];
    std::snprintf(buf, sizeof buf, "%d/%d/%d %d:%02d:%02d %s", tm.tm_mon + 1, tm.tm_mday,
                  tm.tm_year + 1900, hour12, tm.tm_min, tm.tm_sec, tm.tm_hour < 12 ? "AM" : "PM");
    date = buf;
  }
  return file.filename().string() + "(" + date + ")";
}

std::string EntryFileName(std::string_view entry) {
  size_t paren = entry.find('(');
  return Trim(entry.substr(0, paren));
}

std::string NextArchiveName(const fs::path& folder, std::string_view stem, char letter) {
  for (int i = 0; i <= 9; ++i) {
    for (int j = (i == 0 ? 1 : 0); j <= 9; ++j) {
      std::string name = std::string(stem) + "." + letter + char('0' + i) + char('0' + j);
      if (!platform::ExistsNoCase(folder, name)) return name;
    }
  }
  return {};
}

ConditionsList Check4ExistingConditions(const fs::path& folder, std::string_view project_stem) {
  ConditionsList list;
  list.items.push_back(std::string(text::kPresentRules));
  std::error_code ec;
  std::vector<fs::path> archives;
  for (const auto& entry : fs::directory_iterator(folder, ec)) {
    if (!entry.is_regular_file(ec)) continue;
    std::string name = entry.path().filename().string();
    size_t dot = name.rfind('.');
    if (dot == std::string::npos || name.size() - dot != 4) continue;
    if (std::toupper(static_cast<unsigned char>(name[dot + 1])) != 'U') continue;
    if (!std::isdigit(static_cast<unsigned char>(name.back()))) continue;
    archives.push_back(entry.path());
  }
  std::sort(archives.begin(), archives.end());
  for (const auto& a : archives) list.items.push_back(ListEntry(a));
  list.archive_in_use = !archives.empty();
  list.next_archive = platform::ToUpper(NextArchiveName(folder, Trim(project_stem), 'U'));
  return list;
}

bool SetSaveFiles(const fs::path& folder, const SaveFilesInput& in, RulesText& rules) {
  if (!in.save_conditions) {
    int o = in.objective2;
    if (o == 11 || o == 21 || o == 22 || o == 23 || o == 24)
      Inform(text::kRulesSavedForProcessing, text::kSaveRulesTitle);
  } else if (in.condition_choice == 2 || in.condition_choice == 6) {
    ConditionsList list = Check4ExistingConditions(folder, in.project_stem);
    std::string target = list.archive_in_use && !list.next_archive.empty()
                             ? list.next_archive
                             : Trim(in.project_stem) + ".U01";
    auto usr = platform::FindNoCase(folder, text::kEngineUsr);
    if (usr && !platform::CopyFileOver(*usr, folder / target))
      Inform("The rules could not be archived as " + target + ".", text::kSaveRulesTitle);
    else
      Inform(std::string(text::kRulesArchivedHead) + target + std::string(text::kRulesArchivedTail),
             text::kSaveRulesTitle);
  }
  bool save_model = false;
  if (in.save_models) {
    if (in.final_model) {
      save_model = true;
      WriteMarker(folder, text::kSaveMod, text::kSaveModLine);
      rules.PutRule(key::kStore, "   1");
    }
  } else {
    RemoveMarker(folder, text::kSaveMod);
    rules.PutRule(key::kStore, "   0");
  }
  return save_model;
}

// ---- Control files -----------------------------------------------------------------------

bool WriteMarker(const fs::path& folder, std::string_view name, std::string_view line) {
  platform::RemoveNoCase(folder, name);
  return platform::WriteAllLines(folder / std::string(name), {std::string(line)});
}

bool RemoveMarker(const fs::path& folder, std::string_view name) {
  return platform::RemoveNoCase(folder, name);
}

bool MarkerExists(const fs::path& folder, std::string_view name) {
  return platform::ExistsNoCase(folder, name);
}

void PostGroupPC(const fs::path& folder, const GroupPage& groups, bool estimation_on,
                 RulesText& rules) {
  RemoveMarker(folder, text::kGroupList);
  Group_PC_Put(rules, groups);
  if (!estimation_on || groups.group_count <= 0) return;
  std::vector<std::string> lines;
  lines.push_back(" " + std::to_string(groups.group_count) + " ");
  for (int g = 0; g < groups.group_count && g < static_cast<int>(groups.txtGroup_PC.size()); ++g)
    lines.push_back(Trim(groups.txtGroup_PC[static_cast<size_t>(g)].text));
  // The list was removed above: one that cannot be written leaves the engine without one,
  // as when no groups are asked for.
  (void)platform::WriteAllLines(folder / std::string(text::kGroupList), lines);
}

void PostPooledGroups(const fs::path& folder, int groups, long observations) {
  RemoveMarker(folder, text::kGroupList);
  if (groups <= 0) return;
  std::vector<std::string> lines{" " + std::to_string(groups) + " "};
  lines.insert(lines.end(), static_cast<size_t>(groups), std::to_string(observations / groups));
  // The list was removed above: one that cannot be written leaves the engine without one,
  // as when no groups are asked for.
  (void)platform::WriteAllLines(folder / std::string(text::kGroupList), lines);
}

}  // namespace tessaly::rules
