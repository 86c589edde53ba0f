#include "batch/forms/frm_progress.h"

#include <QApplication>

#include <algorithm>
#include <QEventLoop>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include "batch/engine/engine_client.h"

namespace tessaly::batch {

frmProgress::frmProgress(QWidget* parent) : QDialog(parent) {
  setWindowTitle(kProgressCaption);
  setModal(true);
  setObjectName("frmProgress");

  lblSeries = new QLabel(this);
  lblSeries->setObjectName("lblSeries");
  QFont bold = lblSeries->font();
  bold.setBold(true);
  lblSeries->setFont(bold);
  lblProgress = new QLabel(kProgressStarting, this);
  lblProgress->setObjectName("lblProgress");
  ProgressBar1 = new QProgressBar(this);
  ProgressBar1->setObjectName("ProgressBar1");
  ProgressBar1->setRange(0, 100);
  ProgressBar1->setTextVisible(false);
  ProjectBar = new QProgressBar(this);
  ProjectBar->setObjectName("ProjectBar");
  ProjectBar->setVisible(false);
  SeriesBar = new QProgressBar(this);
  SeriesBar->setObjectName("SeriesBar");
  SeriesBar->setRange(0, 5);
  SeriesBar->setValue(0);
  txtComplete = new QPlainTextEdit(this);
  txtComplete->setObjectName("txtComplete");
  txtComplete->setReadOnly(true);
  txtComplete->setPlainText("EXECUTION\nCOMPLETED");
  txtComplete->setMaximumHeight(60);
  lblTime = new QLabel(this);
  lblTime->setObjectName("lblTime");
  btnCancel = new QPushButton("Cancel", this);
  btnCancel->setObjectName("btnCancel");
  btnOK = new QPushButton("OK", this);
  btnOK->setObjectName("btnOK");

  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(btnCancel);
  buttons->addWidget(btnOK);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(ProjectBar);
  layout->addWidget(SeriesBar);
  layout->addWidget(lblSeries);
  layout->addWidget(lblProgress);
  layout->addWidget(ProgressBar1);
  layout->addWidget(txtComplete);
  layout->addWidget(lblTime);
  layout->addLayout(buttons);
  setMinimumWidth(360);

  Timer1 = new QTimer(this);
  Timer1->setInterval(kProgressTickMs);
  Timer1->setTimerType(Qt::PreciseTimer);
  connect(Timer1, &QTimer::timeout, this, &frmProgress::Timer1Tick);
  // The engine's ready event is noticed between ticks; the tick still decides when to finish.
  poll_timer_ = new QTimer(this);
  poll_timer_->setInterval(100);
  connect(poll_timer_, &QTimer::timeout, this, [this] {
    if (in_run_) return RunPoll();
    if (!engine_) return;
    engine_->Poll();
    // The stage shows as soon as the engine enters it, between the ticks too.
    if (!state_.finished()) ShowSeriesStage(engine_->StageText(), false);
  });
  connect(btnCancel, &QPushButton::clicked, this, &frmProgress::btnCancelClick);
  connect(btnOK, &QPushButton::clicked, this, &QDialog::accept);
}

frmProgress::~frmProgress() { RestorePointer(); }

void frmProgress::SetTimings(int tick_ms, int close_ms, int poll_ms) {
  Timer1->setInterval(tick_ms);
  close_ms_ = close_ms;
  poll_timer_->setInterval(poll_ms);
}

void frmProgress::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (!loaded_) {
    loaded_ = true;
    FormLoad();
  }
}

void frmProgress::FormLoad() {
  btnCancel->setVisible(true);
  btnCancel->setEnabled(true);
  lblProgress->setVisible(true);
  lblProgress->setEnabled(true);
  ProgressBar1->setVisible(true);
  ProgressBar1->setEnabled(true);
  btnOK->setVisible(false);
  txtComplete->setVisible(false);
  state_.Load(TimeOfDayNow());
  if (engine_ && engine_->SeriesCount() > 0)
    lblSeries->setText(QString("Series %1 of %2: %3")
                           .arg(engine_->SeriesNumber())
                           .arg(engine_->SeriesCount())
                           .arg(QString::fromStdString(engine_->SeriesName())));
  lblSeries->setVisible(!lblSeries->text().isEmpty());
  // Where the whole project stands: the datasets before this one are done.
  if (engine_ && engine_->SeriesCount() > 1) {
    ProjectBar->setRange(0, engine_->SeriesCount());
    ProjectBar->setValue(std::clamp(engine_->SeriesNumber() - 1, 0, engine_->SeriesCount()));
    ProjectBar->setFormat(QString("Project: %1 of %2 datasets done").arg(ProjectBar->value()).arg(engine_->SeriesCount()));
    ProjectBar->setVisible(true);
  }
  lblProgress->setText(QString::fromStdString(state_.label()));
  lblTime->setText(QString::fromStdString(state_.time_text()));
  ShowSeriesStage(state_.label(), false);
  QApplication::setOverrideCursor(Qt::WaitCursor);
  pointer_overridden_ = true;
  ProgressBar1->setValue(state_.bar());
  Timer1->start();
  poll_timer_->start();
}

