#include "rules/session.h"

namespace tessaly::rules {

RulesSession& Session() {
  static RulesSession session;
  return session;
}

}  // namespace tessaly::rules
