// A desktop run of the sample project with the real engine. The progress window: one window
// from the first dataset to the last that follows each dataset through the engine, its
// reports, graphs and filing, and a Cancel outside the engine's turn that ends the run after
// the dataset in hand. The interactive graph: its fitted line, from what the run filed.
#include <gtest/gtest.h>

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <set>

#include <QLineSeries>
#include <cmath>
#include <sstream>

#include "app/modal_robot.h"
#include "app/report_pane.h"
#include "batch/run_outputs.h"
#include "report/chart_data.h"
#include "report/forms/series_chart.h"
#include "batch/batch_file.h"
#include "batch/forms/frm_progress.h"
#include "gui.h"
#include "platform/progress_wait.h"
#include "rules/forms/frm_wizard1.h"

namespace tessaly::testing {
namespace {

struct Seen {
  std::vector<std::pair<std::string, int>> steps;  // (dataset, series step) as the bar moved
  std::set<batch::frmProgress*> windows;
  bool hidden_while_graphs = false;
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
    if (auto* progress = qobject_cast<batch::frmProgress*>(modal)) {
      if (seen.windows.insert(progress).second)
        QObject::connect(progress->SeriesBar, &QProgressBar::valueChanged, progress, [&, progress](int step) {
          seen.steps.emplace_back(progress->Run().DatasetText(), step);
          if (step == 6 && !progress->isVisible()) seen.hidden_while_graphs = true;
          if (on_step) on_step(*progress, step);
        });
      return false;
    }
    auto* wizard = qobject_cast<rules::frmWizard1*>(modal);
    if (!wizard) return false;
    if (wizard->Wizard().Step() == 0) {
      wizard->optModelingType[2]->click();
      return Click(wizard, "cmdNav3");
    }
    return Click(wizard, "cmdNav4");
  }, 5);
  d.session->mnuBatchRun->trigger();
  robot.Stop();
  return seen;
}

std::vector<int> StepsOf(const Seen& seen, const std::string& dataset) {
  std::vector<int> steps;
  for (const auto& [name, step] : seen.steps)
    if (name == dataset) steps.push_back(step);
  return steps;
}

TEST(RunProgress, OneWindowFollowsEachDatasetThroughReportsAndGraphs) {
  DesktopFixture d;
  Seen seen = RunSample(d);
  EXPECT_EQ(seen.windows.size(), 1u);
  EXPECT_FALSE(seen.hidden_while_graphs);
  // The engine's stages, then reports, graphs and filing, never going back.
  for (const char* dataset : {"Series 1 of 4: AIRLINE.ASC", "Series 2 of 4: ELNINO.ASC"}) {
    std::vector<int> steps = StepsOf(seen, dataset);
    ASSERT_GE(steps.size(), 3u) << dataset;
    EXPECT_TRUE(std::is_sorted(steps.begin(), steps.end())) << dataset;
    EXPECT_EQ(std::vector<int>(steps.end() - 3, steps.end()), (std::vector<int>{5, 6, 7})) << dataset;
  }
  EXPECT_EQ(d.form->lblStatus->text(), "Finished processing.");
  EXPECT_EQ(d.Messages().find("Operation Canceled by user"), std::string::npos);
}

