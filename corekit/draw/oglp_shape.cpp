// Rectangles, lines, circles and quads. Each adds the dialog's offset to what it is given.
//
// Main thread. Reads mnw; writes no global.

#include <cmath>

#include "corekit/base/hl_math.h"
#include "corekit/base/mnw.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/oglp_draw.h"
#include "corekit/draw/oglp_watch.h"
#include "corekit/draw/tman.h"

namespace {

constexpr float pixel_centre = 0.5f;  // lines go through the middle of pixels, areas along edges

void begin_flat(int col, float alpha, GLenum what) {
  OGL_setstate(1, 0, 3, 5, 9, 11);
  OGL_color(col, alpha);
  glBegin(what);
}

void end_flat(const char* where) {
  glEnd();
  OGL_check(where);
}

}  // namespace

void OGL_fillrect(int col, float alpha, float x, float y, float dx, float dy) {
  if (!ogl_inited) return;
  x += mnw.x_off;
  y += mnw.y_off;
  begin_flat(col, alpha, GL_QUADS);
  glVertex2f(x, y);
  glVertex2f(x, y + dy);
  glVertex2f(x + dx, y + dy);
  glVertex2f(x + dx, y);
  end_flat("OGL_fillrect");
}

void OGL_framerect(int col, float alpha, float x, float y, float dx, float dy) {
  if (!ogl_inited) return;
  x += mnw.x_off + pixel_centre;
  y += mnw.y_off + pixel_centre;
  begin_flat(col, alpha, GL_LINE_LOOP);
  glVertex2f(x, y);
  glVertex2f(x, y + dy);
  glVertex2f(x + dx, y + dy);
  glVertex2f(x + dx, y);
  end_flat("OGL_framerect");
}

void OGL_grayrect(float x1, float y1, float x2, float y2, float alpha) {
  constexpr int plate_colour = 12;
  OGL_fillrect(plate_colour, alpha, x1, y1, x2 - x1, y2 - y1);
}

void OGL_line(int col, float alpha, float x1, float y1, float x2, float y2) {
  if (!ogl_inited) return;
  const float add_x = mnw.x_off + pixel_centre, add_y = mnw.y_off + pixel_centre;
  begin_flat(col, alpha, GL_LINES);
  glVertex2f(x1 + add_x, y1 + add_y);
  glVertex2f(x2 + add_x, y2 + add_y);
  end_flat("OGL_line");
}

void OGL_fillcircle(int col, float x, float y, float r) {
  if (!ogl_inited) return;
  x += mnw.x_off + pixel_centre;
  y += mnw.y_off + pixel_centre;
  begin_flat(col, 1.0f, GL_LINES);
  for (float dy = -r; dy <= r; dy += 1.0f) {
    const float half = std::sqrt(r * r - dy * dy);
    glVertex2f(x - half, y + dy);
    glVertex2f(x + half, y + dy);
  }
  end_flat("OGL_fillcircle");
}

void OGL_framecircle(int col, float x, float y, float r) {
  if (!ogl_inited) return;
  x += mnw.x_off;
  y += mnw.y_off;
  OGL_setstate(1, 0, 3, 4, 9, 11);
  OGL_color(col, 1.0f);
  glBegin(GL_LINE_STRIP);
  for (int degree = 0; degree <= 360; degree += 5)
    glVertex2f(x + r * lookup_sin[degree], y + r * lookup_cos[degree]);
  end_flat("OGL_framecircle");
}

void OGL_2dquad(int ref, int col, float alpha, float x1, float y1, float s1, float t1, float x2,
                float y2, float s2, float t2, float x3, float y3, float s3, float t3, float x4,
                float y4, float s4, float t4, int tex, int blend) {
  if (!ogl_inited) return;
  const struct {
    float x, y, s, t;
  } corners[4] = {{x1, y1, s1, t1}, {x2, y2, s2, t2}, {x3, y3, s3, t3}, {x4, y4, s4, t4}};
  OGL_setstate(1, tex, 3, blend, 9, 11);
  if (ref > 0) tman.bind_ref(ref, 0, 0);
  OGL_color(col, alpha);
  glBegin(GL_QUADS);
  for (const auto& corner : corners) {
    glTexCoord2f(corner.s, corner.t);
    glVertex2f(corner.x + mnw.x_off, corner.y + mnw.y_off);
  }
  end_flat("OGL_2dquad");
}

void OGL_2dquad_d(int ref, int col, float alpha, float x, float y, float s, float t, float dx,
                  float dy, float ds, float dt, int blend) {
  watch_frame({x + mnw.x_off, y + mnw.y_off, x + mnw.x_off + dx, y + mnw.y_off + dy});
  OGL_2dquad(ref, col, alpha, x, y, s, t, x, y + dy, s, t + dt, x + dx, y + dy, s + ds, t + dt,
             x + dx, y, s + ds, t, 1, blend);
}
