// Text in the bitmap fonts: where a glyph lies in the font's grid, how wide it is, one line,
// wrapped text, numbers. Bytes are ISO Latin-1, lines are 10 units apart.
//
// Main thread. Reads mnw; writes no global.

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

#include "corekit/Platform/PLT_text.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_types.h"
#include "corekit/base/mnw.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/oglp_draw.h"
#include "corekit/draw/oglp_glyphs.h"
#include "corekit/draw/oglp_watch.h"
#include "corekit/draw/tman.h"

namespace {

constexpr float line_height = 10.0f;
constexpr float no_wrap = 9999.0f;
constexpr float wrap_guess = 6.0f;  // a letter of the word that may not fit, whatever its width
constexpr float fixed_pitch = 10.0f;
constexpr int digit_limit = 11;  // places that a number can have

constexpr int alternate_columns = 40;  // of the second glyph set, which is in byte order

// A font: a grid of cells in a texture.
struct font_info {
  int charset;
  int ref;
  float cell_dx, cell_dy;  // units, and pixels of the texture
  float advance;           // 0 for proportional
  float tex_dx, tex_dy;    // the texture's size, pixels
  const std::array<unsigned char, 256>& widths = glyph_widths;
  float u = 0, v = 0;  // of the grid in the texture
};
constexpr font_info fonts[] = {
    {charset_text, t_interface, glyph_dx, glyph_dy, 0, 512, 512},
    {charset_fixed, t_interface, glyph_dx, glyph_dy, fixed_pitch, 512, 512},
    // Its texture is the smallest that holds 40 by 7 cells.
    {charset_alternate, t_glyphs_2, 13, 13, 15, 1024, 128},
    {charset_face, t_interface, face_glyph_dx, face_glyph_dy, 0, 512, 512, face_glyph_widths,
     face_glyph_u, face_glyph_v},
};

const font_info* find_font(int charset) {
  for (const font_info& font : fonts) {
    if (font.charset == charset) return &font;
  }
  MACIBM_fault(at_text_charset, "String proc with bad charset!");
  return nullptr;
}

glyph_cell cell_of(unsigned char byte, int charset) {
  if (charset == charset_alternate) {
    return {static_cast<unsigned char>(byte % alternate_columns),
            static_cast<unsigned char>(byte / alternate_columns)};
  }
  return charset == charset_face ? face_glyph_cells[byte] : glyph_own_cells[glyph_shown(byte)];
}

bool is_break(char c) {
  return c == ' ' || c == '-' || c == '/';
}

// How far the next word reaches, as the wrap reckons it; a NUL ends text.
float guess_word(std::string_view s, size_t at, float pen) {
  for (; at < s.size() && s[at] != '\0' && !is_break(s[at]); ++at)
    pen += wrap_guess;
  return pen;
}

// A number made ready for its digits: size without sign, scaled so that its last place is the
// units.
struct number_parts {
  double size, scaled, rounded;
  bool minus;

