// What the files of the window library share. Only files of this folder may include it.
#pragma once

#include <SDL.h>

extern SDL_Window* plt_window;  // the one window; null while none is open

// Whether the display is open and somebody sees it.
bool plt_display_is_seen();

// From now on wake-ups go through the library's event queue, or no longer do.
void plt_wake_through_events(bool on);
