#include "aggregate/child_selection.h"

#include <cstdint>
#include <optional>

#include "platform/dialogs.h"
#include "platform/numfmt.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/textfile.h"

namespace tessaly::aggregate {

namespace {

using platform::Dialogs;
namespace mb = platform::mb;

constexpr const char* kFyi = "FYI";
constexpr const char* kAppTitle = "Tessaly";
const std::string kLimit = std::to_string(kSeriesCountLimit);

// The texts that differ between the two flows.
struct FlowTexts {
  const char* limit_reached;   // before the limit
  const char* limit_excess;    // after the count of files
  const char* incomplete;      // status after a refused file
  const char* validating;      // the validating caption
};

const FlowTexts& TextsOf(SelectionFlow flow) {
  static const FlowTexts aggregation{
      "You have reached the allowable limit of Series in an aggregation is ",
      " asc files. The allowable limit of Series in an aggregation is ",
      "AGGREGATION - Processing was incomplete.",
      "AGGREGATION - Validating Selected ASC files - Reconcile Bottom to Top"};
  static const FlowTexts pooling{
      "You have reached the allowable limit of Series in an Pooling is ",
      " asc files. The allowable limit of Series in an Pooling is ",
      "Pooling - Processing was incomplete.",
      "Pooling - Validating Selected ASC files "};
  return flow == SelectionFlow::Pooling ? pooling : aggregation;
}

constexpr const char* kReview = "  Please review all selected asc files for accuracy.";
constexpr const char* kReviewWide = "   Please review all selected asc files for accuracy.";

using platform::Trim;

// The name less its last four characters (the extension of "x.asc").
std::string Stem(const std::string& name) {
  return name.size() >= 4 ? name.substr(0, name.size() - 4) : std::string();
}

// The first `count` lines of a file, trimmed; nullopt when it cannot be opened.
std::optional<std::vector<std::string>> HeadLines(const std::filesystem::path& path, int count) {
  platform::LineReader reader(path);
  if (!reader.IsOpen()) return std::nullopt;
  std::vector<std::string> lines;
  while (static_cast<int>(lines.size()) < count) {
    auto line = reader.Next();
    if (!line) break;
    lines.push_back(Trim(*line));
  }
  return lines;
}

std::string LineOf(const std::vector<std::string>& lines, std::size_t one_based) {
  return one_based <= lines.size() ? lines[one_based - 1] : std::string();
}

// One comparison of a file's line with the value the files before it left.
bool SameAsKept(const std::string& value, std::string& kept) {
  if (!kept.empty() && value != kept) return false;
  kept = value;
  return true;
}

// The failure text after the file's name, or empty when the file passes every test.
std::string TestOneFile(const std::vector<std::string>& lines, SelectionFlow flow,
                        SelectionResult& keep) {
  if (lines.empty()) return std::string(" is an empty or malformed file.") + kReview;
  if (flow == SelectionFlow::Aggregation) {
    if (platform::Val(LineOf(lines, 4)) > 1) return std::string(" is not an univariate series.") + kReview;
  } else if (!SameAsKept(LineOf(lines, 4), keep.keep_series_count)) {
    return std::string(" does not have the same number of series as the other series.") + kReview;
  }
  if (!SameAsKept(LineOf(lines, 5), keep.keep_seasonality))
    return std::string(" does not have the same seasonality as the other series.") + kReview;
  if (!SameAsKept(LineOf(lines, 6), keep.keep_major_period))
    return std::string(" does not have the same Major Period as the other series.") + kReview;
  if (!SameAsKept(LineOf(lines, 7), keep.keep_minor_period))
    return std::string(" does not have the same Minor Period as the other series. ") + kReview;
  if (!SameAsKept(LineOf(lines, 8), keep.keep_observations))
    return std::string(" does not have the same number of observations as the other series. ") +
           kReview;
  if (flow == SelectionFlow::Aggregation && platform::Val(LineOf(lines, 10)) != 0)
    return std::string(" contains Retained Data and cannot be processed.") + kReviewWide;
  return {};
}

}  // namespace

std::string SelectionCaption(SelectionFlow flow) {
  return flow == SelectionFlow::Pooling ? "Select ASC files for Pooling"
                                        : "Select ASC files for Aggregation";
}

std::string SelectionNote() {
  return " You must select a minimum of two and a maximum of " + kLimit +
         ".  To select multiple files , hold down Ctrl while clicking.";
}

// ---- The two lists ---------------------------------------------------------------------

void ChildLists::Fill(const std::vector<std::string>& project_files) {
  roster_.clear();
  chosen_.clear();
  for (const auto& name : project_files) roster_.push_back({name, false});
  controls_ = ListControls{};
}

std::vector<std::string> ChildLists::ChosenNames() const {
  std::vector<std::string> names;
  for (const auto& e : chosen_) names.push_back(e.name);
  return names;
}

void ChildLists::Highlight(ListSide side, std::size_t index, bool on) {
  auto& list = side == ListSide::Roster ? roster_ : chosen_;
  if (index < list.size()) list[index].highlighted = on;
}

void ChildLists::SelectAll(ListSide side, bool checked) {
  auto& list = side == ListSide::Roster ? roster_ : chosen_;
  for (auto& e : list) e.highlighted = checked;
  (side == ListSide::Roster ? controls_.add_all_checked : controls_.remove_all_checked) = checked;
}

bool ChildLists::LimitReached() const {
  if (chosen_.size() != kSeriesCountLimit) return false;
  Dialogs().Message(TextsOf(flow_).limit_reached + kLimit + " .", mb::OKOnly, kAppTitle);
  return true;
}

void ChildLists::MoveToChosen(std::size_t index) {
  chosen_.push_back({roster_[index].name, false});
  roster_.erase(roster_.begin() + static_cast<std::ptrdiff_t>(index));
}

void ChildLists::MoveToRoster(std::size_t index) {
  roster_.push_back({chosen_[index].name, false});
  chosen_.erase(chosen_.begin() + static_cast<std::ptrdiff_t>(index));
}

void ChildLists::AfterAdd() {
  if (roster_.empty()) {
    controls_.add_all_checked = false;
    controls_.add_all_visible = false;
    controls_.add_enabled = false;
    controls_.remove_enabled = true;
  }
  if (!chosen_.empty()) controls_.remove_all_visible = true;
}

void ChildLists::AfterRemove() {
  if (chosen_.empty()) {
    controls_.remove_all_checked = false;
    controls_.remove_all_visible = false;
    controls_.remove_enabled = false;
    controls_.add_enabled = true;
  }
  if (!roster_.empty()) controls_.add_all_visible = true;
}

void ChildLists::Add() {
  // The index stays put when an entry is taken out, so the next entry is looked at next.
  for (std::size_t i = 0; i < roster_.size();) {
    if (LimitReached()) break;
    if (roster_[i].highlighted) {
      MoveToChosen(i);
    } else {
      ++i;
    }
  }
  AfterAdd();
}

void ChildLists::Remove() {
  for (std::size_t i = 0; i < chosen_.size();) {
    if (chosen_[i].highlighted) {
      MoveToRoster(i);
    } else {
      ++i;
    }
  }
  AfterRemove();
}

void ChildLists::AddOne(std::size_t index) {
  if (index >= roster_.size() || LimitReached()) return;
  MoveToChosen(index);
  AfterAdd();
}

void ChildLists::RemoveOne(std::size_t index) {
  if (index >= chosen_.size()) return;
  MoveToRoster(index);
  AfterRemove();
}

// ---- Mixed-frequency names -------------------------------------------------------------

bool SortNumericNames(std::vector<std::string>& names) {
  for (const auto& name : names)
    if (!platform::IsNumeric(Stem(name))) return false;
  std::vector<int16_t> key(names.size(), 0), leading_zero(names.size(), 0);
  for (std::size_t i = 0; i < names.size(); ++i) {
    const auto value = platform::ToInt16(Stem(names[i]));
    key[i] = value.ok() ? value.value : 0;  // out of the 16-bit range: the key stays zero
    leading_zero[i] = !names[i].empty() && names[i][0] == '0' ? 1 : 0;
  }
  // Bubble sort whose pass ends at the last swap of the pass before; equal keys keep order.
  std::size_t limit = names.size();
  while (limit > 1) {
    std::size_t last_swap = 0;
    for (std::size_t i = 1; i < limit; ++i) {
      if (key[i - 1] > key[i]) {
        std::swap(key[i - 1], key[i]);
        std::swap(leading_zero[i - 1], leading_zero[i]);
        last_swap = i;
      }
    }
    limit = last_swap;
  }
  for (std::size_t i = 0; i < names.size(); ++i)
    names[i] = (leading_zero[i] ? "0" : "") + std::to_string(key[i]) + ".asc";
  return true;
}

// ---- Finish ----------------------------------------------------------------------------

SelectionResult ValidateChildren(const std::vector<std::string>& chosen,
                                 const SelectionContext& context) {
  const FlowTexts& texts = TextsOf(context.flow);
  auto status = [&](const std::string& text) {
    if (context.status) context.status(text);
  };
  SelectionResult result;
  result.chosen = chosen;

  if (chosen.size() <= 1) {
    Dialogs().Message("FYI!  The range for selection is from 2 to " + kLimit + ".", mb::OKOnly,
                      kAppTitle);
    return result;
  }
  if (chosen.size() > kSeriesCountLimit) {
    Dialogs().Message("You have selected " + std::to_string(chosen.size()) + texts.limit_excess +
                          kLimit + ". You must delete the excess asc files.\r\n\r\n",
                      mb::OKOnly, kFyi);
    return result;
  }

  status(context.validating_caption.empty() ? texts.validating : context.validating_caption);

  if (context.flow == SelectionFlow::Aggregation) {
    result.all_names_numeric = SortNumericNames(result.chosen);
    if (!result.all_names_numeric)
      Dialogs().Message(
          "Since one or more of your asc names contains nonnumeric characters, The \"Mixed "
          "Frequency\" option in Aggregation Parameters will not be available\r\r",
          mb::OKOnly, kFyi);
  }

  for (std::size_t i = 0; i < result.chosen.size(); ++i) {
    const std::string& name = result.chosen[i];
    auto lines = HeadLines(platform::ResolveNoCase(context.in_directory, name), 11);
    // A file that cannot be opened is taken as one with no lines.
    const std::vector<std::string> read = lines.value_or(std::vector<std::string>{});
    if (i == 0) result.first_forecast_count = LineOf(read, 11);
    const std::string failure = TestOneFile(read, context.flow, result);
    if (!failure.empty()) {
      Dialogs().Message(name + failure + "\rWe will now exit the program> \r\r", mb::OKOnly, kFyi);
      status(texts.incomplete);
      result.outcome = SelectionResult::Outcome::FileRefused;
      result.refused_file = name;
      return result;
    }
  }
  result.outcome = SelectionResult::Outcome::Passed;
  return result;
}

}  // namespace tessaly::aggregate
