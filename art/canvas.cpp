// Shapes by signed distance, paints and blending.

#include "art/canvas.h"

#include <algorithm>
#include <cmath>

art_colour art_mix(const art_colour& from, const art_colour& to, float t) {
  t = std::clamp(t, 0.0f, 1.0f);
  return {from.r + (to.r - from.r) * t, from.g + (to.g - from.g) * t, from.b + (to.b - from.b) * t,
          from.a + (to.a - from.a) * t};
}

float art_smooth(float low, float high, float x) {
  const float t = std::clamp((x - low) / (high - low), 0.0f, 1.0f);
  return t * t * (3.0f - 2.0f * t);
}

// --- shapes -------------------------------------------------------------------------------------
art_shape art_box(float x0, float y0, float x1, float y1, float radius) {
  return [=](float x, float y) {
    const float qx = std::max(x0 + radius - x, x - x1 + radius);
    const float qy = std::max(y0 + radius - y, y - y1 + radius);
    return std::hypot(std::max(qx, 0.0f), std::max(qy, 0.0f)) + std::min(std::max(qx, qy), 0.0f) -
           radius;
  };
}

art_shape art_disc(float x, float y, float radius) {
  return [=](float px, float py) { return std::hypot(px - x, py - y) - radius; };
}

static float distance_to_segment(art_point p, art_point a, art_point b) {
  const float dx = b.x - a.x, dy = b.y - a.y;
  const float length = dx * dx + dy * dy;
  const float t =
      length > 0.0f ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / length, 0.0f, 1.0f) : 0.0f;
  return std::hypot(p.x - a.x - dx * t, p.y - a.y - dy * t);
}

art_shape art_stroke(std::vector<art_point> points, float width) {
  return [points = std::move(points), width](float x, float y) {
    float nearest = 1e9f;
    for (size_t i = 1; i < points.size(); ++i)
      nearest = std::min(nearest, distance_to_segment({x, y}, points[i - 1], points[i]));
    return nearest - width * 0.5f;
  };
}

art_shape art_polygon(std::vector<art_point> points) {
  return [points = std::move(points)](float x, float y) {
    float nearest = 1e9f;
    bool inside = false;
    for (size_t i = 0, j = points.size() - 1; i < points.size(); j = i++) {
      const art_point a = points[j], b = points[i];
      nearest = std::min(nearest, distance_to_segment({x, y}, a, b));
      if ((a.y > y) != (b.y > y) && x < a.x + (b.x - a.x) * (y - a.y) / (b.y - a.y))
        inside = !inside;
    }
    return inside ? -nearest : nearest;
  };
}

art_shape art_rim(art_shape shape, float width) {
  return [shape = std::move(shape), width](float x, float y) {
    const float d = shape(x, y);
    return std::max(d, -d - width);
  };
}

art_shape art_both(art_shape a, art_shape b) {
  return
      [a = std::move(a), b = std::move(b)](float x, float y) { return std::max(a(x, y), b(x, y)); };
}

// --- paints -------------------------------------------------------------------------------------
art_paint art_flat(const art_colour& colour) {
  return [colour](float, float) { return colour; };
}

art_paint art_rise(float y0, const art_colour& low, float y1, const art_colour& high) {
  return [=](float, float y) { return art_mix(low, high, (y - y0) / (y1 - y0)); };
}

// --- painting -----------------------------------------------------------------------------------
void art_blend(art_colour& under, art_colour over, float coverage) {
  const float a = over.a * coverage;
  if (a <= 0.0f) return;
  const float out = a + under.a * (1.0f - a);
  const float t = a / out;
  under = {under.r + (over.r - under.r) * t, under.g + (over.g - under.g) * t,
           under.b + (over.b - under.b) * t, out};
}

void art_each(const art_cell& cell,
              const std::function<void(art_colour& pixel, float x, float y)>& paint) {
  const int scale = cell.canvas->scale;
  for (int row = 0; row < cell.dy * scale; ++row)
    for (int column = 0; column < cell.dx * scale; ++column)
      paint(cell.canvas->at(cell.u * scale + column, cell.v * scale + row),
            (float(column) + 0.5f) / float(scale), (float(row) + 0.5f) / float(scale));
}

void art_fill(const art_cell& cell, const art_shape& shape, const art_paint& paint) {
  const float scale = float(cell.canvas->scale);
  art_each(cell, [&](art_colour& pixel, float x, float y) {
    const float coverage = std::clamp(0.5f - shape(x, y) * scale, 0.0f, 1.0f);
    if (coverage > 0.0f) art_blend(pixel, paint(x, y), coverage);
  });
}

void art_fill(const art_cell& cell, const art_shape& shape, const art_colour& colour) {
  art_fill(cell, shape, art_flat(colour));
}

void art_shadow(const art_cell& cell, const art_shape& shape, float reach,
                const art_colour& colour) {
  art_each(cell, [&](art_colour& pixel, float x, float y) {
    art_blend(pixel, colour, 1.0f - art_smooth(-reach, reach, shape(x, y)));
  });
}

void art_bleed(const art_cell& units) {
  const int scale = units.canvas->scale;
  const art_cell cell{units.canvas, units.u * scale, units.v * scale, units.dx * scale,
                      units.dy * scale};  // pixels
  struct seed {
    int u, v;
  };
  std::vector<seed> edge;
  std::vector<char> done(size_t(cell.dx) * cell.dy, 0);
  auto flag = [&](int u, int v) -> char& {
    return done[size_t(v - cell.v) * cell.dx + (u - cell.u)];
  };
  for (int v = cell.v; v < cell.v + cell.dy; ++v)
    for (int u = cell.u; u < cell.u + cell.dx; ++u)
      // What rounds to alpha 0 in the file has no colour that could show.
      if (cell.canvas->at(u, v).a * 255.0f >= 0.5f) {
        flag(u, v) = 1;
        edge.push_back({u, v});
      }
  while (!edge.empty()) {
    std::vector<seed> next;
    for (const seed& from : edge)
      for (const seed& step : {seed{1, 0}, seed{-1, 0}, seed{0, 1}, seed{0, -1}}) {
        const int u = from.u + step.u, v = from.v + step.v;
        if (u < cell.u || v < cell.v || u >= cell.u + cell.dx || v >= cell.v + cell.dy) continue;
        if (flag(u, v)) continue;
        flag(u, v) = 1;
        art_colour colour = cell.canvas->at(from.u, from.v);
        colour.a = 0.0f;
        cell.canvas->at(u, v) = colour;
        next.push_back({u, v});
      }
    edge = std::move(next);
  }
}
