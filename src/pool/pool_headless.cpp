#include "pool/pool_headless.h"

#include "platform/dialogs.h"
#include "platform/paths.h"
#include "pool/group_data.h"
#include "pool/pool_rules.h"
#include "pool/pool_texts.h"
#include "rules/objectives.h"
#include "rules/rules_files.h"

namespace tessaly::pool {

namespace {
constexpr int kMaxWizardSteps = 40;
}  // namespace

void ScriptedPoolWizard::Run(rules::RulesWizard& w) {
  if (choice_.preset) {
    w.ClickModelingType(static_cast<int>(rules::ModelingType::ImplicitCanned));
    w.Next();
    const auto& shape = w.Context().dataset;
    std::string description = rules::DescriptionOf(static_cast<int16_t>(*choice_.preset), shape.Seasonality(),
                                                   shape.SeriesCount());
    if (description.empty()) {
      problem_ = "there is no canned model " + std::to_string(*choice_.preset) + " for these series.";
      return;
    }
    w.SelectPreset(description);
  } else {
    w.ClickModelingType(static_cast<int>(rules::ModelingType::ExplicitModelUserRules));
    w.Next();
    std::string entry;
    for (const std::string& item : w.cboEditModel.items)
      if (platform::EqualsNoCase(rules::EntryFileName(item), archive_)) entry = item;
    if (entry.empty()) {
      problem_ = "the model file could not be offered to the wizard.";
      return;
    }
    w.SelectEditModel(entry);
    w.Next();
    w.review.chkModelOptions1.value = false;
    w.review.chkModeOptions2.value = true;
    w.Next();
  }
  w.AnswerGroups(rules::YesNo::Yes);
  for (int guard = 0; guard < kMaxWizardSteps && w.Step() != 5 && !w.Closed(); ++guard) w.Next();
  if (w.Step() != 5) {
    problem_ = "the rules wizard did not accept the model.";
    return;
  }
  w.Finish();
  if (!w.Finished()) problem_ = "the rules wizard did not finish.";
}

HeadlessPool RunPoolHeadless(batch::cBatchFile& project, const std::vector<std::string>& chosen, const ModelChoice& choice,
                             const PoolOptions& options, std::shared_ptr<batch::RunReports> reports,
                             batch::ReportTree* tree, batch::EngineCallFunction engine_call) {
  HeadlessPool result;
  const fs::path program = options.program_folder.empty() ? platform::ProgramFolder() : options.program_folder;
  batch::ReportTree own_tree;
  PoolRun run(options, tree ? *tree : own_tree);
  if (reports) run.SetReports(std::move(reports));
  if (engine_call) run.SetEngineCall(std::move(engine_call));
  auto ui = std::make_shared<ScriptedPoolWizard>(choice);
  std::string archive;
  if (choice.model_file) {
    archive = rules::NextArchiveName(program, texts::kStackName, 'I');
    if (archive.empty() || !platform::CopyFileOver(*choice.model_file, program / archive)) {
      result.problem = "the model file could not be put beside the program.";
      return result;
    }
    ui->SetArchive(archive);
  }
  const int k = static_cast<int>(chosen.size());
  auto ask_groups = [k](long observations) -> std::optional<int> {
    GroupCountCheck check = CheckGroupCount(std::to_string(k), observations);
    if (!check.accepted) {
      platform::Dialogs().Message(check.message, platform::mb::OKOnly, check.title);
      return std::nullopt;
    }
    return check.groups;
  };
  run.SetRulesWizard(std::make_shared<PoolRulesWizard>(program, ui, options.no_trend_at_start, ask_groups));
  result.opened = run.Open(project);
  if (result.opened) result.outcome = run.Run(project, chosen);
  if (!archive.empty()) platform::RemoveNoCase(program, archive);
  result.problem = ui->Problem();
  return result;
}

}  // namespace tessaly::pool