  number_parts(float value, int decimals) {
    // What is no number shows as 0: a digit of it would be none.
    size = std::isfinite(value) ? std::fabs(static_cast<double>(value)) : 0.0;
    scaled = size * std::pow(10.0, decimals);
    rounded = scaled + 0.5;
    minus = value < 0 && scaled > 0.1;
  }
  char digit(int place) const {
    return static_cast<char>(
        '0' + static_cast<int>(std::fmod(std::floor(rounded / std::pow(10.0, place)), 10.0)));
  }
};

int digits_needed(double scaled) {
  int count = 1;
  for (double limit = 9; count < 10 && scaled > limit; limit = limit * 10 + 9)
    ++count;
  return count;
}

// Three digits and a power of ten, for a number that does not fit its places.
std::string exponent_text(double size) {
  int power = 2;
  for (; size >= 999; size /= 10)
    ++power;
  const int i = static_cast<int>(std::lround(size));
  const auto digit = [](int d) { return static_cast<char>('0' + d % 10); };
  return {digit(i / 100), '.', digit(i / 10), digit(i), 'x', power > 9 ? '0' : digit(power)};
}

// The odometer: every digit in a cell of its own, punctuation squeezed in between two cells.
void plot_odometer(int col, float x, float y, float value, int digits, int decimals) {
  const number_parts number(value, decimals);
  float s0, t0, cell_dx, cell_dy;
  const float pitch = OGL_strtex(charset_fixed, col, &s0, &t0, &cell_dx, &cell_dy);
  const float left = std::round(x + mnw.x_off) - pitch, base = std::round(y + mnw.y_off) - 2;
  const auto put = [&](float at_x, int ch) {
    OGL_char(at_x, base, s0, t0, cell_dx, cell_dy, ch, charset_fixed);
  };
  const int whole = digits - decimals;
  const auto between = [&](int cells) { return left + (static_cast<float>(cells) + 0.5f) * pitch; };

  if (number.minus) put(left + 1, '-');
  if (decimals > 0) put(between(whole), '.');
  for (int group = 3; group <= 9; group += 3) {
    if (whole > group) put(between(whole - group), ',');
  }
  for (int i = 0; i < digits; ++i)
    put(left + static_cast<float>(i + 1) * pitch, number.digit(digits - 1 - i));
}

}  // namespace

int OGL_char_width(unsigned char ch) {
  return glyph_widths[ch];
}

int OGL_string_width(std::string_view s, int charset) {
  if (PLT_needs_font_text(s)) return OGL_string_width(PLT_font_text(s), charset);
  const auto& widths = charset == charset_face ? face_glyph_widths : glyph_widths;
  int width = 0;
  for (const char c : s)
    width += widths[static_cast<unsigned char>(c)];
  return width;
}

bool OGL_face_has(std::string_view s) {
  if (PLT_needs_font_text(s)) return OGL_face_has(PLT_font_text(s));
  for (const char c : s)
    if (face_glyph_widths[static_cast<unsigned char>(c)] == 0) return false;
  return true;
}

float OGL_strtex(int charset, int col, float* s0, float* t0, float* cell_dx, float* cell_dy) {
  const font_info* font = find_font(charset);
  if (!font) return -1.0f;
  *s0 = font->u / font->tex_dx;
  *t0 = font->v / font->tex_dy;
  *cell_dx = font->cell_dx;
  *cell_dy = font->cell_dy;
  if (ogl_inited) OGL_put_as(shape_quad, 1, blend_mix, font->ref, col, 1.0f);
  return font->advance;
}

void OGL_char(float x, float y, float s0, float t0, float cell_dx, float cell_dy, int ch,
              int charset) {
  const font_info& font = charset == charset_alternate ? fonts[2] : fonts[0];
  const glyph_cell cell = cell_of(static_cast<unsigned char>(ch & 0xFF), charset);
  const float s = s0 + static_cast<float>(cell.column) * cell_dx / font.tex_dx;
  const float t = t0 + static_cast<float>(cell.row) * cell_dy / font.tex_dy;
  const float size = oglp > 1.0f ? oglp : 1.0f;
  x = std::trunc(x);
  y = std::trunc(y) - 4;
  // The last column is blank. Where a unit is several pixels, it would take in the next cell's ink.
  const float dx = cell_dx - 1;
  OGL_put_quad(x, y, x + dx * size, y + cell_dy * size, s, t, s + dx / font.tex_dx,
               t + cell_dy / font.tex_dy);
}

void str_one_line(int col, float x, float y, std::string_view s, int charset, int just) {
  float s0, t0, cell_dx, cell_dy;
  const float advance = OGL_strtex(charset, col, &s0, &t0, &cell_dx, &cell_dy);
  if (!ogl_inited || advance < 0 || s.empty()) return;

  // Fixed charsets too are aligned by the proportional widths.
  const float dx = static_cast<float>(OGL_string_width(s, charset));
  if (just == just_centre) x -= dx / 2;
  if (just == just_right) x -= dx;
  watch_text(col, x, y, s, charset);
  for (const char c : s) {
    if (c == '\r' || c == '\n' || c == '\t') continue;
    const unsigned char byte = static_cast<unsigned char>(c);
    OGL_char(x, y, s0, t0, cell_dx, cell_dy, byte, charset);
    x += advance > 0 ? advance : static_cast<float>(find_font(charset)->widths[byte]);
  }
}

