#pragma once
// The grid that stands for the spreadsheet control: a plain table of cells addressed by
// row and column from 1, as the wizard, the dataset writers and the runner read and write
// it. A cell is empty, a number (a date is a number, the running day number, marked as a
// date) or text. The Qt view of a grid lives in forms/.
#include <string>
#include <vector>

namespace tessaly::spreadsheet {

struct Cell {
  enum class Kind { Empty, Number, Text };
  Kind kind = Kind::Empty;
  double number = 0;
  std::string text;
  bool is_date = false;  // a number shown as a date: the running day number (day 0 = 30/12/1899)

  bool Empty() const { return kind == Kind::Empty || (kind == Kind::Text && text.empty()); }
  bool IsNumber() const { return kind == Kind::Number; }
};

class Grid {
 public:
  // The used extent: the last row and the last column that hold anything.
  int MaxRows() const { return static_cast<int>(rows_.size()); }
  int MaxCols() const { return max_cols_; }

  // The cell at (row, col), 1-based; outside the used extent an empty cell.
  const Cell& At(int row, int col) const;
  void SetNumber(int row, int col, double value, bool is_date = false);
  void SetText(int row, int col, std::string text);
  void ClearCell(int row, int col);

  // The cell as the grid shows it: a number in the default number text, a date as
  // "YYYY-MM-DD", text as it stands, an empty cell "".
  std::string Text(int row, int col) const;
  // The cell's value when it is a number, or a text that reads as one (blanks around it
  // allowed); nullopt for an empty cell or other text.
  [[nodiscard]] bool NumericValue(int row, int col, double& value) const;

 private:
  Cell& Slot(int row, int col);
  std::vector<std::vector<Cell>> rows_;
  int max_cols_ = 0;
};

}  // namespace tessaly::spreadsheet
