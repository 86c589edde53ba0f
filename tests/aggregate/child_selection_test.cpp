#include "aggregate/child_selection.h"

#include <gtest/gtest.h>

#include "support/messages.h"
#include "support/program_folder.h"

namespace tessaly::aggregate {
namespace {

using tessaly::testing::RecordedMessages;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;
using Outcome = SelectionResult::Outcome;

// A univariate ASC file; header lines 4 to 11 as given (blank-separated), CR LF line ends.
std::string Asc(const std::string& name, const std::vector<std::string>& header,
                int values = 3) {
  std::string text = "0\r\n0\r\n0\r\n";
  for (const auto& h : header) text += h + "\r\n";
  text += name + "\r\n0\r\n";
  for (int i = 0; i < values; ++i) text += std::to_string(10 + i) + "\r\n";
  return text;
}
const std::vector<std::string> kMonthly{"1", "12", "2001", "1", "3", "0", "0", "6"};

std::vector<std::string> With(std::size_t line, const std::string& value) {
  auto h = kMonthly;
  h[line - 4] = value;
  return h;
}

TEST(ChildLists, MovesKeepSelectionOrderAndStopAtTheLimit) {
  RecordedMessages host;
  ChildLists lists;
  std::vector<std::string> files;
  for (int i = 0; i < 152; ++i) files.push_back("S" + std::to_string(i) + ".ASC");
  lists.Fill(files);
  EXPECT_TRUE(lists.Controls().add_enabled);
  EXPECT_FALSE(lists.Controls().remove_enabled);
  EXPECT_FALSE(lists.Controls().remove_all_visible);

  lists.Highlight(ListSide::Roster, 5, true);
  lists.Highlight(ListSide::Roster, 2, true);
  lists.Add();
  EXPECT_EQ(lists.ChosenNames(), (std::vector<std::string>{"S2.ASC", "S5.ASC"}));
  EXPECT_EQ(lists.AvailableCount(), 150u);
  EXPECT_TRUE(lists.Controls().remove_all_visible);
  lists.RemoveOne(0);  // back to the end of the roster
  EXPECT_EQ(lists.Roster().back().name, "S2.ASC");
  lists.AddOne(0);
  EXPECT_EQ(lists.ChosenNames(), (std::vector<std::string>{"S5.ASC", "S0.ASC"}));

  // Select All on the roster moves up to 149 and leaves the rest, with one message.
  lists.SelectAll(ListSide::Roster, true);
  lists.Add();
  EXPECT_EQ(lists.SelectedCount(), 149u);
  EXPECT_EQ(lists.AvailableCount(), 3u);
  ASSERT_EQ(host.Texts(), (std::vector<std::string>{
                              "You have reached the allowable limit of Series in an aggregation is 149 ."}));
  lists.AddOne(0);
  EXPECT_EQ(lists.SelectedCount(), 149u);
  EXPECT_EQ(host.Texts().size(), 2u);

  lists.SelectAll(ListSide::Chosen, true);
  lists.Remove();
  EXPECT_EQ(lists.SelectedCount(), 0u);
  EXPECT_FALSE(lists.Controls().remove_enabled);
  EXPECT_FALSE(lists.Controls().remove_all_visible);
  EXPECT_TRUE(lists.Controls().add_enabled);

  ChildLists pool(SelectionFlow::Pooling);
  pool.Fill(files);
  pool.SelectAll(ListSide::Roster, true);
  pool.Add();
  EXPECT_EQ(host.Texts().back(), "You have reached the allowable limit of Series in an Pooling is 149 .");
}

struct FinishCase {
  const char* what;
  SelectionFlow flow;
  std::vector<std::pair<std::string, std::vector<std::string>>> files;  // name, header
  Outcome outcome;
  std::string message;  // the last message, "" for none
  std::string status;   // the last status
};

TEST(ValidateChildren, TestsInOrderWithTheFlowsTexts) {
  const auto A = SelectionFlow::Aggregation;
  const auto P = SelectionFlow::Pooling;
  const std::string refused = "\rWe will now exit the program> \r\r";
  const std::string agg_inc = "AGGREGATION - Processing was incomplete.";
  const std::string pool_inc = "Pooling - Processing was incomplete.";
  const std::string agg_val = "AGGREGATION - Validating Selected ASC files - Reconcile Bottom to Top";
  const std::string names =
      "Since one or more of your asc names contains nonnumeric characters, The \"Mixed Frequency\" "
      "option in Aggregation Parameters will not be available\r\r";
  const std::vector<FinishCase> cases{
      {"one file", A, {{"A.ASC", kMonthly}}, Outcome::CountRefused,
       "FYI!  The range for selection is from 2 to 149.", ""},
      {"all pass, line 4 of 0 and blanks trimmed", A,
       {{"A.ASC", kMonthly}, {"B.ASC", With(4, "0")}, {"C.ASC", With(5, "12 ")}},
       Outcome::Passed, names, agg_val},
      {"not univariate", A, {{"A.ASC", kMonthly}, {"B.ASC", With(4, "2")}}, Outcome::FileRefused,
       "B.ASC is not an univariate series.  Please review all selected asc files for accuracy." + refused,
       agg_inc},
      {"seasonality as text", A, {{"A.ASC", kMonthly}, {"B.ASC", With(5, "012")}},
       Outcome::FileRefused,
       "B.ASC does not have the same seasonality as the other series.  Please review all selected asc files for accuracy." + refused,
       agg_inc},
      {"major period", A, {{"A.ASC", kMonthly}, {"B.ASC", With(6, "2002")}}, Outcome::FileRefused,
       "B.ASC does not have the same Major Period as the other series.  Please review all selected asc files for accuracy." + refused,
       agg_inc},
      {"minor period", A, {{"A.ASC", kMonthly}, {"B.ASC", With(7, "2")}}, Outcome::FileRefused,
       "B.ASC does not have the same Minor Period as the other series.   Please review all selected asc files for accuracy." + refused,
       agg_inc},
      {"observations", A, {{"A.ASC", kMonthly}, {"B.ASC", With(8, "4")}}, Outcome::FileRefused,
       "B.ASC does not have the same number of observations as the other series.   Please review all selected asc files for accuracy." + refused,
       agg_inc},
      {"retained data, negative too", A, {{"A.ASC", kMonthly}, {"B.ASC", With(10, "-1")}},
       Outcome::FileRefused,
       "B.ASC contains Retained Data and cannot be processed.   Please review all selected asc files for accuracy." + refused,
       agg_inc},
      {"missing file", A, {{"A.ASC", kMonthly}, {"MISSING.ASC", {}}}, Outcome::FileRefused,
       "MISSING.ASC is an empty or malformed file.  Please review all selected asc files for accuracy." + refused,
       agg_inc},
      {"pooling: series counts agree, retained data not tested", P,
       {{"A.ASC", With(4, "2")}, {"B.ASC", With(10, "3")}},
       Outcome::FileRefused,
       "B.ASC does not have the same number of series as the other series.  Please review all selected asc files for accuracy." + refused,
       pool_inc},
      {"pooling passes", P, {{"A.ASC", With(10, "3")}, {"B.ASC", With(10, "3")}}, Outcome::Passed,
       "", "Pooling - Validating Selected ASC files "},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    RecordedMessages host;
    TempDir dir;
    std::vector<std::string> chosen;
    for (const auto& [name, header] : c.files) {
      if (!header.empty()) WriteFile(dir / name, Asc(name.substr(0, 1), header));
      chosen.push_back(name);
    }
    std::string status;
    SelectionContext context{c.flow, dir.path(), [&](const std::string& s) { status = s; }, ""};
    const SelectionResult r = ValidateChildren(chosen, context);
    EXPECT_EQ(r.outcome, c.outcome);
    EXPECT_EQ(host.Texts().empty() ? "" : host.Texts().back(), c.message);
    EXPECT_EQ(status, c.status);
    if (c.outcome == Outcome::Passed) {
      EXPECT_EQ(r.first_forecast_count, "6");
      EXPECT_EQ(r.keep_seasonality, "12");
      EXPECT_EQ(r.keep_observations, "3");
    }
  }
}

TEST(ValidateChildren, TooManyFilesAndNumericNamesSortedForMixedFrequency) {
  RecordedMessages host;
  std::vector<std::string> many(150, "A.ASC");
  (void)ValidateChildren(many, {SelectionFlow::Aggregation, "/nonexistent", nullptr, ""});
  EXPECT_EQ(host.Texts().back(),
            "You have selected 150 asc files. The allowable limit of Series in an aggregation is "
            "149. You must delete the excess asc files.\r\n\r\n");
  EXPECT_EQ(host->shown.back().title, "FYI");

  TempDir dir;
  for (const char* n : {"3.asc", "010.ASC", "01.asc", "2.asc"}) WriteFile(dir / n, Asc("X", kMonthly));
  const auto r = ValidateChildren({"3.asc", "010.ASC", "01.asc", "2.asc"},
                                  {SelectionFlow::Aggregation, dir.path(), nullptr, ""});
  EXPECT_EQ(r.outcome, Outcome::Passed);  // 010.ASC and 01.asc found whatever their case
  EXPECT_TRUE(r.all_names_numeric);
  EXPECT_EQ(r.chosen, (std::vector<std::string>{"01.asc", "2.asc", "3.asc", "010.asc"}));

  std::vector<std::string> mixed{"3.asc", "A1.asc", "1.asc"};
  EXPECT_FALSE(SortNumericNames(mixed));
  EXPECT_EQ(mixed, (std::vector<std::string>{"3.asc", "A1.asc", "1.asc"}));
  std::vector<std::string> derived{"007.asc", "1.ASC"};
  EXPECT_TRUE(SortNumericNames(derived));
  EXPECT_EQ(derived, (std::vector<std::string>{"1.asc", "07.asc"}));
}

}  // namespace
}  // namespace tessaly::aggregate
