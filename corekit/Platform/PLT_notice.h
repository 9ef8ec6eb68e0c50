// What the desktop shows of the program beside its window: how far a job is, on the program's entry
// in launcher or dock, and a notification. Both go over the session's bus; without one, or where
// nobody listens, nothing happens. Nothing here waits.
//
// Main thread only.
#pragma once

#include <string>

// How the program is known to the desktop; static texts and pixels. Before the display is opened.
struct PLT_identity {
  const char* id = "";         // the name of its menu entry's file, without ".desktop"; also the
                               //   class of its window
  const char* name = "";       // for users
  const char* icon_name = "";  // of its icon in the desktop's theme
  const unsigned char* icon = nullptr;  // of its window: RGBA from the lowest row up; null for none
  int icon_side = 0;                    // pixels
};
void PLT_introduce(const PLT_identity& identity);

// Shows how far a job is, 0 to 1, or with a negative `fraction` no longer. Cheap when it is called
// in every frame.
void PLT_show_progress(float fraction);
// Shows a notification; texts as PLT_terminal_text takes them.
void PLT_notify(const std::string& title, const std::string& text);
// Sends on what waits to be sent, and drops what was answered; once a frame.
void PLT_notice_frame();
