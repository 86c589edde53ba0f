#pragma once
// The engine object as the front-end holds it (a run's `EngineSession::engine`). Each setter
// keeps a copy of the caller's array at the contract's bound; each getter replaces the caller's
// array. `Start` writes the request into the working folder, starts the qvxengine process there
// and returns at once; `Poll` notices the end of the process, takes the response in, and raises
// `EngineReady` on the caller's thread. An engine that crashes, is killed or leaves no valid
// response is a failure of this one dataset (kEngineFailedCode), never of the front-end.
#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/exchange.h"
#include "platform/process.h"

namespace tessaly::batch {

namespace fs = std::filesystem;
using quorvane::EngineArrays;

// The ProgID under which the engine is created.
inline constexpr const char* kEngineProgID = "QVXEngine.clQVXEngine";
// The engine's executable in the program's folder.
inline constexpr const char* kEngineExecutable = "qvxengine";

// The code a dataset gets when the engine process ends without a valid response (crash,
// kill, a fault before it could answer): the catalogue's "A stop in BJUID; please report this
// error to QVX." is the engine's own word for an abnormal stop, and tells the user what to do.
constexpr int16_t kEngineFailedCode = 1;

class EngineClient;

// One run's engine: what the run shares with its engine calls, their waits and its cancel
// button. Whoever starts a run owns one and hands it on (in each call's EngineCallContext);
// two runs in one program have two, and a cancel of one stops its own engines only.
class EngineSession {
 public:
  EngineSession() = default;
  ~EngineSession();
  EngineSession(const EngineSession&) = delete;
  EngineSession& operator=(const EngineSession&) = delete;

  // Raised by the engine's EngineReady for the call under way.
  bool finished = false;
  // The run was cancelled (the cancel button, Ctrl-C, KILLQUOR.QVX). It stays set after the
  // engine call so that the run's loop ends; the run clears it when it starts.
  std::atomic<bool> canceled{false};
  // The engine object of the series in hand, or none.
  std::shared_ptr<EngineClient> engine;

  // The engine processes this run's clients have started and that have not yet ended.
  std::vector<pid_t> RecordedEngines() const;
  // Kills every engine in the record; returns how many were killed. Each client reaps its own.
  int KillRecordedEngines();
  // The cancel's kill: the engines in the record. With `only_in_folder` (a private working
  // folder) also any engine still working there. Without, and only while this program has
  // never started an engine (so one still running was left by a program that crashed), every
  // engine of the user's by name.
  void KillRunEngines(const std::optional<fs::path>& only_in_folder = std::nullopt);

 private:
  friend class EngineClient;
  void Record(pid_t pid);
  void Unrecord(pid_t pid);

  mutable std::mutex record_mutex_;
  std::vector<pid_t> pids_;
};

class EngineClient {
 public:
  // `program_folder` holds the qvxengine executable; the processes this client starts are
  // recorded in `session` (none: in no run's record).
  explicit EngineClient(fs::path program_folder, EngineSession* session = nullptr);
  ~EngineClient();
  EngineClient(const EngineClient&) = delete;
  EngineClient& operator=(const EngineClient&) = delete;

