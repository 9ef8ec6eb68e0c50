// The popup list, and the scrolling list with its search field.
//
// Main thread. Writes the caller's variables, the popup's menu and codes, mnw.wheel, and the
// statics of the scrolling list: its key queue, the last click and what was typed on it.

#include <strings.h>

#include <algorithm>
#include <cmath>

#include "corekit/Platform/PLT_text.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/mnw.h"
#include "corekit/base/xtim.h"
#include "corekit/draw/oglp.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_draw.h"
#include "corekit/widgets/butn_text.h"
#include "corekit/widgets/butn_value.h"
#include "corekit/widgets/hl_mnw_menu.h"
#include "corekit/widgets/keys.h"

// --- popup list ----------------------------------------------------------------------------------

namespace {

constexpr float no_wrap = 9999;

std::vector<std::string> split_items(const std::string& items) {
  // Plain names joined by "-" are taken as well: with no "|" there is nothing to mark a separator.
  const char mark = items.find('|') == std::string::npos ? '-' : '|';
  std::vector<std::string> list;
  size_t at = !items.empty() && items[0] == mark ? 1 : 0;
  while (at <= items.size() && !items.empty()) {
    const size_t end = std::min(items.find(mark, at), items.size());
    // An item that begins "-" stands between two bars; the text ends without one.
    list.push_back(items.substr(at, end - at));
    at = end + 1;
  }
  return list;
}

float width_of_items(const std::vector<std::string>& list) {
  constexpr float text_rim = 8, arrows = 28, least = 64;
  int widest = 0;
  for (const std::string& item : list)
    widest = std::max(widest, OGL_string_width(item));
  return std::max(least, text_rim + static_cast<float>(widest) + arrows);
}

BTN_key_queue popup_queue;

void open_popup(int id, const std::vector<std::string>& list, int value, float x, float y,
                float dx) {
  if (static_cast<int>(menu.size()) < menu_slots) MACIBM_clear_menus(1);
  MACIBM_create_menu(popup_slot, "");
  for (size_t i = 0; i < list.size(); ++i)
    MACIBM_append_menu(popup_slot, static_cast<int>(i), list[i]);
  MACIBM_open_popup(id, value, x, y + 3 - 10, x + dx, y + 3 + 10);
}

}  // namespace

// The popup is the window layer's. Frame by frame:
//
//   a press on the box     the items go to the popup's menu, active_popup_code is this widget's
//   Space, or an arrow     the same, when it has the focus
//   meanwhile              no widget reacts to mouse or keys; the menu takes the next press
//   an item was pressed    select_popup_code is this widget's, popup_menu_select the item: taken
//                          here, once, and 1 is returned
int BTN_textlist(float x, float y, int* value, const std::string& items, const std::string& label) {
  constexpr float half_dy = 5, half_box = 10, rise = 3, text_rim = 8;
  if (!ogl_inited) return 0;
  std::string left, right, help;
  BTN_expand_label(label, &left, &right, &help);
  const std::vector<std::string> list = split_items(items);
  const float dx = width_of_items(list);
  const int id = BTN_identity(x, y);

  BTN_hover(x, y + rise - half_dy, x + dx, y + rise + half_dy, help);
  const int focused = BTN_register_queue(id, popup_queue, accept_moves | accept_printable, 0);
  int opens = BTN_click_in(x, y + rise - half_dy, x + dx, y + rise + half_dy);
  BTN_key key;
  for (int at = 0; BTN_take_key(popup_queue, id, &at, &key);)
    opens |= key.ch == ' ' || key.vkey == vk_up || key.vkey == vk_down;
  int chosen = 0;
  if (select_popup_code == id && mnw.popup_code == -1) {
    select_popup_code = 0;
    if (popup_menu_select >= 0 && popup_menu_select < static_cast<int>(list.size())) {
      *value = popup_menu_select;
      chosen = 1;
    }
  } else if (opens && !list.empty()) {
    open_popup(id, list, *value, x, y, dx);
  }

  BTN_frame1(strip_list, x + dx / 2, y + rise, dx, col_as_is);
  // The box is dark, and so lit by a veil.
  if (BTN_mouse_in(x, y + rise - half_dy, x + dx, y + rise + half_dy)) {
    OGL_fillrect(col_white, 0.15f, x + 3, y + rise - 7, dx - 6, 14);
  }
  OGL_string(col_menu_back, x + text_rim, y, BTN_name_from_vector(*value, &list), no_wrap);
  BTN_util_draw_label(x - 12, y, 0, left, 0);
  BTN_util_draw_label(x + dx + 12, y, 2, right, 0);
  if (focused) BTN_plot_focus(x, y + rise - half_box, x + dx, y + rise + half_box);
  return chosen;
}

// --- scrolling list ------------------------------------------------------------------------------

namespace {

constexpr float row_dy = 14, rim = 6, search_dy = 28;

BTN_key_queue list_queue;

struct last_click_record {
  int id = 0, row = -1;
};
last_click_record last_click;
double last_typed = 0;  // when a character was last typed on a list

// A list in its place, for one frame.
struct list_view {
  float x, y, dx, dy;  // the panel, without the search field
  int count;
  int* top;
  int* selected;

  int shown() const { return std::max(1, static_cast<int>((dy - 2 * rim) / row_dy)); }
  int last_top() const { return std::max(0, count - shown()); }
  float rows_right() const { return x + dx - scroll_bar_dx; }
  float row_bottom(int row) const {
    return y + dy - rim - static_cast<float>(row - *top + 1) * row_dy;
  }

