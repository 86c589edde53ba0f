#pragma once
// BPSchema.xsd: the schema of the generation variables file (rwf.his), which start-up
// writes into DEFAULTXSD when it is missing. The reader goes by position, so the order of
// the sequence is the order of the file.
#include <filesystem>
#include <string>

namespace tessaly::genseries {

// The schema's text, CR LF line ends.
std::string BPSchemaText();
// Writes the schema to `path`; false when it cannot be written.
[[nodiscard]] bool WriteBPSchema(const std::filesystem::path& path);

}  // namespace tessaly::genseries
