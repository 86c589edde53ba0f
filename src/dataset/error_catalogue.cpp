#include "dataset/error_catalogue.h"

#include "dataset/asc_dataset.h"
#include "dataset/messages.h"
#include "platform/paths.h"
#include "platform/textfile.h"
#include "platform/xml.h"

namespace tessaly::dataset {

namespace {

constexpr size_t kPrintZone = 14;

std::string RowOpening(int code) { return "<error code=\"" + std::to_string(code) + "\">"; }

// The log line of a row: its code attribute. The one for 5024 reads "50240", so that logs
// compare line for line with those of earlier versions.
std::string RowLogLine(int code) {
  return code == 5024 ? " code=\"50240\">" : " code=\"" + std::to_string(code) + "\">";
}

// Output folders are made when missing.
void MakeFolder(const fs::path& folder) {
  std::error_code ec;
  fs::create_directories(folder, ec);
}

}  // namespace

std::string Row5024Text() {
  const std::string first =
      "One or more of the given data names contains invalid letters or symbols.  Data names "
      "may not contain any spaces(";
  const std::string rest =
      "); periods(.); exclamation points(!); backquotes(`); brackets([]); wild card characters "
      "such as * or ?; or ASCII characters 0 through 31.  Please correct this before running "
      "again.";
  // The second piece starts at the next print zone after the first, counted from the
  // line's first column.
  size_t column = RowOpening(5024).size() + first.size();
  size_t pad = kPrintZone - column % kPrintZone;
  return first + std::string(pad, ' ') + rest;
}

std::string ReportXmlRowLine(const CatalogueRow& row) {
  return RowOpening(row.code) + row.text + "</error>";
}

bool CreateREPORTXML(const fs::path& output_path,
                     const std::function<void(const std::string&)>& log_line) {
  MakeFolder(output_path);
  platform::RemoveNoCase(output_path, kReportXmlName);
  platform::TextWriter w(output_path / kReportXmlName);
  if (!w.IsOpen()) return false;
  auto rows = [&](const std::vector<CatalogueRow>& list) {
    for (const CatalogueRow& row : list) {
      w.Line(ReportXmlRowLine(row));
      if (log_line) log_line(RowLogLine(row.code));
    }
  };
  w.Line("<report>");
  w.Line("<engine>");
  rows(EngineCatalogue());
  w.Line("</engine>");
  w.Line("<asc>");
  rows(AscCatalogue());
  w.Line("</asc>");
  w.Line("</report>");
  return w.Close();
}

bool EnsureReportXml(const fs::path& output_path) {
  if (platform::ExistsNoCase(output_path, kReportXmlName)) return true;
  return CreateREPORTXML(output_path);
}

CodeLookup LookUpErrorCode(long code, const fs::path& output_path) {
  CodeLookup out;
  // A catalogue that cannot be written is not found below, and the code's own line stands.
  (void)EnsureReportXml(output_path);
  platform::xml::ParseResult parsed =
      platform::xml::ParseFile(platform::ResolveNoCase(output_path, kReportXmlName));
  if (parsed) {
    platform::xml::Node root = parsed.document->Root();
    platform::xml::Node child = root ? root.Child(code >= 5000 ? 1 : 0) : platform::xml::Node();
    const std::string wanted = std::to_string(code);
    if (child) {
      for (const platform::xml::Node& row : child.Children()) {
        if (row.Attribute("code") == wanted) {
          out.found = true;
          out.text = row.Text();
          return out;
        }
      }
    }
  }
  out.text = msg::CodeNotFound(code);
  return out;
}

fs::path ErrorPagePath(const fs::path& output_path, const std::string& asc_name) {
  return output_path / (AscStem(fs::path(asc_name).filename().string()) + "err.html");
}

void WriteErrorReport(long code, const std::string& asc_name, const fs::path& output_path,
                      const ProcessErrorsLog& log) {
  MakeFolder(output_path);
  fs::path page = ErrorPagePath(output_path, asc_name);
  platform::RemoveNoCase(output_path, page.filename().string());
  CodeLookup lookup = LookUpErrorCode(code, output_path);
  platform::TextWriter w(page);
  w.Line(msg::ErrorPageLine1(asc_name));
  w.Line(msg::ErrorPageLine2(asc_name));
  w.Line(lookup.text);
  w.Line(msg::kErrorPageLine4);
  // A page that cannot be written still leaves the reason in the run's log below; the log
  // is where failures are told, so its own failure has nowhere further to go.
  (void)w.Close();
  (void)log.Append(asc_name, lookup.text);
}

}  // namespace tessaly::dataset
