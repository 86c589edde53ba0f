#pragma once
// What the wizard's source files share with each other and nobody else needs.
#include <initializer_list>

namespace tessaly::rules::wizard_detail {

// Whether an option group's index is one of `set`.
inline bool Is(int index, std::initializer_list<int> set) {
  for (int i : set)
    if (i == index) return true;
  return false;
}

}  // namespace tessaly::rules::wizard_detail
