#pragma once
// Writes a picture as a baseline JPEG file with libjpeg, reading the 32-bit pixels as they lie
// in memory. The file is byte for byte what the toolkit's own JPEG writer makes of the same
// picture at the same quality (the same header, tables and coding), without its copy of every
// row into 24-bit pixels first, which cost a third of the encoding.
#include <QImage>

#include <filesystem>

namespace tessaly::report {

// `image` is Format_RGB32; false (and no file) when it cannot be written.
bool WriteJpeg(const QImage& image, const std::filesystem::path& file, int quality);

}  // namespace tessaly::report
