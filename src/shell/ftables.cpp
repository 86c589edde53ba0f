#include "shell/ftables.h"

#include <boost/math/distributions/fisher_f.hpp>
#include <cstdio>

#include "platform/textfile.h"

namespace tessaly::shell {

double FCritical05(int numerator_df, int denominator_df) {
  boost::math::fisher_f_distribution<double> f(numerator_df, denominator_df);
  return boost::math::quantile(boost::math::complement(f, 0.05));
}

namespace {
std::string Fixed(double v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, v >= 100 ? "%.1f" : "%.2f", v);
  return buf;
}
}  // namespace

std::string FTableHtml(int max_numerator, int max_denominator, const std::string& title) {
  std::string h;
  h += "<!DOCTYPE html>\r\n<html>\r\n<head>\r\n<meta charset=\"utf-8\">\r\n";
  h += "<title>" + title + "</title>\r\n";
  h += "<style>\r\n"
       "body { font-family: sans-serif; margin: 1.5em; color: #222; }\r\n"
       "h1 { font-size: 1.3em; }\r\n"
       "p { max-width: 48em; }\r\n"
       "table { border-collapse: collapse; font-size: 0.85em; }\r\n"
       "th, td { border: 1px solid #bbb; padding: 2px 6px; text-align: right; }\r\n"
       "thead th { background: #e8eef5; position: sticky; top: 0; }\r\n"
       "tbody th { background: #f3f3f3; }\r\n"
       "tbody tr:nth-child(5n) td { border-bottom: 2px solid #888; }\r\n"
       "</style>\r\n</head>\r\n<body>\r\n";
  h += "<h1>" + title + "</h1>\r\n";
  h += "<p>Upper 5% critical values of the F distribution, F(0.05; df1, df2). Columns: "
       "numerator degrees of freedom df1 (1 to " + std::to_string(max_numerator) +
       "); rows: denominator degrees of freedom df2 (1 to " + std::to_string(max_denominator) +
       "). A computed f-Test larger than the value at (df1, df2) is significant at the 5% level: "
       "the series should not be pooled.</p>\r\n";
  h += "<table>\r\n<thead>\r\n<tr><th>df2 \\ df1</th>";
  for (int n = 1; n <= max_numerator; ++n) h += "<th>" + std::to_string(n) + "</th>";
  h += "</tr>\r\n</thead>\r\n<tbody>\r\n";
  for (int d = 1; d <= max_denominator; ++d) {
    h += "<tr><th>" + std::to_string(d) + "</th>";
    for (int n = 1; n <= max_numerator; ++n) h += "<td>" + Fixed(FCritical05(n, d)) + "</td>";
    h += "</tr>\r\n";
  }
  h += "</tbody>\r\n</table>\r\n</body>\r\n</html>\r\n";
  return h;
}

bool LoadFTable1Link(const std::filesystem::path& program_folder) {
  return platform::WriteWholeFile(
      program_folder / "FTable1.html",
      FTableHtml(10, 100, "F Table 1: 5% critical values, 10 numerator and 100 denominator "
                          "degrees of freedom"));
}

bool LoadFTable2link(const std::filesystem::path& program_folder) {
  return platform::WriteWholeFile(
      program_folder / "FTable2.html",
      FTableHtml(20, 200, "F Table 2: 5% critical values, 20 numerator and 200 denominator "
                          "degrees of freedom"));
}

}  // namespace tessaly::shell
