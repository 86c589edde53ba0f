#include "engine/periods.h"

namespace quorvane {

PeriodOf PeriodAt(int begin_year, int begin_period, int seasonality, int index) {
  if (seasonality <= 1) return {begin_year + index, 0};
  int first = begin_period < 1 ? 0 : begin_period - 1;
  int offset = first + index;
  return {begin_year + offset / seasonality, offset % seasonality + 1};
}

std::string PeriodLabel(const PeriodOf& period, int seasonality) {
  if (seasonality <= 1) return std::to_string(period.major);
  return std::to_string(period.major) + "/" + std::to_string(period.minor);
}

std::string PeriodLabel(int begin_year, int begin_period, int seasonality, int index) {
  return PeriodLabel(PeriodAt(begin_year, begin_period, seasonality, index), seasonality);
}

}  // namespace quorvane
