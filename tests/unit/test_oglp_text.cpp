// Text: which glyph comes to which pixel, how lines break, what numbers read.

#include <cmath>
#include <limits>

#include "corekit/GenC/hl_init.h"
#include "corekit/GenC/hl_mnw.h"
#include "corekit/OOPS_cpp/colr.h"
#include "corekit/OOPS_cpp/oglp.h"
#include "tests/unit/gl_fixture.h"

class OglpText : public gl_fixture {};

namespace {

constexpr int white = 49;

// Paints only one cell of the font, so that glyphs drawn over it do not hide it.
void load_one_glyph(int column, int row) {
  load_interface([=](int u, int v, unsigned char* rgba) {
    const bool inside = u / 14 == column && v / 15 == row && u < 294;
    std::fill_n(rgba, 4, static_cast<unsigned char>(inside ? 255 : 0));
  });
}

}  // namespace

TEST(OglpMetrics, WidthsOfBytes) {
  const struct {
    int width;
    const char* bytes;
  } rows[] = {
      {0, "\"{}~\t\n\r\x01\x7F\x80\xA9\xFF"},
      {2, ",."},
      {3, " '/:;I\\`ijl|\xFB"},
      {4, "!()-J[]frst"},
      {5, "c"},
      {6, "#$*059?EFLPSTZ^_aekvxyz\xBF\xC1\xF1\xFA"},
      {7, "+<=>BCKRVXYbdghnopqu"},
      {8, "&ADGHNU"},
      {9, "@OQw"},
      {10, "Mm"},
      {11, "%W"},
  };
  for (const auto& row : rows) {
    for (const char* c = row.bytes; *c; ++c)
      EXPECT_EQ(OGL_char_width(static_cast<unsigned char>(*c)), row.width) << *c;
  }
  EXPECT_EQ(OGL_char_width(0), 0);
  EXPECT_EQ(OGL_string_width(""), 0);
  EXPECT_EQ(OGL_string_width("Quit\n"), 9 + 7 + 3 + 4);
}

TEST(OglpMetrics, BadCharsetIsFatal) {
  EXPECT_EXIT(OGL_string(0, 0, 0, "text", 100, 101), testing::ExitedWithCode(1),
              "String proc with bad charset!");
}

TEST(OglpMetrics, NumbersAsText) {
  const struct {
    float value;
    int digits, decimals;
    const char* text;
  } rows[] = {
      {1234567, 4, 0, "1.23x6"},
      {1234567, 8, 0, "01,234,567"},
      {1234567, 7, 0, "1,234,567"},
      {1234567, 6, 0, "1.23x6"},
      {-1234567, 4, 0, "-1.23x6"},
      {0, 1, 0, "0"},
      {9, 1, 0, "9"},
      {10, 1, 0, "0.10x2"},
      {999, 2, 0, "1.00x3"},
      {998, 2, 0, "9.98x2"},
      {5, 3, 0, "005"},
      {-5, 3, 0, "-005"},
      {1.25f, 4, 2, "01.25"},
      {1.25f, 3, 2, "1.25"},
      {1.25f, 2, 2, "0.01x2"},  // the point wants a digit before it
      {0.05f, 2, 1, "0.1"},     // half rounds up
      {-0.001f, 2, 1, "0.0"},   // too small for its sign
      {-0.04f, 3, 1, "-00.0"},  // 0.4 of the last place keeps it
      {1234.5f, 5, 1, "1,234.5"},
      {1e10f, 3, 0, "1.00x0"},  // a power above 9 has no digit
      {1e9f, 10, 0, "1,000,000,000"},
      {std::numeric_limits<float>::infinity(), 3, 0, "000"},
      {std::numeric_limits<float>::quiet_NaN(), 2, 1, "0.0"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(OGL_number_text(row.value, row.digits, row.decimals), row.text)
        << row.value << " in " << row.digits << "." << row.decimals;
}

TEST_F(OglpText, GlyphsComeFromTheirCells) {
  // Baseline: y - 2, and the cell begins 4 below it.
  const struct {
    char c;
    int column, row;
  } rows[] = {{'0', 1, 0},     {'A', 11, 0}, {'e', 20, 0}, {'F', 0, 1},    {'P', 20, 1},
              {'p', 0, 2},     {'z', 20, 2}, {'!', 0, 3},  {'|', 16, 3},   {'\\', 17, 3},
              {'\'', 18, 3},   {';', 20, 3}, {'<', 0, 4},  {'\xFB', 7, 4}, {'\xE1', 9, 4},
              {'\xBF', 20, 4}, {'"', 0, 0},  {'~', 0, 0},  {'\xA9', 0, 0}, {' ', 0, 0}};
  int x = 10;
  const picture_map map([&] {
    x = 10;
    for (const auto& row : rows) {
      OGL_string(white, static_cast<float>(x), 100, std::string(1, row.c), 0);
      x += 20;
    }
  });
  x = 10;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.c);
    EXPECT_TRUE(map.shows(x, 94, row.column * 14, row.row * 15));
    EXPECT_TRUE(map.shows(x + 13, 108, row.column * 14 + 13, row.row * 15 + 14));
    EXPECT_EQ(map.times(x + 14, 100), 0);
    EXPECT_EQ(map.times(x, 93), 0);
    EXPECT_EQ(map.times(x, 109), 0);
    x += 20;
  }
}

