#pragma once
// Series kept with the tests (tests/engine/model/reference/series) and small generators.
#include <cstdint>
#include <string>
#include <vector>

namespace quorvane::testdata {

// One value per line; lines that do not start with a number are skipped.
std::vector<double> LoadSeries(const std::string& name);

// Gaussian ARMA(1,1) noise with the given coefficients, reproducible from the seed.
std::vector<double> SimulateArma11(int n, double phi, double theta, double sigma, uint32_t seed);

}  // namespace quorvane::testdata
