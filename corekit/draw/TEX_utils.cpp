// The pixel buffers, sizes of pictures, and what the readers share.
//
// Main thread, or the background load (see the header). Writes nothing but what it is given.

#include "corekit/draw/TEX_utils.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/mnw.h"
#include "corekit/files/xmap.h"

alignas(16) unsigned char scratch_array[scratch_bytes];
alignas(16) unsigned char scratch_array_temp[scratch_bytes];
int scratch_dx = 0;
int scratch_dy = 0;

// --- description of a picture ------------------------------------------------------------------

int TEX_pixel_bytes(int format) {
  switch (format) {
    case TEX_alpha:
      return 1;
    case TEX_rgb:
    case TEX_bgr:
      return 3;
    case TEX_rgba:
    case TEX_bgra:
    case TEX_depth:
    case TEX_depth_32:
      return 4;
    default:
      return 0;
  }
}

int TEX_block_bytes(int format) {
  switch (format) {
    case TEX_dxt1:
    case TEX_dxt1_alpha:
      return 8;
    case TEX_dxt3:
    case TEX_dxt5:
      return 16;
    default:
      return 0;
  }
}

size_t TEX_row_bytes(const TEX_image_desc& d) {
  const bool is_depth = d.format == TEX_depth || d.format == TEX_depth_32;
  return static_cast<size_t>(d.width) * TEX_pixel_bytes(d.format) + (is_depth ? 0 : d.pad);
}

size_t TEX_level_bytes(const TEX_image_desc& d) {
  if (d.width < 1 || d.height < 1) return 0;
  if (TEX_pixel_bytes(d.format)) return TEX_row_bytes(d) * d.height;
  // What squish::GetStorageRequirements says, which counts in 32 bits.
  const size_t across = (static_cast<size_t>(d.width) + 3) / 4;
  const size_t down = (static_cast<size_t>(d.height) + 3) / 4;
  return across * down * TEX_block_bytes(d.format);
}

size_t TEX_bytes_needed_for_image(const TEX_image_desc& d) {
  size_t bytes = TEX_level_bytes(d);
  if (bytes == 0 || !d.has_mipmaps) return bytes;
  for (TEX_image_desc level = d; TEX_next_level(level);)
    bytes += TEX_level_bytes(level);
  return bytes;
}

bool TEX_next_level(TEX_image_desc& d) {
  if (d.width <= 1 && d.height <= 1) return false;
  d.width = std::max(1, d.width / 2);
  d.height = std::max(1, d.height / 2);
  return true;
}

bool TEX_size_fits(long long dx, long long dy) {
  constexpr long long pixels = scratch_bytes / 4;
  return dx >= 1 && dy >= 1 && dx <= pixels && dy <= pixels / dx;
}

int check_dxy(const std::string& name, int dx, int dy) {
  if (TEX_size_fits(dx, dy)) return 1;
  const std::string size = str_format("%d by %d", dx, dy);
  __MACIBM_alert(win_main, TEX_bad_size, name, size, "", t_exit, at_picture_size);
  return 0;
}

// --- for the readers
// ------------------------------------------------------------------------------

unsigned char* TEX_take_buffer(TEX_image_desc& desc, unsigned char* pixels, int limit, int pow2) {
  const auto raised = [pow2](long long side) {
    return pow2 ? static_cast<long long>(std::bit_ceil(static_cast<uint64_t>(side))) : side;
  };
  if (!TEX_size_fits(desc.width, desc.height)) return nullptr;
  const long long row = raised(std::max(desc.width, limit));
  const long long rows = raised(desc.height);
  if (!TEX_size_fits(row, rows)) return nullptr;
  desc.pad = static_cast<int>(row - desc.width) * TEX_pixel_bytes(desc.format);
  const size_t bytes = TEX_row_bytes(desc) * rows;
  if (!pixels) return static_cast<unsigned char*>(std::calloc(bytes, 1));
  if (row != desc.width || rows != desc.height) std::memset(pixels, 0, bytes);
  return pixels;
}

void TEX_report(const TEX_fault& fault, const std::string& path) {
  __MACIBM_alert(win_main, fault.text, path, fault.detail, "", t_exit, fault.source);
}
