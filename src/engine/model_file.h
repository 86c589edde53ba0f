#pragma once
// The model file (STARTMOD.123, PASS2MOD.123, <series>.MOD): one block per series, the
// output series' noise model first, then each input's transfer function. Integers are
// six columns wide, reals twelve, right-justified; numbers in the lists are cut to eight
// characters. A block begins with a line whose first column is not blank.
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "engine/model.h"

namespace quorvane {

// One polynomial: the back-order powers of its terms and their coefficients.
struct Polynomial {
  std::vector<int> powers;
  std::vector<double> coefficients;
};

// One block of the file. For the noise block `first` are the AR polynomials and `second`
// the MA ones; for an input block, the denominator and the numerator polynomials.
struct ModelBlock {
  std::string name;
  bool has_constant = false;  // noise block only
  double constant = 0.0;
  double lambda = 1.0;
  std::vector<int> differencing;  // back-order power of each differencing operator
  std::vector<Polynomial> first;
  std::vector<Polynomial> second;
};

struct ModelFile {
  int series = 1;  // count on the first line: blocks in the model
  std::vector<ModelBlock> blocks;
};

// The lines of a model file (without line ends).
std::vector<std::string> FormatModelFile(const ModelFile& model);

// Parses the lines of a model file; nullopt when they do not follow the layout.
std::optional<ModelFile> ParseModelFile(const std::vector<std::string>& lines);

// The final model of a run in the file's layout: the noise model of the output series
// (constant, lambda, regular and seasonal differencing, AR and MA polynomials) and one
// block for each input left in the model.
ModelFile ModelFileFromResult(const ModelResult& result, const std::string& output_name,
                              const std::vector<std::string>& input_names, bool difference_inputs);

// Writes the file with CR LF line ends.
bool WriteModelFile(const std::filesystem::path& path, const ModelFile& model);

}  // namespace quorvane