void frmProgress::Timer1Tick() {
  if (in_run_) return RunTick();
  if (!engine_) return;
  engine_->Poll();
  bool finished = state_.Tick(engine_->Finished(), TimeOfDayNow(), RandomBarStep,
                              engine_->StageText());
  ProgressBar1->setValue(state_.bar());
  lblProgress->setText(QString::fromStdString(state_.label()));
  ShowSeriesStage(state_.label(), finished);
  if (!finished) return;
  Timer1->stop();
  poll_timer_->stop();
  // Cancel stays until the window closes: after the engine it stops the run before this
  // dataset's reports and graphs.
  btnCancel->setVisible(!engine_->CancelRequested());
  lblProgress->setVisible(false);
  ProgressBar1->setVisible(false);
  txtComplete->setVisible(true);
  if (ProjectBar->isVisible() && !engine_->CancelRequested()) {
    ProjectBar->setValue(std::min(engine_->SeriesNumber(), engine_->SeriesCount()));
    ProjectBar->setFormat(QString("Project: %1 of %2 datasets done").arg(ProjectBar->value()).arg(engine_->SeriesCount()));
  }
  lblTime->setText(QString::fromStdString(state_.time_text()));
  RestorePointer();
  // The pause lets events run; the form then unloads itself.
  QTimer::singleShot(close_ms_, Qt::PreciseTimer, this, &QDialog::accept);
}

void frmProgress::btnCancelClick() {
  btnCancel->setEnabled(false);
  if (in_run_) {
    // In the engine's turn the engine is asked to stop; outside it the run ends after the
    // dataset in hand.
    if (engine_ && !engine_->Finished())
      engine_->Cancel();
    else
      run_.RequestStop();
    ShowRun();
    return;
  }
  if (state_.finished()) {
    // The engine is done: the run ends as a cancel does, and nothing waits any longer.
    if (engine_) engine_->Cancel();
    accept();
    return;
  }
  if (engine_) engine_->Cancel();
}

void frmProgress::ShowSeriesStage(const std::string& stage_label, bool engine_finished) {
  // The engine names the stage it is in; the bar never goes back.
  static const char* const kStages[] = {" Data Preparation ", " Model Identification ", " Model Estimation ",
                                        " Model Diagnosis "};
  int stage = SeriesBar->value();
  QString text = stage == 0 ? QString("starting the engine") : SeriesBar->property("stage").toString();
  for (int k = 0; k < 4; ++k)
    if (stage_label == kStages[k] && k + 1 >= stage) {
      stage = k + 1;
      text = QString::fromStdString(kStages[k]).trimmed();
    }
  if (engine_finished) {
    stage = 5;
    text = engine_ && engine_->CancelRequested() ? QString("canceled") : QString("reports and graphs next");
  }
  SeriesBar->setValue(stage);
  SeriesBar->setProperty("stage", text);
  const QString name = engine_ ? QString::fromStdString(engine_->SeriesName()) : QString();
  SeriesBar->setFormat(QString("%1%2 (stage %3 of 5)").arg(name.isEmpty() ? QString() : name + ": ", text).arg(stage));
}

void frmProgress::reject() {
  if (in_run_) {
    if (btnCancel->isEnabled()) btnCancelClick();
    return;
  }
  // Escape or the window's close box while the engine works: that is a cancel; the form
  // still closes only when the engine has ended, so the caller never runs on beside it.
  if (!state_.finished()) {
    if (btnCancel->isEnabled()) btnCancelClick();
    return;
  }
  QDialog::reject();
}

void frmProgress::done(int result) {
  // The window of a run closes only at the run's end.
  if (in_run_) return;
  Timer1->stop();
  poll_timer_->stop();
  RestorePointer();
  QDialog::done(result);
}

void frmProgress::RestorePointer() {
  if (pointer_overridden_) {
    pointer_overridden_ = false;
    QApplication::restoreOverrideCursor();
  }
}

void frmProgress::BeginRun(int dataset_count) {
  in_run_ = true;
  engine_canceled_ = false;
  loaded_ = true;
  const double now = TimeOfDayNow();
  run_.BeginRun(dataset_count, now);
  state_.Load(now);
  btnCancel->setVisible(true);
  btnCancel->setEnabled(true);
  lblProgress->setVisible(true);
  ProgressBar1->setVisible(true);
  btnOK->setVisible(false);
  txtComplete->setVisible(false);
  SeriesBar->setRange(0, RunProgressState::kSteps);
  ProjectBar->setRange(0, std::max(dataset_count, 1));
  ProjectBar->setVisible(dataset_count > 1);
  lblProgress->setText(kProgressStarting);
  ProgressBar1->setValue(state_.bar());
  QApplication::setOverrideCursor(Qt::WaitCursor);
  pointer_overridden_ = true;
  ShowRun();
}

