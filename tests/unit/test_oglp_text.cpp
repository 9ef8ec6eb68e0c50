// Text: which glyph comes to which pixel, how lines break, what numbers read.

#include <functional>
#include <limits>

#include "tests/unit/gl_fixture.h"

class OglpText : public gl_fixture {};

namespace {

constexpr int white = 49;

}  // namespace

TEST(OglpMetrics, WidthsOfBytes) {
  // Of every width, and bytes that have no glyph.
  const std::string bytes = std::string("\t\x7F\x80\x9F,i\xFBr") + "c\xBF&@M%";
  std::string widths;
  for (const char c : bytes)
    widths += std::to_string(OGL_char_width(static_cast<unsigned char>(c))) + ' ';
  EXPECT_EQ(widths, "0 0 0 0 2 3 3 4 5 6 8 9 10 11 ");
  EXPECT_EQ(OGL_char_width(0), 0);
  EXPECT_EQ(OGL_string_width("Quit\n"), 9 + 7 + 3 + 4);
  EXPECT_EXIT(OGL_string(white, 0, 0, "x", 0, 77), testing::ExitedWithCode(1), "bad charset!");
}

// A path that is shown must not lack a letter: what has no glyph looks and moves as its base does.
TEST_F(OglpText, NoPrintableByteIsInvisible) {
  const auto for_each_byte = [](const std::function<void(int, int, int)>& look) {
    for (int byte = ' '; byte < 256; ++byte)
      if (byte < 0x7F || byte >= 0xA0) look(byte, 20 + byte % 16 * 45, 30 + byte / 16 * 34);
  };
  const picture_map all([&] {
    for_each_byte([](int byte, int x, int y) {
      OGL_string(white, static_cast<float>(x), static_cast<float>(y),
                 std::string(1, static_cast<char>(byte)) + "|", 0);
    });
  });
  for_each_byte([&all](int byte, int x, int y) {
    EXPECT_GT(OGL_char_width(static_cast<unsigned char>(byte)), 0) << byte;
    EXPECT_EQ(all.text_at(x, y).size(), 2u) << byte;
  });
  const picture_map map([] { OGL_string(white, 100, 500, "J\xFCrgen \xD8\xC5\xFD\xF0\xFE", 0); });
  EXPECT_EQ(map.text_at(100, 500), "J\xFCrgen OAydp");
}

TEST(OglpMetrics, NumbersAsText) {
  const std::tuple<float, int, int, const char*> rows[] = {
      {1234567, 8, 0, "01,234,567"},
      {1234567, 7, 0, "1,234,567"},
      {1234567, 6, 0, "1.23x6"},
      {-1234567, 4, 0, "-1.23x6"},
      {999, 2, 0, "1.00x3"},
      {1.25f, 3, 2, "1.25"},
      {1.25f, 2, 2, "0.01x2"},  // the point wants a digit before it
      {-0.001f, 2, 1, "0.0"},   // too small for its sign
      {-0.04f, 3, 1, "-00.0"},  // 0.4 of the last place keeps it
      {1234.5f, 5, 1, "1,234.5"},
      {123.5f, 4, 1, "123.5"},
      {1e10f, 3, 0, "1.00x0"},  // a power above 9 has no digit
      {std::numeric_limits<float>::infinity(), 3, 0, "000"},
      {std::numeric_limits<float>::quiet_NaN(), 2, 1, "0.0"},
  };
  for (const auto& [value, digits, decimals, text] : rows)
    EXPECT_EQ(OGL_number_text(value, digits, decimals), text)
        << value << " in " << digits << "." << decimals;
}

TEST_F(OglpText, WrapsBehindBreakCharacters) {
  // Widths: "one" 7+7+6, blank 3, "two" 4+9+7. The word ahead is reckoned at 6 a letter.
  const struct {
    std::string label, text;
    float wrap_dx;
    std::vector<std::string> lines;
    float next_y;
  } rows[] = {
      {"the next word just fits: 23 + 18", "one two", 41, {"one two"}, 490},
      {"and just does not", "one two", 40, {"one ", "two"}, 480},
      {"minus and slash break and stay", "a-b/c", 9, {"a-", "b/", "c"}, 470},
      {"LF at the end", "ab\n", 300, {"ab"}, 490},
      {"CR and TAB move nothing", "a\r\tb", 300, {"ab"}, 490},
      {"a break before a break tests the pen alone", "one  two", 22, {"one ", " two"}, 480},
      {"a NUL ends the word ahead", std::string("a \0bbbbbb", 9), 12, {"a bbbbbb"}, 490},
      {"empty", "", 100, {""}, 500},
      {"no wrap at 0", "one two\nx", 0, {"one twox"}, 500},
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
