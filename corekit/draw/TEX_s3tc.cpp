// Compression and decompression through libsquish, and the turning of compressed blocks.
//
// A colour block is two 5-6-5 colours and then, a byte for each row, four 2-bit indices. DXT3 has
// two bytes of alpha a row in front of it; DXT5 has two alphas and sixteen 3-bit indices.
//
// Any thread. Writes nothing but what it is given.

#include "corekit/draw/TEX_s3tc.h"

#include <squish.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include "corekit/draw/colr.h"

// --- compression --------------------------------------------------------------------------------

namespace {

// libsquish's flag of a format; 0 for one that is not compressed.
int squish_format(int format) {
  switch (format) {
    case TEX_dxt1:
    case TEX_dxt1_alpha:
      return squish::kDxt1;
    case TEX_dxt3:
      return squish::kDxt3;
    case TEX_dxt5:
      return squish::kDxt5;
    default:
      return 0;
  }
}

bool can_code(const TEX_image_desc& plain, const TEX_image_desc& packed) {
  return (plain.format == TEX_rgb || plain.format == TEX_rgba) && squish_format(packed.format) &&
         plain.width == packed.width && plain.height == packed.height &&
         TEX_size_fits(plain.width, plain.height);
}

// libsquish knows RGBA without pad only.
bool is_squish_layout(const TEX_image_desc& d) {
  return d.format == TEX_rgba && d.pad == 0;
}

}  // namespace

int TEX_encode_s3tc(const TEX_image_desc& in, const TEX_image_desc& out,
                    const unsigned char* pixels, void** blocks, int quality) {
  if (!can_code(in, out)) return 0;
  if (!*blocks) *blocks = std::malloc(TEX_level_bytes(out));
  if (!*blocks) return 0;
  const int fit = quality == s3tc_fast   ? squish::kColourRangeFit
                  : quality == s3tc_best ? squish::kColourIterativeClusterFit
                                         : squish::kColourClusterFit;
  const int flags = squish_format(out.format) | fit;
  if (is_squish_layout(in)) {
    squish::CompressImage(pixels, in.width, in.height, *blocks, flags);
    return 1;
  }
  const size_t row = TEX_row_bytes(in);
  const int channels = TEX_pixel_bytes(in.format);
  std::vector<unsigned char> rgba(static_cast<size_t>(in.width) * in.height * 4, 255);
  unsigned char* to = rgba.data();
  for (int y = 0; y < in.height; ++y) {
    const unsigned char* from = pixels + row * y;
    for (int x = 0; x < in.width; ++x, from += channels, to += 4)
      std::memcpy(to, from, channels);
  }
  squish::CompressImage(rgba.data(), in.width, in.height, *blocks, flags);
  return 1;
}

int TEX_decode_s3tc(const TEX_image_desc& in, const TEX_image_desc& out, const void* blocks,
                    unsigned char** pixels) {
  if (!can_code(out, in)) return 0;
  if (!*pixels) *pixels = static_cast<unsigned char*>(std::calloc(TEX_level_bytes(out), 1));
  if (!*pixels) return 0;
  const int flags = squish_format(in.format);
  if (is_squish_layout(out)) {
    squish::DecompressImage(*pixels, out.width, out.height, blocks, flags);
    return 1;
  }
  const size_t row = TEX_row_bytes(out);
  const int channels = TEX_pixel_bytes(out.format);
  std::vector<unsigned char> rgba(static_cast<size_t>(out.width) * out.height * 4);
  squish::DecompressImage(rgba.data(), out.width, out.height, blocks, flags);
  const unsigned char* from = rgba.data();
  for (int y = 0; y < out.height; ++y) {
    unsigned char* to = *pixels + row * y;
    for (int x = 0; x < out.width; ++x, from += 4, to += channels)
      std::memcpy(to, from, channels);
  }
  return 1;
}

// --- turning ------------------------------------------------------------------------------------

namespace {

uint16_t get_16(const unsigned char* at) {
  return static_cast<uint16_t>(at[0] | at[1] << 8);
}

void put_16(unsigned char* at, int value) {
  at[0] = static_cast<unsigned char>(value);
  at[1] = static_cast<unsigned char>(value >> 8);
}

// The next lower and the next higher colour, as the comparison of two 16-bit words sees it.
int DecColor565(int color) {
  return std::max(color - 1, 0);
}
int IncColor565(int color) {
  return std::min(color + 1, 0xFFFF);
}

// A 5- or 6-bit part of a colour through the gamma table, by way of 8 bits.
int corrected(int part, int top) {
  return (colr.gamma_table[(part * 255 + top / 2) / top] * top + 127) / 255;
}

int corrected_565(int color) {
  return corrected(color >> 11, 31) << 11 | corrected(color >> 5 & 63, 63) << 5 |
         corrected(color & 31, 31);
}

// Corrects the two colours of a colour block. Which of them is the greater says how DXT1 mixes
// them, so that must not change.
void nv_gamma_correct(unsigned char* block) {
  const int old_0 = get_16(block), old_1 = get_16(block + 2);
  int new_0 = corrected_565(old_0), new_1 = corrected_565(old_1);
  if (old_0 > old_1 && new_0 <= new_1) {
    new_1 = std::min(new_0, new_1);
    if (new_1 > 0) {
      new_1 = DecColor565(new_1);
    } else {
      new_0 = IncColor565(new_1);
    }
  } else if (old_0 <= old_1 && new_0 > new_1) {
    new_0 = new_1;
  }
  put_16(block, new_0);
  put_16(block + 2, new_1);
}

void flip_color(unsigned char* block, int gamma, int rows) {
  std::reverse(block + 4, block + 4 + rows);
  if (gamma) nv_gamma_correct(block);
}

void nv_flip_dxt5_alpha(unsigned char* block, int rows) {
  constexpr int row_bits = 12;
  constexpr uint64_t row_mask = (1 << row_bits) - 1;
  uint64_t indices = 0;
  for (int i = 0; i < 6; ++i)
    indices |= static_cast<uint64_t>(block[2 + i]) << (8 * i);
  uint64_t turned = indices;
  for (int row = 0; row < rows; ++row) {
    const auto to = static_cast<unsigned>((rows - 1 - row) * row_bits);
    turned = (turned & ~(row_mask << to)) | (indices >> (row * row_bits) & row_mask) << to;
  }
  for (int i = 0; i < 6; ++i)
    block[2 + i] = static_cast<unsigned char>(turned >> (8 * i));
}

}  // namespace

void nv_flip_blocks_dxtc1(unsigned char* blocks, int count, int gamma, int rows) {
  for (int i = 0; i < count; ++i, blocks += 8)
    flip_color(blocks, gamma, rows);
}

void nv_flip_blocks_dxtc3(unsigned char* blocks, int count, int gamma, int rows) {
  for (int i = 0; i < count; ++i, blocks += 16) {
    for (int low = 0, high = rows - 1; low < high; ++low, --high)
      std::swap_ranges(blocks + low * 2, blocks + low * 2 + 2, blocks + high * 2);
    flip_color(blocks + 8, gamma, rows);
  }
}

void nv_flip_blocks_dxtc5(unsigned char* blocks, int count, int gamma, int rows) {
  for (int i = 0; i < count; ++i, blocks += 16) {
    nv_flip_dxt5_alpha(blocks, rows);
    flip_color(blocks + 8, gamma, rows);
  }
}
