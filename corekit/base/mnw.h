// The window record: what the frame knows of window, pointer and keys. Plain data, below all that
// reads it.
//
// Written by the window layer on the main thread, once a frame; read by everything that draws.
#pragma once

struct PLT_key_event;

// Dialogs, by the number that win_id takes while they are up. 0 is the wizard itself.
enum window_number : int {
  win_none = -1,
  win_main = 0,
  win_eula = 1,
  win_prefs = 2,
  win_livery = 992,
  win_about = 993,
  win_alert = 994,
  win_nuke_alert = 995,
  win_select_alert = 996,
  win_abort_alert = 997,
  win_file_open = 998,
  win_file_save = 999,
};

// Values of cursor_mode. A widget sets one while the mouse is on it.
enum cursor_shape : int {
  cursor_arrow = 0,
  cursor_hidden = 2,
  cursor_text = 3,
  cursor_busy = 4,
  cursor_up = 13,    // value widgets: the mouse raises the digit under it,
  cursor_down = 14,  //   or lowers it
};

struct mnw_record {
  int alias_req = 0;             // anti-alias request, preference "_alias_req"
  int sec_mon_inuse = 0;         // preference "_sec_mon_inuse"
  int saved_win_id = -1;         // win_id before the window was changed
  int win_id = -1;               // a window_number
  int modal_up = 0;              // 1 while a dialog is up; the page is not called then
  float x_off = 0, y_off = 0;    // offset of the logical window in the physical one, units
  float win_dx = 0, win_dy = 0;  // logical size of the current window, units
  int cursor_mode = 0;           // of cursor_shape; cleared at the start of each frame
  int popup_code = -1;           // open menu, -1 none; widgets react to the mouse only when -1
  int pix_dx = 0, pix_dy = 0;    // client size, pixels
  int req_dx = 0, req_dy = 0, req_depth = 0;  // what start-up asks for
  float centre_x = 0, centre_y = 384.0f;
  float side_margin = 0, top_margin = 0;
  float ortho_left = 0, ortho_bottom = 0, ortho_right = 0, ortho_top = 0;
  float ui_scale_x = 1.0f;
  float ui_scale = 1.0f;           // pixels per logical unit
  float mouse_x = 0, mouse_y = 0;  // units, origin at the lower left
  int mouse_clicked = 0;           // a press arrived this frame
  int mouse_clicks = 0;            // of the last press: how many came in a row at one place, 2 is a
                                   //   double click;
  int mouse_shift = 0;             //   and whether Shift was held
  int mouse_released = 0;          // a release arrived this frame
  int mouse_held = 0;              // the button is down
  int press_came_last = 0;         // of the presses and releases so far
  int wheel = 0;                   // sum of this frame's wheel movement
  int key_hit = 0;                 // a key went down or repeated this frame
  float last_action = 0;           // frame clock at the last input
  int key_held = 0;                // some key is down
  int language = 0;  // 0 English, 1 French, 2 German, 3 Italian, 4 Spanish, 5 Portuguese,
                     // 6 Korean; preference "_lang"
};
extern mnw_record mnw;

// Set in the frame in which the key went down; cleared at the start of each frame.
extern int return_hit, escape_hit, delete_hit;

// What a page asks of the next frame's wait; cleared at each frame's start.
enum frame_request : int {
  frame_when_needed = 0,  // up to a tenth of a second, when nothing has gone on for a while
  frame_at_once = 1,      // no wait: the page has work left
  frame_in_a_tick = 2,    // up to a sixtieth of a second: something is on its way that no wake-up
                          // announces, such as an answer from the network
};
extern int frame_soon;

// Where keys go. `event` is called for each key, `frame` once a frame, after the clock was read.
// While `event` is null the window layer sets return_hit, escape_hit and delete_hit by itself.
struct key_handlers {
  void (*event)(const PLT_key_event& key) = nullptr;
  void (*frame)() = nullptr;
  void (*leave_dialog)() = nullptr;  // Return outside a field: what closes the dialog by its button
};
extern key_handlers mnw_keys;
