// Widgets. Immediate mode: a widget is a function that is called once a frame, draws itself, reads
// the frame's mouse and keys from mnw, and returns what happened in that same call. Without a
// window (ogl_inited 0) a widget draws nothing and reports no hit.
//
// Positions are units of the current dialog, origin at its lower left. A label may hold three
// texts, "left|right{?help" (see BTN_expand_label). A widget reacts to the mouse only while no menu
// is open (mnw.popup_code -1). A wrong frame type is a fatal alert from "OOPS_cpp/butn". Main
// thread only.
#pragma once

#include <string>
#include <vector>

// Texts that widgets and the window layer hand each other.
struct stls_record {
  std::string window_title;  // of the current dialog; set by MACIBM_startwind, drawn by BTN_fillwin
  std::string hover_help;    // of the widget under the mouse; set by it, shown and then cleared by
                             //   the window layer once a frame
};
extern stls_record stls;

// --- keyboard focus ----------------------------------------------------------------------------

// Which keys a widget wants; a key that it does not want falls through to the key bindings.
enum focus_accept : int {
  accept_tab = 1,  // without it Tab moves along the ring
  accept_return = 2,
  accept_delete = 4,  // and backspace
  accept_escape = 8,
  accept_moves = 16,  // vkeys 33 to 40: page keys, Home, End, arrows
  accept_letters = 32,
  accept_digits = 64,
  accept_signs = 128,      // + and -
  accept_printable = 256,  // any other character with a picture
  accept_nonprintable = 512,
};

// Modifier flags of a key. A key up is not for widgets: what drains a queue discards it.
enum key_flag : int { key_shift = 1, key_option = 2, key_control = 4, key_down = 8, key_up = 16 };

struct focus_info_t {
  int id;        // the widget's identity
  int* chars;    // the widget family's queues: character,
  int* vkeys;    //   virtual key,
  int* flags;    //   modifier flags,
  int* ids;      //   and identity of the widget that the key was for
  int* count;    // keys queued
  int capacity;  // of the queues; always 64
  int accept;    // which keys the widget wants, of focus_accept
};
extern std::vector<focus_info_t> focus_ring;  // this frame's focusable widgets, in drawing order
extern int focus_id;                          // identity of the focused widget; 0 none
extern int wind_focus;                        // 1 when a page has claimed the keyboard for itself

// The queues of one widget family. All its widgets share them: only one has the focus at a time.
inline constexpr int key_queue_size = 64;
struct BTN_key_queue {
  int chars[key_queue_size] = {}, vkeys[key_queue_size] = {}, flags[key_queue_size] = {};
  int ids[key_queue_size] = {};
  int count = 0;
};
struct BTN_key {
  int ch, vkey, flags;
};

// Empties the ring, and forgets that a page claimed the keyboard. Once a frame, before the page.
void BTN_begin_focus_ring();
// Appends a widget to the ring; with `take_focus` gives it the focus. 1 if it has the focus.
int BTN_register_focus(int id, int* chars, int* vkeys, int* flags, int* ids, int* count,
                       int capacity, int accept, int take_focus);
int BTN_register_queue(int id, BTN_key_queue& queue, int accept, int take_focus);  // the same
// Routes one key: to the focused widget's queue, or along the ring. 1 when it was used. The ring is
// the one of the frame before, and the widget finds the key when it is drawn in this frame.
int BTN_dispatch_to_focus(int ch, int vkey, int flags);
// Takes the next key for widget `id` out of the queue: start with *at 0, call until it returns 0.
// A key for another widget of the family stays until that one is drawn.
int BTN_take_key(BTN_key_queue& queue, int id, int* at, BTN_key* key);
void BTN_focus_any();         // focus to the first of the ring, or to none
void BTN_unfocus_any();       // at every change of window
void BTN_window_has_focus();  // the page claims the keyboard
int BTN_no_focus_yet();       // 1 when neither a page nor a widget has it

// --- what is pressed ---------------------------------------------------------------------------

// What mouse and keyboard do to a widget in this frame.
struct BTN_press {
  int hit;      // it was clicked, or Space pressed on it
  int under;    // the mouse is on it
  int focused;  // it has the keyboard: draw BTN_plot_focus behind what it draws
};
// The one call that puts a widget which is pressed into the ring, at its place in the order of
// drawing, which is the order of reading. `id` must be the same in every frame.
BTN_press BTN_pressable(int id, float left, float bottom, float right, float top);
// The frame round what has the focus.
void BTN_plot_focus(float left, float bottom, float right, float top);

// --- labels and the mouse ----------------------------------------------------------------------

// A widget's identity, where one is needed, is its position; one that moves becomes another.
int BTN_identity(float x, float y);
// Splits "left|right{?help" at its last "|" and its last "{"; the "{" and the one character behind
// it are dropped. Parts that are not there come out empty.
void BTN_expand_label(const std::string& label, std::string* left, std::string* right,
                      std::string* help);
