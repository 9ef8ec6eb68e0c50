// Events: SDL's into the program's own, the wait for one, and the wake-up from other threads.
//
// Without a display the wait is on a counter of the system's own, so that a run without a window
// never touches the window library. Main thread, but for PLT_wake.

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <mutex>

#include "corekit/Platform/PLT_window.h"
#include "corekit/Platform/PLT_window_sdl.h"

static_assert(int{plt_key_backspace} == int{SDLK_BACKSPACE});
static_assert(int{plt_key_return} == int{SDLK_RETURN});
static_assert(int{plt_key_escape} == int{SDLK_ESCAPE});
static_assert(int{plt_key_delete} == int{SDLK_DELETE});
static_assert(int{plt_key_enter} == int{SDLK_KP_ENTER});

namespace {

int mouse_x = -1, mouse_y = -1;  // units, by the last event taken
bool button_is_held = false;     // by the last event taken
unsigned held_modifiers = 0;     // by the last key taken: the library's own state is ahead of it

std::mutex wake_lock;             // guards through_events, and keeps the library open meanwhile
bool through_events = false;      // wake-ups are events of the library
Uint32 wake_event = 0;            // their number
std::atomic<bool> awake = false;  // a wake-up is on its way: the next one need not be sent

// Counts wake-ups while there is no display; made on first use, kept for the process's life.
int wake_handle() {
  static const int handle = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
  return handle;
}

unsigned modifiers_of(Uint16 mod) {
  unsigned modifiers = 0;
  if (mod & KMOD_SHIFT) modifiers |= plt_shift;
  if (mod & KMOD_CTRL) modifiers |= plt_control;
  if (mod & KMOD_ALT) modifiers |= plt_alt;
  if (mod & KMOD_GUI) modifiers |= plt_logo;
  if (mod & KMOD_CAPS) modifiers |= plt_caps_lock;
  if (mod & KMOD_NUM) modifiers |= plt_num_lock;
  return modifiers;
}

void take_text(const SDL_Event& from, PLT_key_event& key) {
  static_assert(sizeof key.text >= sizeof from.text.text);
  std::memcpy(key.text, from.text.text, sizeof from.text.text);
  key.text[sizeof key.text - 1] = 0;
}

// A key and what it types come as two events in a row; the program gets them as one.
void take_key(const SDL_Event& from, PLT_event* event) {
  event->kind = plt_key;
  PLT_key_event& key = event->key;
  key.down = from.type == SDL_KEYDOWN;
  key.repeat = from.key.repeat != 0;
  key.symbol = from.key.keysym.sym;
  key.scancode = from.key.keysym.scancode;
  key.modifiers = held_modifiers = modifiers_of(from.key.keysym.mod);
  SDL_Event next;
  if (key.down && sdl.PeepEvents(&next, 1, SDL_PEEKEVENT, SDL_FIRSTEVENT, SDL_LASTEVENT) == 1 &&
      next.type == SDL_TEXTINPUT) {
    sdl.PeepEvents(&next, 1, SDL_GETEVENT, SDL_TEXTINPUT, SDL_TEXTINPUT);
    take_text(next, key);
  }
}

void take_mouse(int x, int y, PLT_event_kind kind, PLT_event* event) {
  if (kind == plt_press) button_is_held = true;
  plt_to_picture(&x, &y, button_is_held);
  if (kind == plt_release) button_is_held = false;
  mouse_x = x;
  mouse_y = y;
  event->kind = kind;
  event->x = x;
  event->y = y;
}

bool take_window_event(const SDL_WindowEvent& from, PLT_event* event) {
  switch (from.event) {
    case SDL_WINDOWEVENT_EXPOSED:
    case SDL_WINDOWEVENT_SIZE_CHANGED:
      event->kind = plt_update;
      return true;
    case SDL_WINDOWEVENT_CLOSE:
      event->kind = plt_close;
      return true;
    case SDL_WINDOWEVENT_LEAVE:
      // What lay under the mouse must not stay lit. What is dragged goes on: its events still come.
      if (button_is_held) return false;
      take_mouse(-1, -1, plt_motion, event);
      return true;
    default:
      return false;
  }
}

// False for what the program does not want to know.
bool translate(const SDL_Event& from, PLT_event* event) {
  *event = PLT_event();
  switch (from.type) {
    case SDL_MOUSEMOTION:
      take_mouse(from.motion.x, from.motion.y, plt_motion, event);
      return true;
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
      if (from.button.button != SDL_BUTTON_LEFT) return false;
      take_mouse(from.button.x, from.button.y,
                 from.type == SDL_MOUSEBUTTONDOWN ? plt_press : plt_release, event);
      event->clicks = std::max<int>(from.button.clicks, 1);
      event->modifiers = held_modifiers;
      return true;
    case SDL_MOUSEWHEEL:
      event->kind = plt_wheel_turn;
      event->wheel = from.wheel.direction == SDL_MOUSEWHEEL_FLIPPED ? -from.wheel.y : from.wheel.y;
      return event->wheel != 0;
    case SDL_KEYDOWN:
    case SDL_KEYUP:
      take_key(from, event);
      return true;
    case SDL_TEXTINPUT:
      // Text without a key of its own, from an input method.
      event->kind = plt_key;
      event->key.down = 1;
      take_text(from, event->key);
      return true;
    case SDL_WINDOWEVENT:
      return take_window_event(from.window, event);
    case SDL_QUIT:
      event->kind = plt_quit;
      return true;
    default:
      if (from.type != wake_event || wake_event == 0) return false;
      awake = false;
      event->kind = plt_woken;
      return true;
  }
}

}  // namespace

void plt_wake_through_events(bool on) {
  const std::lock_guard<std::mutex> hold(wake_lock);
  if (on && wake_event == 0) {
    wake_event = sdl.RegisterEvents(1);
    if (wake_event == static_cast<Uint32>(-1)) wake_event = 0;
  }
  through_events = on && wake_event != 0;
  awake = false;
  mouse_x = mouse_y = -1;
  button_is_held = false;
  held_modifiers = 0;
}

bool PLT_next_event(PLT_event* event) {
  if (!through_events) return false;
  SDL_Event from;
  while (sdl.PollEvent(&from)) {
    if (translate(from, event)) return true;
  }
  return false;
}

void PLT_mouse(int* x, int* y) {
  *x = mouse_x;
  *y = mouse_y;
}

void PLT_wait_event(int milliseconds) {
  if (through_events) {
    if (milliseconds > 0) sdl.WaitEventTimeout(nullptr, milliseconds);
    return;
  }
  pollfd wake{wake_handle(), POLLIN, 0};
  if (poll(&wake, 1, std::max(milliseconds, 0)) > 0) {
    uint64_t count;
    // The count is of no interest, and a failed read only means that another wait took it.
    [[maybe_unused]] const ssize_t got = read(wake.fd, &count, sizeof count);
    awake = false;
  }
}

void PLT_wake() {
  if (awake.exchange(true)) return;
  const std::lock_guard<std::mutex> hold(wake_lock);
  if (through_events) {
    SDL_Event event = {};
    event.type = wake_event;
    if (sdl.PushEvent(&event) != 1) awake = false;
  } else {
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t put = write(wake_handle(), &one, sizeof one);
  }
}
