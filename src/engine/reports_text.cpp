// The text reports, the tables and the writing of all per-dataset files.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <sstream>

#include "engine/forecast_file.h"
#include "engine/model_file.h"
#include "engine/report_util.h"
#include "engine/reports.h"
#include "platform/paths.h"
#include "platform/textfile.h"

namespace quorvane {

using namespace report;

std::string FormatNumber(double value, int decimals) {
  if (IsMissing(value)) return "";
  char buf[64];
  // Beyond fifteen digits a fixed format only prints noise (and very wide columns).
  if (std::fabs(value) >= 1e15) {
    std::snprintf(buf, sizeof buf, "%.*e", std::max(decimals, 6), value);
    return buf;
  }
  std::snprintf(buf, sizeof buf, "%.*f", decimals, value);
  std::string s = buf;
  if (s == "-0" || s.find_first_not_of("-0.") == std::string::npos) {
    if (s[0] == '-') s.erase(0, 1);
  }
  return s;
}

std::string PercentText(double level) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%g%%", level);
  return buf;
}

namespace {

std::string Pad(const std::string& s, int width, bool right) {
  if (static_cast<int>(s.size()) >= width) return s;
  std::string fill(width - s.size(), ' ');
  return right ? fill + s : s + fill;
}

// A line of columns: the first left-aligned, the others right-aligned.
std::string Row(const std::vector<std::string>& cells, const std::vector<int>& widths) {
  std::string line;
  for (size_t i = 0; i < cells.size(); ++i) {
    if (i > 0) line += "  ";
    line += Pad(cells[i], widths[i], i > 0);
  }
  while (!line.empty() && line.back() == ' ') line.pop_back();
  return line;
}

std::string Rule(size_t width) { return std::string(width, '-'); }

std::vector<std::string> Title(const std::string& title, const std::string& series) {
  std::string head = title + ": " + series;
  return {head, std::string(head.size(), '=')};
}

std::string Csv(const std::string& text) {
  if (text.find_first_of(",\"") == std::string::npos) return text;
  std::string out = "\"";
  for (char c : text) {
    if (c == '"') out += '"';
    out += c;
  }
  return out + "\"";
}

std::string Signed(double v, int decimals) {
  std::string s = FormatNumber(v, decimals);
  return v >= 0 ? "+" + s : s;
}

bool Write(const std::filesystem::path& folder, const char* name,
           const std::vector<std::string>& lines, std::vector<std::string>& failed) {
  if (!tessaly::platform::WriteAllLines(folder / name, lines)) {
    failed.push_back(name);
    return false;
  }
  return true;
}

void AppendRows(const std::filesystem::path& folder, const char* name, const char* header,
                const std::vector<std::string>& rows) {
  if (rows.empty()) return;
  auto path = tessaly::platform::ResolveNoCase(folder, name);
  bool created = !std::filesystem::exists(path);
  tessaly::platform::TextWriter out(path, tessaly::platform::TextWriter::Mode::Append);
  if (!out.IsOpen()) return;
  if (created) out.Line(header);
  for (const auto& row : rows) out.Line(row);
  // The summary lines are an extra beside the dataset's own files, which tell their failures.
  (void)out.Close();
}

// SUMMAPE.TXT: a title, one line per dataset (series, retained periods, in-sample and
// out-of-sample MAPE) and, last, the sum over the datasets so far, which each dataset
// rewrites: the mean of the out-of-sample MAPEs and the MAPE over all retained periods.
constexpr const char* kSumMapeTitle = "Out-of-sample accuracy over the retained values";
constexpr const char* kSumMapeTotal = "ALL SERIES";
const std::vector<int> kSumMapeWidths = {24, 10, 18, 18};

// The periods and the out-of-sample MAPE of a dataset line of SUMMAPE.TXT: its last three
// fields are numbers.
std::optional<std::pair<int, double>> SumMapeFigures(const std::string& line) {
  std::istringstream in(line);
  std::vector<std::string> fields;
  for (std::string f; in >> f;) fields.push_back(f);
  if (fields.size() < 4) return std::nullopt;
  double values[3];
  for (int i = 0; i < 3; ++i) {
    const std::string& f = fields[fields.size() - 3 + i];
    char* end = nullptr;
    values[i] = std::strtod(f.c_str(), &end);
    if (end != f.c_str() + f.size()) return std::nullopt;
  }
  return std::make_pair(static_cast<int>(values[0]), values[2]);
}

void UpdateSummaryMape(const std::filesystem::path& folder, const std::string& series,
                       double in_sample_mape, const RetainedAccuracy& a) {
  auto path = tessaly::platform::ResolveNoCase(folder, "SUMMAPE.TXT");
  std::vector<std::string> rows = SummaryMapeDatasetLines(path);
  rows.push_back(Row({series, std::to_string(a.mape_count), FormatNumber(in_sample_mape, 4),
                      FormatNumber(a.mape, 4)},
                     kSumMapeWidths));
  WriteSummaryMape(path, rows);
}

}  // namespace

