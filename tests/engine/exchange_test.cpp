#include "engine/exchange.h"

#include <gtest/gtest.h>

#include "support/program_folder.h"

namespace quorvane {
namespace {

using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

TEST(Exchange, RoundTripKeepsEveryArrayAtItsBound) {
  TempDir dir;
  EngineArrays a;
  a.run_mode = kRunModeSpreadsheet;
  a.work_folder = "/opt/tessaly";
  a.objective_values = {0, 0, 0};
  a.property_values = {1, 12, 1949, 1, 144, 0, 0, 12};
  a.series_names[0] = "AIRLINE";
  a.series_data[0] = 112;
  a.series_data[143] = 432;
  a.strings2250[5] = "text";
  a.forecast_values[1799] = -1.5;
  a.error_code = 2163;
  ASSERT_TRUE(WriteExchangeFile(dir / kRequestFile, ExchangeKind::Request, a));
  // Only the used part is written: far below the 12 MB the full arrays would take.
  EXPECT_LT(std::filesystem::file_size(dir / kRequestFile), 40000u);

  auto b = ReadExchangeFile(dir / kRequestFile, ExchangeKind::Request);
  ASSERT_TRUE(b);
  EXPECT_EQ(b->run_mode, kRunModeSpreadsheet);
  EXPECT_EQ(b->work_folder, "/opt/tessaly");
  EXPECT_EQ(b->property_values, a.property_values);
  EXPECT_EQ(b->series_names, a.series_names);
  EXPECT_EQ(b->series_data.size(), static_cast<size_t>(kSeriesData));
  EXPECT_EQ(b->series_data[143], 432);
  EXPECT_EQ(b->strings2250[5], "text");
  EXPECT_EQ(b->forecast_values[1799], -1.5);
  EXPECT_EQ(b->error_code, 2163);
}

TEST(Exchange, RefusesOtherKindsTruncationAndGarbage) {
  TempDir dir;
  EngineArrays a;
  a.series_data[10] = 1;
  ASSERT_TRUE(WriteExchangeFile(dir / "r.bin", ExchangeKind::Response, a));
  EXPECT_FALSE(ReadExchangeFile(dir / "r.bin", ExchangeKind::Request));
  auto bytes = tessaly::testing::ReadFile(dir / "r.bin");
  WriteFile(dir / "cut.bin", bytes.substr(0, bytes.size() - 3));
  EXPECT_FALSE(ReadExchangeFile(dir / "cut.bin", ExchangeKind::Response));
  WriteFile(dir / "junk.bin", "not an exchange file at all");
  EXPECT_FALSE(ReadExchangeFile(dir / "junk.bin", ExchangeKind::Response));
  EXPECT_FALSE(ReadExchangeFile(dir / "missing.bin", ExchangeKind::Response));
  EXPECT_FALSE(WriteExchangeFile(dir / "no" / "such" / "f.bin", ExchangeKind::Request, a));
  // A text of 16 MiB is the most a reader takes in; one byte more is a damaged file.
  for (size_t size : {size_t{1} << 24, (size_t{1} << 24) + 1}) {
    a.strings2250[0] = std::string(size, 'x');
    ASSERT_TRUE(WriteExchangeFile(dir / "long.bin", ExchangeKind::Response, a));
    EXPECT_EQ(ReadExchangeFile(dir / "long.bin", ExchangeKind::Response).has_value(), size == size_t{1} << 24);
  }
}

}  // namespace
}  // namespace quorvane
