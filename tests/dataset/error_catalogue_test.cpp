#include "dataset/error_catalogue.h"

#include <gtest/gtest.h>

#include "dataset/process_errors.h"
#include "support/program_folder.h"

namespace tessaly::dataset {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::SourcePath;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

TEST(ReportXml, IsWrittenLineByLineExactlyAsTheCatalogueStands) {
  TempDir out;
  WriteFile(out / "REPORT.XML", "<stale/>");  // an existing file of any case is replaced
  std::vector<std::string> logged;
  ASSERT_TRUE(CreateREPORTXML(out.path(), [&](const std::string& l) { logged.push_back(l); }));
  EXPECT_FALSE(fs::exists(out / "REPORT.XML"));
  EXPECT_EQ(ReadFile(out / "report.xml"),
            ReadFile(SourcePath("tests/dataset/data/catalogue/report.xml")));
  // One log line per row; the row 5024 is logged as code "50240", as earlier versions log it.
  ASSERT_EQ(logged.size(), EngineCatalogue().size() + AscCatalogue().size());
  EXPECT_EQ(logged.front(), " code=\"1\">");
  EXPECT_NE(std::find(logged.begin(), logged.end(), " code=\"50240\">"), logged.end());
  EXPECT_EQ(std::find(logged.begin(), logged.end(), " code=\"5024\">"), logged.end());
}

struct Lookup {
  long code;
  bool found;
  const char* text;
};

TEST(ReportXml, CodesAreFoundOnlyInTheirOwnChild) {
  // Every text stands in the catalogue file checked above; these show the lookup reads it.
  TempDir out;  // no report.xml yet: it is written before it is used
  const Lookup cases[] = {
      {5000, true, "ASC file not found!"},
      {21, true, "User terminated the process."},
      {36, true, "IN RMPDIV REPORT THIS ERROR TO QVX"},
      {2015, true, " ERR READ ENGINE.QVX MAXIMUM LEAD FOR SERIES NAMED MOVE+ ADVISE QVX"},
      {5016, true,
       "Invalid value given for number of future values (line 9 in ASC file).  The range is from "
       "0 and 1500.  Please change this to the correct value before running again."},
      {2, false, nullptr},
      {4999, false, nullptr},
      {5026, false, nullptr},
      {99999, false, nullptr},
  };
  for (const Lookup& c : cases) {
    CodeLookup got = LookUpErrorCode(c.code, out.path());
    EXPECT_EQ(got.found, c.found) << c.code;
    if (c.found) {
      EXPECT_EQ(got.text, c.text) << c.code;
    } else {
      EXPECT_EQ(got.text, "Error number " + std::to_string(c.code) +
                              " occured.  This error was not found in your \"report.xml\", making "
                              "it potentially outdated.  Please contact QVX for details.");
    }
  }
  EXPECT_EQ(LookUpErrorCode(5024, out.path()).text, Row5024Text());
  EXPECT_NE(Row5024Text().find("spaces(         ); periods"), std::string::npos);
}

TEST(ReportXml, AnOlderFileIsUsedAsItStandsAndOnlyOneChildIsSearched) {
  TempDir out;
  // Code 7 only among the dataset codes, 5001 only among the engine's.
  WriteFile(out / "report.xml",
            "<report>\r\n<engine>\r\n<error code=\"5001\">misplaced</error>\r\n</engine>\r\n"
            "<asc>\r\n<error code=\"7\">misplaced too</error>\r\n<error code=\"5003\">old text "
            "for 5003</error>\r\n</asc>\r\n</report>\r\n");
  EXPECT_FALSE(LookUpErrorCode(5001, out.path()).found);
  EXPECT_FALSE(LookUpErrorCode(7, out.path()).found);
  EXPECT_EQ(LookUpErrorCode(5003, out.path()).text, "old text for 5003");
  // A file that is no longer XML gives the not-found sentence, not a failure.
  WriteFile(out / "report.xml", "<report><engine>");
  EXPECT_FALSE(LookUpErrorCode(21, out.path()).found);
}

TEST(ErrorReport, WritesThePageAndTwoLinesInTheLog) {
  TempDir out, program;
  ProcessErrorsLog log(program.path());
  WriteFile(out / "ABCERR.HTML", "old page");
  WriteErrorReport(2155, "abc.asc", out.path(), log);
  EXPECT_FALSE(fs::exists(out / "ABCERR.HTML"));
  EXPECT_EQ(ReadFile(out / "abcerr.html"),
            "<html><title>abc.asc error report</title>\r\n"
            "<center><h1><u>Error Report for abc.asc</u></h1><br><br>\r\n"
            " TESSALY HAS IDENTIFIED A LINEAR REDUNDANCY. DELETE REDUNDANT VARIABLES.\r\n"
            "</center></html>\r\n");
  // The stem drops ".asc" in any case; a code not in the catalogue still gets its page.
  WriteErrorReport(3000, "Stores.ASC", out.path(), log);
  EXPECT_NE(ReadFile(out / "Storeserr.html").find("Error number 3000 occured."), std::string::npos);
  EXPECT_EQ(ReadFile(program / "Process Errors.Err"),
            "abc.asc\r\n TESSALY HAS IDENTIFIED A LINEAR REDUNDANCY. DELETE REDUNDANT "
            "VARIABLES.\r\nStores.ASC\r\nError number 3000 occured.  This error was not found in "
            "your \"report.xml\", making it potentially outdated.  Please contact QVX for "
            "details.\r\n");
  log.DeleteBoth();
  EXPECT_FALSE(log.Exists());

  // A missing output folder is made, with report.xml written before the lookup.
  WriteErrorReport(21, "late.asc", out / "OUTPUT", log);
  EXPECT_TRUE(fs::exists(out / "OUTPUT" / "report.xml"));
  EXPECT_NE(ReadFile(out / "OUTPUT" / "lateerr.html").find("User terminated the process."),
            std::string::npos);
}

}  // namespace
}  // namespace tessaly::dataset
