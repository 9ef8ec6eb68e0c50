// Widgets. Immediate mode: a widget is a function that is called once a frame, draws itself, reads
// the frame's mouse and keys from mnw, and returns what happened in that same call. Without a
// window (ogl_inited 0) a widget draws nothing and reports no hit.
//
// Positions are units of the current dialog, origin at its lower left. A label may hold three
// texts, "left|right{?help" (see BTN_expand_label). Main thread only.
#pragma once

#include <string>
#include <vector>

// --- keyboard focus
// --------------------------------------------------------------------------------
struct focus_info_t {
  int id;        // the widget's identity
  int* chars;    // the widget family's queues: character,
  int* vkeys;    //   virtual key,
  int* flags;    //   modifier flags,
  int* ids;      //   and identity of the widget that the key was for
  int* count;    // keys queued
  int capacity;  // of the queues; always 64
  int accept;    // which keys the widget wants
};
extern std::vector<focus_info_t> focus_ring;  // this frame's focusable widgets, in drawing order
extern int focus_id;                          // identity of the focused widget; 0 none

void BTN_begin_focus_ring();
int BTN_register_focus(int id, int* chars, int* vkeys, int* flags, int* ids, int* count,
                       int capacity, int accept, int take_focus);
int BTN_dispatch_to_focus(int ch, int vkey, int flags);
void BTN_focus_any();
void BTN_unfocus_any();
void BTN_window_has_focus();
int BTN_no_focus_yet();

// --- labels
// ----------------------------------------------------------------------------------------
void BTN_expand_label(const std::string& label, std::string* left, std::string* right,
                      std::string* help);
void BTN_util_draw_label(float x, float y, int side, const std::string& text, int active);

// --- frames
// ----------------------------------------------------------------------------------------
void BTN_frame0(int type, float x, float y, float length);
void BTN_frame1(int type, float x, float y, float width, int col);
int BTN_frame2(int type, float x, float y, float dx, float dy, const std::string& title);
void BTN_fillwin(int titled, int inner);
void BTN_subwin(float title_dy, int type, float x, float y, float dx, float dy,
                const std::string& title, float* next_x, float* next_y);
int BTN_zap_boxes(int state);
void BTN_util_element(float x, float y, float s, float t, float half_dx, float half_dy, int col);

// --- actions; 1 in the frame in which they were operated
// ---------------------------------------------
int BTN_action(float x, float y, float dx, int on, int mode, const std::string& label,
               const std::string& note);
int BTN_bool(float x, float y, int* value, const std::string& label, int radio);
int BTN_is_int(float x, float y, int* value, int my_value, const std::string& label);
int BTN_tab(int column, int row, int* value, int my_value, const std::string& label);
int BTN_xbol(float x, float y, bool* value, const std::string& label);
int BTN_xchr(float x, float y, char* value, const std::string& label);
int BTN_xbyt(float x, float y, unsigned char* value, const std::string& label);
int BTN_type_from_vector(int i, const std::vector<int>* v);
std::string BTN_name_from_vector(int i, const std::vector<std::string>* v);

// --- text entry; non-zero in a frame with an edit
// ----------------------------------------------------
int BTN_enterstring(float x, float y, std::string* text, int max_length, const std::string& label,
                    float dx, int auto_focus);

// --- the platform's folder picker; non-zero with a path in `out`
// -------------------------------------
int GetFilePathFromUser(int mode, const std::string& prompt, const std::string& action, int flags,
                        const std::string& start_in, std::string& out);
