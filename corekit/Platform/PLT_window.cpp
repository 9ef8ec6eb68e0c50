// The window on SDL2: display, window, context, pointer.
//
// The display is opened once, on the first question for it, and only if this run may have one.
// Main thread, but for the binding of a loader context. Writes plt_window and PLT_swap_hook.

#include "corekit/Platform/PLT_window.h"

#include <cstdlib>
#include <cstring>
#include <vector>

#include "corekit/Platform/PLT_gl.h"
#include "corekit/Platform/PLT_window_sdl.h"

SDL_Window* plt_window = nullptr;

namespace {

enum display_state { display_not_wanted, display_not_tried, display_none, display_open };
display_state display = display_not_wanted;
bool display_is_seen = false;

SDL_GLContext context = nullptr;
std::string last_error;

struct loader_context {
  SDL_Window* window;
  SDL_GLContext context;
};
std::vector<loader_context*> loaders;

constexpr int pointer_count = plt_busy + 1;
SDL_Cursor* cursors[pointer_count] = {};
int pointer_shown = plt_arrow;

void note_error() {
  last_error = SDL_GetError();
}

bool driver_was_named() {
  const char* named = std::getenv("SDL_VIDEODRIVER");
  return named && *named;
}

// Left to itself the library falls back on drivers that draw for nobody, or takes the console over.
bool somebody_sees(const char* driver) {
  return driver && (std::strcmp(driver, "x11") == 0 || std::strcmp(driver, "wayland") == 0);
}

bool open_display() {
  if (!driver_was_named() && !std::getenv("DISPLAY") && !std::getenv("WAYLAND_DISPLAY")) {
    last_error = "no display is named in the environment";
    return false;
  }
  SDL_SetHint(SDL_HINT_QUIT_ON_LAST_WINDOW_CLOSE, "0");  // closing a dialog is not quitting
  SDL_SetHint(SDL_HINT_MOUSE_FOCUS_CLICKTHROUGH, "1");   // a first click is a click all the same
  SDL_SetHint(SDL_HINT_MOUSE_DOUBLE_CLICK_RADIUS, "6");  // pixels; else it is half a button's width
  SDL_SetHint(SDL_HINT_VIDEO_X11_NET_WM_BYPASS_COMPOSITOR, "0");  // a game would; a wizard may not
  SDL_SetHint(SDL_HINT_VIDEO_ALLOW_SCREENSAVER, "1");
  if (SDL_InitSubSystem(SDL_INIT_VIDEO) != 0) {
    note_error();
    return false;
  }
  const char* driver = SDL_GetCurrentVideoDriver();
  display_is_seen = somebody_sees(driver);
  if (!display_is_seen && !driver_was_named()) {
    last_error = std::string("only the driver \"") + (driver ? driver : "") + "\" is there";
    SDL_QuitSubSystem(SDL_INIT_VIDEO);
    return false;
  }
  plt_wake_through_events(true);
  return true;
}

void close_display() {
  if (display != display_open) return;
  for (SDL_Cursor*& cursor : cursors) {
    SDL_FreeCursor(cursor);
    cursor = nullptr;
  }
  plt_wake_through_events(false);
  SDL_QuitSubSystem(SDL_INIT_VIDEO);
  display = display_not_tried;
  display_is_seen = false;
  pointer_shown = plt_arrow;
}

void set_attributes(const PLT_pixel_format& format) {
  SDL_GL_ResetAttributes();
  const struct {
    SDL_GLattr name;
    int value;
  } rows[] = {
      {SDL_GL_CONTEXT_PROFILE_MASK, SDL_GL_CONTEXT_PROFILE_COMPATIBILITY},
      {SDL_GL_DOUBLEBUFFER, 1},
      {SDL_GL_RED_SIZE, format.color},
      {SDL_GL_GREEN_SIZE, format.color},
      {SDL_GL_BLUE_SIZE, format.color},
      {SDL_GL_DEPTH_SIZE, format.depth},
      {SDL_GL_STENCIL_SIZE, format.stencil},
      {SDL_GL_MULTISAMPLEBUFFERS, format.samples > 0},
      {SDL_GL_MULTISAMPLESAMPLES, format.samples},
  };
  for (const auto& row : rows)
    SDL_GL_SetAttribute(row.name, row.value);
}

void swap_window() {
  SDL_GL_SwapWindow(plt_window);
}

void drop_window() {
  PLT_swap_hook = nullptr;
  if (context) SDL_GL_DeleteContext(context);
  if (plt_window) SDL_DestroyWindow(plt_window);
  context = nullptr;
  plt_window = nullptr;
}

// Two contexts on one window fail off the screen, so the loader has a small hidden one. Making it
// takes the window's context away from this thread; that is put right.
loader_context* make_loader() {
  constexpr int side = 16;
  SDL_Window* window =
      SDL_CreateWindow("", 0, 0, side, side, SDL_WINDOW_OPENGL | SDL_WINDOW_HIDDEN);
  if (!window) return nullptr;
  SDL_GL_SetAttribute(SDL_GL_SHARE_WITH_CURRENT_CONTEXT, 1);
  SDL_GLContext made = SDL_GL_CreateContext(window);
  SDL_GL_SetAttribute(SDL_GL_SHARE_WITH_CURRENT_CONTEXT, 0);
  SDL_GL_MakeCurrent(plt_window, context);
  if (!made) {
    SDL_DestroyWindow(window);
    return nullptr;
  }
  return new loader_context{window, made};
}

SDL_Cursor* system_cursor(int pointer) {
  switch (pointer) {
    case plt_up_down:
      return SDL_CreateSystemCursor(SDL_SYSTEM_CURSOR_SIZENS);
    case plt_text:
      return SDL_CreateSystemCursor(SDL_SYSTEM_CURSOR_IBEAM);
    case plt_busy:
      return SDL_CreateSystemCursor(SDL_SYSTEM_CURSOR_WAIT);
    default:
      return SDL_CreateSystemCursor(SDL_SYSTEM_CURSOR_ARROW);
  }
}

}  // namespace

