#pragma once
// Test datasets for the generator: ASC files written line by line as a user's file would
// be, read back into columns, and a variables file written by the same writer the wizard uses.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "genseries/generate_series.h"
#include "genseries/variables.h"
#include "support/program_folder.h"

namespace tessaly::genseries::test {

namespace fs = std::filesystem;

struct AscLayout {
  std::vector<std::string> names;  // the last is the dependent series
  std::vector<int> types;
  int seasonality = 12, year = 2000, period = 1, observations = 24, future = 0, retained = 0,
      forecasts = 12;
  std::vector<int> objectives = {0, 0, 0};
};

// Series i (0-based) has observation t = (i + 1) * 1000 + t + 0.5, future value t =
// -(i + 1) * 1000 - t, retained value t = 7.
void WriteAsc(const fs::path& path, const AscLayout& layout);

struct AscRead {
  std::vector<int> objectives;
  int series = 0, seasonality = 0, year = 0, period = 0, observations = 0, future = 0, retained = 0,
      forecasts = 0;
  std::vector<std::string> names;
  std::vector<int> types;
  std::map<std::string, std::vector<double>> obs, fut;
  long lines = 0;
};
AscRead ReadAsc(const fs::path& path);

// Runs the generator on `asc` with `vars` written to rwf.his beside it, in a program folder
// of its own (BPRESULTS.ASC and tslyberr.txt go there).
class GenTest : public ::testing::Test {
 protected:
  GenerationResult Generate(const GenerationVariables& vars, const fs::path& asc,
                            const ManualData& manual = {});
  // Variables for a dataset: seasonality and beginning from the layout.
  static GenerationVariables VarsFor(const AscLayout& layout);
  fs::path Asc(const std::string& name, const AscLayout& layout) {
    fs::path p = dir / name;
    WriteAsc(p, layout);
    return p;
  }
  testing::TempDir dir;
};

}  // namespace tessaly::genseries::test
