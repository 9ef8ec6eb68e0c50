// The sky behind the wizard: a calm morning, from deep blue through haze to a range of hills.
//
// The page's panels cover the middle (y 50 to 503, x 10 to 790); what is seen is the band of sky
// above, which carries the name and a climbing aircraft, and the hills below, on which the buttons
// stand. Both are kept quiet.

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

// --- hills --------------------------------------------------------------------------------------
static void paint_hills(art_canvas& sky) {
  // From the farthest: height of the crest, its swing and scale, and how much haze lies before it.
  static const struct {
    float height, swing, scale, haze;
  } ranges[] = {
      {118, 52, 0.008f, 0.86f}, {86, 44, 0.010f, 0.72f}, {58, 36, 0.0125f, 0.54f},
      {37, 26, 0.016f, 0.34f},  {16, 22, 0.021f, 0.14f},
  };
  const art_cell all{&sky, 0, 0, sky_dx, sky_dy};
  float seed = 3;
  for (const auto& range : ranges) {
    seed += 41.7f;
    const art_colour ground = art_rgb(30, 62, 84), haze = art_rgb(206, 218, 230);
    const auto crest = [&range, seed](float x) {
      return range.height +
             range.swing * (fractal_noise(x * range.scale + seed, seed, 5) - 0.48f) * 2;
    };
    const art_shape hill = [&](float x, float y) { return y - crest(x); };
    art_fill(all, hill, [&](float x, float y) {
      // Mist settles toward the foot of each range.
      const float depth = std::clamp((crest(x) - y) / 46, 0.0f, 1.0f);
      const art_colour colour = art_mix(ground, haze, range.haze);
      const art_colour lit =
          art_mix(colour, art_rgb(255, 236, 212), 0.16f * art_smooth(200, 800, x));
      return art_mix(lit, haze, depth * 0.42f * range.haze);
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
  paint_hills(sky);
  paint_aircraft(sky);
  paint_name(sky);
  if (scale == 1) dither(sky);
  return sky;
}
