#pragma once
// frmProgress: the modal "Tessaly Progress" dialog that stands while the engine works. It only
// binds ProgressFormState (bar, stage label, times) to widgets; the engine is polled through
// the WaitedWork it is handed. For a project's run the same window stays up from the first
// dataset to the last (RunProgressState): the project, the dataset in hand and its stage,
// through its reports and graphs too, with Cancel until the end.
#include <QDialog>

#include <memory>
#include <string>

#include "batch/engine/progress_logic.h"
#include "platform/progress_wait.h"

class QEventLoop;
class QLabel;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QTimer;

namespace tessaly::batch {

class frmProgress : public QDialog {
  Q_OBJECT

 public:
  explicit frmProgress(QWidget* parent = nullptr);
  ~frmProgress() override;

  // The engine run watched (frmProgress.Engine); set before the form is shown.
  void SetEngine(platform::WaitedWork* work) { engine_ = work; }
  // A value the caller may store on the form; nothing reads it.
  int Complete = 0;

  // The widgets, by the names the form gives them.
  QPushButton* btnCancel = nullptr;
  QPushButton* btnOK = nullptr;
  QLabel* lblProgress = nullptr;
  // Which series of the run the engine has in hand ("Series 1 of 4: AIRLINE").
  QLabel* lblSeries = nullptr;
  QLabel* lblTime = nullptr;
  QProgressBar* ProgressBar1 = nullptr;
  // The whole project: the datasets done before this one, of all; shown when there are several.
  QProgressBar* ProjectBar = nullptr;
  // The dataset in hand: the engine's four stages, then its reports and graphs.
  QProgressBar* SeriesBar = nullptr;
  QPlainTextEdit* txtComplete = nullptr;
  QTimer* Timer1 = nullptr;

  // Shortens the waits for tests; the form keeps 1000 ms and 3000 ms otherwise.
  void SetTimings(int tick_ms, int close_ms, int poll_ms);

  // The window of a whole run, shown from BeginRun to EndRun.
  void BeginRun(int dataset_count);
  void BeginDataset(int number, int count, const std::string& name);
  void BeginStage(platform::RunStage stage);
  void EndDataset();
  // Watches one engine run of the run; returns once the engine has finished, events running.
  void WaitForEngine(platform::WaitedWork& work);
  // EXECUTION COMPLETED with the run's elapsed time, the pause unless the run was canceled,
  // and the window closes.
  void EndRun();
  bool StopRequested() const { return run_.stop_requested(); }
  const RunProgressState& Run() const { return run_; }

 protected:
  void showEvent(QShowEvent* event) override;
  void reject() override;
  void done(int result) override;

 private:
  void FormLoad();
  void Timer1Tick();
  void btnCancelClick();
  void RestorePointer();
  void ShowSeriesStage(const std::string& stage_label, bool engine_finished);
  void RunTick();
  void RunPoll();
  void ShowRun();

  platform::WaitedWork* engine_ = nullptr;
  ProgressFormState state_;
  QTimer* poll_timer_ = nullptr;
  bool loaded_ = false;
  bool pointer_overridden_ = false;
  int close_ms_ = kProgressCloseMs;
  RunProgressState run_;
  bool in_run_ = false;
  bool engine_canceled_ = false;  // an engine of this run was asked to stop
  QEventLoop* engine_loop_ = nullptr;
};

// The desktop's wait: shows frmProgress modally for each engine run.
class DesktopProgressWait : public platform::ProgressWait {
 public:
  explicit DesktopProgressWait(QWidget* parent = nullptr) : parent_(parent) {}
  void Wait(platform::WaitedWork& work) override;
  void LetEventsRun() override;
  // A project's run keeps one window up from its first dataset to its last.
  void RunBegins(int dataset_count) override;
  void DatasetBegins(int number, int count, const std::string& name) override;
  void StageBegins(platform::RunStage stage) override;
  void DatasetEnds() override;
  void RunEnds() override;
  bool StopRequested() const override;
  // The window of the run under way; null outside a run.
  frmProgress* RunWindow() const { return run_form_.get(); }
  // Shortens the waits for tests (see frmProgress::SetTimings).
  void SetTimings(int tick_ms, int close_ms, int poll_ms) { timings_ = {tick_ms, close_ms, poll_ms}; }

 private:
  QWidget* parent_;
  std::unique_ptr<frmProgress> run_form_;
  struct Timings {
    int tick_ms, close_ms, poll_ms;
  } timings_{kProgressTickMs, kProgressCloseMs, 100};
};

}  // namespace tessaly::batch
