// From the pieces of a picture to the window: noting them, and at the frame's end painting what
// differs from the picture before.
//
// What the window shows is kept in a texture besides, since a swap leaves the back buffer
// undefined: the next picture is that one, with the damaged rectangle painted anew. The steps:
// compare, put the kept picture down, paint the pieces in the damage, keep the damage, swap.
//
// Main thread. Writes nothing but what it notes.

#include <algorithm>
#include <bit>
#include <cmath>

#include "corekit/base/mnw.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/oglp_draw.h"
#include "corekit/draw/oglp_picture.h"
#include "corekit/draw/oglp_watch.h"
#include "corekit/draw/tman.h"
#include "corekit/draw/tman_int.h"

namespace {

constexpr int no_clip = -1;

picture_pieces drawn;  // of the frame being drawn
picture_pieces shown;  // what the window shows
size_t painted = 0;    // pieces of `drawn` that are in the back buffer already
bool must_show = true;

// What the next piece is painted as.
picture_piece next = {{shape_quad, 0, blend_mix, 0, 0, 0, 0, no_clip, 0}, {}, {}};

// The texture that holds what the window shows.
struct kept_picture {
  unsigned gl_id = 0;
  int dx = 0, dy = 0;    // of the texture, pixels
  PLT_place place = {};  // of the picture in it; dx 0 while it holds none
};
kept_picture kept;

struct pixel_rect {
  int x, y, dx, dy;
};

// A corner as OpenGL takes it.
struct paint_vertex {
  float x, y, s, t;
  float rgba[4];
};
std::vector<paint_vertex>
    vertices;  // of the pieces being painted; kept, so that it is allocated once

bool paints_alike(const picture_how& a, const picture_how& b) {
  return a.shape == b.shape && a.tex == b.tex && a.blend == b.blend && a.glow == b.glow &&
         a.texture == b.texture && a.clip_x == b.clip_x && a.clip_y == b.clip_y &&
         a.clip_dx == b.clip_dx && a.clip_dy == b.clip_dy;
}

bool same_place(const PLT_place& a, const PLT_place& b) {
  return a.x == b.x && a.y == b.y && a.dx == b.dx && a.dy == b.dy;
}

pixel_rect window_pixels() {
  return {0, 0, mnw.pix_dx, mnw.pix_dy};
}

pixel_rect common(const pixel_rect& a, const pixel_rect& b) {
  const int x = std::max(a.x, b.x), y = std::max(a.y, b.y);
  return {x, y, std::max(0, std::min(a.x + a.dx, b.x + b.dx) - x),
          std::max(0, std::min(a.y + a.dy, b.y + b.dy) - y)};
}

// All pixels that a rectangle touches.
pixel_rect to_pixels(const OGL_rect& rect) {
  const auto down = [](float units) { return static_cast<int>(std::floor(units * mnw.ui_scale)); };
  const auto up = [](float units) { return static_cast<int>(std::ceil(units * mnw.ui_scale)); };
  // A wild coordinate must not overflow.
  const OGL_rect all = {-1, -1, static_cast<float>(mnw.pix_dx) + 1,
                        static_cast<float>(mnw.pix_dy) + 1};
  const int x = down(std::clamp(rect.x0, all.x0, all.x1));
  const int y = down(std::clamp(rect.y0, all.y0, all.y1));
  return common({x, y, up(std::clamp(rect.x1, all.x0, all.x1)) - x,
                 up(std::clamp(rect.y1, all.y0, all.y1)) - y},
                window_pixels());
}

bool touches(const picture_piece& piece, const pixel_rect& area) {
  const pixel_rect hit = common(to_pixels(picture_bounds(piece)), area);
  return hit.dx > 0 && hit.dy > 0;
}

// Paints what is in `vertices`, as `how` says, inside `area`.
void paint_run(const picture_how& how, const pixel_rect& area) {
  if (vertices.empty()) return;
  pixel_rect clip = area;
  if (how.clip_dx != no_clip) {
    clip = common(area, {how.clip_x, how.clip_y, how.clip_dx, how.clip_dy});
  }
  OGL_set_clip(clip.x, clip.y, clip.dx, clip.dy);
  OGL_setstate(fog_off, how.tex, lit_off, how.blend, depth_read_off, depth_write_off);
  OGL_set_blending(how.glow != 0);
  if (how.tex > 0) TEX_bind_ref(how.texture, 0, 0);
  const paint_vertex& first = vertices.front();
  gl.VertexPointer(2, GL_FLOAT, sizeof first, &first.x);
  gl.TexCoordPointer(2, GL_FLOAT, sizeof first, &first.s);
  if (how.shape != shape_quad) {
    // A line is a unit wide.
    gl.LineWidth(static_cast<float>(OGL_place().dx) / static_cast<float>(std::max(mnw.pix_dx, 1)));
  }
  gl.ColorPointer(4, GL_FLOAT, sizeof first, first.rgba);
  gl.DrawArrays(how.shape == shape_quad ? GL_QUADS : GL_LINES, 0,
                static_cast<GLsizei>(vertices.size()));
  vertices.clear();
}

// Paints pieces of `drawn` from `first` on, as far as they lie in `area`.
void paint_pieces(size_t first, const pixel_rect& area) {
  constexpr GLenum arrays[] = {GL_VERTEX_ARRAY, GL_TEXTURE_COORD_ARRAY, GL_COLOR_ARRAY};
  for (const GLenum array : arrays)
    gl.EnableClientState(array);
  vertices.clear();
  const picture_how* how = nullptr;
  for (size_t i = first; i < drawn.size(); ++i) {
    const picture_piece& piece = drawn[i];
    if (!touches(piece, area)) continue;
    if (how && !paints_alike(*how, piece.how)) paint_run(*how, area);
    how = &piece.how;
    const int count = how->shape == shape_quad ? 4 : 2;
    for (int c = 0; c < count; ++c) {
      const picture_corner& at = piece.corners[c];
      vertices.push_back(
          {at.x, at.y, at.s, at.t, {piece.rgba[0], piece.rgba[1], piece.rgba[2], piece.rgba[3]}});
    }
  }
  if (how) paint_run(*how, area);
  for (const GLenum array : arrays)
    gl.DisableClientState(array);
  OGL_set_clip(0, 0, no_clip, 0);
  OGL_check("paint_pieces");
}

// --- the kept picture ---------------------------------------------------------------------------

// Whether the texture can give back exactly what was painted.
bool can_keep() {
  GLint samples = 0, red = 0, green = 0, blue = 0;
  gl.GetIntegerv(GL_SAMPLE_BUFFERS, &samples);
  gl.GetIntegerv(GL_RED_BITS, &red);
  gl.GetIntegerv(GL_GREEN_BITS, &green);
  gl.GetIntegerv(GL_BLUE_BITS, &blue);
  return samples == 0 && red == 8 && green == 8 && blue == 8;
}

// Makes the texture, of the window's size or more. False if there can be none.
bool make_kept() {
  const auto side = [](int pixels) {
    return static_cast<int>(std::bit_ceil(static_cast<unsigned>(std::max(pixels, 1))));
  };
  const PLT_place place = OGL_place();
  const int dx = side(place.dx), dy = side(place.dy);
  if (kept.gl_id && kept.dx == dx && kept.dy == dy) return true;
  OGL_forget_kept();
  if (std::max(dx, dy) > ren.max_texture_size || !can_keep()) return false;
  gl.GenTextures(1, &kept.gl_id);
  TEX_bind_for_load(kept.gl_id);
  gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGB8, dx, dy, 0, GL_RGB, GL_UNSIGNED_BYTE, nullptr);
  gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  kept.dx = dx;
  kept.dy = dy;
  OGL_check("make_kept");
  return true;
}

