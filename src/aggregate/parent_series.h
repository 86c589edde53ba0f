#pragma once
// "Add Series" on the parent: generated series added to GROUPT.ASC by the same generator that
// adjusts a project's files. From a variables file (rwf.his) the wizard saved earlier, for the
// flow without a window; the desktop asks the Add Series wizard first and then does the same.
#include <filesystem>

#include "aggregate/aggregation_run.h"
#include "genseries/generate_series.h"

namespace tessaly::aggregate {

// Runs the generator on the parent. What it logged (a refused or partly added request) is
// shown in one FYI box, so the person knows the parent runs without those series.
void AddGeneratedSeriesToParent(const fs::path& variables, const fs::path& parent_asc,
                                const genseries::ManualData& manual, const fs::path& program_folder);

class VariablesFileSeriesAdder : public ParentSeriesAdder {
 public:
  VariablesFileSeriesAdder(fs::path variables, fs::path program_folder)
      : variables_(std::move(variables)), program_folder_(std::move(program_folder)) {}
  Outcome Add(const fs::path& parent_asc) override;

 private:
  fs::path variables_;
  fs::path program_folder_;
};

}  // namespace tessaly::aggregate
