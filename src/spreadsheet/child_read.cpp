#include "spreadsheet/child_read.h"

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace tessaly::spreadsheet {

namespace {
bool WriteAll(int fd, const std::string& bytes) {
  const char* at = bytes.data();
  size_t left = bytes.size();
  while (left > 0) {
    ssize_t n = ::write(fd, at, left);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    at += n;
    left -= static_cast<size_t>(n);
  }
  return true;
}
}  // namespace

ChildRead ReadInChild(const std::function<std::string()>& work, std::chrono::seconds limit) {
  ChildRead out;
  int fds[2];
  if (::pipe(fds) != 0) {
    out.why = "no pipe to a reading process";
    return out;
  }
  const pid_t pid = ::fork();
  if (pid < 0) {
    ::close(fds[0]);
    ::close(fds[1]);
    out.why = "no reading process could be started";
    return out;
  }
  if (pid == 0) {
    ::close(fds[0]);
    // _exit: the child leaves no buffers, handlers or files of the parent's to flush.
    ::_exit(WriteAll(fds[1], work()) ? 0 : 3);
  }
  ::close(fds[1]);
  const auto deadline = std::chrono::steady_clock::now() + limit;
  bool timed_out = false;
  char buffer[65536];
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) {
      timed_out = true;
      ::kill(pid, SIGKILL);
      break;
    }
    pollfd p{fds[0], POLLIN, 0};
    int ready = ::poll(&p, 1, static_cast<int>(std::min<long long>(left.count(), 1000)));
    if (ready < 0 && errno == EINTR) continue;
    if (ready == 0) continue;
    ssize_t n = ::read(fds[0], buffer, sizeof buffer);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    out.bytes.append(buffer, static_cast<size_t>(n));
  }
  ::close(fds[0]);
  int status = 0;
  while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  if (!timed_out && WIFEXITED(status) && WEXITSTATUS(status) == 0) {
    out.ok = true;
    return out;
  }
  out.bytes.clear();
  if (timed_out)
    out.why = "the reader took longer than " + std::to_string(limit.count()) + " seconds and was stopped";
  else if (WIFSIGNALED(status))
    out.why = "the reader stopped with signal " + std::to_string(WTERMSIG(status));
  else
    out.why = "the reader ended with status " + std::to_string(WEXITSTATUS(status));
  return out;
}

}  // namespace tessaly::spreadsheet
