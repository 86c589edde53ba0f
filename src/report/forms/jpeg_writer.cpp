#include "report/forms/jpeg_writer.h"

#include <csetjmp>
#include <cstdio>
#include <cmath>
#include <system_error>

#include <jpeglib.h>

namespace tessaly::report {

namespace {

struct ErrorExit {
  jpeg_error_mgr mgr;
  std::jmp_buf jump;
};

void OnError(j_common_ptr info) { std::longjmp(reinterpret_cast<ErrorExit*>(info->err)->jump, 1); }
void NoMessage(j_common_ptr) {}

}  // namespace

bool WriteJpeg(const QImage& image, const std::filesystem::path& file, int quality) {
  if (image.format() != QImage::Format_RGB32 || image.isNull()) return false;
  std::FILE* out = std::fopen(file.c_str(), "wb");
  if (!out) return false;
  jpeg_compress_struct info{};
  ErrorExit error{};
  info.err = jpeg_std_error(&error.mgr);
  error.mgr.error_exit = OnError;
  error.mgr.output_message = NoMessage;
  volatile bool ok = false;  // kept across the jump back from libjpeg's error exit
  if (setjmp(error.jump) == 0) {
    jpeg_create_compress(&info);
    jpeg_stdio_dest(&info, out);
    info.image_width = static_cast<JDIMENSION>(image.width());
    info.image_height = static_cast<JDIMENSION>(image.height());
    info.input_components = 4;
    // RGB32 is 0xffRRGGBB in a 32-bit word: blue, green, red, pad in memory on this
    // little-endian machine.
    info.in_color_space = JCS_EXT_BGRX;
    jpeg_set_defaults(&info);
    // The resolution in the JFIF header as the toolkit writes it: per inch when the dots per
    // metre are closer to a whole number per inch than per centimetre.
    const double x = image.dotsPerMeterX(), y = image.dotsPerMeterY();
    const double per_inch = std::fabs(x * 2.54 / 100 - std::round(x * 2.54 / 100)) +
                            std::fabs(y * 2.54 / 100 - std::round(y * 2.54 / 100));
    const double per_cm = (std::fabs(x / 100 - std::round(x / 100)) + std::fabs(y / 100 - std::round(y / 100))) * 2.54;
    if (per_inch < per_cm) {
      info.density_unit = 1;
      info.X_density = static_cast<UINT16>(std::lround(x * 2.54 / 100));
      info.Y_density = static_cast<UINT16>(std::lround(y * 2.54 / 100));
    } else {
      info.density_unit = 2;
      info.X_density = static_cast<UINT16>((image.dotsPerMeterX() + 50) / 100);
      info.Y_density = static_cast<UINT16>((image.dotsPerMeterY() + 50) / 100);
    }
    jpeg_set_quality(&info, quality, TRUE);
    jpeg_start_compress(&info, TRUE);
    while (info.next_scanline < info.image_height) {
      JSAMPROW row = const_cast<JSAMPROW>(image.constScanLine(static_cast<int>(info.next_scanline)));
      jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    ok = true;
  }
  jpeg_destroy_compress(&info);
  ok = std::fclose(out) == 0 && ok;
  if (!ok) {
    std::error_code ec;
    std::filesystem::remove(file, ec);
  }
  return ok;
}

}  // namespace tessaly::report
