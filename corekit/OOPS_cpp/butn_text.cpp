// The text field, as it shows its text. It takes neither focus nor keys.
//
// Main thread. Writes stls (hover help).

#include "corekit/GenC/hl_init.h"
#include "corekit/OOPS_cpp/butn.h"
#include "corekit/OOPS_cpp/butn_draw.h"
#include "corekit/OOPS_cpp/oglp.h"

int BTN_enterstring(float x, float y, std::string* text, int /*max_length*/,
                    const std::string& label, float dx, int /*auto_focus*/) {
  constexpr int value_box = 9, text_colour = 45;
  constexpr float no_wrap = 9999;
  if (!ogl_inited) return 0;
  std::string left, right, help;
  BTN_expand_label(label, &left, &right, &help);
  BTN_hover(x, y, x + dx, y + 8, help);
  BTN_frame1(value_box, x + dx / 2 - 2, y + 3, dx + 10, 0);
  BTN_util_draw_label(x - 12, y, 0, left, 0);
  BTN_util_draw_label(x + dx + 6, y, 2, right, 0);
  // The caret's line is 11 high, and the text keeps to it.
  OGL_scissors(x - 1, y - 3, dx + 2, 11);
  OGL_string(text_colour, x, y, *text, no_wrap);
  OGL_scissors_end();
  return 0;
}
