#include "batch/engine/unattended_wait.h"

#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <thread>

#include "batch/engine/engine_wait.h"
#include "batch/engine/progress_logic.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/process.h"

namespace tessaly::batch {

namespace {

volatile sig_atomic_t g_interrupted = 0;

void OnInterrupt(int) { g_interrupted = 1; }

}  // namespace

void UnattendedProgressWait::CatchInterrupts() {
  struct sigaction action {};
  action.sa_handler = OnInterrupt;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

bool UnattendedProgressWait::Interrupted() { return g_interrupted != 0; }

// A line rewritten in place needs a terminal of its own: the jobs of a parallel run share
// their parent's, so each of them prints whole lines.
UnattendedProgressWait::UnattendedProgressWait()
    : UnattendedProgressWait(std::cerr, ::isatty(STDERR_FILENO) == 1 && !std::getenv(platform::kJobsParentVariable)) {}

UnattendedProgressWait::UnattendedProgressWait(std::ostream& out, bool in_place,
                                               std::chrono::milliseconds poll)
    : out_(out), in_place_(in_place), poll_(poll) {}

std::string UnattendedProgressWait::ProgressLine(const platform::WaitedWork& work,
                                                 const std::string& stage,
                                                 double elapsed_seconds) {
  std::string line;
  if (work.SeriesCount() > 0) {
    line = "Series " + std::to_string(work.SeriesNumber()) + " of " +
           std::to_string(work.SeriesCount());
    if (!work.SeriesName().empty()) line += ": " + work.SeriesName();
  } else {
    line = work.SeriesName().empty() ? "Engine" : work.SeriesName();
  }
  std::string shown = platform::Trim(stage);
  if (!shown.empty()) line += " - " + shown;
  line += " - " + FormatHhMmSs(elapsed_seconds / 86400.0);
  return line;
}

void UnattendedProgressWait::Wait(platform::WaitedWork& work) {
  using Clock = std::chrono::steady_clock;
  const auto start = Clock::now();
  auto elapsed = [&] { return std::chrono::duration<double>(Clock::now() - start).count(); };
  std::string last_shown;
  auto last_check = start - std::chrono::seconds(1);
  auto last_file_check = start;
  Clock::duration next_note = first_note_;
  for (;;) {
    // An interrupt is looked at before the engine: the terminal's Ctrl-C reaches the engine
    // too, and its death then is the cancel's, not a failure of the dataset.
    if (!work.CancelRequested() && Interrupted()) work.Cancel();
    work.Poll();
    if (work.Finished()) break;
    if (!work.CancelRequested()) {
      if (!cancel_folder_.empty() && Clock::now() - last_file_check >= std::chrono::milliseconds(200)) {
        last_file_check = Clock::now();
        if (platform::ExistsNoCase(cancel_folder_, kKillFile)) work.Cancel();
      }
    }
    // The stage files are looked at a few times a second, not at every poll.
    if (in_place_ && Clock::now() - last_check >= std::chrono::milliseconds(200)) {
      last_check = Clock::now();
      std::string line = prefix_ + ProgressLine(work, work.StageText(), elapsed());
      if (line != last_shown) {
        out_ << '\r' << line << "\x1b[K" << std::flush;
        last_shown = line;
      }
    }
    // Off a terminal a series that takes long still shows it is alive: a whole line with
    // its stage after the first stretch and then every so often.
    if (!in_place_ && Clock::now() - start >= next_note) {
      next_note += note_every_;
      out_ << prefix_ + ProgressLine(work, work.StageText(), elapsed()) + "\n" << std::flush;
    }
    std::this_thread::sleep_for(poll_);
  }
  std::string end = work.CancelRequested() ? "Canceled" : "Finished";
  std::string line = prefix_ + ProgressLine(work, end, elapsed());
  // One write for the whole line, so that the lines of jobs at once never mix.
  out_ << (in_place_ ? "\r" + line + "\x1b[K\n" : line + "\n") << std::flush;
}

}  // namespace tessaly::batch
