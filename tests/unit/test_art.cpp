// The compiled-in pictures: what the program counts on when it cuts them, in the plain set and in
// the sharper one. Everything is read from what is linked, row 0 the lowest, with the rectangles
// that the widgets use; a sharper picture has twice their numbers.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>

#include "corekit/draw/TEX_png.h"
#include "corekit/draw/g_tex.h"
#include "corekit/draw/oglp_glyphs.h"
#include "corekit/files/xmap.h"
#include "tests/unit/frame_pieces.h"
#include "tests/unit/gl_fixture.h"

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

// Decoded once, and kept.
picture sharp(const char* file, const char* end, int dx, int dy, int channels) {
  xmap_class png("");
  png.look_at(file, end);
  unsigned char* pixels = nullptr;
  TEX_image_desc desc;
  TEX_fault fault;
  const int format = channels == 4 ? TEX_rgba : TEX_rgb;
  EXPECT_TRUE(TEX_read_png(png, pixels, format, 0, 0, 0, desc, fault)) << fault.detail;
  EXPECT_EQ(desc.width, 2 * dx);
  EXPECT_EQ(desc.height, 2 * dy);
  static std::vector<std::unique_ptr<unsigned char, void (*)(void*)>> kept;
  kept.emplace_back(pixels, std::free);
  return {pixels, desc.width, desc.height, channels};
}

struct rect {
  int u, v, dx, dy;
};
rect operator*(const rect& r, int scale) {
  return {r.u * scale, r.v * scale, r.dx * scale, r.dy * scale};
}

// The pictures of one set.
struct picture_set {
  int scale;
  picture interface_image, elements_image, map_image;
};
const picture_set& set_of(int scale) {
  static const picture_set plain = {1,
                                    {g_tex_interface, g_tex_interface_dx, g_tex_interface_dy, 4},
                                    {g_tex_elements, g_tex_elements_dx, g_tex_elements_dy, 4},
                                    {g_tex_map, g_tex_map_dx, g_tex_map_dy, 4}};
  static const picture_set sharper = {
      2,
      sharp(g_tex_interface_2x, g_tex_interface_2x_end, g_tex_interface_dx, g_tex_interface_dy, 4),
      sharp(g_tex_elements_2x, g_tex_elements_2x_end, g_tex_elements_dx, g_tex_elements_dy, 4),
      sharp(g_tex_map_2x, g_tex_map_2x_end, g_tex_map_dx, g_tex_map_dy, 4)};
  return scale == 1 ? plain : sharper;
}

class Art : public testing::TestWithParam<int> {
 protected:
  const int scale = GetParam();
  const picture& interface_image = set_of(scale).interface_image;
  const picture& elements_image = set_of(scale).elements_image;
  const picture& map_image = set_of(scale).map_image;
};
INSTANTIATE_TEST_SUITE_P(Set, Art, testing::Values(1, 2));

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

// Whether all columns of the rectangle are the same.
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

// A piece that is cut out: nothing of a neighbour bleeds in, and its corners are round.
void expect_apart(const picture& image, const rect& r) {
  EXPECT_EQ(ring_alpha(image, r), 0) << "a neighbour would bleed in";
  for (const int u : {r.u, r.u + r.dx - 1})
    for (const int v : {r.v, r.v + r.dy - 1})
      EXPECT_LE(image.at(u, v).a, 4) << "corner " << u << ' ' << v;
}

}  // namespace

// --- glyphs -------------------------------------------------------------------------------------
// Columns [left, right) and rows [low, high) that hold ink worth seeing, from the cell's corner.
struct ink_box {
  int left = 99, right = 0, low = 99, high = 0;
};

static ink_box ink_of(const picture& image, const rect& cell) {
  ink_box box;
  for (int v = 0; v < cell.dy; ++v)
    for (int u = 0; u < cell.dx; ++u)
      if (image.at(cell.u + u, cell.v + v).a > 24) {
        box.left = std::min(box.left, u);
        box.right = std::max(box.right, u + 1);
        box.low = std::min(box.low, v);
        box.high = std::max(box.high, v + 1);
      }
  return box;
}

