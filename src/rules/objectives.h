#pragma once
// Objective #1 of a dataset and the preset (implicit) models a user may choose for it.
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tessaly::rules {

// One preset: its objective value, the lists it appears in, and its text.
class ModelOptions {
 public:
  int16_t ModelType = 0;  // the value of objective #1
  int16_t MenuType = 0;   // 0 one series, 1 with inputs, 3 both
  std::string Description;
  void Add(std::string description, int16_t model_type, int16_t menu_type) {
    Description = std::move(description);
    ModelType = model_type;
    MenuType = menu_type;
  }
};

// The whole preset list, in order; `nonseasonal` gives whether an entry stands in the
// list of series with seasonality below 4.
struct PresetEntry {
  ModelOptions option;
  bool nonseasonal;
};
const std::vector<PresetEntry>& PresetList();

// The presets shown for a dataset: by seasonality (below 4 only the nonseasonal ones) and
// by the number of series (one: MenuType 0 or 3; more: 1 or 3). Built by
// CreateOptionsCollection and shown by LoadModelingOptions.
std::vector<ModelOptions> CreateOptionsCollection(int seasonality, int series_count);
std::vector<std::string> LoadModelingOptions(int seasonality, int series_count);
// The caption of the preset choice by seasonality.
std::string_view ImplicitModelCaption(int seasonality);
// The description of the preset whose ModelType is `objective1`; empty when none.
std::string DescriptionOf(int16_t objective1, int seasonality, int series_count);

// The objectives a wizard leaves: objective #1 to #3 and the two run copies of #1.
struct Objectives {
  std::array<int16_t, 3> value{};  // objectives 1 to 3 at [0] to [2]
  int16_t copy1 = 0;
  int16_t copy2 = 0;
  int16_t& Objective1() { return value[0]; }
  int16_t Objective1() const { return value[0]; }
};

// Finds the option by its exact description and puts its ModelType in objective #1 and
// both copies. Returns false, changing nothing, for a description not in the list.
bool SetObjective1(std::string_view description, Objectives& objectives);

// Valid values of objective #1 in a dataset.
bool IsValidObjective1(int value);

inline constexpr int16_t kAutomatic = 0;
inline constexpr int16_t kIdentificationOnly = 97;
inline constexpr int16_t kUserModel = 99;
inline constexpr int16_t kSkipsProcessingCheck = 91;

}  // namespace tessaly::rules
