#pragma once
// The Qt view of a grid: a QTableWidget showing the cells as the grid shows them.
#include "spreadsheet/grid.h"

class QTableWidget;

namespace tessaly::spreadsheet {

// Fills the table with the grid's cells, at most `max_rows` rows (a preview of a long sheet).
void ShowGrid(QTableWidget* table, const Grid& grid, int max_rows = 500);

}  // namespace tessaly::spreadsheet
