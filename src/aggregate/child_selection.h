#pragma once
// The children of a parent (aggregation) or the members of a pool (pooling): the two lists
// the user picks them with, and the Finish validation of the picked ASC files. One piece of
// logic for both flows; the flow only changes a few texts and tests.
#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace tessaly::aggregate {

enum class SelectionFlow { Aggregation, Pooling };

// Most files in one aggregation or pool.
inline constexpr std::size_t kSeriesCountLimit = 149;

// The caption and the fixed note of the selection dialog.
std::string SelectionCaption(SelectionFlow flow);
std::string SelectionNote();

struct ListEntry {
  std::string name;
  bool highlighted = false;
};

enum class ListSide { Roster, Chosen };

// The enabled and visible states of the dialog's buttons, as the moves leave them.
struct ListControls {
  bool add_enabled = true;
  bool remove_enabled = false;
  bool add_all_visible = true;
  bool add_all_checked = false;
  bool remove_all_visible = false;
  bool remove_all_checked = false;
};

// lstRoster ("Available:") and lstChosen ("Selected:"). The chosen order is the order of
// selection, and it numbers the children later on.
class ChildLists {
 public:
  explicit ChildLists(SelectionFlow flow = SelectionFlow::Aggregation) : flow_(flow) {}

  // Clears both lists and puts the project's files, in project order, into the roster;
  // the controls go back to their starting state.
  void Fill(const std::vector<std::string>& project_files);

  const std::vector<ListEntry>& Roster() const { return roster_; }
  const std::vector<ListEntry>& Chosen() const { return chosen_; }
  std::vector<std::string> ChosenNames() const;
  std::size_t AvailableCount() const { return roster_.size(); }
  std::size_t SelectedCount() const { return chosen_.size(); }
  const ListControls& Controls() const { return controls_; }

  void Highlight(ListSide side, std::size_t index, bool on);
  // "Select All" of either list: checked highlights every entry, cleared un-highlights all.
  void SelectAll(ListSide side, bool checked);

  // "Add ---->": moves the highlighted roster entries to the end of the chosen list, in
  // roster order, stopping with the limit message when the chosen list holds 149.
  void Add();
  // "<---- Remove": the mirror image, without a limit.
  void Remove();
  // A double click on one entry moves that entry alone (the roster's with the limit test).
  void AddOne(std::size_t index);
  void RemoveOne(std::size_t index);

 private:
  bool LimitReached() const;
  void MoveToChosen(std::size_t index);
  void MoveToRoster(std::size_t index);
  void AfterAdd();
  void AfterRemove();

  SelectionFlow flow_;
  std::vector<ListEntry> roster_;
  std::vector<ListEntry> chosen_;
  ListControls controls_;
};

// What Finish leaves for the rest of the flow.
struct [[nodiscard]] SelectionResult {
  enum class Outcome {
    Passed,        // go on with the flow
    CountRefused,  // fewer than 2 or more than 149: the dialog stays open
    FileRefused,   // a file failed a test: the flow is given up (RunCanceled)
  };
  Outcome outcome = Outcome::CountRefused;
  // The chosen files as the rest of the flow uses them: for aggregation with all-numeric
  // names, sorted by number and renamed as the sort rebuilds them.
  std::vector<std::string> chosen;
  bool all_names_numeric = false;  // aggregation only
  std::string first_forecast_count;  // line 11 of the first file, trimmed
  // The values last accepted by the file tests, trimmed texts.
  std::string keep_seasonality, keep_major_period, keep_minor_period, keep_observations;
  std::string keep_series_count;  // pooling: line 4 of the files
  std::string refused_file;       // the file that failed, for FileRefused
};

struct SelectionContext {
  SelectionFlow flow = SelectionFlow::Aggregation;
  std::filesystem::path in_directory;  // where the chosen files are read
  // The main window's status line.
  std::function<void(const std::string&)> status;
  // The caption shown while the files are validated; empty takes the flow's own
  // (aggregation: the caption family in the dialog's starting state).
  std::string validating_caption;
};

// Finish, first half: the count tests, the mixed-frequency name test and sort
// (aggregation), the first file's forecast count, and the tests of every chosen file in
// list order. Messages go through platform::Dialogs(). Reads files only, writes nothing.
SelectionResult ValidateChildren(const std::vector<std::string>& chosen,
                                 const SelectionContext& context);

// The name test and numeric sort of mixed-frequency data, on their own: true when every
// name less its last four characters is numeric, and then `names` is rebuilt in order.
[[nodiscard]] bool SortNumericNames(std::vector<std::string>& names);

}  // namespace tessaly::aggregate
