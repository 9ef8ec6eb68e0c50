// Windows with their OpenGL contexts: the search for a pixel format, and what the drawing layer is
// told.
//
// Main thread, but for the binding of a loader context. Writes mnw's pixel sizes and ogl_inited.

#include "corekit/window/hl_mnw_context.h"

#include <cstdlib>

#include "corekit/Platform/PLT_window.h"
#include "corekit/base/UTL_cmdline.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_app.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/hl_string.h"
#include "corekit/draw/oglp.h"
#include "corekit/window/hl_mnw.h"

namespace {

bool window_is_open = false;

// Attempts, from the richest request to the plainest. `aliased` asks for mnw's anti-aliasing.
struct format_attempt {
  bool aliased;
  int depth, stencil, color;
};
constexpr format_attempt attempts[] = {
    {true, 24, 8, 8}, {true, 24, 0, 8}, {false, 24, 0, 8}, {false, 16, 0, 8}, {false, 0, 0, 0},
};

// Of "--scale="; 0 leaves it to the desktop.
float asked_scale() {
  return std::strtof(cmdline.get_option("--scale").c_str(), nullptr);
}

}  // namespace

int MACIBM_make_context(int index) {
  if (index != 0 || window_is_open) return 0;
  if (!PLT_has_display()) {
    xer << "No window: " << PLT_window_error() << ".\n";
    return 0;
  }
  for (const format_attempt& attempt : attempts) {
    const PLT_pixel_format format = {attempt.aliased ? mnw.alias_req : 0, attempt.depth,
                                     attempt.stencil, attempt.color};
    window_is_open = PLT_open_window(APP.title, mnw.req_dx, mnw.req_dy, asked_scale(), format);
    if (window_is_open) break;
    xer << str_format("No window with %d samples, %d bits of depth, %d of stencil: ",
                      format.samples, format.depth, format.stencil)
        << PLT_window_error() << ".\n";
  }
  if (!window_is_open) return 0;
  PLT_window_size(&mnw.pix_dx, &mnw.pix_dy);
  OGL_new_context(true);
  return 1;
}

void MACIBM_nuke_context(int index) {
  if (index != 0 || !window_is_open) return;
  ogl_inited = 0;
  OGL_new_context(false);
  PLT_close_window();
  window_is_open = false;
}

void MACIBM_setres(int on) {
  if (!on) return;
  int dx, dy, depth;
  if (!PLT_screen_figures(&dx, &dy, &depth)) return;
  xer << "Screen           : " << dx << " by " << dy << ", " << depth << " bits\n";
}

void* MACIBM_make_context_loader() {
  void* context = PLT_make_loader_context();
  if (!context) xer << "We could not create a context for our worker threads.\n";
  return context;
}

int MACIBM_set_context_loader(void* context) {
  return PLT_bind_loader_context(context) ? 1 : 0;
}
