// The window on SDL2: display, window, context, pointer.
//
// The display is opened once, on the first question for it, and only if this run may have one.
// Main thread, but for the binding of a loader context. Writes plt_window and PLT_swap_hook.

#include "corekit/Platform/PLT_window.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <vector>

#include "corekit/Platform/PLT_gl.h"
#include "corekit/Platform/PLT_library.h"
#include "corekit/Platform/PLT_notice.h"
#include "corekit/Platform/PLT_window_sdl.h"

SDL_Window* plt_window = nullptr;

namespace {

enum display_state { display_not_wanted, display_not_tried, display_none, display_open };
display_state display = display_not_wanted;
bool display_is_seen = false;

SDL_GLContext context = nullptr;
int picture_dx = 0, picture_dy = 0;  // units; of the open window
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
  last_error = sdl.GetError();
}

bool driver_was_named() {
  const char* named = std::getenv("SDL_VIDEODRIVER");
  return named && *named;
}

// Left to itself the library falls back on drivers that draw for nobody, or takes the console over.
bool somebody_sees(const char* driver) {
  return driver && (std::strcmp(driver, "x11") == 0 || std::strcmp(driver, "wayland") == 0);
}

// What the window's class is by, while the library looks for it; programs that this one starts
// shall not take it for theirs.
constexpr const char* class_names[] = {"SDL_VIDEO_X11_WMCLASS", "SDL_VIDEO_WAYLAND_WMCLASS"};

int init_video() {
  bool named[std::size(class_names)] = {};
  for (size_t i = 0; i < std::size(class_names) && *plt_identity.id; ++i) {
    named[i] = !std::getenv(class_names[i]);
    if (named[i]) setenv(class_names[i], plt_identity.id, 0);
  }
  const int failed = sdl.InitSubSystem(SDL_INIT_VIDEO);
  for (size_t i = 0; i < std::size(class_names); ++i) {
    if (named[i]) unsetenv(class_names[i]);
  }
  return failed;
}

// SDL wakes its own loop by an event to the window, over a connection of its own. When the window
// is closed just then, the display answers that there is none, for which Xlib ends the program. To
// be called before SDL opens the display: what it finds then is what it puts back before it closes
// it.
int pass_over(void* /*display*/, void* /*error*/) {
  return 0;
}

void outlive_display_errors() {
  using handler = int (*)(void* display, void* error);
  handler (*set_handler)(handler) = nullptr;
  if (!plt_open_library({"libX11.so.6"}, nullptr)) return;
  if (plt_take_call(set_handler, "XSetErrorHandler", nullptr)) set_handler(pass_over);
}

bool open_display() {
  if (!driver_was_named() && !std::getenv("DISPLAY") && !std::getenv("WAYLAND_DISPLAY")) {
    last_error = "no display is named in the environment";
    return false;
  }
  if (!plt_load_sdl(&last_error)) return false;
  sdl.SetHint(SDL_HINT_QUIT_ON_LAST_WINDOW_CLOSE, "0");  // closing a dialog is not quitting
  sdl.SetHint(SDL_HINT_MOUSE_FOCUS_CLICKTHROUGH, "1");   // a first click is a click all the same
  sdl.SetHint(SDL_HINT_MOUSE_DOUBLE_CLICK_RADIUS, "6");  // pixels; else it is half a button's width
  sdl.SetHint(SDL_HINT_VIDEO_X11_NET_WM_BYPASS_COMPOSITOR, "0");  // a game would; a wizard may not
  sdl.SetHint(SDL_HINT_VIDEO_ALLOW_SCREENSAVER, "1");
  outlive_display_errors();
  if (init_video() != 0) {
    note_error();
    return false;
  }
  const char* driver = sdl.GetCurrentVideoDriver();
  display_is_seen = somebody_sees(driver);
  if (!display_is_seen && !driver_was_named()) {
    last_error = std::string("only the driver \"") + (driver ? driver : "") + "\" is there";
    sdl.QuitSubSystem(SDL_INIT_VIDEO);
    return false;
  }
  plt_wake_through_events(true);
  return true;
}

