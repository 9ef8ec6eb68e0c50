// The elements image: the six faces of the wizard's own buttons in three states each, and the light
// panel on which a page stands.
//
// A face is 22 high. Its three states stand one above the other with a free row between: hover at
// row 0, pressed at row 23, idle at row 46. The program draws a disabled face at half opacity.

#include <algorithm>
#include <array>

#include "art/art.h"

enum face_state { hover, pressed, idle };
static const int face_dy = 22;

struct face_look {
  art_colour low, high, outline, words;
};
static const std::array<face_look, 3> plain_looks = {{
    {art_rgb(214, 231, 250), art_rgb(248, 252, 255), art_rgb(84, 142, 204), art_rgb(16, 62, 116)},
    {art_rgb(200, 214, 230), art_rgb(176, 194, 214), art_rgb(96, 118, 144), art_ink},
    {art_rgb(224, 231, 239), art_white, art_rgb(142, 158, 178), art_ink},
}};
// Next is what most presses are for.
static const std::array<face_look, 3> chief_looks = {{
    {art_rgb(20, 96, 176), art_rgb(44, 122, 204), art_rgb(20, 80, 148), art_white},
    {art_rgb(28, 88, 152), art_rgb(20, 68, 124), art_rgb(14, 52, 98), art_white},
    {art_rgb(24, 86, 156), art_rgb(48, 118, 188), art_rgb(18, 68, 128), art_white},
}};

struct button_face {
  const char* words;
  int u, dx;
  int chevron;  // -1 points left, before the words; 1 points right, after them
  const std::array<face_look, 3>& looks;
};
static const button_face faces[] = {
    {"Quit", 1, 50, 0, plain_looks},           {"Back", 54, 89, -1, plain_looks},
    {"Next", 150, 100, 1, chief_looks},        {"Select All", 255, 114, 0, plain_looks},
    {"Select None", 374, 132, 0, plain_looks}, {"Options", 628, 90, 0, plain_looks},
};

art_shape art_chevron(float x, float y, int points) {
  const float middle = y + 4.5f, tail = points < 0 ? x + art_chevron_dx : x;
  const float tip = points < 0 ? x + 0.5f : x + art_chevron_dx - 0.5f;
  return art_stroke({{tail, middle + 4}, {tip, middle}, {tail, middle - 4}}, 1.8f);
}

static void draw_face(art_canvas& elements, const button_face& face, face_state state) {
  const art_cell cell{&elements, face.u, state * (face_dy + 1), face.dx, face_dy};
  const face_look& look = face.looks[state];

  const float foot = 1;  // the shadow's row
  const art_shape body = art_box(0, foot, float(face.dx), float(face_dy), 5);
  if (state != pressed)
    art_fill(cell, art_box(0, 0, float(face.dx), float(face_dy) - 1, 5),
             art_rgb(16, 28, 46, 0.30f));
  art_fill(cell, body, art_rise(foot, look.low, float(face_dy), look.high));
  art_fill(cell, art_rim(body, 1), look.outline);

  float width = art_words_width(art_face_words, face.words);
  if (face.chevron) width += art_chevron_dx + art_chevron_gap;
  float x = (float(face.dx) - width) * 0.5f;
  const float y = state == pressed ? 6 : 7;  // pressed in by one row
  if (face.chevron < 0) {
    art_fill(cell, art_chevron(x, y, -1), look.words);
    x += art_chevron_dx + art_chevron_gap;
  }
  art_draw_words(cell, art_face_words, x, y, face.words, look.words);
  if (face.chevron > 0) {
    x += art_words_width(art_face_words, face.words) + art_chevron_gap;
    art_fill(cell, art_chevron(x, y, 1), look.words);
  }
}

// The page panel, nine slices of a 41 unit square with a margin of one: white that lets an eighth
// of the picture through. Under it the darkest ground is a light grey, on which every text of a
// page can be read, and the picture still lives.
static void draw_panel(art_canvas& elements) {
  const art_cell cell{&elements, 982, 2, 41, 41};
  const art_shape body = art_box(1, 1, 40, 40, 8), rim = art_rim(body, 1);
  art_fill(cell, art_box(0, 0, 41, 41, 9), art_rgb(16, 28, 46, 0.16f));
  art_each(cell, [&](art_colour& pixel, float x, float y) {
    const float inside = std::clamp(0.5f - body(x, y) * float(elements.scale), 0.0f, 1.0f);
    // The glass takes the place of the shadow: a shadow under it would grey it.
    pixel = art_mix(pixel, {1, 1, 1, 0.88f}, inside);
    if (rim(x, y) < 0) art_blend(pixel, {1, 1, 1, 0.55f}, inside);
  });
}

art_canvas art_elements(int scale) {
  art_canvas elements(1024, 70, scale);
  for (const button_face& face : faces)
    for (const face_state state : {hover, pressed, idle})
      draw_face(elements, face, state);
  draw_panel(elements);
  art_bleed({&elements, 0, 0, 1024, 70});
  return elements;
}
