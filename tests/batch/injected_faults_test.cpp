// A 300-series project run through a stand-in engine that, for a fifth of the series chosen
// at random, crashes, hangs for a while and ends without an answer, answers garbage, or
// answers with a truncated file. Every other series must be forecast, every status be
// right, the error log name each failure, and nothing else be lost.
#include <sys/stat.h>

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "batch/batch_file.h"
#include "batch/run_outputs.h"
#include "batch/unattended_run.h"
#include "platform/textfile.h"
#include "support/messages.h"
#include "support/program_folder.h"
#include "support/small_disk.h"

namespace tessaly::batch {
namespace {

using tessaly::testing::ProgramFolderCopy;
using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

// The series' own name in the request says which fault this call gets.
constexpr const char* kStandIn = R"(#!/bin/sh
if grep -aq XQCRASH QVXREQUEST.BIN; then kill -SEGV $$; fi
if grep -aq XQHANG QVXREQUEST.BIN; then sleep 1; exit 0; fi
if grep -aq XQJUNK QVXREQUEST.BIN; then head -c 3000 /dev/urandom > QVXRESPONSE.BIN; exit 0; fi
"$(dirname "$0")/qvxengine.real"; rc=$?
if grep -aq XQTRUNC QVXREQUEST.BIN; then truncate -s 700 QVXRESPONSE.BIN; fi
exit $rc
)";

// An annual series of 24 values: a trend with a wobble, different for each series.
std::string AnnualAsc(const std::string& name, int seed) {
  std::string text = "0\r\n0\r\n0\r\n1\r\n1\r\n1990\r\n1\r\n24\r\n0\r\n0\r\n4\r\n" + name + "\r\n0\r\n";
  for (int t = 0; t < 24; ++t) text += std::to_string(100 + seed % 17 + 3 * t + ((t * 7 + seed) % 5)) + "\r\n";
  return text;
}

struct InjectedFaults : ::testing::Test {
  void SetUp() override {
    fs::rename(program / "qvxengine", program / "qvxengine.real");
    WriteFile(program / "qvxengine", kStandIn);
    fs::permissions(program / "qvxengine", fs::perms::owner_all, fs::perm_options::add);
  }
  int Run(const fs::path& project) {
    UnattendedRunOptions options;
    options.program_folder = program.path();
    options.no_graphs = true;
    options.install_unattended_hosts = false;
    return RunProjectUnattended(project, options);
  }
  ProgramFolderCopy program;
  TempDir work;
  tessaly::testing::RecordedMessages host;
};

TEST_F(InjectedFaults, AFifthOfThreeHundredSeriesFailAndNothingElseIsLost) {
  const char* kinds[] = {"XQCRASH", "XQHANG", "XQJUNK", "XQTRUNC"};
  std::mt19937 random(22);
  std::vector<int> order(300);
  for (int i = 0; i < 300; ++i) order[i] = i;
  std::shuffle(order.begin(), order.end(), random);
  std::map<int, std::string> faulty;  // the project's index -> the fault
  for (int k = 0; k < 60; ++k) faulty[order[k]] = kinds[k % 4];

  cBatchFile p(program.path());
  p.SetInDirectory(work.path().string());
  p.SetOutDirectory(work.path().string());
  for (int i = 0; i < 300; ++i) {
    std::string name = "S" + std::to_string(i) + (faulty.count(i) ? faulty[i] : "OK");
    WriteFile(work / (name + ".ASC"), AnnualAsc(name, i));
    p.Add_File(name + ".ASC", 0, 0, "00/00/00");
  }
  ASSERT_TRUE(p.Build(work / "many.xml"));
  Run(work / "many.xml");

  cBatchFile saved(program.path());
  ASSERT_TRUE(saved.Load(work / "many.xml"));
  ASSERT_EQ(saved.Size(), 300);
  const std::string errors = ReadFile(program / "Process Errors.Err");
  const std::string combined = ReadFile(work / "OUTPUT" / "CONmany.PRO");
  int forecast = 0;
  for (int i = 0; i < 300; ++i) {
    const std::string stem = AscStem(saved.List(i));
    SCOPED_TRACE(stem);
    if (faulty.count(i)) {
      EXPECT_EQ(saved.Completed(i), -1);
      EXPECT_GT(saved.Error(i), 0);
      EXPECT_NE(errors.find(stem + ".ASC\r\n"), std::string::npos);
      EXPECT_FALSE(fs::exists(work / "OUTPUT" / (stem + ".PRO")));
      EXPECT_EQ(combined.find(stem), std::string::npos);
    } else {
      EXPECT_EQ(saved.Completed(i), 1);
      EXPECT_EQ(saved.Error(i), 0);
      EXPECT_EQ(errors.find(stem + ".ASC\r\n"), std::string::npos);
      forecast += fs::exists(work / "OUTPUT" / (stem + ".PRO"));
      EXPECT_TRUE(fs::exists(work / "OUTPUT" / (stem + ".htm")));
    }
    EXPECT_EQ(ReadFile(work / (stem + ".ASC")), AnnualAsc(stem, i));  // the data as it was
  }
  EXPECT_EQ(forecast, 240);
}

// Results that cannot be written fail their datasets and the run; a project that cannot
// be saved fails the run, says why and keeps its last saved state.
TEST_F(InjectedFaults, WritesThatFailMakeFailedDatasetsAndAFailedRun) {
  fs::rename(program / "qvxengine.real", program / "qvxengine");
  cBatchFile p(program.path());
  p.SetInDirectory(work.path().string());
  for (int i = 0; i < 3; ++i) {
    WriteFile(work / ("S" + std::to_string(i) + ".ASC"), AnnualAsc("S" + std::to_string(i), i));
    p.Add_File("S" + std::to_string(i) + ".ASC", 0, 0, "00/00/00");
  }
  // The output folder is a file.
  p.SetOutDirectory((work / "blocked").string());
  fs::create_directory(work / "blocked");
  WriteFile(work / "blocked" / "OUTPUT", "a file where the folder should be");
  ASSERT_TRUE(p.Build(work / "blocked.xml"));
  EXPECT_EQ(Run(work / "blocked.xml"), kRunNothing);  // not one dataset forecast
  cBatchFile saved(program.path());
  ASSERT_TRUE(saved.Load(work / "blocked.xml"));
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(saved.Completed(i), -1);
    EXPECT_EQ(saved.Error(i), kOutputsNotWrittenError);
  }
  EXPECT_NE(ReadFile(program / "Process Errors.Err").find(kOutputsNotWrittenText), std::string::npos);

  // The project on a full disk: the save fails, says why, and the file stays as it was.
  tessaly::testing::SmallDisk disk(8 * 1024);
  if (!disk.Mounted()) GTEST_SKIP() << "a tmpfs of a few KiB cannot be mounted here: the full-disk case is not run";
  p.SetOutDirectory(work.path().string());
  ASSERT_TRUE(p.Build(disk / "full.xml"));
  const std::string before = ReadFile(disk / "full.xml");
  WriteFile(disk / "filler", std::string(8 * 1024 - before.size() - 200, 'f'));
  host->shown.clear();
  EXPECT_EQ(Run(disk / "full.xml"), 1);
  EXPECT_EQ(ReadFile(disk / "full.xml"), before);
  const auto* shown = host.Starting("The project could not be saved to ");
  ASSERT_NE(shown, nullptr) << host.Joined();
  EXPECT_NE(shown->text.find("No space left on device"), std::string::npos) << shown->text;
}

}  // namespace
}  // namespace tessaly::batch
