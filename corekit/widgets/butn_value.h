// Widgets that edit a caller's variable in place: numbers, characters, text, choices, sliders; and
// the list and file dialogs made of them. As in butn.h a widget is called once a frame, draws,
// takes the frame's mouse and keys, and returns non-zero in a frame in which the value changed or
// the user is at work on it. Without a window it does nothing and returns 0.
//
// Main thread only.
#pragma once

#include <string>
#include <vector>

// --- numbers -------------------------------------------------------------------------------------
// Digits in cells 10 units wide, `decimals` of them behind the point. Arrows above and below each
// cell step it; a click on a cell, or Tab, takes the keyboard: digits overwrite, left and right
// move the cursor, up and down step, "+" and "-" set the sign. Each frame the value is clamped and
// then rounded to its decimals, so that one out of range is corrected just by showing it.
int BTN_flt_range(float x, float y, float* value, int digits, int decimals, float low, float high,
                  const std::string& label);
// Limits from the digit count.
int BTN_flt(float x, float y, float* value, int digits, int decimals, int allow_negative,
            const std::string& label);
int BTN_int(float x, float y, int* value, int digits, int allow_negative, const std::string& label);
int BTN_int_range(float x, float y, int* value, int digits, float low, float high,
                  const std::string& label);
// Works on a float, and so with its precision; written back only when it changed.
int BTN_dob_range(float x, float y, double* value, int digits, int decimals, float low, float high,
                  const std::string& label);
// By place in a grid of 75 by 50 units.
int BTN_fltij(float i, float j, float* value, int digits, int decimals, int allow_negative,
              const std::string& label);
int BTN_flt_rangeij(float i, float j, float* value, int digits, int decimals, float low, float high,
                    const std::string& label);
void BTN_display_number(float x, float y, float value, int digits, int decimals,
                        const std::string& label);
// Two numbers in degrees, labelled "lat:" and "lon:", beside each other from (x, y).
int enter_lat_lon(float* lat, float* lon, float x, float y, int decimals);

// --- characters and text -------------------------------------------------------------------------
// A wheel for each of `length` characters: blank, digits, capital letters, "-". `text` need not end
// in NUL.
int BTN_chars(float x, float y, char* text, int length, const std::string& label);
// The text field of butn.h on a buffer of `max_length` bytes, NUL included. Fatal alert if what is
// in it does not end there.
int BTN_enterstring(float x, float y, char* text, int max_length, const std::string& label,
                    float dx, int auto_focus);

// Offers a key that the focused widget has refused to the text field, if that is what has the
// focus: 1 if it is one of the field's own (copy, cut, paste, select all). For the key handler.
int BTN_text_shortcut(int vkey, int flags);

// --- choices and sliders -------------------------------------------------------------------------
// A popup list. Each item starts with "|"; one that begins "-" is a separator, and counts. A text
// without any "|" is taken as items joined by "-". *value is the index of the item shown. The box
// begins at x and is as wide as its widest item asks.
int BTN_textlist(float x, float y, int* value, const std::string& items, const std::string& label);

// A scroll bar, `low` at its top; y_low + y_high must be even. `index` 0 to 3 tells bars of one
// window apart. Returns 1 while the thumb is dragged.
int BTN_vert_slider(int index, float x, float y_low, float y_high, int low, int high, int* value);
// A level control. `col` colours the filled part; 12 leaves it out. Returns 1 while dragged, or
// when an arrow, a page key, Home or End has moved it.
int BTN_horz_slider(float x, float y, float dx, int col, float low, float high, float* value,
                    int enabled, const std::string& label, const std::string& tip);

// --- what scrolls --------------------------------------------------------------------------------
// Shows that `count` rows are scrolled in the rectangle, `shown` at once, *top the first: a bar at
// its right side, the wheel, and while it has the focus the arrows and page keys. Keeps *top in
// range. Nothing is drawn, and nothing is in the ring, while all rows are shown. `slider_index` is
// that of BTN_vert_slider.
void BTN_scroll_area(int slider_index, float x, float y, float dx, float dy, int count, int shown,
                     int* top);
// The two parts of it, for what takes keys of its own: the bar left of `right`; and the wheel, by
// so many rows a notch, 1 if it was turned there.
inline constexpr float scroll_bar_dx = 24;
void BTN_scroll_bar(int slider_index, float right, float y, float dy, int last_top, int* top);
int BTN_scroll_wheel(float x, float y, float dx, float dy, int rows, int last_top, int* top);

// --- lists ---------------------------------------------------------------------------------------
enum list_result : int {
  list_nothing = 0,
  list_moved = 1,   // the selection changed
  list_chosen = 2,  // the selected row was double clicked, or Return pressed on it
};
// Rows of names (`types` beside them: 1 is a folder; may be null) with a scroll bar, and, unless
// `search` is null, a search field below: while its text changes the first name that begins with it
// is selected. *top is the first row shown, *selected the selected one or -1; both are kept in
// range. `mode` 1 gives the list the keyboard when nothing has it.
int BTN_list_and_search(int slider_index, float x, float y, float dx, float dy, int* top,
                        int* selected, int mode, std::string* search,
                        const std::vector<std::string>& names, const std::vector<int>* types);
// Index of the first name that begins with `text`, whatever the case; -1 if none does.
int BTN_list_match(const std::vector<std::string>& names, const std::string& text);