  void keep_in_range() const {
    *selected = std::clamp(*selected, -1, count - 1);
    *top = std::clamp(*top, 0, last_top());
  }
  void select(int row) const {
    *selected = std::clamp(row, count > 0 ? 0 : -1, count - 1);
    if (*selected < 0) return;
    *top = std::clamp(*top, std::max(0, *selected - shown() + 1), *selected);
    *top = std::min(*top, last_top());
  }
  int row_at_mouse() const {
    if (!BTN_mouse_in(x, y + rim, rows_right(), y + dy - rim)) return -1;
    const int row = *top + static_cast<int>((y + dy - rim - mnw.mouse_y) / row_dy);
    return row < std::min(count, *top + shown()) ? row : -1;
  }
};

// Names of the disk are UTF-8 as a rule; one that is not is shown byte by byte.
std::string shown_name(const std::string& name, bool folder) {
  const std::string text = PLT_is_utf8(name) ? PLT_latin1_from_utf8(name, '?') : name;
  return folder ? text + '/' : text;
}

void plot_list(const list_view& list, bool focused, const std::vector<std::string>& names,
               const std::vector<int>* types) {
  BTN_frame2(box_list, list.x, list.y, list.dx, list.dy, "");
  OGL_scissors(list.x + 2, list.y + 2, list.rows_right() - list.x - 2, list.dy - 4);
  const int end = std::min(list.count, *list.top + list.shown());
  for (int row = *list.top; row < end; ++row) {
    const float bottom = list.row_bottom(row), width = list.rows_right() - list.x - 2 * rim;
    if (row == *list.selected) {
      OGL_fillrect(col_mark, 1, list.x + rim, bottom, width, row_dy);
      if (focused) OGL_framerect(col_label, 1, list.x + rim, bottom, width, row_dy);
    }
    OGL_string(col_note, list.x + 2 * rim, bottom + 5,
               shown_name(names[static_cast<size_t>(row)], BTN_type_from_vector(row, types)),
               no_wrap);
  }
  OGL_scissors_end();
}

int take_list_click(const list_view& list, int id) {
  const int row = mnw.mouse_clicked ? list.row_at_mouse() : -1;
  if (row < 0) return list_nothing;
  const bool twice = last_click.id == id && last_click.row == row && mnw.mouse_clicks > 1;
  // A third click begins anew.
  last_click = {id, twice ? -1 : row};
  const int before = *list.selected;
  list.select(row);
  return twice ? list_chosen : *list.selected != before ? list_moved : list_nothing;
}

// What is typed on the list looks for a name; after a pause it begins anew.
void take_typed(const list_view& list, int ch, std::string* search,
                const std::vector<std::string>& names) {
  constexpr float pause = 1.0f;  // seconds
  if (xtim.now_sec - last_typed > pause) search->clear();
  last_typed = xtim.now_sec;
  *search += static_cast<char>(ch);
  if (const int row = BTN_list_match(names, *search); row >= 0) list.select(row);
}

int take_list_key(const list_view& list, const BTN_key& key, std::string* search,
                  const std::vector<std::string>& names) {
  const int selected = *list.selected, page = std::max(1, list.shown() - 1);
  switch (key.vkey) {
    case vk_up:
      list.select(selected - 1);
      break;
    case vk_down:
      list.select(selected + 1);
      break;
    case vk_prior:
      list.select(selected - page);
      break;
    case vk_next:
      list.select(selected + page);
      break;
    case vk_home:
      list.select(0);
      break;
    case vk_end:
      list.select(list.count - 1);
      break;
    case vk_return:
    case vk_enter:
      return selected >= 0 ? list_chosen : list_nothing;
    default:
      if (search && key.ch >= ' ') take_typed(list, key.ch, search, names);
      break;
  }
  return *list.selected != selected ? list_moved : list_nothing;
}

}  // namespace

int BTN_list_match(const std::vector<std::string>& names, const std::string& text) {
  if (text.empty()) return -1;
  for (size_t i = 0; i < names.size(); ++i) {
    if (strncasecmp(names[i].c_str(), text.c_str(), text.size()) == 0) return static_cast<int>(i);
  }
  return -1;
}

int BTN_list_and_search(int slider_index, float x, float y, float dx, float dy, int* top,
                        int* selected, int mode, std::string* search,
                        const std::vector<std::string>& names, const std::vector<int>* types) {
  constexpr int search_limit = 64, wheel_rows = 3;
  constexpr float label_dx = 50;
  static const std::vector<int> no_types;
  if (!ogl_inited) return list_nothing;
  const float below = search ? search_dy : 0;
  const list_view list = {x,   y + below, dx, dy - below, static_cast<int>(names.size()),
                          top, selected};
  list.keep_in_range();

  const int id = BTN_identity(x, y);
  const bool clicked = BTN_click_in(list.x, list.y, list.rows_right(), list.y + list.dy);
  const int accept =
      accept_moves | accept_return |
      (search ? accept_letters | accept_digits | accept_signs | accept_printable : 0);
  const int focused =
      BTN_register_queue(id, list_queue, accept, clicked || (mode && BTN_no_focus_yet()));

  int result = take_list_click(list, id);
  BTN_key key;
  for (int at = 0; BTN_take_key(list_queue, id, &at, &key);)
    result = std::max(result, take_list_key(list, key, search, names));
  BTN_scroll_wheel(x, list.y, dx, list.dy, wheel_rows, list.last_top(), top);

  plot_list(list, focused, names, types ? types : &no_types);
  BTN_scroll_bar(slider_index, x + dx, list.y, list.dy, list.last_top(), top);
  if (search && BTN_enter_text(x + label_dx, y + 4, search, search, search_limit,
                               "-" + UTL_translate_string("search"), dx - label_dx - 6, 0)) {
    if (const int row = BTN_list_match(names, *search); row >= 0 && row != *selected) {
      list.select(row);
      result = std::max<int>(result, list_moved);
    }
  }
  return result;
}
