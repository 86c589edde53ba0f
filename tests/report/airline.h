#pragma once
// The airline passengers of 1949 to 1960 (thousands, monthly), with a fit and forecast
// worked out simply: a seasonal random walk with drift on the logarithms. The fit starts
// a year late, as a real model's does, and the limits widen with the horizon.
#include "report/graph_plan.h"

namespace tessaly::testing {

report::GraphInput AirlineInput(int horizon = 24);

}  // namespace tessaly::testing
