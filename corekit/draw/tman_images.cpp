// From the name of a texture to its picture in scratch_array: find the file, read it, reduce it,
// lay its rows out as OpenGL takes them.
//
// Main thread, or the worker of the background load; no OpenGL. Writes scratch_array, scratch_dx
// and scratch_dy, and overwrites scratch_array_temp.

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "corekit/base/UTL_cmdline.h"
#include "corekit/base/hl_string.h"
#include "corekit/draw/OGL_extensions.h"
#include "corekit/draw/TEX_bmp.h"
#include "corekit/draw/TEX_dds.h"
#include "corekit/draw/TEX_load.h"
#include "corekit/draw/TEX_png.h"
#include "corekit/draw/TEX_s3tc.h"
#include "corekit/draw/TEX_utils.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/tman.h"
#include "corekit/draw/tman_int.h"
#include "corekit/files/xmap.h"

namespace {

// What a keyed picture has in place of transparency: magenta, and what a painting program's
// rounding makes of it.
constexpr unsigned char key_color[3] = {255, 0, 255};
constexpr int key_tolerance = 8;

bool is_keyed(int flags) {
  const int color = flags & tex_color_mask;
  return color == tex_rgb_keyed || color == tex_rgba_keyed;
}

// What the reader is asked for: a keyed picture needs alpha, whatever it becomes.
int format_to_read(int flags) {
  const int color = flags & tex_color_mask;
  if (color == tex_alpha) return TEX_alpha;
  return color == tex_rgb ? TEX_rgb : TEX_rgba;
}

std::string with_extension(const std::string& path, const char* extension) {
  const size_t leaf = path.size() - path_leaf(path).size();
  const size_t dot = path.rfind('.');
  const bool has_one = dot != std::string::npos && dot > leaf;
  return (has_one ? path.substr(0, dot) : path) + extension;
}

// Whether a compressed picture goes to OpenGL as it is, which saves decoding it and most of its
// video memory. Into `format` goes the one to send it as.
bool can_stay_compressed(const TEX_image_desc& d, int flags, int* format) {
  if (!TEX_block_bytes(d.format) || !glExt.s3tc_avail || is_keyed(flags)) return false;
  const int wanted = format_to_read(flags);
  if (wanted == TEX_alpha || (wanted == TEX_rgb && d.format != TEX_dxt1)) return false;
  *format = wanted == TEX_rgba && d.format == TEX_dxt1 ? TEX_dxt1_alpha : d.format;

  int dx = 0, dy = 0;
  const float scale = TEX_get_scale(flags, d.width, d.height, &dx, &dy, 0);
  if (scale < 1.0f || dx != d.width || dy != d.height) return false;
  // Only such heights can be turned block by block.
  if (d.height > 4 && d.height % 4 != 0) return false;
  // Levels cannot be made of blocks, so they must be there if they are wanted.
  const bool wants_levels = (flags & tex_mipmaps) && !(flags & tex_exact_size);
  if (!wants_levels) return true;
  const auto power_of_2 = [](int side) { return std::has_single_bit(static_cast<unsigned>(side)); };
  return d.has_mipmaps && power_of_2(d.width) && power_of_2(d.height);
}

// A DDS into scratch_array, turned, compressed or in the format wanted.
int take_dds(const std::string& path, xmap_class& file, int flags, TEX_image_desc& desc) {
  unsigned char* data = nullptr;
  if (!TEX_load_dds(path, &file, data, desc)) return 0;
  int compressed = 0;
  if (can_stay_compressed(desc, flags, &compressed)) {
    std::memcpy(scratch_array, data, TEX_bytes_needed_for_image(desc));
    desc.format = compressed;
    TEX_flip_y(desc, scratch_array);
    return 1;
  }
  desc.has_mipmaps = 0;
  if (TEX_block_bytes(desc.format)) {
    const TEX_image_desc plain{TEX_rgba, desc.width, desc.height, 0, 0};
    unsigned char* into = scratch_array;
    if (!TEX_decode_s3tc(desc, plain, data, &into)) return 0;
    desc = plain;
  } else {
    std::memcpy(scratch_array, data, TEX_level_bytes(desc));
  }
  TEX_flip_y(desc, scratch_array);
  return TEX_convert(desc, scratch_array, format_to_read(flags)) ? 1 : 0;
}

int take_file(const std::string& path, xmap_class& file, int flags, TEX_image_desc& desc) {
  constexpr unsigned char png_signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  const size_t have = static_cast<size_t>(file.file_end - file.file_start);
  const auto begins = [&](const void* bytes, size_t count) {
    return have >= count && std::memcmp(file.file_start, bytes, count) == 0;
  };
  unsigned char* into = scratch_array;
  const unsigned long format = static_cast<unsigned long>(format_to_read(flags));
  if (begins("DDS ", 4)) return take_dds(path, file, flags, desc);
  if (begins(png_signature, sizeof png_signature)) {
    return TEX_load_png(path, &file, into, format, 0, 0, 0, &desc);
  }
  return TEX_load_bmp(path, &file, into, format, 0, 0, &desc);
}

// Moves the rows apart to `dx` pixels a row and clears what is not picture, up to `dy` rows.
void widen_rows(const TEX_image_desc& desc, int dx, int dy) {
  const size_t channels = TEX_pixel_bytes(desc.format);
  const size_t old_row = desc.width * channels, new_row = dx * channels;
  for (int y = desc.height; y-- > 0;) {
    unsigned char* const to = scratch_array + new_row * y;
    std::memmove(to, scratch_array + old_row * y, old_row);
    std::memset(to + old_row, 0, new_row - old_row);
  }
  std::memset(scratch_array + new_row * desc.height, 0, new_row * (dy - desc.height));
}

// Reduces the picture in scratch_array and lays it out as a texture; fills load's results.
int fit_picture(TEX_image_desc& desc, int flags, tex_load_vars& load) {
  if (is_keyed(flags)) TEX_chroma_key(desc, scratch_array, key_color, key_tolerance);
  const float scale = TEX_get_scale(flags, desc.width, desc.height, &load.dx, &load.dy, 0);
  const int step = static_cast<int>(std::lround(1.0f / scale));
  TEX_downscale(desc, scratch_array, step, step);
  if (desc.width > load.dx || desc.height > load.dy || !TEX_size_fits(load.dx, load.dy)) return 0;
  widen_rows(desc, load.dx, load.dy);
  load.format = desc.format;
  load.pixel_bytes = TEX_pixel_bytes(desc.format);
  load.has_mipmaps = 0;
  return 1;
}

}  // namespace

int load_any_into_scratch(const std::string& path, int flags, tex_load_vars& load) {
  if ((flags & tex_color_mask) == tex_depth) return 0;  // no file holds one
  xmap_class file("");
  for (const char* extension : {".dds", ".png", ".bmp"}) {
    if (std::strcmp(extension, ".dds") == 0 && cmdline.has_option("--no_dds")) continue;
    const std::string name = with_extension(path, extension);
    TEX_image_desc desc;
    if (!file.retry(name) || !take_file(name, file, flags, desc)) continue;
    if (TEX_block_bytes(desc.format)) {
      load.dx = desc.width;
      load.dy = desc.height;
      load.format = desc.format;
      load.pixel_bytes = 0;
      load.has_mipmaps = desc.has_mipmaps;
    } else if (!fit_picture(desc, flags, load)) {
      continue;
    }
    load.scale_s = static_cast<float>(desc.width) / static_cast<float>(load.dx);
    load.scale_t = static_cast<float>(desc.height) / static_cast<float>(load.dy);
    scratch_dx = load.dx;
    scratch_dy = desc.height;
    return 1;
  }
  return 0;
}
