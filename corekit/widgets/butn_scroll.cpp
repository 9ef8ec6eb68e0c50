// A part of a page that shows some of its rows: bar, wheel and keys move it.
//
// Main thread. Reads mnw, uses up its wheel; writes the caller's variable and the queue of all such
// parts.

#include <algorithm>
#include <cmath>

#include "corekit/base/hl_run.h"
#include "corekit/base/mnw.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_value.h"
#include "corekit/widgets/keys_codes.h"

namespace {

BTN_key_queue scroll_queue;

// How far a key moves.
int step_of(int vkey, int shown, int last_top) {
  switch (vkey) {
    case vk_up:
      return -1;
    case vk_down:
      return 1;
    case vk_prior:
      return -std::max(1, shown - 1);
    case vk_next:
      return std::max(1, shown - 1);
    case vk_home:
      return -last_top;
    case vk_end:
      return last_top;
    default:
      return 0;
  }
}

}  // namespace

void BTN_scroll_bar(int slider_index, float right, float y, float dy, int last_top, int* top) {
  constexpr float arrow_dy = 22;
  // The bar wants whole numbers, and an even sum of its ends.
  const float low = std::round(y + arrow_dy + 2), high = std::round(y + dy - arrow_dy - 2);
  const float even = std::fmod(low + high, 2.0f) != 0 ? 1.0f : 0.0f;
  BTN_vert_slider(slider_index, std::round(right - scroll_bar_dx / 2), low, high - even, 0,
                  last_top, top);
}

int BTN_scroll_wheel(float x, float y, float dx, float dy, int rows, int last_top, int* top) {
  if (!mnw.wheel || !BTN_mouse_in(x, y, x + dx, y + dy)) return 0;
  *top = std::clamp(*top - mnw.wheel * rows, 0, last_top);
  mnw.wheel = 0;
  return 1;
}

void BTN_scroll_area(int slider_index, float x, float y, float dx, float dy, int count, int shown,
                     int* top) {
  const int last_top = std::max(0, count - shown);
  *top = std::clamp(*top, 0, last_top);
  if (!ogl_inited || last_top == 0) return;
  const int id = BTN_identity(x, y);
  const int focused = BTN_register_queue(id, scroll_queue, accept_moves, 0);
  BTN_key key;
  for (int at = 0; BTN_take_key(scroll_queue, id, &at, &key);)
    *top = std::clamp(*top + step_of(key.vkey, shown, last_top), 0, last_top);
  BTN_scroll_wheel(x, y, dx, dy, 1, last_top, top);
  BTN_scroll_bar(slider_index, x + dx, y, dy, last_top, top);
  if (focused) BTN_plot_focus(x, y, x + dx, y + dy);
}
