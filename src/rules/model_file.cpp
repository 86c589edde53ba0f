#include "rules/model_file.h"

#include <algorithm>

#include "engine/model_file.h"
#include "platform/numfmt.h"
#include "platform/text.h"
#include "platform/textfile.h"
#include "rules/rule_values.h"

namespace tessaly::rules {

using platform::RightJustify;
using platform::Val;
using platform::ValInt;

std::vector<std::string> ModelTable::Row(int row) const {
  std::vector<std::string> out;
  for (const std::string& c : cells_[Index(row)]) {
    if (c.empty()) break;
    out.push_back(c);
  }
  return out;
}

void ModelTable::SetRow(int row, const std::vector<std::string>& cells) {
  for (size_t c = 0; c < Index(kCols); ++c)
    cells_[Index(row)][c] = c < cells.size() ? cells[c] : std::string();
}

bool ModelTable::Empty() const { return IsBlank(cells_[0][0]); }

void ModelTable::Clear() { ClearRows(0, kRows - 1); }

void ModelTable::ClearRows(int first, int last) {
  for (int r = std::max(first, 0); r <= last && r < kRows; ++r)
    for (auto& c : cells_[Index(r)]) c.clear();
}

bool WriteModelFile(const fs::path& file, const ModelTable& table, int series_count) {
  platform::TextWriter out(file);
  if (!out.IsOpen()) return false;
  for (int r = 0; r < series_count && r < ModelTable::kRows; ++r)
    for (const std::string& cell : table.Row(r)) out.Line(cell);
  return out.Close();
}

int SeriesCountOfNameLine(const std::string& line) {
  return line.size() > 37 ? ValInt(line.substr(37, 4)) : 0;
}

std::optional<int> ReadModelFile(const fs::path& file, ModelTable& table) {
  auto lines = platform::ReadAllLines(file);
  if (!lines || lines->empty()) return std::nullopt;
  // The engine's reader decides whether the file is a model: one the engine would refuse is
  // not shown on the pages either, and the wizard starts from a new model.
  if (!quorvane::ParseModelFile(*lines)) {
    table.Clear();
    return std::nullopt;
  }
  int count = SeriesCountOfNameLine((*lines)[0]);
  table.ClearRows(0, count - 1);
  int row = -1, col = 0;
  for (const std::string& line : *lines) {
    bool opens_row = row < 0 || col >= ModelTable::kCols || (!line.empty() && line[0] != ' ');
    if (opens_row) {
      ++row;
      col = 0;
      if (row >= ModelTable::kRows) break;
      for (int c = 0; c < ModelTable::kCols; ++c) table.Cell(row, c).clear();
    }
    table.Cell(row, col++) = line;
  }
  return count;
}

std::vector<std::string> SplitList(const std::string& text) {
  std::string t = Trim(text);
  std::vector<std::string> items;
  if (t.empty()) return items;
  size_t start = 0;
  while (true) {
    size_t blank = t.find(' ', start);
    items.push_back(t.substr(start, blank == std::string::npos ? std::string::npos : blank - start));
    if (blank == std::string::npos) break;
    start = blank + 1;
  }
  return items;
}

namespace {

std::string Ints6(const std::string& list) {
  std::string out;
  for (const std::string& item : SplitList(list)) out += RightJustify(item, 6);
  return out;
}

std::string Reals12(const std::string& list) {
  std::string out;
  for (const std::string& item : SplitList(list)) out += RightJustify(LeftChars(item, 8), 12);
  return out;
}

std::string Int6(int v) { return RightJustify(std::to_string(v), 6); }

// Fields of a fixed width from a line; `n` of them from field `first` on, trimmed.
// Fields `first` to `first + n` of a fixed-width line. Counts come from the file, so a
// negative one reads nothing and no more fields are read than the line holds: a count of
// -1 or 9e9999 must not make the page allocate without end.
std::vector<std::string> Chunks(const std::string& line, size_t width, long long first, long long n) {
  std::vector<std::string> out;
  const long long held = static_cast<long long>((line.size() + width - 1) / width);
  if (first < 0 || n <= 0 || first >= held) return out;
  const long long last = first + std::min(n, held - first);
  for (long long i = first; i < last; ++i) {
    size_t col = static_cast<size_t>(i) * width;
    out.push_back(col < line.size() ? Trim(line.substr(col, width)) : std::string());
  }
  return out;
}

std::string Join(const std::vector<std::string>& items) {
  std::string out;
  for (const std::string& s : items) {
    if (!out.empty()) out += ' ';
    out += s;
  }
  return Trim(out);
}

int SumOf(const std::vector<std::string>& items) {
  long long s = 0;
  for (const std::string& i : items) s += ValInt(i);
  return platform::ToIntClamped(static_cast<double>(s));
}

std::string CountText(int count) { return std::to_string(count); }

std::string LambdaText(const std::string& cell) {
  return platform::FormatNumber(Val(Trim(LeftChars(cell, 12))), "#.00;-#.0");
}

void Fallback(TextField& f, const char* value) {
  if (IsBlank(f.text)) f.text = value;
}

}  // namespace

void SetNoiseDefaults(StartmodPage& p) {
  p.txtStartmod1.text = "10.0";
  p.txtStartmod2.text = "1.00";
  p.txtStartmod3.text = "0";
  p.txtStartmod4.text.clear();
  p.txtStartmod5.text = "0";
  p.txtStartmod6.text = "0";
  for (TextField* f : {&p.txtStartmod7, &p.txtStartmod8, &p.txtStartmod9, &p.txtStartmod10,
                       &p.txtStartmod11, &p.txtStartmod12})
    f->text.clear();
}

void SetInputDefaults(InputmodPage& p) {
  p.txtInputmod2.text = "1.0";
  p.txtInputmod3.text = "0";
  p.txtInputmod4.text.clear();
  p.txtInputmod5.text = "0";
  p.txtInputmod6.text = "1";
  p.txtInputmod7.text.clear();
  p.txtInputmod8.text.clear();
  p.txtInputmod9.text.clear();
  p.txtInputmod10.text = "1";
  p.txtInputmod11.text = "0";
  p.txtInputmod12.text = "1.0";
}

std::vector<std::string> BuildNoiseRow(const StartmodPage& p, const std::string& series_name,
                                       int series_count) {
  std::vector<std::string> row;
  std::string count = CountText(series_count);
  std::string name_line = series_name;
  if (name_line.size() + count.size() < 41) name_line.append(41 - name_line.size() - count.size(), ' ');
  row.push_back(name_line + count);

  // One series: a constant of 0 or less counts as none. With inputs, an empty field does.
  bool constant = series_count == 1 ? Val(p.txtStartmod1.text) > 0 : !IsBlank(p.txtStartmod1.text);
  row.push_back(Int6(constant ? 1 : 0));
  if (constant) {
    std::string c = Trim(p.txtStartmod1.text);
    if (c.find('.') == std::string::npos) c += ".0";
    row.push_back(RightJustify(c, 12));
  }
  row.push_back(RightJustify(Trim(p.txtStartmod2.text), 12) + std::string(9, ' ') + "0.0");
  int ar = ValInt(p.txtStartmod5.text);
  int diff = ValInt(p.txtStartmod3.text);
  int ma = ValInt(p.txtStartmod6.text);
  row.push_back(Int6(ar) + Int6(diff) + Int6(ma));
  if (diff > 0) row.push_back(Ints6(p.txtStartmod4.text));
  if (static_cast<long long>(ar) + ma > 0) {
    row.push_back(platform::TrimEnd(Ints6(p.txtStartmod7.text)) + platform::TrimEnd(Ints6(p.txtStartmod10.text)));
    row.push_back(Ints6(p.txtStartmod8.text) + Ints6(p.txtStartmod11.text));
    row.push_back(Reals12(p.txtStartmod9.text) + Reals12(p.txtStartmod12.text));
  }
  return row;
}

std::vector<std::string> BuildInputRow(const InputmodPage& p) {
  std::vector<std::string> row;
  row.push_back(p.series_name);
  row.push_back(RightJustify(Trim(p.txtInputmod2.text), 12));
  int den = ValInt(p.txtInputmod5.text);
  int diff = ValInt(p.txtInputmod3.text);
  int num = ValInt(p.txtInputmod6.text);
  row.push_back(Int6(den) + Int6(diff) + Int6(num));
  if (diff > 0) row.push_back(Ints6(p.txtInputmod4.text));
  if (static_cast<long long>(den) + num > 0) {
    row.push_back(platform::TrimEnd(Ints6(p.txtInputmod7.text)) + platform::TrimEnd(Ints6(p.txtInputmod10.text)));
    row.push_back(Ints6(p.txtInputmod8.text) + Ints6(p.txtInputmod11.text));
    row.push_back(Reals12(p.txtInputmod9.text) + Reals12(p.txtInputmod12.text));
  }
  return row;
}

void FillNoisePage(const std::vector<std::string>& row, StartmodPage& p) {
  for (TextField* f : {&p.txtStartmod1, &p.txtStartmod2, &p.txtStartmod3, &p.txtStartmod4,
                       &p.txtStartmod5, &p.txtStartmod6, &p.txtStartmod7, &p.txtStartmod8,
                       &p.txtStartmod9, &p.txtStartmod10, &p.txtStartmod11, &p.txtStartmod12})
    f->text.clear();
  auto cell = [&](size_t i) { return i < row.size() ? row[i] : std::string(); };
  size_t at = 1;
  bool constant = Val(Trim(cell(at++))) == 1;
  if (constant) p.txtStartmod1.text = platform::NumberToText(Val(cell(at++)));
  if (!IsBlank(cell(at))) p.txtStartmod2.text = LambdaText(cell(at));
  ++at;
  std::vector<std::string> counts = Chunks(cell(at++), 6, 0, 3);
  counts.resize(3);  // a short line: the counts it lacks are blank
  int ar = ValInt(counts[0]);
  int diff = ValInt(counts[1]);
  int ma = ValInt(counts[2]);
  if (!IsBlank(counts[0])) p.txtStartmod5.text = CountText(ar);
  if (!IsBlank(counts[1])) p.txtStartmod3.text = CountText(diff);
  if (!IsBlank(counts[2])) p.txtStartmod6.text = CountText(ma);
  if (diff > 0) {
    std::string line = cell(at++);
    p.txtStartmod4.text = Join(Chunks(line, 6, 0, static_cast<long long>((line.size() + 5) / 6)));
  }
  if (static_cast<long long>(ar) + ma > 0) {  // counts from the file may be as large as an int
    std::string params = cell(at++), powers = cell(at++), coefs = cell(at++);
    auto ar_params = Chunks(params, 6, 0, ar);
    auto ma_params = Chunks(params, 6, ar, ma);
    int ar_n = SumOf(ar_params), ma_n = SumOf(ma_params);
    p.txtStartmod7.text = Join(ar_params);
    p.txtStartmod10.text = Join(ma_params);
    p.txtStartmod8.text = Join(Chunks(powers, 6, 0, ar_n));
    p.txtStartmod11.text = Join(Chunks(powers, 6, ar_n, ma_n));
    p.txtStartmod9.text = Join(Chunks(coefs, 12, 0, ar_n));
    p.txtStartmod12.text = Join(Chunks(coefs, 12, ar_n, ma_n));
  }
  if (!constant && IsBlank(p.txtStartmod1.text)) {
    // No constant in the model: the field stays empty rather than taking its default.
  } else {
    Fallback(p.txtStartmod1, "10.0");
  }
  Fallback(p.txtStartmod2, "1.00");
  Fallback(p.txtStartmod3, "0");
  Fallback(p.txtStartmod5, "0");
  Fallback(p.txtStartmod6, "0");
}

void FillInputPage(const std::vector<std::string>& row, InputmodPage& p) {
  for (TextField* f : {&p.txtInputmod2, &p.txtInputmod3, &p.txtInputmod4, &p.txtInputmod5,
                       &p.txtInputmod6, &p.txtInputmod7, &p.txtInputmod8, &p.txtInputmod9,
                       &p.txtInputmod10, &p.txtInputmod11, &p.txtInputmod12})
    f->text.clear();
  auto cell = [&](size_t i) { return i < row.size() ? row[i] : std::string(); };
  size_t at = 1;
  if (!IsBlank(cell(at))) p.txtInputmod2.text = LambdaText(cell(at));
  ++at;
  std::vector<std::string> counts = Chunks(cell(at++), 6, 0, 3);
  counts.resize(3);  // a short line: the counts it lacks are blank
  int den = ValInt(counts[0]);
  int diff = ValInt(counts[1]);
  int num = ValInt(counts[2]);
  if (!IsBlank(counts[0])) p.txtInputmod5.text = CountText(den);
  if (!IsBlank(counts[1])) p.txtInputmod3.text = CountText(diff);
  if (!IsBlank(counts[2])) p.txtInputmod6.text = CountText(num);
  if (diff > 0) {
    std::string line = cell(at++);
    p.txtInputmod4.text = Join(Chunks(line, 6, 0, static_cast<long long>((line.size() + 5) / 6)));
  }
  if (static_cast<long long>(den) + num > 0) {
    std::string params = cell(at++), powers = cell(at++), coefs = cell(at++);
    auto den_params = Chunks(params, 6, 0, den);
    auto num_params = Chunks(params, 6, den, num);
    int den_n = SumOf(den_params), num_n = SumOf(num_params);
    p.txtInputmod7.text = Join(den_params);
    p.txtInputmod10.text = Join(num_params);
    p.txtInputmod8.text = Join(Chunks(powers, 6, 0, den_n));
    p.txtInputmod11.text = Join(Chunks(powers, 6, den_n, num_n));
    p.txtInputmod9.text = Join(Chunks(coefs, 12, 0, den_n));
    p.txtInputmod12.text = Join(Chunks(coefs, 12, den_n, num_n));
  }
  Fallback(p.txtInputmod2, "1.0");
  Fallback(p.txtInputmod3, "0");
  Fallback(p.txtInputmod5, "0");
  Fallback(p.txtInputmod6, "1");
  Fallback(p.txtInputmod10, "1");
  Fallback(p.txtInputmod11, "0");
  Fallback(p.txtInputmod12, "1.0");
}

}  // namespace tessaly::rules
