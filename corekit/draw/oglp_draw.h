// What the drawing files share and nobody else needs: the gate, the colour, the check.
#pragma once

#include "corekit/Platform/PLT_gl.h"
#include "corekit/Platform/PLT_window.h"
#include "corekit/base/hl_run.h"
#include "corekit/draw/oglp_picture.h"

// Where the picture lies in the window, pixels: the whole of it unless the window scales.
PLT_place OGL_place();

inline constexpr float interface_side = 512;  // of the interface image, pixels

// Whether OpenGL may be called at all: a context has been announced, or a window stands.
bool OGL_can_call();

// The colour of an index as it is painted: tint, plot_alpha, green mode. An alpha above 0.99 is 1.
struct OGL_rgba {
  float part[4];
};
OGL_rgba OGL_color(int col, float alpha);

// --- pieces of the picture ----------------------------------------------------------------------
// All drawing ends here. REQUIRES: ogl_inited.

// How the pieces that follow are painted, and in which colour. `ref` above 0 is a texture of tman,
// else the one that was used last stays; `tex` and `blend` are the second and fourth arguments of
// OGL_setstate.
void OGL_put_as(picture_shape shape, int tex, int blend, int ref, const OGL_rgba& color);
inline void OGL_put_as(picture_shape shape, int tex, int blend, int ref, int col, float alpha) {
  OGL_put_as(shape, tex, blend, ref, OGL_color(col, alpha));
}
// Adds a quad along the axes; one with free corners; a line. In window units.
void OGL_put_quad(float x1, float y1, float x2, float y2, float s1 = 0, float t1 = 0, float s2 = 0,
                  float t2 = 0);
void OGL_put_corners(const picture_corner (&corners)[4]);
void OGL_put_line(float x1, float y1, float x2, float y2);
// The clip of the pieces that follow, in pixels; null for none.
void OGL_put_clip(const int* x_y_dx_dy);
// Whether the blending of the pieces that follow adds.
void OGL_put_glow(bool on);
// A texture is about to change or to go: what was drawn with it so far is painted, and the picture
// is shown whatever it is like.
void OGL_texture_changes();
// The context is about to go, or another one has come: gives up the copy of what the window shows.
void OGL_forget_kept();

// Further state, by the same rule as OGL_setstate: whether blending adds, and the scissors in
// pixels (dx -1: none).
void OGL_set_blending(bool adds);
void OGL_set_clip(int x, int y, int dx, int dy);

// Selects a texture unit; 0 if the driver has no such call. Whoever selects one goes back to 0.
int OGL_active_unit(int unit);

// Sends one level of an S3TC picture to the bound texture. REQUIRES: glExt.s3tc_avail.
void OGL_compressed_image(int level, int format, int dx, int dy, int bytes, const void* blocks);

// Debug builds log what OpenGL has against the calls made since the last check, and count it.
// Never between glBegin and glEnd.
extern int ogl_errors;
#ifdef NDEBUG
inline void OGL_check(const char*) {}
#else
void OGL_check(const char* where);
#endif
