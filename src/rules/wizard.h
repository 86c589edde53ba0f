#pragma once
// The Model and Rules Wizard as a state machine over plain page objects. A desktop form
// binds the pages' fields and forwards its clicks; tests drive the same calls. Nothing
// here waits for a window: every message goes through platform::Dialogs().
#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "rules/page_rules.h"
#include "rules/pages.h"
#include "rules/session.h"

namespace tessaly::rules {

namespace fs = std::filesystem;

// The shape of the first dataset of the run: its three objectives and its header.
struct DatasetShape {
  std::array<int16_t, 3> objectives{};      // lines 1 to 3
  std::array<int16_t, 9> data_prop{};       // DataProp(1..8) at [1..8]
  std::vector<std::string> names;           // N names; the output series last
  std::vector<int16_t> types;               // N types

  int SeriesCount() const { return data_prop[1]; }
  int Seasonality() const { return data_prop[2]; }
  int Observations() const { return data_prop[5]; }
  int Forecasts() const { return data_prop[8]; }
  bool HasLeadSeries() const;               // some series of type 3
  std::string OutputSeriesName() const;
};

// Reads objectives, DataProp, names and types of an ASC file; nullopt when it cannot.
std::optional<DatasetShape> ReadDatasetShape(const fs::path& asc_file);

struct WizardContext {
  fs::path app_folder;          // the program's folder: rules, markers, models
  std::string project_stem;     // the open project's name without ".xml": rules archives
  fs::path dataset_path;        // the first ASC file of the run; read again on entering step 4
  DatasetShape dataset;         // its shape as the run read it
  bool aggregation_run = false; // saving is not offered
  bool pooling_run = false;     // estimation forced on, pooled-group options
  bool notrend_at_startup = false;  // NOTREND.QVX existed at start-up: Cancel leaves it
  // A pooling run asks the number of equal groups of the stack here (its own dialog);
  // nullopt when the person cancelled it.
  std::function<std::optional<int>(long observations)> ask_group_count;
  std::string DatasetStem() const;  // names the saved models
};

enum class SubPage {
  None,
  ReviewEditUse,     // fraReviewEditUse
  Startmod,          // fraStartmod
  Inputmod,          // fraInputmod
  AutoModelID,       // fraAutoModelID
  ModelEstimation0,  // fraModelEstimation(0)
  ModelEstimation1,  // fraModelEstimation(1), the option tree
  GroupPC,           // fraGroupPCSTS
  LambdaEst,         // fraLambdaEst
  ModelForecasting,  // fraModelForecasting
  Simulation,        // fraSimulation
};

struct NavButtons {
  bool help = false, cancel = true, back = false, next = true, finish = false;
};

// A radio button of a group.
struct OptionField {
  bool enabled = true;
  bool visible = true;
};

class RulesWizard {
 public:
  RulesWizard(WizardContext context, RulesSession& session);

  // Form load: first selections, pooling and aggregation shapes, step 0, the rules.
  void Load();

  // ---- Buttons ---------------------------------------------------------------------------
  void cmdNav_Click(int index);  // 0 Help, 1 Cancel, 2 Back, 3 Next, 4 Finish
  void Next();
  void Back();
  void Finish();
  void Cancel();

  // ---- Clicks on the pages -----------------------------------------------------------------
  void ClickModelingType(int index);
  void ClickConditions(int index);
  void ClickModels(int index);
  void SelectEditConditions(const std::string& entry);  // cboEditConditions
  void SelectPreset(const std::string& description);    // cboModelsinMemory
  void SelectEditModel(const std::string& entry);       // cboEditModel
  void SetEstimationEnabled(bool on);                   // chkModelEst1
  void SetForecastingEnabled(bool on);                  // chkModelForecasting1
  void SetSimulationEnabled(bool on);                   // chkSimulation1
  void SetSaveModels(bool on);                          // chkSaveModels
  void SelectTreeNode(int node);                        // 0 "ME1" .. 3 "ME4"
  void AnswerGroups(YesNo answer);                      // "Groups In Pooled Cross-Section T/S ?"
  void AnswerLambdas(YesNo answer);                     // "Enter Lambda Values?"

  // ---- Field behaviour ---------------------------------------------------------------------
  // Getting focus selects an enabled field's text and empties a disabled one; leaving
  // formats an enabled field and empties a disabled one; Enter (13) becomes 7.
  void FieldGotFocus(const std::string& name);
  void FieldLostFocus(const std::string& name);
  static int FieldKeyPress(int key_code) { return key_code == 13 ? 7 : key_code; }
  TextField* FindField(const std::string& name);

