#pragma once
// Our reader and writer of the sections-and-keys initialisation format:
//   [Section]
//   Key=Value
// Section and key names compare without regard to case; blanks around names and values
// are dropped; lines starting with ';' and any other lines are kept as they stand when the
// file is written back. Written files end their lines with CR LF.
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tessaly::platform {

class IniFile {
 public:
  // Reads a file; a missing or unreadable file gives an empty document.
  static IniFile Load(const std::filesystem::path& path);
  static IniFile Parse(std::string_view text);

  std::optional<std::string> Get(std::string_view section, std::string_view key) const;
  // Sets a key, making the section (at the end) and the key (at the section's end) when new.
  void Set(std::string_view section, std::string_view key, std::string_view value);
  // True when something was removed.
  bool DeleteKey(std::string_view section, std::string_view key);
  bool DeleteSection(std::string_view section);

  std::vector<std::string> Sections() const;
  // The section's keys with their values, in file order; empty when the section is missing.
  std::vector<std::pair<std::string, std::string>> Keys(std::string_view section) const;

  std::string ToString() const;
  [[nodiscard]] bool Save(const std::filesystem::path& path) const;

 private:
  struct Line {
    bool is_pair = false;
    std::string key;    // when is_pair
    std::string value;  // when is_pair
    std::string raw;    // otherwise
  };
  struct Section {
    std::string name;  // empty for the lines before the first section
    std::vector<Line> lines;
    bool added = false;  // made by Set, not read from the file
  };
  Section* Find(std::string_view name);
  const Section* Find(std::string_view name) const;
  std::vector<Section> sections_{Section{}};
};

// The private-profile calls: one file read or write per call.
// Missing key or section: the default. Quotes around a whole value are removed.
std::string ReadProfileString(std::string_view section, std::string_view key,
                              std::string_view default_value,
                              const std::filesystem::path& path);
// The leading integer of the value (optional sign, then digits); 0 when the value has
// none; the default when the key is missing; digits beyond a long's range give its largest
// value (negated under a minus sign).
long ReadProfileInt(std::string_view section, std::string_view key, long default_value,
                    const std::filesystem::path& path);
// No key: deletes the section. No value: deletes the key. False when the file cannot be written.
[[nodiscard]] bool WriteProfileString(std::string_view section, std::optional<std::string_view> key,
                        std::optional<std::string_view> value,
                        const std::filesystem::path& path);

}  // namespace tessaly::platform
