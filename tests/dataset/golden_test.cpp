// One harness for the golden cases under tests/dataset/data, one folder per case:
//   run_checks/<case>/     an ASC file, case.ini (file, seasonality, kind, project, outcome),
//                          expected.err (Process Errors.Err; absent when nothing is written),
//                          expected_names.txt (DataNames after a accepted read)
//   size_check/<case>/     an ASC file, case.ini (file), expected_message.txt ("" = passes)
//   validate_asc/<case>/   an ASC file, case.ini (file, code; 0 = valid),
//                          expected_repaired.asc (the file after the in-place repairs)
// Expected texts are stored with LF line ends; the system writes CR LF.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>

#include "dataset/asc_dataset.h"
#include "dataset/error_catalogue.h"
#include "dataset/validate_asc.h"
#include "dataset/validation.h"
#include "support/messages.h"
#include "support/program_folder.h"

namespace tessaly::dataset {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::SourcePath;
using tessaly::testing::TempDir;

std::vector<std::string> CaseNames(const std::string& feature) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(SourcePath("tests/dataset/data/" + feature))) {
    if (entry.is_directory()) names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string CaseLabel(const ::testing::TestParamInfo<std::string>& info) { return info.param; }

std::map<std::string, std::string> ReadIni(const fs::path& path) {
  std::map<std::string, std::string> values;
  std::istringstream in(ReadFile(path));
  std::string line;
  while (std::getline(in, line)) {
    size_t eq = line.find('=');
    if (eq != std::string::npos) values[line.substr(0, eq)] = line.substr(eq + 1);
  }
  return values;
}

std::string WithCrLf(const std::string& lf_text) {
  std::string out;
  for (char c : lf_text) {
    if (c == '\n') out += '\r';
    out += c;
  }
  return out;
}

// A fresh working copy of a case folder: checks may repair the file in place.
struct CaseFolder {
  explicit CaseFolder(const std::string& feature, const std::string& name)
      : source(SourcePath("tests/dataset/data/" + feature + "/" + name)), ini(ReadIni(source / "case.ini")) {
    for (const auto& entry : fs::directory_iterator(source)) {
      if (entry.path().extension() != ".ini" && entry.path().filename().string().rfind("expected", 0) != 0)
        fs::copy_file(entry.path(), work.path() / entry.path().filename());
    }
  }
  fs::path File() const { return work.path() / ini.at("file"); }
  bool Has(const std::string& expected) const { return fs::exists(source / expected); }
  std::string Expected(const std::string& expected) const { return ReadFile(source / expected); }

  fs::path source;
  std::map<std::string, std::string> ini;
  TempDir work;
  TempDir program;  // stands for the program's folder: Process Errors.Err goes here
};

class RunChecks : public ::testing::TestWithParam<std::string> {};

TEST_P(RunChecks, RejectsWithTheSystemsMessageOrReadsTheFileWhole) {
  CaseFolder c("run_checks", GetParam());
  ProcessErrorsLog log(c.program.path());
  RunCheckContext run;
  run.seasonality = static_cast<int16_t>(std::stoi(c.ini.at("seasonality")));
  run.kind = c.ini.at("kind") == "causal" ? RunKind::Causal : RunKind::Univariate;
  run.project_name = c.ini.at("project");
  const std::string name = c.ini.at("file");

  static AscDataset dataset;  // sized once, reused by every case as a run reuses it
  CheckOutcome outcome = CheckAscBeforeReading(c.File(), name, run, log);
  if (outcome == CheckOutcome::Accepted) outcome = ReadAndCheckAscFile(c.File(), name, dataset, log);

  const std::map<CheckOutcome, std::string> names = {{CheckOutcome::Accepted, "Accepted"},
                                                     {CheckOutcome::Rejected, "Rejected"},
                                                     {CheckOutcome::Malformed, "Malformed"}};
  EXPECT_EQ(names.at(outcome), c.ini.at("outcome"));
  if (c.Has("expected.err")) {
    ASSERT_TRUE(log.Exists());
    // A case's folder is a fresh one each time: its messages name it "<input folder>".
    std::string text = *log.Text();
    for (size_t at; (at = text.find(c.work.path().string())) != std::string::npos;)
      text.replace(at, c.work.path().string().size(), "<input folder>");
    EXPECT_EQ(text, WithCrLf(c.Expected("expected.err")));
  } else {
    EXPECT_FALSE(log.Exists()) << *log.Text();
  }
  if (c.Has("expected_names.txt")) {
    std::istringstream in(c.Expected("expected_names.txt"));
    std::string expected;
    for (int i = 1; std::getline(in, expected); ++i) EXPECT_EQ(dataset.DataNames(i), expected);
  }
  // The checks never change the file.
  EXPECT_FALSE(fs::exists(c.File()) && ReadFile(c.File()) != ReadFile(c.source / name));
}

INSTANTIATE_TEST_SUITE_P(Golden, RunChecks, ::testing::ValuesIn(CaseNames("run_checks")), CaseLabel);

class SizeCheck : public ::testing::TestWithParam<std::string> {};

TEST_P(SizeCheck, ShowsItsReasonUnderFyiAndRaisesTheCancelFlag) {
  CaseFolder c("size_check", GetParam());
  tessaly::testing::RecordedMessages host;
  bool cancel = true;
  bool ok = ValidateAscSize_And_NSeries(c.File(), cancel);
  const std::string expected = c.Expected("expected_message.txt");
  if (expected.empty()) {
    EXPECT_TRUE(ok);
    EXPECT_FALSE(cancel);
    EXPECT_TRUE(host->shown.empty());
  } else {
    EXPECT_FALSE(ok);
    EXPECT_TRUE(cancel);
    ASSERT_EQ(host->shown.size(), 1u);
    EXPECT_EQ(host->shown[0].text, expected);
    EXPECT_EQ(host->shown[0].title, "FYI");
  }
}

INSTANTIATE_TEST_SUITE_P(Golden, SizeCheck, ::testing::ValuesIn(CaseNames("size_check")), CaseLabel);

class ValidateAscGolden : public ::testing::TestWithParam<std::string> {};

TEST_P(ValidateAscGolden, ReportsItsCodeOrRepairsInPlace) {
  CaseFolder c("validate_asc", GetParam());
  TempDir output;
  ProcessErrorsLog log(c.program.path());
  const std::string name = c.ini.at("file");
  const int code = std::stoi(c.ini.at("code"));

  ValidateAscResult result = ValidateASC(name, c.work.path(), output.path(), log);

  EXPECT_TRUE(fs::exists(output.path() / "report.xml"));
  EXPECT_FALSE(fs::exists(c.work.path() / ("123" + name))) << "temporary copy left behind";
  if (code == 0) {
    EXPECT_TRUE(result.valid);
    EXPECT_TRUE(AscValid);
    EXPECT_FALSE(log.Exists());
    EXPECT_FALSE(fs::exists(ErrorPagePath(output.path(), name)));
  } else {
    EXPECT_FALSE(result.valid);
    EXPECT_FALSE(AscValid);
    EXPECT_EQ(result.code, code);
    // The page and the log carry the catalogue's text of the code.
    std::string text;
    for (const CatalogueRow& row : AscCatalogue()) {
      if (row.code == code) text = row.text;
    }
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(ReadFile(ErrorPagePath(output.path(), name)),
              "<html><title>" + name + " error report</title>\r\n<center><h1><u>Error Report for " +
                  name + "</u></h1><br><br>\r\n" + text + "\r\n</center></html>\r\n");
    EXPECT_EQ(*log.Text(), name + "\r\n" + text + "\r\n");
  }
  if (c.Has("expected_repaired.asc")) {
    EXPECT_EQ(ReadFile(c.File()), c.Expected("expected_repaired.asc"));
  } else if (fs::exists(c.source / name)) {
    EXPECT_EQ(ReadFile(c.File()), ReadFile(c.source / name)) << "file changed without a repair";
  }
}

INSTANTIATE_TEST_SUITE_P(Golden, ValidateAscGolden, ::testing::ValuesIn(CaseNames("validate_asc")), CaseLabel);

}  // namespace
}  // namespace tessaly::dataset
