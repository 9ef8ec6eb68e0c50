// Menus: the table, the file that fills it, the bar and the open menu on the screen.
//
// A popup list shows as many items as fit between its widget and the window's edge, and scrolls by
// the wheel. Main thread. Writes menu, the popup's codes, and mnw.popup_code.

#include "corekit/widgets/hl_mnw_menu.h"

#include <algorithm>
#include <cctype>
#include <iterator>

#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_app.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/hl_types.h"
#include "corekit/base/mnw.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/oglp_watch.h"
#include "corekit/files/io_utils_ouf.h"
#include "corekit/files/xmap.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/keys_codes.h"

std::vector<menu_record> menu;
int active_popup_code = 0;
int select_popup_code = 0;
int popup_menu_select = 0;

namespace {

constexpr float bar_dy = 18, title_rim = 10;
constexpr float item_dy = 14, item_rim = 8, text_rise = 6;
constexpr float no_wrap = 9999;
constexpr int accepted_versions[] = {900, 0};
constexpr const char* language_folders[] = {
    "menus/english/", "menus/french/",    "menus/german/", "menus/italian/",
    "menus/spanish/", "menus/portugese/", "menus/korean/",
};

int first_item = 0;          // of the open menu, the first one shown,
int lit_item = -1;           //   and the one that is picked next by a key, -1 none
float lit_x = 0, lit_y = 0;  // where the mouse was when it last lit one

bool is_separator(const menu_item& item) {
  return !item.text.empty() && (item.text[0] == '-' || item.text[0] == '=');
}

bool mouse_in(float left, float bottom, float right, float top) {
  return mnw.mouse_x >= left && mnw.mouse_x < right && mnw.mouse_y >= bottom && mnw.mouse_y < top;
}

bool is_open() {
  return mnw.popup_code >= 0 && mnw.popup_code < static_cast<int>(menu.size());
}

void open_menu(int slot) {
  mnw.popup_code = slot;
  first_item = 0;
  lit_item = -1;
  lit_x = mnw.mouse_x;
  lit_y = mnw.mouse_y;
  mnw.wheel = 0;
}

// The titles of the bar, from left to right.
void place_titles() {
  float x = title_rim;
  for (int slot = 0; slot < std::min<int>(popup_slot, static_cast<int>(menu.size())); ++slot) {
    menu_record& m = menu[slot];
    if (m.title.empty()) continue;
    m.left = x - title_rim / 2;
    m.right = x + static_cast<float>(OGL_string_width(m.title)) + title_rim / 2;
    m.bottom = mnw.win_dy - bar_dy;
    m.top = mnw.win_dy;
    x = m.right + title_rim;
  }
}

// The slot whose title is under the mouse, or -1.
int title_under_mouse() {
  if (mnw.win_id != win_main) return -1;
  place_titles();
  for (int slot = 0; slot < std::min<int>(popup_slot, static_cast<int>(menu.size())); ++slot) {
    const menu_record& m = menu[slot];
    if (!m.title.empty() && mouse_in(m.left, m.bottom, m.right, m.top)) return slot;
  }
  return -1;
}

// Where the open menu's items are: below the place that opens it if they fit there, else on the
// side with more room.
struct item_list {
  float left, bottom, right, top;
  int first, end;  // items shown
};
item_list place_items() {
  const menu_record& m = menu[mnw.popup_code];
  const int count = static_cast<int>(m.items.size());
  float widest = m.right - m.left;
  for (const menu_item& item : m.items)
    widest = std::max(widest, static_cast<float>(OGL_string_width(item.text)) + 2 * item_rim);
  const float window_left = -mnw.x_off, window_bottom = -mnw.y_off;
  const float window_right = window_left + static_cast<float>(mnw.pix_dx);
  const float window_top = window_bottom + static_cast<float>(mnw.pix_dy);

  const float below = m.bottom - window_bottom, above = window_top - m.top;
  const float wanted = static_cast<float>(count) * item_dy;
  const bool goes_down = wanted <= below || below >= above;
  const int room = std::max(1, static_cast<int>((goes_down ? below : above) / item_dy));

  item_list list;
  list.first = std::clamp(first_item, 0, std::max(0, count - room));
  list.end = std::min(count, list.first + room);
  const float dy = static_cast<float>(list.end - list.first) * item_dy;
  list.left = std::max(window_left, std::min(m.left, window_right - widest));
  list.right = list.left + widest;
  list.top = goes_down ? m.bottom : m.top + dy;
  list.bottom = list.top - dy;
  return list;
}

// The item under the mouse, or -1; separators count.
int item_under_mouse(const item_list& list) {
  if (!mouse_in(list.left, list.bottom, list.right, list.top)) return -1;
  const int row = static_cast<int>((list.top - mnw.mouse_y) / item_dy);
  return std::clamp(list.first + row, list.first, list.end - 1);
}

void plot_items(const item_list& list) {
  const menu_record& m = menu[mnw.popup_code];
  // A mouse that rests leaves the light to the keys.
  if (mnw.mouse_x != lit_x || mnw.mouse_y != lit_y) lit_item = item_under_mouse(list);
  lit_x = mnw.mouse_x;
  lit_y = mnw.mouse_y;
  const float dx = list.right - list.left;
  watch_cover();
  OGL_fillrect(col_menu_back, 1, list.left, list.bottom, dx, list.top - list.bottom);
  for (int i = list.first; i < list.end; ++i) {
    const float y = list.top - static_cast<float>(i - list.first + 1) * item_dy;
    if (is_separator(m.items[i])) {
      const float middle = y + item_dy / 2;
      OGL_line(col_menu_edge, 1, list.left + item_rim, middle, list.right - item_rim, middle);
      continue;
    }
    if (i == lit_item) OGL_fillrect(col_menu_lit, 1, list.left, y, dx, item_dy);
    OGL_string(col_label, list.left + item_rim, y + text_rise, m.items[i].text, no_wrap);
  }
  OGL_framerect(col_menu_edge, 1, list.left, list.bottom, dx, list.top - list.bottom);
}

void plot_bar() {
  place_titles();
  bool has_bar = false;
  for (int slot = 0; slot < std::min<int>(popup_slot, static_cast<int>(menu.size())); ++slot) {
    const menu_record& m = menu[slot];
    if (m.title.empty()) continue;
    if (!has_bar) OGL_fillrect(col_menu_back, 1, 0, mnw.win_dy - bar_dy, mnw.win_dx, bar_dy);
    has_bar = true;
    if (slot == mnw.popup_code) {
      OGL_fillrect(col_menu_lit, 1, m.left, m.bottom, m.right - m.left, bar_dy);
    }
    OGL_string(col_label, m.left + title_rim / 2, m.bottom + text_rise + 2, m.title, no_wrap);
  }
}

void pick(int item) {
  const int slot = mnw.popup_code;
  mnw.popup_code = -1;
  if (slot == popup_slot) {
    select_popup_code = active_popup_code;
    popup_menu_select = item;
  } else {
    APP.handle_menu(slot, menu[slot].items[item].number);
  }
}

// Lights the item, or the nearest one to it that is none of the separators, and shows it.
void light(int item) {
  const std::vector<menu_item>& items = menu[mnw.popup_code].items;
  const int last = static_cast<int>(items.size()) - 1;
  if (last < 0) return;
  item = std::clamp(item, 0, last);
  const int by = item >= lit_item ? 1 : -1;
  while (item > 0 && item < last && is_separator(items[item]))
    item += by;
  if (is_separator(items[item])) return;
  lit_item = item;
  const item_list list = place_items();
  if (item < list.first) first_item = item;
  if (item >= list.end) first_item = list.first + item - list.end + 1;
}

// The next item behind the lit one that begins with the letter; the lit one if there is none.
int item_with_letter(int ch) {
  const std::vector<menu_item>& items = menu[mnw.popup_code].items;
  const int count = static_cast<int>(items.size());
  for (int i = 1; i <= count; ++i) {
    const int item = (std::max(lit_item, -1) + i) % count;
    if (!items[item].text.empty() &&
        std::tolower(static_cast<unsigned char>(items[item].text[0])) == std::tolower(ch)) {
      return item;
    }
  }
  return lit_item;
}

// One line of a menu file: a number, blanks, a text. False for an empty line.
bool read_line(xmap_class& map, int* number, std::string* text) {
  const unsigned char* end = std::find_if(
      map.cursor, map.file_end, [](unsigned char c) { return c == '\n' || c == '\r' || c == 0; });
  std::string_view line(reinterpret_cast<const char*>(map.cursor),
                        static_cast<size_t>(end - map.cursor));
  map.cursor = end;
  if (map.cursor < map.file_end && *map.cursor == '\r') ++map.cursor;
  if (map.cursor < map.file_end && (*map.cursor == '\n' || *map.cursor == 0)) ++map.cursor;

  constexpr char blanks[] = " \t";
  line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
  if (line.empty()) return false;
  *number = str_to_int(line);
  line.remove_prefix(std::min(line.find_first_of(blanks), line.size()));
  line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
  *text = line;
  return true;
}

}  // namespace

