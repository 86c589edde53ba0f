#pragma once
// The entry point of libquorvane.so: one engine call with the modelling core.
#include <filesystem>

#include "engine/engine_run.h"
#include "engine/exchange.h"

namespace quorvane {

// RunRequest with FitAndForecast as the modelling core.
RunSummary RunEngineRequest(EngineArrays& arrays, const std::filesystem::path& work_folder,
                            const std::filesystem::path& output_folder = {});

}  // namespace quorvane
