#pragma once
// Series kept with the tests (tests/engine/model/reference/series) and small generators.
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "engine/model.h"

namespace quorvane::testdata {

// One value per line; lines that do not start with a number are skipped.
std::vector<double> LoadSeries(const std::string& name);

// The kept reference values (tests/engine/model/reference/<name>): the rows after the
// header that have `fields` cells, split at the commas.
std::vector<std::vector<std::string>> ReferenceRows(const std::string& name, size_t fields);
std::vector<std::string> Split(const std::string& text, char sep);
// "name=value;name=value" as a map.
std::map<std::string, double> NamedValues(const std::string& text);

// A problem of one series: its name, values, seasonality, forecasts and first year.
ModelingProblem Problem(const std::string& name, std::vector<double> y, int seasonality, int horizon,
                        int begin_year = 0);

// The coefficient of a result by its term ("AR(1)", "LEVEL SHIFT 1899"), or null.
const Coefficient* FindTerm(const ModelResult& r, const std::string& term);

// Gaussian ARMA(1,1) noise with the given coefficients, reproducible from the seed.
std::vector<double> SimulateArma11(int n, double phi, double theta, double sigma, uint32_t seed);

}  // namespace quorvane::testdata
