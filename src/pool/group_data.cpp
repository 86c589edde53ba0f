#include "pool/group_data.h"

#include <cmath>

#include "platform/numfmt.h"
#include "pool/pool_texts.h"

namespace tessaly::pool {

GroupCountCheck CheckGroupCount(std::string_view text, long observations) {
  GroupCountCheck c;
  double value = platform::Val(text);
  if (value < kMinGroups || value > kMaxGroups) {
    c.message = texts::kGroupRange;
    c.title = "Range Input Error";
    return c;
  }
  c.groups = static_cast<int>(std::lround(value));
  if (value != c.groups || observations % c.groups != 0) {
    c.message = std::string(texts::kGroupDivide1) + std::to_string(observations) + texts::kGroupDivide2 +
                platform::NumberToText(value) + "." + "\r\n" + texts::kGroupDivide3;
    c.title = "Input Error";
    return c;
  }
  c.accepted = true;
  c.message = std::string(texts::kGroupAccepted1) + "\r\n" + texts::kGroupAccepted2;
  c.title = texts::kFyi;
  return c;
}

}  // namespace tessaly::pool
