#pragma once
// The page of interventions (<stem>INTRVENT.HTM): the engine finds them and returns them
// in its arrays, but writes no report of them, so the front-end does.
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace tessaly::report {

struct InterventionInput {
  std::vector<int16_t> integers20;  // Integers20, element k at index k-1: 1 observations left
                                    // out at the start, 4 number of interventions
  std::vector<double> doubles745;   // five elements per intervention: type, observation,
                                    // major period, minor period, impact
  int returned_observations = 0;    // ReturnedDataProp(5)
  int data_observations = 0;        // DataProp(5)
};

// The observation number as the page shows it: the engine counts from the first
// observation it used, so when it left some out the number is moved to count from the
// first observation of the dataset.
int ShownObservation(double engine_observation, const InterventionInput& input);

// Writes the page to `page` when the engine found interventions (Integers20(4) > 0).
// True when a page was written; false when there was nothing to write or it failed.
[[nodiscard]] bool write_intervent_htm(const std::filesystem::path& page, const InterventionInput& input);

// The same, under its usual name: the output folder, the stem and "INTRVENT.HTM".
[[nodiscard]] bool write_intervent_htm(const std::filesystem::path& output_path, const std::string& stem,
                         const InterventionInput& input);

}  // namespace tessaly::report