void close_display() {
  if (display != display_open) return;
  for (SDL_Cursor*& cursor : cursors) {
    sdl.FreeCursor(cursor);
    cursor = nullptr;
  }
  plt_wake_through_events(false);
  sdl.QuitSubSystem(SDL_INIT_VIDEO);
  display = display_not_tried;
  display_is_seen = false;
  pointer_shown = plt_arrow;
}

void set_attributes(const PLT_pixel_format& format) {
  sdl.GL_ResetAttributes();
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
    sdl.GL_SetAttribute(row.name, row.value);
}

void set_icon() {
  const int side = plt_identity.icon_side;
  if (!plt_identity.icon) return;
  // The library's first row is the highest, and it reads the pixels in place.
  const size_t row = static_cast<size_t>(side) * 4;
  std::vector<unsigned char> pixels(row * static_cast<size_t>(side));
  for (size_t y = 0; y < static_cast<size_t>(side); ++y)
    std::copy_n(plt_identity.icon + y * row, row, pixels.end() - static_cast<long>((y + 1) * row));
  SDL_Surface* const icon = sdl.CreateRGBSurfaceWithFormatFrom(pixels.data(), side, side, 32,
                                                               side * 4, SDL_PIXELFORMAT_RGBA32);
  if (icon) sdl.SetWindowIcon(plt_window, icon);
  sdl.FreeSurface(icon);
}

void swap_window() {
  sdl.GL_SwapWindow(plt_window);
}

void drop_window() {
  PLT_swap_hook = nullptr;
  if (context) sdl.GL_DeleteContext(context);
  if (plt_window) sdl.DestroyWindow(plt_window);
  context = nullptr;
  plt_window = nullptr;
}

// Two contexts on one window fail off the screen, so the loader has a small hidden one. Making it
// takes the window's context away from this thread; that is put right.
loader_context* make_loader() {
  constexpr int side = 16;
  SDL_Window* window =
      sdl.CreateWindow("", 0, 0, side, side, SDL_WINDOW_OPENGL | SDL_WINDOW_HIDDEN);
  if (!window) return nullptr;
  sdl.GL_SetAttribute(SDL_GL_SHARE_WITH_CURRENT_CONTEXT, 1);
  SDL_GLContext made = sdl.GL_CreateContext(window);
  sdl.GL_SetAttribute(SDL_GL_SHARE_WITH_CURRENT_CONTEXT, 0);
  sdl.GL_MakeCurrent(plt_window, context);
  if (!made) {
    sdl.DestroyWindow(window);
    return nullptr;
  }
  return new loader_context{window, made};
}

// What is left of `scale` where the screen has too little room for dx by dy units.
float fitting_scale(float scale, int dx, int dy) {
  SDL_Rect room;
  if (sdl.GetDisplayUsableBounds(0, &room) != 0) return scale;
  while (scale > 1 && (static_cast<float>(dx) * scale > static_cast<float>(room.w) ||
                       static_cast<float>(dy) * scale > static_cast<float>(room.h)))
    scale -= 0.5f;
  return std::max(scale, 1.0f);
}

