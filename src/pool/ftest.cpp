#include "pool/ftest.h"

#include <boost/math/distributions/fisher_f.hpp>

#include "platform/numfmt.h"

namespace tessaly::pool {

namespace {

std::string Blanks(int n) { return std::string(static_cast<size_t>(n), ' '); }
std::string Num(double v) { return platform::NumberToText(v); }

}  // namespace

Poolability ComputePoolability(const PoolabilityInputs& in) {
  Poolability r;
  r.k = in.K();
  for (int i = 0; i < r.k; ++i) r.sosa += in.series_error[i];
  r.sosb = in.series_error[r.k];
  r.sosc = r.sosb - r.sosa;
  r.numpar = in.numpar;
  r.n = r.k > 0 ? in.total_observations / r.k : 0;
  r.denominator_df = in.total_observations - r.k * in.numpar;
  if (r.sosc > 0) r.ms1 = r.sosc / r.k;
  // A denominator without degrees of freedom leaves MS2 as it was.
  if (r.denominator_df != 0) r.ms2 = r.sosa / r.denominator_df;
  if (r.sosc > 0 && r.ms2 != 0) r.f = r.ms1 / r.ms2;
  if (r.sosc > 0 && r.ms2 > 0 && r.k > 0 && r.denominator_df > 0) {
    boost::math::fisher_f distribution(r.k, r.denominator_df);
    r.p_value = boost::math::cdf(boost::math::complement(distribution, r.f));
  }
  return r;
}

std::vector<std::string> AnalysisLines(const PoolabilityInputs& in, const Poolability& r) {
  std::vector<std::string> out{"Calculation of f-Test", "", "", "Error/Residual Sum of Squares", ""};
  for (int i = 0; i < r.k; ++i) {
    int pad = 30 - static_cast<int>(in.series_name[i].size()) + 25;
    if (pad < 0) continue;
    out.push_back(Blanks(5) + in.series_name[i] + Blanks(pad) + Num(in.series_error[i]));
  }
  auto gap = [&](int lines) { out.insert(out.end(), lines, ""); };
  gap(2);
  out.push_back(Blanks(5) + "Total(SOSA)" + Blanks(44) + Num(r.sosa));
  gap(2);
  out.push_back(Blanks(5) + in.series_name[r.k] + "(SOSB)" + Blanks(36) + Num(r.sosb));
  gap(2);
  out.push_back("Differential(SOSC) = SOSB-SOSA" + Blanks(30) + Num(r.sosc));
  gap(1);
  out.push_back("N (NOB in each series)" + Blanks(38) + Num(r.n));
  gap(1);
  out.push_back("K(Number of series in group)" + Blanks(32) + std::to_string(r.k));
  gap(1);
  out.push_back("NUMPAR(parameters in Model)" + Blanks(33) + Num(r.numpar));
  gap(1);
  out.push_back("MS1(SOSC/K)" + Blanks(49) + (r.sosc > 0 ? Num(r.ms1) : "0"));
  gap(1);
  out.push_back("MS2(SOSA/(N*K - K*NUMPAR))" + Blanks(34) + Num(r.ms2));
  gap(1);
  out.push_back("f - Test(MS1/MS2)" + Blanks(43) + (r.sosc > 0 ? Num(r.f) : "0"));
  gap(1);
  out.push_back("With Degrees of Freedom(K, (N*K - K*NUMPAR))" + Blanks(16) + "(" + std::to_string(r.k) +
                ", " + Num(r.denominator_df) + ")");
  gap(1);
  out.push_back("Refer to a F - Table* to determine significance");
  gap(1);
  out.push_back("* FTable1 (Maximum of 10 Numerators and 100 Denomintors Degrees of Freedom)");
  out.push_back("* FTable2 (Maximum of 20 Numerators and 200 Denomintors Degrees of Freedom)");
  return out;
}

std::string AnalysisFileName(const std::string& batch_name) {
  std::string stem = batch_name.size() > 4 ? batch_name.substr(0, batch_name.size() - 4) : std::string();
  return stem + "ANALYSIS.TXT";
}

}  // namespace tessaly::pool
