// Seeded random mutations of real ASC files through every reader and checker: whatever the
// bytes, each gives its rejection or repair and returns; none crashes, hangs, or writes a
// file other than those it is meant to write.
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

constexpr int kInputs = 1000;
constexpr uint32_t kSeed = 20240611;

std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::string cur;
  for (char c : text) {
    if (c == '\n') {
      lines.push_back(cur);
      cur.clear();
    } else {
      cur += c;
    }
  }
  if (!cur.empty()) lines.push_back(cur);
  return lines;
}

std::string JoinLines(const std::vector<std::string>& lines, const char* eol) {
  std::string out;
  for (const auto& l : lines) out += l + eol;
  return out;
}

class Mutator {
 public:
  explicit Mutator(uint32_t seed) : rng_(seed) {}

  std::string Mutate(const std::string& seed_text) {
    std::string text = seed_text;
    int rounds = 1 + Pick(3);
    for (int r = 0; r < rounds; ++r) text = Once(text);
    return text;
  }

 private:
  int Pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(rng_); }
  char Byte() { return static_cast<char>(Pick(256)); }

  std::string Value() {
    static const char* values[] = {"0",      "-1",    "1",     "52",    "53",     "150",
                                   "151",    "200",   "201",   "600",   "601",    "9999",
                                   "10000",  "10001", "32767", "32768", "-32769", "1E400",
                                   "-1e999", "2.5",   "12.5",  "abc",   "",       " ",
                                   "&HFF",   "1 2",   "1e5",   "NaN",   "\x1a",   "0x10",
                                   "1,000",  "+7",    ".",     "-",     "99999999999999999999"};
    return values[Pick(static_cast<int>(std::size(values)))];
  }

  std::string Once(const std::string& text) {
    std::vector<std::string> lines = SplitLines(text);
    auto line_index = [&]() { return lines.empty() ? 0 : Pick(static_cast<int>(lines.size())); };
    switch (Pick(12)) {
      case 0: {  // flip bytes
        std::string t = text;
        for (int i = 0, n = 1 + Pick(8); i < n && !t.empty(); ++i) t[Pick(static_cast<int>(t.size()))] = Byte();
        return t;
      }
      case 1:  // truncate anywhere
        return text.substr(0, text.empty() ? 0 : Pick(static_cast<int>(text.size())));
      case 2: {  // a header or value line gets a value from the edges
        if (lines.empty()) return text;
        int i = Pick(4) == 0 ? line_index() : Pick(std::min<int>(20, static_cast<int>(lines.size())));
        lines[i] = Value();
        return JoinLines(lines, "\r\n");
      }
      case 3: {  // delete lines
        if (lines.empty()) return text;
        int i = line_index();
        int n = 1 + Pick(5);
        lines.erase(lines.begin() + i, lines.begin() + std::min<size_t>(lines.size(), i + n));
        return JoinLines(lines, "\r\n");
      }
      case 4: {  // duplicate lines
        if (lines.empty()) return text;
        int i = line_index();
        lines.insert(lines.begin() + i, 1 + Pick(3), lines[i]);
        return JoinLines(lines, "\r\n");
      }
      case 5: {  // insert random binary bytes
        std::string junk;
        for (int i = 0, n = 1 + Pick(64); i < n; ++i) junk += Byte();
        size_t at = text.empty() ? 0 : Pick(static_cast<int>(text.size()));
        return text.substr(0, at) + junk + text.substr(at);
      }
      case 6: {  // a very long line (megabytes, rarely)
        if (lines.empty()) return text;
        size_t length = Pick(20) == 0 ? (1 << 20) + Pick(1 << 20) : 1000 + Pick(5000);
        lines[line_index()] = std::string(length, Pick(2) ? '9' : 'A');
        return JoinLines(lines, "\r\n");
      }
      case 7:  // LF only, or a trailing end-of-file mark / blank lines
        switch (Pick(3)) {
          case 0: return JoinLines(lines, "\n");
          case 1: return text + "\x1a";
          default: return text + std::string(Pick(3), '\n');
        }
      case 8: {  // swap two lines
        if (lines.size() < 2) return text;
        std::swap(lines[line_index()], lines[line_index()]);
        return JoinLines(lines, "\r\n");
      }
      case 9: {  // characters names may not hold
        if (lines.size() < 13) return text;
        static const char bad[] = {' ', '.', '!', '`', '[', ']', '*', '?', '\t', '\0', '\x7f', '\xe9'};
        lines[11 + Pick(2)].insert(0, 1, bad[Pick(sizeof bad)]);
        return JoinLines(lines, "\r\n");
      }
      case 10:  // empty file or a single blank line
        return Pick(2) ? std::string() : std::string("\r\n");
      default: {  // grow a count line so the file is much too short for its header
        if (lines.size() < 11) return text;
        lines[3 + Pick(8)] = std::to_string(Pick(2) ? 150 : 10000);
        return JoinLines(lines, "\r\n");
      }
    }
  }

  std::mt19937 rng_;
};

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
  AscDataset dataset;
  AscDataset reread;
  Mutator mutator(kSeed);
  const auto start = std::chrono::steady_clock::now();
  int ran = 0, accepted = 0, valid = 0, repaired = 0;

  for (; ran < kInputs; ++ran) {
    const std::string input = mutator.Mutate(seeds[ran % seeds.size()]);
    const fs::path file = in / "mutant.asc";
    WriteFile(file, input);

    // The plain readers.
    AscHeader header;
    CountAscLines(file);
    ReadAscHeader(file, header);
    ReadAscFile(file, dataset);

    // The run's checks, as the run loop calls them.
    RunCheckContext run{header.DataProp[2], header.N() == 1 ? RunKind::Univariate : RunKind::Causal,
                        "Fuzz.xml"};
    CheckOutcome outcome = CheckAscBeforeReading(file, "mutant.asc", run, log);
    if (outcome == CheckOutcome::Accepted)
      outcome = ReadAndCheckAscFile(file, "mutant.asc", dataset, log);
    if (outcome == CheckOutcome::Accepted) {
      ++accepted;
      // An accepted file has the size its header announces, and writing it out again
      // gives a file that reads back to the same record.
      ASSERT_EQ(CountAscLines(file), AnticipatedSize(header)) << input;
      ASSERT_TRUE(WriteAscFile(program / "roundtrip.asc", dataset));
      ASSERT_TRUE(ReadAscFile(program / "roundtrip.asc", reread).ok());
      for (int k = 1; k <= dataset.DataProp(1) * dataset.DataProp(5); ++k) {
        ASSERT_EQ(platform::NumberToText(reread.DataValues(k)), platform::NumberToText(dataset.DataValues(k)));
      }
      fs::remove(program / "roundtrip.asc");
    }

    bool cancel = false;
    (void)ValidateAscSize_And_NSeries(file, cancel);  // a mutant may pass or fail; it must not crash

    // The strict check repairs in place: only the file itself, the page, report.xml and
    // the log may exist afterwards.
    ValidateAscResult result = ValidateASC("mutant.asc", in.path(), out.path(), log);
    if (result.valid) ++valid;
    if (ReadFile(file) != input) ++repaired;
    ASSERT_EQ(Entries(in.path()), std::set<std::string>{"mutant.asc"});
    for (const std::string& name : Entries(out.path())) {
      ASSERT_TRUE(name == "report.xml" || name == "mutanterr.html") << name;
    }
    for (const std::string& name : Entries(program.path())) {
      ASSERT_EQ(name, "Process Errors.Err");
    }
    if (!result.valid) {
      ASSERT_GE(result.code, 5000);
    }

    log.DeleteBoth();
    host->shown.clear();
    if (std::chrono::steady_clock::now() - start > std::chrono::seconds(8)) break;
  }
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  std::printf("mutation inputs run: %d in %.2f s (run checks accepted %d, ValidateASC valid %d, "
              "repaired in place %d)\n",
              ran, seconds, accepted, valid, repaired);
  EXPECT_GE(ran, 300);  // the time guard stops a loaded machine early
  // The mutations must reach both sides of the checks to be worth anything.
  EXPECT_GT(accepted, 0);
  EXPECT_GT(valid, 0);
  EXPECT_GT(repaired, 0);
  EXPECT_LT(accepted, ran);
}

}  // namespace
}  // namespace tessaly::dataset
