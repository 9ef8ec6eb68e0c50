// The faces of the wizard's own buttons. The pictures bear English words. In another language the
// plate under them is made of the picture's two ends and of a column that is free of letters, drawn
// wide; so the words of a language need no pictures, and the states stay the picture's.
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

constexpr float text_rise = 7;  // from the face's lower edge to the y of its text

// A sign beside the words, as the picture has it.
struct face_mark {
  float u, dx;  // where it is in the picture; 0 wide for none
  bool leads;   // it stands in front of the words
};
struct face_words {
  float tex_x;  // which face
  UTL_text words;
  int col, col_greyed;
  face_mark mark = {0, 0, false};
};
constexpr face_words faces[] = {
    {1, "Quit", col_black, col_note},
    {54, "Back", col_black, col_note, {77, 9, true}},
    {150, "Next", col_white, col_white, {213, 8, false}},
    {255, "Select All", col_black, col_note},
    {374, "Select None", col_black, col_note},
    {628, "Options", col_black, col_note},
};

void draw_picture(float x, float y, float u, float v, float dx, float dy, float alpha) {
  OGL_2dquad_d(t_elements, col_picture, alpha, x, y, u / 1024, v / 128, dx, dy, dx / 1024, dy / 128,
               blend_mix);
}

}  // namespace

void face_draw(float x, float y, float tex_x, float tex_y, float dx, float dy, float alpha) {
  constexpr float gap = 4;  // between sign and words
  const face_words* const face = std::find_if(std::begin(faces), std::end(faces),
                                              [&](const auto& f) { return f.tex_x == tex_x; });
  const std::string words = face == std::end(faces) ? "" : tr(face->words);
  const float words_dx = static_cast<float>(OGL_string_width(words)),
              room = dx - 2 * (plate_cap + 1);
  if (face == std::end(faces) || words == face->words || words_dx > room) {
    return draw_picture(x, y, tex_x, tex_y, dx, dy, alpha);
  }
  BTN_plot_plate({tex_x, tex_y, dx}, x, y, dx, alpha);
  const face_mark& mark = face->mark;
  // Over a greyed plate the sign's own piece of it would show.
  const float mark_dx =
      alpha >= 1 && mark.dx > 0 && mark.dx + gap + words_dx <= room ? mark.dx + gap : 0;
  const float left = std::round(x + (dx - mark_dx - words_dx) / 2);
  if (mark_dx > 0) {
    draw_picture(mark.leads ? left : left + words_dx + gap, y, mark.u, tex_y, mark.dx, dy, alpha);
  }
  OGL_string(alpha < 1 ? face->col_greyed : face->col, left + (mark.leads ? mark_dx : 0),
             y + text_rise, words, 0);
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