  // Strings400 (slots 1, 2).
  void SetStrings400(const std::vector<std::string>& values);
  void GetStrings400(std::vector<std::string>& values);
  // Doubles20 (3, 4).
  void SetDoubles20(const std::vector<double>& values);
  void GetDoubles20(std::vector<double>& values);
  // Integers20 (5, 6).
  void SetIntegers20(const std::vector<int16_t>& values);
  void GetIntegers20(std::vector<int16_t>& values);
  // Doubles10000A (7, 8).
  void SetDoubles10000A(const std::vector<double>& values);
  void GetDoubles10000A(std::vector<double>& values);
  // RetainedData (9, 10).
  void SetRetainedData(const std::vector<double>& values);
  void GetRetainedData(std::vector<double>& values);
  // SeriesTypes (11).
  void SetSeriesTypes(const std::vector<int16_t>& values);
  // ErrorCode (13): 0 or negative success, positive a code of the catalogue.
  int16_t ErrorCode();
  // ObjectiveValues (14).
  void SetObjectiveValues(const std::vector<int16_t>& values);
  // WorkFolder (16): the folder of the control files, where the engine runs.
  void SetWorkFolder(const std::string& folder);
  // Start (18): begins the work and returns at once.
  void Start();
  // Doubles745 (19, 20).
  void SetDoubles745(const std::vector<double>& values);
  void GetDoubles745(std::vector<double>& values);
  // Doubles10000B (21, 22), Doubles10000C (23, 24).
  void SetDoubles10000B(const std::vector<double>& values);
  void GetDoubles10000B(std::vector<double>& values);
  void SetDoubles10000C(const std::vector<double>& values);
  void GetDoubles10000C(std::vector<double>& values);
  // ForecastValues (25, 26).
  void SetForecastValues(const std::vector<double>& values);
  void GetForecastValues(std::vector<double>& values);
  // Strings2250 (27, 28).
  void SetStrings2250(const std::vector<std::string>& values);
  void GetStrings2250(std::vector<std::string>& values);
  // FutureData (29, 30).
  void SetFutureData(const std::vector<double>& values);
  void GetFutureData(std::vector<double>& values);
  // SeriesData (31, 32): the getter fills a second array; the caller's DataValues stay.
  void SetSeriesData(const std::vector<double>& values);
  void GetSeriesData(std::vector<double>& returned_values);
  // SeriesNames (33, 34).
  void SetSeriesNames(const std::vector<std::string>& values);
  void GetSeriesNames(std::vector<std::string>& values);
  // PropertyValues (35, 36): the getter fills ReturnedDataProp, a separate array.
  void SetPropertyValues(const std::vector<int16_t>& values);
  void GetPropertyValues(std::vector<int16_t>& returned_data_prop);
  // ArrayInput (39), RunMode (42).
  void SetArrayInput(bool value);
  void SetRunMode(int16_t mode);

  // The event EngineReady: raised once per Start, from Poll, when the work has ended.
  void SetEngineReadyHandler(std::function<void()> handler);
  // Checks (without blocking) whether the engine has ended; raises EngineReady when it has.
  // True once the work of Start has ended.
  bool Poll();
  // True between Start and the end of the engine process.
  bool Running() const;
  // Stops this client's own engine process at once (the work then ends as a failure).
  void Kill();
  // Stops the engine because it has worked on the series past `seconds`; the failure reason
  // then says so.
  void KillForTimeLimit(int seconds);
  // How the engine process ended (valid once Poll returned true).
  const platform::ExitStatus& ProcessStatus() const { return process_.Status(); }
  // Why the work failed without an answer from the engine ("" when it answered).
  const std::string& FailureReason() const { return failure_reason_; }
  // The working folder as the engine will use it.
  fs::path WorkingFolder() const;

  // For tests and traces: called with each operation's name as it is performed.
  void SetOperationObserver(std::function<void(std::string_view)> observer);

 private:
  void Note(std::string_view operation);
  void FinishWork();
  void DropStderrFile();

  fs::path program_folder_;
  EngineSession* session_ = nullptr;
  EngineArrays arrays_;
  platform::ChildProcess process_;
  bool started_ = false;
  bool ended_ = false;
  bool ready_raised_ = false;
  int time_limit_hit_ = 0;  // the limit in seconds when the engine was stopped for it
  std::string failure_reason_;
  fs::path stderr_file_;
  std::function<void()> ready_handler_;
  std::function<void(std::string_view)> observer_;
};

// Creates an engine object by its ProgID: proves that the engine can be started (its
// executable lies in the program's folder and may be run). With `log` given, writes the ProgID
// before and after. False, with the number and text of the fault, when it cannot be created.
struct CreateObjectError {
  int number = 0;
  std::string description;
};
[[nodiscard]] bool fCreateObject(const std::string& prog_id, std::shared_ptr<EngineClient>& result,
                   const fs::path& program_folder,
                   const std::function<void(const std::string&)>& log = {},
                   CreateObjectError* error = nullptr);

}  // namespace tessaly::batch