std::vector<std::string> SummaryMapeDatasetLines(const std::filesystem::path& file) {
  std::vector<std::string> rows;
  if (!std::filesystem::exists(file)) return rows;
  if (auto old = tessaly::platform::ReadAllLines(file)) {
    for (const auto& line : *old) {
      // Dataset lines: a name, then three numbers; the title, heads, rules and the total
      // line are written again.
      if (line.rfind(kSumMapeTotal, 0) == 0 || !SumMapeFigures(line)) continue;
      rows.push_back(line);
    }
  }
  return rows;
}

bool WriteSummaryMape(const std::filesystem::path& file, const std::vector<std::string>& rows) {
  const std::vector<int>& widths = kSumMapeWidths;
  double sum_mape = 0.0, weighted = 0.0;
  int datasets = 0, periods = 0;
  for (const auto& line : rows) {
    const auto figures = SumMapeFigures(line);
    if (!figures) continue;
    const auto [n, mape] = *figures;
    ++datasets;
    sum_mape += mape;
    periods += n;
    weighted += n * mape;
  }
  std::vector<std::string> lines = {kSumMapeTitle, ""};
  lines.push_back(Row({"SERIES", "PERIODS", "IN-SAMPLE MAPE", "OUT-SAMPLE MAPE"}, widths));
  lines.push_back(Rule(70));
  lines.insert(lines.end(), rows.begin(), rows.end());
  lines.push_back(Rule(70));
  lines.push_back(Row({kSumMapeTotal, std::to_string(periods), "",
                       FormatNumber(periods > 0 ? weighted / periods : 0.0, 4)},
                      widths));
  lines.push_back("Mean of the " + std::to_string(datasets) + " series' out-of-sample MAPEs: " +
                  FormatNumber(datasets > 0 ? sum_mape / datasets : 0.0, 4) + " %.");
  return tessaly::platform::WriteAllLines(file, lines);
}

std::vector<std::string> EquationText(const ReportInput& in) {
  const ModelResult& r = Result(in);
  std::vector<std::string> lines = Title("Final model", Problem(in).output_name);
  lines.push_back("");
  lines.push_back("Model:      " + ModelName(r));
  lines.push_back("Transform:  " + TransformName(r.lambda));
  lines.push_back("");
  if (r.equation.empty()) {
    lines.push_back("(no equation)");
  } else {
    size_t pos = 0;
    while (pos <= r.equation.size()) {
      size_t nl = r.equation.find('\n', pos);
      lines.push_back(r.equation.substr(pos, nl == std::string::npos ? nl : nl - pos));
      if (nl == std::string::npos) break;
      pos = nl + 1;
    }
  }
  lines.push_back("");
  lines.push_back("Residual standard deviation " + FormatNumber(std::sqrt(std::max(0.0, r.variance)), 4) +
                  " on " + std::to_string(r.degrees_of_freedom) + " degrees of freedom.");
  return lines;
}

