#include "formats/bp_schema.h"

#include <vector>

#include "platform/textfile.h"

namespace tessaly::genseries {

namespace {
struct Field {
  const char* name;
  const char* type;
  const char* default_value;  // nullptr: none
};

// The 33 places of BP_Variables after its comment; place 24 (Holidays) is complex.
const Field kFields[] = {
    {"FirstObjective", "xs:integer", "0"},
    {"SecondObjective", "xs:integer", "0"},
    {"ThirdObjective", "xs:integer", "0"},
    {"NumberOfNewSeries", "xs:integer", "0"},
    {"BPSeasonality", "xs:string", nullptr},
    {"MajorPeriod", "xs:string", nullptr},
    {"MinorPeriod", "xs:string", nullptr},
    {"LevelStartYear", "xs:string", nullptr},
    {"LevelStartPeriod", "xs:string", nullptr},
    {"LevelEndYear", "xs:string", nullptr},
    {"LevelEndPeriod", "xs:string", nullptr},
    {"PulseStartYear", "xs:string", nullptr},
    {"PulseStartPeriod", "xs:string", nullptr},
    {"PulseEndYear", "xs:string", nullptr},
    {"PulseEndPeriod", "xs:string", nullptr},
    {"SPStartYear", "xs:string", nullptr},
    {"SPStartPeriod", "xs:string", nullptr},
    {"SPEndYear", "xs:string", nullptr},
    {"SPEndPeriod", "xs:string", nullptr},
    {"TrendStartYear", "xs:string", nullptr},
    {"TrendStartPeriod", "xs:string", nullptr},
    {"TrendEndYear", "xs:string", nullptr},
    {"TrendEndPeriod", "xs:string", nullptr},
    {"Holidays", nullptr, nullptr},
    {"Dateof1stHolidayObservation", "xs:string", "00/00/01"},
    {"NumberofHolidaysSelected", "xs:integer", "0"},
    {"UserDefName", "xs:string", nullptr},
    {"UserDefType", "xs:integer", "0"},
    {"UserDefMethod", "xs:string", nullptr},
    {"DateOfFirstObservation", "xs:string", "00/00/01"},
    {"SelectedDay", "xs:integer", "0"},
    {"SelectedMonth", "xs:integer", "0"},
    {"SelectedQuarter", "xs:integer", "0"},
};

std::string Element(const std::string& indent, const char* name, const char* type,
                    const char* default_value) {
  std::string line = indent + "<xs:element name=\"" + name + "\" type=\"" + type + "\"";
  if (default_value) line += std::string(" default=\"") + default_value + "\"";
  return line + " />";
}
}  // namespace

std::string BPSchemaText() {
  std::vector<std::string> lines = {
      R"(<?xml version="1.0" encoding="utf-8"?>)",
      R"(<!--this schema is for BPVariables.xml -->)",
      R"(<xs:schema attributeFormDefault="unqualified" elementFormDefault="qualified" )"
      R"(xmlns:xs="http://www.w3.org/2001/XMLSchema" )"
      R"(xmlns:vs="http://schemas.microsoft.com/Visual-Studio-Intellisense">)",
      R"(  <xs:element name="BP_Variables">)",
      R"(    <xs:complexType>)",
      R"(      <xs:sequence>)",
  };
  for (const Field& f : kFields) {
    if (f.type) {
      lines.push_back(Element("        ", f.name, f.type, f.default_value));
      continue;
    }
    lines.push_back(R"(        <xs:element name="Holidays">)");
    lines.push_back(R"(          <xs:complexType>)");
    lines.push_back(R"(            <xs:sequence>)");
    for (int n = 1; n <= 18; ++n) {
      std::string name = "Holiday" + std::to_string(n);
      lines.push_back(Element("              ", name.c_str(), "xs:string", nullptr));
    }
    lines.push_back(R"(            </xs:sequence>)");
    lines.push_back(R"(          </xs:complexType>)");
    lines.push_back(R"(        </xs:element>)");
  }
  lines.push_back(R"(      </xs:sequence>)");
  lines.push_back(R"(      <xs:attribute name="inputpath" type="xs:string" />)");
  lines.push_back(R"(      <xs:attribute name="outputpath" type="xs:string" />)");
  lines.push_back(R"(    </xs:complexType>)");
  lines.push_back(R"(  </xs:element>)");
  lines.push_back(R"(</xs:schema>)");
  std::string text;
  for (const auto& l : lines) text += l + "\r\n";
  return text;
}

bool WriteBPSchema(const std::filesystem::path& path) {
  return platform::WriteWholeFile(path, BPSchemaText());
}

}  // namespace tessaly::genseries