namespace {

// Calls line(part) for each line that the text takes when it is wrapped.
template <typename Line>
void each_line(const font_info& font, std::string_view text, float wrap_dx, Line line) {
  float pen = 0;
  size_t start = 0;  // of the line being filled
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const bool last = i + 1 == text.size();
    pen += font.advance > 0 ? font.advance
                            : static_cast<float>(font.widths[static_cast<unsigned char>(c)]);
    bool full = c == '\n' || last;
    if (!full && is_break(c)) {
      // The line breaks behind this character if the word after it is reckoned not to fit. A word
      // wider than the line is drawn all the same, and overruns it.
      full = guess_word(text, i + 1, pen) > wrap_dx;
    }
    if (!full) continue;
    line(text.substr(start, i + 1 - start));
    start = i + 1;
    pen = 0;
  }
}

}  // namespace

int OGL_string_lines(const std::string& s, float wrap_dx) {
  if (PLT_needs_font_text(s)) return OGL_string_lines(PLT_font_text(s), wrap_dx);
  int count = 0;
  each_line(fonts[0], s, wrap_dx, [&count](std::string_view) { ++count; });
  return count;
}

float OGL_string(int col, float x, float y, const std::string& s, float wrap_dx, int charset,
                 int just) {
  if (PLT_needs_font_text(s)) {
    return OGL_string(col, x, y, PLT_font_text(s), wrap_dx, charset, just);
  }
  const font_info* font = find_font(charset);
  if (!font) return y;
  const float left = std::round(x + mnw.x_off);
  float base = std::round(y + mnw.y_off - 2.0f);
  const auto next_y = [&base] { return base - mnw.y_off + 2.0f; };
  if (wrap_dx <= 0 || wrap_dx >= no_wrap) {
    str_one_line(col, left, base, s, charset, just);
    return next_y();
  }

  each_line(*font, s, wrap_dx, [&](std::string_view line) {
    str_one_line(col, left, base, line, charset, just);
    base -= line_height;
  });
  return next_y();
}

std::string OGL_number_text(float value, int digits, int decimals) {
  digits = std::min(digits, digit_limit);
  const number_parts number(value, decimals);
  std::string text;
  if (number.minus) text += '-';
  if (std::max(digits_needed(number.scaled), decimals + 1) > digits) {
    return text + exponent_text(number.size);
  }
  const int whole = digits - decimals;
  for (int place = digits - 1; place >= 0; --place) {
    const int to_go = place + 1;  // places from here to the end
    if (to_go == decimals && whole >= 1) text += '.';
    const int whole_to_go = to_go - decimals;
    for (int group = 3; group <= 9; group += 3) {
      if (whole_to_go == group && whole > group) text += ',';
    }
    text += number.digit(place);
  }
  return text;
}

void OGL_number(int col, float x, float y, float value, int digits, int decimals, int charset) {
  if (charset != charset_fixed) {
    OGL_string(col, x, y, OGL_number_text(value, digits, decimals), no_wrap, charset, just_left);
  } else if (ogl_inited) {
    plot_odometer(col, x, y, value, std::min(digits, digit_limit), decimals);
  }
}

void OGL_gray_string(int col, float x, float y, const std::string& s) {
  constexpr float rim = 2, above = 8, plate_alpha = 0.5f;
  const float half = static_cast<float>(OGL_string_width(s)) / 2;
  OGL_grayrect(x - half - rim, y - rim, x + half + rim, y + above, plate_alpha);
  OGL_string(col, x, y, s, no_wrap, charset_text, just_centre);
}
