// Seeded random mutations of real ASC files through every reader and checker: each gives
// its rejection or repair, an accepted file reads back whole, and no checker writes a file
// other than those it is meant to write. (Crashes and hangs are the fuzz target's part.)
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <random>
#include <set>

#include "dataset/asc_dataset.h"
#include "dataset/error_catalogue.h"
#include "dataset/validate_asc.h"
#include "dataset/validation.h"
#include "platform/numfmt.h"
#include "support/messages.h"
#include "support/program_folder.h"

namespace tessaly::dataset {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::SourcePath;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

// One to three slips of a hand edit or a half copy: a header or value line set to a value
// from the edges, lines lost or doubled, the file cut short, stray bytes, LF line ends.
std::string Mutate(std::mt19937& rng, std::string text) {
  auto pick = [&](size_t n) { return std::uniform_int_distribution<size_t>(0, n ? n - 1 : 0)(rng); };
  static const char* values[] = {"0",     "-1",    "1",     "52",     "53",     "150",   "151",
                                 "200",   "201",   "600",   "601",    "10000",  "10001", "32768",
                                 "1E400", "2.5",   "abc",   "",       "&HFF",   "1 2",   "NaN"};
  for (size_t round = 0, rounds = 1 + pick(3); round < rounds; ++round) {
    std::vector<std::string> lines;
    for (size_t at = 0; at < text.size();) {
      size_t end = text.find('\n', at);
      if (end == std::string::npos) end = text.size();
      lines.push_back(text.substr(at, end - at));
      at = end + 1;
    }
    const size_t line = pick(pick(4) ? std::min<size_t>(20, lines.size()) : lines.size());
    switch (pick(6)) {
      case 0: if (!lines.empty()) lines[line] = values[pick(std::size(values))]; break;
      case 1: if (!lines.empty()) lines.erase(lines.begin() + line, lines.begin() + std::min(lines.size(), line + 1 + pick(5))); break;
      case 2: if (!lines.empty()) lines.insert(lines.begin() + line, 1 + pick(3), lines[line]); break;
      case 3: text = text.substr(0, pick(text.size())); continue;
      case 4: text.insert(pick(text.size()), std::string(1 + pick(16), static_cast<char>(pick(256)))); continue;
      default: {
        std::string lf;
        for (auto& l : lines) lf += (l.empty() || l.back() != '\r' ? l : l.substr(0, l.size() - 1)) + "\n";
        text = lf;
        continue;
      }
    }
    text.clear();
    for (auto& l : lines) text += (l.empty() || l.back() != '\r' ? l + "\r" : l) + "\n";
  }
  return text;
}

std::set<std::string> Entries(const fs::path& folder) {
  std::set<std::string> names;
  for (const auto& e : fs::directory_iterator(folder)) names.insert(e.path().filename().string());
  return names;
}

TEST(Mutations, EveryInputIsRejectedOrRepairedAndNothingElseIsWritten) {
  std::vector<std::string> seeds;
  for (const char* name : {"airline.asc", "airline_retained.asc", "sales_causal.asc"})
    seeds.push_back(ReadFile(SourcePath(std::string("tests/dataset/data/files/") + name)));
  tessaly::testing::RecordedMessages host;
  TempDir in, out, program;
  ProcessErrorsLog log(program.path());
  AscDataset dataset, reread;
  std::mt19937 rng(20240611);
  const auto start = std::chrono::steady_clock::now();
  int ran = 0, accepted = 0, valid = 0, repaired = 0;
  for (; ran < 1000 && std::chrono::steady_clock::now() - start < std::chrono::seconds(8); ++ran) {
    const std::string input = Mutate(rng, seeds[ran % seeds.size()]);
    const fs::path file = in / "mutant.asc";
    WriteFile(file, input);
    // The run's checks, as the run loop calls them.
    AscHeader header;
    ReadAscHeader(file, header);
    RunCheckContext run{header.DataProp[2], header.N() == 1 ? RunKind::Univariate : RunKind::Causal, "Fuzz.xml"};
    CheckOutcome outcome = CheckAscBeforeReading(file, "mutant.asc", run, log);
    if (outcome == CheckOutcome::Accepted) outcome = ReadAndCheckAscFile(file, "mutant.asc", dataset, log);
    if (outcome == CheckOutcome::Accepted) {
      ++accepted;
      // An accepted file has the size its header announces and reads back to the same record.
      ASSERT_EQ(CountAscLines(file), AnticipatedSize(header)) << input;
      ASSERT_TRUE(WriteAscFile(program / "roundtrip.asc", dataset));
      ASSERT_TRUE(ReadAscFile(program / "roundtrip.asc", reread).ok());
      for (int k = 1; k <= dataset.DataProp(1) * dataset.DataProp(5); ++k)
        ASSERT_EQ(platform::NumberToText(reread.DataValues(k)), platform::NumberToText(dataset.DataValues(k)));
      fs::remove(program / "roundtrip.asc");
    }
    bool cancel = false;
    (void)ValidateAscSize_And_NSeries(file, cancel);
    // The strict check repairs in place: only the file itself, the page, report.xml and the
    // log may exist afterwards.
    ValidateAscResult result = ValidateASC("mutant.asc", in.path(), out.path(), log);
    valid += result.valid;
    repaired += ReadFile(file) != input;
    ASSERT_EQ(Entries(in.path()), std::set<std::string>{"mutant.asc"});
    for (const std::string& name : Entries(out.path())) ASSERT_TRUE(name == "report.xml" || name == "mutanterr.html") << name;
    for (const std::string& name : Entries(program.path())) ASSERT_EQ(name, "Process Errors.Err");
    if (!result.valid) ASSERT_GE(result.code, 5000);
    log.DeleteBoth();
    host->shown.clear();
  }
  std::printf("mutation inputs run: %d (accepted %d, valid %d, repaired in place %d)\n", ran, accepted, valid,
              repaired);
  EXPECT_GE(ran, 300);  // the time guard stops a loaded machine early
  // The mutations must reach both sides of the checks to be worth anything.
  EXPECT_GT(accepted, 0);
  EXPECT_GT(valid, 0);
  EXPECT_GT(repaired, 0);
  EXPECT_LT(accepted, ran);
}

}  // namespace
}  // namespace tessaly::dataset
