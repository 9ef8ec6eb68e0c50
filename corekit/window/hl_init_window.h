// The part of the start that needs a window, and the splash. For hl_init only.
#pragma once

#include <string>

// Opens the window, asks the driver what it can do, starts the workers, and loads the pictures and
// the palette. Ends the program by a fatal alert if there is no window to be had. Sets ogl_inited.
void init_window();

// Draws a frame of the start-up splash with a line of text, already translated, and a bar when
// `fraction` is above 0 (to 1). Only while the splash is up: from the window's start to the first
// page.
void MACIBM_show_init(const std::string& text, float fraction = 0.0f);
