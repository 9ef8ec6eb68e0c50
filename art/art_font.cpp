// Letters: the two glyph grids of the interface image, and the words on buttons and background.
//
// The grids' advances are fixed by the width table, not by the face, so that every glyph is fitted:
// 1. load the outline with light hinting, which puts its horizontal strokes on whole rows;
// 2. squeeze it if its ink is too wide for the advance;
// 3. try small shifts and stretches, and keep the one whose stems fall best on whole columns while
//    the ink stays about the middle of the advance.
// Ink stands from 2 rows below the baseline to 7 above it: lines are 10 apart, and do not touch.

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include "art/art.h"

static FT_Library library;
static std::array<FT_Face, 3> faces;  // by art_face

bool art_open_fonts(const std::string& folder) {
  static const char* const files[3] = {"Lato-Light.ttf", "Lato-Medium.ttf", "Lato-Semibold.ttf"};
  if (FT_Init_FreeType(&library) != 0) return false;
  for (size_t i = 0; i < faces.size(); ++i) {
    const std::string path = folder + "/" + files[i];
    if (FT_New_Face(library, path.c_str(), 0, &faces[i]) != 0) {
      fprintf(stderr, "cannot open the font %s\n", path.c_str());
      return false;
    }
  }
  return true;
}

// --- words --------------------------------------------------------------------------------------
static FT_F26Dot6 to_26_6(float v) {
  return FT_F26Dot6(lroundf(v * 64.0f));
}

// Calls place(glyph, x) for every letter with the pen at x, all in pixels of so many a unit;
// returns the pen's end.
template <typename Place>
static float walk_words(const art_words& style, const std::string& text, int scale, Place place) {
  FT_Face face = faces[style.face];
  FT_Set_Char_Size(face, 0, to_26_6(style.size * float(scale)), 72, 72);
  float x = 0;
  FT_UInt last = 0;
  for (const char c : text) {
    const FT_UInt index = FT_Get_Char_Index(face, static_cast<unsigned char>(c));
    FT_Vector kern{};
    if (last) FT_Get_Kerning(face, last, index, FT_KERNING_UNFITTED, &kern);
    last = index;
    if (FT_Load_Glyph(face, index, FT_LOAD_NO_BITMAP | FT_LOAD_TARGET_LIGHT) != 0) continue;
    x += float(kern.x) / 64.0f;
    place(face->glyph, x);
    x += float(face->glyph->linearHoriAdvance) / 65536.0f + style.tracking * float(scale);
  }
  return x - style.tracking * float(scale);
}

float art_words_width(const art_words& style, const std::string& text) {
  return walk_words(style, text, 1, [](FT_GlyphSlot, float) {});
}

void art_draw_words(const art_cell& cell, const art_words& style, float x, float y,
                    const std::string& text, const art_colour& colour) {
  const int scale = cell.canvas->scale;
  walk_words(style, text, scale, [&](FT_GlyphSlot glyph, float pen) {
    FT_Outline_Translate(&glyph->outline, to_26_6(x * float(scale) + pen),
                         to_26_6(y * float(scale)));
    if (FT_Render_Glyph(glyph, FT_RENDER_MODE_NORMAL) != 0) return;
    const FT_Bitmap& ink = glyph->bitmap;
    for (int row = 0; row < int(ink.rows); ++row)
      for (int column = 0; column < int(ink.width); ++column) {
        const int u = glyph->bitmap_left + column, v = glyph->bitmap_top - 1 - row;
        if (u < 0 || v < 0 || u >= cell.dx * scale || v >= cell.dy * scale) continue;
        art_blend(cell.canvas->at(cell.u * scale + u, cell.v * scale + v), colour,
                  float(ink.buffer[row * ink.pitch + column]) / 255.0f);
      }
  });
}

// --- the glyph grid -----------------------------------------------------------------------------

// An accent that overhangs its letter must not push the letter out of the middle.
static unsigned char base_letter(unsigned char byte) {
  const bool is_letter = byte >= 0xC0 && byte != 0xDF;
  return is_letter ? static_cast<unsigned char>(glyph_stand_ins[byte - 160u]) : byte;
}

// Width that the ink may take within an advance, units.
static float ink_room(unsigned char byte, int advance) {
  if (strchr("_/\\", byte)) return float(advance);  // joined or slanting: neighbours may come near
  if (strchr(",.", byte)) return float(advance) - 0.5f;
  return float(advance) - 0.8f;
}

