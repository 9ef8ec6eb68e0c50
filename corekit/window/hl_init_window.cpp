// The part of the start that needs a window: window, driver, workers, pictures, palette; and the
// splash that shows meanwhile.
//
// Main thread. Writes ogl_inited.

#include "corekit/window/hl_init_window.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_app.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/hl_thread.h"
#include "corekit/base/hl_types.h"
#include "corekit/draw/OGL_extensions.h"
#include "corekit/draw/colr.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/tman.h"
#include "corekit/draw/tman_hardwired.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/hl_mnw_menu.h"
#include "corekit/widgets/keys.h"
#include "corekit/window/hl_mnw.h"
#include "corekit/window/hl_mnw_context.h"

namespace {

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
