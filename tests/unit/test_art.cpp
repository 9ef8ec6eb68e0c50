// The letters of the compiled-in pictures: that they and the widths that the program has for them
// belong together, in the plain set and in the sharper one. Everything is read from what is linked,
// row 0 the lowest; a sharper picture has twice the numbers. What all of it looks like is kept in
// tests/pictures.

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "corekit/draw/TEX_png.h"
#include "corekit/draw/g_tex.h"
#include "corekit/draw/oglp_glyphs.h"
#include "corekit/files/xmap.h"
#include "tests/unit/gl_fixture.h"

namespace {

// Columns [left, right) and rows [low, high) that hold ink worth seeing, from the cell's corner.
struct ink_box {
  int left = 99, right = 0, low = 99, high = 0;
  int darkest = 0;
};

class Art : public testing::TestWithParam<int> {
 protected:
  void SetUp() override {
    if (scale == 1) return;
    xmap_class png("");
    png.look_at(g_tex_interface_2x, g_tex_interface_2x_end);
    unsigned char* pixels = nullptr;
    TEX_image_desc desc;
    TEX_fault fault;
    ASSERT_TRUE(TEX_read_png(png, pixels, TEX_rgba, 0, 0, 0, desc, fault)) << fault.detail;
    sharper.reset(pixels);
    ASSERT_EQ(desc.width, 2 * g_tex_interface_dx);
  }
  // Of the cell at (u, v), in the plain set's pixels.
  ink_box ink_of(int u, int v, int dx, int dy) const {
    const unsigned char* const rgba = scale == 1 ? g_tex_interface : sharper.get();
    ink_box box;
    for (int y = 0; y < dy * scale; ++y)
      for (int x = 0; x < dx * scale; ++x) {
        const size_t at =
            size_t(v * scale + y) * size_t(g_tex_interface_dx * scale) + u * scale + x;
        const int alpha = rgba[at * 4 + 3];
        box.darkest = std::max(box.darkest, alpha);
        if (alpha <= 24) continue;
        box.left = std::min(box.left, x);
        box.right = std::max(box.right, x + 1);
        box.low = std::min(box.low, y);
        box.high = std::max(box.high, y + 1);
      }
    return box;
  }
  ink_box glyph(int row, int column) const { return ink_of(column * 14, row * 15, 14, 15); }
  ink_box glyph(char byte) const {
    for (int row = 0; row < 5; ++row)
      if (const size_t column = font_rows[row].find(byte); column != std::string_view::npos)
        return glyph(row, int(column));
    return {};
  }
  // What is free between two letters, with `blank` units in the middle; pixels.
  int space_between(std::string_view pair, int blank) const {
    const int advance = OGL_char_width(static_cast<unsigned char>(pair[0])) + blank;
    return advance * scale - glyph(pair[0]).right + glyph(pair[1]).left;
  }

  const int scale = GetParam();
  std::unique_ptr<unsigned char, void (*)(void*)> sharper{nullptr, std::free};
};
INSTANTIATE_TEST_SUITE_P(Set, Art, testing::Values(1, 2));

}  // namespace

TEST_P(Art, GlyphsFitTheirAdvances) {
  for (int row = 0; row < 5; ++row)
    for (int column = 0; column < int(font_rows[row].size()); ++column) {
      const unsigned char byte = static_cast<unsigned char>(font_rows[row][size_t(column)]);
      SCOPED_TRACE("byte " + std::to_string(byte));
      const ink_box ink = glyph(row, column);
      if (byte == ' ') {
        EXPECT_EQ(ink.darkest, 0) << "the blank draws nothing";
        continue;
      }
      const int advance = OGL_char_width(byte) * scale;
      EXPECT_GE(ink.darkest, 128) << "too faint";
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
}

// The grid of the faces, from its rectangle in the image; as high as a face's room for words.
TEST_P(Art, LettersOfFacesFitTheirAdvances) {
  for (int row = 0; row < face_glyph_rows; ++row)
    for (int column = 0; column < face_glyph_columns; ++column) {
      const char c = face_glyph_grid[row][size_t(column)];
      SCOPED_TRACE("byte " + std::to_string(static_cast<unsigned char>(c)));
      const ink_box ink = ink_of(312 + column * 15, 168 + row * 18, 15, 18);
      const int advance = OGL_string_width({&c, 1}, charset_face) * scale;
      EXPECT_LE(advance, 14 * scale) << "the last column of a cell is not drawn";
      EXPECT_EQ(ink.darkest >= 128, c != ' ');
      EXPECT_LE(ink.right, advance);
      EXPECT_GE(ink.low, 1 * scale);
    }
}

TEST_P(Art, WordsHoldTogetherAndApart) {
  // Pairs that were read as one word, and as two.
  const std::string_view between[] = {"sP", "sr", "er", "sp", "eD", "np", "tb", "rF"};
  for (const std::string_view pair : between)
    EXPECT_GE(space_between(pair, OGL_char_width(' ')), 4 * scale) << pair;
  const std::string_view within[] = {"a\xED", "\xEDz", "\xEDn", "d\xED", "ll", "ri", "ub", "R\xED"};
  for (const std::string_view pair : within)
    EXPECT_LE(space_between(pair, 0), 2 * scale) << pair;
}
