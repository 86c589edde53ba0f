#pragma once
// Saved copies of a model beside STARTMOD.123: initial models "<stem>.I<i><j>" saved from
// the wizard, final models "<stem>.F<i><j>" taken up after a run.
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tessaly::rules {

namespace fs = std::filesystem;

// "New", then each existing "<stem>.I<i><j>" (respectively ".F") as "name(date)".
std::vector<std::string> Check4ExistingInitialModels(const fs::path& folder, std::string_view stem);
std::vector<std::string> Check4ExistingModel(const fs::path& folder, std::string_view stem);

// STARTMOD.123 copied to the next free "<stem>.I<i><j>", with the message either way.
// Returns the name saved to, empty when nothing was saved.
std::string Check4InitialModels(const fs::path& folder, std::string_view stem);

// After a run with SAVEMOD.QVX: the engine's "<series>.MOD" in the program's folder is
// moved to the next free "<stem>.F<i><j>". A missing file shows "The model was not saved.".
// Returns the name saved to, empty when nothing was saved.
std::string Check4Model(const fs::path& folder, std::string_view dataset_stem,
                        std::string_view model_file_name);

}  // namespace tessaly::rules
