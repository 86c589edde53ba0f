#pragma once
// The standard error handler and its texts, the run-time error in force, and the message
// box with remembered properties.
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tessaly::shell {

// The run-time error in force: what an error exit reports. A procedure that fails sets it
// (number, source, description) before it calls its handler; Clear() after handling.
struct RunTimeError {
  long number = 0;
  std::string source;
  std::string description;
  void Raise(long n, std::string src, std::string desc) {
    number = n;
    source = std::move(src);
    description = std::move(desc);
  }
  void Clear() { *this = RunTimeError(); }
};
RunTimeError& Err();

// One entry of a database connection's error list, as the SQLite layer reports it in the
// shape the standard texts need.
struct AdoErrorRecord {
  long number = 0;
  std::string source;
  std::string description;
  long native_error = 0;
  std::string sql_state;
};

class clsError {
 public:
  clsError();

  std::string ApplicationTitle;
  long Number = 0;
  std::string Description;
  // Non-zero: Number and Description were filled by hand and win over the error in force.
  int16_t status = 0;
  std::string Subroutine;
  std::string Module;

  // True when the list holds a real error: any entry whose SQL state is neither "01000"
  // nor "00000" (the first such is given back through `found`). An empty list is false.
  bool ADOError(const std::vector<AdoErrorRecord>& errors, AdoErrorRecord* found = nullptr) const;

  // "Error Msg: <heading>", two line ends, "Procedure: <procedure>", then the caller's text,
  // or the error in force line by line (number, source or the application title,
  // description), each left out when empty or zero.
  std::string FormatErrorText(const std::string& heading, const std::string& procedure,
                              const std::optional<std::string>& text = std::nullopt) const;
  std::string FormatADOErrorText(const AdoErrorRecord& error) const;

  // The standard reaction: one line appended to <program folder>/tslyberr.txt and a box
  // "Error #n: description, module, procedure" under the application title. Module and
  // procedure are this object's when set, else the process-wide error context's.
  void StdError();

  // Where tslyberr.txt lies; the program's folder unless a test says otherwise.
  std::filesystem::path error_folder;
};

// The process-wide instance that the main form creates at load.
clsError& SharedError();

// "Error #<n>: <description>, <module>, <procedure>"
std::string StdErrorText(long number, const std::string& description, const std::string& module,
                         const std::string& procedure);

class cMsgBox {
 public:
  cMsgBox();

  std::string Message;
  int16_t Buttons = 0;
  int16_t Style = 0;
  std::string Title;
  std::string HelpFileName;
  long HelpContext = 0;
  int16_t Response = 0;
  long iResourseID = 0;

  // A non-empty message, non-zero buttons or non-empty title replaces the stored value
  // first; the box shows Buttons + Style as its type; the answer lands in Response.
  int16_t Display(const std::string& message = {}, int16_t buttons = 0,
                  const std::string& title = {});
};

// The shared box that Main creates.
cMsgBox& SharedMsgBox();

}  // namespace tessaly::shell
