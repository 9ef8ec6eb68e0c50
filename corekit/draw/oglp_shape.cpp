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

// The sides of a rectangle, through the middle of pixels.
void put_frame(float x, float y, float dx, float dy) {
  OGL_put_line(x, y, x, y + dy);
  OGL_put_line(x, y + dy, x + dx, y + dy);
  OGL_put_line(x + dx, y + dy, x + dx, y);
  OGL_put_line(x + dx, y, x, y);
}

}  // namespace

void OGL_fillrect(int col, float alpha, float x, float y, float dx, float dy) {
  if (!ogl_inited) return;
  x += mnw.x_off;
  y += mnw.y_off;
  OGL_put_as(shape_quad, 0, blend_mix, 0, col, alpha);
  OGL_put_quad(x, y, x + dx, y + dy);
}

void OGL_framerect(int col, float alpha, float x, float y, float dx, float dy) {
  if (!ogl_inited) return;
  OGL_put_as(shape_line, 0, blend_mix, 0, col, alpha);
  put_frame(x + mnw.x_off + pixel_centre, y + mnw.y_off + pixel_centre, dx, dy);
}

void OGL_grayrect(float x1, float y1, float x2, float y2, float alpha) {
  OGL_fillrect(col_black, alpha, x1, y1, x2 - x1, y2 - y1);
}

void OGL_line(int col, float alpha, float x1, float y1, float x2, float y2) {
  if (!ogl_inited) return;
  const float add_x = mnw.x_off + pixel_centre, add_y = mnw.y_off + pixel_centre;
  OGL_put_as(shape_line, 0, blend_mix, 0, col, alpha);
  OGL_put_line(x1 + add_x, y1 + add_y, x2 + add_x, y2 + add_y);
}

void OGL_fillcircle(int col, float x, float y, float r) {
  if (!ogl_inited) return;
  x += mnw.x_off + pixel_centre;
  y += mnw.y_off + pixel_centre;
  OGL_put_as(shape_line, 0, blend_mix, 0, col, 1.0f);
  for (float dy = -r; dy <= r; dy += 1.0f) {
    const float half = std::sqrt(r * r - dy * dy);
    OGL_put_line(x - half, y + dy, x + half, y + dy);
  }
}

void OGL_framecircle(int col, float x, float y, float r) {
  constexpr int step = 5;  // degrees
  if (!ogl_inited) return;
  x += mnw.x_off;
  y += mnw.y_off;
  OGL_put_as(shape_line, 0, blend_none, 0, col, 1.0f);
  for (int degree = 0; degree < 360; degree += step) {
    OGL_put_line(x + r * lookup_sin[degree], y + r * lookup_cos[degree],
                 x + r * lookup_sin[degree + step], y + r * lookup_cos[degree + step]);
  }
}

void OGL_2dquad(int ref, int col, float alpha, float x1, float y1, float s1, float t1, float x2,
                float y2, float s2, float t2, float x3, float y3, float s3, float t3, float x4,
                float y4, float s4, float t4, int tex, int blend) {
  if (!ogl_inited) return;
  const float x = mnw.x_off, y = mnw.y_off;
  OGL_put_as(shape_quad, tex, blend, ref, col, alpha);
  OGL_put_corners({{x1 + x, y1 + y, s1, t1},
                   {x2 + x, y2 + y, s2, t2},
                   {x3 + x, y3 + y, s3, t3},
                   {x4 + x, y4 + y, s4, t4}});
}

void OGL_2dquad_d(int ref, int col, float alpha, float x, float y, float s, float t, float dx,
                  float dy, float ds, float dt, int blend) {
  watch_frame({x + mnw.x_off, y + mnw.y_off, x + mnw.x_off + dx, y + mnw.y_off + dy});
  OGL_2dquad(ref, col, alpha, x, y, s, t, x, y + dy, s, t + dt, x + dx, y + dy, s + ds, t + dt,
             x + dx, y, s + ds, t, 1, blend);
}
