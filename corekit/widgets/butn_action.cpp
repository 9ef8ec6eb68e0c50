// The plain widgets: push button, check box, radio button, tab.
//
// Main thread. Reads mnw; writes stls (hover help) and the caller's variable.

#include "corekit/base/hl_run.h"
#include "corekit/base/mnw.h"
#include "corekit/draw/oglp.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_draw.h"
#include "corekit/widgets/butn_plate.h"

namespace {

// A button as it is drawn in this frame.
struct action_look {
  float x, y, dx;
  bool bright;   // the one that a page is for
  bool pressed;  // it is on, or the mouse holds it down
  bool under;    // the mouse is on it
  bool lit;      // of its label, where it is on
};

// Draws a button's face and its label.
void plot_action(const action_look& look, const std::string& label) {
  constexpr float bright_u = 150, bright_dx = 100, no_wrap = 9999;
  if (look.bright) {
    const float v = BTN_face_row(look.pressed || look.under, look.pressed);
    BTN_plot_plate({bright_u, v, bright_dx}, look.x - look.dx / 2, look.y - plate_dy / 2, look.dx,
                   1);
    OGL_string(col_white, look.x, look.y - 3, label, no_wrap, charset_text, just_centre);
    return;
  }
  BTN_frame1(strip_button_up, look.x, look.y, look.dx, look.under ? col_lit : col_as_is);
  if (look.pressed) BTN_frame1(strip_button_down, look.x, look.y, look.dx, col_as_is);
  BTN_util_draw_label(look.x, look.y - 3, 1, label, look.lit);
}

// A variable of another type than int, as a check box edits it.
template <typename value_type>
int bool_of(float x, float y, value_type* value, const std::string& label) {
  int as_int = *value ? 1 : 0;
  const int hit = BTN_bool(x, y, &as_int, label, 0);
  if (hit) *value = static_cast<value_type>(as_int);
  return hit;
}

// One call is one frame. The press is all that counts: holding and releasing do nothing more, and a
// press that arrives while the mouse is elsewhere is lost to the button.
//
//   mouse     held  clicked  popup_code   on  mode   drawn                              result
//   outside   any   any      any          0   any    face up                            0
//   outside   any   any      any          1   any    face down over face up             0
//   inside    0     0        -1           any any    the same, tinted; help to the      0
//                                                    hover text
//   inside    1     0        -1           any any    face down over face up; help       0
//   inside    any   any      a menu       any any    as outside                         0
//   inside    any   1        -1           0   0      as not clicked                     1
//   inside    any   1        -1           0   1, 2   then face down, and swapped        1
//   inside    any   1        -1           1   any    face down                          1
//   any; Space, focused                   0   0 .. 2 as inside and clicked              1
//
// The swap inside the call shows the press before the action that follows, which may take long.
// What the page has not drawn yet is missing from that one picture.
int plot_and_press(float x, float y, float dx, int on, int mode, const std::string& label,
                   const std::string& note, bool bright) {
  constexpr float half_dy = 10, label_rim = 21, note_gap = 10, note_rise = 7, note_wrap = 500;
  if (!ogl_inited) return 0;
  std::string left, right, help;
  BTN_expand_label(label, &left, &right, &help);
  if (dx <= 0) dx = static_cast<float>(OGL_string_width(left)) + label_rim;
  const float half = dx / 2;

  const BTN_press press =
      BTN_pressable(BTN_identity(x, y), x - half, y - half_dy, x + half, y + half_dy);
  const bool held = press.under && mnw.mouse_held;
  plot_action({x, y, dx, bright, on || held, press.under != 0, on && mode == 2}, left);
  if (!note.empty()) {
    OGL_string(col_note, x + half + note_gap, y + note_rise, note, note_wrap);
  }
  if (press.focused) BTN_plot_focus(x - half, y - half_dy, x + half, y + half_dy);
  BTN_hover(x - half, y - half_dy, x + half, y + half_dy, help);
  if (!press.hit) return 0;
  if (!on && mode) {
    plot_action({x, y, dx, bright, true, press.under != 0, false}, left);
    OGL_sbuff();
  }
  return 1;
}

}  // namespace

