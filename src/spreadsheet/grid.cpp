#include "spreadsheet/grid.h"

#include <cmath>
#include <stdexcept>

#include "platform/dates.h"
#include "platform/numfmt.h"

namespace tessaly::spreadsheet {

namespace {
const Cell kEmpty;
}

const Cell& Grid::At(int row, int col) const {
  if (row < 1 || col < 1 || row > MaxRows()) return kEmpty;
  const auto& r = rows_[row - 1];
  if (col > static_cast<int>(r.size())) return kEmpty;
  return r[col - 1];
}

Cell& Grid::Slot(int row, int col) {
  if (row < 1 || col < 1) throw std::out_of_range("grid cell outside the sheet");
  if (row > MaxRows()) rows_.resize(row);
  auto& r = rows_[row - 1];
  if (col > static_cast<int>(r.size())) r.resize(col);
  if (col > max_cols_) max_cols_ = col;
  return r[col - 1];
}

void Grid::SetNumber(int row, int col, double value, bool is_date) {
  Cell& c = Slot(row, col);
  c.kind = Cell::Kind::Number;
  c.number = value;
  c.text.clear();
  c.is_date = is_date;
}

void Grid::SetText(int row, int col, std::string text) {
  Cell& c = Slot(row, col);
  c.kind = Cell::Kind::Text;
  c.number = 0;
  c.text = std::move(text);
  c.is_date = false;
}

void Grid::ClearCell(int row, int col) {
  if (row < 1 || col < 1 || row > MaxRows()) return;
  auto& r = rows_[row - 1];
  if (col <= static_cast<int>(r.size())) r[col - 1] = Cell();
}

std::string Grid::Text(int row, int col) const {
  const Cell& c = At(row, col);
  switch (c.kind) {
    case Cell::Kind::Empty:
      return "";
    case Cell::Kind::Text:
      return c.text;
    case Cell::Kind::Number:
      if (c.is_date) return platform::dates::FormatIso(platform::dates::FromDaySerial(
                             static_cast<long>(std::floor(c.number))));
      return platform::NumberToText(c.number);
  }
  return "";
}

bool Grid::NumericValue(int row, int col, double& value) const {
  const Cell& c = At(row, col);
  if (c.kind == Cell::Kind::Number) {
    value = c.number;
    return true;
  }
  if (c.kind != Cell::Kind::Text) return false;
  auto v = platform::ToDouble(c.text);
  if (!v) return false;
  value = *v;
  return true;
}

}  // namespace tessaly::spreadsheet
