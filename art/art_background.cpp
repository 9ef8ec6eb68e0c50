// The picture behind the wizard: a calm morning, from deep blue through haze to ranges of
// mountains, and an airliner that climbs out before them.
//
// The page's panels cover the middle (y 50 to 503, x 10 to 200 and 210 to 790) and let an eighth of
// the picture through. So the lower half, where most pages have room, is drawn strong: dark ranges,
// a white aircraft before them. Free of panels are the band of sky above, which carries the name,
// and the foot, on which the buttons stand; both are kept quiet.

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "art/art.h"

static const int sky_dx = 800, sky_dy = 600;

// --- noise --------------------------------------------------------------------------------------
static float lattice(int x, int y) {
  uint32_t h = uint32_t(x) * 0x9E3779B1u ^ uint32_t(y) * 0x85EBCA77u;
  h = (h ^ (h >> 15)) * 0x2C1B3C6Du;
  h = (h ^ (h >> 13)) * 0x297A2D39u;
  return float((h ^ (h >> 16)) & 0xFFFF) / 65535.0f;
}

static float value_noise(float x, float y) {
  const float fx = std::floor(x), fy = std::floor(y);
  const float tx = art_smooth(0, 1, x - fx), ty = art_smooth(0, 1, y - fy);
  const int ix = int(fx), iy = int(fy);
  return std::lerp(std::lerp(lattice(ix, iy), lattice(ix + 1, iy), tx),
                   std::lerp(lattice(ix, iy + 1), lattice(ix + 1, iy + 1), tx), ty);
}

static float fractal_noise(float x, float y, int octaves) {
  float sum = 0, share = 0.5f;
  for (int i = 0; i < octaves; ++i, share *= 0.5f, x = x * 2.03f + 17, y = y * 2.03f + 31)
    sum += share * value_noise(x, y);
  return sum;
}

// --- sky ----------------------------------------------------------------------------------------
static art_colour sky_colour(float y) {
  static const struct {
    float y;
    art_colour colour;
  } stops[] = {
      {60, art_rgb(250, 226, 198)},  {130, art_rgb(248, 232, 214)}, {220, art_rgb(216, 228, 238)},
      {380, art_rgb(150, 192, 228)}, {520, art_rgb(86, 142, 200)},  {600, art_rgb(46, 98, 162)},
  };
  size_t i = 1;
  while (i + 1 < std::size(stops) && y > stops[i].y)
    ++i;
  return art_mix(stops[i - 1].colour, stops[i].colour,
                 (y - stops[i - 1].y) / (stops[i].y - stops[i - 1].y));
}

static void paint_sky(art_canvas& sky) {
  const art_cell all{&sky, 0, 0, sky_dx, sky_dy};
  art_fill(all, art_box(0, 0, sky_dx, sky_dy, 0), [](float x, float y) {
    art_colour colour = sky_colour(y);
    // The light comes from the right: warmer and brighter toward it, low down.
    const float glow = std::exp(-std::hypot((x - 690) / 420, (y - 120) / 260) * 1.6f);
    colour = art_mix(colour, art_rgb(255, 244, 226), 0.45f * glow);
    // Cirrus: long streaks, torn along a slant, thinning out to the left under the name.
    const float along = x * 0.0052f - y * 0.004f, across = y * 0.021f + x * 0.0034f;
    const float bend = fractal_noise(along * 0.9f + 5, across * 0.35f, 3);
    const float streak = fractal_noise(along + bend * 1.4f, across * 1.5f + bend * 3.2f, 5);
    const float veil = art_smooth(0.44f, 0.80f, streak) * art_smooth(330, 520, y);
    return art_mix(colour, art_white, veil * (0.30f + 0.50f * art_smooth(150, 640, x)));
  });
}

// --- mountains ----------------------------------------------------------------------------------
// A ridge: noise folded at its middle, which gives crests instead of waves.
static float ridge_noise(float x, float seed) {
  float sum = 0, share = 0.5f;
  for (int i = 0; i < 6; ++i, share *= 0.5f, x = x * 2.03f + 17)
    sum += share * (1 - std::abs(2 * value_noise(x + seed, seed + float(i)) - 1));
  return sum;
}