static constexpr int trial_dx = 64, trial_dy = 64;

// How well the outline falls on whole pixels: 1 when no pixel is half covered.
static float sharpness(FT_Outline& outline) {
  unsigned char buffer[trial_dx * trial_dy] = {};
  FT_Bitmap bitmap{};
  bitmap.width = trial_dx;
  bitmap.rows = trial_dy;
  bitmap.pitch = trial_dx;
  bitmap.buffer = buffer;
  bitmap.num_grays = 256;
  bitmap.pixel_mode = FT_PIXEL_MODE_GRAY;
  FT_Outline_Translate(&outline, 0, 16 * 64);
  FT_Outline_Get_Bitmap(library, &outline, &bitmap);
  float squares = 0, sum = 0;
  for (const unsigned char value : buffer) {
    const float coverage = float(value) / 255.0f;
    squares += coverage * coverage;
    sum += coverage;
  }
  return sum > 0 ? squares / sum : 0;
}

// Fits the loaded outline into its advance, which is in units as all is here. `base` is the box of
// the letter without its accent.
static void fit_outline(FT_Outline& outline, const FT_BBox& base, unsigned char byte, int advance,
                        int scale) {
  const float unit = 64.0f * float(scale);  // of the outline
  const std::vector<FT_Vector> points(outline.points, outline.points + outline.n_points);
  FT_BBox box;
  FT_Outline_Get_CBox(&outline, &box);
  const float ink = float(box.xMax - box.xMin) / unit;
  const float room = ink_room(byte, advance);
  const float squeeze = std::min(1.0f, room / ink);
  // Middle of the letter, from the left end of the ink.
  const float middle = (float(base.xMin + base.xMax) * 0.5f - float(box.xMin)) / unit;
  // A stop leans to the right, away from the letter that it follows.
  const float target = float(advance) * 0.5f + (strchr(",.", byte) ? 0.25f : 0.0f);

  // All letters keep the same space before them, and what is over stands behind them: else a blank
  // between two words can be as narrow as the space that two letters of a word leave.
  const bool is_letter = isalpha(byte) || (byte >= 0xC0 && advance > 3);
  const float least_left = !is_letter ? 0.0f : scale == 1 ? 0.8f : 1.0f;

  auto place = [&](float stretch, float left) {
    for (size_t i = 0; i < points.size(); ++i) {
      outline.points[i].x = FT_Pos(lroundf(float(points[i].x - box.xMin) * stretch + left * unit));
      outline.points[i].y = points[i].y;
    }
  };
  float best = -1e9f, best_stretch = squeeze, best_left = 0;
  for (int s = -10; s <= 8; ++s) {
    const float stretch = squeeze * (1.0f + float(s) * 0.01f);
    const float width = ink * stretch;
    if (width > room + 0.25f) continue;
    for (int shift = -6; shift <= 6; ++shift) {
      const float wish = target - middle * stretch + float(shift) / 16.0f;
      const float most = std::max(0.0f, float(advance) - width);
      const float left = std::clamp(wish, std::min(least_left, most), most);
      place(stretch, left);
      const float score = sharpness(outline) - 0.6f * std::abs(float(s)) * 0.01f -
                          0.15f * std::abs(left - (target - middle * stretch));
      if (score <= best) continue;
      best = score;
      best_stretch = stretch;
      best_left = left;
    }
  }
  place(best_stretch, best_left);
}

// A grid of glyphs in the atlas, and its font; units.
struct glyph_sheet {
  FT_Face face;
  int u, v, dx, dy;  // the grid's lower left; a cell
  const std::array<glyph_cell, 256>& cells;
  const std::array<unsigned char, 256>& widths;
};

