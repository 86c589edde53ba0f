#include "spreadsheet/properties_sheet.h"

#include <cmath>

#include "dataset/asc_dataset.h"
#include "platform/paths.h"
#include "spreadsheet/texts.h"

namespace tessaly::spreadsheet {

std::string PropertiesRead::MessageText() const {
  if (!header_ok) return std::string(texts::kBadPropertiesHeader) + "\n" + texts::kDefaultsUsed;
  if (issues.empty()) return "";
  std::string text = texts::kIssuesFound;
  for (const auto& i : issues) text += "\n" + i;
  return text;
}

PropertiesRead ReadPropertiesSheet(const Workbook& book, const SheetFigures& defaults) {
  PropertiesRead r;
  r.figures = defaults;
  const Sheet* sheet = book.Find(texts::kPropertiesSheet);
  if (!sheet) return r;
  r.found = true;
  const Grid& g = sheet->grid;
  std::string key = platform::ToUpper(g.Text(1, 1)), value = platform::ToUpper(g.Text(1, 2));
  if (!((key == "PROPERTY" || key == "KEY") && value == "VALUE")) {
    r.header_ok = false;
    return r;
  }
  bool forecasts_named = false;
  int seasonality = defaults.seasonality, major = defaults.major, minor = defaults.minor,
      forecasts = defaults.forecasts;
  for (int row = 2; row <= g.MaxRows(); ++row) {
    std::string k = platform::ToUpper(g.Text(row, 1));
    double v = 0;
    if (k.empty() || !g.NumericValue(row, 2, v)) continue;
    long n = std::lround(v);
    if (k == "SEASONALITY") {
      if (n < 2 || n > dataset::MaxSeasonality)
        r.issues.push_back(texts::kSeasonalityMax + std::to_string(dataset::MaxSeasonality) + texts::kDefaultUsed);
      else
        seasonality = static_cast<int>(n);
    } else if (k == "MAJOR") {
      if (n < 1 || n > dataset::MaxYear)
        r.issues.push_back(texts::kMajorMax + std::to_string(dataset::MaxYear) + texts::kMajorDefaultUsed);
      else
        major = static_cast<int>(n);
    } else if (k == "MINOR") {
      minor = static_cast<int>(n);
      if (n < 1) minor = defaults.minor;
    } else if (k == "FORECASTS") {
      if (n < 1 || n > dataset::MaxForecasts) {
        r.issues.push_back(texts::kForecastsExceed + std::to_string(dataset::MaxForecasts));
      } else {
        forecasts = static_cast<int>(n);
        forecasts_named = true;
      }
    }
  }
  // The minor period is measured against the seasonality the sheet settled on.
  if (minor > seasonality) {
    r.issues.push_back(texts::kMinorAboveSeasonality);
    minor = defaults.minor <= seasonality ? defaults.minor : 1;
  }
  if (!forecasts_named && seasonality != defaults.seasonality) forecasts = 3 * seasonality;
  r.figures = {seasonality, major, minor, std::min(forecasts, dataset::MaxForecasts)};
  return r;
}

}  // namespace tessaly::spreadsheet