void frmProgress::BeginDataset(int number, int count, const std::string& name) {
  run_.BeginDataset(number, count, name);
  lblProgress->setText(kProcessingLabel);
  ShowRun();
  // Shown with the first dataset, so it never stands empty.
  if (!isVisible()) {
    show();
    Timer1->start();
  }
  QCoreApplication::processEvents();
}

void frmProgress::BeginStage(platform::RunStage stage) {
  run_.Stage(stage);
  ShowRun();
  QCoreApplication::processEvents();
}

void frmProgress::EndDataset() {
  run_.EndDataset();
  ShowRun();
}

void frmProgress::WaitForEngine(platform::WaitedWork& work) {
  engine_ = &work;
  // A cancel before the engine started on this dataset stops it there.
  if (run_.stop_requested()) work.Cancel();
  state_.Load(TimeOfDayNow());
  ProgressBar1->setValue(state_.bar());
  lblProgress->setText(QString::fromStdString(state_.label()));
  poll_timer_->start();
  work.Poll();
  if (!work.Finished()) {
    QEventLoop loop;
    engine_loop_ = &loop;
    loop.exec();
    engine_loop_ = nullptr;
  }
  poll_timer_->stop();
  if (work.CancelRequested()) engine_canceled_ = true;
  run_.EngineStage(work.StageText());
  engine_ = nullptr;
  ShowRun();
}

void frmProgress::EndRun() {
  Timer1->stop();
  poll_timer_->stop();
  run_.EndRun(TimeOfDayNow());
  const bool canceled = engine_canceled_ || run_.stop_requested();
  btnCancel->setVisible(false);
  lblProgress->setVisible(false);
  ProgressBar1->setVisible(false);
  txtComplete->setVisible(true);
  ShowRun();
  RestorePointer();
  // The pause lets the person read the end; a canceled run closes at once.
  if (!canceled && isVisible()) {
    QEventLoop pause;
    QTimer::singleShot(close_ms_, Qt::PreciseTimer, &pause, &QEventLoop::quit);
    pause.exec();
  }
  in_run_ = false;
  QDialog::done(QDialog::Accepted);
}

void frmProgress::RunPoll() {
  if (!engine_) return;
  engine_->Poll();
  run_.EngineStage(engine_->StageText());
  ShowRun();
  if (engine_->Finished() && engine_loop_) engine_loop_->quit();
}

void frmProgress::RunTick() {
  // The bar shows that the program lives, in the engine's turn and after it alike.
  state_.Tick(false, TimeOfDayNow(), RandomBarStep, engine_ ? engine_->StageText() : run_.Label());
  ProgressBar1->setValue(state_.bar());
  ShowRun();
}

void frmProgress::ShowRun() {
  lblSeries->setText(QString::fromStdString(run_.DatasetText()));
  lblSeries->setVisible(!lblSeries->text().isEmpty());
  ProjectBar->setValue(run_.done());
  ProjectBar->setFormat(QString::fromStdString(run_.ProjectText()));
  SeriesBar->setValue(run_.step());
  SeriesBar->setFormat(QString::fromStdString(run_.StepText()));
  SeriesBar->setVisible(run_.step() > 0 || run_.in_dataset() || run_.done() > 0);
  const std::string label = engine_ ? state_.label() : run_.Label();
  if (!label.empty()) lblProgress->setText(QString::fromStdString(label));
  lblTime->setText(QString::fromStdString(run_.time_text()));
}

void DesktopProgressWait::RunBegins(int dataset_count) {
  run_form_ = std::make_unique<frmProgress>(parent_);
  run_form_->SetTimings(timings_.tick_ms, timings_.close_ms, timings_.poll_ms);
  run_form_->BeginRun(dataset_count);
}

void DesktopProgressWait::DatasetBegins(int number, int count, const std::string& name) {
  if (run_form_) run_form_->BeginDataset(number, count, name);
}

void DesktopProgressWait::StageBegins(platform::RunStage stage) {
  if (run_form_) run_form_->BeginStage(stage);
}

void DesktopProgressWait::DatasetEnds() {
  if (run_form_) run_form_->EndDataset();
}

void DesktopProgressWait::RunEnds() {
  if (!run_form_) return;
  run_form_->EndRun();
  run_form_.reset();
}

bool DesktopProgressWait::StopRequested() const { return run_form_ && run_form_->StopRequested(); }

void DesktopProgressWait::Wait(platform::WaitedWork& work) {
  if (run_form_) return run_form_->WaitForEngine(work);
  // The form closes itself only after the engine has finished; should it be closed from
  // outside while the engine still runs, a new one takes its place.
  do {
    frmProgress form(parent_);
    form.SetEngine(&work);
    form.exec();
    work.Poll();
  } while (!work.Finished());
}

void DesktopProgressWait::LetEventsRun() { QCoreApplication::processEvents(); }

}  // namespace tessaly::batch
