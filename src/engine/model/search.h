#pragma once
// Stepwise search of ARMA orders by AICc for fixed differencing: start from a few small
// models and move to the best neighbour (one order up or down, p and q together, P and Q
// together, constant in or out) until no neighbour improves.
#include <functional>
#include <string>
#include <vector>

#include "engine/model/estimate.h"

namespace quorvane {

struct SearchOptions {
  int max_p = 5, max_q = 5, max_P = 2, max_Q = 2;
  int max_order = 5;          // p + q + P + Q
  bool allow_constant = true; // only when d + D <= 1
  int max_models = 94;
  ConvergenceCriteria criteria;
};

struct SearchStep {
  std::string model;
  double aicc = 0.0;
  bool usable = false;        // fitted, and no root near the unit circle
};

// The best model, ok false when no candidate could be fitted. Seasonal orders are capped at
// a third of the cycles left after differencing.
ArimaFit StepwiseSearch(const std::vector<double>& z, int d, int D, int period, const SearchOptions& options,
                        std::vector<SearchStep>* trail);

// The walk of the search over any estimator: `fit` estimates one candidate (with the
// quick criteria of the search, from the best model's coefficients when there is one),
// `seen` (optional) hears of each candidate fitted and whether it counts. `limits` holds
// every cap on the orders, seasonal ones included. The best fit, ok false when no candidate
// could be fitted.
using CandidateFit =
    std::function<ArimaFit(const ArimaSpec& orders, const ConvergenceCriteria& quick, const ArmaCoefficients* start)>;
using CandidateSeen = std::function<void(const ArimaSpec& orders, const ArimaFit& fit, bool usable)>;
ArimaFit StepwiseWalk(int d, int D, int period, const SearchOptions& limits, const CandidateFit& fit,
                      const CandidateSeen& seen);

// True when the fitted AR and MA polynomials keep their roots clear of the unit circle
// (modulus at least 1.01), the condition for a candidate to count in the search.
bool RootsClearOfUnitCircle(const ArimaFit& fit);

}  // namespace quorvane
