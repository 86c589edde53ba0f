#include "platform/inifile.h"

#include <cctype>
#include <cstdlib>
#include <limits>

#include "platform/paths.h"
#include "platform/text.h"
#include "platform/textfile.h"

namespace tessaly::platform {

namespace {
// A key, a value or a section name: blanks, tabs and a CR left by a CR LF line end go.
std::string TrimIni(std::string_view s) { return platform::Trim(s, " \t\r"); }
}  // namespace

IniFile IniFile::Parse(std::string_view text) {
  IniFile ini;
  size_t pos = 0;
  while (pos <= text.size()) {
    size_t nl = text.find('\n', pos);
    std::string_view line =
        text.substr(pos, nl == std::string_view::npos ? std::string_view::npos : nl - pos);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    bool last = nl == std::string_view::npos;
    if (last && line.empty()) break;

    std::string t = TrimIni(line);
    if (t.size() >= 2 && t.front() == '[' && t.find(']') != std::string::npos) {
      ini.sections_.push_back({TrimIni(t.substr(1, t.find(']') - 1)), {}});
    } else if (!t.empty() && t.front() != ';' && t.find('=') != std::string::npos) {
      size_t eq = t.find('=');
      ini.sections_.back().lines.push_back({true, TrimIni(t.substr(0, eq)), TrimIni(t.substr(eq + 1)), {}});
    } else {
      ini.sections_.back().lines.push_back({false, {}, {}, std::string(line)});
    }
    if (last) break;
    pos = nl + 1;
  }
  return ini;
}

IniFile IniFile::Load(const std::filesystem::path& path) {
  auto bytes = ReadWholeFile(path);
  return bytes ? Parse(*bytes) : IniFile();
}

IniFile::Section* IniFile::Find(std::string_view name) {
  for (size_t i = 1; i < sections_.size(); ++i)
    if (EqualsNoCase(sections_[i].name, TrimIni(name))) return &sections_[i];
  return nullptr;
}

const IniFile::Section* IniFile::Find(std::string_view name) const {
  return const_cast<IniFile*>(this)->Find(name);
}

std::optional<std::string> IniFile::Get(std::string_view section, std::string_view key) const {
  const Section* s = Find(section);
  if (!s) return std::nullopt;
  std::string k = TrimIni(key);
  for (const Line& l : s->lines)
    if (l.is_pair && EqualsNoCase(l.key, k)) return l.value;
  return std::nullopt;
}

void IniFile::Set(std::string_view section, std::string_view key, std::string_view value) {
  Section* s = Find(section);
  if (!s) {
    sections_.push_back({TrimIni(section), {}, true});
    s = &sections_.back();
  }
  std::string k = TrimIni(key);
  for (Line& l : s->lines) {
    if (l.is_pair && EqualsNoCase(l.key, k)) {
      l.value = TrimIni(value);
      return;
    }
  }
  // New keys go after the section's last key, before any trailing blank lines.
  auto at = s->lines.end();
  while (at != s->lines.begin() && !(at - 1)->is_pair && TrimIni((at - 1)->raw).empty()) --at;
  s->lines.insert(at, {true, k, TrimIni(value), {}});
}

bool IniFile::DeleteKey(std::string_view section, std::string_view key) {
  Section* s = Find(section);
  if (!s) return false;
  std::string k = TrimIni(key);
  for (auto it = s->lines.begin(); it != s->lines.end(); ++it) {
    if (it->is_pair && EqualsNoCase(it->key, k)) {
      s->lines.erase(it);
      return true;
    }
  }
  return false;
}

bool IniFile::DeleteSection(std::string_view section) {
  for (size_t i = 1; i < sections_.size(); ++i) {
    if (EqualsNoCase(sections_[i].name, TrimIni(section))) {
      sections_.erase(sections_.begin() + static_cast<long>(i));
      return true;
    }
  }
  return false;
}

std::vector<std::string> IniFile::Sections() const {
  std::vector<std::string> out;
  for (size_t i = 1; i < sections_.size(); ++i) out.push_back(sections_[i].name);
  return out;
}

std::vector<std::pair<std::string, std::string>> IniFile::Keys(std::string_view section) const {
  std::vector<std::pair<std::string, std::string>> out;
  if (const Section* s = Find(section))
    for (const Line& l : s->lines)
      if (l.is_pair) out.emplace_back(l.key, l.value);
  return out;
}

std::string IniFile::ToString() const {
  std::string out;
  for (size_t i = 0; i < sections_.size(); ++i) {
    const Section& s = sections_[i];
    if (i > 0) {
      // A new section is set off from what stands before it by a blank line.
      if (s.added && out.size() >= 2 &&
          (out.size() < 4 || out.compare(out.size() - 4, 4, "\r\n\r\n") != 0))
        out += "\r\n";
      out += "[" + s.name + "]\r\n";
    }
    for (const Line& l : s.lines) out += (l.is_pair ? l.key + "=" + l.value : l.raw) + "\r\n";
  }
  return out;
}

bool IniFile::Save(const std::filesystem::path& path) const {
  return WriteWholeFile(path, ToString());
}

std::string ReadProfileString(std::string_view section, std::string_view key,
                              std::string_view default_value,
                              const std::filesystem::path& path) {
  auto v = IniFile::Load(path).Get(section, key);
  if (!v) return std::string(default_value);
  std::string s = *v;
  if (s.size() >= 2 && (s.front() == '"' || s.front() == '\'') && s.back() == s.front())
    s = s.substr(1, s.size() - 2);
  return s;
}

long ReadProfileInt(std::string_view section, std::string_view key, long default_value,
                    const std::filesystem::path& path) {
  auto v = IniFile::Load(path).Get(section, key);
  if (!v) return default_value;
  const std::string& s = *v;
  size_t i = 0;
  bool negative = false;
  if (i < s.size() && (s[i] == '-' || s[i] == '+')) negative = s[i++] == '-';
  // A value longer than a long holds stops at the largest one rather than wrapping.
  long value = 0;
  for (; i < s.size() && std::isdigit(static_cast<unsigned char>(s[i])); ++i) {
    const int digit = s[i] - '0';
    value = value > (std::numeric_limits<long>::max() - digit) / 10
                ? std::numeric_limits<long>::max()
                : value * 10 + digit;
  }
  return negative ? -value : value;
}

bool WriteProfileString(std::string_view section, std::optional<std::string_view> key,
                        std::optional<std::string_view> value,
                        const std::filesystem::path& path) {
  IniFile ini = IniFile::Load(path);
  if (!key) {
    ini.DeleteSection(section);
  } else if (!value) {
    ini.DeleteKey(section, *key);
  } else {
    ini.Set(section, *key, *value);
  }
  return ini.Save(path);
}

}  // namespace tessaly::platform