void put_kept_down() {
  const float dx = static_cast<float>(mnw.pix_dx), dy = static_cast<float>(mnw.pix_dy);
  const float s = static_cast<float>(kept.place.dx) / static_cast<float>(kept.dx);
  const float t = static_cast<float>(kept.place.dy) / static_cast<float>(kept.dy);
  OGL_setstate(fog_off, 1, lit_off, blend_none, depth_read_off, depth_write_off);
  TEX_bind_for_load(kept.gl_id);
  gl.Color4f(1, 1, 1, 1);
  gl.Begin(GL_QUADS);
  const float corners[4][4] = {{0, 0, 0, 0}, {0, dy, 0, t}, {dx, dy, s, t}, {dx, 0, s, 0}};
  for (const auto& [x, y, at_s, at_t] : corners) {
    gl.TexCoord2f(at_s, at_t);
    gl.Vertex2f(x / mnw.ui_scale, y / mnw.ui_scale);
  }
  gl.End();
  OGL_check("put_kept_down");
}

// All of the picture is kept, or the part of it in `area`.
void keep(const pixel_rect& area) {
  if (!make_kept()) return;
  const PLT_place place = OGL_place();
  const auto down = [](int units, int pixels, int all) { return units * pixels / all; };
  const auto up = [](int units, int pixels, int all) { return (units * pixels + all - 1) / all; };
  const int x = down(area.x, place.dx, mnw.pix_dx), y = down(area.y, place.dy, mnw.pix_dy);
  const int dx = up(area.x + area.dx, place.dx, mnw.pix_dx) - x;
  const int dy = up(area.y + area.dy, place.dy, mnw.pix_dy) - y;
  TEX_bind_for_load(kept.gl_id);
  gl.CopyTexSubImage2D(GL_TEXTURE_2D, 0, x, y, place.x + x, place.y + y, dx, dy);
  kept.place = place;
  OGL_check("keep");
}

