#include "platform/process.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <thread>

#include "platform/paths.h"

extern char** environ;

namespace tessaly::platform {

namespace {

ExitStatus FromWaitStatus(int status) {
  ExitStatus s;
  if (WIFEXITED(status)) {
    s.exited = true;
    s.code = WEXITSTATUS(status);
  } else if (WIFSIGNALED(status)) {
    s.signaled = true;
    s.signal = WTERMSIG(status);
  }
  return s;
}

std::string ReadSmallFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

std::string ReadLink(const fs::path& path) {
  std::error_code ec;
  fs::path target = fs::read_symlink(path, ec);
  return ec ? std::string() : target.string();
}

std::string BaseName(std::string path) {
  // A replaced or deleted executable still names its file, with this mark after it.
  constexpr std::string_view kDeleted = " (deleted)";
  if (path.size() > kDeleted.size() &&
      path.compare(path.size() - kDeleted.size(), kDeleted.size(), kDeleted) == 0) {
    path.resize(path.size() - kDeleted.size());
  }
  auto slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool SameFolder(const fs::path& a, const fs::path& b) {
  std::error_code ec;
  return !a.empty() && fs::equivalent(a, b, ec) && !ec;
}

bool IsZombieOrGone(pid_t pid) {
  std::string stat = ReadSmallFile("/proc/" + std::to_string(pid) + "/stat");
  if (stat.empty()) return true;
  auto close = stat.rfind(')');
  if (close == std::string::npos || close + 2 >= stat.size()) return true;
  char state = stat[close + 2];
  return state == 'Z' || state == 'X';
}

}  // namespace

ChildProcess::~ChildProcess() {
  if (pid_ > 0 && !ended_) Kill();
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : pid_(other.pid_), ended_(other.ended_), status_(other.status_) {
  other.pid_ = -1;
  other.ended_ = false;
}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
  if (this != &other) {
    if (pid_ > 0 && !ended_) Kill();
    pid_ = other.pid_;
    ended_ = other.ended_;
    status_ = other.status_;
    other.pid_ = -1;
    other.ended_ = false;
  }
  return *this;
}

bool ChildProcess::Start(const fs::path& program, const std::vector<std::string>& args,
                         const fs::path& working_folder, std::string* error,
                         const fs::path& stderr_file) {
  if (pid_ > 0 && !ended_) Kill();
  pid_ = -1;
  ended_ = false;
  status_ = {};

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  std::string err_target = stderr_file.empty() ? std::string("/dev/null") : stderr_file.string();
  posix_spawn_file_actions_addopen(&actions, 2, err_target.c_str(),
                                   O_WRONLY | O_CREAT | O_APPEND, 0644);
  std::string folder = working_folder.string();
  if (!folder.empty()) posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());

  // A fresh signal state: the front-end may ignore signals the engine must not.
  posix_spawnattr_t attr;
  posix_spawnattr_init(&attr);
  sigset_t none, all;
  sigemptyset(&none);
  sigfillset(&all);
  posix_spawnattr_setsigmask(&attr, &none);
  posix_spawnattr_setsigdefault(&attr, &all);
  posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

