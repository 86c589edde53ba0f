#include "shell/preferences.h"

#include <cstdlib>

#include "platform/dialogs.h"
#include "platform/paths.h"
#include "platform/textfile.h"
#include "platform/xml.h"
#include "shell/app_info.h"
#include "shell/error_context.h"
#include "shell/errors.h"

namespace tessaly::shell {

namespace fs = std::filesystem;

int16_t& PreferenceValues::At(size_t position) {
  int16_t* fields[kPreferenceCount] = {&Decimals, &AllGraphs, &NOGRAPHS, &SelGraphs, &Act,
                                       &ActClen,  &ActFit,    &ActFore,  &ActFitFore, &ActRes,
                                       &Fore,     &FitFore,   &Res,      &NoLimits};
  return *fields[position];
}

std::array<int16_t*, 9> PreferenceValues::Graphs() {
  return {&Act, &ActClen, &ActFit, &ActFore, &ActFitFore, &ActRes, &Fore, &FitFore, &Res};
}

PreferenceValues& Prefs() {
  static PreferenceValues values;
  return values;
}

// An existing folder or file is found whatever the case of its name.
fs::path PreferencesFile(const fs::path& program_folder) {
  return platform::ResolveNoCase(platform::ResolveNoCase(program_folder, "DEFAULTXSD"),
                                 "UserPreferences.xml");
}

fs::path PreferencesSchemaFile(const fs::path& program_folder) {
  return platform::ResolveNoCase(platform::ResolveNoCase(program_folder, "DEFAULTXSD"),
                                 "UserPrefschema.xsd");
}

bool WritePreferencesFile(const fs::path& program_folder, const PreferenceValues& values) {
  EnterProcedure("tesmod", "WritePrefXmlFile");
  std::string folder = platform::ResolveNoCase(program_folder, "DEFAULTXSD").string();
  platform::xml::Document doc;
  doc.AppendProcessingInstruction("xml", "version=\"1.0\" encoding=\"UTF-8\"");
  doc.AppendComment("user preferences for processing");
  platform::xml::Node root = doc.SetRoot("Pref_Variables");
  root.SetAttribute("inputpath", folder);
  root.SetAttribute("outputpath", folder);
  root.SetAttribute("xmlns:xsd", "http://www.w3.org/2001/XMLSchema-instance");
  // The location names "UserPrefshema.xsd" (no c), as the file always has.
  root.SetAttribute("xsd:noNamespaceSchemaLocation", folder + "/UserPrefshema.xsd");
  for (size_t i = 0; i < kPreferenceCount; ++i) {
    int16_t v = values.At(i);
    root.AppendElement(kPreferenceNames[i],
                       i == 0 ? std::to_string(v) : std::string(v ? "true" : "false"));
  }
  fs::path file = PreferencesFile(program_folder);
  if (!doc.Save(file)) {
    SharedMsgBox().Display(file.string() + " was not made.", platform::mb::OKOnly, kApplicationTitle);
    return false;
  }
  return true;
}

namespace {
bool ReadBoolean(const std::string& text, int16_t& out) {
  std::string t = platform::ToUpper(text);
  while (!t.empty() && (t.back() == ' ' || t.back() == '\t')) t.pop_back();
  while (!t.empty() && (t.front() == ' ' || t.front() == '\t')) t.erase(t.begin());
  if (t == "TRUE" || t == "-1" || t == "1") {
    out = kTrue;
  } else if (t == "FALSE" || t == "0") {
    out = kFalse;
  } else {
    return false;
  }
  return true;
}

bool ReadInt16(const std::string& text, int16_t& out) {
  char* end = nullptr;
  long v = std::strtol(text.c_str(), &end, 10);
  while (end && (*end == ' ' || *end == '\t')) ++end;
  if (end == text.c_str() || (end && *end) || v < -32768 || v > 32767) return false;
  out = static_cast<int16_t>(v);
  return true;
}
}  // namespace

void LoadPrefXmlFile(const fs::path& program_folder, PreferenceValues& values) {
  EnterProcedure("tesmod", "LoadPrefXmlFile");
  TraceText(" set xml objects");
  TraceText(" load user preferences xml file");
  platform::xml::ParseResult parsed = platform::xml::ParseFile(PreferencesFile(program_folder));
  TraceText(" after load user preferences xml file");
  if (!parsed) {
    SharedMsgBox().Display("You have error " + parsed.Describe(), platform::mb::OKOnly,
                           kApplicationTitle);
    return;
  }
  TraceText(" No XML error continue");
  std::vector<platform::xml::Node> children = parsed.document->Root().Children();
  for (size_t i = 0; i < children.size() && i < kPreferenceCount; ++i) {
    TraceText(" Set preferences from XML nodes, # " + std::to_string(i));
    std::string text = children[i].Text();
    // A value that does not read keeps the value in force.
    if (i == 0) {
      ReadInt16(text, values.At(i));
    } else {
      ReadBoolean(text, values.At(i));
    }
  }
}

std::string UserPrefSchemaText() {
  std::vector<std::string> lines = {
      R"(<?xml version="1.0"  encoding="utf-8"?>)",
      R"(<!--this schema is for UserPreferences.xml -->)",
      R"(<xs:Schema attributeFormDefault="unqualified" elementFormDefault="qualified" )"
      R"(xmlns:xs="http://www.w3.org/2001/XMLSchema" )"
      R"(xmlns:vs="http://schemas.microsoft.com/Visual-Studio-Intellisense">)",
      R"(  <xs:element name="Pref_Variables">)",
      R"(    <xs:complextype>)",
      R"(      <xs:sequence>)",
  };
  for (size_t i = 0; i < kPreferenceCount; ++i) {
    std::string name = kPreferenceNames[i];
    if (name == "NOGRAPHS") continue;
    std::string type = i == 0 ? "xs:integer" : "xs:boolean";
    std::string def = i == 0 ? "2" : (name == "AllGraphs" ? "true" : "false");
    lines.push_back("        <xs:element name=\"" + name + "\" type=\"" + type +
                    "\" default=\"" + def + "\" />");
  }
  lines.push_back(R"(      </xs:sequence>)");
  lines.push_back(R"(    </xs:complextype>)");
  lines.push_back(R"(    <xs:attribute name="inputpath" type="xs:string" />)");
  lines.push_back(R"(    <xs:attribute name="outputpath" type="xs:string" />)");
  lines.push_back(R"(  </xs:element>)");
  lines.push_back(R"(</xs:Schema>)");
  std::string text;
  for (const auto& l : lines) text += l + "\r\n";
  return text;
}

bool WriteUserPrefSchema(const fs::path& path) {
  return platform::WriteWholeFile(path, UserPrefSchemaText());
}

int16_t DecimalsFromText(const std::string& text) {
  if (!(text >= "2" && text <= "9")) return 2;
  int16_t v = 0;
  if (!ReadInt16(text, v) || v < 2 || v > 9) return 2;
  return v;
}

int GraphOptionFor(const PreferenceValues& values) {
  if (values.AllGraphs) return 0;
  if (values.SelGraphs) return 1;
  if (values.NOGRAPHS) return 2;
  return 0;
}

void ApplyGraphDialog(const GraphDialogChoice& choice, PreferenceValues& values) {
  values.Decimals = DecimalsFromText(choice.decimals_text);
  switch (choice.option) {
    case 0:
      values.AllGraphs = kTrue;
      values.SelGraphs = kFalse;
      // Leaving "no graphs" behind, or the next run would still draw none.
      values.NOGRAPHS = kFalse;
      break;
    case 1: {
      values.AllGraphs = kFalse;
      values.SelGraphs = kTrue;
      values.NOGRAPHS = kFalse;
      auto graphs = values.Graphs();
      for (size_t i = 0; i < graphs.size(); ++i) *graphs[i] = choice.graphs[i] ? kTrue : kFalse;
      break;
    }
    case 2:
      values.NOGRAPHS = kTrue;
      values.AllGraphs = kFalse;
      values.SelGraphs = kFalse;
      break;
    default: break;
  }
  values.NoLimits = choice.no_limits ? kTrue : kFalse;
}

}  // namespace tessaly::shell
