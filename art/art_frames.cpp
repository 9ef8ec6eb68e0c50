// The scalable frames of the interface image: strips that the program stretches along x (three
// slices), the bar that it stretches along y, and boxes that it cuts into nine slices.
//
// The program repeats and squeezes the middle slice at will, so that each drawing keeps its shape
// within the end slices: between them, and one pixel beyond, a strip is the same along its axis.
// Everything fades out before the rectangle's edge; a neighbour in the image never shows.

#include "art/art.h"

// A box with an outline over its own shadow, the shape of nearly every frame.
struct plate {
  float x0, y0, x1, y1, radius;
  art_paint fill;
  art_colour outline;
  float shadow, reach, drop;  // strength, pixels outside, pixels down; strength 0 for none
};

static art_shape plate_shape(const plate& p) {
  return art_box(p.x0, p.y0, p.x1, p.y1, p.radius);
}

static void draw_plate(const art_cell& cell, const plate& p) {
  if (p.shadow > 0.0f) {
    art_colour shade = art_shade;
    shade.a = p.shadow;
    art_shadow(cell, art_box(p.x0, p.y0 - p.drop, p.x1, p.y1 - p.drop, p.radius), p.reach, shade);
  }
  art_fill(cell, plate_shape(p), p.fill);
  art_fill(cell, art_rim(plate_shape(p), 1), p.outline);
}

// A one-pixel line at row y, softening toward both ends of the cell within `fade` pixels.
static void draw_groove(const art_cell& cell, float y, float fade, const art_colour& colour) {
  art_fill(cell, art_box(0, y, float(cell.dx), y + 1, 0), [=](float x, float) {
    art_colour c = colour;
    c.a *= art_smooth(0, fade, x) * art_smooth(0, fade, float(cell.dx) - x);
    return c;
  });
}

// --- strips along x -----------------------------------------------------------------------------
static void draw_rules(art_canvas& atlas) {
  // Both stand in the top rows, where the program's rectangle runs one row over the image's edge.
  const art_cell rule{&atlas, 1, 487, 100, 25};
  draw_groove(rule, 15, 8, art_rgb(158, 172, 190, 0.9f));
  draw_groove(rule, 14, 8, art_rgb(255, 255, 255, 0.9f));

  const art_cell shelf{&atlas, 102, 487, 100, 25};  // the tabs stand on its line
  draw_groove(shelf, 15, 18, art_steel);
  for (int i = 0; i < 6; ++i)
    draw_groove(shelf, float(14 - i), 18, art_rgb(255, 255, 255, 0.6f - 0.1f * float(i)));
}

static void draw_buttons(art_canvas& atlas) {
  const art_cell up{&atlas, 304, 486, 52, 26};
  draw_plate(up, {1, 2, 51, 22, 6, art_rise(2, art_rgb(222, 229, 238), 21, art_white), art_steel,
                  0.20f, 2.5f, 1});

  const art_cell down{&atlas, 304, 459, 52, 26};
  draw_plate(down,
             {1, 2, 51, 22, 6, art_rise(4, art_rgb(204, 224, 246), 23, art_rgb(168, 200, 234)),
              art_sky, 0, 0, 0});
}

static void draw_progress(art_canvas& atlas) {
  const art_cell trough{&atlas, 112, 161, 28, 16};
  draw_plate(trough, {1, 1, 27, 15, 7, art_rise(3, art_rgb(234, 239, 245), 14, art_mist),
                      art_rgb(176, 188, 204), 0, 0, 0});

  const art_cell fill{&atlas, 83, 161, 28, 16};
  draw_plate(fill, {3, 3, 25, 13, 5, art_flat(art_sky), art_sky, 0, 0, 0});
}

static void draw_level(art_canvas& atlas) {
  // The program draws the level's fill 4 above the track's centre, hence a groove off the middle.
  const art_cell track{&atlas, 240, 242, 65, 24};
  draw_plate(track, {1, 12, 64, 20, 4, art_rise(13, art_rgb(234, 239, 245), 19, art_mist),
                     art_rgb(176, 188, 204), 0, 0, 0});
  const art_cell fill{&atlas, 289, 219, 16, 16};  // white: the program colours it
  draw_plate(fill, {2, 5, 14, 11, 3, art_rise(5, art_rgb(214, 214, 214), 11, art_white),
                    art_rgb(0, 0, 0, 0.15f), 0, 0, 0});
}

