#include "batch/engine/engine_call.h"

#include <memory>

#include "batch/engine/engine_client.h"
#include "platform/dialogs.h"
#include "platform/paths.h"
#include "platform/process.h"

namespace tessaly::batch {

namespace {

void KeepOne(const fs::path& folder, const char* name, const char* copy) {
  if (auto found = platform::FindNoCase(folder, name)) {
    // Without the copy there is nothing to restore after the call; the file stays as it is.
    (void)platform::CopyFileOver(*found, platform::ResolveNoCase(folder, copy));
  }
}

void RestoreOne(const fs::path& folder, const char* name, const char* copy) {
  if (auto kept = platform::FindNoCase(folder, copy)) {
    if (platform::CopyFileOver(*kept, platform::ResolveNoCase(folder, name))) {
      std::error_code ec;
      fs::remove(*kept, ec);
    }
  }
}

// The work folder as the platform gives it: no closing separator.
std::string WithoutTrailingSlash(std::string folder) {
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  return folder;
}

}  // namespace

void KeepControlFiles(const fs::path& folder) {
  KeepOne(folder, "STARTMOD.123", "STARTMOD.RWF");
  KeepOne(folder, "ENGINE.GO", "ENGINE.RWF");
}

void RestoreControlFiles(const fs::path& folder) {
  RestoreOne(folder, "STARTMOD.123", "STARTMOD.RWF");
  RestoreOne(folder, "ENGINE.GO", "ENGINE.RWF");
}

EngineCallResult CallEngine(quorvane::EngineArrays& arrays, EngineReturn& returned,
                            const fs::path& program_folder, const EngineCallContext& context,
                            platform::ProgressWait& wait, const EngineCallHooks& hooks) {
  const bool private_folder = !hooks.engine_folder.empty() && hooks.engine_folder != program_folder;
  // The run's engine state; a call made outside any run keeps its own for its length.
  EngineSession own_session;
  EngineCallContext call_context = context;
  if (!call_context.session) call_context.session = &own_session;
  EngineSession& session = *call_context.session;
  std::function<void()> kill_engines = hooks.kill_engines;
  if (!kill_engines) {
    kill_engines = [&session, private_folder, program_folder] {
      session.KillRunEngines(private_folder ? std::optional<fs::path>(program_folder) : std::nullopt);
    };
  }

  KeepControlFiles(program_folder);

  // A fresh engine object for each call, in the run's session so a cancel can reach it, and
  // held here too so it outlives a cancel's reset of the session's.
  session.engine = std::make_shared<EngineClient>(
      hooks.engine_folder.empty() ? program_folder : hooks.engine_folder, &session);
  std::shared_ptr<EngineClient> engine = session.engine;
  engine->SetEngineReadyHandler([&session] { session.finished = true; });
  if (hooks.observer) engine->SetOperationObserver(hooks.observer);

  // The arrays in the contract's order.
  engine->SetRunMode(arrays.run_mode);
  engine->SetObjectiveValues(arrays.objective_values);
  engine->SetPropertyValues(arrays.property_values);
  engine->SetSeriesNames(arrays.series_names);
  engine->SetSeriesTypes(arrays.series_types);
  engine->SetSeriesData(arrays.series_data);
  engine->SetFutureData(arrays.future_data);
  engine->SetRetainedData(arrays.retained_data);
  engine->SetWorkFolder(WithoutTrailingSlash(program_folder.string()));
  engine->SetIntegers20(arrays.integers20);
  engine->SetStrings2250(arrays.strings2250);
  engine->SetStrings400(arrays.strings400);
  engine->SetForecastValues(arrays.forecast_values);
  engine->SetDoubles10000C(arrays.doubles10000c);
  engine->SetDoubles10000B(arrays.doubles10000b);
  engine->SetDoubles10000A(arrays.doubles10000a);
  engine->SetDoubles745(arrays.doubles745);
  engine->SetDoubles20(arrays.doubles20);
  engine->SetArrayInput(true);

  // Start and wait.
  session.finished = false;
  if (hooks.ensure_ftable_links) hooks.ensure_ftable_links();
  engine->Start();
  EngineWait work(*engine, engine->WorkingFolder(), call_context, kill_engines, hooks.cancel_grace);
  work.SetTimeLimit(context.series_timeout.count() > 0 ? context.series_timeout : hooks.series_timeout);
  wait.Wait(work);

  // Pending events once, then the control files as they were before the call.
  wait.LetEventsRun();
  RestoreControlFiles(program_folder);

  EngineCallResult result;
  // A cancel: no engine may outlive it, nor its stop request the next call.
  if (session.canceled) {
    kill_engines();
    engine->Kill();
    engine->Poll();
    platform::RemoveNoCase(engine->WorkingFolder(), kKillFile);
    session.engine.reset();
    platform::Dialogs().Message(kCanceledMessage, platform::mb::OKOnly, kCanceledTitle);
    result.outcome = EngineCallOutcome::Canceled;
    result.error_code = engine->ErrorCode();
    result.failure_reason = engine->FailureReason();
    return result;
  }

  // Every array back, in the contract's order.
  engine->GetPropertyValues(returned.returned_data_prop);
  engine->GetSeriesData(returned.returned_series_data);
  engine->GetIntegers20(arrays.integers20);
  engine->GetForecastValues(arrays.forecast_values);
  engine->GetStrings2250(arrays.strings2250);
  engine->GetDoubles10000C(arrays.doubles10000c);
  engine->GetDoubles10000B(arrays.doubles10000b);
  engine->GetDoubles10000A(arrays.doubles10000a);
  engine->GetDoubles745(arrays.doubles745);
  engine->GetStrings400(arrays.strings400);
  engine->GetDoubles20(arrays.doubles20);
  engine->GetSeriesNames(arrays.series_names);
  engine->GetFutureData(arrays.future_data);
  engine->GetRetainedData(arrays.retained_data);

  // The code, and the object dropped.
  result.error_code = engine->ErrorCode();
  arrays.error_code = result.error_code;
  result.failure_reason = engine->FailureReason();
  session.engine.reset();
  return result;
}

}  // namespace tessaly::batch
