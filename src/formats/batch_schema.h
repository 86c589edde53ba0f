#pragma once
// The schema of project files, batchschema1.0.2.xsd, which start-up writes into
// DEFAULTXSD when it is missing and which cBatchFile::Load validates against.
#include <filesystem>
#include <string>

namespace tessaly::batch {

// The schema's file name: also what Load looks for on a project's second line to tell a
// project of the current form from one written for an older schema.
inline constexpr const char* kBatchSchemaName = "batchschema1.0.2.xsd";

// The schema's text, CR LF line ends.
std::string BatchSchemaText();

// Writes the schema to `path` (replacing any file there). False when it cannot be written.
[[nodiscard]] bool CreateBATCHXSD(const std::filesystem::path& path);

}  // namespace tessaly::batch
