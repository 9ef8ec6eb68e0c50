// The text field: a box that shows one line, and an editor for the field that has the focus.
//
//   focus comes by          selection
//   a click on the field    a caret at the click
//   Tab, or by itself       all of the text
//
//   in the focused field    selection
//   a click, a drag         a caret; to where the mouse is
//   with Shift              its end moves to the click
//   a double click, a drag  the word there, and all of the text where there is none; by words
//   a third click           all of the text
//
// Keys beside those of the editor, as every desktop has them: Home, End; Control with left and
// right by words, with Backspace and Delete a word; Delete; Control with A, C, X, V, or Insert and
// Delete with Shift and Control, for selection and clipboard.
//
// Main thread. Writes the caller's text, stls (hover help), mnw.cursor_mode and the clipboard.

#include "corekit/widgets/butn_text.h"

#include <algorithm>
#include <cstring>

#include "corekit/Platform/PLT_clipboard.h"
#include "corekit/Platform/PLT_text.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/mnw.h"
#include "corekit/draw/oglp.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_draw.h"
#include "corekit/widgets/butn_value.h"
#include "corekit/widgets/keys.h"

OGLE_Rec* BTN_enterstring_ogle = nullptr;
int BTN_enterstring_focused_field_id = 0;

namespace {

constexpr float no_wrap = 9999;
constexpr int accept_keys =
    accept_delete | accept_moves | accept_letters | accept_digits | accept_signs | accept_printable;

BTN_key_queue queue;
const void* focused_text = nullptr;  // the variable of the focused field; tells apart two fields
                                     //   that pages draw at one place

struct text_range {
  int start, end;
};

// The press that the mouse is still held from.
struct held_press {
  int field = 0;               // identity of the field that it was on; 0 none
  bool by_words = false;       // a drag extends by whole words
  text_range anchor = {0, 0};  //   from what the press has selected,
  bool at_rest = false;        //   once the mouse has left
  float x = 0;                 //   its place
};
held_press press;

// --- parts of the text ---------------------------------------------------------------------------

text_range selection() {
  text_range range;
  OGLE_GetSelection(BTN_enterstring_ogle, &range.start, &range.end);
  return range;
}

int text_size() {
  return static_cast<int>(OGLE_input->size());
}

std::string selected_text() {
  const text_range range = selection();
  return OGLE_input->substr(static_cast<size_t>(range.start),
                            static_cast<size_t>(range.end - range.start));
}

int active_end() {
  const text_range range = selection();
  return BTN_enterstring_ogle->end_is_active ? range.end : range.start;
}

// Words end at blanks and at the parts of a path.
bool in_word(int position) {
  const char c = (*OGLE_input)[static_cast<size_t>(position)];
  return c != ' ' && c != '/';
}

int word_before(int position) {
  while (position > 0 && !in_word(position - 1))
    --position;
  while (position > 0 && in_word(position - 1))
    --position;
  return position;
}

int word_behind(int position) {
  while (position < text_size() && !in_word(position))
    ++position;
  while (position < text_size() && in_word(position))
    ++position;
  return position;
}

// The word that holds the byte before `position`, as that is the one a click there has hit; empty
// where that is no part of a word.
text_range word_at(int position) {
  const int byte = std::max(position - 1, 0);
  if (byte >= text_size() || !in_word(byte)) return {position, position};
  return {word_before(byte + 1), word_behind(byte)};
}

// --- actions -------------------------------------------------------------------------------------

void move_to(int position, bool extend) {
  OGLE_Rec* rec = BTN_enterstring_ogle;
  text_range range = selection();
  if (!extend) {
    range = {position, position};
  } else if (rec->end_is_active) {
    range.end = position;
  } else {
    range.start = position;
  }
  rec->caret_column = -1;
  OGLE_SetSelection(rec, range.start, range.end);
  OGLE_RevealSelection(rec);
}

// Deletes what is selected, or else from the caret to `other`.
void erase_to(int other) {
  const text_range range = selection();
  if (range.start == range.end) {
    if (other == range.start) return;
    OGLE_SetSelection(BTN_enterstring_ogle, std::min(other, range.start),
                      std::max(other, range.start));
  }
  OGLE_Key(BTN_enterstring_ogle, ch_back, 0);
}

void copy() {
  const std::string text = selected_text();
  if (!text.empty()) PLT_clipboard_put(PLT_utf8_from_latin1(text));
}

void cut() {
  // What could not be put on the clipboard stays in the field.
  const std::string text = selected_text();
  if (!text.empty() && PLT_clipboard_put(PLT_utf8_from_latin1(text))) erase_to(selection().start);
}

// A field is one line: breaks and tabs between words become blanks, those around the text and all
// other control characters go.
std::string one_line(const std::string& text) {
  std::string line;
  for (const char c : text) {
    if (c == '\n' || c == '\r' || c == '\t') {
      if (!line.empty() && line.back() != ' ') line += ' ';
    } else if (static_cast<unsigned char>(c) >= ' ' && c != ch_delete) {
      line += c;
    }
  }
  const bool ends_in_blank = !line.empty() && line.back() == ' ';
  if (ends_in_blank && static_cast<unsigned char>(text.back()) < ' ') line.pop_back();
  return line;
}

int room(int max_length) {
  const text_range range = selection();
  return std::max(0, max_length - (text_size() - (range.end - range.start)));
}

void paste(int max_length) {
  std::string text = one_line(PLT_latin1_from_utf8(PLT_clipboard_text(), '?'));
  text.resize(std::min(text.size(), static_cast<size_t>(room(max_length))));
  if (text.empty()) return;
  erase_to(selection().start);
  const int caret = selection().start;
  OGLE_ReplaceText(BTN_enterstring_ogle, caret, caret, text.data(), text.data() + text.size());
  OGLE_RevealSelection(BTN_enterstring_ogle);
}

// --- keys ----------------------------------------------------------------------------------------

enum shortcut { no_shortcut, shortcut_all, shortcut_copy, shortcut_cut, shortcut_paste };

shortcut shortcut_of(int vkey, int flags) {
  const int modifiers = flags & (key_shift | key_option | key_control);
  constexpr struct {
    int vkey, modifiers;
    shortcut means;
  } rows[] = {
      {vk_a, key_control, shortcut_all},       {vk_c, key_control, shortcut_copy},
      {vk_insert, key_control, shortcut_copy}, {vk_x, key_control, shortcut_cut},
      {vk_delete, key_shift, shortcut_cut},    {vk_v, key_control, shortcut_paste},
      {vk_insert, key_shift, shortcut_paste},
  };
  for (const auto& row : rows) {
    if (row.vkey == vkey && row.modifiers == modifiers) return row.means;
  }
  return no_shortcut;
}

// True if the key is one of the shortcuts.
bool take_shortcut(const BTN_key& key, int max_length) {
  switch (shortcut_of(key.vkey, key.flags)) {
    case shortcut_all:
      OGLE_SetSelection(BTN_enterstring_ogle, 0, text_size());
      return true;
    case shortcut_copy:
      copy();
      return true;
    case shortcut_cut:
      cut();
      return true;
    case shortcut_paste:
      paste(max_length);
      return true;
    default:
      return false;
  }
}

// True if the key is one that moves or deletes beyond what the editor knows.
bool take_field_key(const BTN_key& key) {
  const bool shift = key.flags & key_shift, control = key.flags & key_control;
  switch (key.vkey) {
    case vk_home:
      move_to(0, shift);
      return true;
    case vk_end:
      move_to(text_size(), shift);
      return true;
    case vk_left:
      if (control) move_to(word_before(active_end()), shift);
      return control;
    case vk_right:
      if (control) move_to(word_behind(active_end()), shift);
      return control;
    case vk_back:
      if (control) erase_to(word_before(selection().start));
      return control;
    case vk_delete:
      erase_to(control ? word_behind(selection().end) : std::min(selection().end + 1, text_size()));
      return true;
    default:
      return false;
  }
}

void take_key(const BTN_key& key, int max_length) {
  if (take_shortcut(key, max_length) || take_field_key(key)) return;
  const bool edits = key.ch == ch_back || (key.ch >= ch_left && key.ch <= ch_down);
  const bool types = key.ch >= ' ' && key.ch != ch_delete;
  // A full field takes no more: it must not lose at its end what comes in at the caret.
  if (types && room(max_length) < 1) return;
  if (edits || types) OGLE_Key(BTN_enterstring_ogle, key.ch, key.flags & key_shift);
}

// --- focus ---------------------------------------------------------------------------------------

// Turns the editor to the field that has just got the focus.
void begin_field(int id, const void* owner, bool by_mouse) {
  if (!BTN_enterstring_ogle) BTN_enterstring_ogle = OGLE_Create(OGLE_cbs, nullptr);
  BTN_enterstring_focused_field_id = id;
  focused_text = owner;
  OGLE_dx = OGLE_dy = 0;
  BTN_enterstring_ogle->end_is_active = 1;
  BTN_enterstring_ogle->caret_column = -1;
  OGLE_Repaginate(BTN_enterstring_ogle);
  if (!by_mouse) OGLE_SetSelection(BTN_enterstring_ogle, 0, text_size());
}

void take_press(int id, bool extend) {
  OGLE_Rec* rec = BTN_enterstring_ogle;
  OGLE_Click(rec, mnw.mouse_x, mnw.mouse_y, extend);
  const text_range word = word_at(active_end());
  const bool whole = mnw.mouse_clicks > 2 || word.start == word.end;
  press = {id, !extend && mnw.mouse_clicks > 1, whole ? text_range{0, text_size()} : word, true,
           mnw.mouse_x};
  if (press.by_words) OGLE_SetSelection(rec, press.anchor.start, press.anchor.end);
}

void drag() {
  OGLE_Rec* rec = BTN_enterstring_ogle;
  // A word at the field's edge must not scroll, and so draw in the next one, under a hand at rest.
  press.at_rest = press.at_rest && mnw.mouse_x == press.x;
  if (press.by_words && press.at_rest) return;
  OGLE_Drag(rec, mnw.mouse_x, mnw.mouse_y);
  if (!press.by_words) return;
  const text_range word = word_at(active_end());
  rec->end_is_active = word.start >= press.anchor.start;
  OGLE_SetSelection(rec, std::min(word.start, press.anchor.start),
                    std::max(word.end, press.anchor.end));
}

void take_mouse(int id, bool clicked, bool extend) {
  if (clicked) {
    take_press(id, extend);
  } else if (press.field == id && mnw.mouse_held && mnw.popup_code == -1) {
    drag();
  }
  if (!mnw.mouse_held && !clicked) press.field = 0;
}

// The focused field's frame; sets OGLE_edit.
void edit_field(int id, const void* owner, std::string* text, int max_length, bool clicked) {
  OGLE_input = text;
  const bool anew = BTN_enterstring_focused_field_id != id || focused_text != owner;
  if (anew) begin_field(id, owner, clicked);
  // The caller may have changed its text since the last frame.
  OGLE_Rec* rec = BTN_enterstring_ogle;
  OGLE_Repaginate(rec);
  OGLE_SetSelection(rec, rec->sel_start, rec->sel_end);
  // A field that had no selection has none to extend.
  take_mouse(id, clicked, mnw.mouse_shift && !anew);
  BTN_key key;
  for (int at = 0; BTN_take_key(queue, id, &at, &key);)
    take_key(key, max_length);
  if (OGLE_edit && text_size() > max_length) {
    text->resize(static_cast<size_t>(max_length));
    OGLE_Repaginate(rec);
    OGLE_SetSelection(rec, rec->sel_start, rec->sel_end);
  }
}

}  // namespace

