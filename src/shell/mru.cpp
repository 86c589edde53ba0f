#include "shell/mru.h"

#include <vector>

#include "platform/paths.h"
#include "shell/error_context.h"

namespace tessaly::shell {

namespace {
constexpr const char* kSection = "Recent Files";
std::string Key(int i) { return "File" + std::to_string(i); }
}  // namespace

void SaveRecent(CSetting& settings, const std::string& path) {
  EnterProcedure("mru", "SaveRecent");
  std::vector<std::string> list{path};
  std::string upper = platform::ToUpper(path);
  for (int i = 1; i <= kRecentFiles; ++i) {
    std::string value = settings.GetSettingStr(kSection, Key(i), "");
    if (!value.empty() && platform::ToUpper(value) != upper) list.push_back(value);
  }
  for (int i = 1; i <= kRecentFiles; ++i) settings.DeleteKey(kSection, Key(i));
  for (size_t i = 0; i < list.size() && i < kRecentFiles; ++i)
    settings.SaveSettingStr(kSection, Key(static_cast<int>(i) + 1), list[i]);
}

std::array<std::string, kRecentFiles> LoadMenu(const CSetting& settings) {
  EnterProcedure("mru", "LoadMenu");
  std::array<std::string, kRecentFiles> captions;
  for (int i = 1; i <= kRecentFiles; ++i) captions[i - 1] = settings.GetSettingStr(kSection, Key(i), "");
  return captions;
}

}  // namespace tessaly::shell
