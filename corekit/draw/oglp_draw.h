// What the drawing files share and nobody else needs: the gate, the colour, the check.
#pragma once

#include "corekit/Platform/PLT_gl.h"
#include "corekit/base/hl_run.h"

inline constexpr int interface_ref = 392;     // the interface image: glyphs, frames, cells
inline constexpr float interface_side = 512;  // its side in pixels

// Whether OpenGL may be called at all: a context has been announced, or a window stands.
bool OGL_can_call();

// Sets the GL colour of an index: tint, plot_alpha, green mode, then three floats or four.
void OGL_color(int col, float alpha);

// Selects a texture unit; 0 if the driver has no such call. Whoever selects one goes back to 0.
int OGL_active_unit(int unit);

// Sends one level of an S3TC picture to the bound texture. REQUIRES: ren.s3tc.
void OGL_compressed_image(int level, int format, int dx, int dy, int bytes, const void* blocks);

// Debug builds log what OpenGL has against the calls made since the last check, and count it.
// Never between glBegin and glEnd.
extern int ogl_errors;
#ifdef NDEBUG
inline void OGL_check(const char*) {}
#else
void OGL_check(const char* where);
#endif

// Emits a quad along the axes into an open glBegin(GL_QUADS), in window units.
inline void OGL_put_quad(float x1, float y1, float x2, float y2, float s1, float t1, float s2,
                         float t2) {
  glTexCoord2f(s1, t1);
  glVertex2f(x1, y1);
  glTexCoord2f(s1, t2);
  glVertex2f(x1, y2);
  glTexCoord2f(s2, t2);
  glVertex2f(x2, y2);
  glTexCoord2f(s2, t1);
  glVertex2f(x2, y1);
}