// --- display ------------------------------------------------------------------------------------

void PLT_use_display() {
  if (display == display_not_wanted) display = display_not_tried;
}

bool PLT_has_display() {
  if (display == display_not_tried) display = open_display() ? display_open : display_none;
  return display == display_open;
}

bool plt_display_is_seen() {
  return display == display_open && display_is_seen;
}

bool PLT_screen_figures(int* dx, int* dy, int* depth) {
  SDL_DisplayMode mode;
  if (!PLT_has_display() || SDL_GetDesktopDisplayMode(0, &mode) != 0) return false;
  *dx = mode.w;
  *dy = mode.h;
  *depth = static_cast<int>(SDL_BITSPERPIXEL(mode.format));
  return true;
}

// --- window and context -------------------------------------------------------------------------

bool PLT_open_window(const char* title, int dx, int dy, const PLT_pixel_format& format) {
  if (!PLT_has_display()) return false;
  set_attributes(format);
  plt_window = SDL_CreateWindow(title, SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED, dx, dy,
                                SDL_WINDOW_OPENGL);
  if (plt_window) context = SDL_GL_CreateContext(plt_window);
  if (!context) {
    note_error();
    drop_window();
    return false;
  }
  // The frame keeps its own pace: a swap that waits for the screen would take the time from the
  // page's work, and a software renderer does not wait at all.
  SDL_GL_SetSwapInterval(0);
  PLT_swap_hook = swap_window;
  return true;
}

void PLT_close_window() {
  for (loader_context* loader : loaders) {
    SDL_GL_DeleteContext(loader->context);
    SDL_DestroyWindow(loader->window);
    delete loader;
  }
  loaders.clear();
  drop_window();
  close_display();
}

void PLT_window_size(int* dx, int* dy) {
  *dx = *dy = 0;
  if (plt_window) SDL_GL_GetDrawableSize(plt_window, dx, dy);
}

std::string PLT_window_error() {
  return last_error;
}

void* PLT_gl_lookup(const char* name) {
  return context ? SDL_GL_GetProcAddress(name) : nullptr;
}

void* PLT_make_loader_context() {
  if (!context) return nullptr;
  loader_context* loader = make_loader();
  if (!loader) {
    note_error();
    return nullptr;
  }
  loaders.push_back(loader);
  return loader;
}

bool PLT_bind_loader_context(void* made) {
  const auto* loader = static_cast<const loader_context*>(made);
  return loader && SDL_GL_MakeCurrent(loader->window, loader->context) == 0;
}

void PLT_set_pointer(int pointer) {
  if (!plt_window || pointer == pointer_shown || pointer < 0 || pointer >= pointer_count) return;
  pointer_shown = pointer;
  if (pointer == plt_hidden) {
    SDL_ShowCursor(SDL_DISABLE);
    return;
  }
  if (!cursors[pointer]) cursors[pointer] = system_cursor(pointer);
  if (cursors[pointer]) SDL_SetCursor(cursors[pointer]);
  SDL_ShowCursor(SDL_ENABLE);
}
