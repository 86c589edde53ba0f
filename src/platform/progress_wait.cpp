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

RunProgress::RunProgress(int dataset_count) { ProgressWaiter().RunBegins(dataset_count); }

RunProgress::~RunProgress() { End(); }

void RunProgress::End() {
  if (ended_) return;
  ended_ = true;
  ProgressWaiter().RunEnds();
}

}  // namespace tessaly::platform
