// tsly add-series: the generated series of a variables file (rwf.his) added to ASC files
// with no window, through the same GenerateSeries the Add Series wizard's adjusting step calls.
#include <filesystem>
#include <ostream>

#include "app/tsly.h"
#include "genseries/generate_series.h"
#include "genseries/variables.h"
#include "platform/paths.h"

namespace tessaly::app::tsly {

namespace fs = std::filesystem;

int AddSeriesCommand(const Args& args, std::ostream& out, std::ostream& err) {
  constexpr const char* kName = "add-series";
  std::vector<std::string> words;
  std::optional<fs::path> out_dir;
  for (size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--out") {
      if (i + 1 >= args.size()) return UsageError(kName, "--out needs a folder.", err);
      out_dir = args[++i];
    } else if (args[i].rfind("--", 0) == 0) {
      return UsageError(kName, "unknown option '" + args[i] + "'.", err);
    } else {
      words.push_back(args[i]);
    }
  }
  if (words.size() < 2) return UsageError(kName, "name a variables file and at least one ASC file.", err);
  InstallUnattendedHost();
  const fs::path variables(words[0]);
  std::error_code ec;
  if (!fs::is_regular_file(variables, ec)) {
    err << "tsly add-series: the variables file '" << words[0] << "' does not exist.\n";
    return kExitNothing;
  }
  // A variables file that does not parse changes nothing: the reason is shown and no dataset
  // is touched.
  genseries::GenerationVariables probe;
  if (!genseries::LoadXmlFile(variables, probe).ok) return kExitNothing;
  if (out_dir) {
    fs::create_directories(*out_dir, ec);
    if (!fs::is_directory(*out_dir, ec)) {
      err << "tsly add-series: the folder '" << out_dir->string() << "' cannot be made.\n";
      return kExitNothing;
    }
  }
  bool all_adjusted = true;
  for (size_t i = 1; i < words.size(); ++i) {
    const fs::path asc(words[i]);
    std::optional<fs::path> target;
    if (out_dir) target = *out_dir / asc.filename();
    if (!fs::is_regular_file(asc, ec)) {
      out << asc.string() << ": refused\n  the file does not exist.\n";
      all_adjusted = false;
      continue;
    }
    genseries::GenerationResult r = genseries::GenerateSeries(variables, asc, target);
    out << asc.string() << ": " << genseries::OutcomeText(r.outcome);
    if (!r.written.empty() && target) out << " -> " << r.written.string();
    out << "\n";
    for (const std::string& line : r.log_lines)
      if (!line.empty()) out << "  " << line << "\n";
    if (r.outcome != genseries::GenerationOutcome::Adjusted) all_adjusted = false;
  }
  return all_adjusted ? kExitDone : kExitPartly;
}

}  // namespace tessaly::app::tsly