int BTN_enter_text(float x, float y, std::string* text, const void* owner, int max_length,
                   const std::string& label, float dx, int auto_focus) {
  if (!ogl_inited) return 0;
  std::string left, right, help;
  BTN_expand_label(label, &left, &right, &help);
  BTN_hover(x, y, x + dx, y + 8, help);
  if (BTN_mouse_in(x, y, x + dx, y + 8)) mnw.cursor_mode = cursor_text;

  const int id = BTN_identity(x, y);
  const bool clicked = BTN_click_in(x, y, x + dx, y + 8);
  const bool take_focus = clicked || (auto_focus && BTN_no_focus_yet());
  // Focus that comes anew, as in a window that is opened again, selects anew.
  if (focus_id != id && BTN_enterstring_focused_field_id == id) {
    BTN_enterstring_focused_field_id = 0;
  }
  const int focused = BTN_register_queue(id, queue, accept_keys, take_focus);
  OGLE_edit = 0;
  if (focused) {
    OGLE_x = x;
    OGLE_y = y;
    OGLE_entry_dx = dx;
    edit_field(id, owner, text, std::max(max_length, 0), clicked);
  }

  BTN_frame1(strip_value, x + dx / 2 - 2, y + 3, dx + 10, col_as_is);
  BTN_util_draw_label(x - 12, y, 0, left, 0);
  BTN_util_draw_label(x + dx + 6, y, 2, right, 0);
  // The caret's line is 11 high, and the text keeps to it.
  OGL_scissors(x - 1, y - 3, dx + 2, 11);
  if (focused) {
    OGLE_Draw(BTN_enterstring_ogle, 1);
  } else {
    OGL_string(col_note, x, y, *text, no_wrap);
  }
  OGL_scissors_end();
  OGLE_input = nullptr;
  return OGLE_edit;
}

