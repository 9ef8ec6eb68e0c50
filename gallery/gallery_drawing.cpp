// The gallery's sections of plain drawing: letters, colours, frames.
//
// Main thread.

#include <string>

#include "corekit/base/hl_string.h"
#include "corekit/draw/colr.h"
#include "corekit/draw/oglp.h"
#include "corekit/widgets/butn.h"
#include "gallery/gallery.h"

namespace {

constexpr float no_wrap = 9999;

void caption(float x, float y, const std::string& text) {
  OGL_string(col_label, x, y, text, no_wrap, charset_text, just_centre);
}

}  // namespace

// Each glyph stands over a line that is as long as its advance.
void draw_glyphs(float top) {
  constexpr float pitch_dx = 33, pitch_dy = 22;
  const char* const rows[] = {
      " 0123456789AaBbCcDdEe",
      "FfGgHhIiJjKkLlMmNnOoP",
      "pQqRrSsTtUuVvWwXxYyZz",
      "!@#$%^&*()-_+=[]|\\':;",
      "<.>,?/`\xFB\xC1\xE1\xC9\xE9\xCD\xED\xD3\xF3\xDA\xFA\xD1\xF1\xBF",
  };
  float y = top - 18;
  for (const char* row : rows) {
    float x = content_left;
    for (const char* at = row; *at; ++at) {
      const auto advance = static_cast<float>(OGL_char_width(static_cast<unsigned char>(*at)));
      OGL_line(col_blue, 1, x, y - 5, x + advance, y - 5);
      OGL_string(col_black, x, y, std::string(1, *at), no_wrap);
      x += pitch_dx;
    }
    y -= pitch_dy;
  }
}

void draw_texts(float top) {
  constexpr float column_dx = 240, wrap = 200;
  const char* const text =
      "A text breaks after a blank, a hyphen-or/a slash, and its lines are 10 units apart: gypsy, "
      "jogging, ATLAS, Type, 100% (50) [7] & [8].\nA line feed begins a line.";
  constexpr struct {
    text_just just;
    float pen;  // from the column's left edge
  } columns[] = {{just_left, 0}, {just_centre, wrap / 2}, {just_right, wrap}};
  float x = content_left;
  for (const auto& column : columns) {
    OGL_framerect(col_blue, 1, x - 1, top - 86, wrap + 2, 82);
    OGL_string(col_black, x + column.pen, top - 16, text, wrap, charset_text, column.just);
    x += column_dx;
  }

  const float y = top - 110;
  OGL_string(col_black, content_left, y, "Charset 102: AIRSPEED 0123456789", no_wrap,
             charset_fixed);
  OGL_string(col_black, content_left, y - 20,
             "Charset 100: THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG, the quick brown fox jumps "
             "over the lazy dog.",
             no_wrap);
  OGL_string(col_black, content_left, y - 35,
             "La Coru\361a, \301vila, C\341diz: \277qu\351 tal? Se\361or, M\363nica, "
             "\332ltimo, \323pera, \315ndice, p\372a",
             no_wrap);

  OGL_number(col_black, content_left, y - 60, 1234567, 8, 0, charset_fixed);
  OGL_number(col_black, content_left + 120, y - 60, -3.14159f, 5, 3, charset_fixed);
  OGL_number(col_black, content_left + 220, y - 60, 1234567, 8, 0, charset_text);
  OGL_number(col_black, content_left + 300, y - 60, 1234567, 4, 0, charset_text);
  OGL_boxed_string(content_left + 440, y - 60, "left|right", "boxed text", charset_text, col_black);
  OGL_gray_string(col_as_is, content_left + 620, y - 60, "text over a plate");

  for (int i = 0; i < 6; ++i)
    OGL_line(col_black, 1, content_left, y - 80 - static_cast<float>(i) * 5, content_left + 100,
             y - 105 + static_cast<float>(i) * 5);
  OGL_framecircle(col_black, content_left + 150, y - 94, 20);
  OGL_fillcircle(col_red, content_left + 210, y - 94, 20);
  OGL_framerect(col_black, 1, content_left + 260, y - 114, 60, 40);
  OGL_fillrect(col_red, 0.5f, content_left + 280, y - 104, 60, 40);
  OGL_grayrect(content_left + 370, y - 114, content_left + 430, y - 74, 0.25f);
}

void draw_colours(float top) {
  constexpr int columns = 12;
  constexpr float pitch_dx = 59, pitch_dy = 31, dx = 30, dy = 22;
  for (int index = 0; index < colr_count; ++index) {
    const float x = content_left + static_cast<float>(index % columns) * pitch_dx;
    const int row = index / columns;
    const float y = top - 26 - static_cast<float>(row) * pitch_dy;
    OGL_fillrect(index, 1, x, y, dx, dy);
    OGL_framerect(col_black, 1, x, y, dx, dy);
    OGL_string(col_label, x + dx + 4, y + 8, std::to_string(index), no_wrap);
  }
}

void draw_strips(float top) {
  constexpr int types[] = {0, 1, 2, 3, 4, 5, 7, 8, 9, 10};
  constexpr float widths[] = {60, 151, 300};  // the odd one is rounded to an even one
  constexpr float pitch = 36;
  float y = top - 26;
  for (const int type : types) {
    OGL_string(col_label, content_left, y - 4, std::to_string(type), no_wrap);
    float x = content_left + 30;
    for (const float width : widths) {
      BTN_frame1(type, x + width / 2, y, width, 0);
      x += width + 24;
    }
    y -= pitch;
  }
  constexpr int bar_type = 6;
  constexpr float lengths[] = {40, 151, 300};
  float x = content_left + 620;
  for (const float length : lengths) {
    BTN_frame0(bar_type, x, top - 180, length);
    x += 32;
  }
  caption(content_left + 652, top - 20, "6");
}

void draw_boxes(float top) {
  constexpr int types[] = {11, 12, 13, 14, 15, 16, 17, 18, 19, 20};
  constexpr int columns = 5;
  constexpr float dx = 121, dy = 111, pitch_dx = 144, pitch_dy = 148;
  for (int i = 0; i < 10; ++i) {
    const float x = content_left + static_cast<float>(i % columns) * pitch_dx;
    const int row = i / columns;
    const float y = top - 126 - static_cast<float>(row) * pitch_dy;
    BTN_frame2(types[i], x, y, dx, dy, str_format("type %d", types[i]));
  }
}
