// A desktop run of the sample with the real engine: one progress window that follows each dataset
// through the engine, reports, graphs and filing; a Cancel outside the engine's turn that ends the
// run after the dataset in hand; the interactive graph's fitted line from what the run filed.
#include <gtest/gtest.h>

#include <QLabel>
#include <QLineSeries>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <set>
#include <sstream>
#include <tuple>

#include "app/modal_robot.h"
#include "app/report_pane.h"
#include "batch/batch_file.h"
#include "batch/forms/frm_progress.h"
#include "batch/run_outputs.h"
#include "gui.h"
#include "report/forms/series_chart.h"
#include "rules/forms/frm_wizard1.h"

namespace tessaly::testing {
namespace {

// Every move of the series bar: (dataset, step); and the windows that showed.
struct Seen {
  std::vector<std::pair<std::string, int>> steps;
  std::set<batch::frmProgress*> windows;
  std::vector<int> StepsOf(const std::string& dataset) const {
    std::vector<int> out;
    for (const auto& [name, step] : steps)
      if (name == dataset) out.push_back(step);
    return out;
  }
};

// Runs sample.xml through the wizard's automatic path; `on_step` sees every move of the bar.
Seen RunSample(DesktopFixture& d, const std::function<void(batch::frmProgress&, int)>& on_step = {}) {
  auto wait = std::make_shared<batch::DesktopProgressWait>(d.form.get());
  wait->SetTimings(30, 200, 10);
  platform::SetProgressWait(wait);
  fs::copy(d.program / "examples" / "sample.xml", d.data / "sample.xml");
  EXPECT_TRUE(d.session->OpenProject(d.data / "sample.xml")) << d.Messages();
  Seen seen;
  app::ModalRobot robot(nullptr, [&](QWidget* modal) {
    if (auto* progress = qobject_cast<batch::frmProgress*>(modal); progress && seen.windows.insert(progress).second)
      QObject::connect(progress->SeriesBar, &QProgressBar::valueChanged, progress, [&, progress](int step) {
        seen.steps.emplace_back(progress->isVisible() ? progress->Run().DatasetText() : "hidden", step);
        if (on_step) on_step(*progress, step);
      });
    auto* wizard = qobject_cast<rules::frmWizard1*>(modal);
    if (wizard && wizard->Wizard().Step() == 0) wizard->optModelingType[2]->click();
    return wizard && Click(wizard, wizard->Wizard().Step() == 0 ? "cmdNav3" : "cmdNav4");
  }, 5);
  d.session->mnuBatchRun->trigger();
  robot.Stop();
  return seen;
}

TEST(RunProgress, OneWindowFollowsEachDatasetThroughReportsAndGraphs) {
  DesktopFixture d;
  Seen seen = RunSample(d);
  EXPECT_EQ(seen.windows.size(), 1u);
  EXPECT_TRUE(seen.StepsOf("hidden").empty());
  // The engine's stages, then reports, graphs and filing, never going back.
  for (const char* dataset : {"Series 1 of 4: AIRLINE.ASC", "Series 2 of 4: ELNINO.ASC"}) {
    std::vector<int> steps = seen.StepsOf(dataset);
    ASSERT_GE(steps.size(), 3u) << dataset;
    EXPECT_TRUE(std::is_sorted(steps.begin(), steps.end())) << dataset;
    EXPECT_EQ(std::vector<int>(steps.end() - 3, steps.end()), (std::vector<int>{5, 6, 7})) << dataset;
  }
  EXPECT_EQ(d.form->lblStatus->text(), "Finished processing.");
}

TEST(RunProgress, CancelWhileGraphsAreDrawnEndsTheRunAfterThatDataset) {
  DesktopFixture d;
  std::string stage_text, label_text;
  Seen seen = RunSample(d, [&](batch::frmProgress& progress, int step) {
    if (step != 6 || !stage_text.empty()) return;
    stage_text = "?";
    QTimer::singleShot(0, progress.btnCancel, [&] {
      stage_text = progress.SeriesBar->text().toStdString();
      progress.btnCancel->click();
      label_text = progress.lblProgress->text().toStdString();
    });
  });
  EXPECT_EQ(stage_text, "AIRLINE.ASC: Graphs (stage 6 of 7)");
  EXPECT_EQ(label_text, "Canceled: the run ends after AIRLINE.ASC");
  EXPECT_NE(d.Messages().find("Operation Canceled by user"), std::string::npos) << d.Messages();
  EXPECT_TRUE(seen.StepsOf("Series 2 of 4: ELNINO.ASC").empty());
  // AIRLINE whole, the rest not run and said so; the project saved with it.
  const fs::path out = d.data / "sample" / "OUTPUT";
  for (const char* file : {"AIRLINEact.jpg", "AIRLINEactres.jpg", "AIRLINEEQUATION.TXT"})
    EXPECT_TRUE(fs::exists(out / file)) << file;
  EXPECT_FALSE(fs::exists(out / "ELNINOEQUATION.TXT"));
  batch::cBatchFile saved;
  ASSERT_TRUE(saved.Load(d.data / "sample.xml"));
  EXPECT_EQ((std::vector<int>{saved.Completed(0), saved.Completed(1), saved.Completed(2), saved.Completed(3)}),
            (std::vector<int>{1, 0, 0, 0}));
  EXPECT_NE(ReadFile(out / "display.html").find("<span>3 not run</span>"), std::string::npos);
  EXPECT_EQ(d.form->lblStatus->text(), "Finished processing.");
}

TEST(FittedLine, FiledBesideTheReportsAndDrawnWhereTheGraphHasAFit) {
  DesktopFixture d;
  RunSample(d);
  // The file: a fitted period's residual is its actual less its fit; the periods the model's
  // differences use up come first, with their actual alone.
  std::istringstream file(ReadFile(d.data / "sample" / "OUTPUT" / "AIRLINEFITTED.TXT"));
  std::string line, period, first_fitted;
  std::getline(file, line);
  EXPECT_EQ(line, "Fitted values: PASSENGERS\r");
  int unfitted = 0;
  std::vector<double> fits;
  for (double actual, fitted, residual; std::getline(file, line);) {
    std::istringstream row(line);
    if (!(row >> period >> actual) || period.find('/') == std::string::npos) continue;
    if (!(row >> fitted >> residual)) {
      EXPECT_TRUE(fits.empty()) << period;
      ++unfitted;
      continue;
    }
    EXPECT_NEAR(actual - fitted, residual, 1e-3) << period;
    if (fits.empty()) first_fitted = period;
    fits.push_back(fitted);
  }
  ASSERT_GT(unfitted, 0);
  ASSERT_EQ(unfitted + static_cast<int>(fits.size()), 144);

  // The viewer: the graphs with a fit show the line at once, the others keep it in the legend;
  // its points are the file's, from the first fitted period to the last.
  const std::tuple<const char*, bool, bool> graphs[] = {  // graph, shown as a chart, fitted line shown
      {"G1", true, true}, {"G2", true, false}, {"G3", true, true}, {"G4", true, true}, {"G6", false, false}};
  app::ReportPane* pane = d.session->Pane();
  auto value = [](double v) { return QString::number(v, 'f', 2).toStdString(); };
  for (const auto& [id, chart, fitted_shown] : graphs) {
    d.session->trvMenu_NodeClick(batch::RowKey("AIRLINE.ASC", id));
    ASSERT_EQ(pane->ShowingChart(), chart) << id;
    if (!chart) continue;
    QLineSeries* fit = nullptr;
    for (QLineSeries* l : pane->chtSeries->Lines()) fit = l->name() == "Fitted" ? l : fit;
    ASSERT_NE(fit, nullptr) << id;
    EXPECT_EQ(fit->isVisible(), fitted_shown) << id;
    EXPECT_EQ(pane->chtSeries->ValueText(fit, unfitted - 1).toStdString(), "");
    EXPECT_EQ(pane->chtSeries->ValueText(fit, unfitted).toStdString(), first_fitted + "  Fitted: " + value(fits.front()));
    EXPECT_EQ(pane->chtSeries->ValueText(fit, 143).toStdString(), "1960/12  Fitted: " + value(fits.back()));
    EXPECT_EQ(pane->chtSeries->ValueText(fit, 144).toStdString(), "");
  }
}

}  // namespace
}  // namespace tessaly::testing