std::vector<std::string> RhsideText(const ReportInput& in) {
  const ModelResult& r = Result(in);
  std::vector<std::string> lines = Title("Right-hand side of the model", Problem(in).output_name);
  lines.push_back("");
  const std::vector<int> widths = {28, 14, 12, 9, 8};
  lines.push_back(Row({"TERM", "COEFFICIENT", "STD ERROR", "T-VALUE", "P-VALUE"}, widths));
  lines.push_back(Rule(79));
  for (const auto& c : r.coefficients)
    lines.push_back(Row({c.term, FormatNumber(c.value, 6), FormatNumber(c.std_error, 6),
                         FormatNumber(c.t_value, 2), FormatNumber(c.p_value, 4)},
                        widths));
  if (r.coefficients.empty()) lines.push_back("(no estimated terms)");
  lines.push_back(Rule(79));
  lines.push_back("Transform of the output series: " + TransformName(r.lambda) + ".");
  return lines;
}

std::vector<std::string> VerbalText(const ReportInput& in) {
  const ModelResult& r = Result(in);
  const ModelingProblem& p = Problem(in);
  const DatasetShape& s = in.request->shape;
  std::vector<std::string> lines = Title("The model in words", p.output_name);
  lines.push_back("");
  lines.push_back("The series " + p.output_name + " holds " + std::to_string(s.observations) + " " +
                  FrequencyWord(s.seasonality) + " observations from " + ObservationLabel(in, 0) +
                  " to " + ObservationLabel(in, s.observations - 1) + ".");
  if (IsPooledRun(in)) lines.push_back(PoolSentence(in));
  if (s.retained > 0)
    lines.push_back("The last " + std::to_string(s.retained) +
                    " observations were held out of the estimation and kept for comparison.");
  if (r.leading_left_out > 0) {
    bool lagged_inputs = false;
    for (const auto& c : r.coefficients)
      lagged_inputs = lagged_inputs || (c.kind == "input" && c.lag >= r.leading_left_out);
    if (lagged_inputs)
      lines.push_back("The model was fitted from " + ObservationLabel(in, r.leading_left_out) +
                      ": the lags of its inputs reach " + std::to_string(r.leading_left_out) +
                      " observations back, so the first " + std::to_string(r.leading_left_out) +
                      " observations were left out.");
    else
      lines.push_back("The model was fitted to the most recent stable part of the series, from " +
                      ObservationLabel(in, r.leading_left_out) + "; the first " +
                      std::to_string(r.leading_left_out) + " observations were left out.");
  }
  if (r.lambda != 1.0)
    lines.push_back("The series was transformed (" + TransformName(r.lambda) +
                    ") to keep the variability steady across its level.");
  else
    lines.push_back("No transformation of the series was needed.");
  lines.push_back("The model chosen is " + ModelName(r) + "; its " + std::to_string(r.parameters) +
                  " parameters were estimated from " + std::to_string(r.observations) +
                  " observations.");
  if (!r.inputs_kept.empty()) {
    std::string inputs;
    for (size_t i = 0; i < r.inputs_kept.size(); ++i)
      inputs += (i ? (i + 1 == r.inputs_kept.size() ? " and " : ", ") : "") + r.inputs_kept[i];
    lines.push_back("The input series " + inputs + " explain part of its movement.");
  } else if (!p.inputs.empty()) {
    lines.push_back("None of the input series was found to help explain the output series.");
  }
  if (r.interventions.empty()) {
    lines.push_back("No unusual events (pulses, level shifts, seasonal pulses or trends) were found.");
  } else {
    lines.push_back("The following unusual events were found and allowed for:");
    for (const auto& iv : r.interventions) {
      std::string what;
      std::string label = ObservationLabel(in, iv.observation - 1);
      switch (iv.type) {
        case 1: what = "a pulse of " + Signed(iv.impact, 2) + " at " + label; break;
        case 2: what = "a level shift of " + Signed(iv.impact, 2) + " from " + label; break;
        case 3: what = "a seasonal pulse of " + Signed(iv.impact, 2) + " from " + label; break;
        case 4: what = "a local time trend of " + Signed(iv.impact, 2) + " a period from " + label; break;
        default: what = "a dynamic pulse of " + Signed(iv.impact, 2) + " at " + label; break;
      }
      lines.push_back("  - " + what + ".");
    }
  }
  if (r.ljung_box_lags > 0) {
    if (r.ljung_box_p >= 0.05)
      lines.push_back("The residuals show no significant autocorrelation (Ljung-Box Q = " +
                      FormatNumber(r.ljung_box_q, 2) + " on " + std::to_string(r.ljung_box_lags) +
                      " lags, p = " + FormatNumber(r.ljung_box_p, 3) + ").");
    else
      lines.push_back("Some autocorrelation remains in the residuals (Ljung-Box Q = " +
                      FormatNumber(r.ljung_box_q, 2) + " on " + std::to_string(r.ljung_box_lags) +
                      " lags, p = " + FormatNumber(r.ljung_box_p, 3) +
                      "); the limits may be too narrow.");
  }
  if (r.mape > 0)
    lines.push_back("Within the sample the fitted values miss the actuals by " +
                    FormatNumber(r.mape, 2) + "% on average (MAPE).");
  if (!r.forecasts.empty()) {
    auto [lo, hi] = std::minmax_element(r.forecasts.begin(), r.forecasts.end());
    lines.push_back("The " + std::to_string(r.forecasts.size()) + " forecasts, from " +
                    ForecastLabel(in, 0) + " to " +
                    ForecastLabel(in, static_cast<int>(r.forecasts.size()) - 1) + ", range from " +
                    FormatNumber(*lo, 2) + " to " + FormatNumber(*hi, 2) + ", with " +
                    PercentText(p.rules.forecast_confidence) + " limits.");
  } else {
    lines.push_back("No forecasts were asked for.");
  }
  for (const auto& w : r.warnings) lines.push_back("Note: " + w);
  return lines;
}

