#pragma once
// cBatchFile: a project in memory, its ASC files with the status of their last run, and
// the project XML it is read from and written to.
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace tessaly::batch {

// Set by a Load that found a project of the current schema; cleared when a load fails.
bool& CurrentSchema();

// The `name` attribute and the stem of every output: the name less a closing ".asc"
// (compared without case), the whole name otherwise.
std::string AscStem(const std::string& asc_name);

class cBatchFile {
 public:
  // `program_folder` holds DEFAULTXSD and is the start value of both directories.
  explicit cBatchFile(std::filesystem::path program_folder);
  cBatchFile();  // the running program's folder

  const std::string& BatchName() const { return batch_name_; }
  void SetBatchName(std::string name) { batch_name_ = std::move(name); }
  int16_t Objective() const { return objective_; }
  void SetObjective(int16_t v) { objective_ = v; }
  int16_t AllComplete() const { return all_complete_; }
  void SetAllComplete(int16_t v) { all_complete_ = v; }
  // Both directories always end in "/": the setters add it where it is missing.
  const std::string& InDirectory() const { return in_directory_; }
  void SetInDirectory(std::string folder);
  const std::string& OutDirectory() const { return out_directory_; }
  void SetOutDirectory(std::string folder);
  int16_t Size() const { return static_cast<int16_t>(list_.size()); }
  // The file count without the 16-bit narrowing, for the limit checks.
  std::size_t Count() const { return list_.size(); }

  // Indexed members, 0 to Size - 1. A bad index or an empty list shows the system's
  // message; the getter then returns an empty value and the setter changes nothing.
  std::string List(int index) const;
  void SetList(int index, std::string value);
  int16_t Completed(int index) const;
  void SetCompleted(int index, int16_t value);
  int16_t Error(int index) const;
  void SetError(int index, int16_t value);
  std::string RunDate(int index) const;
  void SetRunDate(int index, std::string value);

  void Add_File(std::string name, int16_t completed, int16_t error, std::string run_date);
  void Remove_File();
  // Writes the whole project to `path`, replacing the file. False when it can't be written.
  // Saves through a temporary file and a rename: a failed save leaves the file on disk
  // as it was; `reason` (when given) says why it failed.
  bool Build(const std::filesystem::path& path, std::string* reason = nullptr) const;
  // Reads the project, validating it against the schema in DEFAULTXSD. A project written
  // for an older schema is rewritten in the current form and read again.
  bool Load(const std::filesystem::path& path);
  void Clear();

  // Changes not yet written by Build (the main form's mark of unsaved changes).
  bool Changed() const { return changed_; }
  void SetChanged(bool v) { changed_ = v; }

  const std::filesystem::path& ProgramFolder() const { return program_folder_; }
  std::filesystem::path SchemaPath() const;

 private:
  bool CheckIndex(int index, const char* empty_text, const char* bounds_text) const;

  std::filesystem::path program_folder_;
  std::string batch_name_;
  int16_t objective_ = 0;
  int16_t all_complete_ = 0;
  std::string in_directory_;
  std::string out_directory_;
  std::vector<std::string> list_;
  std::vector<int16_t> completed_;
  std::vector<int16_t> error_;
  std::vector<std::string> run_date_;
  bool changed_ = false;
};

}  // namespace tessaly::batch
