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

// The parts of one dataset's turn in a run after it has been read and checked.
enum class RunStage { Engine, Reports, Graphs, Filing };

class ProgressWait {
 public:
  virtual ~ProgressWait() = default;
  // Returns when work.Finished() is true.
  virtual void Wait(WaitedWork& work) = 0;
  // Lets pending events run once (the desktop's event loop; nothing elsewhere).
  virtual void LetEventsRun() {}

  // Where a project's run stands, told by the run loop, so that a wait can show the whole
  // run and not only the engine's part of it (the desktop's window stays up from the first
  // dataset to the last). A wait that shows only the engine ignores them.
  virtual void RunBegins(int dataset_count) {}
  virtual void DatasetBegins(int number, int count, const std::string& name) {}
  // A stage of the dataset in hand; Filing after the last dataset is the run's own closing.
  virtual void StageBegins(RunStage stage) {}
  virtual void DatasetEnds() {}
  virtual void RunEnds() {}
  // True once the person asked the run to stop outside the engine's turn: the run ends after
  // the dataset in hand, which keeps everything it filed.
  virtual bool StopRequested() const { return false; }
};

// A project's run as the installed wait sees it: begun here, ended by End() or, should the
// run leave early, when this goes out of scope.
class RunProgress {
 public:
  explicit RunProgress(int dataset_count);
  ~RunProgress();
  RunProgress(const RunProgress&) = delete;
  RunProgress& operator=(const RunProgress&) = delete;
  void End();

 private:
  bool ended_ = false;
};

// The process-wide wait. Until one is installed, a plain wait that polls the work quickly
// and shows nothing.
ProgressWait& ProgressWaiter();
void SetProgressWait(std::shared_ptr<ProgressWait> wait);

}  // namespace tessaly::platform