TEST_F(OglpText, LinesAreAlignedByTheProportionalWidth) {
  const struct {
    const char* text;
    int charset, just, x;  // where the first glyph begins, for a text at 200
  } rows[] = {
      {"AB", charset_text, just_left, 200},   {"AB", charset_text, just_right, 185},
      {"AB", charset_text, just_centre, 192},  // 192.5, cut
      {"AA", charset_text, just_centre, 192}, {"AB", charset_fixed, just_right, 185},
  };
  for (const auto& row : rows) {
    const picture_map map([&] { OGL_string(white, 200, 100, row.text, 0, row.charset, row.just); });
    const int pitch = row.charset == charset_fixed ? 10 : 0;
    EXPECT_EQ(map.text_at(row.x, 100, pitch), row.text) << row.x;
  }
}

TEST_F(OglpText, PositionsAreRounded) {
  mnw.x_off = 0.25f;
  const picture_map map([] { OGL_string(white, 99.25f, 100.49f, "A", 0); });
  EXPECT_TRUE(map.shows(100, 94, 154, 0));  // 99.5 up to 100, 98.49 down to 98
  EXPECT_EQ(map.times(99, 94), 0);
}

TEST_F(OglpText, LargerGlyphsKeepTheAdvance) {
  oglp = 2.0f;
  const picture_map map([] { OGL_string(white, 100, 100, "AA", 0); });
  EXPECT_EQ(map.times(100 + 8 + 27, 94 + 29), 1);
  EXPECT_EQ(map.times(100 + 8 + 28, 94), 0);
  oglp = 0.5f;
  const picture_map same([] { OGL_string(white, 100, 100, "A", 0); });
  EXPECT_TRUE(same.covers_exactly(100, 94, 14, 15));
}

TEST_F(OglpText, WrapsBehindBreakCharacters) {
  // Widths: "one" 7+7+6, blank 3, "two" 4+9+7. The word ahead is reckoned at 6 a letter.
  const struct {
    const char* label;
    std::string text;
    float wrap_dx;
    std::vector<std::string> lines;
    float next_y;
  } rows[] = {
      {"it fits", "one two", 41, {"one two"}, 490},
      {"the next word just fits: 23 + 18", "one two", 41, {"one two"}, 490},
      {"and just does not", "one two", 40, {"one ", "two"}, 480},
      {"minus and slash break and stay", "a-b/c", 9, {"a-", "b/", "c"}, 470},
      {"a wide word overruns", "MMMMMM x", 10, {"MMMMMM ", "x"}, 480},
      {"LF breaks", "ab\ncd", 300, {"ab", "cd"}, 480},
      {"LF at the end", "ab\n", 300, {"ab"}, 490},
      {"two LF", "ab\n\ncd", 300, {"ab", "", "cd"}, 470},
      {"CR and TAB move nothing", "a\r\tb", 300, {"ab"}, 490},
      {"a break before a break tests the pen alone", "one  two", 22, {"one ", " two"}, 480},
      {"the same, fitting", "one  two", 26, {"one  ", "two"}, 480},
      {"blank at the end", "one ", 10, {"one "}, 490},
      {"a NUL ends the word ahead", std::string("a \0bbbbbb", 9), 12, {"a bbbbbb"}, 490},
      {"empty", "", 100, {""}, 500},
      {"no wrap at 0", "one two\nx", 0, {"one twox"}, 500},
      {"no wrap below 0", "one two\nx", -1, {"one twox"}, 500},
      {"no wrap at 9999", "one two\nx", 9999, {"one twox"}, 500},
      {"wrap just below 9999", "a\nb", 9998, {"a", "b"}, 480},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    float next_y = 0;
    const picture_map map([&] { next_y = OGL_string(white, 100, 500, row.text, row.wrap_dx); });
    EXPECT_EQ(next_y, row.next_y);
    int y = 500;
    for (const std::string& line : row.lines) {
      EXPECT_EQ(map.text_at(100, y), line);
      y -= 10;
    }
    EXPECT_EQ(map.text_at(100, y), "");
    // The y of the next line is the same where nothing is drawn.
    ogl_inited = 0;
    EXPECT_EQ(OGL_string(white, 100, 500, row.text, row.wrap_dx), row.next_y);
    ogl_inited = 1;
  }
}

