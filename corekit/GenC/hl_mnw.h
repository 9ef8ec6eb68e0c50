// The window record, the frame, and the switch between the main window and its dialogs.
//
// Written by the window layer on the main thread, once a frame; read by everything that draws.
#pragma once

#include <string>

// Dialogs, by the number that win_id takes while they are up. 0 is the wizard itself.
enum window_number : int {
  win_none = -1,
  win_main = 0,
  win_prefs = 2,
  win_about = 993,
  win_alert = 994,
  win_nuke_alert = 995,
  win_select_alert = 996,
  win_abort_alert = 997,
  win_file_open = 998,
  win_file_save = 999,
};

struct mnw_record {
  int alias_req = 0;             // anti-alias request, preference "_alias_req"
  int sec_mon_inuse = 0;         // preference "_sec_mon_inuse"
  int saved_win_id = -1;         // win_id before the window was changed
  int win_id = -1;               // a window_number
  int modal_up = 0;              // 1 while a dialog is up; APP_update is not called then
  float x_off = 0, y_off = 0;    // offset of the logical window in the physical one, units
  float win_dx = 0, win_dy = 0;  // logical size of the current window, units
  int cursor_mode = 0;           // 0 or 1 arrow, 2 hidden, others the drawn pointers
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
  int mouse_released = 0;          // a release arrived this frame
  int mouse_held = 0;              // the button is down
  int wheel = 0;                   // sum of wheel movement
  int key_hit = 0;                 // a key went down or repeated this frame
  float last_action = 0;           // frame clock at the last input
  int key_held = 0;                // some key is down
  int language = 0;  // 0 English, 1 French, 2 German, 3 Italian, 4 Spanish, 5 Portuguese,
                     // 6 Korean; preference "_lang"
};
extern mnw_record mnw;

// Set in the frame in which the key went down; cleared at the start of each frame.
extern int return_hit, escape_hit, delete_hit;

// One frame: events, failures from other threads, clock, focus ring, page, swap.
void MACIBM_event_proc();

// Switches to window or dialog `id`. A dialog shows only if mnw.win_id reads `id` afterwards:
// without a display none ever does, and the caller takes that as its question not being put.
void MACIBM_startwind(int id, int arg);

// Opens `url` (at most 499 characters) in the user's browser; without a window only logs it.
void go_to_URL(const std::string& url);
