#include "genseries/variables.h"

#include <cstdio>

#include "dataset/asc_dataset.h"
#include "genseries/texts.h"
#include "platform/dialogs.h"
#include "platform/xml.h"
#include "shell/app_info.h"

namespace tessaly::genseries {

namespace {
using Member = std::string GenerationVariables::*;

// Places 1 to 33; place 24 (the holidays) has no plain member.
const std::array<Member, 33> kMembers = {
    &GenerationVariables::FirstObjective, &GenerationVariables::SecondObjective,
    &GenerationVariables::ThirdObjective, &GenerationVariables::NumberOfNewSeries,
    &GenerationVariables::BPSeaonality, &GenerationVariables::MajorPeriod,
    &GenerationVariables::MinorPeriod, &GenerationVariables::LevelStartYear,
    &GenerationVariables::LevelStartPeriod, &GenerationVariables::LevelEndYear,
    &GenerationVariables::LevelEndPeriod, &GenerationVariables::PulseStartYear,
    &GenerationVariables::PulseStartPeriod, &GenerationVariables::PulseEndYear,
    &GenerationVariables::PulseEndPeriod, &GenerationVariables::SPStartYear,
    &GenerationVariables::SPStartPeriod, &GenerationVariables::SPEndYear,
    &GenerationVariables::SPEndPeriod, &GenerationVariables::TrendStartYear,
    &GenerationVariables::TrendStartPeriod, &GenerationVariables::TrendEndYear,
    &GenerationVariables::TrendEndPeriod, nullptr,
    &GenerationVariables::Dateof1stHolidayObservation,
    &GenerationVariables::NumberofHolidaysSelected, &GenerationVariables::UserDefName,
    &GenerationVariables::UserDefType, &GenerationVariables::UserDefMethod,
    &GenerationVariables::DateOfFirstObservation, &GenerationVariables::SelectedDay,
    &GenerationVariables::SelectedMonth, &GenerationVariables::SelectedQuarter,
};
constexpr size_t kHolidaysPlace = 24;
}  // namespace

const std::array<const char*, 33>& VariableElementNames() {
  static const std::array<const char*, 33> names = {
      "FirstObjective", "SecondObjective", "ThirdObjective", "NumberOfNewSeries",
      "BPSeasonality", "MajorPeriod", "MinorPeriod", "LevelStartYear", "LevelStartPeriod",
      "LevelEndYear", "LevelEndPeriod", "PulseStartYear", "PulseStartPeriod", "PulseEndYear",
      "PulseEndPeriod", "SPStartYear", "SPStartPeriod", "SPEndYear", "SPEndPeriod",
      "TrendStartYear", "TrendStartPeriod", "TrendEndYear", "TrendEndPeriod", "Holidays",
      "Dateof1stHolidayObservation", "NumberofHolidaysSelected", "UserDefName", "UserDefType",
      "UserDefMethod", "DateOfFirstObservation", "SelectedDay", "SelectedMonth",
      "SelectedQuarter"};
  return names;
}

std::vector<std::string> GenerationVariables::HolidayNames() const {
  std::vector<std::string> names;
  for (const auto& [key, name] : SelectedHolidays) {
    std::string trimmed = dataset::TrimBlanks(name);
    if (!trimmed.empty() && names.size() < kMaxHolidays) names.push_back(trimmed);
  }
  return names;
}

LoadResult LoadXmlFile(const fs::path& path, GenerationVariables& vars, bool show_errors) {
  platform::xml::ParseResult parsed = platform::xml::ParseFile(path);
  if (!parsed) {
    if (show_errors)
      platform::Dialogs().Message(texts::ParseErrorBox(parsed.reason), platform::mb::OKOnly, shell::kApplicationTitle);
    return {false, parsed.reason};
  }
  platform::xml::Node root = parsed.document->Root();
  GenerationVariables read = vars;
  for (size_t place = 1; place <= 33; ++place) {
    platform::xml::Node node = root.Child(place);
    if (place == kHolidaysPlace) {
      read.SelectedHolidays.clear();
      for (int n = 1; n <= kMaxHolidays; ++n) {
        for (const platform::xml::Node& h : root.ElementsByTagName("Holiday" + std::to_string(n))) {
          if (!h.Text().empty()) read.SelectedHolidays[n] = h.Text();
        }
      }
      continue;
    }
    if (node) read.*kMembers[place - 1] = node.Text();
  }
  vars = std::move(read);
  return {true, {}};
}

bool BuildXML(const fs::path& path, const GenerationVariables& vars, const std::string& inputpath,
              const std::string& outputpath, const fs::path& program_folder) {
  platform::xml::Document doc;
  doc.AppendProcessingInstruction("xml", "version=\"1.0\" encoding=\"UTF-8\"");
  platform::xml::Node root = doc.SetRoot("BP_Variables");
  root.AppendComment(texts::kVariablesComment);
  root.SetAttribute("inputpath", inputpath);
  root.SetAttribute("outputpath", outputpath);
  root.SetAttribute("xmlns:xsd", "http://www.w3.org/2001/XMLSchema-instance");
  root.SetAttribute("xsd:noNamespaceSchemaLocation",
                    (program_folder / "DEFAULTXSD" / "BPSchema.xsd").string());
  const auto& names = VariableElementNames();
  for (size_t place = 1; place <= 33; ++place) {
    platform::xml::Node element = root.AppendElement(names[place - 1]);
    if (place != kHolidaysPlace) {
      element.SetText(vars.*kMembers[place - 1]);
      continue;
    }
    std::vector<std::string> holidays = vars.HolidayNames();
    for (int n = 1; n <= kMaxHolidays; ++n) {
      element.AppendElement("Holiday" + std::to_string(n),
                            n <= static_cast<int>(holidays.size()) ? holidays[static_cast<size_t>(n - 1)] : "");
    }
  }
  (void)doc.Save(path);  // whether the file is there is asked below
  std::error_code ec;
  if (!fs::exists(path, ec)) {
    platform::Dialogs().Message(texts::NotMade(path.string()), platform::mb::OKOnly, shell::kApplicationTitle);
    return false;
  }
  return true;
}

std::optional<platform::dates::Date> VariableDate(const std::string& text) {
  std::string t = dataset::TrimBlanks(text);
  if (t.empty() || t == kNoDate) return std::nullopt;
  return platform::dates::ParseMmDdYy(t);
}

std::string FormatVariableDate(const platform::dates::Date& d) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "%02d/%02d/%04d", d.month, d.day, d.year);
  return buf;
}

}  // namespace tessaly::genseries
