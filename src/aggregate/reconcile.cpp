#include "aggregate/reconcile.h"

#include <algorithm>
#include <cmath>

#include "aggregate/mint.h"
#include "dataset/asc_dataset.h"
#include "platform/dates.h"
#include "platform/dialogs.h"
#include "platform/numfmt.h"
#include "platform/paths.h"
#include "platform/textfile.h"

namespace tessaly::aggregate {

namespace {

using Columns = std::array<double, 3>;
// period by column, one table per child
using Table = std::vector<std::vector<Columns>>;

constexpr const char* kMask = "0.0000000000";
const std::string kNine(9, ' ');

std::string Stem(const std::string& name) {
  return name.size() >= 4 ? name.substr(0, name.size() - 4) : std::string();
}

long Bound(long value) { return std::clamp(value, 0L, static_cast<long>(kMaxReconcilePeriods)); }

// A mask of "0.0000000000" followed by literal text, as the nesting builds it: every '0'
// after the point takes the next decimal, anything else is copied.
std::string FormatIntoMask(double value, const std::string& tail) {
  const std::string decimals_mask = std::string("0000000000") + tail;
  const auto places = std::count(decimals_mask.begin(), decimals_mask.end(), '0');
  const std::string digits =
      platform::FormatNumber(std::fabs(value), "0." + std::string(static_cast<std::size_t>(places), '0'));
  const auto point = digits.find('.');
  std::string out = (value < 0 && digits.find_first_of("123456789") != std::string::npos) ? "-" : "";
  out += digits.substr(0, point) + ".";
  std::size_t next = point + 1;
  for (char c : decimals_mask) out += c == '0' && next < digits.size() ? digits[next++] : c;
  return out;
}

// Each child's lines of its forecast file after the header, up to `bound`.
std::vector<std::string> ForecastLines(const fs::path& file, long bound, std::string* header = nullptr) {
  std::vector<std::string> lines;
  platform::LineReader reader(file);
  if (!reader.IsOpen()) return lines;
  auto first = reader.Next();
  if (!first) return lines;
  if (header) *header = *first;
  while (static_cast<long>(lines.size()) < bound) {
    auto line = reader.Next();
    if (!line) break;
    lines.push_back(*line);
  }
  return lines;
}

fs::path InOutput(const ReconcileInput& in, const std::string& name) {
  return platform::ResolveNoCase(in.output_path, name);
}

// Delete the target, copy the temporary file over it, delete the temporary file. A copy that
// fails keeps the temporary file, so the adjusted figures are not lost with the target.
void Replace(const fs::path& temporary, const fs::path& target) {
  std::error_code ec;
  fs::remove(target, ec);
  if (platform::CopyFileOver(temporary, target)) fs::remove(temporary, ec);
}

std::string Stamp() {
  const auto now = platform::dates::Now();
  return platform::dates::FormatMmDdYy(now.date) + "  " + platform::dates::FormatTime(now);
}

void WriteDetailTable(const ReconcileInput& in, long bound, bool own_names_only) {
  const fs::path table = InOutput(in, DetailTableName(in.batch_name));
  std::error_code ec;
  fs::remove(table, ec);
  platform::TextWriter out(table, platform::TextWriter::Mode::Append);
  const double product = platform::Val(in.number_of_forecasts) * static_cast<double>(in.chosen.size());
  out.Line(Stamp() + "     RECONCILED CHILDREN      TABLE OF " + platform::NumberToText(product) +
           " Forecast Values");
  for (std::size_t c = 0; c < in.chosen.size(); ++c) {
    const std::string file = own_names_only ? Stem(in.chosen[c]) + ".PRO" : ChildForecastName(in, c);
    for (const std::string& line : ForecastLines(InOutput(in, file), bound)) {
      out.Line(line.substr(0, 35) + "     " + Stem(in.chosen[c]));
      // The further line of Top Down: its blank count is negative for any real forecast
      // line, and then nothing is written.
      if (!own_names_only && line.size() <= 25)
        out.Line(std::string(10, ' ') + std::string(25 - line.size(), ' ') + line);
    }
  }
  // The reconciliation's tables go on past a failed write, as the aggregation's finish does.
  (void)out.Close();
}

void WritePeriodTable(const ReconcileInput& in, long bound) {
  std::vector<std::vector<double>> reconciled(in.chosen.size(), std::vector<double>(static_cast<std::size_t>(bound), 0.0));
  for (std::size_t c = 0; c < in.chosen.size(); ++c) {
    const auto lines = ForecastLines(InOutput(in, ChildForecastName(in, c)), bound);
    for (std::size_t p = 0; p < lines.size(); ++p) {
      const std::string trimmed = dataset::TrimBlanks(lines[p]);
      const std::string field = trimmed.size() > 9 ? trimmed.substr(9, 25) : std::string();
      reconciled[c][p] = platform::ToDouble(field).value_or(0.0);
    }
  }
  const fs::path table = InOutput(in, PeriodTableName(in.batch_name));
  std::error_code ec;
  fs::remove(table, ec);
  platform::TextWriter out(table, platform::TextWriter::Mode::Append);
  out.Line(Stamp() + "     RECONCILED FORECASTS FOR CHILD WITHIN PERIOD");
  for (long p = 0; p < bound; ++p)
    for (std::size_t c = 0; c < in.chosen.size(); ++c)
      out.Line("    " + std::to_string(p + 1) + "    " + std::to_string(c + 1) + kNine +
               platform::NumberToText(reconciled[c][static_cast<std::size_t>(p)]));
  // The reconciliation's tables go on past a failed write, as the aggregation's finish does.
  (void)out.Close();
}

void Status(const ReconcileInput& in, const std::string& text) {
  if (in.status) in.status(text);
}

void BottomUp(const ReconcileInput& in) {
  const long bound = Bound(static_cast<long>(platform::Val(in.number_of_forecasts)));
  std::vector<Columns> sums(static_cast<std::size_t>(bound), Columns{});
  // Column sums over the children in list order; a short file leaves its later periods 0.
  Table child(in.chosen.size(), std::vector<Columns>(static_cast<std::size_t>(bound), Columns{}));
  for (std::size_t c = 0; c < in.chosen.size(); ++c) {
    const auto lines = ForecastLines(InOutput(in, ChildForecastName(in, c)), bound);
    for (std::size_t p = 0; p < lines.size(); ++p) child[c][p] = ReadProLine(lines[p]).value;
  }
  Status(in, "Reconciling Parent to Children Forecasts(BOTTOM UP)");
  for (long p = 0; p < bound; ++p)
    for (int k = 0; k < 3; ++k) {
      double total = 0;
      for (std::size_t c = 0; c < in.chosen.size(); ++c) total += child[c][static_cast<std::size_t>(p)][k];
      sums[static_cast<std::size_t>(p)][k] = total;
    }
  const fs::path parent = InOutput(in, "GROUPT.PRO");
  const fs::path adjusted = InOutput(in, "GROUPT.AJD");
  std::string header;
  const auto lines = ForecastLines(parent, bound, &header);
  if (platform::ExistsNoCase(in.output_path, "GROUPT.PRO")) {
    platform::TextWriter out(adjusted);
    out.Line(header);
    for (std::size_t p = 0; p < lines.size(); ++p) out.Line(BottomUpLine(lines[p], sums[p]));
    // A parent file that could not be written whole is left as it was.
    if (out.Close()) Replace(adjusted, parent);
  }
  WriteDetailTable(in, bound, true);
  if (in.mixed_frequency) WritePeriodTable(in, bound);
}

void TopDown(const ReconcileInput& in) {
  const long bound = Bound(in.forecast_bound);
  const std::size_t periods = static_cast<std::size_t>(bound);
  // The shares are those of the first forecast period, the same for every period.
  std::vector<Columns> share(in.chosen.size(), Columns{});
  for (std::size_t c = 0; c < in.chosen.size(); ++c) {
    const auto first = ForecastLines(InOutput(in, ChildForecastName(in, c)), 1);
    if (!first.empty()) share[c] = ReadProLine(first[0]).value;
  }
  Columns sum{};
  for (std::size_t c = 0; c < in.chosen.size(); ++c)
    for (int k = 0; k < 3; ++k) sum[k] += share[c][k];
  std::vector<Columns> parent(periods, Columns{});
  const auto parent_lines = ForecastLines(InOutput(in, "GROUPT.PRO"), bound);
  for (std::size_t p = 0; p < parent_lines.size(); ++p) parent[p] = ReadProLine(parent_lines[p]).value;
  Status(in, "AGGREGATION - Reconciling Children to Parent Forecasts(TOP DOWN");

  for (std::size_t c = 0; c < in.chosen.size(); ++c) {
    const std::string name = ChildForecastName(in, c);
    const fs::path pro = InOutput(in, name);
    const fs::path adj = InOutput(in, Stem(name) + ".ADJ");
    std::string header;
    const auto lines = ForecastLines(pro, bound, &header);
    if (!platform::LineReader(pro).IsOpen()) continue;
    platform::TextWriter out(adj);
    out.Line(dataset::TrimBlanks(header));
    for (std::size_t p = 0; p < lines.size(); ++p) {
      Columns adjusted{};
      for (int k = 0; k < 3; ++k) {
        // A zero column sum is a division that fails: the value stays zero.
        if (parent[p][k] > 0 && sum[k] != 0) adjusted[k] = parent[p][k] / sum[k] * share[c][k];
      }
      out.Line(TopDownLine(lines[p], adjusted));
    }
    // A child file that could not be written whole is left as it was.
    if (out.Close()) Replace(adj, pro);
  }
  WriteDetailTable(in, bound, false);
  if (in.mixed_frequency) WritePeriodTable(in, bound);
}

// Every series at once: parent and children take the combination that adds up and is
// closest, in the errors' own metric, to all base forecasts; the limits move with them.
bool MinT(const ReconcileInput& in) {
  const long bound = Bound(static_cast<long>(platform::Val(in.number_of_forecasts)));
  std::vector<std::string> names{"GROUPT.PRO"};
  for (std::size_t c = 0; c < in.chosen.size(); ++c) names.push_back(ChildForecastName(in, c));
  std::optional<Eigen::MatrixXd> w;
  if (in.residuals.size() == names.size()) w = ShrunkCovariance(in.residuals);
  if (!w) return false;
  const MinTReconciler mint(*w);
  std::vector<std::string> headers(names.size());
  std::vector<std::vector<std::string>> lines(names.size());
  std::size_t periods = static_cast<std::size_t>(bound);
  for (std::size_t k = 0; k < names.size(); ++k) {
    lines[k] = ForecastLines(InOutput(in, names[k]), bound, &headers[k]);
    periods = std::min(periods, lines[k].size());
  }
  Status(in, "Reconciling Parent and Children Forecasts(MINT)");
  std::vector<std::vector<std::string>> out(names.size());
  for (std::size_t p = 0; p < periods; ++p) {
    std::vector<Columns> base;
    std::vector<double> points;
    for (const auto& node : lines) {
      base.push_back(ReadProLine(node[p]).value);
      points.push_back(base.back()[0]);
    }
    const std::vector<double> reconciled = mint.Reconcile(points);
    for (std::size_t k = 0; k < names.size(); ++k) {
      const double shift = reconciled[k] - points[k];
      std::string line = lines[k][p].substr(0, 11);
      for (int col = 0; col < 3; ++col) line += kNine + TenDecimals(base[k][col] + shift);
      out[k].push_back(line);
    }
  }
  for (std::size_t k = 0; k < names.size(); ++k) {
    const fs::path pro = InOutput(in, names[k]);
    const fs::path temporary = InOutput(in, Stem(names[k]) + (k == 0 ? ".AJD" : ".ADJ"));
    platform::TextWriter writer(temporary);
    writer.Line(dataset::TrimBlanks(headers[k]));
    for (const auto& line : out[k]) writer.Line(line);
    // A forecast file that could not be written whole is left as it was.
    if (writer.Close()) Replace(temporary, pro);
  }
  WriteDetailTable(in, bound, false);
  if (in.mixed_frequency) WritePeriodTable(in, bound);
  return true;
}

}  // namespace

ProLine ReadProLine(const std::string& line) {
  ProLine out;
  const std::string trimmed = dataset::TrimBlanks(line);
  for (int k = 0; k < 3; ++k) {
    const std::size_t at = 9 + 25 * static_cast<std::size_t>(k);
    out.value[k] = at < trimmed.size() ? platform::Val(trimmed.substr(at, 25)) : 0.0;
  }
  return out;
}

std::string TenDecimals(double value) { return platform::FormatNumber(value, kMask); }

std::string BottomUpLine(const std::string& parent_line, const Columns& sums) {
  const std::string third = TenDecimals(sums[2]);
  const std::string second = FormatIntoMask(sums[1], kNine + third);
  const std::string first = FormatIntoMask(sums[0], kNine + second);
  return parent_line.substr(0, 11) + kNine + first;
}

std::string TopDownLine(const std::string& child_line, const Columns& adjusted) {
  std::string out = child_line.substr(0, 11);
  for (double v : adjusted) out += kNine + TenDecimals(v + 0.000005);
  return out;
}

std::string ChildForecastName(const ReconcileInput& input, std::size_t c) {
  if (c < input.replacement.size() && input.replacement[c] != kNoReplacement)
    return Stem(dataset::TrimBlanks(input.replacement[c])) + ".PRO";
  return Stem(input.chosen[c]) + ".PRO";
}

std::string DetailTableName(const std::string& batch_name) { return "CON" + Stem(batch_name) + ".PRO"; }
std::string PeriodTableName(const std::string& batch_name) { return "REC" + Stem(batch_name) + ".CSV"; }

void ReconcileForecasts(const ReconcileInput& input) {
  Status(input, input.stage_caption);
  if (input.direction == 2) {
    TopDown(input);
  } else if (input.direction == 3 && !MinT(input)) {
    platform::Dialogs().Message("The in-sample errors of one or more series are not available, so the forecasts "
                                "are reconciled bottom up.", platform::mb::OKOnly, "FYI");
    BottomUp(input);
  } else if (input.direction != 3) {
    BottomUp(input);
  }
}

void ShowClosingMessages(const ReconcileInput& in, const std::string& last_series_stem) {
  namespace mb = platform::mb;
  auto& dialogs = platform::Dialogs();
  const std::string breaks = "\r\n\r\n";
  const std::string output = platform::WithTrailingSlash(in.output_path.string());
  if (platform::ExistsNoCase(in.output_path, last_series_stem + ".PRO"))
    dialogs.Message("The forecast values for the series processed are shown in " + output +
                        " (seriesname).Pro files." + breaks, mb::OKOnly, "FYI");
  if (auto table = platform::FindNoCase(in.output_path, DetailTableName(in.batch_name)))
    dialogs.Message("The RECONCILED FORECASTS FOR CHILDREN are concatenated in " + table->string() + breaks,
                    mb::OKOnly, "FYI");
  if (auto table = platform::FindNoCase(in.output_path, PeriodTableName(in.batch_name)))
    dialogs.Message("RECONCILED FORECASTS FOR CHILD WITHIN PERIOD are shown in " + table->string() + "." + breaks,
                    mb::OKOnly, "FYI");
}

}  // namespace tessaly::aggregate
