#include "aggregate/parent_child_files.h"

#include "aggregate/reconcile.h"
#include "dataset/asc_dataset.h"
#include "platform/numfmt.h"
#include "platform/paths.h"
#include "platform/textfile.h"

namespace tessaly::aggregate {

namespace {

std::string Trim(const std::string& text) { return dataset::TrimBlanks(text); }

long CountOf(const std::string& text) {
  const double v = platform::Val(text);
  return v > 0 ? static_cast<long>(v) : 0;
}

void AppendValues(std::vector<std::string>& lines, const std::vector<double>& values, long count) {
  for (long i = 0; i < count; ++i)
    lines.push_back(platform::NumberToText(i < static_cast<long>(values.size()) ? values[i] : 0.0));
}

}  // namespace

ChildHistories LoadChildren(const fs::path& in_directory, const std::vector<std::string>& chosen) {
  ChildHistories h;
  std::size_t longest = 0;
  for (const std::string& name : chosen) {
    std::vector<double> values;
    platform::LineReader reader(platform::ResolveNoCase(in_directory, name));
    if (reader.IsOpen() && reader.Skip(13)) {
      while (values.size() < static_cast<std::size_t>(kMaxChildObservations)) {
        auto line = reader.Next();
        if (!line) break;
        values.push_back(platform::ToDouble(Trim(*line)).value_or(0.0));
      }
    }
    longest = std::max(longest, values.size());
    h.child.push_back(std::move(values));
  }
  h.sum.assign(longest, 0.0);
  for (std::size_t obs = 0; obs < longest; ++obs) {
    double total = 0;
    for (const auto& c : h.child)
      if (obs < c.size()) total += c[obs];
    h.sum[obs] = total;
  }
  return h;
}

std::string ParentSeriesName(const std::string& date) {
  if (date.empty()) return kParentName;
  std::string month, day;
  if (date.size() == 10) {
    month = date.substr(0, 2);
    day = date.substr(3, 2);
  } else if (date.size() > 1 && date[1] == '/') {
    month = "0" + date.substr(0, 1);
    day = date.size() > 3 && date[3] == '/' ? "0" + date.substr(2, 1) : date.substr(2, 2);
  } else {
    month = date.substr(0, 2);
    day = date.size() > 4 && date[4] == '/' ? "0" + date.substr(3, 1) : date.substr(3, 2);
  }
  const std::string year = date.size() >= 2 ? date.substr(date.size() - 2) : date;
  return std::string(kParentName) + "__" + month + day + year;
}

std::vector<std::string> ParentAscLines(const AscShape& shape, const ChildHistories& histories,
                                        const std::string& first_observation_date) {
  const bool fixed_off = shape.fixed_effects_choice == 1;
  std::vector<std::string> lines{"0", "0", "0", "1", Trim(shape.seasonality),
                                 fixed_off ? "1" : Trim(shape.major_period),
                                 fixed_off ? "1" : Trim(shape.minor_period),
                                 Trim(shape.observations), "0", "0",
                                 Trim(shape.number_of_forecasts),
                                 ParentSeriesName(first_observation_date), "0"};
  AppendValues(lines, histories.sum, CountOf(shape.observations));
  return lines;
}

std::vector<std::string> ChildAscLines(const AscShape& shape, const ParentProps& parent,
                                       const std::string& child_name,
                                       const std::vector<double>& child_history,
                                       const ChildHistories& histories, bool causal,
                                       const std::vector<double>& parent_forecasts) {
  const bool fixed_off = shape.fixed_effects_choice == 1;
  const long observations = CountOf(shape.observations);
  std::vector<std::string> lines{"0", "0", "0", causal ? "2" : "1",
                                 fixed_off ? "7" : Trim(shape.seasonality),
                                 fixed_off ? "1" : Trim(shape.major_period),
                                 fixed_off ? "1" : Trim(shape.minor_period),
                                 Trim(shape.observations),
                                 causal ? parent.forecast_count : parent.future_count, "0",
                                 parent.forecast_count};
  if (causal) lines.push_back(kParentName);
  lines.push_back(child_name.size() >= 4 ? child_name.substr(0, child_name.size() - 4) : "");
  if (causal) lines.push_back("1");
  lines.push_back("0");
  if (causal) AppendValues(lines, histories.sum, observations);
  AppendValues(lines, child_history, observations);
  if (causal)
    for (double v : parent_forecasts) lines.push_back(platform::NumberToText(v));
  return lines;
}

std::vector<double> ForecastColumn(const fs::path& pro_file, long count) {
  std::vector<double> values;
  platform::LineReader reader(pro_file);
  if (!reader.IsOpen() || !reader.Skip(1)) return values;
  while (static_cast<long>(values.size()) < count) {
    auto line = reader.Next();
    if (!line) break;
    values.push_back(ReadProLine(*line).value[0]);
  }
  return values;
}

}  // namespace tessaly::aggregate