TEST_P(Art, GlyphsFitTheirAdvances) {
  std::set<std::string> shapes;
  int glyphs = 0;
  for (int row = 0; row < 5; ++row)
    for (int column = 0; column < int(font_rows[row].size()); ++column) {
      const unsigned char byte = static_cast<unsigned char>(font_rows[row][size_t(column)]);
      const rect cell = rect{column * 14, row * 15, 14, 15} * scale;
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
      const int advance = OGL_char_width(byte) * scale;
      const ink_box ink = ink_of(interface_image, cell);
      ASSERT_LT(ink.left, ink.right) << "no ink";
      EXPECT_GE(highest_alpha(interface_image, cell), 128) << "too faint";
      EXPECT_LE(ink.right, advance) << "would touch the next letter's cell";
      // Balanced: what is free on the left and on the right differs by little.
      EXPECT_LE(std::abs(ink.left - (advance - ink.right)), 2 * scale);
      // Lines are 10 apart and the baseline is row 5: rows 3 to 12 for all but accents and
      // brackets. A text field shows the rows from 3 to 13 of its line.
      const bool tall = byte >= 0x80 || strchr("()[]{}|@$&/\\", byte);
      EXPECT_GE(ink.low, tall ? 0 : 3 * scale);
      EXPECT_LE(ink.high, (tall ? 15 : 13) * scale);
      if (strchr("ABDEFHIKLMNPRTXZ0123456789abcdehiklmnorstuvwxz", byte)) {
        EXPECT_EQ(ink.low, 5 * scale) << "stands on the baseline";
      }
    }
  EXPECT_EQ(glyphs, 144);
}

// The grid of the faces, from its rectangle in the image; as high as a face's room for words.
TEST_P(Art, LettersOfFacesFitTheirAdvances) {
  for (int row = 0; row < face_glyph_rows; ++row)
    for (int column = 0; column < face_glyph_columns; ++column) {
      const char c = face_glyph_grid[row][size_t(column)];
      const rect cell = rect{312 + column * 15, 168 + row * 18, 15, 18} * scale;
      SCOPED_TRACE("byte " + std::to_string(static_cast<unsigned char>(c)));
      const int advance = OGL_string_width({&c, 1}, charset_face) * scale;
      EXPECT_LE(advance, 14 * scale) << "the last column of a cell is not drawn";
      if (c == ' ') {
        EXPECT_EQ(highest_alpha(interface_image, cell), 0);
        continue;
      }
      const ink_box ink = ink_of(interface_image, cell);
      ASSERT_LT(ink.left, ink.right) << "no ink";
      EXPECT_GE(highest_alpha(interface_image, cell), 128) << "too faint";
      EXPECT_LE(ink.right, advance);
      EXPECT_GE(ink.low, 1 * scale);
    }
}

// What is free between two letters, with `blank` units in the middle; pixels.
static int space_between(int scale, unsigned char left, unsigned char right, int blank) {
  const auto ink = [scale](unsigned char byte) {
    for (int row = 0; row < 5; ++row) {
      const size_t column = font_rows[row].find(static_cast<char>(byte));
      if (column == std::string_view::npos) continue;
      return ink_of(set_of(scale).interface_image,
                    rect{int(column) * 14, row * 15, 14, 15} * scale);
    }
    return ink_box();
  };
  return (OGL_char_width(left) + blank) * scale - ink(left).right + ink(right).left;
}

TEST_P(Art, WordsHoldTogetherAndApart) {
  // Pairs that were read as one word, and as two.
  const std::string_view between[] = {"sP", "sr", "er", "sp", "eD", "np", "tb", "rF"};
  for (const std::string_view pair : between)
    EXPECT_GE(space_between(scale, pair[0], pair[1], OGL_char_width(' ')), 4 * scale) << pair;
  const std::string_view within[] = {"a\xED", "\xEDz", "\xEDn", "d\xED", "ll", "ri", "ub", "R\xED"};
  for (const std::string_view pair : within)
    EXPECT_LE(space_between(scale, pair[0], pair[1], 0), 2 * scale) << pair;
}

