#pragma once
// The series overview table of the desktop: every dataset of the project with its status,
// model, transform, interventions, in-sample and hold-out MAPE and its warnings (or the
// reason it was rejected or failed). Sorting by any column, a filter over the texts, and a
// double click (or Enter) that asks for the dataset's reports.
#include <QWidget>
#include <vector>

#include "report/series_overview.h"

class QLabel;
class QLineEdit;
class QTableWidget;

namespace tessaly::report {

class SeriesOverviewTable : public QWidget {
  Q_OBJECT
 public:
  enum Column { kDataset, kStatus, kModel, kTransform, kInterventions, kMape, kHoldOut, kNotes, kColumns };

  explicit SeriesOverviewTable(QWidget* parent = nullptr);
  void SetRows(std::vector<SeriesOverviewRow> rows);
  const std::vector<SeriesOverviewRow>& Rows() const { return rows_; }
  // The row of the table's visual row `visual` (after sorting); nullptr when out of range.
  const SeriesOverviewRow* RowAt(int visual) const;

  QLineEdit* txtFilter = nullptr;
  QTableWidget* tblSeries = nullptr;
  QLabel* lblCounts = nullptr;

 signals:
  // A dataset was double-clicked or chosen with Enter.
  void SeriesOpened(const QString& asc_file);

 private:
  void ApplyFilter();
  std::vector<SeriesOverviewRow> rows_;
};

}  // namespace tessaly::report
