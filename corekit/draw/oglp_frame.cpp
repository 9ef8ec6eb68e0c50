// What concerns a whole frame: the background, the reading back.
//
// Main thread. Writes scratch_array and its sizes, and the size of the tiled background.

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "corekit/base/hl_string.h"
#include "corekit/base/hl_types.h"
#include "corekit/base/mnw.h"
#include "corekit/draw/TEX_load.h"
#include "corekit/draw/TEX_png.h"
#include "corekit/draw/TEX_utils.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/oglp_draw.h"
#include "corekit/draw/oglp_watch.h"
#include "corekit/draw/tman.h"
#include "corekit/draw/tman_int.h"
#include "corekit/files/io_utils.h"

namespace {

constexpr int tiles_a_side = 4;
constexpr int tile_side = 512;
constexpr int tile_flags = tex_interface | tex_clamp | tex_rgba;

int back_dx = 0, back_dy = 0;  // size of the tiled background; 0 when there is none

// Where tile `i` of a side of `length` pixels begins.
int tile_start(int i, int length) {
  return i * length / tiles_a_side;
}

// Cuts the picture in scratch_array, rows `stride` pixels apart, into the tiles; uses it up.
void cut_tiles(int dx, int dy, int stride) {
  constexpr int pixel = 4;
  const size_t size = static_cast<size_t>(stride) * dy * pixel;
  const auto picture = std::make_unique<unsigned char[]>(size);
  std::memcpy(picture.get(), scratch_array, size);
  for (int tile = 0; tile < tiles_a_side * tiles_a_side; ++tile) {
    const int column = tile % tiles_a_side, row = tile / tiles_a_side;
    const int x = tile_start(column, dx), width = tile_start(column + 1, dx) - x;
    const int y = tile_start(row, dy), height = tile_start(row + 1, dy) - y;
    std::memset(scratch_array, 0, static_cast<size_t>(tile_side) * tile_side * pixel);
    for (int line = 0; line < height; ++line) {
      std::memcpy(scratch_array + static_cast<size_t>(line) * tile_side * pixel,
                  picture.get() + (static_cast<size_t>(y + line) * stride + x) * pixel,
                  static_cast<size_t>(width) * pixel);
    }
    scratch_dx = scratch_dy = tile_side;
    tman.load_texture(tex_fail_fatal, t_back_tile + tile, tile_flags, tex_load_now,
                      str_format("scratch_array-t_tex_back (%d)", tile));
  }
}

}  // namespace

void OGL_plot_back_col() {
  watch_cover();
  OGL_fillrect(col_back, 1.0f, -mnw.x_off, -mnw.y_off, static_cast<float>(mnw.pix_dx),
               static_cast<float>(mnw.pix_dy));
}

void OGL_make_back_tex() {
  if (mnw.win_id != win_none) return;
  const std::string path = "Resources/bitmaps/intro_PFC.png";
  constexpr int limit = tiles_a_side * tile_side, pixel = 4;
  std::memset(scratch_array, 0, scratch_bytes);
  unsigned char* into = scratch_array;
  TEX_image_desc desc;
  if (!TEX_load_any(path, into, TEX_rgba, limit, 0, &desc) || desc.width > limit ||
      desc.height > limit) {
    tman_missing(path, t_alert);
    return;
  }
  back_dx = desc.width;
  back_dy = desc.height;
  cut_tiles(back_dx, back_dy, desc.width + desc.pad / pixel);
}

void OGL_plot_back_tex() {
  if (!ogl_inited || back_dx == 0) return;
  // The splash puts the picture's right edge at the window's, and lets up to a tile of a tall one
  // stand out above it.
  int left = static_cast<int>(mnw.side_margin), bottom = 0;
  if (mnw.win_id == win_none) {
    left = std::min(mnw.pix_dx, back_dx) - back_dx;
    bottom = mnw.pix_dy + std::clamp(back_dy - mnw.pix_dy, 0, tile_side) - back_dy;
    if (back_dx < mnw.pix_dx || back_dy < mnw.pix_dy) OGL_plot_back_col();
  }

  const int blend = ren.plot_alpha > 0.99f ? 4 : 5;
  for (int tile = 0; tile < tiles_a_side * tiles_a_side; ++tile) {
    const int column = tile % tiles_a_side, row = tile / tiles_a_side;
    const int x = tile_start(column, back_dx), width = tile_start(column + 1, back_dx) - x;
    const int y = tile_start(row, back_dy), height = tile_start(row + 1, back_dy) - y;
    if (left + x >= mnw.pix_dx || left + x + width <= 0) continue;
    if (bottom + y >= mnw.pix_dy || bottom + y + height <= 0) continue;
    OGL_2dquad_d(t_back_tile + tile, 0, 1.0f, static_cast<float>(left + x) - mnw.x_off,
                 static_cast<float>(bottom + y) - mnw.y_off, 0, 0, static_cast<float>(width),
                 static_cast<float>(height), static_cast<float>(width) / tile_side,
                 static_cast<float>(height) / tile_side, blend);
  }
}

void OGL_screenshot(int to_file) {
  constexpr int limit = 2048;
  if (!ogl_inited) return;
  const PLT_place place = OGL_place();
  scratch_dx = std::clamp(place.dx, 0, limit);
  scratch_dy = std::clamp(place.dy, 0, limit);
  gl.PixelStorei(GL_PACK_ALIGNMENT, 1);
  gl.ReadBuffer(GL_FRONT);
  gl.ReadPixels(place.x + (place.dx - scratch_dx) / 2, place.y + (place.dy - scratch_dy) / 2,
                scratch_dx, scratch_dy, GL_RGB, GL_UNSIGNED_BYTE, scratch_array);
  gl.ReadBuffer(GL_BACK);
  OGL_check("OGL_screenshot");
  if (!to_file) return;

  static int number = 0;
  std::string name;
  do {
    name = "screenshot_" + std::to_string(++number) + ".png";
  } while (file_exists(name));
  write_png_to_disk(name, scratch_dx, scratch_dy, 3);
}
