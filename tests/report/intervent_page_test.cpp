#include "report/intervent_page.h"

#include <gtest/gtest.h>

#include "platform/textfile.h"
#include "support/program_folder.h"

namespace tessaly::report {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;

InterventionInput TwoInterventions(int left_out) {
  InterventionInput in;
  in.integers20.assign(20, 0);
  in.integers20[0] = static_cast<int16_t>(left_out);
  in.integers20[3] = 2;
  in.doubles745.assign(745, 0);
  const double rows[2][5] = {{1, 30, 1951, 6, -23.25}, {2, 100, 1957, 4, 41.5}};
  for (int i = 0; i < 2; ++i)
    for (int k = 0; k < 5; ++k) in.doubles745[i * 5 + k] = rows[i][k];
  in.returned_observations = 144;
  in.data_observations = 144;
  return in;
}

std::vector<std::string> Body(const std::vector<std::string>& lines) {
  // From the line after "<br>" to the end.
  auto br = std::find(lines.begin(), lines.end(), "<br>");
  return std::vector<std::string>(br == lines.end() ? lines.end() : br + 1, lines.end());
}

TEST(InterventionPage, WrittenWithTheEnginesObservations) {
  TempDir out;
  ASSERT_TRUE(write_intervent_htm(out.path(), "AIRLINE", TwoInterventions(0)));
  const auto lines = platform::ReadAllLines(out / "AIRLINEINTRVENT.HTM").value();
  ASSERT_GE(lines.size(), 10u);
  EXPECT_EQ(lines[0], "<html>");
  EXPECT_EQ(lines[1], "<body>");
  EXPECT_EQ(lines[2], "<pre>");
  EXPECT_EQ(lines[6], "");
  EXPECT_EQ(lines[7].find_first_not_of(' '), lines[7].size() - 13);  // "Time=hh:mm:ss" at the right
  EXPECT_EQ(lines[7].size(), lines[8].size());
  EXPECT_EQ(lines[8].substr(lines[8].find('D'), 5), "Date=");
  EXPECT_EQ(Body(lines),
            (std::vector<std::string>{
                "Pattern                         Pulse",
                "Point Intervention Occurred     30",
                "Major Period                    1951",
                "Minor Period                    6",
                "Impact Value                    -23.25",
                "",
                "Pattern                         Level Shift",
                "Point Intervention Occurred     100",
                "Major Period                    1957",
                "Minor Period                    4",
                "Impact Value                    41.5",
                "",
                "</pre>",
                "<body>",
                "<html>",
            }));
  EXPECT_NE(ReadFile(out / "AIRLINEINTRVENT.HTM").find("<html>\r\n"), std::string::npos);
}

TEST(InterventionPage, ObservationsMoveWhenTheEngineLeftSomeOut) {
  // The model used the last 132 of 144 observations: its observation 30 is the
  // dataset's 42.
  const InterventionInput in = TwoInterventions(12);
  EXPECT_EQ(ShownObservation(30, in), 42);
  TempDir out;
  ASSERT_TRUE(write_intervent_htm(out.path(), "AIRLINE", in));
  const auto body = Body(platform::ReadAllLines(out / "AIRLINEINTRVENT.HTM").value());
  EXPECT_EQ(body[1], "Point Intervention Occurred     42");
  EXPECT_EQ(body[7], "Point Intervention Occurred     112");
  // When the request held fewer observations than the model used, the number stands.
  InterventionInput fewer = in;
  fewer.data_observations = 120;
  EXPECT_EQ(ShownObservation(30, fewer), 30);
}

TEST(InterventionPage, NoInterventionsNoPage) {
  TempDir out;
  InterventionInput none = TwoInterventions(0);
  none.integers20[3] = 0;
  EXPECT_FALSE(write_intervent_htm(out.path(), "AIRLINE", none));
  EXPECT_FALSE(std::filesystem::exists(out / "AIRLINEINTRVENT.HTM"));
  InterventionInput empty;
  EXPECT_FALSE(write_intervent_htm(out.path(), "AIRLINE", empty));
  // A count beyond what the array can hold stops at its end.
  InterventionInput many = TwoInterventions(0);
  many.integers20[3] = 500;
  many.doubles745.resize(12);
  ASSERT_TRUE(write_intervent_htm(out.path(), "MANY", many));
  const auto lines = platform::ReadAllLines(out / "MANYINTRVENT.HTM").value();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "Pattern                         Pulse"), 1);
  EXPECT_EQ(lines.size(), 10u + 149 * 6 + 3);  // head, 149 interventions, closing tags
}

}  // namespace
}  // namespace tessaly::report