  // The working folder is entered before the program is looked up: a relative path must
  // not be taken relative to it.
  std::error_code abs_error;
  std::string prog = fs::absolute(program, abs_error).string();
  if (abs_error) prog = program.string();
  std::vector<std::string> argv_store;
  argv_store.push_back(prog);
  argv_store.insert(argv_store.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (auto& a : argv_store) argv.push_back(a.data());
  argv.push_back(nullptr);

  pid_t pid = -1;
  int rc = posix_spawn(&pid, prog.c_str(), &actions, &attr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attr);
  if (rc != 0) {
    if (error) *error = prog + ": " + std::strerror(rc);
    return false;
  }
  pid_ = pid;
  return true;
}

bool ChildProcess::Poll() {
  if (pid_ <= 0) return false;
  if (ended_) return true;
  int status = 0;
  pid_t r = waitpid(pid_, &status, WNOHANG);
  if (r == pid_) {
    ended_ = true;
    status_ = FromWaitStatus(status);
  } else if (r < 0 && errno == ECHILD) {
    // Reaped elsewhere: it has ended, how is unknown.
    ended_ = true;
    status_ = {};
    status_.signaled = true;
  }
  return ended_;
}

bool ChildProcess::WaitFor(std::chrono::milliseconds limit) {
  auto until = std::chrono::steady_clock::now() + limit;
  while (!Poll()) {
    if (pid_ <= 0 || std::chrono::steady_clock::now() >= until) return Ended();
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

void ChildProcess::Kill() {
  if (pid_ <= 0 || Poll()) return;
  ::kill(pid_, SIGKILL);
  int status = 0;
  pid_t r;
  do {
    r = waitpid(pid_, &status, 0);
  } while (r < 0 && errno == EINTR);
  ended_ = true;
  status_ = r == pid_ ? FromWaitStatus(status) : ExitStatus{false, 0, true, SIGKILL};
}

bool IsExecutableFile(const fs::path& path) {
  std::error_code ec;
  return fs::is_regular_file(path, ec) && ::access(path.c_str(), X_OK) == 0;
}

std::vector<ProcessEntry> ListOwnProcesses(const std::optional<fs::path>& only_in_folder) {
  std::vector<ProcessEntry> out;
  DIR* dir = opendir("/proc");
  if (!dir) return out;
  const uid_t me = geteuid();
  const pid_t self = getpid();
  while (dirent* e = readdir(dir)) {
    char* end = nullptr;
    long pid = std::strtol(e->d_name, &end, 10);
    if (pid <= 0 || *end != '\0' || pid == self) continue;
    std::string base = std::string("/proc/") + e->d_name;
    struct stat st;
    if (::stat(base.c_str(), &st) != 0 || st.st_uid != me) continue;

    ProcessEntry entry;
    entry.pid = static_cast<pid_t>(pid);
    entry.zombie = IsZombieOrGone(entry.pid);
    if (entry.zombie) continue;
    entry.working_folder = ReadLink(base + "/cwd");
    if (only_in_folder && !SameFolder(entry.working_folder, *only_in_folder)) continue;

    std::string exe = ReadLink(base + "/exe");
    if (!exe.empty()) entry.names.push_back(BaseName(exe));
    std::string comm = ReadSmallFile(base + "/comm");
    while (!comm.empty() && (comm.back() == '\n' || comm.back() == '\0')) comm.pop_back();
    if (!comm.empty()) entry.names.push_back(comm);
    std::string cmdline = ReadSmallFile(base + "/cmdline");
    std::string argv0 = cmdline.substr(0, cmdline.find('\0'));
    if (!argv0.empty()) entry.names.push_back(BaseName(argv0));
    out.push_back(std::move(entry));
  }
  closedir(dir);
  return out;
}

std::vector<pid_t> FindProcessesEndingNoCase(std::string_view suffix,
                                             const std::optional<fs::path>& only_in_folder) {
  std::vector<pid_t> pids;
  for (const auto& p : ListOwnProcesses(only_in_folder)) {
    for (const auto& name : p.names) {
      if (EndsWithNoCase(name, suffix)) {
        pids.push_back(p.pid);
        break;
      }
    }
  }
  return pids;
}

int KillProcessesEndingNoCase(std::string_view suffix,
                              const std::optional<fs::path>& only_in_folder) {
  std::vector<pid_t> pids = FindProcessesEndingNoCase(suffix, only_in_folder);
  int killed = 0;
  for (pid_t pid : pids) {
    if (::kill(pid, SIGKILL) == 0) ++killed;
  }
  // SIGKILL is not instant: wait (briefly) until the kernel has taken each one down.
  auto until = std::chrono::steady_clock::now() + std::chrono::seconds(2);
  for (pid_t pid : pids) {
    while (!IsZombieOrGone(pid) && std::chrono::steady_clock::now() < until) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }
  return killed;
}

int KillEngineProcesses(const std::optional<fs::path>& only_in_folder) {
  int killed = KillProcessesEndingNoCase("qvxengine", only_in_folder);
  killed += KillProcessesEndingNoCase("qvxlite", only_in_folder);
  return killed;
}

}  // namespace tessaly::platform
