#pragma once
// The number of groups of a pooled cross-section (frmLoadGroupData): asked from the rules
// wizard of a pooling run; every group must have the same sample size.
#include <string>
#include <string_view>

namespace tessaly::pool {

inline constexpr int kMinGroups = 2;
inline constexpr int kMaxGroups = 2000;

struct GroupCountCheck {
  bool accepted = false;
  int groups = 0;
  std::string message;  // what the person is told, refused or accepted
  std::string title;
};

// The test of cmdYes: the range, then whether the observations divide evenly.
GroupCountCheck CheckGroupCount(std::string_view text, long observations);

}  // namespace tessaly::pool
