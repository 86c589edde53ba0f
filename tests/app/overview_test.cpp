// The series overview after a desktop run of a project with good, held-out and rejected
// datasets: what each row says, sorting, the filter, and a double click opening the reports.
#include <gtest/gtest.h>

#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QTableWidget>
#include <QTextBrowser>
#include <QTreeWidget>

#include "app/modal_robot.h"
#include "app/report_pane.h"
#include "batch/batch_file.h"
#include "batch/report_tree.h"
#include "gui.h"
#include "report/chart_data.h"
#include "report/forms/series_chart.h"
#include "report/forms/series_overview_table.h"
#include <QCategoryAxis>
#include <QChart>
#include <QChartView>
#include <QLegendMarker>
#include <QLineSeries>
#include "rules/forms/frm_wizard1.h"
#include "batch/engine/engine_client.h"
#include "batch/forms/frm_progress.h"
#include <QElapsedTimer>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>

namespace tessaly::testing {
namespace {

using report::SeriesOverviewTable;

// AIRLINE with its last year held out of the estimation, under the same series name.
void WriteHeldOut(const fs::path& from, const fs::path& to) {
  std::string text = ReadFile(from), out;
  std::vector<std::string> lines;
  for (size_t at = 0; at < text.size();) {
    size_t end = text.find("\r\n", at);
    lines.push_back(text.substr(at, end - at));
    at = end + 2;
  }
  lines[7] = "132";  // observations
  lines[9] = "12";   // retained values: the same last 12, now after the 0 future values
  for (const auto& line : lines) out += line + "\r\n";
  WriteFile(to, out);
}

std::vector<std::string> Column(QTableWidget* table, int column) {
  std::vector<std::string> out;
  for (int r = 0; r < table->rowCount(); ++r)
    if (!table->isRowHidden(r)) out.push_back(table->item(r, column)->text().toStdString());
  return out;
}

TEST(SeriesOverview, ShowsEachDatasetsOutcomeSortsFiltersAndOpensItsReports) {
  DesktopFixture d;
  WriteHeldOut(d.data / "AIRLINE.ASC", d.data / "HELDOUT.ASC");
  batch::cBatchFile project(d.program.path());
  project.SetBatchName("overview.xml");
  project.SetInDirectory(d.data.path().string());
  project.SetOutDirectory((d.data / "overview").string());
  for (const char* asc : {"AIRLINE.ASC", "HELDOUT.ASC", "BROKEN.ASC", "NILE.ASC"}) project.Add_File(asc, 0, 0, "00/00/00");
  ASSERT_TRUE(project.Build(d.data / "overview.xml"));
  ASSERT_TRUE(d.session->OpenProject(d.data / "overview.xml")) << d.Messages();

  app::ModalRobot robot(nullptr, [](QWidget* modal) {
    auto* wizard = qobject_cast<rules::frmWizard1*>(modal);
    if (!wizard) return false;
    if (wizard->Wizard().Step() != 0) return Click(wizard, "cmdNav4");
    wizard->optModelingType[2]->click();
    return Click(wizard, "cmdNav3");
  });
  d.session->mnuBatchRun->trigger();
  robot.Stop();

  SeriesOverviewTable* overview = d.session->Overview();
  QTableWidget* table = overview->tblSeries;
  ASSERT_TRUE(table->isVisible());
  EXPECT_EQ(overview->lblCounts->text(), "4 datasets: 2 forecast, 2 rejected, 0 failed, 0 not run") << d.Messages();
  struct Expected {
    const char* dataset;
    const char* status;
    bool modelled, held_out;
    const char* notes_start;
  };
  const Expected expected[] = {
      {"AIRLINE", "forecast", true, false, ""},
      {"HELDOUT", "forecast", true, true, ""},
      {"BROKEN", "rejected", false, false, "The total size of BROKEN.ASC does not agree with the anticipated size"},
      {"NILE", "rejected", false, false, "You cannot process datasets with different seasonalities in the same xml."},
  };
  for (int r = 0; r < 4; ++r) {
    const Expected& e = expected[r];
    SCOPED_TRACE(e.dataset);
    auto cell = [&](int c) { return table->item(r, c)->text().toStdString(); };
    EXPECT_EQ(cell(SeriesOverviewTable::kDataset), e.dataset);
    EXPECT_EQ(cell(SeriesOverviewTable::kStatus), e.status);
    EXPECT_EQ(!cell(SeriesOverviewTable::kModel).empty(), e.modelled);
    EXPECT_EQ(!cell(SeriesOverviewTable::kTransform).empty(), e.modelled);
    EXPECT_EQ(!cell(SeriesOverviewTable::kInterventions).empty(), e.modelled);
    if (e.modelled) EXPECT_GT(table->item(r, SeriesOverviewTable::kMape)->data(Qt::DisplayRole).toDouble(), 0.0);
    EXPECT_EQ(!cell(SeriesOverviewTable::kHoldOut).empty(), e.held_out);
    EXPECT_EQ(cell(SeriesOverviewTable::kNotes).rfind(e.notes_start, 0), 0u) << cell(SeriesOverviewTable::kNotes);
  }

  // Sorting by a figure sorts by its value; by name, alphabetically.
  table->horizontalHeader()->setSortIndicator(SeriesOverviewTable::kMape, Qt::DescendingOrder);
  auto mape = Column(table, SeriesOverviewTable::kMape);
  EXPECT_GE(std::stod(mape[0]), std::stod(mape[1]));
  EXPECT_EQ(mape[2], "");
  table->horizontalHeader()->setSortIndicator(SeriesOverviewTable::kDataset, Qt::AscendingOrder);
  EXPECT_EQ(Column(table, SeriesOverviewTable::kDataset),
            (std::vector<std::string>{"AIRLINE", "BROKEN", "HELDOUT", "NILE"}));
  overview->txtFilter->setText("Rejected");
  EXPECT_EQ(Column(table, SeriesOverviewTable::kDataset), (std::vector<std::string>{"BROKEN", "NILE"}));
  overview->txtFilter->clear();

  // A double click: a rejected dataset's reason on the overview page, a forecast's details.
  const std::pair<int, const char*> opened[] = {{1, "display.html"}, {0, "AIRLINE.htm"}};
  for (const auto& [row, file] : opened) {
    emit table->cellDoubleClicked(row, SeriesOverviewTable::kStatus);
    EXPECT_EQ(d.session->Pane()->CurrentFile().filename().string(), file);
    const std::string asc = table->item(row, 0)->text().toStdString() + ".ASC";
    EXPECT_EQ(app::ReportPane::KeyOf(d.session->Pane()->trvMenu->currentItem()), asc);
  }
  EXPECT_NE(d.session->Pane()->brsReport->toPlainText().indexOf("Model details: PASSENGERS"), -1);

  // The forecasts graph as a chart: first the forecast year and four years before it, ticks
  // on whole years; zoomed in, ticks on months; a line toggled off in the legend.
  app::ReportPane* pane = d.session->Pane();
  d.session->trvMenu_NodeClick(batch::RowKey("AIRLINE.ASC", "G2"));
  ASSERT_TRUE(pane->ShowingChart());
  report::SeriesChart* chart = pane->chtSeries;
  auto axis_labels = [&] {
    auto* axis = qobject_cast<QCategoryAxis*>(chart->view->chart()->axes(Qt::Horizontal).front());
    std::vector<std::string> out;
    for (const QString& label : axis->categoriesLabels()) out.push_back(label.toStdString());
    return out;
  };
  using Labels = std::vector<std::string>;
  EXPECT_EQ(axis_labels(), (Labels{"1957", "1958", "1959", "1960", "1961"}));
  chart->ShowWindow(150, 155);
  EXPECT_EQ(axis_labels(), (Labels{"1961/7", "1961/8", "1961/9", "1961/10", "1961/11", "1961/12"}));
  chart->ShowWholeSeries();
  EXPECT_EQ(axis_labels(), (Labels{"1950", "1952", "1954", "1956", "1958", "1960"}));
  QLineSeries* forecasts = chart->Lines()[2];
  EXPECT_EQ(chart->ValueText(forecasts, 144).left(20), "1961/1  Forecasts: 4");
  for (QLegendMarker* marker : chart->view->chart()->legend()->markers(forecasts)) emit marker->clicked();
  EXPECT_FALSE(forecasts->isVisible());
  pane->actInteractive->trigger();
  EXPECT_FALSE(pane->ShowingChart());
}

TEST(SeriesChartTicks, FallOnWholeYearsOrSeasonSteps) {
  auto periods = [](int year, int period, int seasonality, int count) {
    std::vector<report::Period> out;
    for (int i = 0; i < count; ++i, ++period) {
      if (period > seasonality) period = 1, ++year;
      out.push_back({year, period});
    }
    return out;
  };
  struct Case {
    int year, period, seasonality, count, first, last;
    std::vector<std::string> labels;
  };
  const Case cases[] = {
      {1871, 1, 1, 100, 0, 99, {"1880", "1890", "1900", "1910", "1920", "1930", "1940", "1950", "1960", "1970"}},
      {1871, 1, 1, 100, 90, 99, {"1961", "1962", "1963", "1964", "1965", "1966", "1967", "1968", "1969", "1970"}},
      {1959, 1, 4, 206, 0, 205, {"1960", "1970", "1980", "1990", "2000", "2010"}},      // quarterly, 51 years
      {1959, 3, 4, 206, 2, 9, {"1960", "1960/2", "1960/3", "1960/4", "1961", "1961/2", "1961/3", "1961/4"}},
      {1949, 1, 12, 144, 100, 111, {"1957/5", "1957/7", "1957/9", "1957/11", "1958", "1958/3"}},  // a year of months
  };
  for (const Case& c : cases) {
    std::vector<std::string> labels;
    for (const auto& tick : report::AxisTicks(periods(c.year, c.period, c.seasonality, c.count), c.seasonality,
                                              c.first, c.last))
      labels.push_back(tick.label);
    EXPECT_EQ(labels, c.labels) << c.year << " " << c.seasonality << " " << c.first << "-" << c.last;
  }
  // The first window: every forecast and four times as much history, or all of a short series.
  EXPECT_EQ(report::DefaultWindow(156, 144, 12).first, 96);
  EXPECT_EQ(report::DefaultWindow(40, 30, 4).first, 0);
}

// An engine in its estimation stage that ends after a few polls.
class EstimatingWork : public platform::WaitedWork {
 public:
  void Poll() override { finished_ = finished_ || ++polls_ > 15; }
  bool Finished() const override { return finished_; }
  void Cancel() override { cancel_ = true; }
  bool CancelRequested() const override { return cancel_; }
  std::string StageText() const override { return " Model Estimation "; }
  int SeriesNumber() const override { return 2; }
  int SeriesCount() const override { return 4; }
  std::string SeriesName() const override { return "ELNINO.ASC"; }