// --- the table ----------------------------------------------------------------------------------

void MACIBM_clear_menus(int make_slots) {
  menu.clear();
  if (make_slots) menu.resize(menu_slots);
  mnw.popup_code = -1;
}

void MACIBM_create_menu(int slot, const std::string& title) {
  if (slot < 0 || slot >= menu_slots) return;
  if (slot >= static_cast<int>(menu.size())) menu.resize(static_cast<size_t>(slot) + 1);
  menu[slot] = menu_record();
  menu[slot].title = title;
}

void MACIBM_append_menu(int slot, int item, const std::string& text) {
  if (slot < 0 || slot >= static_cast<int>(menu.size())) return;
  menu[slot].items.push_back({item, text});
}

void MACIBM_read_menus(const std::string& folder, const std::string& file) {
  const int language =
      std::clamp(mnw.language, 0, static_cast<int>(std::size(language_folders)) - 1);
  const std::string path = folder + language_folders[language] + file;
  xmap_class map(path);
  if (!map.file_start || !map.check_file(ouf_text, accepted_versions, nullptr, nullptr)) {
    __MACIBM_alert(mnw.win_id, "Cannot open file!", path, "Trash this copy and re-install Skyvane.",
                   "", t_exit, at_menu_file);
    return;
  }
  bool in_menu = false;
  int slot = 0, number = 0;
  std::string text;
  // A group's first line begins with a number; a keyword may stand in front of the first group.
  const bool has_keyword = map.cursor < map.file_end && !std::isdigit(*map.cursor);
  if (has_keyword) map.TXT_str_scan_eoln(nullptr);
  while (map.cursor < map.file_end) {
    if (!read_line(map, &number, &text)) {
      in_menu = false;
    } else if (!in_menu) {
      in_menu = true;
      slot = number;
      MACIBM_create_menu(slot, text);
    } else {
      MACIBM_append_menu(slot, number, text);
    }
  }
}

