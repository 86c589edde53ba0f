// The real tessaly executable, started in a fresh copy of the program folder: what the
// folder holds after start-up and exit, and how each form of command line ends.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <set>
#include <thread>

#include "platform/dates.h"
#include "platform/process.h"
#include "shell/preferences.h"
#include "support/program_folder.h"

namespace tessaly::shell {
namespace {

namespace fs = std::filesystem;
using tessaly::testing::ProgramFolderCopy;
using tessaly::testing::ReadFile;
using tessaly::testing::RunCommand;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;
using ::testing::HasSubstr;
using ::testing::Not;

// The desktop scenarios need a build with the desktop.
#ifdef TESSALY_WITH_DESKTOP
#define REQUIRE_DESKTOP() (void)0
#else
#define REQUIRE_DESKTOP() GTEST_SKIP() << "this build has no desktop"
#endif

std::string Quote(const std::string& s) { return "'" + s + "'"; }

// Every entry under a folder, as "name" or "dir/name", folders ending in "/".
std::set<std::string> Tree(const fs::path& root) {
  std::set<std::string> out;
  for (auto it = fs::recursive_directory_iterator(root); it != fs::recursive_directory_iterator(); ++it) {
    std::string rel = fs::relative(it->path(), root).string();
    out.insert(it->is_directory() ? rel + "/" : rel);
  }
  return out;
}

std::set<std::string> Added(const std::set<std::string>& before, const std::set<std::string>& after) {
  std::set<std::string> out;
  for (const auto& e : after)
    if (!before.count(e)) out.insert(e);
  return out;
}

struct ProgramRun : ::testing::Test {
  ProgramFolderCopy program;
  TempDir config;
  TempDir scratch;
  std::set<std::string> shipped;

  void SetUp() override {
    // The engine library is built by another part of the tree; a placeholder satisfies
    // the start-up check where it is not there.
    if (!fs::exists(program / "libquorvane.so")) WriteFile(program / "libquorvane.so", "");
    shipped = Tree(program.path());
  }

  // Runs tessaly in its folder with no display; returns the exit status.
  int Run(const std::string& args, std::string* output = nullptr, const std::string& env = "") {
    std::string cmd = "cd " + Quote(program.path().string()) +
                      " && env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM XDG_CONFIG_HOME=" +
                      Quote(config.path().string()) + " " + env + " ./tessaly " + args;
    return RunCommand(cmd, output);
  }

  // The desktop, off-screen, closed by File > Exit after `close_ms`.
  int RunDesktop(const std::string& args, std::string* output = nullptr, int close_ms = 300) {

    return Run(args, output,
               "QT_QPA_PLATFORM=offscreen TESSALY_AUTOCLOSE_MS=" + std::to_string(close_ms) +
                   " TESSALY_DESKTOP_REPORT=" + Quote((scratch / "desktop.txt").string()));
  }

