#include <gtest/gtest.h>

#include <regex>

#include "platform/dates.h"
#include "shell/error_context.h"
#include "shell/errors.h"
#include "shell/log.h"
#include "support/messages.h"
#include "support/program_folder.h"

namespace tessaly::shell {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;

const std::string kMoment = R"(\d{4}-\d{2}-\d{2} \d{2}:\d{2}:\d{2})";

TEST(Log, HeaderAndFooterAroundLinesInTodaysFile) {
  TempDir dir;
  Log log;
  ASSERT_TRUE(log.CreateFile("  " + dir.path().string() + "  ", "tslyb"));
  EXPECT_EQ(log.Path().filename().string(),
            platform::dates::FormatIso(platform::dates::Today()) + ".txt");
  log.WriteHeader();
  log.WriteLine("Enter: frmMain, Form_Load");
  log.WriteFooter();
  log.CloseFile();
  EXPECT_EQ(log.Error().Number(), 0);
  std::string text = ReadFile(log.Path());
  std::regex expected(std::string(R"(\*{47})") + "\r\nSTART tslyb ON " + kMoment + "\r\n" + R"(\*{47})" +
                      "\r\n \r\n \r\nEnter: frmMain, Form_Load\r\n \r\n \r\n" + R"(\*{47})" +
                      "\r\nEND tslyb ON " + kMoment + "\r\n" + R"(\*{47})" + "\r\n");
  EXPECT_TRUE(std::regex_match(text, expected)) << text;
}

TEST(Log, ErrorsAreStateNotExceptions) {
  Log log;
  log.WriteLine("lost");
  EXPECT_EQ(log.Error().Number(), 1000);
  EXPECT_EQ(log.Error().Description(), "No file has been assigned");
  log.CloseFile();
  EXPECT_EQ(log.Error().Number(), 1000);

  TempDir dir;
  EXPECT_FALSE(log.CreateFile((dir / "no" / "such").string(), "t"));
  EXPECT_EQ(log.Error().Number(), 1001);
  EXPECT_EQ(log.Error().Description(), "File Creation failed");

  // A second log of the same day appends to the first one's file.
  ASSERT_TRUE(log.CreateFile(dir.path().string(), "t"));
  EXPECT_EQ(log.Error().Number(), 0);
  log.WriteLine("first");
  log.CloseFile();
  Log again;
  ASSERT_TRUE(again.CreateFile(dir.path().string() + "/", "t"));
  again.WriteLine("second");
  again.CloseFile();
  EXPECT_EQ(ReadFile(again.Path()), "first\r\nsecond\r\n");
}

TEST(TraceLines, WrittenOnlyWhenTracing) {
  TempDir dir;
  ASSERT_TRUE(TraceLog().CreateFile(dir.path().string(), "trace"));
  ErrCtx().trace = false;
  EnterProcedure("csetting", "Init");
  EXPECT_EQ(ErrCtx().combined_name, "csetting-Init");
  ErrCtx().trace = true;
  EnterProcedure("frmMain", "LoadSettings");
  EnterMenuCommand("frmMain", "mnuFileExit_Click");
  TraceText(" load frmMain");
  ErrCtx().trace = false;
  TraceLog().CloseFile();
  EXPECT_EQ(ReadFile(TraceLog().Path()),
            "Enter: frmMain, LoadSettings\r\nModule: frmMain Sub:mnuFileExit_Click Enter\r\n"
            " load frmMain\r\n");
}

TEST(ClsError, FormatErrorTextLeavesOutEmptyPartsAndFallsBackToTheTitle) {
  clsError e;
  Err().Raise(13, "", "Type mismatch");
  EXPECT_EQ(e.FormatErrorText("Loading project", "cBatchFile.Load"),
            "Error Msg: Loading project\r\n\r\nProcedure: cBatchFile.Load\r\n"
            "Error Number: 13\r\nError Source: Tessaly\r\nDescription: Type mismatch");
  Err().Raise(0, "sqlite", "");
  EXPECT_EQ(e.FormatErrorText("H", "P"),
            "Error Msg: H\r\n\r\nProcedure: P\r\nError Source: sqlite");
  EXPECT_EQ(e.FormatErrorText("H", "P", std::string("my own words")),
            "Error Msg: H\r\n\r\nProcedure: P\r\nmy own words");
  Err().Clear();
}

TEST(ClsError, AdoErrorsAndTheirText) {
  clsError e;
  EXPECT_FALSE(e.ADOError({}));
  EXPECT_FALSE(e.ADOError({{0, "", "info", 0, "01000"}, {0, "", "", 0, "00000"}}));
  AdoErrorRecord found;
  EXPECT_TRUE(e.ADOError({{0, "", "info", 0, "01000"},
                          {-2147217865, "Microsoft JET Database Engine", "no such table: Sheet1",
                           1, "HY000"},
                          {7, "", "later", 0, "42000"}},
                         &found));
  EXPECT_EQ(found.description, "no such table: Sheet1");
  EXPECT_EQ(e.FormatADOErrorText(found),
            "Error Number: -2147217865\r\nError Source: Microsoft JET Database Engine\r\n"
            "Description: no such table: Sheet1\r\nNative Error: 1\r\nSQL State: HY000");
  EXPECT_EQ(e.FormatADOErrorText({0, "", "only this", 0, ""}), "Description: only this");
}

TEST(ClsError, StdErrorAppendsToTheErrorFileAndShowsTheBox) {
  tessaly::testing::RecordedMessages host;
  TempDir dir;
  clsError e;
  e.error_folder = dir.path();
  EnterProcedure("frmMain", "mnuFileOpen_Click");
  Err().Raise(53, "", "File not found");
  e.StdError();
  // Filled by hand: status says the fields win over the error in force.
  e.status = 1;
  e.Number = 1001;
  e.Description = "Bad project";
  e.Module = "cBatchFile";
  e.Subroutine = "Load";
  e.StdError();
  std::string today = platform::dates::FormatIso(platform::dates::Today());
  EXPECT_EQ(ReadFile(dir / "tslyberr.txt"),
            today + "  Error #53: File not found, frmMain, mnuFileOpen_Click\r\n" + today +
                "  Error #1001: Bad project, cBatchFile, Load\r\n");
  ASSERT_EQ(host->shown.size(), 2u);
  EXPECT_EQ(host->shown[0].text, "Error #53: File not found, frmMain, mnuFileOpen_Click");
  EXPECT_EQ(host->shown[0].title, "Tessaly");

  // Where the error file cannot be written the box still shows.
  e.error_folder = dir / "missing" / "folder";
  e.StdError();
  EXPECT_EQ(host->shown.size(), 3u);
  Err().Clear();
}

TEST(CMsgBox, RemembersWhatItWasGiven) {
  tessaly::testing::RecordedMessages host;
  host->answers = {platform::mb::No, platform::mb::Yes};
  cMsgBox box;
  EXPECT_EQ(box.Title, "Tessaly");
  EXPECT_EQ(box.Style, 0);
  box.Style = platform::mb::Question;
  EXPECT_EQ(box.Display("Overwrite?", platform::mb::YesNo, "Save Project"), platform::mb::No);
  EXPECT_EQ(box.Response, platform::mb::No);
  // Empty arguments keep the stored values.
  box.Display();
  ASSERT_EQ(host->shown.size(), 2u);
  EXPECT_EQ(host->shown[1].text, "Overwrite?");
  EXPECT_EQ(host->shown[1].type, platform::mb::YesNo + platform::mb::Question);
  EXPECT_EQ(host->shown[1].title, "Save Project");
  EXPECT_EQ(box.Response, platform::mb::Yes);
}

}  // namespace
}  // namespace tessaly::shell
