#include "spreadsheet/forms/grid_view.h"

#include <QTableWidget>
#include <algorithm>

namespace tessaly::spreadsheet {

void ShowGrid(QTableWidget* table, const Grid& grid, int max_rows) {
  table->clear();
  int rows = std::min(grid.MaxRows(), max_rows), cols = grid.MaxCols();
  table->setRowCount(rows);
  table->setColumnCount(cols);
  for (int r = 1; r <= rows; ++r)
    for (int c = 1; c <= cols; ++c) {
      const Cell& cell = grid.At(r, c);
      if (cell.Empty()) continue;
      auto* item = new QTableWidgetItem(QString::fromStdString(grid.Text(r, c)));
      if (cell.IsNumber()) item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
      item->setFlags(item->flags() & ~Qt::ItemIsEditable);
      table->setItem(r - 1, c - 1, item);
    }
}

}  // namespace tessaly::spreadsheet