  // ---- State -------------------------------------------------------------------------------
  int16_t Step() const { return step_; }
  SubPage Current() const { return sub_page_; }
  const NavButtons& Buttons() const { return buttons_; }
  std::string WindowTitle() const;
  std::string StepTitle() const;
  std::string PageTitle() const;
  bool Closed() const { return closed_; }
  bool Finished() const { return finished_; }
  bool Cancelled() const { return cancelled_; }
  bool UseModel() const { return use_model_; }
  const std::string& SavedModelName() const { return saved_model_name_; }
  int SeriesInModel() const;
  int CurrentInput() const { return current_input_; }
  int TreeNode() const { return tree_node_; }
  const std::string& FocusField() const { return focus_field_; }
  const std::string& NextArchive() const { return next_archive_; }
  bool ArchiveInUse() const { return archive_in_use_; }
  const WizardContext& Context() const { return ctx_; }
  RulesSession& Session() { return session_; }

  // ---- Pages and controls ------------------------------------------------------------------
  int modeling_type = 2;                       // optModelingType
  std::array<OptionField, 6> optModelingType;
  int conditions = 0;                          // optConditions
  std::array<OptionField, 7> optConditions;
  std::string conditions_frame_title;
  std::string txtConditions1;
  ComboField cboEditConditions;
  int models = 0;                              // optModels
  std::array<OptionField, 3> optModels;
  std::string optModels0_caption;
  std::string txtModels;
  ComboField cboModelsinMemory;
  ComboField cboEditModel;
  CheckField chkAllowModifications;
  CheckField cboLocalTimeTrend;

  ReviewEditUsePage review;
  StartmodPage startmod;
  InputmodPage inputmod;
  AutoModelIdPage auto_model_id;
  ModelEstimationPage estimation;
  GroupPage groups;
  LambdaPage lambdas;
  ModelForecastingPage forecasting;
  SimulationPage simulation;
  FinishPage finish;
  int pooled_groups = 0;  // a pooling run's equal groups, written to GROUPLST.QVX at Finish

 private:
  ModelingType Type() const { return static_cast<ModelingType>(modeling_type); }
  void ShowStep(int16_t step);
  void UpdateButtons();
  void Show(SubPage page) { sub_page_ = page; }
  void ShowTree();

  bool do_step_2();
  bool do_step_3(int16_t from);
  bool do_step_4(int16_t from);
  bool do_step_5();
  void GoTo(int16_t step);

  [[nodiscard]] bool RulesReady();
  void NextFromStep0();
  void NextFromStep1();
  void NextFromStep2();
  void NextFromStep3();
  void NextFromStep4();
  void BackFromStep3();
  void BackFromStep4();
  void BackFromStep5();

  void SetAutomaticConditons();
  void SetNonautomaticConditions();
  void LayOutConditions(std::string_view frame_title);
  void ApplyPoolingShape();
  void ReloadPresets();
  void ReadDatasetHeader();

  void LoadOutputSeriesModelParameters();
  void LoadInputSeriesModelParameters(int series);
  [[nodiscard]] bool ValidateStartmodAndSave();
  [[nodiscard]] bool ValidateInputmodAndSave();
  void EndModelWalk();
  void CopyModel();
  void Inform(std::string_view message, std::string_view title);
  void Focus(const std::string& field);

  WizardContext ctx_;
  RulesSession& session_;
  int16_t step_ = 0;
  int16_t previous_step_ = 0;
  SubPage sub_page_ = SubPage::None;
  NavButtons buttons_;
  bool finish_allowed_ = false;
  bool closed_ = false, finished_ = false, cancelled_ = false;
  bool use_model_ = false;
  std::string saved_model_name_;
  int model_series_ = 1;          // the count the model rows were built for
  int current_input_ = 0;         // 1-based input series on the input page; 0 on the noise page
  std::array<bool, 150> series_saved_{};
  int tree_node_ = 0;
  std::string next_archive_;
  bool archive_in_use_ = false;
  std::string focus_field_;
  std::string step3_title_, step4_title_, page_title_;
};

// ---- The seam the run calls ------------------------------------------------------------------

// Drives a wizard until it closes: the desktop shows it modally, tests script it.
class WizardUi {
 public:
  virtual ~WizardUi() = default;
  virtual void Run(RulesWizard& wizard) = 0;
};

struct [[nodiscard]] WizardOutcome {
  bool finished = false;
  bool cancelled = false;
  int16_t objective1 = 0;
  Objectives objectives;
  bool forecasting_enabled = true;
  bool save_model = false;
};

// Builds the wizard for the run's first dataset, loads it, lets `ui` drive it, and returns
// what it left. A wizard the UI leaves open counts as cancelled, without the question.
WizardOutcome RunRulesWizard(const WizardContext& context, WizardUi& ui,
                             RulesSession& session);

}  // namespace tessaly::rules
