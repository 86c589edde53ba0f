#include "aggregate/captions.h"

namespace tessaly::aggregate {

std::string StageCaption(const std::string& stage, bool mixed_frequency, bool bottom_up) {
  return std::string("AGGREGATION - ") + (mixed_frequency ? "MIXED FREQUENCY - " : "") + stage +
         (bottom_up ? " - Reconcile Bottom to Top" : " - Reconcile Top to Bottom");
}

std::string status::Opened(const std::string& in_directory, const std::string& batch_name) {
  return "AGGREGATION - File " + in_directory + batch_name + " opened.";
}

}  // namespace tessaly::aggregate