std::vector<std::string> OutcastText(const ReportInput& in) {
  const ModelResult& r = Result(in);
  const ModelingProblem& p = Problem(in);
  std::vector<std::string> lines = Title("Forecasts", p.output_name);
  lines.push_back("");
  lines.push_back("Model " + ModelName(r) + ", forecast origin " +
                  ObservationLabel(in, static_cast<int>(p.y.size()) - 1) + ", limits at " +
                  PercentText(p.rules.forecast_confidence) + ".");
  if (r.simulation.done)
    lines.push_back("Forecasts are the medians of " + std::to_string(r.simulation.paths) +
                    " simulated paths (seed " + std::to_string(r.simulation.seed) + ", noise variance " +
                    FormatNumber(r.simulation.noise_variance, 4) + "), the limits their quantiles.");
  lines.push_back("");
  const std::vector<int> widths = {10, 16, 16, 16};
  lines.push_back(Row({"PERIOD", "FORECAST", "LOWER LIMIT", "UPPER LIMIT"}, widths));
  lines.push_back(Rule(64));
  for (size_t h = 0; h < r.forecasts.size(); ++h)
    lines.push_back(Row({ForecastLabel(in, static_cast<int>(h)), FormatNumber(r.forecasts[h], 4),
                         FormatNumber(h < r.lower.size() ? r.lower[h] : r.forecasts[h], 4),
                         FormatNumber(h < r.upper.size() ? r.upper[h] : r.forecasts[h], 4)},
                        widths));
  if (r.forecasts.empty()) lines.push_back("(no forecasts were asked for)");
  lines.push_back(Rule(64));

  if (!p.retained.empty()) {
    lines.push_back("");
    lines.push_back("Out-of-sample forecasts of the " + std::to_string(p.retained.size()) +
                    " retained value(s), not used in estimation");
    lines.push_back("");
    if (in.retained.empty()) {
      lines.push_back("(no forecasts of the retained periods: forecasting is off)");
      return lines;
    }
    const std::vector<int> w = {10, 16, 16, 16, 12, 8};
    lines.push_back(Row({"PERIOD", "ACTUAL", "FORECAST", "ERROR", "% ERROR", "LIMITS"}, w));
    lines.push_back(Rule(78));
    for (size_t h = 0; h < in.retained.size(); ++h) {
      const RetainedForecast& f = in.retained[h];
      const double error = f.actual - f.forecast;
      const bool inside = f.actual >= f.lower && f.actual <= f.upper;
      lines.push_back(Row({ForecastLabel(in, static_cast<int>(h)), FormatNumber(f.actual, 4),
                           FormatNumber(f.forecast, 4), FormatNumber(error, 4),
                           f.actual != 0.0 ? FormatNumber(100.0 * error / f.actual, 2) : "",
                           inside ? "inside" : "OUTSIDE"},
                          w));
    }
    lines.push_back(Rule(78));
    const RetainedAccuracy a = Accuracy(in.retained);
    lines.push_back("Out-of-sample MAPE " + FormatNumber(a.mape, 3) + " % over " +
                    std::to_string(a.mape_count) + " period(s); MAE " + FormatNumber(a.mae, 4) +
                    "; RMSE " + FormatNumber(a.rmse, 4) + "; " + std::to_string(a.within_limits) +
                    " of " + std::to_string(a.count) + " actual(s) inside the limits. In-sample MAPE " +
                    FormatNumber(r.mape, 3) + " %.");
  }
  return lines;
}

