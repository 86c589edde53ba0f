#include "dataset/asc_dataset.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include "dataset/messages.h"
#include "dataset/validate_asc.h"
#include "dataset/validation.h"
#include "support/messages.h"
#include "support/program_folder.h"

namespace tessaly::dataset {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::SourcePath;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

fs::path Sample(const std::string& name) { return SourcePath("tests/dataset/data/files/" + name); }

std::string Lines(const std::vector<std::string>& lines) {
  std::string out;
  for (const auto& l : lines) out += l + "\r\n";
  return out;
}

TEST(AscRead, AirlineFileInFileOrder) {
  AscDataset ds;
  ASSERT_TRUE(ReadAscFile(Sample("airline.asc"), ds).ok());
  EXPECT_EQ(ds.DataProp(1), 1);
  EXPECT_EQ(ds.DataProp(2), 12);
  EXPECT_EQ(ds.DataProp(3), 1949);
  EXPECT_EQ(ds.DataProp(5), 144);
  EXPECT_EQ(ds.DataProp(8), 12);
  EXPECT_EQ(ds.DataNames(1), "PASSENGERS");
  EXPECT_TRUE(ds.Univariate());
  EXPECT_EQ(ds.K, 0);
  EXPECT_EQ(ds.DataValues(1), 112);
  EXPECT_EQ(ds.DataValues(144), 432);
  EXPECT_EQ(CountAscLines(Sample("airline.asc")), 157);
  // LF-only files read the same.
  AscDataset lf;
  ASSERT_TRUE(ReadAscFile(Sample("airline_lf.asc"), lf).ok());
  EXPECT_EQ(lf.DataValues(77), ds.DataValues(77));
  EXPECT_EQ(CountAscLines(Sample("airline_lf.asc")), 157);
}

TEST(AscRead, CausalFileWithFutureAndRetainedValues) {
  AscDataset ds;
  ASSERT_TRUE(ReadAscFile(Sample("sales_causal.asc"), ds).ok());
  EXPECT_EQ(ds.K, 2);
  EXPECT_EQ(ds.DataNames(3), "SALES");
  EXPECT_EQ(ds.DataTypes(1), 1);
  EXPECT_EQ(ds.DataTypes(2), 2);
  EXPECT_DOUBLE_EQ(ds.Observation(1, 1), 38.9);
  EXPECT_DOUBLE_EQ(ds.Observation(2, 1), ds.DataValues(49));
  // Future values of the two input series follow the observations, six each.
  AscHeader header;
  ASSERT_TRUE(ReadAscHeader(Sample("sales_causal.asc"), header).ok());
  EXPECT_EQ(header.K, 2);
  EXPECT_EQ(AnticipatedSize(header), 11 + 3 + 3 + 3 * 48 + 2 * 6);
  EXPECT_EQ(CountAscLines(Sample("sales_causal.asc")), AnticipatedSize(header));

  AscDataset r;
  ASSERT_TRUE(ReadAscFile(Sample("airline_retained.asc"), r).ok());
  EXPECT_EQ(r.DataProp(7), 12);
  EXPECT_EQ(r.RetainedValues(1), 417);
  EXPECT_EQ(r.RetainedValues(12), 432);
}

TEST(AscRead, NonNumericObservationsBecomeZeroSilently) {
  TempDir dir;
  WriteFile(dir / "gaps.asc", Lines({"0", "0", "0", "1", "4", "2020", "1", "6", "0", "0", "4",
                                     "SHIPMENTS", "0", "10", "n/a", "12.5", "", "1E400", " 14 "}));
  tessaly::testing::RecordedMessages host;
  AscDataset ds;
  ds.DataValues(2) = 99;  // left from an earlier file
  ProcessErrorsLog log(dir.path());
  EXPECT_EQ(ReadAndCheckAscFile(dir / "gaps.asc", "gaps.asc", ds, log), CheckOutcome::Accepted);
  EXPECT_EQ(ds.DataValues(1), 10);
  EXPECT_EQ(ds.DataValues(2), 0);
  EXPECT_EQ(ds.DataValues(3), 12.5);
  EXPECT_EQ(ds.DataValues(4), 0);
  EXPECT_EQ(ds.DataValues(5), 0);
  EXPECT_EQ(ds.DataValues(6), 14);
  EXPECT_TRUE(host->shown.empty());
  EXPECT_FALSE(log.Exists());
}

TEST(AscRead, ObjectivesNeverFailAndPropertiesStopTheRead) {
  TempDir dir;
  WriteFile(dir / "a.asc", Lines({"x", "", "99999", "1", "1", "2001", "0", "3", "0", "0", "0",
                                  "Y", "0", "1", "2", "3"}));
  AscDataset ds;
  ASSERT_TRUE(ReadAscFile(dir / "a.asc", ds).ok());
  EXPECT_EQ(ds.Objectives(1), 0);
  EXPECT_EQ(ds.Objectives(2), 0);
  EXPECT_EQ(ds.Objectives(3), 0);

  WriteFile(dir / "b.asc", Lines({"0", "0", "0", "1", "12", "2001", "1", "forty"}));
  AscReadResult r = ReadAscFile(dir / "b.asc", ds);
  EXPECT_EQ(r.status, AscReadStatus::NonNumericDataProp);
  EXPECT_EQ(r.bad_data_prop, 5);
  WriteFile(dir / "c.asc", Lines({"0", "0", "0", "1", "12", "2001", "1", "40000"}));
  EXPECT_EQ(ReadAscFile(dir / "c.asc", ds).status, AscReadStatus::Overflow);
  EXPECT_EQ(ReadAscFile(dir / "none.asc", ds).status, AscReadStatus::Missing);
  AscHeader h;
  EXPECT_EQ(ReadAscHeader(dir / "none.asc", h).status, AscReadStatus::Missing);
  EXPECT_EQ(CountAscLines(dir / "none.asc"), 0);
}

TEST(AscRead, RetainedValuesThatAreNoNumberAreReportedOnce) {
  TempDir dir;
  WriteFile(dir / "r.asc", Lines({"0", "0", "0", "1", "1", "2001", "0", "3", "0", "2", "2",
                                  "Y", "0", "1", "2", "3", "four", "five"}));
  tessaly::testing::RecordedMessages host;
  AscDataset ds;
  ProcessErrorsLog log(dir.path());
  EXPECT_EQ(ReadAndCheckAscFile(dir / "r.asc", "r.asc", ds, log), CheckOutcome::Accepted);
  ASSERT_EQ(host->shown.size(), 1u);
  EXPECT_EQ(host->shown[0].text, "Error #13: Type mismatch");
  EXPECT_EQ(ds.RetainedValues(1), 0);

  // A retained value beyond a double is the malformed file.
  WriteFile(dir / "m.asc", Lines({"0", "0", "0", "1", "1", "2001", "0", "3", "0", "1", "1",
                                  "Y", "0", "1", "2", "3", "1E999"}));
  EXPECT_EQ(ReadAndCheckAscFile(dir / "m.asc", "m.asc", ds, log), CheckOutcome::Malformed);
  EXPECT_EQ(ReadFile(dir / "Process Errors.Err"),
            "m.asc is malformed. Please review and correct your file and try again.\r\n");
}

TEST(AscRead, HeadersAskingForMoreThanTheRecordHoldsAreRefused) {
  TempDir dir;
  // 150 series all typed for future values: 90000 future values, beyond 149 x 600.
  std::vector<std::string> lines = {"0", "0", "0", "150", "12", "2018", "1", "1", "600", "0", "600"};
  for (int i = 0; i < 150; ++i) lines.push_back("X" + std::to_string(i));
  for (int i = 0; i < 150; ++i) lines.push_back("1");
  lines.insert(lines.end(), 150 + 150 * 600, "2");
  WriteFile(dir / "typed.asc", Lines(lines));
  RunCheckContext run{12, RunKind::Causal, "Big.xml"};
  ProcessErrorsLog log(dir.path());
  AscDataset ds;
  EXPECT_EQ(CheckAscBeforeReading(dir / "typed.asc", "typed.asc", run, log), CheckOutcome::Accepted);
  EXPECT_EQ(ReadAndCheckAscFile(dir / "typed.asc", "typed.asc", ds, log), CheckOutcome::Rejected);
  EXPECT_EQ(ReadFile(dir / "Process Errors.Err"),
            "typed.asc\r\nYour .asc file asks for 90000 future values, more than the 89400 a "
            "dataset can hold. Please ascertain the actual numbers in DataProp() and correct your "
            ".asc file.\r\n");
  EXPECT_EQ(ReadAscFile(dir / "typed.asc", ds).status, AscReadStatus::ExceedsBounds);
  // The header is read as far as its counts allow: 150 series' names and types, none of 151.
  AscHeader header;
  ASSERT_TRUE(ReadAscHeader(dir / "typed.asc", header).ok());
  EXPECT_EQ(header.names.size(), 150u);
  EXPECT_EQ(header.K, 150);
  lines[3] = "151";
  WriteFile(dir / "big.asc", Lines(lines));
  AscHeader too_many;
  (void)ReadAscHeader(dir / "big.asc", too_many);
  EXPECT_TRUE(too_many.names.empty());
  EXPECT_TRUE(too_many.types.empty());
}

// What is not a dataset file is said as such before anything is read: a wrong input
// folder or a broken link is "not found", a folder, a device or a pipe is "not a data
// file"; none of them is "empty", and none blocks the run.
TEST(AscRead, EntriesThatAreNoFileAreNamedForWhatTheyAre) {
  TempDir dir;
  fs::create_directory(dir / "folder.asc");
  fs::create_symlink(dir / "gone.asc", dir / "broken.asc");
  fs::create_symlink("/dev/zero", dir / "zero.asc");
  ASSERT_EQ(::mkfifo((dir / "pipe.asc").c_str(), 0600), 0);
  const std::string not_found = msg::FileNotFound(dir.path().string());
  const std::pair<const char*, std::string> cases[] = {{"missing.asc", not_found}, {"broken.asc", not_found},
                                                       {"folder.asc", msg::kNotAFile}, {"zero.asc", msg::kNotAFile},
                                                       {"pipe.asc", msg::kNotAFile}};
  for (const auto& [name, reason] : cases) {
    SCOPED_TRACE(name);
    ProcessErrorsLog log(dir.path());
    log.DeleteBoth();
    RunCheckContext run{12, RunKind::Univariate, "P.xml"};
    EXPECT_EQ(CheckAscBeforeReading(dir / name, name, run, log), CheckOutcome::Rejected);
    EXPECT_EQ(ReadFile(dir / "Process Errors.Err"), std::string(name) + "\r\n" + reason + "\r\n");
  }
}

// The repair of a line writes the whole file anew beside it and renames it over: a file
// named like the old temporary copy is the user's and stays untouched.
TEST(AscRepair, ReplacingALineKeepsEveryOtherFile) {
  TempDir dir;
  WriteFile(dir / "sales.asc", "0\r\n0\r\nbad\r\n1\r\n");
  WriteFile(dir / "123sales.asc", "the user's own file");
  ASSERT_TRUE(ReplaceLine(dir / "sales.asc", 3, "0"));
  EXPECT_EQ(ReadFile(dir / "sales.asc"), "0\r\n0\r\n0\r\n1\r\n");
  EXPECT_EQ(ReadFile(dir / "123sales.asc"), "the user's own file");
  EXPECT_EQ(std::distance(fs::directory_iterator(dir.path()), fs::directory_iterator()), 2);
}

TEST(AscWrite, RecordRoundTripsAndWritesCrLf) {
  TempDir dir;
  AscDataset ds;
  ASSERT_TRUE(ReadAscFile(Sample("sales_causal.asc"), ds).ok());
  ds.Objectives(1) = 7;  // a written file never sets an objective of its own
  ASSERT_TRUE(WriteAscFile(dir / "copy.asc", ds));
  std::string expected = ReadFile(Sample("sales_causal.asc"));
  EXPECT_EQ(ReadFile(dir / "copy.asc"), expected);

  AscDataset r;
  ASSERT_TRUE(ReadAscFile(Sample("airline_retained.asc"), r).ok());
  ASSERT_TRUE(WriteAscFile(dir / "r.asc", r));
  EXPECT_EQ(ReadFile(dir / "r.asc"), ReadFile(Sample("airline_retained.asc")));
}

TEST(AscWrite, FromPropertiesAndColumns) {
  TempDir dir;
  clSeriesProperties p;
  p.SetNumberOfSeries(2);
  p.SetSeasonality(4);
  p.SetBeginningYear(" 2021 ");
  p.SetBeginningPeriod(2);
  p.SetNumberOfObservations(3);
  p.SetNumberOfForecasts(4);
  std::vector<AscColumn> columns = {{"RATE", 0, {0.25, std::nullopt, -1.5}},
                                    {"DEMAND", 0, {1200, 1250.5, 1e-7}}};
  ASSERT_TRUE(WriteAscFile(dir / "q.asc", p, columns));
  EXPECT_EQ(ReadFile(dir / "q.asc"), Lines({"0", "0", "0", "2", "4", "2021", "2", "3", "0", "0",
                                            "4", "RATE", "DEMAND", "0", "0", "0.25", "0", "-1.5",
                                            "1200", "1250.5", "1E-07"}));
  EXPECT_FALSE(WriteAscFile(dir / "missing-folder" / "q.asc", p, columns));
}

TEST(AscNames, StemAndExtensionWithoutRegardToCase) {
  EXPECT_EQ(AscStem("abc.asc"), "abc");
  EXPECT_EQ(AscStem("ABC.ASC"), "ABC");
  EXPECT_EQ(AscStem("abc.asc.bak"), "abc.asc.bak");
  EXPECT_TRUE(IsAscName("GROUPT.Asc"));
  EXPECT_FALSE(IsAscName("asc"));
  int replaced = 0;
  EXPECT_EQ(RepairSeriesName(" GDP.per capita\t ", &replaced), "GDP_per_capita_");
  EXPECT_EQ(replaced, 3);
}

TEST(SeriesProperties, LargeEngineRule) {
  struct Case {
    int16_t series, seasonality, observations;
    bool large;
  };
  const Case cases[] = {
      {20, 12, 500, true},   // 20 + 5 + 12 = 37
      {10, 12, 500, false},  // 27
      {10, 12, 1000, false}, {10, 12, 1001, true},
      {13, 12, 100, false},  // 30
      {14, 12, 100, true},   // 31
      {1, 5, 10, true},      {1, 7, 10, true},     {1, 52, 10, true},
      {1, 4, 10, false},     {1, 1, 10, false},
  };
  for (const Case& c : cases) {
    clSeriesProperties p;
    p.SetNumberOfSeries(c.series);
    p.SetSeasonality(c.seasonality);
    p.SetNumberOfObservations(c.observations);
    p.DecideLargeEngine();
    EXPECT_EQ(p.LargeEngine(), c.large) << c.series << " " << c.seasonality << " " << c.observations;
  }
  AscHeader h;
  ASSERT_TRUE(ReadAscHeader(Sample("sales_causal.asc"), h).ok());
  clSeriesProperties from = PropertiesFromHeader(h);
  EXPECT_TRUE(from.Causal());
  EXPECT_EQ(from.BeginningYear(), "2018");
  EXPECT_EQ(from.QualfiedSeries(), (std::vector<int16_t>{1, 2}));
  EXPECT_FALSE(from.LargeEngine());  // 3 + 5 + 12 = 20, 48 observations
}

}  // namespace
}  // namespace tessaly::dataset
