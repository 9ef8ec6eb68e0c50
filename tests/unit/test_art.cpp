// The compiled-in pictures: what the program counts on when it cuts them. Everything is read from
// the linked arrays, row 0 the lowest, with the rectangles that the widgets use.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "corekit/OOPS_cpp/g_tex.h"

namespace {

struct rgba {
  int r, g, b, a;
  bool operator==(const rgba&) const = default;
};

struct picture {
  const unsigned char* bytes;
  int dx, dy, channels;
  rgba at(int u, int v) const {
    const unsigned char* p = bytes + (size_t(v) * dx + u) * channels;
    return {p[0], p[1], p[2], channels == 4 ? p[3] : 255};
  }
};
const picture interface_image{g_tex_interface, g_tex_interface_dx, g_tex_interface_dy, 4};
const picture elements_image{g_tex_elements, g_tex_elements_dx, g_tex_elements_dy, 4};
const picture map_image{g_tex_map, g_tex_map_dx, g_tex_map_dy, 4};
const picture background_image{g_tex_background, g_tex_background_dx, g_tex_background_dy, 3};

struct rect {
  int u, v, dx, dy;
};

std::vector<rgba> pixels_of(const picture& image, const rect& r) {
  std::vector<rgba> all;
  for (int v = r.v; v < r.v + r.dy; ++v)
    for (int u = r.u; u < r.u + r.dx; ++u)
      all.push_back(image.at(u, v));
  return all;
}

int highest_alpha(const picture& image, const rect& r) {
  int highest = 0;
  for (const rgba& pixel : pixels_of(image, r))
    highest = std::max(highest, pixel.a);
  return highest;
}

// The one-pixel ring round a rectangle, as far as the image goes.
int ring_alpha(const picture& image, const rect& r) {
  int highest = 0;
  for (int v = r.v - 1; v <= r.v + r.dy; ++v)
    for (int u = r.u - 1; u <= r.u + r.dx; ++u) {
      const bool inside = u >= r.u && u < r.u + r.dx && v >= r.v && v < r.v + r.dy;
      if (inside || u < 0 || v < 0 || u >= image.dx || v >= image.dy) continue;
      highest = std::max(highest, image.at(u, v).a);
    }
  return highest;
}

// What is clear has no colour.
bool look_same(const rgba& a, const rgba& b) {
  return a == b || (a.a == 0 && b.a == 0);
}

// Whether all columns of the rectangle are the same (a strip that may be stretched along x).
bool same_along_x(const picture& image, const rect& r) {
  for (int v = r.v; v < r.v + r.dy; ++v)
    for (int u = r.u + 1; u < r.u + r.dx; ++u)
      if (!look_same(image.at(u, v), image.at(r.u, v))) return false;
  return true;
}

bool same_along_y(const picture& image, const rect& r) {
  for (int v = r.v + 1; v < r.v + r.dy; ++v)
    for (int u = r.u; u < r.u + r.dx; ++u)
      if (!look_same(image.at(u, v), image.at(u, r.v))) return false;
  return true;
}

// Contrast of two colours as the accessibility guidelines define it, 1 to 21.
double luminance(double r, double g, double b) {
  const auto linear = [](double v) {
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(r) + 0.7152 * linear(g) + 0.0722 * linear(b);
}

double luminance(const rgba& c) {
  return luminance(c.r / 255.0, c.g / 255.0, c.b / 255.0);
}

double contrast(double a, double b) {
  return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

rgba over(const rgba& top, const rgba& under) {
  const auto mix = [&](int t, int u) {
    return int(std::lround((t * top.a + u * (255 - top.a)) / 255.0));
  };
  return {mix(top.r, under.r), mix(top.g, under.g), mix(top.b, under.b), 255};
}

}  // namespace

TEST(Art, SwatchesHoldThePalette) {
  static const struct {
    int u, v, r, g, b;
  } rows[] = {
      {319, 155, 51, 67, 86},    {319, 147, 78, 78, 73},    {319, 139, 13, 27, 44},
      {319, 131, 125, 126, 121}, {319, 123, 255, 255, 255}, {319, 115, 238, 238, 238},
      {319, 107, 13, 27, 44},    {319, 99, 93, 99, 110},    {319, 91, 34, 41, 53},
      {395, 115, 220, 220, 220}, {319, 83, 39, 44, 52},     {319, 75, 36, 43, 53},
      {319, 67, 127, 220, 175},
  };
  for (const auto& row : rows)
    EXPECT_EQ(interface_image.at(row.u, row.v), (rgba{row.r, row.g, row.b, 255}))
        << "column " << row.u << " row " << row.v;
}

TEST(Art, BackgroundEndsInPadding) {
  const size_t rows = size_t(800) * 600 * 3;
  ASSERT_EQ(sizeof g_tex_background, rows + 384);
  for (size_t i = rows; i < sizeof g_tex_background; ++i)
    EXPECT_EQ(g_tex_background[i], 0);
  // Upright: deep sky at the top, dark hills at the foot, pale haze between.
  const rgba foot = background_image.at(5, 2), haze = background_image.at(205, 150),
             top = background_image.at(5, 595);
  EXPECT_GT(luminance(haze), 2 * luminance(top));
  EXPECT_GT(luminance(haze), 2 * luminance(foot));
  EXPECT_GT(top.b, top.r + 60);
}

// --- glyphs -------------------------------------------------------------------------------------
static const char* const glyph_rows[5] = {
    " 0123456789AaBbCcDdEe",
    "FfGgHhIiJjKkLlMmNnOoP",
    "pQqRrSsTtUuVvWwXxYyZz",
    "!@#$%^&*()-_+=[]|\\':;",
    "<.>,?/`\xFB\xC1\xE1\xC9\xE9\xCD\xED\xD3\xF3\xDA\xFA\xD1\xF1\xBF",
};

static int advance_of(unsigned char byte) {
  static const char* const by_width[12] = {
      "",
      "",
      ",.",
      " '/:;I\\`ijl|\xFB",
      "!()-J[]frst",
      "c",
      "#$*0123456789?EFLPSTZ^_aekvxyz\xBF\xC1\xC9\xCD\xD1\xD3\xDA\xE1\xE9\xED\xF1\xF3\xFA",
      "+<=>BCKRVXYbdghnopqu",
      "&ADGHNU",
      "@OQw",
      "Mm",
      "%W"};
  for (int width = 0; width < 12; ++width)
    if (strchr(by_width[width], byte)) return width;
  return 0;
}

// Columns [left, right) and rows [low, high) that hold ink worth seeing, from the cell's corner.
struct ink_box {
  int left = 99, right = 0, low = 99, high = 0;
};

static ink_box ink_of(int column, int row) {
  ink_box box;
  for (int v = 0; v < 15; ++v)
    for (int u = 0; u < 14; ++u)
      if (interface_image.at(column * 14 + u, row * 15 + v).a > 24) {
        box.left = std::min(box.left, u);
        box.right = std::max(box.right, u + 1);
        box.low = std::min(box.low, v);
        box.high = std::max(box.high, v + 1);
      }
  return box;
}

TEST(Art, GlyphsFitTheirAdvances) {
  std::set<std::string> shapes;
  int glyphs = 0;
  for (int row = 0; row < 5; ++row)
    for (int column = 0; column < 21; ++column) {
      const unsigned char byte = static_cast<unsigned char>(glyph_rows[row][column]);
      const rect cell{column * 14, row * 15, 14, 15};
      std::string shape;
      for (const rgba& pixel : pixels_of(interface_image, cell)) {
        EXPECT_TRUE(pixel.r == 255 && pixel.g == 255 && pixel.b == 255) << "the program tints";
        shape += char(pixel.a);
      }
      if (byte == ' ') {
        EXPECT_EQ(highest_alpha(interface_image, cell), 0) << "the blank draws nothing";
        continue;
      }
      SCOPED_TRACE("byte " + std::to_string(byte));
      ++glyphs;
      EXPECT_TRUE(shapes.insert(shape).second) << "the same as another glyph";
      const int advance = advance_of(byte);
      const ink_box ink = ink_of(column, row);
      ASSERT_LT(ink.left, ink.right) << "no ink";
      EXPECT_GE(highest_alpha(interface_image, cell), 128) << "too faint";
      EXPECT_LE(ink.right, advance) << "would touch the next letter's cell";
      EXPECT_GE(ink.right - ink.left, advance / 3) << "too narrow for its advance";
      // Balanced: what is free on the left and on the right differs by little. (A stop leans
      // right.)
      EXPECT_LE(std::abs(ink.left - (advance - ink.right)), 2);
      // Lines are 10 apart and the baseline is row 5: rows 3 to 12 for all but accents and
      // brackets. A text field shows the rows from 3 to 13 of its line.
      const bool tall = byte >= 0x80 || strchr("()[]|@$&/\\", byte);
      EXPECT_GE(ink.low, tall ? 0 : 3);
      EXPECT_LE(ink.high, tall ? 15 : 13);
      if (strchr("ABDEFHIKLMNPRTXZ0123456789abcdehiklmnorstuvwxz", byte)) {
        EXPECT_EQ(ink.low, 5) << "stands on the baseline";
      }
    }
  EXPECT_EQ(glyphs, 104);
}

TEST(Art, GlyphsStandUpright) {
  // Ink in the lowest and the highest row of the letter.
  static const struct {
    char letter;
    int column, row;
    bool heavy_foot;
  } rows[] = {{'L', 12, 1, true}, {'T', 7, 2, false}, {'7', 8, 0, false}, {'_', 11, 3, true}};
  for (const auto& r : rows) {
    ASSERT_EQ(glyph_rows[r.row][r.column], r.letter);
    int low = 0, high = 0;
    for (int u = 0; u < 14; ++u) {
      low += interface_image.at(r.column * 14 + u, r.row * 15 + (r.letter == '_' ? 3 : 5)).a;
      high += interface_image.at(r.column * 14 + u, r.row * 15 + 11).a;
    }
    EXPECT_EQ(low > high, r.heavy_foot) << r.letter;
  }
}

// --- frames -------------------------------------------------------------------------------------
TEST(Art, StripsStretchWithoutSeams) {
  static const struct {
    int type, cap, src, h, u, v, tile;
  } rows[] = {
      {0, 10, 100, 26, 1, 487, 90},   {1, 20, 100, 26, 102, 487, 80}, {2, 10, 52, 26, 304, 486, 42},
      {3, 10, 52, 26, 304, 459, 42},  {4, 10, 28, 16, 112, 161, 18},  {5, 10, 28, 16, 83, 161, 18},
      {7, 10, 65, 24, 240, 242, 55},  {8, 7, 16, 16, 289, 219, 9},    {9, 10, 51, 26, 262, 133, 41},
      {10, 26, 68, 24, 357, 488, 42},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE("type " + std::to_string(r.type));
    // Types 0 and 1 run one row over the image's edge, where the texture begins again at row 0.
    const int h = std::min(r.h, 512 - r.v);
    if (h < r.h) {
      EXPECT_EQ(highest_alpha(interface_image, {r.u, 0, r.src, 1}), 0);
    }
    const rect whole{r.u, r.v, r.src, h};
    EXPECT_GT(highest_alpha(interface_image, whole), 128);
    // One pixel more on either side, since a squeezed tile is sampled between pixels.
    EXPECT_TRUE(same_along_x(interface_image, {r.u + r.cap - 1, r.v, r.tile - r.cap + 2, h}));
    EXPECT_EQ(ring_alpha(interface_image, whole), 0) << "a neighbour would bleed in";
    for (const int u : {r.u, r.u + r.src - 1})
      for (const int v : {r.v, r.v + h - 1})
        EXPECT_LE(interface_image.at(u, v).a, 4) << "corner " << u << ' ' << v;
  }
  const rect bar{102, 248, 20, 40};
  EXPECT_TRUE(same_along_y(interface_image, {102, 257, 20, 22}));
  EXPECT_EQ(ring_alpha(interface_image, bar), 0);
  EXPECT_GT(highest_alpha(interface_image, bar), 250);
}

TEST(Art, BoxesTileWithoutSeams) {
  static const struct {
    int type, u, v, side;
    double left, low, high;  // widths of the fixed slices
  } rows[] = {
      {11, 1, 358, 100, 35, 30, 30},       {12, 102, 358, 100, 35, 30, 30},
      {13, 203, 358, 100, 35, 30, 30},     {14, 304, 358, 100, 35, 30, 30},
      {15, 405, 358, 100, 35, 30, 30},     {16, 1, 289, 68, 23.8, 20.4, 20.4},
      {17, 70, 315, 42, 20, 26, 14},       {18, 113, 315, 42, 14.7, 12.6, 12.6},
      {19, 440, 12, 44, 15.4, 13.2, 13.2}, {20, 982, 2, 41, 14.35, 12.3, 12.3},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE("type " + std::to_string(r.type));
    const picture& image = r.type == 20 ? elements_image : interface_image;
    const rect whole{r.u, r.v, r.side, r.side};
    // The pixels that sampling between the fixed slices reaches.
    const int left = int(std::floor(r.left - 0.5)), right = int(std::ceil(r.side - r.left + 0.5));
    const int low = int(std::floor(r.low - 0.5)), high = int(std::ceil(r.side - r.high + 0.5));
    EXPECT_TRUE(same_along_x(image, {r.u + left, r.v, right - left, r.side}));
    EXPECT_TRUE(same_along_y(image, {r.u, r.v + low, r.side, high - low}));
    const int middle = image.at(r.u + r.side / 2, r.v + (low + high) / 2).a;
    EXPECT_GE(middle, r.type == 20 ? 245 : 255) << "text stands on it";
    EXPECT_EQ(ring_alpha(image, whole), 0) << "a neighbour would bleed in";
    for (const int u : {r.u, r.u + r.side - 1})
      for (const int v : {r.v, r.v + r.side - 1})
        EXPECT_LE(image.at(u, v).a, 4) << "corner " << u << ' ' << v;
  }
}

TEST(Art, CellsAreDrawnAndApart) {
  static const struct {
    const char* name;
    rect cell, other;  // the other state or direction
  } rows[] = {
      {"digit arrows", {83, 197, 14, 18}, {83, 178, 14, 18}},
      {"close boxes", {120, 178, 18, 18}, {120, 197, 18, 18}},
      {"check", {139, 178, 18, 18}, {139, 197, 18, 18}},
      {"radio", {83, 123, 18, 18}, {83, 142, 18, 18}},
      {"slider arrows", {83, 266, 18, 22}, {83, 216, 18, 22}},
      {"slider thumb and knob", {83, 240, 18, 24}, {262, 267, 20, 22}},
      {"tabs", {204, 486, 98, 26}, {204, 459, 98, 26}},
      {"folder and check", {208, 133, 26, 26}, {139, 178, 18, 18}},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.name);
    EXPECT_GT(highest_alpha(interface_image, r.cell), 200);
    EXPECT_GT(highest_alpha(interface_image, r.other), 200);
    EXPECT_NE(pixels_of(interface_image, r.cell), pixels_of(interface_image, r.other));
    for (const rect& cell : {r.cell, r.other})
      EXPECT_EQ(ring_alpha(interface_image, cell), 0) << "a neighbour would bleed in";
  }
  // The arrow that raises a digit is the one that points up: its widest row is the lower one.
  const auto ink_in_row = [](int v) {
    int sum = 0;
    for (int u = 83; u < 97; ++u)
      sum += interface_image.at(u, v).a;
    return sum;
  };
  EXPECT_GT(ink_in_row(197 + 5), ink_in_row(197 + 9));
  EXPECT_LT(ink_in_row(178 + 5), ink_in_row(178 + 9));
}

TEST(Art, TransparentPixelsCarryTheirNeighboursColour) {
  for (const picture* image : {&interface_image, &elements_image}) {
    int fringes = 0;
    for (int v = 1; v + 1 < image->dy; ++v)
      for (int u = 1; u + 1 < image->dx; ++u) {
        const rgba pixel = image->at(u, v);
        if (pixel.a != 0) continue;
        bool beside_ink = false, shared = false;
        for (const rgba& n :
             {image->at(u + 1, v), image->at(u - 1, v), image->at(u, v + 1), image->at(u, v - 1)}) {
          beside_ink |= n.a != 0;
          shared |= n.r == pixel.r && n.g == pixel.g && n.b == pixel.b;
        }
        fringes += beside_ink && !shared;
      }
    EXPECT_EQ(fringes, 0) << image->dx << " wide";
  }
}

// --- buttons ------------------------------------------------------------------------------------
TEST(Art, FacesShowTheirState) {
  static const struct {
    const char* name;
    int u, dx;
  } rows[] = {{"quit", 1, 50},   {"back", 54, 89},   {"next", 150, 100},
              {"all", 255, 114}, {"none", 374, 132}, {"options", 628, 90}};
  for (const auto& r : rows) {
    SCOPED_TRACE(r.name);
    double light[3];
    for (int state = 0; state < 3; ++state) {
      const rect face{r.u, 23 * state, r.dx, 22};
      EXPECT_EQ(ring_alpha(elements_image, face), 0) << "a neighbour would bleed in";
      double sum = 0;
      for (const rgba& pixel : pixels_of(elements_image, face))
        sum += luminance(pixel);
      light[state] = sum / (r.dx * 22);
    }
    const double hover = light[0], pressed = light[1], idle = light[2];
    EXPECT_LT(pressed, 0.8 * idle) << "pressed looks pushed in";
    EXPECT_LT(pressed, 0.8 * hover);
    EXPECT_GT(std::abs(hover - idle), 0.005);
    // The words: enough pixels far from the face's own colour, in all states.
    for (int state = 0; state < 3; ++state) {
      const double ground = luminance(elements_image.at(r.u + 6, 23 * state + 11));
      int words = 0;
      for (const rgba& pixel : pixels_of(elements_image, {r.u + 6, 23 * state + 4, r.dx - 12, 14}))
        words += contrast(luminance(pixel), ground) > 4;
      EXPECT_GT(words, 60) << "state " << state;
    }
  }
}

// --- map ----------------------------------------------------------------------------------------
static rgba map_at(int lat, int lon, bool highlighted) {
  return map_image.at(int((lon + 180) * 1.4), int((lat + 90) * 1.4) + (highlighted ? 252 : 0));
}

TEST(Art, MapKnowsLandFromSea) {
  static const struct {
    const char* name;
    int lat, lon;
    bool land;
  } rows[] = {
      {"Congo", 1, 21, true},         {"Kansas", 39, -97, true},
      {"Mongolia", 47, 104, true},    {"Australia", -24, 134, true},
      {"Brazil", -11, -52, true},     {"Greenland", 72, -41, true},
      {"Iceland", 65, -18, true},     {"Chukotka", 67, -177, true},
      {"Siberia", 67, 177, true},     {"South Pole", -88, 1, true},
      {"Antarctica", -81, 92, true},  {"Atlantic", 1, -33, false},
      {"Pacific", 4, -147, false},    {"Indian Ocean", -33, 81, false},
      {"Arctic", 88, 3, false},       {"Tasman Sea", -38, 161, false},
      {"Black Sea", 43, 34, false},   {"Caspian", 42, 51, false},
      {"Hudson Bay", 59, -86, false}, {"Southern Ocean", -58, -123, false},
      {"date line", 23, 179, false},
  };
  for (const auto& r : rows) {
    const rgba plain = map_at(r.lat, r.lon, false), bright = map_at(r.lat, r.lon, true);
    EXPECT_NE(plain, bright) << r.name << ": a selected sector shows";
    const bool blue = plain.b > plain.r + 20;
    EXPECT_EQ(blue, !r.land) << r.name << ' ' << plain.r << ' ' << plain.g << ' ' << plain.b;
    EXPECT_EQ(bright.g > bright.b + 40, r.land) << r.name << ": only land is green";
  }
}

TEST(Art, MapHasTheEarthsShareOfLand) {
  double land = 0, all = 0;
  for (int v = 0; v < 252; ++v) {
    const double area = std::cos((v + 0.5 - 126) / 252 * 3.14159265);
    for (int u = 0; u < 504; ++u) {
      EXPECT_EQ(map_image.at(u, v).a, 255);
      // Coast pixels count by how green they are, as a part of what an inland pixel is.
      const rgba bright = map_image.at(u, v + 252);
      land += area * std::clamp((bright.g - bright.b - 8) / 75.0, 0.0, 1.0);
      all += area;
    }
  }
  EXPECT_NEAR(land / all, 0.292, 0.02);
}

// --- legibility ---------------------------------------------------------------------------------
TEST(Art, PanelTextIsLegibleOverTheSky) {
  static const struct {
    const char* name;
    double r, g, b, least;
  } rows[] = {
      {"12 page text", 0, 0, 0, 4.5},
      {"43 labels", 34 / 255.0, 41 / 255.0, 53 / 255.0, 4.5},
      {"45 steps and notes", 39 / 255.0, 44 / 255.0, 52 / 255.0, 4.5},
      {"65 current step", 0.2, 0.2, 0.8, 4.5},
      {"69 beta warning", 1, 0, 0, 3.9},  // pure red reaches 4.0 on pure white and never more
  };
  const rgba panel = elements_image.at(982 + 20, 2 + 20);
  double darkest = 1, lightest = 0;
  // Where text can stand on either panel: 14 pixels in from the edge and more.
  for (const rect& text : {rect{24, 64, 162, 425}, rect{224, 64, 552, 425}})
    for (const rgba& sky : pixels_of(background_image, text)) {
      const double light = luminance(over(panel, sky));
      darkest = std::min(darkest, light);
      lightest = std::max(lightest, light);
    }
  ASSERT_LT(darkest, lightest) << "something of the sky is left";
  for (const auto& r : rows) {
    const double ink = luminance(r.r, r.g, r.b);
    EXPECT_GE(std::min(contrast(ink, darkest), contrast(ink, lightest)), r.least) << r.name;
    RecordProperty(std::string("contrast_") + std::string(r.name, 2),
                   std::to_string(contrast(ink, darkest)));
  }
}

TEST(Art, FrameTextIsLegible) {
  static const struct {
    const char* name;
    rgba ink;
    int u, v;  // a pixel of the ground where the text stands
  } rows[] = {
      {"dialog title", {238, 238, 238, 255}, 1 + 50, 358 + 85},
      {"dialog text", {34, 41, 53, 255}, 1 + 50, 358 + 50},
      {"group title", {34, 41, 53, 255}, 203 + 50, 358 + 80},
      {"list text", {39, 44, 52, 255}, 304 + 50, 358 + 50},
      {"dark plate title", {127, 220, 175, 255}, 405 + 50, 358 + 80},
      {"dark plate text", {255, 255, 255, 255}, 405 + 50, 358 + 50},
      {"button", {34, 41, 53, 255}, 304 + 25, 486 + 10},
      {"pressed button", {34, 41, 53, 255}, 304 + 25, 459 + 16},
      {"value", {39, 44, 52, 255}, 262 + 25, 133 + 10},
      {"popup", {255, 255, 255, 255}, 357 + 34, 488 + 16},
      {"selected tab", {13, 27, 44, 255}, 204 + 50, 486 + 12},
      {"other tab", {93, 99, 110, 255}, 204 + 50, 459 + 8},
      {"tool tip", {34, 41, 53, 255}, 113 + 21, 315 + 21},
  };
  for (const auto& r : rows) {
    const rgba ground = interface_image.at(r.u, r.v);
    EXPECT_EQ(ground.a, 255) << r.name;
    EXPECT_GE(contrast(luminance(r.ink), luminance(ground)), 4.5) << r.name;
  }
}
