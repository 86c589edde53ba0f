// The generator from outside: `tsly add-series` as a script calls it, and a generated level
// shift carried through the real engine into the model it reports.
#include <gtest/gtest.h>

#include <cmath>

#include "genseries/gen_fixture.h"
#include "platform/textfile.h"

namespace tessaly::genseries::test {
namespace {

class AddSeriesCli : public GenTest {
 protected:
  int Tsly(const std::string& words, std::string* output) {
    return tessaly::testing::RunCommand("cd '" + dir.path().string() + "' && '" +
                                            program.Executable("tsly").string() + "' " + words + " 2>&1",
                                        output);
  }
  testing::ProgramFolderCopy program;
};

TEST_F(AddSeriesCli, AddsToEachFileAndSaysWhatHappened) {
  std::string out;
  EXPECT_EQ(Tsly("add-series --help", &out), 0);
  EXPECT_EQ(out.rfind("usage: tsly add-series VARIABLES.his FILE.ASC [FILE.ASC ...] [--out DIR]", 0), 0u) << out;
  EXPECT_EQ(Tsly("--help", &out), 0);
  EXPECT_NE(out.find("  add-series "), std::string::npos) << out;
  EXPECT_EQ(Tsly("add-series rwf.his", &out), 2);
  EXPECT_EQ(Tsly("add-series rwf.his A.ASC --out", &out), 2);
  EXPECT_EQ(Tsly("add-series missing.his A.ASC", &out), 2);

  AscLayout good{{"PRICE", "SALES"}, {1, 0}, 12, 2000, 1, 48, 12, 0, 12};
  AscLayout retained{{"SALES"}, {0}, 12, 2000, 1, 48, 0, 4, 12};
  Asc("A.ASC", good);
  Asc("B.ASC", retained);
  const std::string b_before = *platform::ReadWholeFile(dir / "B.ASC");
  GenerationVariables v = VarsFor(good);
  v.LevelStartYear = "2002", v.LevelStartPeriod = "7", v.LevelEndYear = "2004", v.LevelEndPeriod = "12";
  ASSERT_TRUE(BuildXML(dir / "rwf.his", v, "", "", program.path()));

  EXPECT_EQ(Tsly("add-series rwf.his A.ASC --out adjusted", &out), 0) << out;
  EXPECT_EQ(out, "A.ASC: adjusted -> adjusted/A.ASC\n");
  EXPECT_EQ(ReadAsc(dir / "A.ASC").series, 2);  // the original stays
  EXPECT_EQ(ReadAsc(dir / "adjusted" / "A.ASC").names,
            (std::vector<std::string>{"PRICE", "IIL00031SALES", "SALES"}));

  EXPECT_EQ(Tsly("add-series rwf.his A.ASC B.ASC NONE.ASC", &out), 1) << out;
  EXPECT_EQ(out, "A.ASC: adjusted\nB.ASC: refused\n  The dataset contains Retained Data. Therefore, no "
                 "series may be added.\nNONE.ASC: refused\n  the file does not exist.\n");
  EXPECT_EQ(ReadAsc(dir / "A.ASC").series, 3);
  EXPECT_EQ(*platform::ReadWholeFile(dir / "B.ASC"), b_before);

  // A second run finds the level it would add already there.
  EXPECT_EQ(Tsly("add-series rwf.his A.ASC", &out), 1);
  EXPECT_NE(out.find("The indicated Level series name IIL00031SALES is a duplicate"), std::string::npos) << out;

  // A variables file cut short: the parser's reason, status 2, no dataset touched.
  std::string his = *platform::ReadWholeFile(dir / "rwf.his");
  EXPECT_TRUE(platform::WriteWholeFile(dir / "rwf.his", his.substr(0, 300)));
  const std::string a_before = *platform::ReadWholeFile(dir / "A.ASC");
  EXPECT_EQ(Tsly("add-series rwf.his A.ASC", &out), 2);
  EXPECT_EQ(out.rfind("Tessaly: You have error ", 0), 0u) << out;
  EXPECT_EQ(*platform::ReadWholeFile(dir / "A.ASC"), a_before);
}

// A monthly series with a step of +40 at January 2005, otherwise noise around 100; the
// generated level shift is an input the engine keeps in its model.
TEST_F(AddSeriesCli, TheEngineKeepsAGeneratedLevelShiftInItsModel) {
  std::vector<std::string> lines = {"0", "0", "0", "1", "12", "2000", "1", "120", "0", "0", "12", "SALES", "0"};
  unsigned seed = 12345;
  for (int t = 0; t < 120; ++t) {
    seed = seed * 1103515245u + 12345u;
    double noise = ((seed >> 16) % 1000) / 1000.0 * 4 - 2;
    lines.push_back(std::to_string(100 + (t >= 60 ? 40 : 0) + noise + 2 * std::sin(t)));
  }
  ASSERT_TRUE(platform::WriteAllLines(dir / "SALES.ASC", lines));
  AscLayout shape{{"SALES"}, {0}, 12, 2000, 1, 120, 0, 0, 12};
  GenerationVariables v = VarsFor(shape);
  v.LevelStartYear = "2005", v.LevelStartPeriod = "1", v.LevelEndYear = "2010", v.LevelEndPeriod = "12";
  std::string out;
  ASSERT_TRUE(BuildXML(dir / "rwf.his", v, "", "", program.path()));
  ASSERT_EQ(Tsly("add-series rwf.his SALES.ASC", &out), 0) << out;
  AscRead adjusted = ReadAsc(dir / "SALES.ASC");
  ASSERT_EQ(adjusted.names, (std::vector<std::string>{"IIL00061SALES", "SALES"}));
  EXPECT_EQ(adjusted.fut["IIL00061SALES"], std::vector<double>(12, 1.0));

  ASSERT_EQ(tessaly::testing::RunCommand("cd '" + program.path().string() + "' && ./qvxengine --asc '" +
                                             (dir / "SALES.ASC").string() + "' --out '" +
                                             (dir / "out").string() + "' 2>&1",
                                         &out),
            0)
      << out;
  auto equation = platform::ReadWholeFile(dir / "out" / "EQUATION.TXT");
  auto rhside = platform::ReadWholeFile(dir / "out" / "RHSIDE.TXT");
  ASSERT_TRUE(equation && rhside) << out;
  EXPECT_NE(equation->find("IIL00061SALES"), std::string::npos) << *equation;
  EXPECT_NE(rhside->find("IIL00061SALES"), std::string::npos) << *rhside;
  // The step's size is found: the coefficient of the input lies near the +40 put in.
  const std::string term = "IIL00061SALES LAG 0";
  const size_t at = rhside->find(term);
  ASSERT_NE(at, std::string::npos);
  const double coefficient = std::stod(rhside->substr(at + term.size()));
  EXPECT_NEAR(coefficient, 40.0, 2.0) << *rhside;
}

}  // namespace
}  // namespace tessaly::genseries::test
