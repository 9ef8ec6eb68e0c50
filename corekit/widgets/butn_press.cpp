// What is pressed: the place of a button, box, radio, tab or face in the focus ring, and the frame
// that shows where the focus is.
//
//   frame n      the widget registers as it is drawn; Tab in frame n + 1 may give it the focus
//   Space        is queued for it, and is a click when it is drawn
//   a click      presses it and leaves the focus where it was
//
// A Space that is held presses once. Main thread. Writes the queue of all such widgets.

#include "corekit/base/hl_run.h"
#include "corekit/draw/oglp.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/keys_codes.h"

namespace {

BTN_key_queue press_queue;

}  // namespace

BTN_press BTN_pressable(int id, float left, float bottom, float right, float top) {
  if (!ogl_inited) return {};
  BTN_press press = {BTN_click_in(left, bottom, right, top), BTN_mouse_in(left, bottom, right, top),
                     BTN_register_queue(id, press_queue, accept_printable, 0)};
  BTN_key key;
  for (int at = 0; BTN_take_key(press_queue, id, &at, &key);)
    if (key.ch == ' ' && (key.flags & key_down)) press.hit = 1;
  return press;
}

void BTN_plot_focus(float left, float bottom, float right, float top) {
  if (!ogl_inited) return;
  // Dark and light, so that it is seen on any ground.
  constexpr float dark[] = {2, 3}, light = 4;
  const auto frame = [&](int col, float rim) {
    OGL_framerect(col, 1, left - rim, bottom - rim, right - left + 2 * rim, top - bottom + 2 * rim);
  };
  for (const float rim : dark)
    frame(col_black, rim);
  frame(col_light, light);
}