std::vector<RetainedForecast> CompareRetained(const std::vector<double>& retained,
                                              const ModelResult& r) {
  std::vector<RetainedForecast> rows;
  for (size_t h = 0; h < retained.size() && h < r.forecasts.size(); ++h) {
    RetainedForecast f;
    f.actual = retained[h];
    f.forecast = r.forecasts[h];
    f.lower = h < r.lower.size() ? r.lower[h] : f.forecast;
    f.upper = h < r.upper.size() ? r.upper[h] : f.forecast;
    rows.push_back(f);
  }
  return rows;
}

RetainedAccuracy Accuracy(const std::vector<RetainedForecast>& rows) {
  RetainedAccuracy a;
  double ape = 0.0, abs_error = 0.0, squares = 0.0;
  for (const auto& f : rows) {
    const double e = f.actual - f.forecast;
    ++a.count;
    abs_error += std::fabs(e);
    squares += e * e;
    if (f.actual != 0.0) {
      ape += std::fabs(e / f.actual);
      ++a.mape_count;
    }
    if (f.actual >= f.lower && f.actual <= f.upper) ++a.within_limits;
  }
  if (a.count > 0) {
    a.mae = abs_error / a.count;
    a.rmse = std::sqrt(squares / a.count);
  }
  if (a.mape_count > 0) a.mape = 100.0 * ape / a.mape_count;
  return a;
}

std::vector<std::string> AdjustedText(const ReportInput& in) {
  const ModelResult& r = Result(in);
  const ModelingProblem& p = Problem(in);
  std::vector<std::string> lines = Title("Series adjusted for interventions", p.output_name);
  lines.push_back("");
  const std::vector<int> widths = {10, 16, 16, 16};
  lines.push_back(Row({"PERIOD", "ACTUAL", "ADJUSTED", "EFFECT"}, widths));
  lines.push_back(Rule(64));
  for (size_t t = 0; t < p.y.size(); ++t) {
    double cleansed = t < r.cleansed.size() ? r.cleansed[t] : p.y[t];
    bool missing = IsMissing(cleansed);
    lines.push_back(Row({ObservationLabel(in, static_cast<int>(t)), FormatNumber(p.y[t], 4),
                         missing ? "" : FormatNumber(cleansed, 4),
                         missing ? "" : FormatNumber(p.y[t] - cleansed, 4)},
                        widths));
  }
  lines.push_back(Rule(64));
  return lines;
}