void MACIBM_open_popup(int identity, int lit, float left, float bottom, float right, float top) {
  if (popup_slot >= static_cast<int>(menu.size())) return;
  menu_record& popup = menu[popup_slot];
  popup.left = left;
  popup.bottom = bottom;
  popup.right = right;
  popup.top = top;
  active_popup_code = identity;
  open_menu(popup_slot);
  if (lit >= 0) light(lit);
}

// --- a frame ------------------------------------------------------------------------------------

void standard_gui() {
  if (!ogl_inited) return;
  if (mnw.win_id == win_main) plot_bar();
  if (is_open() && !menu[mnw.popup_code].items.empty()) plot_items(place_items());
}

bool menu_follow_mouse() {
  if (!is_open()) return false;
  if (escape_hit) {
    mnw.popup_code = -1;
    escape_hit = 0;  // the dialog behind the menu stays
    return false;
  }
  if (mnw.wheel) {
    const int count = static_cast<int>(menu[mnw.popup_code].items.size());
    first_item = std::clamp(place_items().first - mnw.wheel, 0, std::max(0, count - 1));
    mnw.wheel = 0;
  }
  if (mnw.popup_code == popup_slot) return false;
  const int under = title_under_mouse();
  return under >= 0 && under != mnw.popup_code;
}

int menu_take_press() {
  const int title = title_under_mouse();
  if (title >= 0) {
    if (title == mnw.popup_code) {
      mnw.popup_code = -1;
    } else {
      open_menu(title);
    }
    return 1;
  }
  if (!is_open()) return 0;
  const menu_record& open = menu[mnw.popup_code];
  const int item = open.items.empty() ? -1 : item_under_mouse(place_items());
  if (item < 0) {
    mnw.popup_code = -1;  // a press elsewhere closes it, and does no more
  } else if (!is_separator(open.items[item])) {
    pick(item);
  }
  return 1;
}

int menu_take_key(int ch, int vkey, int flags) {
  if (!is_open() || (flags & key_up)) return 0;
  const int count = static_cast<int>(menu[mnw.popup_code].items.size());
  const bool again = !(flags & key_down);  // a key that is held moves the light, and does no more
  const item_list list = place_items();
  const int page = std::max(1, list.end - list.first - 1);
  switch (vkey) {
    case vk_up:
      light(std::max(lit_item - 1, 0));
      break;
    case vk_down:
      light(lit_item + 1);
      break;
    case vk_prior:
      light(lit_item - page);
      break;
    case vk_next:
      light(lit_item + page);
      break;
    case vk_home:
      light(0);
      break;
    case vk_end:
      light(count - 1);
      break;
    case vk_return:
    case vk_enter:
    case vk_space:
      if (!again && lit_item >= 0) pick(lit_item);
      break;
    case vk_escape:
    case vk_tab:
      if (!again) mnw.popup_code = -1;
      break;
    default:
      if (ch > ' ' && count > 0) light(item_with_letter(ch));
  }
  return 1;
}