int BTN_action(float x, float y, float dx, int on, int mode, const std::string& label,
               const std::string& note) {
  return plot_and_press(x, y, dx, on, mode, label, note, false);
}

int BTN_main_action(float x, float y, float dx, const std::string& label) {
  return plot_and_press(x, y, dx, 0, 1, label, "", true);
}

// One call is one frame. The value turns in the frame of the press, and is drawn turned in it.
//
//   mouse on the box   clicked  popup_code   *value            result
//   no                 any      any          as it was         0
//   yes                0        any          as it was; help   0
//   yes                1        a menu       as it was         0
//   yes                1        -1           turned            1
//   any; Space on the focused box            turned            1
//
// The labels belong to the box, but for the help.
int BTN_bool(float x, float y, int* value, const std::string& label, int radio) {
  constexpr float half = 9, rise = 3, label_gap = 12;
  struct cell {
    float u, v;
  };
  constexpr cell boxes[] = {{148, 187}, {92, 132}}, marks[] = {{148, 206}, {92, 151}};
  if (!ogl_inited) return 0;
  std::string left, right, help;
  BTN_expand_label(label, &left, &right, &help);

  BTN_hover(x - 8, y - 4, x + 8, y + 12, help);
  // The labels are part of what is clicked, with the gap between.
  const float reach_left = left.empty() ? 8 : label_gap + BTN_label_width(left);
  const float reach_right = right.empty() ? 8 : label_gap + BTN_label_width(right);
  const BTN_press press =
      BTN_pressable(BTN_identity(x, y), x - reach_left, y - 4, x + reach_right, y + 12);
  const int hit = press.hit;
  if (hit) *value = !*value;

  const int kind = radio ? 1 : 0;
  BTN_util_element(x, y + rise, boxes[kind].u, boxes[kind].v, half, half,
                   press.under ? col_lit : col_as_is);
  if (*value) BTN_util_element(x, y + rise, marks[kind].u, marks[kind].v, half, half, col_as_is);
  BTN_util_draw_label(x - label_gap, y, 0, left, 0);
  BTN_util_draw_label(x + label_gap, y, 2, right, 0);
  if (press.focused) BTN_plot_focus(x - 8, y - 4, x + 8, y + 12);
  return hit;
}

int BTN_is_int(float x, float y, int* value, int my_value, const std::string& label) {
  int mine = *value == my_value;
  const int hit = BTN_bool(x, y, &mine, label, 1);
  // A click on the button that is set would clear it; a radio button stays set.
  if (mine) *value = my_value;
  return hit;
}

int BTN_xbol(float x, float y, bool* value, const std::string& label) {
  return bool_of(x, y, value, label);
}

int BTN_xchr(float x, float y, char* value, const std::string& label) {
  return bool_of(x, y, value, label);
}

int BTN_xbyt(float x, float y, unsigned char* value, const std::string& label) {
  return bool_of(x, y, value, label);
}

int BTN_tab(int column, int row, int* value, int my_value, const std::string& label) {
  constexpr float pitch_dx = 88, first_x = 53, pitch_dy = 32, first_y = 38;
  constexpr float cell_dx = 98, cell_dy = 26, cell_u = 204, cell_v = 459, cell_v_selected = 486;
  constexpr float no_wrap = 9999;
  if (!ogl_inited) return 0;
  const float x = static_cast<float>(column) * pitch_dx + first_x;
  const float y = mnw.win_dy - first_y - pitch_dy * static_cast<float>(row);
  std::string left, right, help;
  BTN_expand_label(label, &left, &right, &help);

  BTN_hover(x - 50, y - 13, x + 40, y + 13, help);
  const BTN_press press = BTN_pressable(BTN_identity(x, y), x - 50, y - 13, x + 40, y + 13);
  const int hit = press.hit;
  if (hit) *value = my_value;
  const bool selected = *value == my_value;
  BTN_cell(x - cell_dx / 2, y - cell_dy / 2, cell_u, selected ? cell_v_selected : cell_v, cell_dx,
           cell_dy, col_as_is);
  OGL_string(selected ? col_tab_on : col_tab_off, x - 40, y - 4, left, no_wrap);
  if (press.focused) BTN_plot_focus(x - 50, y - 13, x + 40, y + 13);
  return hit;
}
