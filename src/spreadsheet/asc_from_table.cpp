#include "spreadsheet/asc_from_table.h"

#include "dataset/asc_dataset.h"
#include "platform/paths.h"

namespace tessaly::spreadsheet {

namespace {
std::string NotNumber(const std::string& series, const std::string& where) {
  return "Type mismatch: the value of " + series + " at " + where + " is not a number.";
}
}  // namespace

bool clsCreateASC::Write_File() {
  ErrorString.clear();
  if (!ADO_Recordset) {
    ErrorString = "No recordset to write.";
    return false;
  }
  fs::path folder = OutputFolder.empty() ? platform::ProgramFolder() : OutputFolder;
  fs::path target = Filename.is_absolute() ? Filename : folder / Filename;
  Recordset& rs = *ADO_Recordset;
  std::vector<dataset::AscColumn> columns;
  for (size_t f = 0; f < rs.Fields.size(); ++f) {
    dataset::AscColumn column;
    column.name = rs.Fields[f];
    int record = 1;
    for (rs.MoveFirst(); !rs.EOF_(); rs.MoveNext(), ++record) {
      auto v = rs.Value(f).AsDouble();
      if (!v) {
        ErrorString = NotNumber(column.name, "record " + std::to_string(record));
        return false;
      }
      column.values.push_back(*v);
    }
    columns.push_back(std::move(column));
  }
  if (!dataset::WriteAscFile(target, SeriesProperties, columns)) {
    ErrorString = "Path/File access error: " + target.string();
    return false;
  }
  return true;
}

bool GridLayout::Value(int s, int r, std::optional<double>& value) const {
  int row = tabular ? r : s, col = tabular ? s : r;
  const Cell& c = grid->At(row, col);
  if (c.Empty()) {
    value.reset();
    return true;
  }
  double v;
  if (!grid->NumericValue(row, col, v)) return false;
  value = v;
  return true;
}

std::vector<int> AllRecords(const Grid& grid, bool tabular, bool names_in_first) {
  std::vector<int> records;
  int last = tabular ? grid.MaxRows() : grid.MaxCols();
  for (int r = names_in_first ? 2 : 1; r <= last; ++r) records.push_back(r);
  return records;
}

namespace {
bool Gather(const GridLayout& layout, const GridSeries& s, const std::string& name,
            dataset::AscColumn& column, std::string& error) {
  column.name = name;
  column.values.clear();
  for (int r : layout.records) {
    std::optional<double> v;
    if (!layout.Value(s.index, r, v)) {
      error = NotNumber(s.FieldName.empty() ? name : s.FieldName,
                        (layout.tabular ? "row " : "column ") + std::to_string(r));
      return false;
    }
    column.values.push_back(v);
  }
  return true;
}
}  // namespace

GridWriteResult WriteAscFromGrid(const GridLayout& layout, const std::vector<GridSeries>& series,
                                 const std::string& output_series, const std::string& output_name,
                                 dataset::clSeriesProperties properties, const fs::path& file) {
  GridWriteResult result;
  std::vector<const GridSeries*> marked, inputs;
  const GridSeries* output = nullptr;
  for (const auto& s : series)
    if (s.marked) marked.push_back(&s);
  for (const GridSeries* s : marked) {
    if (!output_series.empty() && !output && s->NewName == output_series)
      output = s;
    else
      inputs.push_back(s);
  }
  std::string last_name = output ? output->NewName : output_name;
  if (!output && !inputs.empty()) {
    output = inputs.back();
    inputs.pop_back();
    if (last_name.empty()) last_name = output->NewName;
  }
  if (!output) {
    result.ok = false;
    result.ErrorString = "No series is marked.";
    return result;
  }
  properties.SetNumberOfSeries(static_cast<int16_t>(marked.size()));
  properties.SetNumberOfObservations(static_cast<int16_t>(layout.records.size()));
  properties.SetNumberOfFurtureValues(0);
  properties.SetNumberOfRetainedValues(0);
  std::vector<dataset::AscColumn> columns(inputs.size() + 1);
  for (size_t i = 0; i < inputs.size(); ++i)
    if (!Gather(layout, *inputs[i], inputs[i]->NewName, columns[i], result.ErrorString)) {
      result.ok = false;
      return result;
    }
  if (!Gather(layout, *output, last_name, columns.back(), result.ErrorString)) {
    result.ok = false;
    return result;
  }
  if (!dataset::WriteAscFile(file, properties, columns)) {
    result.ok = false;
    result.ErrorString = "Path/File access error: " + file.string();
    return result;
  }
  result.written.push_back(file);
  return result;
}

GridWriteResult WriteAscPerSeries(const GridLayout& layout, const std::vector<GridSeries>& series,
                                  dataset::clSeriesProperties properties, const fs::path& folder,
                                  const std::function<void(const std::string&)>& status) {
  GridWriteResult result;
  auto say = [&](const char* text) {
    if (status) status(text);
  };
  properties.SetNumberOfSeries(1);
  properties.SetNumberOfObservations(static_cast<int16_t>(layout.records.size()));
  properties.SetNumberOfFurtureValues(0);
  properties.SetNumberOfRetainedValues(0);
  for (const auto& s : series) {
    if (!s.marked) continue;
    say("Open File");
    fs::path file = folder / (s.NewName + ".asc");
    say("Gather Data");
    std::vector<dataset::AscColumn> columns(1);
    if (!Gather(layout, s, s.NewName, columns[0], result.ErrorString)) {
      result.ok = false;
      continue;  // the other series are still written
    }
    say("Write File");
    if (!dataset::WriteAscFile(file, properties, columns)) {
      result.ok = false;
      result.ErrorString = "Path/File access error: " + file.string();
      continue;
    }
    result.written.push_back(file);
  }
  return result;
}

}  // namespace tessaly::spreadsheet