static void paint_mountains(art_canvas& sky) {
  // From the farthest: height of the crest, its swing and scale, how much haze lies before it, and
  // how far down its snow reaches.
  static const struct {
    float height, swing, scale, haze, snow;
  } ranges[] = {
      {236, 120, 0.0042f, 0.54f, 44}, {176, 110, 0.0056f, 0.34f, 26}, {122, 84, 0.0075f, 0.20f, 0},
      {74, 56, 0.0105f, 0.10f, 0},    {30, 34, 0.0150f, 0.0f, 0},
  };
  const art_cell all{&sky, 0, 0, sky_dx, sky_dy};
  float seed = 3;
  for (const auto& range : ranges) {
    seed += 41.7f;
    const art_colour ground = art_rgb(18, 44, 66), haze = art_rgb(186, 206, 224);
    const auto crest = [&range, seed](float x) {
      return range.height + range.swing * (ridge_noise(x * range.scale, seed) - 0.55f) * 2;
    };
    const art_shape hill = [&](float x, float y) { return y - crest(x); };
    art_fill(all, hill, [&](float x, float y) {
      const float below = crest(x) - y;
      art_colour colour = art_mix(ground, haze, range.haze);
      // Spurs run down from the crest; those turned to the light, which comes from the right, catch
      // it.
      const float along = x * 0.022f + below * 0.012f, down = below * 0.020f - x * 0.006f;
      const float spur = fractal_noise(along + seed, down + seed, 3);
      colour = art_mix(colour, art_rgb(255, 226, 196),
                       0.26f * range.haze * art_smooth(0.46f, 0.66f, spur));
      if (range.snow > 0) {
        const float line = range.snow * (0.2f + 1.8f * spur);
        colour = art_mix(colour, art_rgb(240, 246, 252),
                         0.8f * art_smooth(line, line * 0.4f, below) *
                             art_smooth(range.height - 30, range.height + 40, crest(x)));
      }
      // Mist settles toward the foot of each range.
      return art_mix(colour, haze, art_smooth(20, 120, below) * 0.5f * range.haze);
    });
  }
}

// --- the name, and the aircraft -----------------------------------------------------------------
static void paint_aircraft(art_canvas& sky) {
  const art_cell all{&sky, 0, 0, sky_dx, sky_dy};
  const art_point tail{452, 514}, nose{716, 571};
  const float length = std::hypot(nose.x - tail.x, nose.y - tail.y);
  const float cx = (nose.x - tail.x) / length, cy = (nose.y - tail.y) / length;
  // A point of the aircraft's own axes (forward, left) about its middle.
  const auto turn = [&](float forward, float left) {
    return art_point{nose.x + forward * cx - left * cy, nose.y + forward * cy + left * cx};
  };
  // The trail: two lines from the engines that widen, merge and fade behind.
  for (const float side : {-2.2f, 2.2f})
    art_fill(
        all,
        [&](float x, float y) {
          const float back = (nose.x - x) * cx + (nose.y - y) * cy;
          const float off = -(x - nose.x) * cy + (y - nose.y) * cx - side;
          return back < 9 ? 9.0f : std::abs(off) - (0.45f + back * 0.010f);
        },
        [&](float x, float y) {
          const float back = (nose.x - x) * cx + (nose.y - y) * cy;
          const float fade = 1.0f - art_smooth(10, length, back);
          return art_rgb(255, 255, 255, 0.75f * fade * fade);
        });
  art_fill(all, art_stroke({turn(-8, 0), turn(10, 0)}, 2.4f), art_white);
  art_fill(all,
           art_polygon({turn(4, 0), turn(-4, 11), turn(-6.5f, 11), turn(-2.5f, 0), turn(-6.5f, -11),
                        turn(-4, -11)}),
           art_white);
  art_fill(all,
           art_polygon({turn(-6, 0), turn(-9.5f, 4.5f), turn(-11, 4.5f), turn(-9.5f, 0),
                        turn(-11, -4.5f), turn(-9.5f, -4.5f)}),
           art_white);
}

// The airliner from its right side, a little from above. Its own axes: x from the tail (0) to the
// nose (300), y upward from the middle of the fuselage.
static art_shape airliner_fuselage() {
  std::vector<art_point> outline;
  constexpr int steps = 40;
  const auto half = [](float x) {  // of the height
    if (x > 246) return 15 * std::sqrt(std::max(0.0f, 1 - (x - 246) * (x - 246) / (54 * 54)));
    if (x < 110) return 2 + 13 * std::sin(x / 110 * 1.5708f);
    return 15.0f;
  };
  // The tail rises, the nose droops.
  const auto middle = [](float x) {
    return x < 110   ? (110 - x) * (110 - x) * 0.0009f
           : x > 246 ? -(x - 246) * (x - 246) * 0.0016f
                     : 0;
  };
  for (int i = 0; i <= steps; ++i) {
    const float x = 300 * float(i) / steps;
    outline.push_back({x, middle(x) + half(x)});
  }
  for (int i = steps; i >= 0; --i) {
    const float x = 300 * float(i) / steps;
    outline.push_back({x, middle(x) - half(x)});
  }
  return art_polygon(outline);
}

