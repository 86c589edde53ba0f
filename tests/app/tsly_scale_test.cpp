// Scale-out as a script uses it, on real runs through the engine in a copy of the program
// folder: parallel jobs and merged shards leave what one serial run leaves; an engine that
// hangs or crashes fails only its own dataset; a merge with a shard missing merges nothing.
#include <gtest/gtest.h>

#include <signal.h>

#include <algorithm>
#include <utility>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <thread>

#include "support/program_folder.h"

namespace {

namespace fs = std::filesystem;
using tessaly::testing::ProgramFolderCopy;
using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

// A monthly series with trend, seasonal swing, noise and (every third one) a pulse, with 12
// retained values so that the run-wide accuracy summaries are written too.
void WriteSeries(const fs::path& file, const std::string& name, int k) {
  const int n = 96, retained = 12;
  std::string text = "0\r\n0\r\n0\r\n1\r\n12\r\n2000\r\n1\r\n" + std::to_string(n) + "\r\n0\r\n" +
                     std::to_string(retained) + "\r\n12\r\n" + name + "\r\n0\r\n";
  unsigned seed = 777u + 131u * static_cast<unsigned>(k);
  for (int t = 0; t < n + retained; ++t) {
    seed = seed * 1103515245u + 12345u;
    double noise = ((seed >> 16) % 1000) / 1000.0 - 0.5;
    double v = 200 + 3 * k + 0.8 * t + 12 * std::sin(2 * M_PI * (t % 12) / 12.0) + 5 * noise;
    if (k % 3 == 0 && t == 50) v += 60;
    text += std::to_string(v) + "\r\n";
  }
  WriteFile(file, text);
}

std::string SeriesXml(const std::string& asc) {
  const std::string s = asc.substr(0, asc.size() - 4);
  std::string xml = "    <series name=\"" + s + "\" complete=\"0\" err=\"0\" rundate=\"00/00/00\">\n      <data>" +
                    asc + "</data>\n      <details>" + s + ".htm</details>\n";
  const std::pair<const char*, const char*> graphs[] = {
      {"history", "act"}, {"forecasts", "fore"}, {"afit", "actfit"},      {"af", "actfore"}, {"aff", "actfitfore"},
      {"ff", "fitfore"},  {"ac", "actcleanse"},  {"res", "res"},          {"ar", "actres"}};
  for (const auto& [tag, suffix] : graphs)
    xml += "      <" + std::string(tag) + ">" + s + suffix + ".jpg</" + tag + ">\n";
  return xml + "    </series>\n";
}

// A project of synthetic series, two of the sample's real ones and its broken file; the
// series' variable names are `names` (a fault engine reacts to some of them).
void WriteProject(const fs::path& folder, const fs::path& examples, const std::vector<std::string>& names) {
  fs::create_directories(folder);
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<batch inputpath=\"./\" outputpath=\"./\">\n"
                    "  <set runcomplete=\"0\" objective=\"0\">\n";
  for (const char* real : {"AIRLINE.ASC", "BROKEN.ASC", "ELNINO.ASC"}) {
    fs::copy_file(examples / real, folder / real);
  }
  xml += SeriesXml("AIRLINE.ASC");
  for (size_t k = 0; k < names.size(); ++k) {
    std::string asc = "SYN" + std::to_string(k + 1) + ".ASC";
    WriteSeries(folder / asc, names[k], static_cast<int>(k));
    xml += SeriesXml(asc);
    if (k == 2) xml += SeriesXml("BROKEN.ASC");
  }
  xml += SeriesXml("ELNINO.ASC");
  xml += "  </set>\n</batch>\n";
  WriteFile(folder / "P.xml", xml);
}

// A file's text with the run's dates, times and folder taken out.
std::string Normalised(std::string text, const fs::path& folder) {
  for (size_t at; (at = text.find(folder.string())) != std::string::npos;) text.replace(at, folder.string().size(), "<DIR>");
  static const std::regex stamps(
      R"(\d{4}-\d\d-\d\d \d\d:\d\d(:\d\d)?|\d\d:\d\d:\d\d|\d\d/\d\d/\d\d(\d\d)?)");
  return std::regex_replace(text, stamps, "<T>");
}

// Every file under OUTPUT (and the project file) by its path, normalised.
std::map<std::string, std::string> Outputs(const fs::path& folder) {
  std::map<std::string, std::string> files;
  for (const auto& e : fs::recursive_directory_iterator(folder / "OUTPUT"))
    if (e.is_regular_file())
      files[fs::relative(e.path(), folder).string()] = Normalised(ReadFile(e.path()), folder);
  files["P.xml"] = Normalised(ReadFile(folder / "P.xml"), folder);
  return files;
}

void ExpectSameOutputs(const fs::path& serial, const fs::path& other) {
  auto a = Outputs(serial), b = Outputs(other);
  ASSERT_GT(a.size(), 40u);
  for (const auto& [name, text] : a) {
    auto it = b.find(name);
    if (it == b.end()) {
      ADD_FAILURE() << name << " is missing from " << other;
      continue;
    }
    EXPECT_TRUE(text == it->second) << name << " differs in " << other;
  }
  for (const auto& [name, text] : b) EXPECT_TRUE(a.count(name)) << name << " is extra in " << other;
}

// How many processes have their working folder in `folder` or below it.
int ProcessesWorkingUnder(const fs::path& folder) {
  int count = 0;
  std::error_code ec;
  for (const auto& e : fs::directory_iterator("/proc", ec)) {
    fs::path cwd = fs::read_symlink(e.path() / "cwd", ec);
    if (!ec && cwd.string().rfind(folder.string(), 0) == 0) ++count;
  }
  return count;
}

// The per-dataset lines of a run's output ("3/9 SYN2.ASC: forecast", a reason's lines below
// it), each with the lines that go on from it, in their order.
std::vector<std::string> DatasetRecords(const std::string& output) {
  static const std::regex head(R"(^\d+/\d+ \S+\.ASC: (forecast|rejected|failed|canceled).*)");
  std::vector<std::string> records;
  std::istringstream in(output);
  for (std::string line; std::getline(in, line);)
    if (std::regex_match(line, head)) records.push_back(line);
    else if (line.rfind("    ", 0) == 0 && !records.empty()) records.back() += "\n" + line;
  return records;
}

class TslyScaleTest : public ::testing::Test {
 protected:
  int Tsly(const std::string& words, std::string* output, const std::string& env = "") {
    return tessaly::testing::RunCommand("cd '" + work.path().string() + "' && " + env +
                                            " QT_QPA_PLATFORM=offscreen '" +
                                            program.Executable("tsly").string() + "' " + words + " 2>&1",
                                        output);
  }
  // The program's run log, read and deleted.
  std::string TakeErrorLog() {
    fs::path log = program / "Process Errors.Err";
    std::string text = fs::exists(log) ? ReadFile(log) : "";
    fs::remove(log);
    return text;
  }
  // Replaces the engine by a script that hangs on a series whose variable is HANGER, crashes
  // on CRASHER and hands every other request to the real engine.
  void InstallFaultEngine() {
    fs::rename(program / "qvxengine", program / "qvxengine.real");
    WriteFile(program / "qvxengine",
              "#!/bin/sh\n"
              "if grep -aq HANGER QVXREQUEST.BIN; then exec sleep 120; fi\n"
              "if grep -aq CRASHER QVXREQUEST.BIN; then kill -SEGV $$; fi\n"
              "exec '" + (program / "qvxengine.real").string() + "' \"$@\"\n");
    fs::permissions(program / "qvxengine", fs::perms::owner_all);
  }
  ProgramFolderCopy program;
  TempDir work;
};

const std::vector<std::string> kNames = {"ALPHA", "BETA", "GAMMA", "DELTA", "EPSILON", "ZETA"};

TEST_F(TslyScaleTest, ParallelJobsAndMergedShardsLeaveWhatOneSerialRunLeaves) {
  for (const char* run : {"serial", "jobs", "shards"}) WriteProject(work / run, program / "examples", kNames);
  std::string out;
  // BROKEN.ASC, the fifth of nine, is rejected on purpose: a run that holds it ends in part.
  ASSERT_EQ(Tsly("run serial/P.xml", &out), 1) << out;
  const std::string serial_log = TakeErrorLog();
  auto serial_records = DatasetRecords(out);
  ASSERT_EQ(serial_records.size(), 9u) << out;
  ASSERT_NE(serial_log.find("BROKEN.ASC"), std::string::npos);

  // Nine files in parts of at most 4: three shards, two at a time.
  ASSERT_EQ(Tsly("run jobs/P.xml --jobs 2 --part-size 4", &out), 1) << out;
  EXPECT_NE(out.find("Shard 3/3: Series 1 of 3: SYN5.ASC - Finished"), std::string::npos) << out;
  // The jobs' lines come whole, each dataset once with its place in the project and its
  // reason below it, in each part's order, as the serial run printed them.
  auto job_records = DatasetRecords(out);
  std::map<int, int> last_of_part;  // the three parts: datasets 1-3, 4-6, 7-9
  for (const std::string& r : job_records)
    EXPECT_LT(std::exchange(last_of_part[(std::stoi(r) - 1) / 3], std::stoi(r)), std::stoi(r)) << out;
  std::sort(serial_records.begin(), serial_records.end());
  std::sort(job_records.begin(), job_records.end());
  EXPECT_EQ(job_records, serial_records) << out;
  EXPECT_EQ(TakeErrorLog(), serial_log);
  ExpectSameOutputs(work / "serial", work / "jobs");
  // A part whose datasets were all rejected (BROKEN.ASC alone) leaves the run forecast in part.
  WriteProject(work / "parts", program / "examples", {"ALPHA", "BETA", "GAMMA"});
  EXPECT_EQ(Tsly("run parts/P.xml --jobs 2 --part-size 1 --no-graphs", &out), 1) << out;

  for (int i = 1; i <= 3; ++i)
    ASSERT_EQ(Tsly("run shards/P.xml --shard " + std::to_string(i) + "/3", &out), i == 2 ? 1 : 0) << out;
  EXPECT_TRUE(fs::exists(work / "shards/OUTPUT/shards/2/P.xml"));
  EXPECT_FALSE(fs::exists(work / "shards/OUTPUT/SYN3.PRO")) << "a shard writes only under its own folder";
  ASSERT_EQ(Tsly("merge shards/P.xml", &out), 0) << out;
  EXPECT_NE(out.find("Tessaly Merge: The 3 shards of P.xml are merged into "), std::string::npos) << out;
  EXPECT_EQ(TakeErrorLog(), serial_log);
  ExpectSameOutputs(work / "serial", work / "shards");
  // No private working folder is left behind.
  EXPECT_FALSE(fs::exists(program / "jobs"));
}

TEST_F(TslyScaleTest, MergeRefusesWhileAShardIsMissingOrUnfinishedAndAutoShardsFollowTheBatchSystem) {
  WriteProject(work / "p", program / "examples", kNames);
  std::string out;
  ASSERT_EQ(Tsly("run p/P.xml --shard 1/3 --no-graphs", &out), 0) << out;
  ASSERT_EQ(Tsly("run p/P.xml --shard 3/3 --no-graphs", &out), 0) << out;
  const std::string project_before = ReadFile(work / "p/P.xml");
  EXPECT_EQ(Tsly("merge p/P.xml", &out), 1);
  EXPECT_NE(out.find("Tessaly Merge: The 3 shards of P.xml cannot be merged: shard 2 never ran; run again "
                     "with --shard 2/3. Nothing was merged."),
            std::string::npos)
      << out;
  EXPECT_EQ(Tsly("merge p/P.xml --shards 4", &out), 1);
  EXPECT_NE(out.find("shards 2, 4 never ran"), std::string::npos) << out;
  EXPECT_EQ(ReadFile(work / "p/P.xml"), project_before);
  EXPECT_FALSE(fs::exists(work / "p/OUTPUT/ALPHA.PRO"));
  EXPECT_FALSE(fs::exists(work / "p/OUTPUT/SYN1.PRO"));

  // Slurm's array task 1 of 0-2 is the second shard; a shard cut short is unfinished.
  ASSERT_EQ(Tsly("run p/P.xml --shard auto --no-graphs", &out,
                 "SLURM_ARRAY_TASK_ID=1 SLURM_ARRAY_TASK_MIN=0 SLURM_ARRAY_TASK_COUNT=3"),
            1)
      << out;
  EXPECT_NE(out.find("Shard 2/3: "), std::string::npos) << out;
  fs::remove(work / "p/OUTPUT/shards/3/SHARD.DONE");
  EXPECT_EQ(Tsly("merge p/P.xml", &out), 1);
  EXPECT_NE(out.find("shard 3 did not finish"), std::string::npos) << out;
  ASSERT_EQ(Tsly("run p/P.xml --shard auto --shards 3 --no-graphs", &out, "JOB_COMPLETION_INDEX=2"), 0) << out;
  EXPECT_EQ(Tsly("merge p/P.xml", &out), 0) << out;
  EXPECT_TRUE(fs::exists(work / "p/OUTPUT/SYN1.PRO"));
  EXPECT_FALSE(fs::exists(work / "p/OUTPUT/shards"));

  // Bad usage: status 2 and a line that says what to give.
  const std::pair<const char*, const char*> bad[] = {
      {"run p/P.xml --shard 4/3", "tsly run: '4/3' is not a shard: give I/N with 1 <= I <= N, as 2/4."},
      {"run p/P.xml --shard auto", "tsly run: --shard auto needs SLURM_ARRAY_TASK_ID"},
      {"run p/P.xml --jobs 2 --shard 1/2", "tsly run: give --jobs (and --part-size) or --shard, not both."},
      {"run p/P.xml --jobs 0", "tsly run: --jobs takes a whole number of at least 1."},
      {"merge", "tsly merge: name the project (.xml)."},
  };
  for (const auto& [words, said] : bad) {
    EXPECT_EQ(Tsly(words, &out, "env -u SLURM_ARRAY_TASK_ID -u JOB_COMPLETION_INDEX"), 2) << words;
    EXPECT_NE(out.find(said), std::string::npos) << words << "\n" << out;
  }
}

TEST_F(TslyScaleTest, AHungEngineIsEndedAtTheLimitAndACrashFailsOnlyItsOwnDatasetUnderParallelJobs) {
  const std::vector<std::string> faulty = {"ALPHA", "HANGER", "GAMMA", "DELTA", "CRASHER", "ZETA"};
  WriteProject(work / "serial", program / "examples", faulty);
  WriteProject(work / "jobs", program / "examples", faulty);
  std::string out;
  ASSERT_EQ(Tsly("run serial/P.xml --no-graphs", &out), 1) << out;
  InstallFaultEngine();
  // The real engine's run above is what the jobs must leave for every other series.
  ASSERT_EQ(TakeErrorLog().find("The engine was"), std::string::npos) << "an engine was killed from outside";

  auto start = std::chrono::steady_clock::now();
  ASSERT_EQ(Tsly("run jobs/P.xml --jobs 2 --no-graphs --series-timeout 8", &out), 1) << out;
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
  const std::string log = TakeErrorLog();
  EXPECT_NE(log.find("SYN2.ASC\r\nThe engine was stopped after the series time limit of 8 seconds."), std::string::npos)
      << log;
  EXPECT_NE(log.find("SYN5.ASC\r\nThe engine was stopped by signal 11 (Segmentation fault) before it answered."),
            std::string::npos)
      << log;
  const std::string project = ReadFile(work / "jobs/P.xml");
  EXPECT_NE(project.find("name=\"SYN2\" complete=\"-1\" err=\"1\""), std::string::npos) << project;
  EXPECT_NE(project.find("name=\"SYN5\" complete=\"-1\" err=\"1\""), std::string::npos) << project;
  EXPECT_TRUE(fs::exists(work / "jobs/OUTPUT/SYN2err.html"));

  // Every other series: its outputs as the real engine's serial run left them, and the
  // run-wide files hold exactly the rows of the series that ran.
  auto serial = Outputs(work / "serial"), jobs = Outputs(work / "jobs");
  auto other_series_file = [](const std::string& name) {
    return name.rfind("OUTPUT/", 0) == 0 && name.rfind("OUTPUT/P", 0) != 0 && name != "OUTPUT/display.html" &&
           name != "OUTPUT/CONP.PRO" &&
           name.find("SYN2") == std::string::npos && name.find("SYN5") == std::string::npos;
  };
  int compared = 0;
  for (const auto& [name, text] : serial) {
    if (!other_series_file(name)) continue;
    ++compared;
    ASSERT_TRUE(jobs.count(name)) << name << "\n" << log << out;
    EXPECT_TRUE(jobs[name] == text) << name;
  }
  EXPECT_GT(compared, 40);
  const std::string combined = ReadFile(work / "jobs/OUTPUT/CONP.PRO");
  std::string expected;
  for (const char* s : {"AIRLINE", "SYN1", "SYN3", "SYN4", "SYN6", "ELNINO"})
    expected += ReadFile(work / "jobs/OUTPUT" / (std::string(s) + ".PRO"));
  EXPECT_EQ(combined, expected);
  // No engine of the run is left: the hung one was ended, not orphaned.
  EXPECT_EQ(ProcessesWorkingUnder(program.path()), 0);
}

TEST_F(TslyScaleTest, KillquorInTheProgramsFolderCancelsOnlyThisRunsEngines) {
  WriteProject(work / "p", program / "examples", {"HANGER", "HANGER", "GAMMA"});
  InstallFaultEngine();
  // Another run's engine, working elsewhere: the cancel must leave it alone.
  TempDir other;
  std::string pid_text;
  tessaly::testing::RunCommand("cd '" + other.path().string() + "' && cp '" + (program / "qvxengine").string() +
                                   "' ./qvxengine && printf HANGER > QVXREQUEST.BIN && "
                                   "{ ./qvxengine >/dev/null 2>&1 & echo $!; }",
                               &pid_text);
  const pid_t other_engine = std::stoi(pid_text);
  std::string out;
  std::thread cancel([&] {
    std::this_thread::sleep_for(std::chrono::seconds(3));
    WriteFile(program / "KILLQUOR.QVX", " Outahere\r\n");
  });
  int status = Tsly("run p/P.xml --jobs 2 --no-graphs", &out);
  cancel.join();
  EXPECT_EQ(status, 1) << out;
  EXPECT_NE(out.find("Operation Canceled by user"), std::string::npos) << out;
  EXPECT_NE(out.find("cannot be merged"), std::string::npos) << out;
  EXPECT_FALSE(fs::exists(program / "KILLQUOR.QVX"));
  EXPECT_FALSE(fs::exists(program / "jobs")) << "the children's private folders are gone";
  EXPECT_EQ(::kill(other_engine, 0), 0) << "another run's engine was killed";
  ::kill(other_engine, SIGKILL);
}

}  // namespace