static void draw_fields(art_canvas& atlas) {
  const art_cell value{&atlas, 262, 133, 51, 26};
  draw_plate(value, {2, 3, 49, 21, 4, art_rise(17, art_white, 21, art_rgb(226, 232, 240)),
                     art_steel, 0, 0, 0});

  const art_cell list{&atlas, 357, 488, 68, 24};  // its text is white
  draw_plate(list, {2, 2, 66, 22, 5, art_rise(3, art_rgb(38, 52, 70), 21, art_rgb(70, 90, 114)),
                    art_night, 0.20f, 2, 0});
  art_fill(list, art_stroke({{53.5f, 13.5f}, {56.5f, 16.5f}, {59.5f, 13.5f}}, 1.5f), art_white);
  art_fill(list, art_stroke({{53.5f, 10.5f}, {56.5f, 7.5f}, {59.5f, 10.5f}}, 1.5f), art_white);
}

// --- the bar along y ----------------------------------------------------------------------------
static void draw_slider_track(art_canvas& atlas) {
  const art_cell track{&atlas, 102, 248, 20, 40};
  const art_paint across = [](float x, float) {
    return art_mix(art_mist, art_rgb(236, 240, 246), (x - 5) / 10);
  };
  draw_plate(track, {4, 1, 16, 39, 6, across, art_rgb(176, 188, 204), 0, 0, 0});
}

// --- boxes, nine slices -------------------------------------------------------------------------
// The five large
// boxes share one form: 100 square, their plate within margins 9, 14 and 4.
static const float large_left = 9, large_low = 14, large_right = 91, large_high = 96;
// Their top slice ends here: bands and gradients of the head stand above it.
static const float large_head = 71;

static void draw_dialogs(art_canvas& atlas) {
  const art_cell titled{&atlas, 1, 358, 100, 100};
  const plate frame{large_left,
                    large_low,
                    large_right,
                    large_high,
                    5,
                    art_flat(art_paper),
                    art_rgb(51, 67, 86, 0.55f),
                    0.30f,
                    9,
                    4};
  draw_plate(titled, frame);
  const art_shape title_bar =
      art_both(plate_shape(frame), art_box(0, large_high - 22, 100, 100, 0));
  art_fill(titled, title_bar, art_rise(large_high - 22, art_night, large_high, art_slate));

  draw_plate({&atlas, 102, 358, 100, 100}, frame);
}

static void draw_groups(art_canvas& atlas) {
  const art_cell group{&atlas, 203, 358, 100, 100};
  draw_plate(group, {large_left, large_low, large_right, large_high, 5,
                     art_rise(large_head + 2, art_white, large_high, art_mist),
                     art_rgb(176, 188, 204), 0.12f, 6, 2});

  const art_cell list{&atlas, 304, 358, 100, 100};  // let into the page: lit from below
  draw_plate(list, {large_left, large_low, large_right, large_high, 4,
                    art_rise(large_high - 6, art_white, large_high, art_rgb(220, 227, 236)),
                    art_steel, 0, 0, 0});

  const art_cell dark{&atlas, 405, 358, 100, 100};  // its title is mint, its text white
  draw_plate(dark,
             {large_left, large_low, large_right, large_high, 5,
              art_rise(large_head + 2, art_slate, large_high, art_night), art_night, 0.20f, 7, 2});
}

static void draw_small_boxes(art_canvas& atlas) {
  const art_cell field{&atlas, 1, 289, 68, 68};
  draw_plate(field, {2, 2, 66, 66, 4, art_flat(art_white), art_steel, 0.12f, 2, 0});

  const art_cell menu{&atlas, 70, 315, 42, 42};
  draw_plate(menu,
             {8, 13, 34, 40, 4, art_flat(art_white), art_rgb(158, 172, 190, 0.9f), 0.30f, 8, 4});

  // The lower slices of this one end below the plate's nominal foot, so that the plate reaches
  // down.
  const art_cell tip{&atlas, 113, 315, 42, 42};
  draw_plate(tip, {8, 8, 34, 40, 4, art_flat(art_rgb(255, 251, 230)), art_rgb(190, 176, 130), 0.24f,
                   5, 2});

  const art_cell card{&atlas, 440, 12, 44, 44};
  draw_plate(card, {6, 9, 38, 40, 3, art_flat(art_white), art_rgb(176, 188, 204), 0.24f, 6, 2});
}

void art_draw_frames(art_canvas& atlas) {
  draw_rules(atlas);
  draw_buttons(atlas);
  draw_progress(atlas);
  draw_level(atlas);
  draw_fields(atlas);
  draw_slider_track(atlas);
  draw_dialogs(atlas);
  draw_groups(atlas);
  draw_small_boxes(atlas);
}