// --- frames -------------------------------------------------------------------------------------
TEST_P(Art, StripsStretchWithoutSeams) {
  for (const strip_piece& r : strip_pieces) {
    SCOPED_TRACE("type " + std::to_string(r.type));
    // Types 0 and 1 run one row over the image's edge, where the texture begins again at row 0.
    const int h = std::min(r.h, 512 - r.v);
    if (h < r.h) {
      EXPECT_EQ(highest_alpha(interface_image, rect{r.u, 0, r.src, 1} * scale), 0);
    }
    const rect whole = rect{r.u, r.v, r.src, h} * scale;
    EXPECT_GT(highest_alpha(interface_image, whole), 128);
    // One pixel more on either side, since a squeezed tile is sampled between pixels.
    EXPECT_TRUE(same_along_x(interface_image, {r.u * scale + r.cap * scale - 1, whole.v,
                                               (r.tile - r.cap) * scale + 2, whole.dy}));
    expect_apart(interface_image, whole);
  }
  EXPECT_TRUE(same_along_y(interface_image, rect{102, 257, 20, 22} * scale)) << "the upright bar";
}

TEST_P(Art, BoxesTileWithoutSeams) {
  for (const box_piece& r : box_pieces) {
    SCOPED_TRACE("type " + std::to_string(r.type));
    const picture& image = r.type == 20 ? elements_image : interface_image;
    const rect whole = rect{r.u, r.v, r.side, r.side} * scale;
    // The pixels that sampling between the fixed slices reaches.
    const auto from = [&](double slice) { return int(std::floor(slice * scale - 0.5)); };
    const auto to = [&](double slice) { return int(std::ceil((r.side - slice) * scale + 0.5)); };
    const int left = from(r.left), right = to(r.left), low = from(r.low), high = to(r.high);
    EXPECT_TRUE(same_along_x(image, {whole.u + left, whole.v, right - left, whole.dy}));
    EXPECT_TRUE(same_along_y(image, {whole.u, whole.v + low, whole.dx, high - low}));
    const int middle = image.at(whole.u + whole.dx / 2, whole.v + (low + high) / 2).a;
    EXPECT_EQ(middle, r.type == 20 ? 224 : 255) << "text stands on it";
    expect_apart(image, whole);
  }
}

// --- map ----------------------------------------------------------------------------------------
static rgba map_at(const picture_set& set, int lat, int lon, bool highlighted) {
  return set.map_image.at(int((lon + 180) * 1.4 * set.scale),
                          int((lat + 90) * 1.4 * set.scale) + (highlighted ? 252 * set.scale : 0));
}

TEST_P(Art, MapKnowsLandFromSea) {
  static const struct {
    const char* name;
    int lat, lon;
    bool land;
  } rows[] = {
      {"Kansas", 39, -97, true},    {"Australia", -24, 134, true}, {"Iceland", 65, -18, true},
      {"Chukotka", 67, -177, true}, {"South Pole", -88, 1, true},  {"Pacific", 4, -147, false},
      {"Arctic", 88, 3, false},     {"Black Sea", 43, 34, false},  {"date line", 23, 179, false},
  };
  for (const auto& r : rows) {
    const picture_set& set = set_of(scale);
    const rgba plain = map_at(set, r.lat, r.lon, false), bright = map_at(set, r.lat, r.lon, true);
    EXPECT_NE(plain, bright) << r.name << ": a selected sector shows";
    const bool blue = plain.b > plain.r + 20;
    EXPECT_EQ(blue, !r.land) << r.name << ' ' << plain.r << ' ' << plain.g << ' ' << plain.b;
    EXPECT_EQ(bright.g > bright.b + 40, r.land) << r.name << ": only land is green";
  }
}
