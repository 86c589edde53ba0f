#include "platform/paths.h"

#include "platform/working_folder.h"

#include <algorithm>
#include <iostream>
#include <system_error>
#include <unistd.h>

namespace tessaly::platform {

fs::path ProgramFolder() {
  // Chosen once: every part of the program and the engine must work in the same folder.
  static const fs::path folder = [] {
    WorkingFolderChoice choice = ChooseWorkingFolder(ExecutableFolder(), ProcessEnvironment());
    if (!choice.problem.empty()) std::cerr << "Tessaly: " << choice.problem << "\n";
    return choice.folder;
  }();
  return folder;
}

std::string ToUpper(std::string_view text) {
  std::string out(text);
  for (char& c : out) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return out;
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    char x = a[i], y = b[i];
    if (x >= 'a' && x <= 'z') x = static_cast<char>(x - 'a' + 'A');
    if (y >= 'a' && y <= 'z') y = static_cast<char>(y - 'a' + 'A');
    if (x != y) return false;
  }
  return true;
}

bool EndsWithNoCase(std::string_view text, std::string_view suffix) {
  return text.size() >= suffix.size() &&
         EqualsNoCase(text.substr(text.size() - suffix.size()), suffix);
}

std::optional<fs::path> FindNoCase(const fs::path& folder, std::string_view name) {
  std::error_code ec;
  fs::path exact = folder / std::string(name);
  if (fs::exists(exact, ec)) return exact;
  fs::directory_iterator it(folder, ec);
  if (ec) return std::nullopt;
  for (; it != fs::directory_iterator(); it.increment(ec)) {
    if (ec) break;
    if (EqualsNoCase(it->path().filename().string(), name)) return it->path();
  }
  return std::nullopt;
}

fs::path ResolveNoCase(const fs::path& folder, std::string_view name) {
  if (auto found = FindNoCase(folder, name)) return *found;
  return folder / std::string(name);
}

bool ExistsNoCase(const fs::path& folder, std::string_view name) {
  return FindNoCase(folder, name).has_value();
}

bool RemoveNoCase(const fs::path& folder, std::string_view name) {
  bool removed = false;
  // Remove every spelling: a folder may hold "ENGINE.GO" and "engine.go" side by side.
  std::error_code ec;
  fs::directory_iterator it(folder, ec);
  if (ec) return false;
  std::vector<fs::path> victims;
  for (; it != fs::directory_iterator(); it.increment(ec)) {
    if (ec) break;
    if (EqualsNoCase(it->path().filename().string(), name)) victims.push_back(it->path());
  }
  for (const auto& v : victims) removed |= fs::remove(v, ec);
  return removed;
}

std::vector<fs::path> FilesEndingNoCase(const fs::path& folder, std::string_view suffix) {
  std::vector<fs::path> out;
  std::error_code ec;
  fs::directory_iterator it(folder, ec);
  if (ec) return out;
  for (; it != fs::directory_iterator(); it.increment(ec)) {
    if (ec) break;
    if (it->is_regular_file(ec) && EndsWithNoCase(it->path().filename().string(), suffix))
      out.push_back(it->path());
  }
  std::sort(out.begin(), out.end());
  return out;
}

fs::path EnsureSubfolder(const fs::path& parent, std::string_view name) {
  if (auto found = FindNoCase(parent, name)) {
    std::error_code ec;
    if (fs::is_directory(*found, ec)) return *found;
  }
  fs::path made = parent / std::string(name);
  std::error_code ec;
  fs::create_directories(made, ec);
  return made;
}

std::string WithTrailingSlash(std::string folder) {
  if (folder.empty() || folder.back() != '/') folder.push_back('/');
  return folder;
}

bool CopyFileOver(const fs::path& from, const fs::path& to) {
  // Copied beside the target first and renamed over it: a copy cut short by a full disk
  // leaves the target as it was.
  std::error_code ec;
  fs::path temp = to.parent_path() / ("." + to.filename().string() + ".copy-" + std::to_string(::getpid()));
  fs::copy_file(from, temp, fs::copy_options::overwrite_existing, ec);
  if (!ec) fs::rename(temp, to, ec);
  if (ec) {
    std::error_code ignored;
    fs::remove(temp, ignored);
  }
  return !ec;
}

}  // namespace tessaly::platform
