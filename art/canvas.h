// Drawing for the art program: a picture of float pixels, and shapes given by their signed
// distance, which makes every edge anti-aliased and every whole-pixel edge crisp.
//
// Everything is drawn in the coordinates of a cell (a rectangle of the picture), in units: origin
// at the cell's lower left, y upward. A unit is as many pixels, each way, as the canvas says; a
// drawing need not know. Nothing leaves the cell. Colours are straight (not premultiplied) sRGB
// values from 0 to 1. One thread.
#pragma once

#include <functional>
#include <string>
#include <vector>

struct art_colour {
  float r = 0, g = 0, b = 0, a = 0;
};
// From bytes, and an alpha from 0 to 1.
constexpr art_colour art_rgb(int r, int g, int b, float a = 1.0f) {
  return {float(r) / 255.0f, float(g) / 255.0f, float(b) / 255.0f, a};
}
art_colour art_mix(const art_colour& from, const art_colour& to, float t);
float art_smooth(float low, float high, float x);  // 0 at low, 1 at high, smooth between

struct art_canvas {
  // In units; a unit is `pixels_a_unit` pixels.
  art_canvas(int width, int height, int pixels_a_unit)
      : scale(pixels_a_unit),
        dx(width * scale),
        dy(height * scale),
        pixels(size_t(dx) * size_t(dy)) {}
  art_colour& at(int u, int v) { return pixels[size_t(v) * dx + u]; }
  const art_colour& at(int u, int v) const { return pixels[size_t(v) * dx + u]; }
  int scale;
  int dx, dy;                      // pixels
  std::vector<art_colour> pixels;  // row 0 is the lowest
};

struct art_cell {
  art_canvas* canvas;
  int u, v, dx, dy;  // units
};

// --- shapes: distance to the edge in units, negative inside -------------------------------------
using art_shape = std::function<float(float x, float y)>;
struct art_point {
  float x, y;
};
art_shape art_box(float x0, float y0, float x1, float y1, float radius);
art_shape art_disc(float x, float y, float radius);
art_shape art_stroke(std::vector<art_point> points, float width);  // open line, round ends
art_shape art_polygon(std::vector<art_point> points);
art_shape art_rim(art_shape shape, float width);  // the band of that width just inside the edge
art_shape art_both(art_shape a, art_shape b);     // where both are

// --- paints -------------------------------------------------------------------------------------
using art_paint = std::function<art_colour(float x, float y)>;
art_paint art_flat(const art_colour& colour);
art_paint art_rise(float y0, const art_colour& low, float y1, const art_colour& high);  // along y

// --- painting -----------------------------------------------------------------------------------
void art_blend(art_colour& under, art_colour over, float coverage);
// Calls paint(pixel, x, y) with the place of every pixel's middle in the cell.
void art_each(const art_cell& cell,
              const std::function<void(art_colour& pixel, float x, float y)>& paint);
void art_fill(const art_cell& cell, const art_shape& shape, const art_paint& paint);
void art_fill(const art_cell& cell, const art_shape& shape, const art_colour& colour);
// A soft shadow under the shape: half strength at its edge, gone `reach` units outside.
void art_shadow(const art_cell& cell, const art_shape& shape, float reach,
                const art_colour& colour);
// Gives the fully transparent pixels of the cell the colour of the nearest painted ones.
void art_bleed(const art_cell& cell);

// --- files --------------------------------------------------------------------------------------
enum art_form {
  form_rgba,
  form_rgb,      // alpha is dropped
  form_palette,  // the same, in the 256 colours that suit the picture best
};
// Writes the picture as PNG, topmost row first. False on failure.
bool art_write(const art_canvas& canvas, art_form form, const std::string& path);
