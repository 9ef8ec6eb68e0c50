// OpenGL's state: all changes of it pass through here, each only when it differs from what is set.
// Then viewport, projection, scissors and blending.
//
// Main thread. Writes the scale, margin and limit fields of mnw.

#include <algorithm>
#include <cmath>

#include "corekit/base/mnw.h"
#include "corekit/draw/OGL_extensions.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/oglp_draw.h"
#include "corekit/draw/oglp_watch.h"
#include "corekit/draw/tman.h"

namespace {

constexpr int unit_limit = 8;  // units that the state cache handles

bool have_context = false;

// What OpenGL is set to. Unknown until the first OGL_setstate reads it.
struct gl_state {
  bool known = false;
  bool fog = false, lit = false, blend = false, alpha_test = false, depth_read = false;
  // Taken to be off and never read: whoever writes depth says so first.
  bool depth_write = false;
  int num_units = 0;
  int adds = -1;                   // blending adds, or mixes; -1 unknown
  int clip[4] = {-1, -1, -2, -1};  // x, y, dx, dy; dx -1 for none, -2 for unknown
};
gl_state state;

void enable(GLenum what, bool on) {
  if (on) {
    gl.Enable(what);
  } else {
    gl.Disable(what);
  }
}

void read_state() {
  state = gl_state();
  state.known = true;
  state.fog = gl.IsEnabled(GL_FOG);
  state.num_units = gl.IsEnabled(GL_TEXTURE_2D) ? 1 : 0;
  state.lit = gl.IsEnabled(GL_LIGHTING);
  state.blend = gl.IsEnabled(GL_BLEND);
  state.alpha_test = gl.IsEnabled(GL_ALPHA_TEST);
  state.depth_read = gl.IsEnabled(GL_DEPTH_TEST);
}

void set_units(int units) {
  const int old = state.num_units;
  if (units == old) return;
  // Unit 0 is the active one, and goes without the call that a driver of one unit lacks.
  if ((units > 0) != (old > 0)) enable(GL_TEXTURE_2D, units > 0);
  if (units > 1 || old > 1) {
    for (int unit = std::max(1, std::min(old, units)); unit < std::max(old, units); ++unit) {
      if (OGL_active_unit(unit)) enable(GL_TEXTURE_2D, unit < units);
    }
    OGL_active_unit(0);
  }
  state.num_units = units;
}

bool set_flag(bool& known, bool wanted) {
  if (known == wanted) return false;
  known = wanted;
  return true;
}

int to_pixel(float units) {
  return static_cast<int>(std::lround(units * mnw.ui_scale));
}

}  // namespace

PLT_place OGL_place() {
  PLT_place place;
  return PLT_picture_place(&place) ? place : PLT_place{0, 0, mnw.pix_dx, mnw.pix_dy};
}

void OGL_new_context(bool is_there) {
  OGL_drop_picture();
  OGL_forget_kept();
  OGL_show_next();
  OGL_reset_state();
  TEX_reset_bind();
  have_context = is_there;
}

bool OGL_can_call() {
  return have_context || ogl_inited;
}

int OGL_active_unit(int unit) {
  const auto call = reinterpret_cast<PFNGLACTIVETEXTUREARBPROC>(glExt.entry("glActiveTextureARB"));
  if (!call) return unit == 0;
  call(static_cast<GLenum>(GL_TEXTURE0 + unit));
  return 1;
}

void OGL_compressed_image(int level, int format, int dx, int dy, int bytes, const void* blocks) {
  const auto call =
      reinterpret_cast<PFNGLCOMPRESSEDTEXIMAGE2DARBPROC>(glExt.entry("glCompressedTexImage2DARB"));
  if (call) call(GL_TEXTURE_2D, level, static_cast<GLenum>(format), dx, dy, 0, bytes, blocks);
}

void OGL_reset_state() {
  state = gl_state();
}

void OGL_setstate(int fog, int tex, int lit, int alpha, int depth_read, int depth_write) {
  if (!OGL_can_call()) return;
  if (!state.known) read_state();

  if (set_flag(state.fog, fog == fog_on)) enable(GL_FOG, state.fog);
  set_units(std::clamp(tex, 0, std::min(ren.max_units, unit_limit)));
  if (set_flag(state.lit, lit == lit_on)) {
    enable(GL_LIGHTING, state.lit);
    enable(GL_LIGHT0, state.lit);
  }
  if (set_flag(state.blend, alpha == blend_mix || alpha == blend_mix_test))
    enable(GL_BLEND, state.blend);
  if (set_flag(state.alpha_test, alpha == blend_test || alpha == blend_mix_test)) {
    enable(GL_ALPHA_TEST, state.alpha_test);
  }
  if (set_flag(state.depth_read, depth_read == depth_read_on))
    enable(GL_DEPTH_TEST, state.depth_read);
  if (set_flag(state.depth_write, depth_write == depth_write_on)) gl.DepthMask(state.depth_write);
  OGL_check("OGL_setstate");
}

