#include "rules/objectives.h"

#include "rules/texts.h"

namespace tessaly::rules {

const std::vector<PresetEntry>& PresetList() {
  static const std::vector<PresetEntry> list = [] {
    struct Row {
      int16_t type, menu;
      const char* text;
      bool nonseasonal;
    };
    const Row rows[] = {
        {1, 0, "MEAN", true},
        {2, 0, "AUTOREGRESSIVE(1) WITH CONSTANT", true},
        {3, 0, "AUTOREGRESSIVE(2) WITH CONSTANT", true},
        {4, 0, "SIMPLE EXPONENTIAL SMOOTHING NO CONSTANT", true},
        {5, 0, "LINEAR (HOLT) EXPONENTIAL SMOOTHING NO CONSTANT", true},
        {6, 0, "RANDOM WALK NO CONSTANT", true},
        {7, 0, "RANDOM WALK WITH CONSTANT", true},
        {8, 0, "TIME TREND", true},
        {9, 0, "TIME TREND PLUS AR(1) CORRECTION", true},
        {10, 0, "FOURIER", false},
        {11, 0, "HOLT LINEAR TREND PLUS ADDITIVE SEASONAL FACTORS", false},
        {12, 0, "DAMPED TREND LINEAR EXPONENTIAL SMOOTHING NO CONSTANT", true},
        {13, 0, "SEASONAL EXPONENTIAL SMOOTHING NO CONSTANT", false},
        {14, 0, "HOLT LINEAR TREND PLUS ADDITIVE SEASONAL FACTORS (ARIMA FORM)", false},
        {15, 0, "AIRLINE", false},
        {51, 1, "REGRESSION", true},
        {52, 1, "REGRESSION WITH AR(1) CORRECTION", true},
    };
    std::vector<PresetEntry> out;
    for (const Row& r : rows) {
      PresetEntry e{{}, r.nonseasonal};
      e.option.Add(r.text, r.type, r.menu);
      out.push_back(e);
    }
    return out;
  }();
  return list;
}

std::vector<ModelOptions> CreateOptionsCollection(int seasonality, int series_count) {
  std::vector<ModelOptions> out;
  for (const PresetEntry& e : PresetList()) {
    if (seasonality < 4 && !e.nonseasonal) continue;
    int16_t menu = e.option.MenuType;
    bool fits = series_count == 1 ? (menu == 0 || menu == 3) : (menu == 1 || menu == 3);
    if (fits) out.push_back(e.option);
  }
  return out;
}

std::vector<std::string> LoadModelingOptions(int seasonality, int series_count) {
  std::vector<std::string> items;
  for (const ModelOptions& o : CreateOptionsCollection(seasonality, series_count))
    items.push_back(o.Description);
  return items;
}

std::string_view ImplicitModelCaption(int seasonality) {
  return seasonality < 4 ? text::kImplicitModelCaptionNonseasonal : text::kImplicitModelCaption;
}

std::string DescriptionOf(int16_t objective1, int seasonality, int series_count) {
  for (const ModelOptions& o : CreateOptionsCollection(seasonality, series_count))
    if (o.ModelType == objective1) return o.Description;
  return {};
}

bool SetObjective1(std::string_view description, Objectives& objectives) {
  for (const PresetEntry& e : PresetList()) {
    if (e.option.Description == description) {
      objectives.value[0] = e.option.ModelType;
      objectives.copy1 = e.option.ModelType;
      objectives.copy2 = e.option.ModelType;
      return true;
    }
  }
  return false;
}

bool IsValidObjective1(int v) {
  return (v >= 0 && v <= 15) || v == 51 || v == 52 || (v >= 97 && v <= 99) || v == 199 ||
         v == 200;
}

}  // namespace tessaly::rules
