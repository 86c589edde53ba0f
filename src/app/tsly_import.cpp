// tsly import: a sheet of a workbook into ASC files, as the Import Wizard writes them.
#include <ostream>

#include "app/tsly.h"
#include "platform/numfmt.h"
#include "spreadsheet/import_job.h"

namespace tessaly::app::tsly {

int ImportCommand(const Args& args, std::ostream& out, std::ostream& err) {
  spreadsheet::ImportJob job;
  auto number = [&](size_t& i, const std::string& flag, std::optional<int>& into) {
    if (i + 1 >= args.size()) return false;
    auto v = platform::ToInt16(args[++i]);
    if (!v.ok() || v.value < 1) return false;
    into = v.value;
    return true;
  };
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    auto value = [&](std::string& into) {
      if (i + 1 >= args.size()) return false;
      into = args[++i];
      return true;
    };
    std::string text;
    if (a == "--rows") job.rows = true;
    else if (a == "--no-names") job.no_names = true;
    else if (a == "--sheet") { if (!value(job.sheet)) return UsageError("import", "--sheet needs a sheet name.", err); }
    else if (a == "--seasonality") { if (!number(i, a, job.seasonality)) return UsageError("import", "--seasonality needs a number from 1.", err); }
    else if (a == "--forecasts") { if (!number(i, a, job.forecasts)) return UsageError("import", "--forecasts needs a number from 1.", err); }
    else if (a == "--start") {
      if (!value(text)) return UsageError("import", "--start needs YEAR/PERIOD.", err);
      size_t slash = text.find('/');
      auto y = platform::ToInt16(text.substr(0, slash));
      auto p = slash == std::string::npos ? platform::ToInt16("1") : platform::ToInt16(text.substr(slash + 1));
      if (!y.ok() || !p.ok() || y.value < 1 || p.value < 1)
        return UsageError("import", "--start needs YEAR/PERIOD, such as 2001/1.", err);
      job.major = y.value;
      job.minor = p.value;
    }
    else if (a == "--out") { if (!value(text)) return UsageError("import", "--out needs a folder.", err); job.out = text; }
    else if (a == "--project") { if (!value(text)) return UsageError("import", "--project needs a file name.", err); job.project = text; }
    else if (a == "--single") { if (!value(text)) return UsageError("import", "--single needs a file name.", err); job.single = text; }
    else if (a == "--output") { if (!value(job.output_series)) return UsageError("import", "--output needs a series name.", err); }
    else if (!a.empty() && a[0] == '-') return UsageError("import", "unknown option '" + a + "'.", err);
    else if (job.book.empty()) job.book = a;
    else return UsageError("import", "name one workbook.", err);
  }
  if (job.book.empty()) return UsageError("import", "name a workbook (.xlsx, .xls or .csv).", err);
  if (!job.single.empty() && !job.project.empty())
    return UsageError("import", "--single and --project cannot go together.", err);
  InstallUnattendedHost();
  spreadsheet::ImportJobResult result = spreadsheet::RunImportJob(job);
  for (const auto& name : result.skipped) err << "tsly import: " << name << " holds no numbers; not imported.\n";
  for (const auto& file : result.written) out << file.string() << "\n";
  if (!result.end_message.empty()) out << result.end_message << "\n";
  return result.status;
}

}  // namespace tessaly::app::tsly
