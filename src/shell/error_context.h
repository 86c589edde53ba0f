#pragma once
// The process-wide error context that every non-trivial procedure sets on entry, the trace
// flag, and the shared trace log those procedures write to when tracing is on.
#include <string>
#include <string_view>

#include "shell/log.h"

namespace tessaly::shell {

struct ErrorContext {
  std::string module_name;     // "frmMain", "csetting", "tesmod"
  std::string procedure_name;  // "LoadSettings"
  std::string combined_name;   // module "-" procedure
  bool trace = false;          // set once at start-up from "/L"
  bool validation_failed = false;
};

ErrorContext& ErrCtx();

// Sets the context; with tracing on writes "Enter: <module>, <procedure>".
void EnterProcedure(std::string_view module, std::string_view procedure);
// The form's menu commands trace as "Module: <module> Sub:<procedure> Enter".
void EnterMenuCommand(std::string_view module, std::string_view procedure);
// A free text line within a long procedure; written only when tracing.
void TraceText(std::string_view text);

// The shared trace log, created on first use.
Log& TraceLog();

}  // namespace tessaly::shell
