#pragma once
// frmProgress: the modal "Tessaly Progress" dialog that stands while the engine works. It only
// binds ProgressFormState (bar, stage label, times) to widgets; the engine is polled through
// the WaitedWork it is handed.
#include <QDialog>

#include "batch/engine/progress_logic.h"
#include "platform/progress_wait.h"

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

  platform::WaitedWork* engine_ = nullptr;
  ProgressFormState state_;
  QTimer* poll_timer_ = nullptr;
  bool loaded_ = false;
  bool pointer_overridden_ = false;
  int close_ms_ = kProgressCloseMs;
};

// The desktop's wait: shows frmProgress modally for each engine run.
class DesktopProgressWait : public platform::ProgressWait {
 public:
  explicit DesktopProgressWait(QWidget* parent = nullptr) : parent_(parent) {}
  void Wait(platform::WaitedWork& work) override;
  void LetEventsRun() override;

 private:
  QWidget* parent_;
};

}  // namespace tessaly::batch
