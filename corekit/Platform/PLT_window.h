// The window library, as far as the program needs it: one window with an OpenGL context, the events
// that reach it, and what the desktop does for the program. No type of the library leaves this
// folder. Where no display can be had every call answers so, and the program runs without drawing.
//
// Main thread only, but for PLT_wake and PLT_bind_loader_context.
#pragma once

#include <string>

// --- display -------------------------------------------------------------------------------------

// Allows this run to open a display. Without this call the window library is never touched, and no
// display can be had. Once, when the command line is known.
void PLT_use_display();
// Whether a window could be opened here. The library's silent drivers, which draw for nobody, count
// only when SDL_VIDEODRIVER names one.
bool PLT_has_display();
// Size of the main screen in pixels, and bits per pixel; false when there is no display.
bool PLT_screen_figures(int* dx, int* dy, int* depth);

// --- window and context --------------------------------------------------------------------------

struct PLT_pixel_format {
  int samples;  // of anti-aliasing; 0 none
  int depth;    // bits of the depth buffer
  int stencil;  // bits of the stencil buffer
  int color;    // bits of each colour channel
};

// Opens the window, for a picture of dx by dy units, with a double-buffered context of the
// compatibility profile, current on this thread. A unit is `scale` pixels, 1 to 4; 0 takes what the
// desktop wants. It becomes less where the screen has no room. The user may give the window any
// size: the picture keeps its shape, as large as fits, in the middle. False, with PLT_window_error,
// if it cannot be had in this format; then nothing is left open. REQUIRES: no window is open.
bool PLT_open_window(const char* title, int dx, int dy, float scale,
                     const PLT_pixel_format& format);
void PLT_close_window();                 // also the loader contexts, and the display
void PLT_window_size(int* dx, int* dy);  // of the picture, units; 0 without a window

bool PLT_window_is_in_front();  // whether it has the keyboard

// Where the picture lies, in pixels that are drawn to, from the window's lower left.
struct PLT_place {
  int x, y, dx, dy;
};
bool PLT_picture_place(PLT_place* place);  // false without a window
std::string PLT_window_error();            // why the last call failed, in the library's words

// Finds an OpenGL entry point by name. It may answer for names that the driver does not have: ask
// the extension string first.
void* PLT_gl_lookup(const char* name);

// A context for another thread that shares its objects with the window's; null if that fails. It
// lives until PLT_close_window.
void* PLT_make_loader_context();
bool PLT_bind_loader_context(void* context);  // to the calling thread, any

enum PLT_pointer : int { plt_arrow, plt_hidden, plt_up_down, plt_text, plt_busy };
void PLT_set_pointer(int pointer);  // a PLT_pointer; a change only is passed on

// --- events --------------------------------------------------------------------------------------

enum PLT_event_kind : int {
  plt_motion,      // x, y
  plt_press,       // x, y, clicks, modifiers: the main button
  plt_release,     // x, y
  plt_wheel_turn,  // wheel: steps, up positive
  plt_key,         // key
  plt_update,      // the window has to be drawn anew
  plt_close,       // the user wants the window closed
  plt_quit,        // the session or a signal wants the program ended
  plt_woken,       // PLT_wake was called
};

// The keys that the window layer knows by itself; other symbols are the platform's own numbers.
enum PLT_key_symbol : int {
  plt_key_backspace = 8,
  plt_key_tab = 9,
  plt_key_return = 13,
  plt_key_escape = 27,
  plt_key_delete = 127,
  plt_key_enter = 0x40000058,  // of the numeric pad
};

enum PLT_key_modifier : unsigned {
  plt_shift = 1,
  plt_control = 2,
  plt_alt = 4,
  plt_logo = 8,
  plt_caps_lock = 16,
  plt_num_lock = 32,
};

struct PLT_key_event {
  int down = 0;            // 1 pressed or repeated, 0 let go
  int repeat = 0;          // 1 when the key was down already
  int symbol = 0;          // what the key means in the user's layout; 0 for text without a key
  int scancode = 0;        // where the key is
  unsigned modifiers = 0;  // of PLT_key_modifier
  char text[32] = "";      // what the key types, UTF-8
};

struct PLT_event {
  PLT_event_kind kind = plt_woken;
  int x = 0, y = 0;  // pixels of the window, origin at the upper left
  int wheel = 0;
  int clicks = 1;          // presses in a row at one place, this one included: 2 a double click
  unsigned modifiers = 0;  // of PLT_key_modifier, held at a press
  PLT_key_event key;
};

// Takes the oldest waiting event; false when there is none.
bool PLT_next_event(PLT_event* event);
// Where the mouse was by the last event taken, pixels; -1, -1 when it has left the window.
void PLT_mouse(int* x, int* y);

// Waits up to `milliseconds` for an event, or until PLT_wake is called. Takes no event.
void PLT_wait_event(int milliseconds);
// Ends the wait that is on, or the next one. Any thread; not from a signal handler.
void PLT_wake();

// --- desktop -------------------------------------------------------------------------------------

// The platform's plain alert, for when nothing can be drawn: standard error always, and a message
// box where this run has a display that somebody sees. Returns when the user has read it.
void PLT_plain_alert(const std::string& message, const std::string& explanation);

// What another program calls the window, to show its own above it, such as "x11:2a00007"; empty
// where there is no such name.
std::string PLT_window_handle();

// Opens `url` in the user's browser. False if nothing could be started; true promises no more than
// that something was.
bool PLT_open_url(const std::string& url);
