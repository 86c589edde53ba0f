#pragma once
// The model a user reviews, edits or reuses: the model table (150 rows of up to ten text
// cells, one cell a line of STARTMOD.123), its fixed-column lines, and the mapping between
// a row and the wizard's noise and input pages.
#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "rules/pages.h"

namespace tessaly::rules {

namespace fs = std::filesystem;

class ModelTable {
 public:
  static constexpr int kRows = 150;
  static constexpr int kCols = 10;

  std::string& Cell(int row, int col) { return cells_[Index(row)][Index(col)]; }
  const std::string& Cell(int row, int col) const { return cells_[Index(row)][Index(col)]; }
  // The cells of a row up to its first empty one.
  std::vector<std::string> Row(int row) const;
  void SetRow(int row, const std::vector<std::string>& cells);
  // No model is in memory while the first cell of row 0 is blank.
  bool Empty() const;
  void Clear();
  void ClearRows(int first, int last);

 private:
  static size_t Index(int i) { return static_cast<size_t>(i); }
  std::array<std::array<std::string, kCols>, kRows> cells_;
};

// Writes rows 0 to series_count - 1, each up to its first empty cell, one cell a line.
bool WriteModelFile(const fs::path& file, const ModelTable& table, int series_count);
// Reads a saved model into the table; returns the series count of its first line
// (columns 38 to 41). Nullopt when the file cannot be read or is not a model the engine
// reads (the table is then empty).
[[nodiscard]] std::optional<int> ReadModelFile(const fs::path& file, ModelTable& table);

// The count of series as the model's first line holds it.
int SeriesCountOfNameLine(const std::string& line);

// ---- Pages <-> rows ---------------------------------------------------------------------

void SetNoiseDefaults(StartmodPage& page);
void SetInputDefaults(InputmodPage& page);

// A row's cells for a validated page. The count of series stands right-justified, ending
// in column 41 of the name line.
std::vector<std::string> BuildNoiseRow(const StartmodPage& page, const std::string& series_name,
                                       int series_count);
std::vector<std::string> BuildInputRow(const InputmodPage& page);

// Fills a page from a row; fields the row leaves blank fall back to their defaults.
void FillNoisePage(const std::vector<std::string>& row, StartmodPage& page);
void FillInputPage(const std::vector<std::string>& row, InputmodPage& page);

// Lists of the pages: split at blanks, the count of items being the count of blanks + 1.
std::vector<std::string> SplitList(const std::string& text);

}  // namespace tessaly::rules
