// The real qvxengine with a group list in its folder: the stacked dataset of the pooling
// flow is fitted as one pooled model, and its coefficients reach POOLCOEF.CSV.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "engine/exchange.h"
#include "engine/request.h"
#include "engine_test_data.h"
#include "platform/textfile.h"
#include "support/program_folder.h"

namespace quorvane {
namespace {

using tessaly::testing::ProgramFolderCopy;
using tessaly::testing::ReadFile;
using tessaly::testing::RunCommand;
using tessaly::testing::WriteFile;
namespace fs = std::filesystem;

TEST(QvxenginePooled, StackedDatasetWithAGroupListIsOnePooledModel) {
  ProgramFolderCopy program;
  WriteFile(program / "GROUPLST.QVX", " 3 \r\n36\r\n36\r\n36\r\n");
  std::mt19937 gen(12);
  std::normal_distribution<double> e(0.0, 1.0);
  std::vector<double> y;
  for (int g = 0; g < 3; ++g) {
    double x = 0.0;
    for (int t = 0; t < 36; ++t) y.push_back(20.0 + (x = 0.5 * x + e(gen)));
  }
  EngineArrays request = testdata::MonthlyRequest(y, 6, 0, "TOTALPOOL");
  request.work_folder = program.path().string();
  ASSERT_TRUE(WriteExchangeFile(program / kRequestFile, ExchangeKind::Request, request));
  std::string output;
  ASSERT_EQ(RunCommand("cd '" + program.path().string() + "' && ./qvxengine", &output), 0) << output;

  auto response = ReadExchangeFile(program / kResponseFile, ExchangeKind::Response);
  ASSERT_TRUE(response);
  ASSERT_EQ(response->error_code, 0) << response->strings2250[0];
  EXPECT_GT(response->doubles20[d20::kSse - 1], 0.0);
  EXPECT_GT(response->doubles20[d20::kParameters - 1], 0.0);
  const auto coef = tessaly::platform::ReadAllLines(program / "POOLCOEF.CSV");
  ASSERT_TRUE(coef);
  EXPECT_EQ(coef->size() - 1, static_cast<size_t>(response->doubles20[d20::kParameters - 1]));
  EXPECT_NE(ReadFile(program / "VERBAL.TXT").find("pooled cross-section of 3 groups of 36 observations each"),
            std::string::npos);
}

}  // namespace
}  // namespace quorvane
