// Menus: the bar at the top of the main window, and the popup that a list widget opens. The wizard
// has no bar, since it reads no menu file; the popup is the toolkit's.
//
// Main thread only.
#pragma once

#include <string>
#include <vector>

inline constexpr int menu_slots = 1520;
inline constexpr int popup_slot = 1519;  // the last one: the popup, which has no title in the bar

struct menu_item {
  int number;        // what the application knows it by
  std::string text;  // a text that begins "-" or "=" is a separator
};

struct menu_record {
  std::string title;
  std::vector<menu_item> items;
  // Where a press opens it: its title in the bar, or the popup's widget. Units of the current
  // window; empty when left equals right.
  float left = 0, bottom = 0, right = 0, top = 0;
};
extern std::vector<menu_record> menu;  // by slot; mnw.popup_code is the slot that is open

// Empties all menus; with `make_slots` there are menu_slots empty ones afterwards, otherwise none.
void MACIBM_clear_menus(int make_slots);
void MACIBM_create_menu(int slot, const std::string& title);  // empties the slot first
void MACIBM_append_menu(int slot, int item, const std::string& text);

// Reads the menus from `file` in the folder of mnw's language below `folder`: after the common
// header, with a keyword or without, groups of lines, each a number, blanks and a text. The first
// line of a group is a menu, the others are its items; an empty line ends it. A file that cannot be
// read is a fatal alert.
void MACIBM_read_menus(const std::string& folder, const std::string& file);

// Opens the popup under (or, where there is no room, over) the rectangle of the widget `identity`.
// Its items have been appended to popup_slot; the one at `lit` is where the arrow keys begin.
void MACIBM_open_popup(int identity, int lit, float left, float bottom, float right, float top);
extern int active_popup_code;  // identity of the widget whose popup is open, or was last
extern int select_popup_code;  // identity of the widget for which an item was picked; it clears it
extern int popup_menu_select;  // the index of that item

// Draws the bar, if any menu has a title, and the open menu. Once a frame, after all else.
void standard_gui();

// For the frame: whether the open menu is to follow the mouse to another title of the bar, as by a
// press there. And for a press: 1 when a menu has taken it, so that nothing below may.
bool menu_follow_mouse();
int menu_take_press();

// For a key that goes down or repeats: 1 when a menu is open, which takes them all. Arrows, Home,
// End, page keys and a first letter light an item, Return and Space pick it, Escape and Tab close.
int menu_take_key(int ch, int vkey, int flags);