std::vector<std::string> WriteDatasetReports(const std::filesystem::path& folder,
                                             const ReportInput& in) {
  const ModelResult& r = Result(in);
  const ModelingProblem& p = Problem(in);
  std::vector<std::string> failed;

  {
    std::string details = DetailsHtml(in), stat = StatHtml(in);
    if (!tessaly::platform::WriteWholeFile(folder / "DETAILS.HTM", details)) failed.push_back("DETAILS.HTM");
    if (!tessaly::platform::WriteWholeFile(folder / "STAT.HTM", stat)) failed.push_back("STAT.HTM");
  }
  Write(folder, "EQUATION.TXT", EquationText(in), failed);
  Write(folder, "RHSIDE.TXT", RhsideText(in), failed);
  Write(folder, "VERBAL.TXT", VerbalText(in), failed);
  Write(folder, "OUTCAST.TXT", OutcastText(in), failed);
  Write(folder, "ADJUSTED.TXT", AdjustedText(in), failed);

  std::vector<ForecastLine> forecast_lines;
  for (size_t h = 0; h < r.forecasts.size(); ++h)
    forecast_lines.push_back({ForecastLabel(in, static_cast<int>(h)), r.forecasts[h],
                              h < r.lower.size() ? r.lower[h] : r.forecasts[h],
                              h < r.upper.size() ? r.upper[h] : r.forecasts[h]});
  // No forecasts, no forecast file: the front-end files each one it finds.
  if (!forecast_lines.empty() &&
      !WriteForecastFile(folder / "TS50PRO.123",
                         ForecastFileHeader(p.output_name, p.rules.forecast_confidence),
                         forecast_lines))
    failed.push_back("TS50PRO.123");

  ModelFile model = ModelFileFromResult(r, p.output_name, r.inputs_kept, p.rules.difference_inputs);
  if (!WriteModelFile(folder / "PASS2MOD.123", model)) failed.push_back("PASS2MOD.123");
  // SAVEMOD.QVX or the rules' "STORE" ask for the final model under the series' name.
  if ((p.rules.save_model_file || p.rules.store_model) &&
      !WriteModelFile(folder / (p.output_name + ".MOD"), model))
    failed.push_back(p.output_name + ".MOD");

  std::vector<std::string> fitted = {"Period,Actual,Fitted,Residual,Cleansed"};
  for (size_t t = 0; t < p.y.size(); ++t) {
    auto at = [&](const std::vector<double>& v) {
      return t < v.size() ? FormatNumber(v[t], 6) : std::string();
    };
    fitted.push_back(ObservationLabel(in, static_cast<int>(t)) + "," + FormatNumber(p.y[t], 6) +
                     "," + at(r.fitted) + "," + at(r.residuals) + "," + at(r.cleansed));
  }
  Write(folder, "FITTED.CSV", fitted, failed);

  std::vector<std::string> forecast = {"Period,Forecast,Lower,Upper"};
  for (const auto& l : forecast_lines)
    forecast.push_back(l.label + "," + FormatNumber(l.forecast, 6) + "," + FormatNumber(l.lower, 6) +
                       "," + FormatNumber(l.upper, 6));
  Write(folder, "FORECAST.CSV", forecast, failed);

  std::vector<std::string> acf = {"Lag,ACF,Lower limit,Upper limit"};
  for (size_t k = 0; k < r.residual_acf.size(); ++k)
    acf.push_back(std::to_string(k + 1) + "," + FormatNumber(r.residual_acf[k], 6) + "," +
                  FormatNumber(-r.residual_acf_limit, 6) + "," + FormatNumber(r.residual_acf_limit, 6));
  Write(folder, "RESIDUALACF.CSV", acf, failed);

  std::vector<std::string> equation = {"Term,Kind,Lag,Coefficient,Std error,t-value,p-value"};
  for (const auto& c : r.coefficients)
    equation.push_back(Csv(c.term) + "," + c.kind + "," + std::to_string(c.lag) + "," +
                       FormatNumber(c.value, 8) + "," + FormatNumber(c.std_error, 8) + "," +
                       FormatNumber(c.t_value, 4) + "," + FormatNumber(c.p_value, 6));
  Write(folder, "EQUATION.CSV", equation, failed);
  return failed;
}

