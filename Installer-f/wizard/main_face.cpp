// The faces of the wizard's own buttons. The pictures bear English words. In another language the
// plate under them is made of the picture's two ends and of a column that is free of letters, drawn
// wide; so the words of a language need no pictures, and the states stay the picture's.
//
// Main thread. Writes nothing.

#include "Installer-f/wizard/main_face.h"

#include <algorithm>
#include <iterator>

#include "corekit/base/UTL_translate.h"
#include "corekit/draw/colr.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/tman.h"
#include "corekit/widgets/butn_plate.h"

namespace {

constexpr float text_rise = 7;  // from the face's lower edge to the y of its text

struct face_words {
  float tex_x;  // which face
  UTL_text words;
  int col, col_greyed;
};
constexpr face_words faces[] = {
    {1, "Quit", col_black, col_note},          {54, "Back", col_black, col_note},
    {150, "Next", col_white, col_white},       {255, "Select All", col_black, col_note},
    {374, "Select None", col_black, col_note}, {628, "Options", col_black, col_note},
};

}  // namespace

void face_draw(float x, float y, float tex_x, float tex_y, float dx, float dy, float alpha) {
  const face_words* const face = std::find_if(std::begin(faces), std::end(faces),
                                              [&](const auto& f) { return f.tex_x == tex_x; });
  const std::string words = face == std::end(faces) ? "" : tr(face->words);
  const bool is_picture = face == std::end(faces) || words == face->words ||
                          static_cast<float>(OGL_string_width(words)) > dx - 2 * (plate_cap + 1);
  if (is_picture) {
    OGL_2dquad_d(t_elements, col_picture, alpha, x, y, tex_x / 1024, tex_y / 128, dx, dy, dx / 1024,
                 dy / 128, blend_mix);
    return;
  }
  BTN_plot_plate({tex_x, tex_y, dx}, x, y, dx, alpha);
  OGL_string(alpha < 1 ? face->col_greyed : face->col, x + dx / 2, y + text_rise, words, 0,
             charset_text, just_centre);
}
