// The scroll bar and the level control.
//
// Main thread. Writes the caller's variable, stls (hover help), the level controls' queue and which
// slider is grabbed.

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/mnw.h"
#include "corekit/base/xtim.h"
#include "corekit/draw/oglp.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_draw.h"
#include "corekit/widgets/butn_value.h"
#include "corekit/widgets/keys_codes.h"

namespace {

constexpr float no_wrap = 9999;

BTN_key_queue level_queue;

// Where an arrow, a page key, Home or End brings a level.
float moved_by_key(float value, int vkey, float low, float high) {
  constexpr float steps = 20, page = 5;
  const float step = (high - low) / steps;
  const auto [least, most] = std::minmax(low, high);
  switch (vkey) {
    case vk_left:
    case vk_down:
      return std::clamp(value - step, least, most);
    case vk_right:
    case vk_up:
      return std::clamp(value + step, least, most);
    case vk_next:
      return std::clamp(value - page * step, least, most);
    case vk_prior:
      return std::clamp(value + page * step, least, most);
    case vk_home:
      return low;
    case vk_end:
      return high;
    default:
      return value;
  }
}

// 1 in the frames in which a button that stays down steps again.
int held_step() {
  constexpr double delay = 0.4, every = 0.1;  // seconds
  if (!mnw.mouse_held || mnw.mouse_clicked) return 0;
  const double held = xtim.now_sec - xtim.mouse_down - delay;
  if (held < 0) return 0;
  const double before = held - xtim.period;
  return before < 0 || std::floor(held / every) != std::floor(before / every);
}

// The scroll bar's parts: the track from y_low to y_high, an arrow beyond each end.
struct scroll_bar {
  float x, y_low, y_high;
  int low, high;

  float thumb_y(int value) const {
    const float first = y_high - 10, last = y_low + 9;
    const float part = static_cast<float>(value - low) / static_cast<float>(high - low);
    return std::clamp(first + part * (last - first), std::min(first, last), std::max(first, last));
  }

  bool mouse_on_thumb(float at) const {
    constexpr float reach = 11;
    return BTN_mouse_in(x - reach, at - reach, x + reach, at + reach);
  }

  int value_at_mouse() const {
    const float first = y_high - 11, last = y_low + 11;
    const float part = first == last ? 0 : (mnw.mouse_y - first) / (last - first);
    const float value =
        static_cast<float>(low) + std::clamp(part, 0.0f, 1.0f) * static_cast<float>(high - low);
    return std::clamp(static_cast<int>(value), low, high);
  }

  // How far a press or the repeat of a held button moves the value.
  int step(float thumb) const {
    constexpr int page = 10;
    if (!(mnw.mouse_clicked || held_step())) return 0;
    if (!BTN_mouse_in(x - 11, y_low - 20, x + 11, y_high + 20)) return 0;
    if (mnw.mouse_y >= y_high) return -1;
    if (mnw.mouse_y <= y_low) return 1;
    return mnw.mouse_y > thumb ? -page : page;
  }

  void plot_thumb(float at, bool grabbed) const {
    constexpr float u = 92, half_dx = 9;
    const int col = grabbed ? col_light : col_as_is;
    BTN_util_element(x, y_high + 10, u, 277, half_dx, 11, col);
    BTN_util_element(x, y_low - 10, u, 227, half_dx, 11, col);
    BTN_util_element(x, std::round(at), u, 252, half_dx, 12, col);
  }
};

}  // namespace

// One call is one frame:
//
//   mouse                     button          value
//   on the thumb              held            grabbed: follows the mouse until the release
//   on the arrow of an end    pressed, held   1 towards it; held repeats
//   in the track              pressed, held   10 towards the mouse; held repeats
int BTN_vert_slider(int index, float x, float y_low, float y_high, int low, int high, int* value) {
  static bool slider_grabbed[4] = {};
  if (index < 0 || index >= static_cast<int>(std::size(slider_grabbed))) {
    MACIBM_fault(at_sliders, "Too many sliders!");
    return 0;
  }
  if (!ogl_inited) return 0;
  bool& grabbed = slider_grabbed[index];
  BTN_frame0(bar_scroll, x, (y_high + y_low) / 2, y_high - y_low);
  if (high <= low) {
    grabbed = false;
    return 0;
  }
  const scroll_bar bar = {x, y_low, y_high, low, high};
  *value = std::clamp(*value, low, high);
  const float thumb = bar.thumb_y(*value);
  if (!mnw.mouse_held) {
    grabbed = false;
  } else if (bar.mouse_on_thumb(thumb)) {
    grabbed = true;
  }
  *value = grabbed ? bar.value_at_mouse() : std::clamp(*value + bar.step(thumb), low, high);
  bar.plot_thumb(bar.thumb_y(*value), grabbed);
  return grabbed;
}

int BTN_horz_slider(float x, float y, float dx, int col, float low, float high, float* value,
                    int enabled, const std::string& label, const std::string& tip) {
  constexpr int no_level = col_black;
  constexpr float hover = 7, reach = 20, level_rise = 4;
  static const float* slider_grabbed = nullptr;  // the variable whose slider is dragged
  if (!ogl_inited) return 0;
  if (low == high) high = low + 0.01f;
  std::string left, right, help;
  BTN_expand_label(label, &left, &right, &help);
  BTN_frame1(strip_track, x + dx / 2, y, dx, col_as_is);
  BTN_util_draw_label(x - 8, y, 0, left, 0);
  BTN_util_draw_label(x + dx + 8, y, 2, right, 0);
  BTN_hover(x, y - hover, x + dx, y + hover, help);
  if (!tip.empty() && BTN_mouse_in(x, y - hover, x + dx, y + hover)) {
    OGL_string(col_label, x + dx / 2, y + 10, tip, no_wrap, charset_text, just_centre);
  }

  if (!mnw.mouse_held) slider_grabbed = nullptr;
  if (enabled && mnw.mouse_held && (!slider_grabbed || slider_grabbed == value) &&
      BTN_mouse_in(x - reach, y - reach, x + dx + reach, y + reach)) {
    slider_grabbed = value;
    const auto [least, most] = std::minmax(low, high);
    *value = dx > 0 ? std::clamp(low + (mnw.mouse_x - x) / dx * (high - low), least, most)
                    : (low + high) / 2;
  }

  const int id = BTN_identity(x, y);
  int moved = 0;
  if (enabled) {
    if (BTN_register_queue(id, level_queue, accept_moves, 0)) {
      BTN_plot_focus(x, y - hover, x + dx, y + hover + level_rise);
    }
    BTN_key key;
    for (int at = 0; BTN_take_key(level_queue, id, &at, &key); moved = 1)
      *value = moved_by_key(*value, key.vkey, low, high);
  }

  const float part = std::clamp((*value - low) / (high - low), 0.0f, 1.0f);
  const int level = static_cast<int>(part * dx) & ~1;
  if (col != no_level && level > 0) {
    const float level_dx = static_cast<float>(level);
    BTN_frame1(strip_level, x + level_dx / 2, y + level_rise, level_dx, col);
  }
  BTN_util_element(x + std::round(part * dx), y + level_rise, 272, 278, 10, 11, 0);
  return moved || slider_grabbed == value;
}
