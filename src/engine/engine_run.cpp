#include "engine/engine_run.h"

#include <exception>
#include <new>

#include "engine/model/pooled.h"
#include "engine/model_file.h"
#include "engine/reports.h"
#include "engine/request.h"
#include "engine/rules_reader.h"
#include "platform/paths.h"
#include "platform/textfile.h"

namespace quorvane {

namespace fs = std::filesystem;
namespace tp = tessaly::platform;

namespace {

const char* StageText(Stage stage) {
  switch (stage) {
    case Stage::DataPreparation: return " Data Preparation";
    case Stage::Identification: return " Model Identification";
    case Stage::Estimation: return " Model Estimation";
    case Stage::Diagnosis: return " Model Diagnosis";
  }
  return "";
}

int16_t FaultCode(Stage stage) {
  switch (stage) {
    case Stage::DataPreparation:
    case Stage::Identification: return kFaultInIdentification;
    case Stage::Estimation: return kFaultInEstimation;
    case Stage::Diagnosis: return kFaultInDiagnosis;
  }
  return kFaultInIdentification;
}

bool IsSeasonalPreset(int objective) {
  return objective == 10 || objective == 11 || objective == 13 || objective == 14 || objective == 15;
}

// The starting model: read when objective #1 is 99 or the rules name it. Returns an error
// code (0 when fine) and adds what was found to the notes.
int16_t ReadStartModel(const fs::path& folder, int objective, const EngineRules& rules,
                       std::vector<std::string>& notes, std::vector<ModelBlock>& start_model) {
  bool named = !rules.initial_model.empty();
  if (objective != 99 && !named) return 0;
  auto path = tp::FindNoCase(folder, "STARTMOD.123");
  if (!path) {
    if (objective == 99) return kStartModelMissing;
    notes.push_back("The rules name a starting model (" + rules.initial_model +
                    "), but STARTMOD.123 is not in the working folder; the series was modelled "
                    "automatically.");
    return 0;
  }
  auto lines = tp::ReadAllLines(*path);
  auto model = lines ? ParseModelFile(*lines) : std::nullopt;
  if (!model) return kStartModelMalformed;
  std::string text = "STARTMOD.123 holds a model of " + std::to_string(model->series) +
                     (model->series == 1 ? " series" : " series (the noise model and inputs)") +
                     " for " + model->blocks[0].name + ".";
  if (objective == 99) {
    text += rules.allow_modifications ? " It was used as the starting model, to be tuned and extended."
                                      : " It was used as the model, its structure held fixed.";
    start_model = model->blocks;
  }
  notes.push_back(text);
  return 0;
}

}  // namespace

std::string StageFileName(Stage stage) {
  return "STAGE" + std::to_string(static_cast<int>(stage)) + ".123";
}

void MarkStage(const fs::path& folder, Stage stage) {
  for (int s = 1; s <= 4; ++s)
    if (s != static_cast<int>(stage)) tp::RemoveNoCase(folder, StageFileName(static_cast<Stage>(s)));
  // The stage file only shows progress to whoever waits; the work goes on without it.
  (void)tp::WriteAllLines(folder / StageFileName(stage), {StageText(stage)});
}

void ClearStages(const fs::path& folder) {
  for (int s = 1; s <= 4; ++s) tp::RemoveNoCase(folder, StageFileName(static_cast<Stage>(s)));
}

bool TakeKillRequest(const fs::path& folder) {
  if (!tp::ExistsNoCase(folder, "KILLQUOR.QVX")) return false;
  tp::RemoveNoCase(folder, "KILLQUOR.QVX");
  return true;
}

const std::vector<std::string>& DatasetFileNames() {
  static const std::vector<std::string> names = {
      "DETAILS.HTM",  "STAT.HTM",     "EQUATION.TXT", "RHSIDE.TXT",      "VERBAL.TXT",
      "OUTCAST.TXT",  "ADJUSTED.TXT", "TS50PRO.123",  "PASS2MOD.123",    "FITTED.CSV",
      "FORECAST.CSV", "RESIDUALACF.CSV", "EQUATION.CSV"};
  return names;
}

RunSummary RunRequest(EngineArrays& arrays, const fs::path& folder, const Fitter& fit,
                      const fs::path& output_folder) {
  RunSummary summary;
  const fs::path out = output_folder.empty() ? folder : output_folder;
  Stage stage = Stage::DataPreparation;
  auto finish = [&](int16_t code, const std::string& text) {
    ClearStages(folder);
    FillFailure(code, text, arrays);
    summary.error_code = code;
    if (!text.empty()) summary.messages.push_back(text);
    return summary;
  };
  try {
    for (const auto& name : DatasetFileNames()) tp::RemoveNoCase(out, name);
    MarkStage(folder, stage);
    if (TakeKillRequest(folder)) return finish(kUserTerminated, "User terminated the process.");

    RulesReadResult rules = LoadRules(folder);
    if (rules.error_code != 0)
      return finish(rules.error_code, RulesErrorText(rules.error_code) + " (" + rules.source + ")");
    std::vector<std::string> notes = ApplyControlFiles(folder, rules.rules);

    int objective = arrays.objective_values[0];
    std::vector<ModelBlock> start_model;
    if (int16_t code = ReadStartModel(folder, objective, rules.rules, notes, start_model))
      return finish(code, code == kStartModelMissing ? " USEMOD.QVX REQUIRES A STARTING MODEL"
                                                     : " STARTMOD.123 MALFORMED");
    // A group list that cannot be read must not turn a pooled run into a fit of the
    // stacked data as one series.
    if (rules.rules.group_sizes.empty() && tp::ExistsNoCase(folder, "GROUPLST.QVX"))
      return finish(kCodePoolGroups,
                    "GROUPLST.QVX could not be read: its first line must hold the number of groups "
                    "and each further line the size of one group.");

    PreparedRequest request = PrepareRequest(arrays, rules.rules);
    summary.series = request.problem.output_name;
    if (request.error_code != 0) return finish(request.error_code, request.error_detail);
    {
      // The rules' groups as they fit this dataset: the reports and the core see the
      // groups of a pooled run, and none when the dataset is one series.
      const PoolLayout layout = PoolLayoutFor(rules.rules, request.shape.observations);
      if (layout.error_code != 0) return finish(layout.error_code, layout.message);
      if (!layout.message.empty()) request.warnings.push_back(layout.message);
      request.problem.rules.groups = layout.pooled() ? static_cast<int>(layout.sizes.size()) : 1;
      request.problem.rules.group_sizes = layout.sizes;
    }
    if ((objective == 51 || objective == 52) && request.problem.inputs.empty())
      return finish(kRegressionPresetNeedsInputs,
                    " PROBLEMS WITH OLS OR OLSP MODEL. REQUIRES CAUSAL VARIABLES.");
    if (IsSeasonalPreset(objective) && request.shape.seasonality < 4)
      return finish(kSeasonalPresetInvalid,
                    " PROBLEMS WITH SEASONAL TIME TREND MODEL. NOT VALID FOR THIS SEASONALITY.");
    // Identification only: the core identifies the transform, the differencing and a model
    // as usual, and the reports add the descriptive measures; nothing is forecast.
    if (objective == 97) request.problem.objective = 0;
    request.problem.start_model = std::move(start_model);
    if (objective == 97) request.problem.horizon = 0;
    // The horizon decided here is final: the core's own fallback to the rules' count must
    // not bring back forecasts that the request or the rules turned off. The retained
    // periods are forecast too (from the end of the estimation sample) to be compared with
    // their actuals, even when fewer forecasts are returned.
    const int returned_horizon = request.problem.horizon;
    const int retained = static_cast<int>(request.problem.retained.size());
    if (objective != 97 && request.problem.rules.forecasting_enabled && retained > returned_horizon)
      request.problem.horizon = retained;
    request.problem.rules.forecasts = request.problem.horizon;

    bool cancelled = false;
    auto on_stage = [&](Stage s) {
      if (cancelled) return false;
      stage = s;
      MarkStage(folder, s);
      if (TakeKillRequest(folder)) cancelled = true;
      return !cancelled;
    };
    if (!on_stage(Stage::DataPreparation)) return finish(kUserTerminated, "User terminated the process.");
    ModelResult result = fit(request.problem, on_stage);
    if (cancelled || result.cancelled || TakeKillRequest(folder))
      return finish(kUserTerminated, "User terminated the process.");
    if (result.error_code > 0) {
      std::string text;
      for (const auto& w : result.warnings) text += (text.empty() ? "" : " ") + w;
      return finish(result.error_code, text);
    }

    std::vector<RetainedForecast> out_of_sample = CompareRetained(request.problem.retained, result);
    if (static_cast<int>(result.forecasts.size()) > returned_horizon) {
      result.forecasts.resize(returned_horizon);
      if (static_cast<int>(result.lower.size()) > returned_horizon) result.lower.resize(returned_horizon);
      if (static_cast<int>(result.upper.size()) > returned_horizon) result.upper.resize(returned_horizon);
    }
    request.problem.horizon = returned_horizon;
    request.problem.rules.forecasts = returned_horizon;

    FillResponse(request, result, arrays);
    ReportInput input{&request, &result, rules.source, notes, objective == 97, out_of_sample};
    std::vector<std::string> failed = WriteDatasetReports(out, input);
    AppendRunWideReports(out, input);
    ClearStages(folder);
    if (!failed.empty()) {
      std::string text = " ERROR OPENING FILES:";
      for (const auto& f : failed) text += " " + f;
      return finish(kErrorOpeningFiles, text);
    }
    summary.error_code = arrays.error_code;
    summary.model = result.description;
    summary.forecasts = arrays.property_values[7];
    for (const auto& s : arrays.strings2250)
      if (!s.empty()) summary.messages.push_back(s);
    for (const auto& n : notes) summary.messages.push_back(n);
    return summary;
  } catch (const std::bad_alloc&) {
    return finish(FaultCode(stage), "The engine ran out of memory.");
  } catch (const std::exception& e) {
    return finish(FaultCode(stage), std::string("Engine fault: ") + e.what());
  } catch (...) {
    return finish(FaultCode(stage), "Engine fault.");
  }
}

}  // namespace quorvane
