#include "engine/quorvane.h"

#include "engine/model.h"
#include "engine/model/pooled.h"

namespace quorvane {

RunSummary RunEngineRequest(EngineArrays& arrays, const std::filesystem::path& work_folder,
                            const std::filesystem::path& output_folder) {
  return RunRequest(arrays, work_folder, &FitEngineModel, output_folder);
}

}  // namespace quorvane
