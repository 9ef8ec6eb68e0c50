// The wizard engine: one page function a frame, which fills a blank record; the engine draws the
// record and acts on its buttons.
#pragma once

#include <string>
#include <vector>

#include "corekit/base/UTL_translate.h"

struct wizard_screen;

// A page. `first_time` is 1 on the first frame of every visit. Returns 0 to stay, or non-zero to go
// to screen.next at the end of the frame as if Next had been clicked (with `next` null it stays).
using page_function = int (*)(int first_time, wizard_screen& screen);

// What a page says of itself for one frame; nothing carries over to the next.
struct wizard_screen {
  std::string title;
  std::string text;                         // may hold "\n"
  page_function back = nullptr;             // null greys the Back button
  page_function next = nullptr;             // null greys the Next button
  float progress = -1.0f;                   // 0 to 1; negative for no bar
  std::string progress_text;                // the line under the bar
  int show_servers = 0;                     // draw the server chooser
  int prefs_enabled = 0;                    // enable the Options button
  std::vector<std::string> button_names;    // the page's extra buttons
  std::vector<page_function> button_pages;  // their targets, parallel to the names
  void (*kill_proc)() = nullptr;            // called on Quit, before the program ends
};

extern page_function g_wizard;                 // the current page; an edition stores the first one
extern std::vector<std::string> step_names;    // step list at the left, already translated
extern std::vector<page_function> step_funcs;  // the page of each step

// Ends the program. The flows set `next` to it on their last page.
int wizard_quit(int first_time, wizard_screen& screen);

// Replaces the step list; each label goes through the translation table.
struct wizard_step {
  UTL_text label;
  page_function page;
};
void wizard_set_steps(const std::vector<wizard_step>& steps);
void wizard_name_steps();  // anew, when the language has changed

// Text that a page draws beside its record, in colour 45. Kept for the frame, so that a run without
// a display can print it.
void wizard_note(float x, float y, const std::string& text, float wrap_dx);
extern std::vector<std::string> wizard_notes;  // of the present frame

// Draws a button face from the elements image; 1 on a click. `state` 2 draws it greyed.
int interface_rect(float x, float y, float tex_x, float tex_y, float dx, float dy, int hot,
                   int state);