// Before the first piece of a frame: a window of another size, and the bars beside the picture.
void begin_paint() {
  if (painted > 0) return;
  const PLT_place place = OGL_place();
  if (!same_place(place, kept.place)) {
    kept.place.dx = 0;
    OGL_viewport(2, 0, 0, 0, 0);
  }
  if (place.x == 0 && place.y == 0) return;
  OGL_set_clip(0, 0, no_clip, 0);
  gl.ClearColor(0, 0, 0, 1);
  gl.Clear(GL_COLOR_BUFFER_BIT);
}

// Paints the frame's picture into the back buffer.
void paint_frame() {
  begin_paint();
  const bool has_kept = painted == 0 && kept.gl_id && kept.place.dx > 0;
  const pixel_rect all = window_pixels();
  pixel_rect area = has_kept ? to_pixels(picture_damage(shown, drawn)) : all;
  // Of a picture that is new for the most part, putting the old one down first is wasted.
  if (area.dx * area.dy > all.dx * all.dy / 2) area = all;
  const bool is_part = area.dx < all.dx || area.dy < all.dy;
  if (is_part) put_kept_down();
  if (area.dx > 0 && area.dy > 0) {
    paint_pieces(painted, area);
    keep(is_part ? area : all);
  }
}

}  // namespace

// --- noting -------------------------------------------------------------------------------------

void OGL_put_as(picture_shape shape, int tex, int blend, int ref, const OGL_rgba& color) {
  next.how.shape = shape;
  next.how.tex = tex;
  next.how.blend = blend;
  if (ref > 0) next.how.texture = tman.gl_name(ref);
  std::copy(color.part, color.part + 4, next.rgba);
}

void OGL_put_corners(const picture_corner (&corners)[4]) {
  std::copy(corners, corners + 4, next.corners);
  drawn.push_back(next);
}

void OGL_put_quad(float x1, float y1, float x2, float y2, float s1, float t1, float s2, float t2) {
  OGL_put_corners({{x1, y1, s1, t1}, {x1, y2, s1, t2}, {x2, y2, s2, t2}, {x2, y1, s2, t1}});
}

void OGL_put_line(float x1, float y1, float x2, float y2) {
  OGL_put_corners({{x1, y1, 0, 0}, {x2, y2, 0, 0}, {}, {}});
}

void OGL_put_clip(const int* x_y_dx_dy) {
  constexpr int none[4] = {0, 0, no_clip, 0};
  const int* from = x_y_dx_dy ? x_y_dx_dy : none;
  next.how.clip_x = from[0];
  next.how.clip_y = from[1];
  next.how.clip_dx = from[2];
  next.how.clip_dy = from[3];
}

void OGL_put_glow(bool on) {
  next.how.glow = on;
}

// --- showing ------------------------------------------------------------------------------------

int OGL_differs() {
  return ogl_inited && !drawn.empty() && (must_show || painted > 0 || !picture_same(drawn, shown));
}

int OGL_sbuff(int goes_on) {
  if (!ogl_inited) return 0;
  const int differs = OGL_differs();
  if (differs) {
    paint_frame();
    const float other = ren.mono_green ? 0.0f : 1.0f;
    gl.Color4f(other, 1.0f, other, ren.plot_alpha);
    OGL_check("OGL_sbuff");
    shown = drawn;
    must_show = false;
    PLT_swap_buffers();
  }
  watch_shown(differs != 0);  // who reads the list of a picture's texts can see the picture
  painted = 0;
  if (!goes_on) drawn.clear();
  return differs;
}

int OGL_drop_picture() {
  const int had_any = !drawn.empty();
  // What is in the back buffer already is no part of what is shown.
  drawn.clear();
  painted = 0;
  return had_any;
}

void OGL_show_next() {
  must_show = true;
}

void OGL_paint() {
  if (!ogl_inited || painted == drawn.size()) return;
  begin_paint();
  paint_pieces(painted, window_pixels());
  painted = drawn.size();
}

void OGL_texture_changes() {
  OGL_paint();
  must_show = true;
  kept.place.dx = 0;
}

void OGL_forget_kept() {
  if (kept.gl_id) {
    TEX_forget(kept.gl_id);
    if (OGL_can_call()) gl.DeleteTextures(1, &kept.gl_id);
  }
  kept = kept_picture();
}
