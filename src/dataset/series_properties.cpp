#include "dataset/series_properties.h"

namespace tessaly::dataset {

void clSeriesProperties::DecideLargeEngine() {
  int size = number_of_series_ + 5 + seasonality_;
  bool calendar = seasonality_ == 5 || seasonality_ == 7 || seasonality_ == 52;
  large_engine_ = !(size < 31 && number_of_observations_ < 1001 && !calendar);
}

}  // namespace tessaly::dataset