  std::string DesktopReport() { return ReadFile(scratch / "desktop.txt"); }
};

TEST_F(ProgramRun, DesktopStartAndOrderlyExitLeaveTheFolderInOrder) {
  REQUIRE_DESKTOP();
  // What an earlier session left behind.
  WriteFile(program / "NOTREND.QVX", "no trend");
  WriteFile(program / "SAVEMOD.QVX", "save");
  const char* stale[] = {"ENGINE.GO",          "POOLPARAMS.RWF",        "AGGPARAMS.RWF",
                         "ALLOWMOD.QVX",       "STARTMOD.123",          "DATE.QVX",
                         "GROUPLST.QVX",       "Process Errors.Err",    "Processing Errors.Err",
                         "fitted.csv",         "KILLQUOR.QVX"};
  for (const char* f : stale) WriteFile(program / f, "old");
  auto before = Tree(program.path());

  std::string out;
  ASSERT_EQ(RunDesktop("", &out), 0) << out;

  auto after = Tree(program.path());
  for (const char* gone : stale) EXPECT_FALSE(after.count(gone)) << gone;
  std::set<std::string> made = Added(before, after);
  std::set<std::string> expected = {"DEFAULTXSD/",
                                    "DEFAULTXSD/BPSchema.xsd",
                                    "DEFAULTXSD/batchschema1.0.2.xsd",
                                    "DEFAULTXSD/UserPrefschema.xsd",
                                    "DEFAULTXSD/UserPreferences.xml",
                                    "QVXBACKUP/"};
  if (!shipped.count("OUTPUT/")) expected.insert("OUTPUT/");
  if (!shipped.count("FTable1.html")) expected.insert("FTable1.html");
  if (!shipped.count("FTable2.html")) expected.insert("FTable2.html");
  EXPECT_EQ(made, expected);
  EXPECT_EQ(ReadFile(program / "NOTREND.QVX"), "no trend");
  EXPECT_EQ(ReadFile(program / "SAVEMOD.QVX"), "save");
  EXPECT_EQ(ReadFile(program / "DEFAULTXSD" / "UserPrefschema.xsd"), UserPrefSchemaText());

  // The desktop it showed, and the settings it saved.
  std::string report = DesktopReport();
  EXPECT_THAT(report, HasSubstr("title=Tessaly\n"));
  EXPECT_THAT(report, HasSubstr("maximized=yes\n"));
  EXPECT_THAT(report, HasSubstr("status=Ready\n"));
  EXPECT_THAT(report, HasSubstr("menu=File\nitem=File|New Project...\nitem=File|Open Project...\n"
                                "item=File|Close\nitem=File|Import...\nitem=File|Run Excel File...\n"
                                "item=File|Export Forecasts...\nitem=File|Exit\nmenu=Batch\n"));
  EXPECT_THAT(report, HasSubstr("menu=Preferences\n"));
  EXPECT_THAT(report, HasSubstr("menu=Help\n"));
  EXPECT_THAT(report, Not(HasSubstr("menu=Test")));
  EXPECT_EQ(ReadFile(config / "tessaly" / "Tessaly.ini"),
            "[Settings]\r\nUserMode=0\r\nProduct=0\r\n");
}

TEST_F(ProgramRun, StartAfterACrashRestoresFromQvxBackupUntilTheExit) {
  REQUIRE_DESKTOP();
  fs::create_directory(program / "QVXBACKUP");
  WriteFile(program / "QVXBACKUP" / "NOTREND.QVX", "as at the last start");
  WriteFile(program / "NOTREND.QVX", "changed by the crashed session");
  WriteFile(program / "CRASH.QVX", "left by the crash");

  // Started beside the test, to look at the folder while the program runs.
  fs::path ready = scratch / "ready";
  platform::ChildProcess tessaly;
  ASSERT_TRUE(tessaly.Start("/usr/bin/env",
                            {"-u", "DISPLAY", "-u", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM=offscreen",
                             "TESSALY_AUTOCLOSE_MS=1500", "TESSALY_READY_FILE=" + ready.string(),
                             "XDG_CONFIG_HOME=" + config.path().string(),
                             "TESSALY_DESKTOP_REPORT=" + (scratch / "desktop.txt").string(),
                             "./tessaly", "/NS"},
                            program.path()));
  auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!fs::exists(ready) && std::chrono::steady_clock::now() < deadline)
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  ASSERT_TRUE(fs::exists(ready));
  // While it runs: the folder as at the last start, the backup still held.
  EXPECT_EQ(ReadFile(program / "NOTREND.QVX"), "as at the last start");
  EXPECT_FALSE(fs::exists(program / "CRASH.QVX"));
  EXPECT_TRUE(fs::exists(program / "QVXBACKUP" / "NOTREND.QVX"));

