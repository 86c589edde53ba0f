#pragma once
// Period arithmetic of a dataset: the n-th period after the beginning, and its label.
#include <string>

namespace quorvane {

struct PeriodOf {
  int major = 0;  // year or major period
  int minor = 0;  // period within it; 0 for seasonality 1
};

// The period `index` steps (0-based) after (begin_year, begin_period), wrapping the minor
// period at the seasonality.
PeriodOf PeriodAt(int begin_year, int begin_period, int seasonality, int index);

// "1949/3", or "1949" for seasonality 1.
std::string PeriodLabel(const PeriodOf& period, int seasonality);
std::string PeriodLabel(int begin_year, int begin_period, int seasonality, int index);

}  // namespace quorvane
