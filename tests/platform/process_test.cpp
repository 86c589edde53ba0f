#include "platform/process.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "support/program_folder.h"

namespace tessaly::platform {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

void MakeExecutable(const fs::path& path) { ::chmod(path.c_str(), 0755); }

fs::path WriteScript(const fs::path& path, const std::string& body) {
  WriteFile(path, "#!/bin/sh\n" + body + "\n");
  MakeExecutable(path);
  return path;
}

bool Contains(const std::vector<pid_t>& pids, pid_t pid) {
  return std::find(pids.begin(), pids.end(), pid) != pids.end();
}

TEST(ChildProcessTest, RunsInItsWorkingFolderAndReportsExitCode) {
  TempDir dir;
  fs::path script = WriteScript(dir / "job", "pwd > where.txt\necho \"$1\" >> where.txt\nexit 7");
  ChildProcess child;
  std::string error;
  ASSERT_TRUE(child.Start(script, {"first arg"}, dir.path(), &error)) << error;
  ASSERT_TRUE(child.WaitFor(std::chrono::seconds(10)));
  EXPECT_TRUE(child.Status().exited);
  EXPECT_EQ(child.Status().code, 7);
  EXPECT_FALSE(child.Status().Success());
  std::string where = ReadFile(dir / "where.txt");
  EXPECT_EQ(where, fs::canonical(dir.path()).string() + "\nfirst arg\n");
}

TEST(ChildProcessTest, RelativeProgramIsFoundFromTheCallersFolder) {
  TempDir dir;
  fs::create_directory(dir / "work");
  WriteScript(dir / "job", "pwd > where.txt");
  fs::path before = fs::current_path();
  fs::current_path(dir.path());
  ChildProcess child;
  bool started = child.Start("job", {}, dir / "work");
  fs::current_path(before);
  ASSERT_TRUE(started);
  ASSERT_TRUE(child.WaitFor(std::chrono::seconds(10)));
  EXPECT_TRUE(child.Status().Success());
  EXPECT_TRUE(fs::exists(dir / "work" / "where.txt"));
}

TEST(ChildProcessTest, PollDoesNotBlockAndKillEndsBySignal) {
  TempDir dir;
  fs::path script = WriteScript(dir / "sleeper", "exec sleep 30");
  ChildProcess child;
  ASSERT_TRUE(child.Start(script, {}, dir.path()));
  auto before = std::chrono::steady_clock::now();
  EXPECT_FALSE(child.Poll());
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(500));
  EXPECT_FALSE(child.WaitFor(std::chrono::milliseconds(50)));
  child.Kill();
  EXPECT_TRUE(child.Ended());
  EXPECT_TRUE(child.Status().signaled);
  EXPECT_EQ(child.Status().signal, SIGKILL);
}

TEST(ChildProcessTest, MissingProgramOrFolderIsAnErrorNotACrash) {
  TempDir dir;
  ChildProcess child;
  std::string error;
  EXPECT_FALSE(child.Start(dir / "no-such-engine", {}, dir.path(), &error));
  EXPECT_NE(error.find("no-such-engine"), std::string::npos);
  fs::path script = WriteScript(dir / "ok", "exit 0");
  EXPECT_FALSE(child.Start(script, {}, dir / "missing-folder", &error));
  EXPECT_FALSE(IsExecutableFile(dir / "no-such-engine"));
  WriteFile(dir / "plain", "x");
  EXPECT_FALSE(IsExecutableFile(dir / "plain"));
  EXPECT_TRUE(IsExecutableFile(script));
}

TEST(ChildProcessTest, DestroyingARunningChildKillsIt) {
  TempDir dir;
  fs::path sleeper = dir / "qvxengine";
  fs::copy_file("/bin/sleep", sleeper);
  pid_t pid;
  {
    ChildProcess child;
    ASSERT_TRUE(child.Start(sleeper, {"30"}, dir.path()));
    pid = child.Pid();
    EXPECT_TRUE(Contains(FindProcessesEndingNoCase("qvxengine", dir.path()), pid));
  }
  EXPECT_FALSE(Contains(FindProcessesEndingNoCase("qvxengine", dir.path()), pid));
}

// Engines are found by the end of their executable's name whatever its case, and by a
// script's name; processes of other names and in other folders are left alone.
TEST(EngineKillTest, KillsEngineNamesWithoutRegardToCaseAndSparesOthers) {
  TempDir dir;
  TempDir elsewhere;
  fs::copy_file("/bin/sleep", dir / "MyQVXEngine");
  fs::copy_file("/bin/sleep", dir / "qvxlite");
  fs::copy_file("/bin/sleep", dir / "qvxengine.bak");
  fs::copy_file("/bin/sleep", elsewhere / "qvxengine");
  WriteScript(dir / "scriptqvxengine", "while true; do sleep 0.2; done");

  ChildProcess upper, lite, other, far_away, script;
  ASSERT_TRUE(upper.Start(dir / "MyQVXEngine", {"30"}, dir.path()));
  ASSERT_TRUE(lite.Start(dir / "qvxlite", {"30"}, dir.path()));
  ASSERT_TRUE(other.Start(dir / "qvxengine.bak", {"30"}, dir.path()));
  ASSERT_TRUE(far_away.Start(elsewhere / "qvxengine", {"30"}, elsewhere.path()));
  ASSERT_TRUE(script.Start(dir / "scriptqvxengine", {}, dir.path()));
  std::this_thread::sleep_for(std::chrono::milliseconds(100));

  auto found = FindProcessesEndingNoCase("QvxEngine", dir.path());
  EXPECT_TRUE(Contains(found, upper.Pid()));
  EXPECT_TRUE(Contains(found, script.Pid()));
  EXPECT_FALSE(Contains(found, other.Pid()));
  EXPECT_FALSE(Contains(found, far_away.Pid()));

  EXPECT_EQ(KillEngineProcesses(dir.path()), 3);
  EXPECT_TRUE(upper.WaitFor(std::chrono::seconds(2)));
  EXPECT_TRUE(lite.WaitFor(std::chrono::seconds(2)));
  EXPECT_TRUE(script.WaitFor(std::chrono::seconds(2)));
  EXPECT_TRUE(upper.Status().signaled);
  EXPECT_FALSE(other.Poll());
  EXPECT_FALSE(far_away.Poll());
  EXPECT_TRUE(FindProcessesEndingNoCase("qvxengine", dir.path()).empty());
  EXPECT_TRUE(FindProcessesEndingNoCase("qvxlite", dir.path()).empty());
  EXPECT_EQ(FindProcessesEndingNoCase("qvxengine", elsewhere.path()).size(), 1u);
}

}  // namespace
}  // namespace tessaly::platform