int BTN_enterstring(float x, float y, std::string* text, int max_length, const std::string& label,
                    float dx, int auto_focus) {
  return BTN_enter_text(x, y, text, text, max_length, label, dx, auto_focus);
}

int BTN_enterstring(float x, float y, char* text, int max_length, const std::string& label,
                    float dx, int auto_focus) {
  const size_t capacity = max_length > 0 ? static_cast<size_t>(max_length) : 0;
  const size_t length = strnlen(text, capacity);
  if (length == capacity) {
    __MACIBM_alert(mnw.win_id, "String too long!", "", "", "", t_exit, at_entry_too_long);
    return 0;
  }
  std::string as_string(text, length);
  const int edit = BTN_enter_text(x, y, &as_string, text, max_length - 1, label, dx, auto_focus);
  if (edit) std::memcpy(text, as_string.c_str(), as_string.size() + 1);
  return edit;
}

int BTN_text_shortcut(int vkey, int flags) {
  if (focus_id == 0 || focus_id != BTN_enterstring_focused_field_id || (flags & key_up)) return 0;
  if (shortcut_of(vkey, flags) == no_shortcut || queue.count >= key_queue_size) return 0;
  const auto has_focus = [](const focus_info_t& ring) { return ring.id == focus_id; };
  if (std::none_of(focus_ring.begin(), focus_ring.end(), has_focus)) return 0;
  // Behind what has been typed before it in this frame.
  const int at = queue.count++;
  queue.chars[at] = 0;
  queue.vkeys[at] = vkey;
  queue.flags[at] = flags;
  queue.ids[at] = focus_id;
  return 1;
}
