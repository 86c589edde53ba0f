#include "platform/progress_wait.h"

#include <chrono>
#include <thread>

namespace tessaly::platform {

namespace {

class SilentWait : public ProgressWait {
 public:
  void Wait(WaitedWork& work) override {
    for (;;) {
      work.Poll();
      if (work.Finished()) return;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }
};

std::shared_ptr<ProgressWait>& Installed() {
  static std::shared_ptr<ProgressWait> wait = std::make_shared<SilentWait>();
  return wait;
}

}  // namespace

ProgressWait& ProgressWaiter() { return *Installed(); }

void SetProgressWait(std::shared_ptr<ProgressWait> wait) {
  Installed() = wait ? std::move(wait) : std::make_shared<SilentWait>();
}

}  // namespace tessaly::platform
