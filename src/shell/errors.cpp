#include "shell/errors.h"

#include "platform/dates.h"
#include "platform/dialogs.h"
#include "platform/paths.h"
#include "platform/textfile.h"
#include "shell/app_info.h"
#include "shell/error_context.h"
#include "shell/startup.h"

namespace tessaly::shell {

namespace {
constexpr const char* kCrLf = "\r\n";
}

RunTimeError& Err() {
  static RunTimeError error;
  return error;
}

clsError::clsError() : ApplicationTitle(kApplicationTitle) {}

clsError& SharedError() {
  static clsError error;
  return error;
}

bool clsError::ADOError(const std::vector<AdoErrorRecord>& errors, AdoErrorRecord* found) const {
  for (const AdoErrorRecord& e : errors) {
    if (e.sql_state != "01000" && e.sql_state != "00000") {
      if (found) *found = e;
      return true;
    }
  }
  return false;
}

std::string clsError::FormatErrorText(const std::string& heading, const std::string& procedure,
                                      const std::optional<std::string>& text) const {
  std::string out = "Error Msg: " + heading + kCrLf + kCrLf + "Procedure: " + procedure;
  if (text && !text->empty()) return out + kCrLf + *text;
  const RunTimeError& e = Err();
  if (e.number != 0) out += kCrLf + std::string("Error Number: ") + std::to_string(e.number);
  std::string source = e.source.empty() ? ApplicationTitle : e.source;
  if (!source.empty()) out += kCrLf + std::string("Error Source: ") + source;
  if (!e.description.empty()) out += kCrLf + std::string("Description: ") + e.description;
  return out;
}

std::string clsError::FormatADOErrorText(const AdoErrorRecord& error) const {
  std::vector<std::string> lines;
  if (error.number != 0) lines.push_back("Error Number: " + std::to_string(error.number));
  if (!error.source.empty()) lines.push_back("Error Source: " + error.source);
  if (!error.description.empty()) lines.push_back("Description: " + error.description);
  if (error.native_error != 0) lines.push_back("Native Error: " + std::to_string(error.native_error));
  if (!error.sql_state.empty()) lines.push_back("SQL State: " + error.sql_state);
  std::string out;
  for (size_t i = 0; i < lines.size(); ++i) out += (i ? kCrLf : "") + lines[i];
  return out;
}

std::string StdErrorText(long number, const std::string& description, const std::string& module,
                         const std::string& procedure) {
  return "Error #" + std::to_string(number) + ": " + description + ", " + module + ", " + procedure;
}

void clsError::StdError() {
  if (status == 0) {
    Number = Err().number;
    Description = Err().description;
  }
  std::string module = Module.empty() ? ErrCtx().module_name : Module;
  std::string procedure = Subroutine.empty() ? ErrCtx().procedure_name : Subroutine;
  std::string text = StdErrorText(Number, Description, module, procedure);

  std::filesystem::path folder = error_folder;
  if (folder.empty()) folder = Shell().program_folder;
  if (folder.empty()) folder = platform::ProgramFolder();
  // The box is shown whether or not the error file could be written.
  (void)platform::AppendLine(folder / "tslyberr.txt",
                       platform::dates::FormatIso(platform::dates::Today()) + "  " + text);
  TraceText(text);
  platform::Dialogs().Message(text, platform::mb::OKOnly + platform::mb::Critical,
                              ApplicationTitle);
}

cMsgBox::cMsgBox() : Title(kApplicationTitle) {}

cMsgBox& SharedMsgBox() {
  static cMsgBox box;
  return box;
}

int16_t cMsgBox::Display(const std::string& message, int16_t buttons, const std::string& title) {
  if (!message.empty()) Message = message;
  if (buttons != 0) Buttons = buttons;
  if (!title.empty()) Title = title;
  // A failing box must not stop the flow that asked for it.
  try {
    Response = platform::Dialogs().Message(Message, static_cast<int16_t>(Buttons + Style), Title);
  } catch (...) {
    Response = 0;
  }
  return Response;
}

}  // namespace tessaly::shell
