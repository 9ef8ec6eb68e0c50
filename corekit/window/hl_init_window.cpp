// The part of the start that needs a window: window, driver, workers, pictures, palette; and the
// splash that shows meanwhile.
//
// Main thread. Writes ogl_inited, the interface colours of colr, and scratch_array.

#include "corekit/window/hl_init_window.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_app.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/hl_thread.h"
#include "corekit/base/hl_types.h"
#include "corekit/draw/OGL_extensions.h"
#include "corekit/draw/TEX_utils.h"
#include "corekit/draw/colr.h"
#include "corekit/draw/g_tex.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/tman.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/hl_mnw_menu.h"
#include "corekit/widgets/keys.h"
#include "corekit/window/hl_mnw.h"
#include "corekit/window/hl_mnw_context.h"

namespace {

struct hardwired_row {
  const unsigned char* rows;
  int dx, dy, pixel_bytes;
  int ref;
};
// The interface image comes last, since the palette is then read from where it lies.
constexpr hardwired_row hardwired[] = {
    {g_tex_background, g_tex_background_dx, g_tex_background_dy, 3, t_background},
    {g_tex_elements, g_tex_elements_dx, g_tex_elements_dy, 4, t_elements},
    {g_tex_map, g_tex_map_dx, g_tex_map_dy, 4, t_map},
    {g_tex_interface, g_tex_interface_dx, g_tex_interface_dy, 4, t_interface},
};

void load_hardwired(const hardwired_row& image) {
  const int stride = static_cast<int>(std::bit_ceil(static_cast<unsigned>(image.dx)));
  const size_t row = static_cast<size_t>(image.dx) * image.pixel_bytes;
  const size_t stride_bytes = static_cast<size_t>(stride) * image.pixel_bytes;
  for (int y = 0; y < image.dy; ++y)
    std::memcpy(scratch_array + y * stride_bytes, image.rows + y * row, row);
  scratch_dx = stride;
  scratch_dy = image.dy;
  const int colour = image.pixel_bytes == 3 ? tex_rgb : tex_rgba;
  tman.load_texture(tex_fail_fatal, image.ref, tex_interface | tex_full_size | colour, tex_load_now,
                    "scratch_array:hardwired textures");
}

// The look of the toolkit is edited in the interface image, and not here: its colours are swatches
// of that image.
struct swatch_row {
  int colour, column, row;
};
constexpr swatch_row swatches[] = {
    {34, 319, 155}, {35, 319, 147}, {36, 319, 139}, {37, 319, 131}, {38, 319, 123},
    {40, 319, 115}, {41, 319, 107}, {42, 319, 99},  {43, 319, 91},  {45, 319, 83},
    {46, 319, 75},  {47, 319, 67},  {44, 395, 115},
};
constexpr int mean_colour = 39, mean_of_1 = 35, mean_of_2 = 38;

// Takes the palette from the interface image in scratch_array.
void take_palette() {
  constexpr int stride_bytes = g_tex_interface_dx * 4;
  for (const swatch_row& swatch : swatches) {
    const unsigned char* rgb = scratch_array + swatch.row * stride_bytes + swatch.column * 4;
    colr.assign(swatch.colour, static_cast<float>(rgb[0]) / 255, static_cast<float>(rgb[1]) / 255,
                static_cast<float>(rgb[2]) / 255);
  }
  const colr_rgb& one = colr[mean_of_1];
  const colr_rgb& other = colr[mean_of_2];
  colr.assign(mean_colour, (one.r + other.r) / 2, (one.g + other.g) / 2, (one.b + other.b) / 2);
}

constexpr THREAD_contexts loader_contexts = {
    [] { return glExt.threaded_avail != 0; },
    MACIBM_make_context_loader,
    MACIBM_set_context_loader,
    [] { glExt.threaded_ogl_failed(); },
};

void no_graphics() {
  if (*APP.no_window) std::fprintf(stderr, "%s\n", APP.no_window);
  __MACIBM_alert(
      win_main,
      "I could not set up the graphics for Skyvane! I hope your monitor is at 1024x768 "
      "or higher! It must be!",
      "You do not meet the system requirements or you do not have OpenGL drivers or you "
      "entered a bad resolution in Skyvane!",
      "You need at least 256 meg of RAM, 16 meg of VRAM, and OpenGl drivers for your 3-D "
      "accelerator card!",
      "If you reset the resolution, you can try launching Skyvane again, since I am "
      "resetting Skyvane to default resolution now.",
      t_exit, at_no_graphics);
}

}  // namespace

void load_hardwired_textures() {
  for (const hardwired_row& image : hardwired)
    load_hardwired(image);
  take_palette();
}

void init_window() {
  MACIBM_setres(1);
  if (!MACIBM_make_context(0)) no_graphics();
  OGL_pix_specs();
  glExt.init_extensions();
  THREAD_use_contexts(&loader_contexts);
  THREAD_make_workers();
  load_hardwired_textures();
  OGL_nrml_colors();
  MACIBM_clear_menus(1);
  MACIBM_startwind(win_none, 0);
  keys.start();
  mnw_keys.leave_dialog = [] { MACIBM_handleclick(1); };
  tman_announce = [](const std::string& text) { MACIBM_show_init(text); };
  OGL_pix_specs();
  ogl_inited = 1;
  if (mnw.language < 0) {
    mnw.language = 0;
    const std::string none = "-";
    __MACIBM_alert(win_none, none, none, none, none, 0, at_no_language);
  }
}

void MACIBM_show_init(const std::string& text, float fraction) {
  constexpr float bar_dx = 400, shortest_fill = 20.8f, no_wrap = 9999;
  // Later loads announce themselves too, but the splash is for the time before the first page.
  if (!plot_init_lights || !ogl_inited || mnw.win_id != win_none) return;

  const float dx = mnw.win_dx, dy = mnw.win_dy, middle = std::round(dx / 2);
  colr.assign(col_picture, 1, 1, 1);
  OGL_2dquad_d(t_background, col_picture, 1, 0, 0, 0, 0, dx, dy, dx / 1024, dy / 1024, blend_mix);
  OGL_string(col_black, middle, dy / 2 + 30, APP.title, no_wrap, charset_text, just_centre);
  OGL_string(col_black, middle, dy / 2, text, no_wrap, charset_text, just_centre);
  if (fraction > 0) {
    const float length = std::clamp(fraction * bar_dx, shortest_fill, bar_dx);
    BTN_frame1(strip_trough, middle, dy / 2 - 30, bar_dx, col_as_is);
    BTN_frame1(strip_fill, middle - bar_dx / 2 + length / 2, dy / 2 - 30, length, col_as_is);
  }
  OGL_sbuff();
}
