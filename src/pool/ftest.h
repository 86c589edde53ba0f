#pragma once
// The F-test of poolability: the error sum of squares of the pooled fit against the sum of
// those of the series fitted one by one, written as the plain-text report
// <batch>ANALYSIS.TXT. The person reads the figure against the F-table pages; the p-value
// of the same statistic is worked out as well for the headless command.
#include <optional>
#include <string>
#include <vector>

namespace tessaly::pool {

// What the run kept: entries 0..K-1 the series in list order, entry K the stack. A pass
// that did not finish leaves its name empty and its error sum 0.
struct PoolabilityInputs {
  std::vector<std::string> series_name;  // K + 1 names
  std::vector<double> series_error;      // K + 1 error sums of squares (Doubles20 element 9)
  double total_observations = 0;         // DataProp(5) of the stack
  double numpar = 0;                     // Doubles20 element 11 after the stack's pass
  int K() const { return static_cast<int>(series_name.size()) - 1; }
};

struct Poolability {
  double sosa = 0, sosb = 0, sosc = 0;
  double n = 0;
  int k = 0;
  double numpar = 0;
  double denominator_df = 0;
  double ms1 = 0;   // 0 when SOSC is zero or negative
  double ms2 = 0;   // 0 when the denominator's degrees of freedom are zero
  double f = 0;     // 0 when SOSC is zero or negative
  // The chance of an F this large or larger under one set of parameters for all series, on
  // K and DenominatorDF degrees of freedom; none when the test has no such distribution.
  std::optional<double> p_value;
};

Poolability ComputePoolability(const PoolabilityInputs& in);

// The lines of the report, in order (a name too long for its padding leaves its line out).
std::vector<std::string> AnalysisLines(const PoolabilityInputs& in, const Poolability& result);

// "<batch>ANALYSIS.TXT": the project's BatchName less its last four characters.
std::string AnalysisFileName(const std::string& batch_name);

}  // namespace tessaly::pool