  ASSERT_TRUE(tessaly.WaitFor(std::chrono::seconds(60)));
  EXPECT_TRUE(tessaly.Status().Success());
  // After the exit: the control files are back in the folder and QVXBACKUP stands empty.
  EXPECT_EQ(ReadFile(program / "NOTREND.QVX"), "as at the last start");
  EXPECT_TRUE(fs::is_directory(program / "QVXBACKUP"));
  EXPECT_TRUE(fs::is_empty(program / "QVXBACKUP"));
}

TEST_F(ProgramRun, SwitchesOnlyOpenTheDesktopAndDevShowsTheTestMenu) {
  REQUIRE_DESKTOP();
  fs::create_directories(config / "tessaly");
  WriteFile(config / "tessaly" / "Tessaly.ini",
            "[Recent Files]\r\nFile1=/projects/north.xml\r\nFile2=/projects/south.xml\r\n");
  std::string out;
  ASSERT_EQ(RunDesktop("/DEV /ns /DBG", &out), 0) << out;
  std::string report = DesktopReport();
  EXPECT_THAT(report, HasSubstr("menu=Test\n"));
  EXPECT_THAT(report, HasSubstr("item=File|1 /projects/north.xml\nitem=File|2 /projects/south.xml\n"
                                "item=File|Exit\n"));
}

// Command lines that run nothing say why; start-up and exit still run, so the folder is in
// order and the backup empty. A name starting with "/" is a file, not a switch.
TEST_F(ProgramRun, CommandLinesThatRunNothingSayWhyAndLeaveTheFolderInOrder) {
  WriteFile(scratch / "notes.txt", "hello");
  WriteFile(scratch / "Book.XLSX", "");
  WriteFile(program / "NOTREND.QVX", "kept");
  const std::string book = Quote((scratch / "Book.XLSX").string());
  std::string out;
  EXPECT_NE(Run(book + " Sheet1", &out), 0);  // the workbook run is asked for
  EXPECT_THAT(out, HasSubstr("Book.XLSX"));
  EXPECT_FALSE(fs::exists(program / "tslyberr.txt"));

  const std::string missing = (scratch / "gone.xml").string();
  const std::string not_found = "Error #53: File not found: " + missing + ", frmMain, Form_Load";
  const std::pair<std::string, std::string> cases[] = {
      {Quote((scratch / "notes.txt").string()),
       "is neither a project (.xml) nor a workbook (.xls, .xlsx); nothing was run."},
      {book + " ''", "nothing was run"},
      {Quote(missing), "Tessaly: " + not_found},
  };
  for (const auto& [args, says] : cases) {
    EXPECT_EQ(Run(args, &out), 2) << args;
    EXPECT_THAT(out, HasSubstr(says));
    EXPECT_TRUE(fs::exists(program / "DEFAULTXSD" / "UserPreferences.xml"));
    EXPECT_TRUE(fs::is_empty(program / "QVXBACKUP"));
    EXPECT_EQ(ReadFile(program / "NOTREND.QVX"), "kept");
  }
  EXPECT_EQ(ReadFile(program / "tslyberr.txt"),
            platform::dates::FormatIso(platform::dates::Today()) + "  " + not_found + "\r\n");

  // A relative name is taken from the folder the user started in.
  std::string cmd = "cd " + Quote(scratch.path().string()) + " && env -u DISPLAY XDG_CONFIG_HOME=" +
                    Quote(config.path().string()) + " " + Quote(program.Executable().string()) +
                    " gone.xml";
  EXPECT_EQ(RunCommand(cmd, &out), 2);
  EXPECT_THAT(out, HasSubstr("File not found: " + (scratch / "gone.xml").string() + ", frmMain"));
}

TEST_F(ProgramRun, MissingEngineLibraryEndsTheProgram) {
  fs::remove(program / "libquorvane.so");
  WriteFile(scratch / "p.xml", "<x/>");
  WriteFile(program / "NOTREND.QVX", "kept");
  std::string out;
  EXPECT_EQ(Run(Quote((scratch / "p.xml").string()), &out), 4);
  EXPECT_THAT(out,
              HasSubstr("Tessaly Main Error: Quorvane.dll a required DLL is Missing\n  The program "
                        "will now exit.\n"));
  EXPECT_TRUE(fs::is_empty(program / "QVXBACKUP"));
  EXPECT_EQ(ReadFile(program / "NOTREND.QVX"), "kept");

  // The desktop shows the same box (closed by the test hook) and ends.
  REQUIRE_DESKTOP();
  EXPECT_EQ(RunDesktop("/NS", &out), 4) << out;
}

}  // namespace
}  // namespace tessaly::shell
