#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "formats/batch_schema.h"
#include "shell/ftables.h"
#include "shell/startup.h"
#include "support/messages.h"
#include "support/program_folder.h"

namespace tessaly::shell {
namespace {

namespace fs = std::filesystem;
using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

std::vector<std::string> Names(const fs::path& folder) {
  std::vector<std::string> out;
  for (const auto& e : fs::directory_iterator(folder)) out.push_back(e.path().filename().string());
  std::sort(out.begin(), out.end());
  return out;
}

// Two programs on one working folder would clear each other's files: the second finds the
// folder locked, says who holds it, and waits (unattended) or lets the person choose.
TEST(WorkingFolderLock, ASecondProgramIsToldAndWaits) {
  TempDir folder;
  int ready[2], release[2];
  ASSERT_EQ(::pipe(ready), 0);
  ASSERT_EQ(::pipe(release), 0);
  pid_t holder = ::fork();
  if (holder == 0) {
    char c = 0;
    bool locked = TryLockWorkingFolder(folder.path()) == FolderLock::Locked;
    (void)!::write(ready[1], &c, 1);
    (void)!::read(release[0], &c, 1);
    ::_exit(locked ? 0 : 1);
  }
  char c = 0;
  ASSERT_EQ(::read(ready[0], &c, 1), 1);
  long pid = 0;
  EXPECT_EQ(TryLockWorkingFolder(folder.path(), &pid), FolderLock::HeldByAnother);
  EXPECT_EQ(pid, holder);
  {
    tessaly::testing::RecordedMessages host;
    host->answers = {platform::mb::Cancel};
    EXPECT_FALSE(LockWorkingFolder(folder.path()));
    ASSERT_EQ(host->shown.size(), 1u);
    EXPECT_EQ(host->shown[0].text,
              "Another Tessaly (process " + std::to_string(holder) + ") is using the working folder " +
                  folder.path().string() +
                  ". Two programs in one folder would delete each other's files, so this one waits until it "
                  "ends.\r\n\r\nRetry when it has closed, or Cancel to close this one.");
  }
  // Unattended: said once on standard error, then the wait until the holder ends.
  std::atomic<bool> released{false};
  std::thread end_holder([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    released = true;
    (void)!::write(release[1], &c, 1);
  });
  platform::SetDialogHost(std::make_shared<platform::StderrDialogHost>());
  EXPECT_TRUE(LockWorkingFolder(folder.path()));
  EXPECT_TRUE(released) << "the lock was taken while its holder still ran";
  end_holder.join();
  int status = -1;
  EXPECT_EQ(::waitpid(holder, &status, 0), holder);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(TryLockWorkingFolder(folder.path()), FolderLock::Locked);
  UnlockWorkingFolder();
  platform::SetDialogHost(nullptr);
}

TEST(ControlFiles, OnlyNamesEndingInUpperOrLowerQvx) {
  EXPECT_TRUE(IsControlFileName("NOTREND.QVX"));
  EXPECT_TRUE(IsControlFileName("savemod.qvx"));
  EXPECT_TRUE(IsControlFileName("ODDQVX"));
  EXPECT_FALSE(IsControlFileName("Mixed.Qvx"));
  EXPECT_FALSE(IsControlFileName("ENGINE.GO"));
}

TEST(BackupControlFiles, TheThreeCases) {
  TempDir program;
  WriteFile(program / "NOTREND.QVX", "now");
  WriteFile(program / "savemod.qvx", "now");
  WriteFile(program / "ENGINE.CND", "rules");

  // No QVXBACKUP: made, and the control files copied in.
  BackupControlFiles(program.path());
  EXPECT_EQ(Names(program / "QVXBACKUP"), (std::vector<std::string>{"NOTREND.QVX", "savemod.qvx"}));

  // Held but empty (an orderly exit emptied it): filled again from the folder.
  for (const auto& f : ControlFiles(program / "QVXBACKUP")) fs::remove(f);
  WriteFile(program / "NEW.QVX", "new");
  BackupControlFiles(program.path());
  EXPECT_EQ(Names(program / "QVXBACKUP"),
            (std::vector<std::string>{"NEW.QVX", "NOTREND.QVX", "savemod.qvx"}));

  // Not empty (a crash): the backup wins over the folder, and stays.
  WriteFile(program / "QVXBACKUP" / "NOTREND.QVX", "before crash");
  fs::remove(program / "QVXBACKUP" / "NEW.QVX");
  WriteFile(program / "CRASHED.QVX", "left by the crash");
  BackupControlFiles(program.path());
  EXPECT_FALSE(fs::exists(program / "CRASHED.QVX"));
  EXPECT_FALSE(fs::exists(program / "NEW.QVX"));
  EXPECT_EQ(ReadFile(program / "NOTREND.QVX"), "before crash");
  EXPECT_EQ(Names(program / "QVXBACKUP"), (std::vector<std::string>{"NOTREND.QVX", "savemod.qvx"}));
  EXPECT_TRUE(fs::exists(program / "ENGINE.CND"));
}

TEST(FileExit, RestoresTheFolderAndASecondExitDoesNothing) {
  TempDir program;
  Shell().program_folder = program.path();
  WriteFile(program / "NOTREND.QVX", "at start");
  BackupControlFiles(program.path());
  // During the run the folder changes.
  WriteFile(program / "NOTREND.QVX", "changed");
  WriteFile(program / "SAVEMOD.QVX", "made by a run");
  FileExit();
  EXPECT_EQ(ReadFile(program / "NOTREND.QVX"), "at start");
  EXPECT_FALSE(fs::exists(program / "SAVEMOD.QVX"));
  EXPECT_TRUE(Names(program / "QVXBACKUP").empty());

  WriteFile(program / "SAVEMOD.QVX", "after the first exit");
  FileExit();
  EXPECT_EQ(ReadFile(program / "SAVEMOD.QVX"), "after the first exit");
}

TEST(CleanupReports, LooksInTheCurrentFolderAndDeletesFromTheProgramFolder) {
  TempDir program, elsewhere;
  WriteFile(program / "FITTED.CSV", "x");
  WriteFile(program / "summape.txt", "x");
  WriteFile(program / "keep.csv", "x");
  WriteFile(elsewhere / "fitted.csv", "x");
  CleanupReports(StartCleanList(), elsewhere.path(), program.path());
  EXPECT_FALSE(fs::exists(program / "FITTED.CSV"));
  EXPECT_TRUE(fs::exists(program / "summape.txt"));
  CleanupReports(StartCleanList(), program.path(), program.path());
  EXPECT_FALSE(fs::exists(program / "summape.txt"));
  EXPECT_TRUE(fs::exists(program / "keep.csv"));
}

TEST(SchemaFiles, WrittenWhenMissingAndLeftWhenPresent) {
  TempDir program;
  fs::create_directory(program / "DEFAULTXSD");
  WriteFile(program / "DEFAULTXSD" / "bpschema.xsd", "mine");
  WriteMissingSchemaFiles(program.path());
  EXPECT_EQ(Names(program / "DEFAULTXSD"),
            (std::vector<std::string>{"UserPreferences.xml", "UserPrefschema.xsd",
                                      "batchschema1.0.2.xsd", "bpschema.xsd"}));
  EXPECT_EQ(ReadFile(program / "DEFAULTXSD" / "bpschema.xsd"), "mine");
  EXPECT_EQ(ReadFile(program / "DEFAULTXSD" / "batchschema1.0.2.xsd"), batch::BatchSchemaText());
}

TEST(FTables, PublishedCriticalValues) {
  EXPECT_NEAR(FCritical05(1, 1), 161.45, 0.01);
  EXPECT_NEAR(FCritical05(2, 54), 3.168, 0.001);
  EXPECT_NEAR(FCritical05(10, 100), 1.927, 0.001);
  EXPECT_NEAR(FCritical05(20, 200), 1.623, 0.001);
  EXPECT_NEAR(FCritical05(1, 200), 3.888, 0.001);
  TempDir program;
  ASSERT_TRUE(LoadFTable1Link(program.path()));
  ASSERT_TRUE(LoadFTable2link(program.path()));
  std::string t1 = ReadFile(program / "FTable1.html");
  std::string t2 = ReadFile(program / "FTable2.html");
  auto count = [](const std::string& s, const std::string& what) {
    size_t n = 0;
    for (size_t p = s.find(what); p != std::string::npos; p = s.find(what, p + 1)) ++n;
    return n;
  };
  EXPECT_EQ(count(t1, "<tr>"), 101u);  // header and denominators 1-100
  EXPECT_EQ(count(t1, "<td>"), 1000u);
  EXPECT_EQ(count(t2, "<tr>"), 201u);
  EXPECT_EQ(count(t2, "<td>"), 4000u);
  EXPECT_NE(t1.find("<tr><th>1</th><td>161.4</td><td>199.5</td>"), std::string::npos);
}

struct RecordingRunner : CommandLineRunner {
  std::vector<std::string> calls;
  int RunProject(const fs::path& p) override {
    calls.push_back("project " + p.filename().string());
    return 0;
  }
  int RunWorkbook(const fs::path& p, const std::string& sheet,
                  const std::vector<std::string>& options) override {
    calls.push_back("workbook " + p.filename().string() + " [" + sheet + "] " +
                    std::to_string(options.size()));
    return 0;
  }
};

TEST(CommandLineRun, TokensDecideWhatRuns) {
  tessaly::testing::RecordedMessages host;
  TempDir program;
  Shell().program_folder = program.path();
  WriteFile(program / "p.XML", "<x/>");
  WriteFile(program / "book.xlsx", "");
  RecordingRunner runner;
  auto run = [&](std::vector<std::string> tokens) {
    return RunCommandLine(CommandLine{std::move(tokens)}, runner);
  };
  EXPECT_FALSE(run({}).has_value());
  EXPECT_FALSE(run({"/DEV"}).has_value());
  EXPECT_FALSE(run({"/ns", "/L"}).has_value());
  EXPECT_EQ(run({(program / "p.XML").string()}), 0);
  EXPECT_EQ(run({(program / "book.xlsx").string(), "Sheet1"}), 0);
  EXPECT_EQ(run({(program / "book.xlsx").string(), "Sheet1", "/AF"}), 0);
  EXPECT_EQ(runner.calls, (std::vector<std::string>{"project p.XML", "workbook book.xlsx [Sheet1] 0",
                                                    "workbook book.xlsx [Sheet1] 3"}));
  EXPECT_TRUE(host->shown.empty());
}

TEST(CommandLineRun, SwitchesAreWholeTokensWithoutRegardToCase) {
  CommandLine cl{{"/data/l/Project.xml", "/ns", "/Dev"}};
  EXPECT_TRUE(cl.Has("/NS"));
  EXPECT_TRUE(cl.Has("/DEV"));
  EXPECT_FALSE(cl.Has("/L"));
  EXPECT_EQ(cl.File().value_or(""), "/data/l/Project.xml");
  EXPECT_TRUE(SplashWanted(CommandLine{}));
  EXPECT_FALSE(SplashWanted(cl));
  EXPECT_TRUE(SplashWanted(CommandLine{{"/DEV"}}));
}

}  // namespace
}  // namespace tessaly::shell
