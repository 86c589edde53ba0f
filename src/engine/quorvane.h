#pragma once
// The entry point of libquorvane.so: one engine call with the modelling core.
#include <filesystem>

#include "engine/engine_run.h"
#include "engine/exchange.h"

namespace quorvane {

// RunRequest with the engine's modelling (FitEngineModel: pooled cross-sections, presets, the
// user's model, transfer functions, and FitAndForecast for automatic univariate modelling).
RunSummary RunEngineRequest(EngineArrays& arrays, const std::filesystem::path& work_folder,
                            const std::filesystem::path& output_folder = {});

}  // namespace quorvane
