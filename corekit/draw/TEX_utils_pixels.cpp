// The operations on pixels: reduce, turn, convert, key, composite.
//
// Any thread. Writes only the pixels that it is given.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/mnw.h"
#include "corekit/draw/TEX_s3tc.h"
#include "corekit/draw/TEX_utils.h"
#include "corekit/draw/colr.h"

namespace {

// Where a format keeps each channel of a pixel; -1 for one that it lacks.
struct channel_order {
  int r, g, b, a;
};

channel_order order_of(int format) {
  switch (format) {
    case TEX_rgb:
      return {0, 1, 2, -1};
    case TEX_rgba:
      return {0, 1, 2, 3};
    case TEX_bgr:
      return {2, 1, 0, -1};
    case TEX_bgra:
      return {2, 1, 0, 3};
    case TEX_alpha:
      return {0, 0, 0, -1};
    default:
      return {-1, -1, -1, -1};
  }
}

void swap_rows(unsigned char* a, unsigned char* b, size_t bytes) {
  std::swap_ranges(a, a + bytes, b);
}

void flip_level(const TEX_image_desc& d, unsigned char* pixels) {
  const size_t row = TEX_row_bytes(d);
  for (int low = 0, high = d.height - 1; low < high; ++low, --high)
    swap_rows(pixels + row * low, pixels + row * high, row);
}

void flip_blocks(const TEX_image_desc& d, unsigned char* blocks) {
  const int across = (d.width + 3) / 4, down = (d.height + 3) / 4;
  const size_t row = static_cast<size_t>(across) * TEX_block_bytes(d.format);
  for (int low = 0, high = down - 1; low < high; ++low, --high)
    swap_rows(blocks + row * low, blocks + row * high, row);
  const int rows = std::min(d.height, 4);
  switch (d.format) {
    case TEX_dxt3:
      nv_flip_blocks_dxtc3(blocks, across * down, colr.gamma_differs, rows);
      break;
    case TEX_dxt5:
      nv_flip_blocks_dxtc5(blocks, across * down, colr.gamma_differs, rows);
      break;
    default:
      nv_flip_blocks_dxtc1(blocks, across * down, colr.gamma_differs, rows);
      break;
  }
}

// A place in the source, between two of its pixels.
struct sample {
  int low, high;
  float part;  // of `high`
};

sample sample_at(int pixel, float start, float length, int source_side) {
  const float at =
      (static_cast<float>(pixel) + 0.5f - start) / length * static_cast<float>(source_side) - 0.5f;
  const float held = std::clamp(at, 0.0f, static_cast<float>(source_side - 1));
  const int low = static_cast<int>(held);
  return {low, std::min(low + 1, source_side - 1), held - static_cast<float>(low)};
}

}  // namespace

unsigned char TEX_gray(int r, int g, int b) {
  return static_cast<unsigned char>((6968 * r + 23434 * g + 2366 * b + 16384) >> 15);
}

void TEX_downscale(TEX_image_desc& desc, unsigned char* pixels, int step_x, int step_y) {
  const int channels = TEX_pixel_bytes(desc.format);
  if (channels == 0 || desc.width < 1 || desc.height < 1) return;
  step_x = std::clamp(step_x, 1, desc.width);
  step_y = std::clamp(step_y, 1, desc.height);
  const size_t old_row = TEX_row_bytes(desc);
  desc.width /= step_x;
  desc.height /= step_y;
  desc.has_mipmaps = 0;
  const size_t new_row = TEX_row_bytes(desc);
  if (step_x == 1 && step_y == 1) return;

  // A pixel is never written beyond the source block that it is made from.
  const uint64_t count = static_cast<uint64_t>(step_x) * step_y;
  for (int y = 0; y < desc.height; ++y) {
    const unsigned char* from = pixels + old_row * step_y * y;
    unsigned char* to = pixels + new_row * y;
    for (int x = 0; x < desc.width; ++x, from += step_x * channels, to += channels) {
      uint64_t sums[4] = {};
      for (int row = 0; row < step_y; ++row) {
        const unsigned char* at = from + old_row * row;
        for (int column = 0; column < step_x; ++column) {
          for (int channel = 0; channel < channels; ++channel)
            sums[channel] += *at++;
        }
      }
      for (int channel = 0; channel < channels; ++channel)
        to[channel] = static_cast<unsigned char>((sums[channel] + count / 2) / count);
    }
  }
}

void TEX_halve(TEX_image_desc& desc, unsigned char* pixels) {
  TEX_downscale(desc, pixels, desc.width > 1 ? 2 : 1, desc.height > 1 ? 2 : 1);
}

void TEX_flip_y(const TEX_image_desc& desc, unsigned char* pixels) {
  if (!TEX_pixel_bytes(desc.format) && !TEX_block_bytes(desc.format)) {
    MACIBM_fault(at_picture_format, "Illegal format!", str_format("%d", desc.format));
    return;
  }
  TEX_image_desc level = desc;
  do {
    if (TEX_block_bytes(level.format)) {
      flip_blocks(level, pixels);
    } else {
      flip_level(level, pixels);
    }
    pixels += TEX_level_bytes(level);
  } while (desc.has_mipmaps && TEX_next_level(level));
}

