// The drawing layer's globals, the way from a colour index to OpenGL's colour, and the check of
// debug builds.
//
// Main thread. Writes no global.

#include "corekit/draw/oglp.h"

#include <algorithm>
#include <cstdio>

#include "corekit/base/exce.h"
#include "corekit/draw/colr.h"
#include "corekit/draw/oglp_draw.h"

float oglp = 1.0f;
ren_record ren;
int ogl_errors = 0;

OGL_rgba OGL_color(int col, float alpha) {
  constexpr float opaque_above = 0.99f;
  colr_rgb rgb = colr[col];
  if (col < colr_tinted) {
    const colr_rgb& tint = colr.lites();
    rgb = {rgb.r * tint.r, rgb.g * tint.g, rgb.b * tint.b};
  }
  alpha *= ren.plot_alpha;
  if (ren.mono_green) rgb = {0, std::clamp(rgb.r + rgb.g + rgb.b, 0.01f, 1.0f), 0};
  return {{rgb.r, rgb.g, rgb.b, alpha > opaque_above ? 1.0f : alpha}};
}

#ifndef NDEBUG
void OGL_check(const char* where) {
  // A lost context answers with an error for ever, so the reading is bounded.
  for (int reads = 0; reads < 8; ++reads) {
    const GLenum error = gl.GetError();
    if (error == GL_NO_ERROR) return;
    ++ogl_errors;
    char line[100];
    std::snprintf(line, sizeof line, "WARNING: OpenGL error 0x%04x in %s\n", error, where);
    xer << line;
  }
}
#endif