TEST_F(OglpText, OdometerHasACellForEachDigit) {
  const picture_map map([] { OGL_number(white, 100, 500, 1234.5f, 6, 1, charset_fixed); });
  EXPECT_EQ(map.text_at(100, 500, 10), "012345");
  EXPECT_EQ(map.times(100 + 60 + 4, 500), 0);
  const picture_map small([] { OGL_number(white, 100, 500, 7, 3, 0, charset_fixed); });
  EXPECT_EQ(small.text_at(100, 500, 10), "007");

  // Punctuation lies between the cells and takes no room. Cell n begins at 100 + 10 n.
  const struct {
    const char* label;
    int column, row;
    float value;
    int digits, decimals;
    std::vector<int> at;  // the glyph's left edges
  } rows[] = {
      {"point", 1, 4, 1234.5f, 6, 1, {145}},
      {"no point", 1, 4, 1234.5f, 6, 0, {}},
      {"comma", 3, 4, 1234.5f, 6, 1, {115}},
      {"no comma for three", 3, 4, 123, 3, 0, {}},
      {"two commas", 3, 4, 123, 7, 0, {105, 135}},
      {"minus", 10, 3, -5, 3, 0, {91}},
      {"too small for a minus", 10, 3, -0.05f, 3, 0, {}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    load_one_glyph(row.column, row.row);
    clear();
    OGL_number(white, 100, 500, row.value, row.digits, row.decimals, charset_fixed);
    std::vector<int> found;
    for (int x = 60; x < 300; ++x) {
      if (read_pixel(x, 500).r > 128 && read_pixel(x - 1, 500).r < 128) found.push_back(x);
    }
    EXPECT_EQ(found, row.at);
  }
}

TEST_F(OglpText, TextOnAPlateAndInABox) {
  colr.assign(12, 0, 0, 1);
  load_one_glyph(0, 4);
  OGL_gray_string(white, 200, 100, "AA");  // 16 wide: 192 to 208
  for (const auto& [x, y] : {std::pair{190, 98}, {209, 98}, {190, 107}, {209, 107}})
    EXPECT_TRUE(pixel_is(x, y, 0, 0, 128));
  for (const auto& [x, y] : {std::pair{189, 100}, {210, 100}, {200, 97}, {200, 108}})
    EXPECT_TRUE(pixel_is(x, y, 0, 0, 0));

  const struct {
    int charset, width, pitch;
  } rows[] = {{charset_text, 2 * 8 + 7, 0}, {charset_fixed, 2 * 10 + 7, 10}};
  for (const auto& row : rows) {
    const picture_map map(
        [&] { OGL_boxed_string(400, 300, "left|right{?x", "AA", row.charset, white); });
    // The text begins 4 from the box's left edge, the labels stand 8 away from its sides.
    const double half = row.width / 2.0;
    EXPECT_EQ(map.text_at(static_cast<int>(std::lround(400 - half + 4)), 300, row.pitch), "AA");
    const int left_width = OGL_string_width("left");
    EXPECT_EQ(
        map.text_at(static_cast<int>(std::lround(400 - half - 8)) - left_width, 300).substr(0, 4),
        "left");
    EXPECT_EQ(map.text_at(static_cast<int>(std::lround(400 + half + 8)), 300), "right");
  }
}
