#include "batch/engine/engine_client.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "platform/paths.h"
#include "platform/working_folder.h"

namespace tessaly::batch {

namespace {

// A setter's copy: the caller's elements up to the bound, the rest at their default.
template <typename T>
void CopyBounded(const std::vector<T>& from, std::vector<T>& to, size_t bound) {
  to.assign(bound, T{});
  std::copy_n(from.begin(), std::min(from.size(), bound), to.begin());
}

// The last line that is not blank of a small text file ("" when none).
std::string LastLine(const fs::path& path) {
  if (path.empty()) return "";
  std::ifstream in(path, std::ios::binary);
  std::string line, last;
  while (std::getline(in, line)) {
    while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.pop_back();
    if (!line.empty()) last = line;
  }
  constexpr size_t kMost = 300;
  return last.size() > kMost ? last.substr(0, kMost) : last;
}

// Whether this program has started an engine at all: until it has, an engine still running
// can only be one left by a program that crashed. A fact of the program, not of one run.
std::atomic<bool> ever_recorded{false};

}  // namespace

EngineSession::~EngineSession() {
  // The client unrecords its process from this session as it goes.
  engine.reset();
}

void EngineSession::Record(pid_t pid) {
  std::lock_guard lock(record_mutex_);
  pids_.push_back(pid);
  ever_recorded = true;
}

void EngineSession::Unrecord(pid_t pid) {
  std::lock_guard lock(record_mutex_);
  pids_.erase(std::remove(pids_.begin(), pids_.end(), pid), pids_.end());
}

std::vector<pid_t> EngineSession::RecordedEngines() const {
  std::lock_guard lock(record_mutex_);
  return pids_;
}

int EngineSession::KillRecordedEngines() {
  int killed = 0;
  for (pid_t pid : RecordedEngines()) {
    if (::kill(pid, SIGKILL) == 0) ++killed;
  }
  // Each client reaps its own process; the record empties as they notice the end.
  return killed;
}

void EngineSession::KillRunEngines(const std::optional<fs::path>& only_in_folder) {
  if (KillRecordedEngines() == 0 && (!ever_recorded || only_in_folder))
    platform::KillEngineProcesses(only_in_folder);
}

EngineClient::EngineClient(fs::path program_folder, EngineSession* session)
    : program_folder_(std::move(program_folder)), session_(session) {}

EngineClient::~EngineClient() {
  pid_t pid = process_.Pid();
  process_.Kill();
  if (session_) session_->Unrecord(pid);
  DropStderrFile();
}

void EngineClient::Note(std::string_view operation) {
  if (observer_) observer_(operation);
}

void EngineClient::SetOperationObserver(std::function<void(std::string_view)> observer) {
  observer_ = std::move(observer);
}

void EngineClient::SetEngineReadyHandler(std::function<void()> handler) {
  ready_handler_ = std::move(handler);
}

#define TESSALY_ARRAY_PROPERTY(Name, member, bound)                        \
  void EngineClient::Set##Name(const decltype(EngineArrays::member)& v) { \
    Note("Set" #Name);                                                     \
    CopyBounded(v, arrays_.member, bound);                                 \
  }                                                                        \
  void EngineClient::Get##Name(decltype(EngineArrays::member)& v) {       \
    Note("Get" #Name);                                                     \
    v = arrays_.member;                                                    \
  }

TESSALY_ARRAY_PROPERTY(Strings400, strings400, quorvane::kStrings400)
TESSALY_ARRAY_PROPERTY(Doubles20, doubles20, quorvane::kDoubles20)
TESSALY_ARRAY_PROPERTY(Integers20, integers20, quorvane::kIntegers20)
TESSALY_ARRAY_PROPERTY(Doubles10000A, doubles10000a, quorvane::kDoubles10000)
TESSALY_ARRAY_PROPERTY(RetainedData, retained_data, quorvane::kRetainedData)
TESSALY_ARRAY_PROPERTY(Doubles745, doubles745, quorvane::kDoubles745)
TESSALY_ARRAY_PROPERTY(Doubles10000B, doubles10000b, quorvane::kDoubles10000)
TESSALY_ARRAY_PROPERTY(Doubles10000C, doubles10000c, quorvane::kDoubles10000)
TESSALY_ARRAY_PROPERTY(ForecastValues, forecast_values, quorvane::kForecastValues)
TESSALY_ARRAY_PROPERTY(Strings2250, strings2250, quorvane::kStrings2250)
TESSALY_ARRAY_PROPERTY(FutureData, future_data, quorvane::kFutureData)
TESSALY_ARRAY_PROPERTY(SeriesData, series_data, quorvane::kSeriesData)
TESSALY_ARRAY_PROPERTY(SeriesNames, series_names, quorvane::kSeriesNames)
TESSALY_ARRAY_PROPERTY(PropertyValues, property_values, quorvane::kPropertyValues)

#undef TESSALY_ARRAY_PROPERTY

void EngineClient::SetSeriesTypes(const std::vector<int16_t>& values) {
  Note("SetSeriesTypes");
  CopyBounded(values, arrays_.series_types, quorvane::kSeriesTypes);
}

void EngineClient::SetObjectiveValues(const std::vector<int16_t>& values) {
  Note("SetObjectiveValues");
  CopyBounded(values, arrays_.objective_values, quorvane::kObjectives);
}

int16_t EngineClient::ErrorCode() {
  Note("ErrorCode");
  return arrays_.error_code;
}

void EngineClient::SetWorkFolder(const std::string& folder) {
  Note("SetWorkFolder");
  arrays_.work_folder = folder;
}

void EngineClient::SetArrayInput(bool value) {
  Note("SetArrayInput");
  arrays_.array_input = value;
}

void EngineClient::SetRunMode(int16_t mode) {
  Note("SetRunMode");
  arrays_.run_mode = mode;
}

fs::path EngineClient::WorkingFolder() const {
  return arrays_.work_folder.empty() ? program_folder_ : fs::path(arrays_.work_folder);
}

void EngineClient::Start() {
  Note("Start");
  if (Running()) return;
  started_ = true;
  ended_ = false;
  ready_raised_ = false;
  time_limit_hit_ = 0;
  failure_reason_.clear();
  arrays_.error_code = 0;

  const fs::path folder = WorkingFolder();
  // An answer left by an earlier call must never pass for this one's.
  platform::RemoveNoCase(folder, quorvane::kResponseFile);

  if (!quorvane::WriteExchangeFile(folder / quorvane::kRequestFile,
                                   quorvane::ExchangeKind::Request, arrays_)) {
    failure_reason_ = "The engine's request could not be written in " + folder.string() + ".";
    arrays_.error_code = kEngineFailedCode;
    ended_ = true;
    return;
  }
  std::string error;
  // The engine's own words on standard error are kept aside for the failure reason.
  std::error_code ec;
  fs::path tmp = fs::temp_directory_path(ec);
  if (!ec) {
    std::string templ = (tmp / "tessaly-engine-stderr-XXXXXX").string();
    int fd = mkstemp(templ.data());
    if (fd >= 0) {
      ::close(fd);
      stderr_file_ = templ;
    }
  }
  if (!process_.Start(platform::ShippedFile(program_folder_, kEngineExecutable), {}, folder, &error, stderr_file_)) {
    failure_reason_ = "The engine could not be started: " + error;
    arrays_.error_code = kEngineFailedCode;
    ended_ = true;
    return;
  }
  if (session_) session_->Record(process_.Pid());
  else ever_recorded = true;
}

bool EngineClient::Running() const { return started_ && !ended_; }

void EngineClient::Kill() {
  pid_t pid = process_.Pid();
  process_.Kill();
  if (session_) session_->Unrecord(pid);
}

void EngineClient::KillForTimeLimit(int seconds) {
  if (!Running()) return;
  time_limit_hit_ = seconds;
  Kill();
}

void EngineClient::FinishWork() {
  const fs::path folder = WorkingFolder();
  // A stage file outlives only an engine that crashed or was killed; left there, it would
  // name a stage of the next call before that engine has reached it.
  for (const char* stage : {"STAGE1.123", "STAGE2.123", "STAGE3.123", "STAGE4.123"}) {
    platform::RemoveNoCase(folder, stage);
  }
  auto response = quorvane::ReadExchangeFile(folder / quorvane::kResponseFile,
                                             quorvane::ExchangeKind::Response);
  if (response) {
    std::string work_folder = arrays_.work_folder;
    arrays_ = std::move(*response);
    arrays_.work_folder = work_folder;
    platform::RemoveNoCase(folder, quorvane::kResponseFile);
    platform::RemoveNoCase(folder, quorvane::kRequestFile);
  } else {
    // The request stays behind: it lets the failed call be run again for diagnosis.
    const auto& s = process_.Status();
    if (time_limit_hit_ > 0) {
      failure_reason_ = "The engine was stopped after the series time limit of " +
                        std::to_string(time_limit_hit_) + " seconds.";
    } else if (s.signaled) {
      failure_reason_ = "The engine was stopped by signal " + std::to_string(s.signal) + " (" +
                        strsignal(s.signal) + ") before it answered.";
    } else {
      failure_reason_ =
          "The engine ended with exit code " + std::to_string(s.code) + " without an answer.";
    }
    std::string said = LastLine(stderr_file_);
    if (!said.empty()) failure_reason_ += " It said: " + said;
    arrays_.error_code = kEngineFailedCode;
  }
  ended_ = true;
  DropStderrFile();
}

void EngineClient::DropStderrFile() {
  if (stderr_file_.empty()) return;
  std::error_code ec;
  fs::remove(stderr_file_, ec);
  stderr_file_.clear();
}

bool EngineClient::Poll() {
  if (!started_) return false;
  if (!ended_) {
    if (!process_.Poll()) return false;
    if (session_) session_->Unrecord(process_.Pid());
    FinishWork();
  }
  if (!ready_raised_) {
    ready_raised_ = true;
    if (ready_handler_) ready_handler_();
  }
  return true;
}

bool fCreateObject(const std::string& prog_id, std::shared_ptr<EngineClient>& result,
                   const fs::path& program_folder,
                   const std::function<void(const std::string&)>& log, CreateObjectError* error) {
  if (log) log("fCreateObject: " + prog_id);
  auto fail = [&](std::string text) {
    if (error) *error = {429, std::move(text)};
    return false;
  };
  if (!platform::EqualsNoCase(prog_id, kEngineProgID)) {
    return fail("ActiveX component can't create object: " + prog_id);
  }
  fs::path exe = platform::ShippedFile(program_folder, kEngineExecutable);
  if (!platform::IsExecutableFile(exe)) {
    return fail("ActiveX component can't create object: " + prog_id + " (" + exe.string() +
                " is missing or cannot be run)");
  }
  result = std::make_shared<EngineClient>(program_folder);
  if (log) log("fCreateObject: " + prog_id + " created");
  return true;
}

}  // namespace tessaly::batch
