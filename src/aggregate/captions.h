#pragma once
// The status texts of an aggregation. Every stage caption is built by one rule from the
// parameters dialog's two boxes (mixed frequency, Bottom Up), whatever the run is doing.
#include <string>

namespace tessaly::aggregate {

// "AGGREGATION - " [+ "MIXED FREQUENCY - "] + stage + " - Reconcile Bottom to Top" or
// " - Reconcile Top to Bottom".
std::string StageCaption(const std::string& stage, bool mixed_frequency, bool bottom_up);

namespace stage {
inline constexpr const char* kValidatingChildren = "Validating Selected ASC files";
inline constexpr const char* kParentMaking = "Creating Parent ASC file";
inline constexpr const char* kParentValidating = "Validating Parent ASC file";
inline constexpr const char* kParentAdding = "Adjusting Parent ASC file";
inline constexpr const char* kParentRunning = "Processing Parent ASC file";
inline constexpr const char* kChildrenMaking = "Creating children ASC files";
inline constexpr const char* kChildrenRunning = "Processing Children ASC files";
inline constexpr const char* kChildrenBoss = "Children Are The Boss";
inline constexpr const char* kParentBoss = "The Parent Is The Boss";
inline constexpr const char* kEveryoneCounts = "Parent And Children Weighed Together (MinT)";
// The per-file stages are these words and the file's name.
inline constexpr const char* kCreating = "Creating ";
inline constexpr const char* kValidating = "Validating ";
inline constexpr const char* kProcessing = "Processing ";
}  // namespace stage

namespace status {
inline constexpr const char* kSelectParameters = "AGGREGATION - Select Parameters For Processing";
inline constexpr const char* kIncomplete = "AGGREGATION - Processing was incomplete.";
inline constexpr const char* kFinished = "AGGREGATION - Finished processing.";
inline constexpr const char* kBottomUp = "Reconciling Parent to Children Forecasts(BOTTOM UP)";
inline constexpr const char* kTopDown = "AGGREGATION - Reconciling Children to Parent Forecasts(TOP DOWN";
// "AGGREGATION - File " + InDirectory + BatchName + " opened."
std::string Opened(const std::string& in_directory, const std::string& batch_name);
}  // namespace status

}  // namespace tessaly::aggregate
