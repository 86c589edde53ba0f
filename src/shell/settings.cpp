#include "shell/settings.h"

#include <cmath>
#include <cstdlib>

#include "platform/dialogs.h"
#include "platform/inifile.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "shell/app_info.h"
#include "shell/error_context.h"

namespace tessaly::shell {

namespace {
std::string Trim(const std::string& s) { return platform::Trim(s, " \t\r\n"); }

// A numeric setting: a whole text that reads as a number, rounded half to
// even, within the 16-bit range.
std::optional<int16_t> NumericInt16(const std::string& text) {
  std::string t = Trim(text);
  if (t.empty()) return std::nullopt;
  char* end = nullptr;
  double v = std::strtod(t.c_str(), &end);
  if (end != t.c_str() + t.size() || !std::isfinite(v)) return std::nullopt;
  double r = std::nearbyint(v);
  if (r < -32768 || r > 32767) return std::nullopt;
  return static_cast<int16_t>(r);
}
}  // namespace

std::filesystem::path UserSettingsFolder() {
  const char* xdg = std::getenv("XDG_CONFIG_HOME");
  if (xdg && *xdg) return std::filesystem::path(xdg) / "tessaly";
  const char* home = std::getenv("HOME");
  return std::filesystem::path(home && *home ? home : ".") / ".config" / "tessaly";
}

CSetting::CSetting() : name_(kApplicationTitle) {}

void CSetting::Init(const std::optional<std::string>& name) {
  EnterProcedure("csetting", "Init");
  name_ = name ? Trim(*name) : std::string(kApplicationTitle);
}

std::filesystem::path CSetting::StorePath() const {
  if (SaveMode != 0)
    return (program_folder.empty() ? platform::ProgramFolder() : program_folder) / (name_ + ".ini");
  return (user_folder.empty() ? UserSettingsFolder() : user_folder) / (name_ + ".ini");
}

std::string CSetting::GetSettingStr(const std::string& section, const std::string& key,
                                    const std::string& default_value) const {
  auto value = platform::IniFile::Load(StorePath()).Get(section, key);
  if (!value) return default_value;
  std::string v = *value;
  auto nul = v.find('\0');
  if (nul != std::string::npos) v.resize(nul);
  return Trim(v);
}

int16_t CSetting::GetSettingInt(const std::string& section, const std::string& key,
                                int16_t default_value) const {
  if (SaveMode != 0)
    return static_cast<int16_t>(platform::ReadProfileInt(section, key, default_value, StorePath()));
  auto value = platform::IniFile::Load(StorePath()).Get(section, key);
  if (!value) return default_value;
  return NumericInt16(*value).value_or(default_value);
}

std::vector<std::pair<std::string, std::string>> CSetting::GetSettingAll(
    const std::string& section) const {
  return platform::IniFile::Load(StorePath()).Keys(section);
}

std::vector<std::string> CSetting::GetSectionNames() const {
  return platform::IniFile::Load(StorePath()).Sections();
}

void CSetting::SaveSettingStr(const std::string& section, const std::string& key,
                              const std::string& value) {
  std::filesystem::path path = StorePath();
  std::error_code ec;
  std::filesystem::create_directories(path.parent_path(), ec);
  // Settings only remember choices for the next start; this one goes on without them.
  (void)platform::WriteProfileString(section, key, value, path);
}

void CSetting::SaveSettingInt(const std::string& section, const std::string& key, int16_t value) {
  SaveSettingStr(section, key, std::to_string(value));
}

void CSetting::DeleteKey(const std::string& section, const std::string& key) {
  std::filesystem::path path = StorePath();
  std::optional<std::string_view> k;
  if (!key.empty()) k = key;
  std::error_code ec;
  bool had_file = std::filesystem::exists(path, ec);
  if (!had_file) return;  // nothing stored, nothing to delete
  bool ok = platform::WriteProfileString(section, k, std::nullopt, path);
  if (!ok && SaveMode != 0) {
    platform::Dialogs().Message("Error Deleting Key (check if file is protected)",
                                platform::mb::OKOnly, "CSetting.DeleteKey");
  }
}

CSetting& MainSettings() {
  static CSetting settings;
  return settings;
}

int16_t& UserMode() {
  static int16_t mode = 0;
  return mode;
}

void LoadSettings(CSetting& settings) {
  EnterProcedure("frmMain", "LoadSettings");
  settings.SaveMode = UserMode();
}

void SaveSettings(CSetting& settings) {
  EnterProcedure("frmMain", "SaveSettings");
  settings.SaveMode = UserMode();
  settings.SaveSettingInt("Settings", "UserMode", UserMode());
  settings.SaveSettingInt("Settings", "Product", UserMode());
}

}  // namespace tessaly::shell
