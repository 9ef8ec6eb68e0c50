// The faces of the wizard's own buttons. The pictures bear English words. In another language the
// plate under them is made of the picture's two ends and of a column that is free of letters, drawn
// wide; so the words of a language need no pictures, and the states stay the picture's. They are
// written in the letters of the pictured words where these have room.
//
// Main thread. Writes nothing.

#include "Installer-f/wizard/main_face.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/mnw.h"
#include "corekit/draw/colr.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/tman.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_plate.h"

namespace {

struct face_words {
  float tex_x;  // which face
  UTL_text words;
  int col, col_greyed;
  char before = 0, behind = 0;  // the sign beside the words; 0 none
};
// Greyed words are black, since the ground shows through the plate that they stand on.
constexpr face_words faces[] = {
    {1, "Quit", col_label, col_black},           {54, "Back", col_label, col_black, '<', 0},
    {150, "Next", col_white, col_white, 0, '>'}, {255, "Select All", col_label, col_black},
    {374, "Select None", col_label, col_black},  {628, "Options", col_label, col_black},
};

// How the words are written: in the letters of the pictured ones, with the signs, if there is room.
struct face_type {
  std::string text;
  int charset;
  float dx;
};

face_type type_of(const face_words& face, const std::string& words, float room) {
  const auto sign = [](char c) { return std::string(c ? 1 : 0, c); };
  const std::string choices[] = {sign(face.before) + words + sign(face.behind), words};
  for (const std::string& text : choices) {
    const float dx = static_cast<float>(OGL_string_width(text, charset_face));
    if (OGL_face_has(text) && dx <= room) return {text, charset_face, dx};
  }
  return {words, charset_text, static_cast<float>(OGL_string_width(words))};
}

}  // namespace

void face_draw(float x, float y, float tex_x, float tex_y, float dx, float dy, float alpha) {
  constexpr float rim = 4, text_rise = 8;  // from the face's lower edge to the y of its text
  const auto draw_picture = [&] {
    OGL_2dquad_d(t_elements, col_picture, alpha, x, y, tex_x / 1024, tex_y / 128, dx, dy, dx / 1024,
                 dy / 128, blend_mix);
  };
  const face_words* const face = std::find_if(std::begin(faces), std::end(faces),
                                              [&](const auto& f) { return f.tex_x == tex_x; });
  const std::string words = face == std::end(faces) ? "" : tr(face->words);
  if (face == std::end(faces) || words == face->words) return draw_picture();
  const face_type type = type_of(*face, words, dx - 2 * rim);
  if (type.dx > dx - 2 * rim) return draw_picture();
  BTN_plot_plate({tex_x, tex_y, dx}, x, y, dx, alpha);
  // A pressed face goes down by a row, words and all.
  const float down = tex_y == BTN_face_row(true, true) ? 1 : 0;
  OGL_string(alpha < 1 ? face->col_greyed : face->col, x + std::round((dx - type.dx) / 2),
             y + text_rise - down, type.text, 0, type.charset);
}

int interface_rect(float x, float y, float tex_x, float tex_y, float dx, float dy, int hot,
                   int state) {
  if (!ogl_inited) return 0;
  BTN_press press = {BTN_click_in(x, y, x + dx, y + dy), 0, 0};
  // A face that is greyed cannot be reached by keys.
  if (hot && state != 2) press = BTN_pressable(BTN_identity(x, y), x, y, x + dx, y + dy);
  // A face is three images: idle on top of the stack, pressed under it, hover at the bottom.
  if (hot && BTN_mouse_in(x, y, x + dx, y + dy)) tex_y -= (mnw.mouse_held ? 1 : 2) * (dy + 1);
  face_draw(x, y, tex_x, tex_y, dx, dy, state == 2 ? 0.5f : 1.0f);
  if (press.focused) BTN_plot_focus(x, y, x + dx, y + dy);
  return press.hit;
}
