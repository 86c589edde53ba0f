#include "batch/batch_file.h"

#include <charconv>

#include "formats/batch_schema.h"
#include "batch/batch_texts.h"
#include "platform/dialogs.h"
#include "platform/paths.h"
#include "platform/textfile.h"
#include "platform/xml.h"

namespace tessaly::batch {

namespace fs = std::filesystem;
namespace xml = platform::xml;

namespace {

constexpr const char* kXsiNamespace2001 = "http://www.w3.org/2001/XMLSchema-instance";
constexpr const char* kOutputTags[] = {"details", "history", "forecasts", "afit", "af",
                                       "aff",     "ff",      "ac",        "res",  "ar"};
constexpr const char* kOutputSuffixes[] = {".htm",        "act.jpg",        "fore.jpg",
                                           "actfit.jpg",  "actfore.jpg",    "actfitfore.jpg",
                                           "fitfore.jpg", "actcleanse.jpg", "res.jpg",
                                           "actres.jpg"};

void Show(const std::string& text) {
  platform::Dialogs().Message(text, platform::mb::OKOnly, texts::kAppTitle);
}

int16_t ToInt16(const std::optional<std::string>& text) {
  if (!text) return 0;
  std::string_view s = *text;
  while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
  if (!s.empty() && s.front() == '+') s.remove_prefix(1);
  int value = 0;
  std::from_chars(s.data(), s.data() + s.size(), value);
  return static_cast<int16_t>(value);
}

// A folder kept in a project: relative ones (as a sample project ships them) are taken
// from the project file's own folder, so the project works wherever it is copied.
std::string ResolveFolder(const std::string& folder, const fs::path& project) {
  if (folder.empty() || folder.front() == '/') return folder;
  fs::path base = project.parent_path();
  if (base.empty()) base = fs::current_path();
  fs::path joined = (fs::absolute(base) / folder).lexically_normal();
  return joined.string();
}

}  // namespace

bool& CurrentSchema() {
  static bool flag = false;
  return flag;
}

std::string AscStem(const std::string& asc_name) {
  if (platform::EndsWithNoCase(asc_name, ".asc")) return asc_name.substr(0, asc_name.size() - 4);
  return asc_name;
}

cBatchFile::cBatchFile(fs::path program_folder) : program_folder_(std::move(program_folder)) {
  Clear();
}

cBatchFile::cBatchFile() : cBatchFile(platform::ProgramFolder()) {}

void cBatchFile::Clear() {
  batch_name_ = "defaultname.xml";
  objective_ = 0;
  all_complete_ = 0;
  SetInDirectory(program_folder_.string());
  SetOutDirectory(program_folder_.string());
  list_.clear();
  completed_.clear();
  error_.clear();
  run_date_.clear();
  changed_ = false;
}

void cBatchFile::SetInDirectory(std::string folder) {
  in_directory_ = platform::WithTrailingSlash(std::move(folder));
}

void cBatchFile::SetOutDirectory(std::string folder) {
  out_directory_ = platform::WithTrailingSlash(std::move(folder));
}

fs::path cBatchFile::SchemaPath() const {
  return program_folder_ / "DEFAULTXSD" / kBatchSchemaName;
}

bool cBatchFile::CheckIndex(int index, const char* empty_text, const char* bounds_text) const {
  if (list_.empty()) {
    Show(empty_text);
    return false;
  }
  if (index < 0 || index >= static_cast<int>(list_.size())) {
    Show(bounds_text);
    return false;
  }
  return true;
}

std::string cBatchFile::List(int index) const {
  if (!CheckIndex(index, texts::kEmptyGet, texts::kListGetBounds)) return {};
  return list_[static_cast<size_t>(index)];
}
void cBatchFile::SetList(int index, std::string value) {
  if (CheckIndex(index, texts::kEmptyLet, texts::kListLetBounds)) list_[static_cast<size_t>(index)] = std::move(value);
}
int16_t cBatchFile::Completed(int index) const {
  if (!CheckIndex(index, texts::kEmptyGet, texts::kCompletedGetBounds)) return 0;
  return completed_[static_cast<size_t>(index)];
}
void cBatchFile::SetCompleted(int index, int16_t value) {
  if (CheckIndex(index, texts::kEmptyGet, texts::kCompletedLetBounds)) completed_[static_cast<size_t>(index)] = value;
}
int16_t cBatchFile::Error(int index) const {
  if (!CheckIndex(index, texts::kEmptyGet, texts::kErrorGetBounds)) return 0;
  return error_[static_cast<size_t>(index)];
}
void cBatchFile::SetError(int index, int16_t value) {
  if (CheckIndex(index, texts::kEmptyGet, texts::kErrorLetBounds)) error_[static_cast<size_t>(index)] = value;
}
std::string cBatchFile::RunDate(int index) const {
  if (!CheckIndex(index, texts::kEmptyGet, texts::kRunDateGetBounds)) return {};
  return run_date_[static_cast<size_t>(index)];
}
void cBatchFile::SetRunDate(int index, std::string value) {
  if (CheckIndex(index, texts::kEmptyGet, texts::kRunDateLetBounds)) run_date_[static_cast<size_t>(index)] = std::move(value);
}

void cBatchFile::Add_File(std::string name, int16_t completed, int16_t error, std::string run_date) {
  list_.push_back(std::move(name));
  completed_.push_back(completed);
  error_.push_back(error);
  run_date_.push_back(std::move(run_date));
}

void cBatchFile::Remove_File() {
  if (list_.empty()) {
    Show(texts::kEmptyRemove);
    return;
  }
  list_.pop_back();
  completed_.pop_back();
  error_.pop_back();
  run_date_.pop_back();
}

bool cBatchFile::Build(const fs::path& path, std::string* reason) const {
  xml::Document doc;
  doc.AppendProcessingInstruction("xml", "version=\"1.0\" encoding=\"UTF-8\"");
  xml::Node batch = doc.SetRoot("batch");
  batch.SetAttribute("inputpath", in_directory_);
  batch.SetAttribute("outputpath", out_directory_);
  batch.SetAttribute("xmlns:xsd", kXsiNamespace2001);
  batch.SetAttribute("xsd:noNamespaceSchemaLocation", SchemaPath().string());
  xml::Node set = batch.AppendElement("set");
  set.SetAttribute("runcomplete", std::to_string(all_complete_));
  set.SetAttribute("objective", std::to_string(objective_));
  for (size_t i = 0; i < list_.size(); ++i) {
    std::string stem = AscStem(list_[i]);
    xml::Node series = set.AppendElement("series");
    series.SetAttribute("name", stem);
    series.SetAttribute("complete", std::to_string(completed_[i]));
    series.SetAttribute("err", std::to_string(error_[i]));
    series.SetAttribute("rundate", run_date_[i]);
    series.AppendElement("data", list_[i]);
    for (size_t t = 0; t < std::size(kOutputTags); ++t)
      series.AppendElement(kOutputTags[t], stem + kOutputSuffixes[t]);
  }
  return doc.Save(path, {}, reason);
}

bool cBatchFile::Load(const fs::path& path) {
  for (int attempt = 0;; ++attempt) {
    Clear();
    if (!fs::exists(SchemaPath())) {
      std::error_code ec;
      fs::create_directories(SchemaPath().parent_path(), ec);
      // A schema that cannot be written fails the check against it below, with its reason.
      (void)CreateBATCHXSD(SchemaPath());
    }
    xml::ParseResult parsed = xml::ParseFile(path);
    std::string reason;
    if (!parsed) {
      reason = parsed.Describe();
    } else {
      xml::ValidationResult valid = xml::ValidateAgainstSchema(*parsed.document, SchemaPath());
      if (!valid) reason = valid.reason;
    }
    if (!reason.empty()) {
      Show(texts::kXmlFailed + reason);
      CurrentSchema() = false;
      return false;
    }

    std::string text = path.string();
    batch_name_ = text.substr(text.find_last_of('/') + 1);
    xml::Node batch = parsed.document->Root();
    SetInDirectory(ResolveFolder(batch.Attribute("inputpath").value_or(""), path));
    // A project without an output folder writes beside itself, never at the root of the
    // file system.
    std::string out = batch.Attribute("outputpath").value_or("");
    if (out.find_first_not_of(' ') == std::string::npos) out = ".";
    SetOutDirectory(ResolveFolder(out, path));
    std::vector<xml::Node> sets = batch.ChildElements();
    if (!sets.empty()) {
      all_complete_ = ToInt16(sets[0].Attribute("runcomplete"));
      objective_ = ToInt16(sets[0].Attribute("objective"));
      for (const xml::Node& series : sets[0].ElementsByTagName("series")) {
        xml::Node data = series.FirstChildElement("data");
        Add_File(data ? data.Text() : std::string(), ToInt16(series.Attribute("complete")),
                 ToInt16(series.Attribute("err")), series.Attribute("rundate").value_or(""));
      }
    }

    platform::LineReader reader(path);
    reader.Next();
    std::optional<std::string> second = reader.Next();
    if (second && second->find(kBatchSchemaName) != std::string::npos) {
      CurrentSchema() = true;
      return true;
    }
    // Written for an older schema: rewrite it in the current form and read it again. A
    // file that can't be rewritten keeps what was read.
    if (attempt > 0 || !Build(path)) return true;
  }
}

}  // namespace tessaly::batch
