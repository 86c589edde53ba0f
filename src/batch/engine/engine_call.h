#pragma once
// One call of the engine, as every caller performs it (project run, aggregation, pooling,
// spreadsheet runner): keep the control files, hand the arrays to a fresh engine object,
// start it, wait through the progress wait, restore the control files, and either end as
// cancelled (engines killed, the user told) or read every array back in the contract's order.
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "batch/engine/engine_wait.h"
#include "engine/exchange.h"
#include "platform/progress_wait.h"

namespace tessaly::batch {

namespace fs = std::filesystem;

inline constexpr const char* kCanceledMessage = "Operation Canceled by user";
inline constexpr const char* kCanceledTitle = "Tessaly RunEngine Call";

// The arrays that come back beside the caller's own: ReturnedDataProp (8 elements: 1 the
// number of series left in the model, 8 the number of forecasts) and the returned series
// data (the caller's DataValues stay as they were). Keep one across calls: it is reused.
struct EngineReturn {
  std::vector<int16_t> returned_data_prop;
  std::vector<double> returned_series_data;
};

struct EngineCallHooks {
  // Makes sure that the two F-table link files exist (the shell's part).
  std::function<void()> ensure_ftable_links;
  // Stops every engine process on a cancel; empty: the engines this run started (see
  // EngineSession::KillRunEngines), narrowed to the working folder when it is a private one.
  std::function<void()> kill_engines;
  // Where the qvxengine executable lies; empty: in the working folder given to the call.
  // A private working folder (parallel jobs, shards) names the program's folder here.
  fs::path engine_folder;
  // The longest the engine may work on one series; zero: no limit. Past it the engine is
  // ended and the dataset fails.
  std::chrono::seconds series_timeout{0};
  // How long a cancelled engine may take to stop by itself before it is killed.
  std::chrono::milliseconds cancel_grace = kCancelGrace;
  // For traces and tests: each engine operation's name as it is performed.
  std::function<void(std::string_view)> observer;
};

enum class EngineCallOutcome { Done, Canceled };

struct [[nodiscard]] EngineCallResult {
  EngineCallOutcome outcome = EngineCallOutcome::Done;
  // The engine's code: 0 or less success; positive a failure of this dataset
  // (kEngineFailedCode when the engine gave no answer, 21 when it stopped on request).
  int16_t error_code = 0;
  // Why the engine gave no answer, for logs ("" when it answered).
  std::string failure_reason;
};

// Copies STARTMOD.123 to STARTMOD.RWF and ENGINE.GO to ENGINE.RWF where they exist.
void KeepControlFiles(const fs::path& folder);
// Copies STARTMOD.RWF back over STARTMOD.123 and ENGINE.RWF over ENGINE.GO, deleting each
// copy, where the copies exist.
void RestoreControlFiles(const fs::path& folder);

// One engine call. `arrays` holds the dataset's arrays on the way in (RunMode 4, or 6 from
// the spreadsheet runner); on the way back every returned array replaces its own, except
// property_values and series_data, which stay and come back in `returned`. The engine object
// lives in the session of `context` during the call and is dropped at its end; after a cancel
// the session's `canceled` stays set for the caller, which ends its loop.
EngineCallResult CallEngine(quorvane::EngineArrays& arrays, EngineReturn& returned,
                            const fs::path& program_folder, const EngineCallContext& context,
                            platform::ProgressWait& wait, const EngineCallHooks& hooks = {});

}  // namespace tessaly::batch
