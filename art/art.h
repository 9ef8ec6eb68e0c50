// The pictures of the wizard and what they share: the palette, the fonts, the atlas rectangles that
// the widgets cut. See README.md for how to run the program, g_tex.h for what becomes of its files.
#pragma once

#include <string>

#include "art/canvas.h"
#include "corekit/draw/oglp_glyphs.h"

// --- palette ------------------------------------------------------------------------------------
// Cool
// greys between white and ink, one blue accent; the interface colours of the text (ink, mint) stand
// in the swatches and are not free to change with the rest.
inline constexpr art_colour art_white = art_rgb(255, 255, 255);
inline constexpr art_colour art_paper = art_rgb(241, 244, 248);  // a dialog's body
inline constexpr art_colour art_mist = art_rgb(224, 230, 238);   // bands, troughs
inline constexpr art_colour art_steel = art_rgb(158, 172, 190);  // outlines
inline constexpr art_colour art_slate = art_rgb(51, 67, 86);  // dark bodies; the window background
inline constexpr art_colour art_night = art_rgb(30, 42, 58);  // title bars
inline constexpr art_colour art_ink = art_rgb(34, 41, 53);    // words and marks on light ground
inline constexpr art_colour art_sky = art_rgb(42, 116, 192);  // the accent
inline constexpr art_colour art_shade = art_rgb(16, 28, 46);  // every shadow, with an alpha

// --- fonts --------------------------------------------------------------------------------------
// Opens
// the face files under `folder`; false, with a message on standard error, when one is missing.
bool art_open_fonts(const std::string& folder);

enum art_face { face_light, face_medium, face_semibold };
struct art_words {
  art_face face;
  float size;      // units
  float tracking;  // units added after each letter
};
float art_words_width(const art_words& style, const std::string& text);
// Draws the text (Latin-1) from x, with its baseline at y, in cell coordinates.
void art_draw_words(const art_cell& cell, const art_words& style, float x, float y,
                    const std::string& text, const art_colour& colour);

// The words on the wizard's own buttons, and the chevron beside them.
inline constexpr art_words art_face_words{face_semibold, 13, 0.2f};
inline constexpr float art_chevron_dx = 4.5f, art_chevron_gap = 6;
// Pointing left (-1) or right (1), its left end at x, for words with their baseline at y.
art_shape art_chevron(float x, float y, int points);

// The glyph grid stands at the atlas origin, that of the faces beside it; a glyph's baseline is 5
// units above the foot of its cell, its pen position the cell's left edge.
inline constexpr int glyph_baseline = 5;

// --- pictures -----------------------------------------------------------------------------------
void art_draw_glyphs(art_canvas& atlas);    // art_font.cpp
void art_draw_swatches(art_canvas& atlas);  // art_cells.cpp
void art_draw_cells(art_canvas& atlas);     // art_cells.cpp: boxes, arrows, thumbs, tabs
void art_draw_frames(art_canvas& atlas);    // art_frames.cpp: bars, strips and nine-slices
art_canvas art_elements(int scale);         // art_buttons.cpp
art_canvas art_background(int scale);       // art_background.cpp
// The world map from a TopoJSON file of land; false with a message when that cannot be read.
bool art_map(const std::string& land_path, art_canvas& map);  // art_map.cpp
