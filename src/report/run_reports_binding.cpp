#include "report/run_reports_binding.h"

#include "platform/paths.h"
#include "platform/progress_wait.h"
#ifdef TESSALY_RUN_GRAPHS
#include "report/forms/graph_drawer.h"
#endif
#include "report/chart_data.h"
#include "report/intervent_page.h"
#include "report/site.h"

namespace tessaly::batch {

ProgramRunReports::ProgramRunReports(fs::path program_folder, report::GraphPreferences graphs)
    : program_folder_(std::move(program_folder)), graphs_(graphs) {}

namespace {

// One good dataset as the graphs take it.
report::GraphInput GraphInputOf(const SeriesResult& s) {
  const dataset::AscDataset& d = s.dataset;
  report::GraphInput in;
  in.series_name = s.stem;
  int n = d.DataProp(1), p = d.DataProp(5);
  for (int j = 1; j <= p; ++j) in.actuals.push_back(d.Observation(n, j));
  auto first = [p](const std::vector<double>& v) {
    return std::vector<double>(v.begin(), v.begin() + std::min<size_t>(v.size(), p));
  };
  in.fitted = first(s.arrays.doubles10000a);
  in.residuals = first(s.arrays.doubles10000b);
  in.cleansed = first(s.arrays.doubles10000c);
  int nf = s.returned.returned_data_prop.size() >= 8 ? s.returned.returned_data_prop[7] : 0;
  nf = std::clamp(nf, 0, 600);
  const auto& f = s.arrays.forecast_values;
  if (f.size() >= 1800) {
    in.forecasts.assign(f.begin(), f.begin() + nf);
    in.lower.assign(f.begin() + 600, f.begin() + 600 + nf);
    in.upper.assign(f.begin() + 1200, f.begin() + 1200 + nf);
  }
  in.begin_year = d.DataProp(3);
  in.begin_period = d.DataProp(4);
  in.seasonality = d.DataProp(2);
  in.leading_left_out = s.arrays.integers20.empty() ? 0 : s.arrays.integers20[0];
  return in;
}

// The fitted values beside the reports, for the desktop's interactive graph: the periods the
// model left out, and those the engine has no fit for, keep their actual alone.
bool FileFittedValues(const SeriesResult& s, const report::GraphInput& in) {
  const std::vector<std::string> labels =
      report::PeriodLabels(in.begin_year, in.begin_period, in.seasonality, static_cast<int>(in.actuals.size()));
  std::vector<report::FittedRow> rows;
  for (size_t t = 0; t < in.actuals.size(); ++t) {
    report::FittedRow row{labels[t], in.actuals[t], std::nullopt, std::nullopt};
    const bool fitted = t >= static_cast<size_t>(std::max(in.leading_left_out, 0)) && t < in.fitted.size() &&
                        report::IsDrawable(in.fitted[t]);
    if (fitted) row.fitted = in.fitted[t];
    if (fitted && t < in.residuals.size() && report::IsDrawable(in.residuals[t])) row.residual = in.residuals[t];
    rows.push_back(std::move(row));
  }
  const std::string series = s.current_series_name.empty() ? s.stem : s.current_series_name;
  return report::WriteFittedValues(s.output_path / (s.stem + report::kFittedSuffix), series, rows);
}

}  // namespace

std::array<bool, 9> ProgramRunReports::DrawGraphs(const SeriesResult& s) {
  const report::GraphInput in = GraphInputOf(s);
  // Read with the graphs' interactive form; a graph picture does not need it.
  (void)FileFittedValues(s, in);
#ifndef TESSALY_RUN_GRAPHS
  return {};  // a build without the drawer makes no pictures
#else
  report::GraphFlags flags = report::DrawSeriesGraphs(in, graphs_, s.output_path, {},
                                                      [] { platform::ProgressWaiter().LetEventsRun(); });
  return flags.drawn;
#endif
}

void ProgramRunReports::WriteInterventPage(const SeriesResult& s, const fs::path& target) {
  report::InterventionInput in;
  in.integers20 = s.arrays.integers20;
  in.doubles745 = s.arrays.doubles745;
  in.returned_observations = s.returned.returned_data_prop.size() >= 5 ? s.returned.returned_data_prop[4] : 0;
  in.data_observations = s.dataset.DataProp(5);
  // The page is one of the reports: the run's own outputs are checked apart, and a page that
  // cannot be written shows as a link without a page.
  (void)report::write_intervent_htm(target, in);
}

void ProgramRunReports::FilesDone(const std::vector<FileReport>& reports) {
  rejected_.clear();
  for (const FileReport& r : reports)
    if (r.result == FileResult::Rejected) rejected_[platform::ToUpper(r.name)] = r.reason;
}

void ProgramRunReports::WriteLinkTree(const cBatchFile& project, const fs::path& output_path) {
  std::vector<std::string> files;
  for (int i = 0; i < static_cast<int>(project.Count()); ++i) files.push_back(project.List(i));
  // The site and the overview are reports over the run's own outputs, which are checked apart.
  (void)report::WriteLinkTreeSite(project.BatchName(), files, output_path, program_folder_);
  (void)report::WriteDisplayHtml(output_path, project.BatchName(), files, rejected_);
}

int RunProjectFromCommandLine(const fs::path& project) {
  UnattendedRunOptions options;
  options.program_folder = platform::ProgramFolder();
  options.reports = std::make_shared<ProgramRunReports>(options.program_folder);
  return RunProjectUnattended(project, options);
}

}  // namespace tessaly::batch
