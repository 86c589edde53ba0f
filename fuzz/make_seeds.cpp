// Writes seed inputs that the program itself makes, in the exact layout it writes them:
// the request file of each ASC file named, report.xml, the preferences file, rwf.his, the
// model file both ways, and a workbook of each ASC file. Each lands in OUT/<target>/.
//   make_seeds OUT FILE.ASC...
#include <cstdio>
#include <filesystem>

#include "batch/run.h"
#include "dataset/asc_dataset.h"
#include "dataset/error_catalogue.h"
#include "engine/exchange.h"
#include "engine/model_file.h"
#include "genseries/variables.h"
#include "rules/model_file.h"
#include "shell/preferences.h"
#include "spreadsheet/workbook.h"

namespace fs = std::filesystem;
using namespace tessaly;

namespace {

int written = 0;

void Count(bool ok, const fs::path& file) {
  if (ok && fs::exists(file)) ++written;
  else std::fprintf(stderr, "make_seeds: %s not written\n", file.c_str());
}

// The dataset as a sheet: a row of names, then the observations a row a period.
spreadsheet::Sheet SheetOf(const dataset::AscDataset& d, const std::string& name) {
  spreadsheet::Sheet sheet;
  sheet.name = name;
  for (int s = 1; s <= d.NumberOfSeries(); ++s) {
    sheet.grid.SetText(1, s, d.DataNames(s));
    for (int j = 1; j <= d.DataProp(5); ++j) sheet.grid.SetNumber(j + 1, s, d.Observation(s, j));
  }
  return sheet;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: make_seeds OUT FILE.ASC...\n");
    return 2;
  }
  const fs::path out = argv[1];
  for (const char* target : {"fuzz_request", "fuzz_report_xml", "fuzz_preferences", "fuzz_variables",
                             "fuzz_model_engine", "fuzz_model_frontend", "fuzz_xlsx", "fuzz_csv"})
    fs::create_directories(out / target);

  static auto* record = new dataset::AscDataset();
  static auto* arrays = new quorvane::EngineArrays();
  for (int i = 2; i < argc; ++i) {
    const fs::path asc = argv[i];
    record->Clear();
    if (!dataset::ReadAscFile(asc, *record).ok() || record->NumberOfSeries() < 1 ||
        record->NumberOfSeries() > 150)
      continue;
    batch::FillRequest(*record, *arrays);
    const fs::path request = out / "fuzz_request" / (asc.stem().string() + ".BIN");
    Count(quorvane::WriteExchangeFile(request, quorvane::ExchangeKind::Request, *arrays), request);
    const spreadsheet::Sheet sheet = SheetOf(*record, asc.stem().string());
    const fs::path book = out / "fuzz_xlsx" / (asc.stem().string() + ".xlsx");
    Count(spreadsheet::SaveXlsx(book, {&sheet}), book);
  }

  // report.xml as a run writes it into an output folder.
  const fs::path scratch = fs::temp_directory_path() / "tessaly-make-seeds";
  fs::create_directories(scratch / "DEFAULTXSD");
  if (!dataset::CreateREPORTXML(scratch)) {
    std::fprintf(stderr, "make_seeds: cannot write report.xml in %s\n", scratch.c_str());
    return 1;
  }
  fs::copy_file(scratch / "report.xml", out / "fuzz_report_xml" / "report.xml",
                fs::copy_options::overwrite_existing);
  Count(true, out / "fuzz_report_xml" / "report.xml");

  shell::PreferenceValues prefs;
  prefs.Decimals = 4;
  prefs.SelGraphs = shell::kTrue;
  Count(shell::WritePreferencesFile(scratch, prefs), shell::PreferencesFile(scratch));
  fs::copy_file(shell::PreferencesFile(scratch), out / "fuzz_preferences" / "UserPreferences.xml",
                fs::copy_options::overwrite_existing);

  // The variables of a level shift and two holidays on a monthly series.
  genseries::GenerationVariables vars;
  vars.NumberOfNewSeries = "3";
  vars.BPSeaonality = "12";
  vars.LevelStartYear = "1955";
  vars.LevelStartPeriod = "3";
  vars.SelectedHolidays = {{1, "Christmas"}, {2, "Easter"}};
  vars.NumberofHolidaysSelected = "2";
  vars.Dateof1stHolidayObservation = "01/01/49";
  const fs::path his = out / "fuzz_variables" / "rwf.his";
  Count(genseries::BuildXML(his, vars, "/data/", "/data/OUTPUT/", scratch), his);

  // A model of an output series with one input: an airline noise model and a transfer function.
  quorvane::ModelFile model;
  model.series = 2;
  quorvane::ModelBlock noise;
  noise.name = "SALES";
  noise.has_constant = true;
  noise.constant = 0.25;
  noise.lambda = 0.0;
  noise.differencing = {1, 12};
  noise.second = {{{1}, {0.4}}, {{12}, {0.6}}};
  quorvane::ModelBlock input;
  input.name = "PRICE";
  input.first = {{{1}, {0.3}}};
  input.second = {{{0, 1}, {1.5, -0.2}}};
  model.blocks = {noise, input};
  const fs::path mod = out / "fuzz_model_engine" / "STARTMOD.123";
  Count(quorvane::WriteModelFile(mod, model), mod);
  fs::copy_file(mod, out / "fuzz_model_frontend" / "STARTMOD.123", fs::copy_options::overwrite_existing);

  static rules::ModelTable table;
  rules::StartmodPage page;
  rules::SetNoiseDefaults(page);
  table.SetRow(0, rules::BuildNoiseRow(page, "SALES", 1));
  const fs::path front = out / "fuzz_model_frontend" / "SALES.MOD";
  Count(rules::WriteModelFile(front, table, 1), front);

  std::printf("make_seeds: %d seed files in %s\n", written, out.c_str());
  return 0;
}
