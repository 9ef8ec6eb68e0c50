// The widget cells of the interface image that are drawn at their own size: check boxes and radios,
// close boxes, the arrows of value widgets, slider thumbs, tabs, the folder button; and the
// swatches from which the program reads its palette.

#include "art/art.h"

static const art_paint key_face = art_rise(3, art_rgb(226, 232, 240), 20, art_white);

static art_cell cut(art_canvas& atlas, int u, int v, int dx, int dy) {
  return {&atlas, u, v, dx, dy};
}

void art_draw_swatches(art_canvas& atlas) {
  static const struct {
    int u, v, r, g, b;
  } swatches[] = {
      {319, 155, 51, 67, 86},    {319, 147, 78, 78, 73},    {319, 139, 13, 27, 44},
      {319, 131, 125, 126, 121}, {319, 123, 255, 255, 255}, {319, 115, 238, 238, 238},
      {319, 107, 13, 27, 44},    {319, 99, 93, 99, 110},    {319, 91, 34, 41, 53},
      {395, 115, 220, 220, 220}, {319, 83, 39, 44, 52},     {319, 75, 36, 43, 53},
      {319, 67, 127, 220, 175},
  };
  for (const auto& s : swatches)  // 7 by 7, so that people find them; the program reads the middle
    art_fill(cut(atlas, s.u - 3, s.v - 3, 7, 7), art_box(0, 0, 7, 7, 0), art_rgb(s.r, s.g, s.b));
}

// --- check boxes and radios ---------------------------------------------------------------------
// Their shapes sit one row low in the cell, which puts them level with the label's letters.
static void draw_checks(art_canvas& atlas) {
  const art_shape square = art_box(2, 1, 16, 15, 3);
  const art_shape circle = art_disc(9, 8, 7);
  const art_paint field = art_rise(3, art_white, 15, art_rgb(232, 237, 243));

  const art_cell check = cut(atlas, 139, 178, 18, 18);
  art_fill(check, square, field);
  art_fill(check, art_rim(square, 1), art_steel);
  art_fill(cut(atlas, 139, 197, 18, 18), art_stroke({{5.2f, 8.2f}, {8, 5}, {13, 11.4f}}, 2.4f),
           art_sky);

  const art_cell radio = cut(atlas, 83, 123, 18, 18);
  art_fill(radio, circle, field);
  art_fill(radio, art_rim(circle, 1), art_steel);
  art_fill(cut(atlas, 83, 142, 18, 18), art_disc(9, 8, 3.7f), art_sky);
}

// --- close boxes, for a dark title bar ----------------------------------------------------------
static void draw_close_boxes(art_canvas& atlas) {
  const art_colour grounds[2] = {art_rgb(255, 255, 255, 0.16f), art_rgb(205, 62, 58)};
  for (int state = 0; state < 2; ++state) {
    const art_cell cell = cut(atlas, 120, 178 + 19 * state, 18, 18);
    art_fill(cell, art_disc(9, 9, 7), grounds[state]);
    const art_colour cross = art_rgb(255, 255, 255, state ? 1.0f : 0.85f);
    art_fill(cell, art_stroke({{6.5f, 6.5f}, {11.5f, 11.5f}}, 1.5f), cross);
    art_fill(cell, art_stroke({{6.5f, 11.5f}, {11.5f, 6.5f}}, 1.5f), cross);
  }
}

// --- arrows and thumbs --------------------------------------------------------------------------
static void draw_digit_arrows(art_canvas& atlas) {
  // A cell reaches into the value box; the arrow keeps to the part that stands clear of it.
  art_fill(cut(atlas, 83, 197, 14, 18), art_polygon({{3, 5}, {11, 5}, {7, 10}}), art_slate);
  art_fill(cut(atlas, 83, 178, 14, 18), art_polygon({{3, 10}, {11, 10}, {7, 5}}), art_slate);
}

static void draw_key(const art_cell& cell, const art_shape& shape) {
  art_shadow(cell, shape, 2, art_rgb(16, 28, 46, 0.18f));
  art_fill(cell, shape, key_face);
  art_fill(cell, art_rim(shape, 1), art_steel);
}

static void draw_sliders(art_canvas& atlas) {
  const art_cell thumb = cut(atlas, 83, 240, 18, 24);
  draw_key(thumb, art_box(2, 2, 16, 22, 5));
  for (const float y : {9.5f, 12.5f, 15.5f})
    art_fill(thumb, art_box(6, y - 0.5f, 12, y + 0.5f, 0), art_rgb(110, 126, 146));

  for (const bool up : {false, true}) {
    const art_cell cell = cut(atlas, 83, up ? 266 : 216, 18, 22);
    draw_key(cell, art_box(2, 2, 16, 20, 5));
    const float tip = up ? 13.0f : 9.0f, foot = up ? 9.0f : 13.0f;
    art_fill(cell, art_stroke({{5.5f, foot}, {9, tip}, {12.5f, foot}}, 1.8f), art_slate);
  }

  const art_cell knob = cut(atlas, 262, 267, 20, 22);
  draw_key(knob, art_disc(10, 11, 8));
  art_fill(knob, art_disc(10, 11, 2.5f), art_sky);
}

// --- tabs ---------------------------------------------------------------------------------------
// The selected tab opens onto the page below it and covers the shelf's line; the others stand on
// it.
static void draw_tabs(art_canvas& atlas) {
  const art_cell selected = cut(atlas, 204, 486, 98, 26);
  const art_shape front = art_box(5, -12, 93, 24, 6);
  art_fill(selected, front, art_rise(0, art_paper, 22, art_white));
  art_fill(selected, art_rim(front, 1), art_steel);

  const art_cell other = cut(atlas, 204, 459, 98, 26);
  const art_shape behind = art_both(art_box(5, -12, 93, 22, 6), art_box(0, 1, 98, 26, 0));
  art_fill(other, behind, art_rise(1, art_rgb(222, 228, 236), 22, art_rgb(236, 240, 245)));
  art_fill(other, art_rim(art_box(5, -12, 93, 22, 6), 1), art_rgb(158, 172, 190, 0.7f));
}

// --- folder button ------------------------------------------------------------------------------
static void draw_folder(art_canvas& atlas) {
  const art_cell cell = cut(atlas, 208, 133, 26, 26);
  draw_key(cell, art_box(2, 2, 24, 24, 5));
  const art_colour back = art_rgb(31, 92, 158);
  art_fill(cell, art_box(6, 8, 20, 17, 1.5f), back);
  art_fill(cell, art_box(6, 14, 12, 19, 1.5f), back);
  art_fill(cell, art_box(6, 7, 20, 14.5f, 1.5f), art_rise(7, art_sky, 15, art_rgb(84, 152, 220)));
}

void art_draw_cells(art_canvas& atlas) {
  draw_checks(atlas);
  draw_close_boxes(atlas);
  draw_digit_arrows(atlas);
  draw_sliders(atlas);
  draw_tabs(atlas);
  draw_folder(atlas);
}
