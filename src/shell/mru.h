#pragma once
// The recent-file list: section "Recent Files", keys "File1" to "File5", most recent first.
#include <array>
#include <string>

#include "shell/settings.h"

namespace tessaly::shell {

inline constexpr int kRecentFiles = 5;

// Puts `path` first; an earlier entry equal to it without regard to case is dropped, and
// the list keeps at most five entries.
void SaveRecent(CSetting& settings, const std::string& path);

// The captions of the menu's items 1 to 5: an empty caption means the item stays hidden.
std::array<std::string, kRecentFiles> LoadMenu(const CSetting& settings);

}  // namespace tessaly::shell