 private:
  int polls_ = 0;
  bool finished_ = false, cancel_ = false;
};

TEST(ProgressWindow, ShowsTheDatasetsStageAndCancelsUntilItCloses) {
  OffscreenApp();
  EstimatingWork work;
  batch::frmProgress form;
  form.SetTimings(20, 3000, 5);
  form.SetEngine(&work);
  std::vector<std::string> stages;
  bool cancel_after_engine = false;
  QTimer watch;
  QObject::connect(&watch, &QTimer::timeout, [&] {
    const std::string text = form.SeriesBar->text().toStdString();
    if (stages.empty() || stages.back() != text) stages.push_back(text);
    if (form.SeriesBar->value() == 5 && form.btnCancel->isVisible() && form.btnCancel->isEnabled() && !cancel_after_engine) {
      cancel_after_engine = true;
      form.btnCancel->click();
    }
  });
  watch.start(5);
  QElapsedTimer clock;
  clock.start();
  form.exec();
  EXPECT_TRUE(cancel_after_engine);
  EXPECT_LT(clock.elapsed(), 2500);  // closed by the cancel, not after the pause
  EXPECT_TRUE(work.CancelRequested());
  EXPECT_EQ(form.ProjectBar->text().toStdString(), "Project: 2 of 4 datasets done");
  ASSERT_GE(stages.size(), 2u);
  EXPECT_EQ(stages[stages.size() - 2], "ELNINO.ASC: Model Estimation (stage 3 of 5)");
  EXPECT_EQ(stages.back(), "ELNINO.ASC: reports and graphs next (stage 5 of 5)");
}

}  // namespace
}  // namespace tessaly::testing
