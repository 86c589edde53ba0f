#pragma once
// CSetting: the program's keys and recent-file list. A non-zero SaveMode keeps them in
// <program folder>/<name>.ini; mode 0 keeps them in the per-user store, an INI file of the
// same format at $XDG_CONFIG_HOME/tessaly/<name>.ini (default ~/.config/tessaly/).
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tessaly::shell {

class CSetting {
 public:
  CSetting();

  // Name: the application's title when none is given, else the name trimmed.
  void Init(const std::optional<std::string>& name = std::nullopt);

  std::string GetSettingStr(const std::string& section, const std::string& key,
                            const std::string& default_value) const;
  int16_t GetSettingInt(const std::string& section, const std::string& key,
                        int16_t default_value) const;
  std::vector<std::pair<std::string, std::string>> GetSettingAll(const std::string& section) const;
  std::vector<std::string> GetSectionNames() const;
  void SaveSettingStr(const std::string& section, const std::string& key, const std::string& value);
  void SaveSettingInt(const std::string& section, const std::string& key, int16_t value);
  // An empty key deletes the whole section.
  void DeleteKey(const std::string& section, const std::string& key);

  int16_t SaveMode = 0;

  const std::string& Name() const { return name_; }
  // The file the present mode reads and writes.
  std::filesystem::path StorePath() const;
  // Overrides for tests; empty means the program's folder / the per-user folder.
  std::filesystem::path program_folder;
  std::filesystem::path user_folder;

 private:
  std::string name_;
};

// The per-user settings folder: $XDG_CONFIG_HOME/tessaly, or ~/.config/tessaly.
std::filesystem::path UserSettingsFolder();

// The main form's settings object and the process-wide mode value it is given.
CSetting& MainSettings();
int16_t& UserMode();

// The main form's LoadSettings and SaveSettings.
void LoadSettings(CSetting& settings);
void SaveSettings(CSetting& settings);

}  // namespace tessaly::shell