SDL_Cursor* system_cursor(int pointer) {
  switch (pointer) {
    case plt_up_down:
      return sdl.CreateSystemCursor(SDL_SYSTEM_CURSOR_SIZENS);
    case plt_text:
      return sdl.CreateSystemCursor(SDL_SYSTEM_CURSOR_IBEAM);
    case plt_busy:
      return sdl.CreateSystemCursor(SDL_SYSTEM_CURSOR_WAIT);
    default:
      return sdl.CreateSystemCursor(SDL_SYSTEM_CURSOR_ARROW);
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
  if (!PLT_has_display() || sdl.GetDesktopDisplayMode(0, &mode) != 0) return false;
  *dx = mode.w;
  *dy = mode.h;
  *depth = static_cast<int>(SDL_BITSPERPIXEL(mode.format));
  return true;
}

// --- window and context -------------------------------------------------------------------------

bool PLT_open_window(const char* title, int dx, int dy, float scale,
                     const PLT_pixel_format& format) {
  if (!PLT_has_display() || !PLT_load_gl(&last_error)) return false;
  set_attributes(format);
  if (scale <= 0) scale = plt_desktop_scale();
  scale = fitting_scale(std::clamp(scale, 1.0f, 4.0f), dx, dy);
  const auto scaled = [scale](int units) {
    return static_cast<int>(std::lround(static_cast<float>(units) * scale));
  };
  plt_window = sdl.CreateWindow(
      title, SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED, scaled(dx), scaled(dy),
      SDL_WINDOW_OPENGL | SDL_WINDOW_RESIZABLE | SDL_WINDOW_ALLOW_HIGHDPI);
  picture_dx = dx;
  picture_dy = dy;
  if (plt_window) context = sdl.GL_CreateContext(plt_window);
  if (!context) {
    note_error();
    drop_window();
    return false;
  }
  set_icon();
  sdl.SetWindowMinimumSize(plt_window, dx / 2, dy / 2);
  // The frame keeps its own pace: a swap that waits for the screen would take the time from the
  // page's work, and a software renderer does not wait at all.
  sdl.GL_SetSwapInterval(0);
  PLT_swap_hook = swap_window;
  return true;
}

void PLT_close_window() {
  for (loader_context* loader : loaders) {
    sdl.GL_DeleteContext(loader->context);
    sdl.DestroyWindow(loader->window);
    delete loader;
  }
  loaders.clear();
  drop_window();
  close_display();
}

void PLT_window_size(int* dx, int* dy) {
  *dx = plt_window ? picture_dx : 0;
  *dy = plt_window ? picture_dy : 0;
}

bool PLT_window_is_in_front() {
  return plt_window && (sdl.GetWindowFlags(plt_window) & SDL_WINDOW_INPUT_FOCUS);
}

bool PLT_picture_place(PLT_place* place) {
  if (!plt_window) return false;
  int dx, dy;
  sdl.GL_GetDrawableSize(plt_window, &dx, &dy);
  place->dx = std::min(dx, dy * picture_dx / picture_dy);
  place->dy = std::min(dy, dx * picture_dy / picture_dx);
  place->x = (dx - place->dx) / 2;
  place->y = (dy - place->dy) / 2;
  return true;
}

void plt_to_picture(int* x, int* y, bool held) {
  PLT_place place;
  int window_dx = 0, window_dy = 0, dx = 0, dy = 0;
  const int from_x = *x, from_y = *y;
  *x = *y = -1;
  if (!PLT_picture_place(&place) || place.dx <= 0 || place.dy <= 0) return;
  sdl.GetWindowSize(plt_window, &window_dx, &window_dy);
  sdl.GL_GetDrawableSize(plt_window, &dx, &dy);
  if (window_dx <= 0 || window_dy <= 0) return;
  // The desktop may count its places in units of its own, larger than a pixel.
  int at_x = from_x * dx / window_dx - place.x;
  int at_y = from_y * dy / window_dy - (dy - place.y - place.dy);
  if (held) {
    at_x = std::clamp(at_x, 0, place.dx - 1);
    at_y = std::clamp(at_y, 0, place.dy - 1);
  }
  if (at_x < 0 || at_y < 0 || at_x >= place.dx || at_y >= place.dy) return;
  *x = at_x * picture_dx / place.dx;
  *y = at_y * picture_dy / place.dy;
}

std::string PLT_window_error() {
  return last_error;
}

void* PLT_gl_lookup(const char* name) {
  return context ? sdl.GL_GetProcAddress(name) : nullptr;
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
  return loader && sdl.GL_MakeCurrent(loader->window, loader->context) == 0;
}

void PLT_set_pointer(int pointer) {
  if (!plt_window || pointer == pointer_shown || pointer < 0 || pointer >= pointer_count) return;
  pointer_shown = pointer;
  if (pointer == plt_hidden) {
    sdl.ShowCursor(SDL_DISABLE);
    return;
  }
  if (!cursors[pointer]) cursors[pointer] = system_cursor(pointer);
  if (cursors[pointer]) sdl.SetCursor(cursors[pointer]);
  sdl.ShowCursor(SDL_ENABLE);
}
