#pragma once
// One engine call: the request arrays in, the working folder's rules and control files
// read, the modelling core run stage by stage (STAGE1.123 to STAGE4.123 kept in the
// folder, KILLQUOR.QVX looked for between stages), the arrays filled and every report
// file written.
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "engine/exchange.h"
#include "engine/model.h"

namespace quorvane {

// The modelling core as the run calls it (FitAndForecast, or a stand-in in tests).
using Fitter = std::function<ModelResult(const ModelingProblem&, const StageCallback&)>;

struct RunSummary {
  int16_t error_code = 0;
  std::string series;                      // the output series
  std::string model;                       // the model's short name
  int forecasts = 0;                       // forecasts returned
  std::vector<std::string> messages;       // warnings and notes, as returned
};

// Error codes of faults inside the core, by the stage it was in.
constexpr int16_t kFaultInIdentification = 1;   // "A stop in BJUID ..."
constexpr int16_t kFaultInEstimation = 3;       // "A stop in BJEST GM EST ..."
constexpr int16_t kFaultInDiagnosis = 9;        // "A stop in BJFOR ..."
constexpr int16_t kErrorOpeningFiles = 2128;    // a report file could not be written
constexpr int16_t kStartModelMalformed = 2190;
constexpr int16_t kStartModelMissing = 2208;
constexpr int16_t kSeasonalPresetInvalid = 2163;
constexpr int16_t kRegressionPresetNeedsInputs = 2164;

// The stage files.
std::string StageFileName(Stage stage);
// Keeps the file of `stage` in the folder, removing any other stage file.
void MarkStage(const std::filesystem::path& folder, Stage stage);
// Removes every stage file.
void ClearStages(const std::filesystem::path& folder);
// True when KILLQUOR.QVX is in the folder; it is deleted then.
bool TakeKillRequest(const std::filesystem::path& folder);

// The per-dataset files of the engine (removed at the start of a call, so that a failed
// call never leaves the reports of the dataset before it).
const std::vector<std::string>& DatasetFileNames();

// Runs the request in `arrays` with `work_folder` as the folder of the rules, control
// files and stage files, writing the outputs there too unless `output_folder` is given,
// and turns `arrays` into the response. Never throws: every fault ends as an error code.
RunSummary RunRequest(EngineArrays& arrays, const std::filesystem::path& work_folder,
                      const Fitter& fit, const std::filesystem::path& output_folder = {});

}  // namespace quorvane
