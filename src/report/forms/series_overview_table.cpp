#include "report/forms/series_overview_table.h"

#include <QBrush>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QTableWidget>
#include <QVBoxLayout>
#include <QHBoxLayout>

namespace tessaly::report {

namespace {

constexpr int kRowRole = Qt::UserRole + 1;

QString Text(const std::string& s) { return QString::fromStdString(s); }

QTableWidgetItem* TextItem(const QString& text) {
  auto* item = new QTableWidgetItem(text);
  item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled);
  return item;
}

// Numbers sort as numbers; a missing figure is empty and sorts first.
QTableWidgetItem* NumberItem(std::optional<double> value, int decimals) {
  auto* item = TextItem(QString());
  if (value) item->setData(Qt::DisplayRole, QString::number(*value, 'f', decimals).toDouble());
  item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
  return item;
}

QString Notes(const SeriesOverviewRow& row) {
  if (row.status == SeriesStatus::Rejected || row.status == SeriesStatus::Failed) return Text(row.reason);
  QStringList warnings;
  for (const std::string& w : row.warnings) warnings << Text(w);
  return warnings.join("; ");
}

}  // namespace

SeriesOverviewTable::SeriesOverviewTable(QWidget* parent) : QWidget(parent) {
  setObjectName("tblSeriesOverview");
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(4, 4, 4, 0);
  auto* bar = new QHBoxLayout();
  auto* title = new QLabel("<b>Series</b>", this);
  txtFilter = new QLineEdit(this);
  txtFilter->setObjectName("txtFilter");
  txtFilter->setPlaceholderText("Filter: name, status, model, warning...");
  txtFilter->setClearButtonEnabled(true);
  lblCounts = new QLabel(this);
  lblCounts->setObjectName("lblCounts");
  bar->addWidget(title);
  bar->addWidget(txtFilter, 1);
  bar->addWidget(lblCounts);
  layout->addLayout(bar);

  tblSeries = new QTableWidget(0, kColumns, this);
  tblSeries->setObjectName("tblSeries");
  tblSeries->setHorizontalHeaderLabels(
      {"Dataset", "Status", "Model", "Transform", "Interventions", "MAPE %", "Hold-out MAPE %", "Warnings / reason"});
  tblSeries->setSelectionBehavior(QAbstractItemView::SelectRows);
  tblSeries->setSelectionMode(QAbstractItemView::SingleSelection);
  tblSeries->setEditTriggers(QAbstractItemView::NoEditTriggers);
  tblSeries->setAlternatingRowColors(true);
  tblSeries->verticalHeader()->setVisible(false);
  tblSeries->horizontalHeader()->setStretchLastSection(true);
  tblSeries->setWordWrap(false);
  layout->addWidget(tblSeries, 1);

  connect(txtFilter, &QLineEdit::textChanged, this, [this] { ApplyFilter(); });
  auto open = [this](int visual) {
    if (const SeriesOverviewRow* row = RowAt(visual)) emit SeriesOpened(Text(row->asc_file));
  };
  connect(tblSeries, &QTableWidget::cellDoubleClicked, this, [open](int r, int) { open(r); });
  connect(tblSeries, &QTableWidget::cellActivated, this, [open](int r, int) { open(r); });
}

void SeriesOverviewTable::SetRows(std::vector<SeriesOverviewRow> rows) {
  rows_ = std::move(rows);
  const bool sorting = tblSeries->isSortingEnabled();
  tblSeries->setSortingEnabled(false);
  tblSeries->setRowCount(static_cast<int>(rows_.size()));
  int counts[4] = {};
  for (int i = 0; i < static_cast<int>(rows_.size()); ++i) {
    const SeriesOverviewRow& row = rows_[static_cast<size_t>(i)];
    ++counts[static_cast<int>(row.status)];
    auto* name = TextItem(Text(row.dataset));
    name->setData(kRowRole, i);
    name->setToolTip(Text(row.asc_file) + (row.series.empty() ? QString() : " (" + Text(row.series) + ")"));
    auto* status = TextItem(StatusText(row.status));
    if (row.status == SeriesStatus::Rejected || row.status == SeriesStatus::Failed)
      status->setForeground(QBrush(QColor(0xb0, 0x2a, 0x1e)));
    else if (row.status == SeriesStatus::NotRun)
      status->setForeground(QBrush(Qt::gray));
    auto* notes = TextItem(Notes(row));
    notes->setToolTip(notes->text());
    tblSeries->setItem(i, kDataset, name);
    tblSeries->setItem(i, kStatus, status);
    tblSeries->setItem(i, kModel, TextItem(Text(row.model)));
    tblSeries->setItem(i, kTransform, TextItem(Text(row.transform)));
    tblSeries->setItem(i, kInterventions,
                       NumberItem(row.interventions ? std::optional<double>(*row.interventions) : std::nullopt, 0));
    tblSeries->setItem(i, kMape, NumberItem(row.mape, 2));
    auto* hold_out = NumberItem(row.holdout_mape, 2);
    if (row.holdout_mape) hold_out->setToolTip(QString("on %1 retained values").arg(row.holdout_count));
    tblSeries->setItem(i, kHoldOut, hold_out);
    tblSeries->setItem(i, kNotes, notes);
  }
  tblSeries->setSortingEnabled(true);
  if (!sorting) tblSeries->sortItems(-1);
  tblSeries->resizeColumnsToContents();
  // A long reason stays readable in its tooltip rather than widening the table.
  tblSeries->setColumnWidth(kNotes, std::min(tblSeries->columnWidth(kNotes), 420));
  lblCounts->setText(QString("%1 datasets: %2 forecast, %3 rejected, %4 failed, %5 not run")
                         .arg(rows_.size())
                         .arg(counts[0])
                         .arg(counts[1])
                         .arg(counts[2])
                         .arg(counts[3]));
  ApplyFilter();
}

const SeriesOverviewRow* SeriesOverviewTable::RowAt(int visual) const {
  const QTableWidgetItem* item = tblSeries->item(visual, kDataset);
  if (!item) return nullptr;
  const int index = item->data(kRowRole).toInt();
  return index >= 0 && index < static_cast<int>(rows_.size()) ? &rows_[static_cast<size_t>(index)] : nullptr;
}

void SeriesOverviewTable::ApplyFilter() {
  const std::string filter = txtFilter->text().toStdString();
  for (int r = 0; r < tblSeries->rowCount(); ++r) {
    const SeriesOverviewRow* row = RowAt(r);
    tblSeries->setRowHidden(r, row && !RowMatches(*row, filter));
  }
}

}  // namespace tessaly::report
