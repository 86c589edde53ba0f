#include "batch/engine/engine_wait.h"

#include "batch/engine/engine_client.h"
#include "batch/engine/progress_logic.h"
#include "platform/paths.h"
#include "platform/textfile.h"

namespace tessaly::batch {

bool WriteKillRequest(const fs::path& folder) {
  return platform::WriteAllLines(platform::ResolveNoCase(folder, kKillFile), {kKillFileLine});
}

EngineWait::EngineWait(EngineClient& client, fs::path work_folder, EngineCallContext context,
                       std::function<void()> kill_engines, std::chrono::milliseconds grace)
    : client_(client),
      work_folder_(std::move(work_folder)),
      context_(std::move(context)),
      kill_engines_(std::move(kill_engines)),
      grace_(grace) {}

void EngineWait::Poll() {
  if (client_.Poll()) return;
  if (limit_.count() > 0 && !timed_out_ && !cancel_requested_ && Clock::now() - start_ >= limit_) {
    timed_out_ = true;
    client_.KillForTimeLimit(static_cast<int>(limit_.count()));
    client_.Poll();
    return;
  }
  if (cancel_requested_ && !killed_ && Clock::now() - cancel_time_ >= grace_) {
    killed_ = true;
    if (kill_engines_) kill_engines_();
    // Our own process may be outside what the system-wide kill reaches.
    client_.Kill();
    client_.Poll();
  }
}

bool EngineWait::Finished() const { return context_.session ? context_.session->finished : !client_.Running(); }

void EngineWait::Cancel() {
  if (cancel_requested_) return;
  // An engine that has already answered has nothing to stop: the run ends as a cancel does.
  // One that never sees the request is killed when the grace period is over.
  if (!Finished()) (void)WriteKillRequest(work_folder_);
  if (context_.session) context_.session->canceled = true;
  cancel_requested_ = true;
  cancel_time_ = Clock::now();
}

std::string EngineWait::StageText() const { return StageLabel(work_folder_); }

}  // namespace tessaly::batch
