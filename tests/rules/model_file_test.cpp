#include "rules/model_file.h"

#include "fixture.h"
#include "rules/validation.h"

namespace tessaly::rules::testing {
namespace {

StartmodPage Noise(std::string constant, std::string lambda) {
  StartmodPage p;
  SetNoiseDefaults(p);
  p.txtStartmod1.text = std::move(constant);
  p.txtStartmod2.text = std::move(lambda);
  return p;
}

TEST(ModelRows, NoiseWithoutPolynomialsEndsAfterTheCounts) {
  auto row = BuildNoiseRow(Noise("", "1.00"), "SALES", 1);
  ASSERT_EQ(row.size(), 4u);
  EXPECT_EQ(row[0], std::string("SALES") + std::string(35, ' ') + "1");
  EXPECT_EQ(row[0].size(), 41u);
  EXPECT_EQ(row[1], "     0");
  EXPECT_EQ(row[2], "        1.00         0.0");
  EXPECT_EQ(row[3], "     0     0     0");
  // A constant of 0 or less is no constant in a model of one series, but counts with inputs.
  EXPECT_EQ(BuildNoiseRow(Noise("-5", "1.00"), "SALES", 1)[1], "     0");
  EXPECT_EQ(BuildNoiseRow(Noise("0", "1.00"), "SALES", 3)[1], "     1");
}

TEST(ModelRows, ConstantGetsItsDecimalAndCoefficientsAreCut) {
  auto row = BuildNoiseRow(Noise("10", "1.00"), "SALES", 1);
  EXPECT_EQ(row[2], "        10.0");
  EXPECT_EQ(BuildNoiseRow(Noise("10.5", "1.00"), "SALES", 1)[2], "        10.5");
  StartmodPage p = Noise("", "0.50");
  p.txtStartmod5.text = "1";
  p.txtStartmod7.text = "2";
  p.txtStartmod8.text = "1 12";
  p.txtStartmod9.text = "0.123456789 -0.4";
  p.txtStartmod3.text = "2";
  p.txtStartmod4.text = "1 12";
  row = BuildNoiseRow(p, "SALES", 12);
  ASSERT_EQ(row.size(), 8u);
  EXPECT_EQ(row[0].substr(39), "12");
  EXPECT_EQ(row[3], "     1     2     0");
  EXPECT_EQ(row[4], "     1    12");
  EXPECT_EQ(row[5], "     2");
  EXPECT_EQ(row[6], "     1    12");
  EXPECT_EQ(row[7], "    0.123456        -0.4");
}

TEST(ModelRows, LongNamesCollideWithTheCountColumns) {
  std::string name(40, 'N');
  auto row = BuildNoiseRow(Noise("", "1.00"), name, 2);
  EXPECT_EQ(row[0], name + "2");
  EXPECT_EQ(SeriesCountOfNameLine(row[0]), 0);
}

class ModelFiles : public RulesFixture {};

TEST_F(ModelFiles, TableRoundTripsThroughStartmod) {
  ModelTable table;
  StartmodPage noise = Noise("25.5", "0.50");
  noise.txtStartmod5.text = "1";
  noise.txtStartmod6.text = "1";
  noise.txtStartmod7.text = "1";
  noise.txtStartmod8.text = "1";
  noise.txtStartmod9.text = "0.7";
  noise.txtStartmod10.text = "2";
  noise.txtStartmod11.text = "1 12";
  noise.txtStartmod12.text = "0.3 0.25";
  table.SetRow(0, BuildNoiseRow(noise, "SALES", 2));
  InputmodPage input;
  SetInputDefaults(input);
  input.series_name = "PRICE1";
  input.txtInputmod5.text = "1";
  input.txtInputmod7.text = "1";
  input.txtInputmod8.text = "1";
  input.txtInputmod9.text = "0.5";
  input.txtInputmod3.text = "1";
  input.txtInputmod4.text = "1";
  table.SetRow(1, BuildInputRow(input));
  ASSERT_TRUE(WriteModelFile(File("STARTMOD.123"), table, 2));
  std::string text = Read("STARTMOD.123");
  EXPECT_EQ(text.substr(0, 43), "SALES                                   2\r\n");

  ModelTable back;
  EXPECT_EQ(ReadModelFile(File("STARTMOD.123"), back), 2);
  EXPECT_EQ(back.Row(0), table.Row(0));
  EXPECT_EQ(back.Row(1), table.Row(1));

  StartmodPage shown;
  FillNoisePage(back.Row(0), shown);
  EXPECT_EQ(shown.txtStartmod1.text, "25.5");
  EXPECT_EQ(shown.txtStartmod2.text, ".50");
  EXPECT_EQ(shown.txtStartmod5.text, "1");
  EXPECT_EQ(shown.txtStartmod6.text, "1");
  EXPECT_EQ(shown.txtStartmod11.text, "1 12");
  EXPECT_EQ(shown.txtStartmod12.text, "0.3 0.25");
  EXPECT_EQ(shown.txtStartmod4.text, "");
  InputmodPage in;
  FillInputPage(back.Row(1), in);
  EXPECT_EQ(in.txtInputmod2.text, "1.00");
  EXPECT_EQ(in.txtInputmod4.text, "1");
  EXPECT_EQ(in.txtInputmod9.text, "0.5");
  EXPECT_EQ(in.txtInputmod11.text, "0");
  EXPECT_EQ(in.txtInputmod12.text, "1.0");
}

// The wizard reads a saved model through the engine's reader: a file the engine would refuse
// leaves no model behind, so the pages start from a new one.
TEST_F(ModelFiles, FilesTheEngineRefusesAreNotReadAndLeaveNoModel) {
  const std::string head = "SALES                                   1\r\n";
  const std::string noise = "     0\r\n        1.00         0.0\r\n";
  struct Case { const char* why; std::string text; };
  const Case cases[] = {
      {"cells that are no model", head + "     1\r\n     2\r\n     3\r\n     X\r\n"},
      {"a count the blocks deny", "SALES                                   2\r\n" + noise + "     0     0     0\r\n"},
      {"a coefficient that is no number",
       head + noise + "     1     0     0\r\n     1\r\n     1\r\n         abc\r\n"},
      {"a name that runs into the count", std::string(40, 'N') + "1\r\n" + noise + "     0     0     0\r\n"},
  };
  for (const Case& c : cases) {
    WriteFile(File("STARTMOD.123"), c.text);
    ModelTable t;
    t.SetRow(0, {"OLD                                     1"});
    EXPECT_EQ(ReadModelFile(File("STARTMOD.123"), t), std::nullopt) << c.why;
    EXPECT_TRUE(t.Empty()) << c.why;
  }
  WriteFile(File("STARTMOD.123"), head + noise + "     0     0     0\r\n");
  ModelTable t;
  EXPECT_EQ(ReadModelFile(File("STARTMOD.123"), t), 1);
  EXPECT_EQ(t.Row(0).size(), 4u);
}

TEST(ModelPages, BlankFieldsFallBackToTheirDefaults) {
  StartmodPage p;
  FillNoisePage({"SALES                                   1", "     0", "", "     0     0     0"}, p);
  EXPECT_EQ(p.txtStartmod1.text, "");
  EXPECT_EQ(p.txtStartmod2.text, "1.00");
  EXPECT_EQ(p.txtStartmod3.text, "0");
  InputmodPage in;
  FillInputPage({"PRICE"}, in);
  EXPECT_EQ(in.txtInputmod2.text, "1.0");
  EXPECT_EQ(in.txtInputmod6.text, "1");
  EXPECT_EQ(in.txtInputmod10.text, "1");
}

// Counts in a model file come from anywhere: negative, huge or beyond a double, they fill
// the pages with what the lines hold and never allocate without end.
TEST(ModelPages, CountsOutOfRangeReadOnlyWhatTheLinesHold) {
  for (const char* counts : {"    -1     0     1", "     1     0    -1", "    -3     0     5",
                             "9e9999     0     1", "2000000000     02000000000"}) {
    SCOPED_TRACE(counts);
    StartmodPage p;
    FillNoisePage({"SALES                                   1", "     0", "", counts, "     1     1",
                   "     1     2", "        0.50       -0.25"},
                  p);
    EXPECT_LE(p.txtStartmod7.text.size() + p.txtStartmod10.text.size(), 13u);
    EXPECT_LE(p.txtStartmod9.text.size() + p.txtStartmod12.text.size(), 25u);
    InputmodPage in;
    FillInputPage({"PRICE", "", counts, "     1     1", "     1     2", "        0.50       -0.25"}, in);
    EXPECT_LE(in.txtInputmod7.text.size() + in.txtInputmod10.text.size(), 13u);
  }
}

}  // namespace
}  // namespace tessaly::rules::testing