static void paint_airliner(art_canvas& sky) {
  const art_cell field{&sky, 340, 90, 440, 220};
  const float pitch = 0.16f, size = 1.12f, c = std::cos(pitch), s = std::sin(pitch);
  const float tail_x = 50, tail_y = 66;  // in the field
  // From the field to the aircraft's axes; distances change with them.
  const auto own = [=](float x, float y) {
    const float dx = (x - tail_x) / size, dy = (y - tail_y) / size;
    return art_point{dx * c + dy * s, dy * c - dx * s};
  };
  const auto put = [&](const art_shape& shape, const art_paint& paint) {
    art_fill(
        field,
        [&](float x, float y) {
          const art_point at = own(x, y);
          return shape(at.x, at.y) * size;
        },
        [&](float x, float y) {
          const art_point at = own(x, y);
          return paint(at.x, at.y);
        });
  };
  const art_colour white = art_rgb(255, 255, 255), shade = art_rgb(150, 172, 198);
  const art_colour dark = art_rgb(84, 108, 138), accent = art_rgb(28, 92, 160);

  // What stands behind the fuselage: the far wing, the far stabiliser, the fin.
  put(art_polygon({{176, 8}, {140, 8}, {96, 46}, {106, 46}}), art_flat(shade));
  put(art_polygon({{34, 10}, {14, 12}, {2, 24}, {10, 24}}), art_flat(shade));
  put(art_polygon({{62, 12}, {30, 62}, {10, 64}, {14, 14}}),
      art_rise(14, art_rgb(20, 70, 128), 62, accent));
  put(art_polygon({{50, 30}, {42, 42}, {13, 46}, {13, 34}}), art_flat(art_rgb(255, 226, 178)));

  const art_shape fuselage = airliner_fuselage();
  put(fuselage, art_rise(-12, shade, 7, white));
  put(art_both(fuselage, art_box(0, -8, 300, -5.6f, 0)), art_flat(accent));
  for (float x = 78; x < 252; x += 6.4f)
    put(art_box(x, 1.6f, x + 3, 5.6f, 1.2f), art_flat(art_rgb(70, 92, 120)));
  put(art_both(fuselage, art_polygon({{268, 3}, {284, 2.4f}, {281, 7}, {270, 8.4f}})),
      art_flat(art_rgb(40, 60, 86)));

  const art_colour wing = art_mix(dark, white, 0.86f);
  // The near stabiliser, the engine, the near wing over it.
  put(art_polygon({{46, 5}, {22, 6}, {0, -10}, {9, -11}}), art_rise(-10, dark, 6, shade));
  put(art_box(150, -34, 190, -17, 8), art_rise(-33, dark, -18, white));
  put(art_box(184, -33, 190, -18, 3), art_flat(art_rgb(30, 48, 72)));
  put(art_polygon({{196, -6}, {136, -4}, {52, -62}, {46, -52}, {42, -53}, {50, -66}, {66, -67}}),
      [&](float x, float) { return art_mix(wing, dark, art_smooth(150, 60, x) * 0.35f); });
}

static void paint_name(art_canvas& sky) {
  const art_cell all{&sky, 0, 0, sky_dx, sky_dy};
  const art_words type{face_light, 40, 5};
  const float x = 27, y = 537;
  const float width = art_words_width(type, "SKYVANE");
  for (const float low : {2.0f, 1.0f})
    art_draw_words(all, type, x, y - low, "SKYVANE", art_rgb(16, 44, 88, 0.12f));
  art_draw_words(all, type, x, y, "SKYVANE", art_white);
  art_draw_words(all, {face_light, 40, 0}, x + width + 18, y, "9", art_rgb(255, 226, 178));
}

// Breaks up the bands that slow gradients make in whole steps. At half a unit a pixel they are too
// narrow to be seen, and the noise would double the file.
static void dither(art_canvas& sky) {
  for (int v = 0; v < sky.dy; ++v)
    for (int u = 0; u < sky.dx; ++u) {
      const float n =
          52.9829189f * std::fmod(0.06711056f * float(u) + 0.00583715f * float(v), 1.0f);
      const float step = (n - std::floor(n) - 0.5f) / 255.0f;
      art_colour& pixel = sky.at(u, v);
      pixel = {pixel.r + step, pixel.g + step, pixel.b + step, 1};
    }
}

art_canvas art_background(int scale) {
  art_canvas sky(sky_dx, sky_dy, scale);
  paint_sky(sky);
  paint_mountains(sky);
  paint_airliner(sky);
  paint_aircraft(sky);
  paint_name(sky);
  if (scale == 1) dither(sky);
  return sky;
}
