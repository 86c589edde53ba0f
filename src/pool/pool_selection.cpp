#include "pool/pool_selection.h"

#include "aggregate/child_selection.h"
#include "pool/pool_texts.h"

namespace tessaly::pool {

SelectionVerdict ValidatePoolSelection(const std::vector<std::string>& chosen, const std::filesystem::path& in_directory,
                           const std::function<void(const std::string&)>& status) {
  aggregate::SelectionContext context;
  context.flow = aggregate::SelectionFlow::Pooling;
  context.in_directory = in_directory;
  context.status = status;
  context.validating_caption = texts::kValidating;
  switch (aggregate::ValidateChildren(chosen, context).outcome) {
    case aggregate::SelectionResult::Outcome::Passed: return SelectionVerdict::Passed;
    case aggregate::SelectionResult::Outcome::CountRefused: return SelectionVerdict::Stay;
    default: return SelectionVerdict::Refused;
  }
}

}  // namespace tessaly::pool
