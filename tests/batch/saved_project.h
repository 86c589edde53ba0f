#pragma once
// What a run left in a project: each file's completion status, in list order.
#include <vector>

#include "batch/batch_file.h"

namespace tessaly::batch::test {

inline std::vector<int> CompletedStatuses(const cBatchFile& project) {
  std::vector<int> out;
  for (int i = 0; i < project.Size(); ++i) out.push_back(project.Completed(i));
  return out;
}

}  // namespace tessaly::batch::test
