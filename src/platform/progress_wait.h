#pragma once
// How the logic waits for the engine. The logic hands the wait a piece of work to watch;
// the desktop shows its modal progress form, an unattended run reports on standard error,
// tests drive the work themselves. Every wait returns only when the work has finished.
#include <memory>
#include <string>

namespace tessaly::platform {

// One engine run, as a wait sees it.
class WaitedWork {
 public:
  virtual ~WaitedWork() = default;
  // Lets the work notice that it has ended (the engine's ready event comes from here).
  // Cheap; a wait calls it often.
  virtual void Poll() = 0;
  // True once the engine has reported that it is ready.
  virtual bool Finished() const = 0;
  // The person asked to stop. The wait keeps waiting: the work ends itself soon after.
  virtual void Cancel() = 0;
  virtual bool CancelRequested() const = 0;
  // The label of the engine's present stage (" Model Estimation ", "Processing ").
  virtual std::string StageText() const = 0;
  // Which series this is: k of n and its name (0 of 0 and empty when unknown).
  virtual int SeriesNumber() const = 0;
  virtual int SeriesCount() const = 0;
  virtual std::string SeriesName() const = 0;
};

class ProgressWait {
 public:
  virtual ~ProgressWait() = default;
  // Returns when work.Finished() is true.
  virtual void Wait(WaitedWork& work) = 0;
  // Lets pending events run once (the desktop's event loop; nothing elsewhere).
  virtual void LetEventsRun() {}
};

// The process-wide wait. Until one is installed, a plain wait that polls the work quickly
// and shows nothing.
ProgressWait& ProgressWaiter();
void SetProgressWait(std::shared_ptr<ProgressWait> wait);

}  // namespace tessaly::platform
