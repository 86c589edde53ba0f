#include "formats/batch_schema.h"

#include "platform/textfile.h"

namespace tessaly::batch {

std::string BatchSchemaText() {
  static const char* const kLines[] = {
      R"(<?xml version="1.0" encoding="UTF-8"?>)",
      R"(<xsd:schema xmlns:xsd="http://www.w3.org/2001/XMLSchema" elementFormDefault="qualified">)",
      R"(  <xsd:complexType name="seriesType">)",
      R"(    <xsd:sequence>)",
      R"(      <xsd:element name="data" type="xsd:string"/>)",
      R"(      <xsd:element name="details" type="xsd:string"/>)",
      R"(      <xsd:element name="history" type="xsd:string"/>)",
      R"(      <xsd:element name="forecasts" type="xsd:string"/>)",
      R"(      <xsd:element name="afit" type="xsd:string"/>)",
      R"(      <xsd:element name="af" type="xsd:string"/>)",
      R"(      <xsd:element name="aff" type="xsd:string"/>)",
      R"(      <xsd:element name="ff" type="xsd:string"/>)",
      R"(      <xsd:element name="ac" type="xsd:string"/>)",
      R"(      <xsd:element name="res" type="xsd:string"/>)",
      R"(      <xsd:element name="ar" type="xsd:string"/>)",
      R"(    </xsd:sequence>)",
      R"(    <xsd:attribute name="name" type="xsd:string"/>)",
      R"(    <xsd:attribute name="complete" type="xsd:integer"/>)",
      R"(    <xsd:attribute name="err" type="xsd:integer"/>)",
      R"(    <xsd:attribute name="rundate" type="xsd:string"/>)",
      R"(  </xsd:complexType>)",
      R"(  <xsd:complexType name="setType">)",
      R"(    <xsd:sequence>)",
      R"(      <xsd:element name="series" type="seriesType" maxOccurs="unbounded"/>)",
      R"(    </xsd:sequence>)",
      R"(    <xsd:attribute name="runcomplete" type="xsd:integer"/>)",
      R"(    <xsd:attribute name="objective" type="xsd:integer"/>)",
      R"(  </xsd:complexType>)",
      R"(  <xsd:complexType name="batchType">)",
      R"(    <xsd:sequence>)",
      R"(      <xsd:element name="set" type="setType"/>)",
      R"(    </xsd:sequence>)",
      R"(    <xsd:attribute name="inputpath" type="xsd:string"/>)",
      R"(    <xsd:attribute name="outputpath" type="xsd:string"/>)",
      R"(  </xsd:complexType>)",
      R"(  <xsd:element name="batch" type="batchType"/>)",
      R"(</xsd:schema>)",
  };
  std::string text;
  for (const char* line : kLines) {
    text += line;
    text += "\r\n";
  }
  return text;
}

bool CreateBATCHXSD(const std::filesystem::path& path) {
  return platform::WriteWholeFile(path, BatchSchemaText());
}

}  // namespace tessaly::batch
