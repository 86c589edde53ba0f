#include "engine/quorvane.h"

#include "engine/model.h"
#include "engine/model/structured.h"

namespace quorvane {

RunSummary RunEngineRequest(EngineArrays& arrays, const std::filesystem::path& work_folder,
                            const std::filesystem::path& output_folder) {
  return RunRequest(arrays, work_folder, &FitModel, output_folder);
}

}  // namespace quorvane
