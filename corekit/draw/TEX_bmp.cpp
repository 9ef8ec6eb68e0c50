// The BMP reader: the headers field by field, then the rows.
//
// Not by SDL's loader: it takes palettes, other depths and packed rows, each of which is refused
// here in words of its own, and files that are cut short.
//
// Main thread, or the background load. Writes nothing but what it is given.

#include "corekit/draw/TEX_bmp.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "corekit/base/hl_string.h"
#include "corekit/files/xmap.h"

namespace {

// The headers that all but the oldest bitmaps have, in file order.
struct bmp_header {
  uint16_t magic;
  uint32_t file_size;
  uint32_t reserved;
  uint32_t data_offset;
  uint32_t header_size;  // of what follows from here on
  int32_t width;
  int32_t height;  // negative: the topmost row comes first
  uint16_t planes;
  uint16_t bit_count;
  uint32_t compression;
  uint32_t image_size;
  int32_t x_resolution, y_resolution;
  uint32_t colors_used, colors_important;
};
constexpr uint32_t least_header_size = 40;

constexpr UTL_text cut_short = "This bitmap file is cut short!";

template <class field>
bool read_little(xmap_class& file, field& value) {
  if (file.file_end - file.cursor < static_cast<ptrdiff_t>(sizeof value)) return false;
  std::memcpy(&value, file.cursor, sizeof value);
  file.cursor += sizeof value;
  if constexpr (std::endian::native == std::endian::big) {
    unsigned char* bytes = reinterpret_cast<unsigned char*>(&value);
    std::reverse(bytes, bytes + sizeof value);
  }
  return true;
}

bool read_header(xmap_class& file, bmp_header& h) {
  file.cursor = file.file_start;
  return read_little(file, h.magic) && read_little(file, h.file_size) &&
         read_little(file, h.reserved) && read_little(file, h.data_offset) &&
         read_little(file, h.header_size) && read_little(file, h.width) &&
         read_little(file, h.height) && read_little(file, h.planes) &&
         read_little(file, h.bit_count) && read_little(file, h.compression) &&
         read_little(file, h.image_size) && read_little(file, h.x_resolution) &&
         read_little(file, h.y_resolution) && read_little(file, h.colors_used) &&
         read_little(file, h.colors_important);
}

// What stands against reading the file, its size apart.
void check_header(const bmp_header& h, TEX_fault& fault) {
  const struct {
    bool broken;
    UTL_text text;
    alert_source source;
  } rows[] = {
      {h.header_size < least_header_size, "This kind of bitmap file cannot be read!", at_bmp_kind},
      {h.bit_count != 24, "Wrong bitmap color depth for texture!", at_bmp_depth},
      {h.compression != 0, "Compressed bitmaps cannot be used for a texture!", at_bmp_compressed},
  };
  for (const auto& row : rows) {
    if (!row.broken) continue;
    fault.text = row.text;
    fault.source = row.source;
    return;
  }
}

void copy_row(const unsigned char* bgr, unsigned char* to, int width, int format) {
  for (int x = 0; x < width; ++x, bgr += 3) {
    if (format == TEX_alpha) {
      *to++ = TEX_gray(bgr[2], bgr[1], bgr[0]);
      continue;
    }
    *to++ = bgr[2];
    *to++ = bgr[1];
    *to++ = bgr[0];
    if (format == TEX_rgba) *to++ = 255;
  }
}

}  // namespace

int TEX_read_bmp(xmap_class& file, unsigned char*& pixels, unsigned long format, int width_limit,
                 int pow2, TEX_image_desc& desc, TEX_fault& fault) {
  if (!file.file_start || file.file_end - file.file_start < 2) return 0;
  if (std::memcmp(file.file_start, "BM", 2) != 0) return 0;
  const auto broken = [&fault](const char* text, alert_source source) {
    fault.text = text;
    fault.source = source;
    return 0;
  };
  bmp_header header;
  if (!read_header(file, header)) return broken(cut_short, at_bmp_header_cut);
  check_header(header, fault);
  if (fault.text) return 0;

  const bool top_first = header.height < 0;
  const int64_t width = header.width;
  const int64_t height = top_first ? -int64_t{header.height} : header.height;
  TEX_image_desc found;
  found.format = format == TEX_rgba || format == TEX_alpha ? static_cast<int>(format) : TEX_rgb;
  if (TEX_size_fits(width, height)) {
    found.width = static_cast<int>(width);
    found.height = static_cast<int>(height);
    const int64_t file_row = (width * 3 + 3) & ~int64_t{3};
    const int64_t have = file.file_end - file.file_start;
    // The last row may come without the bytes that fill it up.
    const int64_t needed = header.data_offset + file_row * (height - 1) + width * 3;
    if (have < needed) return broken(cut_short, at_bmp_cut);

    unsigned char* const into = TEX_take_buffer(found, pixels, width_limit, pow2);
    if (into) {
      const size_t row = TEX_row_bytes(found);
      const unsigned char* from = file.file_start + header.data_offset;
      for (int64_t y = 0; y < height; ++y, from += file_row)
        copy_row(from, into + row * (top_first ? height - 1 - y : y), found.width, found.format);
      pixels = into;
      desc = found;
      return 1;
    }
  }
  fault.detail =
      str_format("%lld by %lld", static_cast<long long>(width), static_cast<long long>(height));
  return broken(TEX_bad_size, at_bmp_size);
}

int TEX_load_bmp(const std::string& path, xmap_class* file, unsigned char*& pixels,
                 unsigned long format, int width_limit, int pow2, TEX_image_desc* desc) {
  TEX_fault fault;
  TEX_image_desc found;
  const int ok = TEX_read_bmp(*file, pixels, format, width_limit, pow2, found, fault);
  if (fault.text) TEX_report(fault, path);
  if (ok && desc) *desc = found;
  return ok;
}
