// The settings file (<title>.ini, in the program's folder or the user's): parsed, each key
// read as the program reads its settings and recent files, in both storage modes, and the
// text written back parsed again to the same sections.
#include <cstdlib>

#include "fuzz_support.h"
#include "platform/inifile.h"
#include "shell/mru.h"
#include "shell/settings.h"

using namespace tessaly;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const fuzz::fs::path& dir = fuzz::Scratch();
  shell::CSetting settings;
  settings.Init(std::string("Fuzz"));
  settings.program_folder = dir;
  settings.user_folder = dir;
  fuzz::WriteInput(settings.StorePath(), data, size);

  platform::IniFile ini = platform::IniFile::Parse(fuzz::AsText(data, size));
  for (const std::string& section : ini.Sections())
    for (const auto& [key, value] : ini.Keys(section)) {
      (void)ini.Get(section, key);
      (void)platform::ReadProfileInt(section, key, 0, settings.StorePath());
    }
  platform::IniFile again = platform::IniFile::Parse(ini.ToString());
  if (again.Sections() != ini.Sections()) __builtin_trap();

  for (int16_t mode : {int16_t{0}, int16_t{1}}) {
    settings.SaveMode = mode;
    (void)settings.GetSettingStr("Settings", "UserMode", "");
    (void)settings.GetSettingInt("Settings", "UserMode", 0);
    (void)settings.GetSectionNames();
    (void)shell::LoadMenu(settings);
  }
  return 0;
}
