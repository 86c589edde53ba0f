#include "app/screenshots_ux.h"

#include <QApplication>
#include <QTableWidget>

#include "app/desktop_session.h"
#include "report/forms/series_overview_table.h"
#include "shell/forms/frm_main.h"

namespace tessaly::app {

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
}

}  // namespace tessaly::app
