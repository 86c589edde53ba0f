#pragma once
// Requests and model results built by hand for the engine process's tests.
#include <filesystem>
#include <string>
#include <vector>

#include "engine/exchange.h"
#include "engine/model.h"

namespace quorvane::testdata {

// A file of the source tree by its path from the top ("resources/program/ENGINE.CND").
std::filesystem::path RepoPath(const std::string& relative);

// The shipped rules file (ENGINE.CND), and a rules text with the value of the line holding
// each key replaced (everything after its bar), as the wizard writes it.
std::string ShippedRules();
std::string RulesWith(std::string text, const std::vector<std::pair<std::string, std::string>>& values);

// The monthly airline passenger totals, 1949/1 to 1960/12.
const std::vector<double>& AirlinePassengers();

// A request of one monthly series (objective 0), `retained` of its last values held out,
// `forecasts` asked for.
EngineArrays MonthlyRequest(const std::vector<double>& y, int forecasts, int retained = 0,
                            const std::string& name = "PASSENGERS");

// A request of the series with two inputs: ADVERT (type 1, with future values) and PRICE
// (type 0), the output SALES last.
EngineArrays CausalRequest(int observations, int future, int forecasts);

// A finished model for a series of n observations (estimation sample), h forecasts: an
// AR(1) with a constant and one seasonal MA term, a level shift at observation 30 and a
// pulse at the last observation, the first `left_out` observations not modelled.
ModelResult KnownResult(int n, int h, int left_out = 0);

}  // namespace quorvane::testdata