bool TEX_convert(TEX_image_desc& desc, unsigned char* pixels, int format) {
  const channel_order from_order = order_of(desc.format), to_order = order_of(format);
  if (from_order.r < 0 || to_order.r < 0) return false;
  const size_t from_bytes = TEX_pixel_bytes(desc.format), to_bytes = TEX_pixel_bytes(format);
  const size_t row = desc.width * from_bytes;
  for (int y = 1; desc.pad != 0 && y < desc.height; ++y)
    std::memmove(pixels + row * y, pixels + (row + desc.pad) * y, row);

  const bool was_gray = desc.format == TEX_alpha;
  const auto convert = [&](size_t i) {
    const unsigned char* from = pixels + i * from_bytes;
    unsigned char* to = pixels + i * to_bytes;
    const unsigned char r = from[from_order.r], g = from[from_order.g], b = from[from_order.b];
    const unsigned char a = from_order.a < 0 ? 255 : from[from_order.a];
    if (format == TEX_alpha) {
      *to = was_gray ? r : TEX_gray(r, g, b);
      return;
    }
    to[to_order.r] = r;
    to[to_order.g] = g;
    to[to_order.b] = b;
    if (to_order.a >= 0) to[to_order.a] = a;
  };
  const size_t count = static_cast<size_t>(desc.width) * desc.height;
  if (format != desc.format && to_bytes > from_bytes) {
    // From the end, or pixels that grow would overwrite those still to be read.
    for (size_t i = count; i-- > 0;)
      convert(i);
  } else if (format != desc.format) {
    for (size_t i = 0; i < count; ++i)
      convert(i);
  }
  desc.format = format;
  desc.pad = 0;
  desc.has_mipmaps = 0;
  return true;
}

void TEX_chroma_key(const TEX_image_desc& desc, unsigned char* pixels, const unsigned char* key,
                    int tolerance) {
  if (desc.format != TEX_rgba) return;
  const size_t row = TEX_row_bytes(desc);
  for (int y = 0; y < desc.height; ++y) {
    unsigned char* pixel = pixels + row * y;
    for (int x = 0; x < desc.width; ++x, pixel += 4) {
      const int distance =
          std::abs(pixel[0] - key[0]) + std::abs(pixel[1] - key[1]) + std::abs(pixel[2] - key[2]);
      if (distance < tolerance) pixel[3] = 0;
    }
  }
}

void TEX_composite(const TEX_image_desc& src, const TEX_image_desc& dst,
                   const unsigned char* src_pixels, unsigned char* dst_pixels, float x1, float y1,
                   float x2, float y2) {
  const int src_bytes = TEX_pixel_bytes(src.format), dst_bytes = TEX_pixel_bytes(dst.format);
  if (src_bytes < 3 || dst_bytes < 3 || src.width < 1 || src.height < 1) return;
  if (!(x2 > x1) || !(y2 > y1)) return;  // no area, or not numbers
  const auto low_of = [](float at, int side) {
    return static_cast<int>(std::floor(std::clamp(at, 0.0f, static_cast<float>(side))));
  };
  const auto high_of = [](float at, int side) {
    return static_cast<int>(std::ceil(std::clamp(at, 0.0f, static_cast<float>(side))));
  };
  // Positions in the source follow the rounded rectangle, so that all of the source shows.
  const float left = std::floor(x1), width = std::ceil(x2) - left;
  const float bottom = std::floor(y1), height = std::ceil(y2) - bottom;

  for (int y = low_of(y1, dst.height); y < high_of(y2, dst.height); ++y) {
    const sample v = sample_at(y, bottom, height, src.height);
    const unsigned char* low_row = src_pixels + TEX_row_bytes(src) * v.low;
    const unsigned char* high_row = src_pixels + TEX_row_bytes(src) * v.high;
    for (int x = low_of(x1, dst.width); x < high_of(x2, dst.width); ++x) {
      const sample u = sample_at(x, left, width, src.width);
      unsigned char* to = dst_pixels + TEX_row_bytes(dst) * y + static_cast<size_t>(x) * dst_bytes;
      for (int channel = 0; channel < dst_bytes; ++channel) {
        if (channel >= src_bytes) {
          to[channel] = 255;
          continue;
        }
        const size_t a = static_cast<size_t>(u.low) * src_bytes + channel;
        const size_t b = static_cast<size_t>(u.high) * src_bytes + channel;
        const float low = std::lerp(float(low_row[a]), float(low_row[b]), u.part);
        const float high = std::lerp(float(high_row[a]), float(high_row[b]), u.part);
        to[channel] = static_cast<unsigned char>(std::lround(std::lerp(low, high, v.part)));
      }
    }
  }
}