// Draws the glyph of a byte into its cell, which is white all over: coverage is the alpha, the
// colour comes from the program. A space has none.
static void draw_glyph(art_canvas& atlas, const glyph_sheet& sheet, unsigned char byte) {
  constexpr FT_Int32 load = FT_LOAD_NO_BITMAP | FT_LOAD_TARGET_LIGHT;
  FT_Face const face = sheet.face;
  const glyph_cell place = sheet.cells[byte];
  const int left = sheet.u + place.column * sheet.dx, low = sheet.v + place.row * sheet.dy;
  const int scale = atlas.scale;
  art_each({&atlas, left, low, sheet.dx, sheet.dy}, [](art_colour& pixel, float, float) {
    pixel = {1, 1, 1, 0};
  });
  if (byte == ' ') return;

  FT_BBox base;
  FT_Load_Char(face, base_letter(byte), load);
  FT_Outline_Get_CBox(&face->glyph->outline, &base);
  FT_Load_Char(face, byte, load);
  fit_outline(face->glyph->outline, base, byte, sheet.widths[byte], scale);
  FT_Render_Glyph(face->glyph, FT_RENDER_MODE_NORMAL);
  const FT_Bitmap& ink = face->glyph->bitmap;
  for (int y = 0; y < int(ink.rows); ++y)
    for (int x = 0; x < int(ink.width); ++x) {
      const int u = face->glyph->bitmap_left + x;
      const int v = glyph_baseline * scale + face->glyph->bitmap_top - 1 - y;
      if (u < 0 || v < 0 || u >= sheet.dx * scale || v >= sheet.dy * scale) continue;
      atlas.at(left * scale + u, low * scale + v).a = float(ink.buffer[y * ink.pitch + x]) / 255.0f;
    }
}

// An accented i has the advance of an e: bars at its foot and head take up the room, which would
// part the word in two.
static void draw_bars(art_canvas& atlas, unsigned char byte) {
  constexpr float ink = 0.8f;
  const glyph_cell place = glyph_own_cells[byte];
  const float foot = glyph_baseline, head = foot + (byte == 0xCD ? 6 : 4);
  const float head_end = byte == 0xCD ? 5 : 3;
  art_each({&atlas, place.column * glyph_dx, place.row * glyph_dy, glyph_dx, glyph_dy},
           [&](art_colour& pixel, float x, float y) {
             const bool in_foot = y > foot && y < foot + 1 && x > 1 && x < 5;
             const bool in_head = y > head && y < head + 1 && x > 1 && x < head_end;
             if (in_foot || in_head) pixel.a = std::max(pixel.a, ink);
           });
}

// In place of the sign "<" or ">": the chevron of a face, its left end at x.
static void draw_chevron(art_canvas& atlas, unsigned char byte, float x, int points) {
  const glyph_cell place = face_glyph_cells[byte];
  const art_shape shape = art_chevron(x, glyph_baseline, points);
  art_each(
      {&atlas, face_glyph_u + place.column * face_glyph_dx,
       face_glyph_v + place.row * face_glyph_dy, face_glyph_dx, face_glyph_dy},
      [&](art_colour& pixel, float at_x, float at_y) {
        pixel = {1, 1, 1, std::clamp(0.5f - shape(at_x, at_y) * float(atlas.scale), 0.0f, 1.0f)};
      });
}

void art_draw_glyphs(art_canvas& atlas) {
  const glyph_sheet text = {faces[face_medium], 0,           0, glyph_dx, glyph_dy,
                            glyph_own_cells,    glyph_widths};
  // Wider than high: the advances ask for 11 units, the line height for 10. Where stems have two
  // columns to fall on they are thinner, and the letters a little wider for it.
  const float scale = float(atlas.scale);
  FT_Set_Char_Size(text.face, to_26_6((scale > 1 ? 11.3f : 11) * scale), to_26_6(10 * scale), 72,
                   72);
  for (const std::string_view row : glyph_grid)
    for (const char c : row)
      draw_glyph(atlas, text, static_cast<unsigned char>(c));
  for (const std::string_view row : glyph_annex)
    for (const char c : row)
      draw_glyph(atlas, text, static_cast<unsigned char>(c));
  draw_bars(atlas, 0xCD);
  draw_bars(atlas, 0xED);

  const glyph_sheet words = {faces[face_semibold], face_glyph_u,  face_glyph_v,
                             face_glyph_dx,        face_glyph_dy, face_glyph_cells,
                             face_glyph_widths};
  const float size = art_face_words.size * scale;
  FT_Set_Char_Size(words.face, 0, to_26_6(size), 72, 72);
  for (const std::string_view row : face_glyph_grid)
    for (const char c : row)
      draw_glyph(atlas, words, static_cast<unsigned char>(c));
  draw_chevron(atlas, '<', 1, -1);
  draw_chevron(atlas, '>', face_glyph_widths['>'] - art_chevron_dx - 1, 1);
}
