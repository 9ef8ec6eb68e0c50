// The DDS reader and writer; the header's layout is in the header file.
//
// Main thread, or for reading the background load. Writes nothing but what it is given.

#include "corekit/draw/TEX_dds.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "corekit/base/hl_alert.h"
#include "corekit/base/mnw.h"
#include "corekit/draw/TEX_out.h"
#include "corekit/draw/TEX_s3tc.h"
#include "corekit/files/xmap.h"

namespace {

constexpr size_t header_bytes = 128;
constexpr uint32_t flag_mipmap_count = 1u << 17;
constexpr uint32_t caps_mipmap = 1u << 22;
constexpr uint32_t pixel_fourcc = 4, pixel_rgb = 64, pixel_alpha = 1;
constexpr uint32_t red_of_bgr = 0x00FF0000;

uint32_t get_32(const unsigned char* at) {
  return at[0] | at[1] << 8 | at[2] << 16 | static_cast<uint32_t>(at[3]) << 24;
}

void put_32(unsigned char* at, size_t value) {
  for (int i = 0; i < 4; ++i)
    at[i] = static_cast<unsigned char>(value >> (8 * i));
}

// The TEX_format of the picture; 0 for one that is not read here.
int format_of(const unsigned char* header) {
  const uint32_t pixel_flags = get_32(header + 80);
  int compressed = 0;
  if (pixel_flags & pixel_fourcc) {
    if (std::memcmp(header + 84, "DXT1", 4) == 0) compressed = TEX_dxt1;
    if (std::memcmp(header + 84, "DXT3", 4) == 0) compressed = TEX_dxt3;
    if (std::memcmp(header + 84, "DXT5", 4) == 0) compressed = TEX_dxt5;
    if (!compressed) return 0;
  }
  // RGB wins over the four-character code of a file that has both.
  if (!(pixel_flags & pixel_rgb)) return compressed;
  const int format = pixel_flags & pixel_alpha ? TEX_bgra : TEX_bgr;
  // Makers of files may leave these two empty; if not, they tell of orders not read here.
  const uint32_t bits = get_32(header + 88), red = get_32(header + 92);
  if (bits != 0 && bits != 8u * TEX_pixel_bytes(format)) return 0;
  if (red != 0 && red != red_of_bgr) return 0;
  return format;
}

}  // namespace

int TEX_load_dds(const std::string&, xmap_class* file, unsigned char*& pixels,
                 TEX_image_desc& desc) {
  const unsigned char* const header = file->file_start;
  if (!header || file->file_end - header < static_cast<ptrdiff_t>(header_bytes)) return 0;
  if (std::memcmp(header, "DDS ", 4) != 0) return 0;

  TEX_image_desc found;
  found.format = format_of(header);
  const int64_t height = get_32(header + 12), width = get_32(header + 16);
  if (!found.format || !TEX_size_fits(width, height)) return 0;
  found.width = static_cast<int>(width);
  found.height = static_cast<int>(height);
  const size_t have = static_cast<size_t>(file->file_end - header) - header_bytes;
  if (TEX_level_bytes(found) > have) return 0;
  found.has_mipmaps =
      (get_32(header + 8) & flag_mipmap_count) && (get_32(header + 108) & caps_mipmap);
  if (TEX_bytes_needed_for_image(found) > have) found.has_mipmaps = 0;
  pixels = const_cast<unsigned char*>(header + header_bytes);
  desc = found;
  return 1;
}

int TEX_save_dds(const std::string& path, const unsigned char* pixels, const TEX_image_desc& desc) {
  if (desc.format != TEX_rgba && desc.format != TEX_rgb) {
    MACIBM_fault(at_dds_write_format, "in_desc.format == GL_RGBA || in_desc.format == GL_RGB",
                 path);
    return 0;
  }
  if (!TEX_size_fits(desc.width, desc.height)) return 0;

  // A working copy as RGBA without pad, topmost row first.
  TEX_image_desc work{TEX_rgba, desc.width, desc.height, 0, 0};
  std::vector<unsigned char> copy(TEX_level_bytes(work));
  const int channels = TEX_pixel_bytes(desc.format);
  for (int y = 0; y < desc.height; ++y) {
    const unsigned char* from = pixels + TEX_row_bytes(desc) * y;
    unsigned char* to = copy.data() + TEX_row_bytes(work) * (desc.height - 1 - y);
    for (int x = 0; x < desc.width; ++x, from += channels, to += 4) {
      std::memcpy(to, from, 3);
      to[3] = channels == 4 ? from[3] : 255;
    }
  }

  const int target = desc.format == TEX_rgb ? TEX_dxt1 : TEX_dxt5;
  TEX_image_desc level{target, desc.width, desc.height, 0, 0};
  int levels = 1;
  for (TEX_image_desc next = level; TEX_next_level(next);)
    ++levels;

  unsigned char header[header_bytes] = {};
  std::memcpy(header, "DDS ", 4);
  put_32(header + 4, 124);
  put_32(header + 8, 659463);  // caps, height, width, pixel format, mipmap count, linear size
  put_32(header + 12, static_cast<size_t>(desc.height));
  put_32(header + 16, static_cast<size_t>(desc.width));
  put_32(header + 20, TEX_level_bytes(level));
  put_32(header + 28, static_cast<size_t>(levels));
  put_32(header + 76, 32);
  put_32(header + 80, pixel_fourcc);
  std::memcpy(header + 84, target == TEX_dxt1 ? "DXT1" : "DXT5", 4);
  put_32(header + 108, 4198408);  // complex, texture, mipmap

  std::vector<unsigned char> blocks(TEX_level_bytes(level));
  void* const into = blocks.data();
  TEX_out file(path);
  bool written = file.stream() && std::fwrite(header, sizeof header, 1, file.stream()) == 1;
  while (written) {
    void* out = into;
    const size_t bytes = TEX_level_bytes(level);
    written = TEX_encode_s3tc(work, level, copy.data(), &out, s3tc_normal) &&
              std::fwrite(into, bytes, 1, file.stream()) == 1;
    if (!TEX_next_level(level)) break;
    TEX_halve(work, copy.data());
  }
  return file.finish(written);
}
