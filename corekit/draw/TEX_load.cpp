// The choice of a reader for a picture's file, and the rule for texture sizes.
//
// Main thread, or the background load (see the header). Writes nothing but what it is given.

#include "corekit/draw/TEX_load.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "corekit/draw/TEX_bmp.h"
#include "corekit/draw/TEX_png.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/tman.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/xmap.h"

// --- size of a texture -------------------------------------------------------------------------

float TEX_scale_of_setting(int tex_res) {
  return 1.0f / static_cast<float>(1 << (5 - std::clamp(tex_res, 0, 5)));
}

float TEX_get_scale(int flags, int dx, int dy, int* out_dx, int* out_dy, int mode) {
  float scale = TEX_scale_of_setting(ren.tex_res);
  if (flags & tex_double_scale) scale = std::min(scale * 2.0f, 1.0f);
  if (flags & tex_halve_scale) scale *= 0.5f;
  if ((flags & tex_full_size) || mode == 1) scale = 1.0f;

  // No side may vanish, and none may be more than the driver takes.
  scale = std::max(scale, 1.0f / static_cast<float>(std::min(dx, dy)));
  const auto scaled = [&scale](int side) {
    return std::max(1, static_cast<int>(static_cast<float>(side) * scale));
  };
  while (std::max(scaled(dx), scaled(dy)) > std::max(ren.max_texture_size, 1))
    scale *= 0.5f;

  const auto sized = [flags](int side) {
    if (flags & tex_exact_size) return side;
    return static_cast<int>(std::bit_ceil(static_cast<unsigned>(side)));
  };
  *out_dx = sized(scaled(dx));
  *out_dy = sized(scaled(dy));
  return scale;
}

// --- files -------------------------------------------------------------------------------------

int TEX_load_any(const std::string& path, unsigned char*& pixels, unsigned long format, int max_dim,
                 int pow2, TEX_image_desc* desc) {
  constexpr unsigned char png_signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  xmap_class file(path);
  if (!file.file_start || file.file_end - file.file_start < 8) return 0;
  if (std::memcmp(file.file_start, "BM", 2) == 0) {
    return TEX_load_bmp(path, &file, pixels, format, max_dim, pow2, desc);
  }
  if (std::memcmp(file.file_start, png_signature, sizeof png_signature) == 0) {
    return TEX_load_png(path, &file, pixels, format, max_dim, pow2, 0, desc);
  }
  return 0;
}

int TEX_load_any_ext(const std::string& path, unsigned char*& pixels, unsigned long format,
                     int max_dim, int pow2, TEX_image_desc* desc) {
  constexpr size_t extension = 4;
  if (path.size() <= extension) return 0;
  const std::string stem = path.substr(0, path.size() - extension);
  for (const char* other : {".png", ".bmp"}) {
    if (file_exists(stem + other)) {
      return TEX_load_any(stem + other, pixels, format, max_dim, pow2, desc);
    }
  }
  return 0;
}
