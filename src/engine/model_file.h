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

// Polynomial and ModelBlock (one block of the file) are declared with the modelling
// problem in engine/model.h, since the user's model travels to the core in that form.

struct ModelFile {
  int series = 1;  // count on the first line: blocks in the model
  std::vector<ModelBlock> blocks;
};

// The lines of a model file (without line ends).
std::vector<std::string> FormatModelFile(const ModelFile& model);

// Parses the lines of a model file; nullopt when they do not follow the layout.
[[nodiscard]] std::optional<ModelFile> ParseModelFile(const std::vector<std::string>& lines);

// The final model of a run in the file's layout: the noise model of the output series
// (constant, lambda, regular and seasonal differencing, AR and MA polynomials) and one
// block for each input left in the model.
ModelFile ModelFileFromResult(const ModelResult& result, const std::string& output_name,
                              const std::vector<std::string>& input_names, bool difference_inputs);

// Writes the file with CR LF line ends.
[[nodiscard]] bool WriteModelFile(const std::filesystem::path& path, const ModelFile& model);

}  // namespace quorvane
