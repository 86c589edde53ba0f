#include "aggregate/parent_series.h"

#include "platform/dialogs.h"

namespace tessaly::aggregate {

void AddGeneratedSeriesToParent(const fs::path& variables, const fs::path& parent_asc,
                                const genseries::ManualData& manual, const fs::path& program_folder) {
  const genseries::GenerationResult result =
      genseries::GenerateSeries(variables, parent_asc, std::nullopt, manual, program_folder);
  if (result.outcome == genseries::GenerationOutcome::Adjusted) return;
  std::string text = result.outcome == genseries::GenerationOutcome::Refused
                         ? "No generated series were added to " + parent_asc.filename().string() + "."
                         : "Some generated series could not be added to " + parent_asc.filename().string() + ".";
  for (const std::string& line : result.log_lines) text += "\r\n" + line;
  platform::Dialogs().Message(text, platform::mb::OKOnly + platform::mb::Information, "FYI");
}

ParentSeriesAdder::Outcome VariablesFileSeriesAdder::Add(const fs::path& parent_asc) {
  AddGeneratedSeriesToParent(variables_, parent_asc, {}, program_folder_);
  return Outcome::Added;
}

}  // namespace tessaly::aggregate
