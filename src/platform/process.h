#pragma once
// Child processes and the system's process list: how the front-end starts the engine in its
// working folder, notices its end without blocking, and stops engine processes on a cancel.
#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessaly::platform {

// Set by `tsly run --jobs` for the runs it starts: the process id of the parent that holds the
// working folder's lock, so that its own jobs do not wait for it.
inline constexpr const char* kJobsParentVariable = "TESSALY_JOBS_PARENT";

namespace fs = std::filesystem;

// How a process ended.
struct [[nodiscard]] ExitStatus {
  bool exited = false;    // ended through exit(): `code` holds its status
  int code = 0;
  bool signaled = false;  // ended by a signal: `signal` holds its number
  int signal = 0;
  bool Success() const { return exited && code == 0; }
};

// One started process. Not copyable; moving hands over the duty to reap it.
// A process still running when its owner is destroyed is killed and reaped, so that
// no child outlives the object that started it.
class ChildProcess {
 public:
  ChildProcess() = default;
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ChildProcess(ChildProcess&& other) noexcept;
  ChildProcess& operator=(ChildProcess&& other) noexcept;

  // Starts `program` with `args` (argv[1..]) in `working_folder`, standard input and output
  // from and to /dev/null, standard error as given (empty: /dev/null). False, with a reason
  // in `error`, when the program cannot be started.
  [[nodiscard]] bool Start(const fs::path& program, const std::vector<std::string>& args,
             const fs::path& working_folder, std::string* error = nullptr,
             const fs::path& stderr_file = {});

  // True once the process has ended (and has been reaped). Never blocks.
  bool Poll();
  // Blocks until the process ends or `limit` passes; true when it has ended.
  [[nodiscard]] bool WaitFor(std::chrono::milliseconds limit);
  // Sends SIGKILL to the process (if still running) and reaps it.
  void Kill();

  bool Started() const { return pid_ > 0; }
  bool Ended() const { return ended_; }
  pid_t Pid() const { return pid_; }
  const ExitStatus& Status() const { return status_; }

 private:
  pid_t pid_ = -1;
  bool ended_ = false;
  ExitStatus status_;
};

// True when `path` is a regular file the current user may execute.
bool IsExecutableFile(const fs::path& path);

// The name under which a process runs: the file name of its executable (for a script, the
// script's name as the system records it), and the file name of its first argument.
struct ProcessEntry {
  pid_t pid = 0;
  std::vector<std::string> names;
  fs::path working_folder;  // empty when unreadable
  bool zombie = false;      // ended, waiting to be reaped by its parent
};

// The current user's live processes (zombies excluded), the calling process excluded.
// When `only_in_folder` is given, only those whose working folder is that folder.
std::vector<ProcessEntry> ListOwnProcesses(const std::optional<fs::path>& only_in_folder = {});

// The pids of the current user's live processes one of whose names ends in `suffix`
// without regard to case.
std::vector<pid_t> FindProcessesEndingNoCase(std::string_view suffix,
                                             const std::optional<fs::path>& only_in_folder = {});

// Kills (SIGKILL) those processes and waits briefly until each has gone or become a zombie.
// Returns how many were signalled.
int KillProcessesEndingNoCase(std::string_view suffix,
                              const std::optional<fs::path>& only_in_folder = {});

// Kills every engine process of the current user: names ending in "qvxengine", then those
// ending in "qvxlite". `only_in_folder` narrows it to engines working in one folder (tests
// that must not touch engines started by anyone else).
int KillEngineProcesses(const std::optional<fs::path>& only_in_folder = {});

}  // namespace tessaly::platform