TEST(RunProgress, CancelWhileGraphsAreDrawnEndsTheRunAfterThatDataset) {
  DesktopFixture d;
  std::string stage_text, label_text;
  Seen seen = RunSample(d, [&](batch::frmProgress& progress, int step) {
    if (step != 6 || !stage_text.empty()) return;
    stage_text = "?";
    QTimer::singleShot(0, progress.btnCancel, [&progress, &label_text, &stage_text] {
      stage_text = progress.SeriesBar->text().toStdString();
      progress.btnCancel->click();
      label_text = progress.lblProgress->text().toStdString();
    });
  });
  EXPECT_EQ(stage_text, "AIRLINE.ASC: Graphs (stage 6 of 7)");
  EXPECT_EQ(label_text, "Canceled: the run ends after AIRLINE.ASC");
  EXPECT_NE(d.Messages().find("Operation Canceled by user"), std::string::npos) << d.Messages();
  EXPECT_TRUE(StepsOf(seen, "Series 2 of 4: ELNINO.ASC").empty());
  // AIRLINE whole, the rest not run and said so; the project saved with it.
  const fs::path out = d.data / "sample" / "OUTPUT";
  for (const char* file : {"AIRLINEact.jpg", "AIRLINEactres.jpg", "AIRLINEEQUATION.TXT"})
    EXPECT_TRUE(fs::exists(out / file)) << file;
  EXPECT_FALSE(fs::exists(out / "ELNINOEQUATION.TXT"));
  batch::cBatchFile saved;
  ASSERT_TRUE(saved.Load(d.data / "sample.xml"));
  EXPECT_EQ((std::vector<int>{saved.Completed(0), saved.Completed(1), saved.Completed(2), saved.Completed(3)}),
            (std::vector<int>{1, 0, 0, 0}));
  const std::string overview = ReadFile(out / "display.html");
  EXPECT_NE(overview.find("1 finished"), std::string::npos);
  EXPECT_NE(overview.find("3 not run"), std::string::npos) << overview;
  EXPECT_EQ(d.form->lblStatus->text(), "Finished processing.");
  EXPECT_TRUE(d.session->mnuBatchRun->isEnabled());
}

TEST(FittedLine, FiledBesideTheReportsAndDrawnWhereTheGraphHasAFit) {
  DesktopFixture d;
  RunSample(d);
  const fs::path out = d.data / "sample" / "OUTPUT";
  // The file: each fitted period's residual is its actual less its fit; the first periods,
  // which the model's differences use up, have no fit.
  std::istringstream file(ReadFile(out / "AIRLINEFITTED.TXT"));
  std::string line;
  std::getline(file, line);
  EXPECT_EQ(line, "Fitted values: PASSENGERS\r");
  int unfitted = 0;
  std::vector<double> fits;
  while (std::getline(file, line)) {
    std::istringstream row(line);
    std::string period;
    double actual, fitted, residual;
    if (!(row >> period >> actual) || period.find('/') == std::string::npos) continue;
    if (!(row >> fitted >> residual)) {
      EXPECT_TRUE(fits.empty()) << period;
      ++unfitted;
      continue;
    }
    EXPECT_NEAR(actual - fitted, residual, 1e-3) << period;
    fits.push_back(fitted);
  }
  EXPECT_GT(unfitted, 0);
  EXPECT_EQ(unfitted + static_cast<int>(fits.size()), 144);

  // The chart's data: the same fits on the history's points, none on the forecasts'.
  auto data = report::ReadChartData(out, "AIRLINE");
  ASSERT_TRUE(data);
  ASSERT_EQ(data->fitted.values.size(), data->periods.size());
  EXPECT_EQ(data->forecast_origin, 144);
  for (size_t i = 0; i < data->periods.size(); ++i) {
    const bool fitted = i >= static_cast<size_t>(unfitted) && i < 144;
    ASSERT_EQ(data->fitted.values[i].has_value(), fitted) << i;
    if (fitted) EXPECT_DOUBLE_EQ(*data->fitted.values[i], fits[i - unfitted]);
  }

  // The viewer: the graphs with a fit show the line at once, the others keep it in the legend.
  const struct {
    const char* id;
    bool chart, fitted_shown;
  } graphs[] = {{"G1", true, true}, {"G2", true, false}, {"G3", true, true}, {"G4", true, true}, {"G6", false, false}};
  app::ReportPane* pane = d.session->Pane();
  for (const auto& g : graphs) {
    d.session->trvMenu_NodeClick(batch::RowKey("AIRLINE.ASC", g.id));
    ASSERT_EQ(pane->ShowingChart(), g.chart) << g.id;
    if (!g.chart) continue;
    QLineSeries* fit = nullptr;
    for (QLineSeries* l : pane->chtSeries->Lines())
      if (l->name() == "Fitted") fit = l;
    ASSERT_NE(fit, nullptr) << g.id;
    EXPECT_EQ(fit->isVisible(), g.fitted_shown) << g.id;
    EXPECT_EQ(pane->chtSeries->ValueText(fit, 143).toStdString(),
              "1960/12  Fitted: " + QString::number(fits.back(), 'f', 2).toStdString());
  }
}

}  // namespace
}  // namespace tessaly::testing