void OGL_set_blending(bool adds) {
  if (state.adds == int{adds}) return;
  gl.BlendFunc(GL_SRC_ALPHA, adds ? GL_ONE : GL_ONE_MINUS_SRC_ALPHA);
  state.adds = adds;
}

void OGL_set_clip(int x, int y, int dx, int dy) {
  // The pixels whose middles lie in it, so that what stands side by side still does.
  const PLT_place place = OGL_place();
  const auto scaled = [](int units, int pixels, int all) {
    return static_cast<int>(std::lround(static_cast<double>(units) * pixels / std::max(all, 1)));
  };
  const int left = scaled(x, place.dx, mnw.pix_dx), low = scaled(y, place.dy, mnw.pix_dy);
  const int clip[4] = {place.x + left, place.y + low,
                       dx < 0 ? dx : scaled(x + dx, place.dx, mnw.pix_dx) - left,
                       dx < 0 ? dy : scaled(y + dy, place.dy, mnw.pix_dy) - low};
  if (std::equal(clip, clip + 4, state.clip)) return;
  if ((dx >= 0) != (state.clip[2] >= 0) || state.clip[2] == -2) enable(GL_SCISSOR_TEST, dx >= 0);
  if (dx >= 0) gl.Scissor(clip[0], clip[1], clip[2], clip[3]);
  std::copy(clip, clip + 4, state.clip);
}

void OGL_pix_specs() {
  const float dx = static_cast<float>(mnw.pix_dx), dy = static_cast<float>(mnw.pix_dy);
  mnw.ui_scale_x = mnw.ui_scale = 1.0f;
  // 1024 by 768 is no canvas: it only centres things in larger windows.
  mnw.centre_x = dx * 0.5f;
  mnw.centre_y = 384.0f;
  mnw.side_margin = mnw.win_id == win_none ? 0.0f : std::max(0.0f, (dx - 1024.0f) * 0.5f);
  mnw.top_margin = std::max(0.0f, dy - 768.0f);
  mnw.ortho_left = mnw.ortho_bottom = 0.0f;
  mnw.ortho_right = dx;
  mnw.ortho_top = dy;
  if (mnw.win_id >= 0) OGL_viewport(2, 0, 0, dx, dy);
}

void OGL_screensize(int mode, float x1, float y1, float x2, float y2) {
  if (!OGL_can_call()) return;
  if (mode == 2) {
    const PLT_place place = OGL_place();
    gl.Viewport(place.x, place.y, place.dx, place.dy);
  } else if (mode == 3) {
    gl.Viewport(to_pixel(x1), to_pixel(y1), to_pixel(x2 - x1), to_pixel(y2 - y1));
  } else {
    gl.Viewport(static_cast<GLint>(x1), static_cast<GLint>(y1), static_cast<GLsizei>(x2 - x1),
                static_cast<GLsizei>(y2 - y1));
  }
  OGL_check("OGL_screensize");
}

void OGL_viewport(int mode, float l, float b, float r, float t, int keep_aspect) {
  constexpr double near_plane = 1.0, far_plane = 10000.0;  // of mode 3
  if (!OGL_can_call()) return;
  if (mode == 2) {
    l = mnw.ortho_left;
    b = mnw.ortho_bottom;
    r = mnw.ortho_right;
    t = mnw.ortho_top;
    OGL_screensize(2, 0, 0, 0, 0);
  }
  if (keep_aspect) {
    GLint viewport[4] = {};
    gl.GetIntegerv(GL_VIEWPORT, viewport);
    const float ratio =
        viewport[2] > 0 ? static_cast<float>(viewport[3]) / static_cast<float>(viewport[2]) : 1.0f;
    b *= ratio;
    t *= ratio;
  }
  gl.MatrixMode(GL_PROJECTION);
  gl.LoadIdentity();
  // A window that is iconised has no size, and OpenGL refuses such limits.
  if (l != r && b != t) {
    if (mode == 2) gl.Ortho(l, r, b, t, -1.0, 1.0);
    if (mode == 3) gl.Frustum(l, r, b, t, near_plane, far_plane);
  }
  gl.MatrixMode(GL_MODELVIEW);
  gl.LoadIdentity();
  OGL_check("OGL_viewport");
}

void OGL_scissors(float x, float y, float dx, float dy) {
  if (!ogl_inited) return;
  x += mnw.x_off;
  y += mnw.y_off;
  const int pixels[4] = {to_pixel(x), to_pixel(y), std::max(0, to_pixel(dx)),
                         std::max(0, to_pixel(dy))};
  OGL_put_clip(pixels);
  const OGL_rect clip = {x, y, x + dx, y + dy};
  watch_clip(&clip);
}

void OGL_scissors_end() {
  if (!ogl_inited) return;
  OGL_put_clip(nullptr);
  watch_clip(nullptr);
}

void OGL_glow_colors() {
  OGL_put_glow(true);
}

void OGL_nrml_colors() {
  OGL_put_glow(false);
}

void OGL_poly_offset(int level) {
  if (!OGL_can_call()) return;
  enable(GL_POLYGON_OFFSET_FILL, level != 0);
  if (level) gl.PolygonOffset(static_cast<float>(level) * -10.0f, -1.0f);
}
