#include "dataset/process_errors.h"

#include <system_error>

#include "platform/paths.h"
#include "platform/textfile.h"

namespace tessaly::dataset {

ProcessErrorsLog::ProcessErrorsLog(fs::path folder, std::string file_name)
    : folder_(std::move(folder)), path_(folder_ / file_name) {}

bool ProcessErrorsLog::Append(std::string_view asc_name, std::string_view text) const {
  platform::TextWriter w(path_, platform::TextWriter::Mode::Append);
  if (!w.IsOpen()) return false;
  w.Line(asc_name);
  w.Line(text);
  return w.Close();
}

bool ProcessErrorsLog::AppendLine(std::string_view line) const {
  return platform::AppendLine(path_, line);
}

bool ProcessErrorsLog::Exists() const {
  std::error_code ec;
  return fs::is_regular_file(path_, ec);
}

std::optional<std::string> ProcessErrorsLog::Text() const {
  if (!Exists()) return std::nullopt;
  return platform::ReadWholeFile(path_);
}

void ProcessErrorsLog::DeleteBoth() const {
  std::error_code ec;
  fs::remove(path_, ec);
  platform::RemoveNoCase(folder_, kProcessingErrorsFileName);
}

}  // namespace tessaly::dataset