void AppendRunWideReports(const std::filesystem::path& folder, const ReportInput& in) {
  const ModelResult& r = Result(in);
  const ModelingProblem& p = Problem(in);
  const char* header = "Series,Type,Period,Observation,Impact,t-value";
  std::vector<std::string> pulses, levels, trends, early;
  int last = static_cast<int>(p.y.size());
  for (const auto& iv : r.interventions) {
    std::string row = Csv(p.output_name) + "," + InterventionName(iv.type) + "," +
                      ObservationLabel(in, iv.observation - 1) + "," +
                      std::to_string(iv.observation) + "," + FormatNumber(iv.impact, 6) + "," +
                      FormatNumber(iv.t_value, 3);
    if (iv.type == 2) levels.push_back(row);
    else if (iv.type == 4) trends.push_back(row);
    else pulses.push_back(row);
    if (iv.observation > last - kEarlySignalWindow) early.push_back(row);
  }
  AppendRows(folder, "PULSERPT.CSV", header, pulses);
  AppendRows(folder, "LEVELRPT.CSV", header, levels);
  AppendRows(folder, "TRENDRPT.CSV", header, trends);
  AppendRows(folder, "EARLYSIG.CSV", header, early);
  std::vector<std::string> parameters, variances;
  for (const auto& c : r.parameter_changes)
    parameters.push_back(Csv(p.output_name) + "," + ObservationLabel(in, c.observation - 1) + "," +
                         std::to_string(c.observation) + "," + FormatNumber(c.statistic, 4) + "," +
                         FormatNumber(c.critical, 4));
  for (const auto& c : r.variance_changes)
    variances.push_back(Csv(p.output_name) + "," + ObservationLabel(in, c.observation - 1) + "," +
                        std::to_string(c.observation) + "," + FormatNumber(c.before, 6) + "," +
                        FormatNumber(c.after, 6) + "," + FormatNumber(c.statistic, 4));
  if (IsPooledRun(in)) {
    // The pooled model's coefficients, with the groups they hold for.
    const auto& sizes = p.rules.group_sizes;
    std::string size_text;
    for (size_t g = 0; g < sizes.size(); ++g) size_text += (g ? "/" : "") + std::to_string(sizes[g]);
    if (std::all_of(sizes.begin(), sizes.end(), [&](int v) { return v == sizes[0]; }))
      size_text = std::to_string(sizes[0]);
    std::vector<std::string> pooled;
    for (const auto& c : r.coefficients)
      pooled.push_back(Csv(p.output_name) + "," + Csv(c.term) + "," + FormatNumber(c.value, 8) + "," +
                       FormatNumber(c.std_error, 8) + "," + FormatNumber(c.t_value, 4) + "," +
                       std::to_string(sizes.size()) + "," + size_text);
    AppendRows(folder, "POOLCOEF.CSV", "Series,Term,Coefficient,Std error,t-value,Groups,Group size", pooled);
  }
  AppendRows(folder, "PARCHRPT.CSV", "Series,Period,Observation,F,Critical F", parameters);
  AppendRows(folder, "VARCHRPT.CSV", "Series,Period,Observation,Variance before,Variance after,Statistic",
             variances);

  if (in.retained.empty()) return;
  const RetainedAccuracy a = Accuracy(in.retained);
  AppendRows(folder, "MAPECOMP.CSV",
             "Series,Model,Retained,In-sample MAPE,Out-of-sample MAPE,Out-of-sample MAE,"
             "Out-of-sample RMSE,Inside limits",
             {Csv(p.output_name) + "," + Csv(ModelName(r)) + "," + std::to_string(a.count) + "," +
              FormatNumber(r.mape, 4) + "," + FormatNumber(a.mape, 4) + "," + FormatNumber(a.mae, 6) +
              "," + FormatNumber(a.rmse, 6) + "," + std::to_string(a.within_limits)});
  std::vector<std::string> monitor;
  for (size_t h = 0; h < in.retained.size(); ++h) {
    const RetainedForecast& f = in.retained[h];
    const double e = f.actual - f.forecast;
    monitor.push_back(Csv(p.output_name) + "," + ForecastLabel(in, static_cast<int>(h)) + "," +
                      std::to_string(h + 1) + "," + FormatNumber(f.actual, 6) + "," +
                      FormatNumber(f.forecast, 6) + "," + FormatNumber(f.lower, 6) + "," +
                      FormatNumber(f.upper, 6) + "," + FormatNumber(e, 6) + "," +
                      (f.actual != 0.0 ? FormatNumber(100.0 * std::fabs(e / f.actual), 4) : "") + "," +
                      (f.actual >= f.lower && f.actual <= f.upper ? "1" : "0"));
  }
  AppendRows(folder, "FORE-MON.CSV",
             "Series,Period,Lead,Actual,Forecast,Lower,Upper,Error,Absolute % error,Inside limits",
             monitor);
  UpdateSummaryMape(folder, p.output_name, r.mape, a);
}

}  // namespace quorvane
