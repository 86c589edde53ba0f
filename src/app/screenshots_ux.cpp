#include "app/screenshots_ux.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTableWidget>

#include "app/desktop_session.h"
#include "app/report_pane.h"
#include "batch/report_tree.h"
#include "report/forms/series_chart.h"
#include <QLabel>
#include <QLineSeries>
#include <QTreeWidget>
#include "report/forms/series_overview_table.h"
#include "shell/forms/frm_main.h"

namespace tessaly::app {

namespace {
// The chart lays its axes out on later events: let them run before the picture is taken.
void Settle() {
  QElapsedTimer timer;
  timer.start();
  while (timer.elapsed() < 300) QApplication::processEvents(QEventLoop::AllEvents, 50);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}
}  // namespace

void OverviewScreenshots(shell::frmMain& form, DesktopSession& session, const QString& dir) {
  report::SeriesOverviewTable* overview = session.Overview();
  QTableWidget* table = overview->tblSeries;
  // Worst in-sample fit first, as an analyst would look.
  table->sortItems(report::SeriesOverviewTable::kMape, Qt::DescendingOrder);
  QApplication::processEvents();
  form.grab().save(dir + "/main_overview.png");
  for (int r = 0; r < table->rowCount(); ++r) {
    const report::SeriesOverviewRow* row = overview->RowAt(r);
    if (!row || row->status != report::SeriesStatus::Rejected) continue;
    table->selectRow(r);
    session.OpenSeries(row->asc_file);
    QApplication::processEvents();
    form.grab().save(dir + "/main_overview_rejected.png");
    break;
  }

  // A dataset's forecasts as an interactive chart: the first window, then zoomed into the
  // last two years of history and the forecast year, the pointer on a forecast.
  ReportPane* pane = session.Pane();
  const std::string key = batch::RowKey("AIRLINE.ASC", "G2");
  if (QTreeWidgetItem* item = pane->ItemByKey(key)) pane->trvMenu->setCurrentItem(item);
  session.trvMenu_NodeClick(key);
  Settle();
  if (!pane->ShowingChart()) return;
  form.grab().save(dir + "/graph_interactive.png");
  report::SeriesChart* chart = pane->chtSeries;
  const int last = chart->Window().last;
  chart->ShowWindow(last - 35, last);
  for (QLineSeries* line : chart->Lines())
    if (line->name() == "Forecasts") chart->lblValue->setText(chart->ValueText(line, last - 5));
  Settle();
  form.grab().save(dir + "/graph_interactive_zoomed.png");

  // Actuals, fitted values and forecasts: the fitted line the run filed, over the last years.
  const std::string fitted_key = batch::RowKey("AIRLINE.ASC", "G4");
  if (QTreeWidgetItem* item = pane->ItemByKey(fitted_key)) pane->trvMenu->setCurrentItem(item);
  session.trvMenu_NodeClick(fitted_key);
  Settle();
  if (!pane->ShowingChart()) return;
  for (QLineSeries* line : chart->Lines())
    if (line->name() == "Fitted") chart->lblValue->setText(chart->ValueText(line, chart->Window().last - 13));
  Settle();
  form.grab().save(dir + "/graph_interactive_fitted.png");
}

}  // namespace tessaly::app