// Draws a label that ends at x (`side` 0), is centred on it (1) or starts there (2). For 0 and 2 a
// text over 12 characters goes on two lines, broken nearest to its middle; a leading "-" is dropped
// and forbids that.
void BTN_util_draw_label(float x, float y, int side, const std::string& text, int active);
// How far a label of `side` 0 or 2 reaches from its x; units.
float BTN_label_width(const std::string& text);
// A text in a box of its own, centred on x, with a label at either side.
void OGL_boxed_string(float x, float y, const std::string& label, const std::string& s, int charset,
                      int col);
// Whether the mouse is in a rectangle given by its sides, edges included; and whether it was
// pressed there in this frame. 0 while a menu is open.
int BTN_mouse_in(float left, float bottom, float right, float top);
int BTN_click_in(float left, float bottom, float right, float top);

// --- frames ------------------------------------------------------------------------------------

// The types, by painter. A wrong one is a fatal alert.
enum frame_type : int {
  strip_plain = 0,
  strip_bottom = 1,  // across the foot of a window
  strip_button_up = 2,
  strip_button_down = 3,
  strip_trough = 4,  // of a progress bar, and what fills it
  strip_fill = 5,
  bar_scroll = 6,
  strip_track = 7,  // of a level control, and its level
  strip_level = 8,
  strip_value = 9,  // behind what is edited
  strip_list = 10,  // a popup list
  box_dialog = 11,  // of a whole dialog, with close boxes
  box_window = 12,  // of a whole window, without
  box_group = 13,   // of widgets that belong together
  box_panel = 14,   // of texts
  box_dark = 15,
  box_list = 16,
  box_corners = 17,  // has corners of its own size
  box_help = 18,     // a tooltip
  box_small = 19,
  box_page = 20,  // the wizard's, in the elements image
};
// What BTN_fillwin adds, besides a type of box.
enum inner_type : int { inner_bar = 1, inner_none = 21 };

// A vertical bar centred on (x, y), both whole numbers; `type` bar_scroll.
void BTN_frame0(int type, float x, float y, float length);
// A horizontal strip centred on (x, y); `type` a strip_.
void BTN_frame1(int type, float x, float y, float width, int col);
// A box with its shadow outside (x, y), (dx, dy), and a title; `type` a box_. 1 when the left
// close box of a box_dialog was clicked.
int BTN_frame2(int type, float x, float y, float dx, float dy, const std::string& title);
// The panel of the whole window. `inner` is an inner_type, or the type of an inner box.
void BTN_fillwin(int titled, int inner);
// A panel that fills the space left: a negative x or y is the rim, a negative dx or dy what
// remains. next_x, next_y (may be null) is where the next panel can begin.
void BTN_subwin(float title_dy, int type, float x, float y, float dx, float dy,
                const std::string& title, float* next_x, float* next_y);
// The two close boxes of a dialog, pressed unless `state` is 0; 1 when either was clicked.
int BTN_zap_boxes(int state);
// The rectangle of the interface image round pixel (s, t), centred on (x, y).
void BTN_util_element(float x, float y, float s, float t, float half_dx, float half_dy, int col);

// --- actions; 1 in the frame in which they were operated ---------------------------------------

// A push button; a dx of 0 or less is as wide as the label asks. `on` draws it pressed, `mode` 0 is
// a plain button, others show the press at once, 2 lights the label of one that is on. `note`
// stands beside it.
int BTN_action(float x, float y, float dx, int on, int mode, const std::string& label,
               const std::string& note);
// The button that a page or dialog is for, which is the bright one: as BTN_action with mode 1. In a
// dialog it is the one that Return presses, which is the caller's to do.
int BTN_main_action(float x, float y, float dx, const std::string& label);
int BTN_bool(float x, float y, int* value, const std::string& label, int radio);
// A radio button: on while *value is my_value, which a click makes it.
int BTN_is_int(float x, float y, int* value, int my_value, const std::string& label);
// A tab of a strip, by column and by row from the top.
int BTN_tab(int column, int row, int* value, int my_value, const std::string& label);
int BTN_xbol(float x, float y, bool* value, const std::string& label);
int BTN_xchr(float x, float y, char* value, const std::string& label);
int BTN_xbyt(float x, float y, unsigned char* value, const std::string& label);
// The i-th element of a list; 0 or empty for one that is not there.
int BTN_type_from_vector(int i, const std::vector<int>* v);
std::string BTN_name_from_vector(int i, const std::vector<std::string>* v);

// --- text entry; non-zero in a frame with an edit ----------------------------------------------

// A field that shows and edits `text`, up to max_length bytes. It takes the keyboard by a click, by
// Tab, or with `auto_focus` when nothing has it; see butn_text.cpp for what mouse and keys do
// there.
int BTN_enterstring(float x, float y, std::string* text, int max_length, const std::string& label,
                    float dx, int auto_focus);
