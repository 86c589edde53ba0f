#include "shell/error_context.h"

namespace tessaly::shell {

ErrorContext& ErrCtx() {
  static ErrorContext context;
  return context;
}

Log& TraceLog() {
  static Log log;
  return log;
}

namespace {
void SetContext(std::string_view module, std::string_view procedure) {
  ErrorContext& c = ErrCtx();
  c.module_name = module;
  c.procedure_name = procedure;
  c.combined_name = std::string(module) + "-" + std::string(procedure);
}
}  // namespace

void EnterProcedure(std::string_view module, std::string_view procedure) {
  SetContext(module, procedure);
  if (ErrCtx().trace)
    TraceLog().WriteLine("Enter: " + std::string(module) + ", " + std::string(procedure));
}

void EnterMenuCommand(std::string_view module, std::string_view procedure) {
  SetContext(module, procedure);
  if (ErrCtx().trace)
    TraceLog().WriteLine("Module: " + std::string(module) + " Sub:" + std::string(procedure) +
                         " Enter");
}

void TraceText(std::string_view text) {
  if (ErrCtx().trace) TraceLog().WriteLine(text);
}

}  // namespace tessaly::shell
