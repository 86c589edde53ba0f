#pragma once
// The catalogue that turns the engine's and the pre-flight check's error codes into text.
// The program writes it as report.xml into the output folder and looks codes up in that
// file at run time (through the XML parser), not in the table in memory: a report.xml
// written by an earlier version is used as it stands.
//
// report.xml, one element a line, no declaration, no escaping of the texts:
//   <report>
//   <engine>
//   <error code="1">A stop in BJUID; please report this error to QVX.</error>
//   ...                                  (every code below 5000, ascending)
//   </engine>
//   <asc>
//   <error code="5000">ASC file not found!</error>
//   ...                                  (5000 to 5025)
//   </asc>
//   </report>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "dataset/process_errors.h"

namespace tessaly::dataset {

namespace fs = std::filesystem;

inline constexpr const char* kReportXmlName = "report.xml";

struct CatalogueRow {
  int code;
  std::string text;
};

// The rows of the two children, ascending by code.
const std::vector<CatalogueRow>& EngineCatalogue();
const std::vector<CatalogueRow>& AscCatalogue();

// The text of code 5024, written in two pieces with the print zone of fourteen columns
// between them, counted from the start of its line in report.xml.
std::string Row5024Text();

// One line of report.xml for a row.
std::string ReportXmlRowLine(const CatalogueRow& row);

// Writes report.xml into `output_path`, deleting an existing one (any case) first. With a
// logger, one line per row of the form of the row's code attribute (` code="1">`).
// False when the file cannot be written.
[[nodiscard]] bool CreateREPORTXML(const fs::path& output_path,
                     const std::function<void(const std::string&)>& log_line = {});

// Writes report.xml when `output_path` holds none.
[[nodiscard]] bool EnsureReportXml(const fs::path& output_path);

// Looks a code up in report.xml of `output_path`: codes from 5000 in the child `asc`,
// the others in `engine`, walking that child's rows until one has the code. The text of
// the row, or the not-found sentence. A missing report.xml is written first.
struct CodeLookup {
  bool found = false;
  std::string text;
};
CodeLookup LookUpErrorCode(long code, const fs::path& output_path);

// The page of a failed dataset, OutputPath + stem + "err.html", replacing any earlier
// one, with the code's text (or the not-found sentence); and the ASC file name and that
// text as two lines appended to the run's log.
void WriteErrorReport(long code, const std::string& asc_name, const fs::path& output_path,
                      const ProcessErrorsLog& log);

// Where the page of a dataset lies.
fs::path ErrorPagePath(const fs::path& output_path, const std::string& asc_name);

}  // namespace tessaly::dataset
