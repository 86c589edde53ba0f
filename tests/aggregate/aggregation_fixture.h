#pragma once
// A project of children made from the airline passengers, shares of it with a wobble of
// their own, in a fresh copy of the program folder; the aggregation is run on it in process.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "aggregate/unattended_aggregation.h"
#include "batch/run.h"
#include "platform/numfmt.h"
#include "platform/textfile.h"
#include "support/messages.h"
#include "support/program_folder.h"

namespace tessaly::aggregate::testing {

namespace fs = std::filesystem;
using tessaly::testing::ReadFile;
using tessaly::testing::WriteFile;

inline std::vector<double> Airline() {
  auto lines = platform::ReadAllLines(tessaly::testing::SourcePath("examples/AIRLINE.ASC")).value();
  std::vector<double> v;
  for (std::size_t i = 13; i < lines.size() && v.size() < 144; ++i) v.push_back(std::stod(lines[i]));
  return v;
}

// A univariate monthly child: `share` of the airline series plus a wobble, `n` observations.
inline std::string ChildAsc(const std::string& name, double share, int k, int n = 144,
                            const std::string& seasonality = "12") {
  const auto base = Airline();
  std::string t = "0\r\n0\r\n0\r\n1\r\n" + seasonality + "\r\n1949\r\n1\r\n" + std::to_string(n) +
                  "\r\n0\r\n0\r\n12\r\n" + name + "\r\n0\r\n";
  for (int i = 0; i < n; ++i) {
    double v = std::round((base[i % 144] * share + 3 * std::sin(i * 0.7 + k)) * 10) / 10;
    t += platform::NumberToText(v) + "\r\n";
  }
  return t;
}

class AggregationTest : public ::testing::Test {
 protected:
  // Writes the children and a project listing them (and `extra` names, written or not).
  void MakeProject(const std::vector<std::string>& names) {
    batch::cBatchFile p(program.path());
    p.SetInDirectory(work.path().string());
    p.SetOutDirectory(work.path().string());
    for (const auto& n : names) p.Add_File(n, 0, 0, "00/00/00");
    ASSERT_TRUE(p.Build(work / "regions.xml"));
  }
  void WriteChildren(const std::vector<std::string>& names) {
    for (std::size_t k = 0; k < names.size(); ++k)
      WriteFile(work / names[k], ChildAsc(names[k].substr(0, names[k].size() - 4),
                                          0.2 + 0.1 * static_cast<double>(k % 5), static_cast<int>(k)));
  }
  int Run(const AggregationAnswers& answers, AggregationSeams seams = {}) {
    return RunAggregationUnattended(work / "regions.xml", answers, std::move(seams), program.path());
  }
  std::vector<std::string> Lines(const fs::path& p) { return platform::ReadAllLines(p).value_or(std::vector<std::string>{}); }

  tessaly::testing::ProgramFolderCopy program;
  tessaly::testing::TempDir work;
  tessaly::testing::RecordedMessages host;
};

}  // namespace tessaly::aggregate::testing
