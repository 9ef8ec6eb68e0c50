// Other tests keep a window of their own open for the life of the process, and expect its context
// to be current: it is put back at the end.

#include "tests/unit/window_fixture.h"

#include <cstring>

#include "Installer-f/wizard/main_wizard.h"
#include "corekit/base/hl_math.h"
#include "corekit/base/hl_thread.h"
#include "corekit/window/hl_init_window.h"
#include "corekit/window/hl_mnw_context.h"
#include "tests/unit/gl_fixture.h"
#include "tests/unit/test_runtime_util.h"

int window_fixture::page_calls = 0;
std::function<void()> window_fixture::page_body;

namespace {

SDL_Window* other_window = nullptr;
SDL_GLContext other_context = nullptr;

constexpr int dx = 800, dy = 600;
std::vector<unsigned char> picture;
void (*real_swap)() = nullptr;

void read_and_swap() {
  picture.resize(static_cast<size_t>(dx) * dy * 3);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glReadBuffer(GL_BACK);
  glReadPixels(0, 0, dx, dy, GL_RGB, GL_UNSIGNED_BYTE, picture.data());
  real_swap();
}

void forget_textures() {
  for (const int ref : {t_background, t_elements, t_map, t_interface})
    tman.unload_texture(ref);
}

}  // namespace

void window_fixture::SetUp() {
  setenv("SDL_VIDEODRIVER", "offscreen", 1);
  // The driver's library stays loaded, so that what it keeps for ever can be told from a leak.
  static const int keep_loaded = SDL_InitSubSystem(SDL_INIT_VIDEO) | SDL_GL_LoadLibrary(nullptr);
  ASSERT_EQ(keep_loaded, 0) << SDL_GetError();
  other_window = SDL_GL_GetCurrentWindow();
  other_context = other_window ? SDL_GL_GetCurrentContext() : nullptr;
  if (other_context) forget_textures();

  page_calls = 0;
  page_body = nullptr;
  static constexpr wizard_page page = {page_choice, [](int, wizard_screen&) {
                                         ++page_calls;
                                         if (page_body) page_body();
                                         return 0;
                                       }};
  g_wizard = page;
  app_done = 0;
  mnw = mnw_record();
  mnw_keys = key_handlers();
  mnw.req_dx = dx;
  mnw.req_dy = dy;
  mnw.req_depth = 32;
  hl_math_init();
  THREAD_init();
  alerts_are_drawn();
  PLT_use_display();
  init_window();
  ASSERT_EQ(ogl_inited, 1);
  MACIBM_startwind(win_main, 0);
  MACIBM_event_proc();  // the process's first frame sets the window up once more
  page_calls = 0;
  settle();
}

void window_fixture::TearDown() {
  forget_textures();
  MACIBM_nuke_context(0);
  THREAD_shutdown();
  mnw_keys = key_handlers();
  g_wizard = nullptr;
  if (other_context) SDL_GL_MakeCurrent(other_window, other_context);
}

void window_fixture::settle() {
  PLT_event event;
  for (int i = 0; i < 3; ++i) {
    while (PLT_next_event(&event)) {
    }
    SDL_Delay(1);
  }
}

std::vector<unsigned char> window_fixture::next_shown(const std::function<void()>& frame) {
  picture.clear();
  real_swap = PLT_swap_hook;
  PLT_swap_hook = read_and_swap;
  OGL_show_next();
  frame();
  if (PLT_swap_hook) PLT_swap_hook = real_swap;
  return picture;
}

void window_fixture::step_by_step(const std::function<void()>& body,
                                  const std::function<void()>& each_frame) {
  static std::function<void()> step;
  step = each_frame;
  real_swap = PLT_swap_hook;
  PLT_swap_hook = [] {
    read_and_swap();
    OGL_show_next();
    step();
  };
  body();
  PLT_swap_hook = real_swap;
  settle();
}

const std::vector<unsigned char>& window_fixture::last_shown() {
  return picture;
}

void push_motion(int x, int y) {
  SDL_Event event = {};
  event.type = SDL_MOUSEMOTION;
  event.motion.x = x;
  event.motion.y = y;
  SDL_PushEvent(&event);
}

void push_button(int x, int y, bool down, int button) {
  SDL_Event event = {};
  event.type = down ? SDL_MOUSEBUTTONDOWN : SDL_MOUSEBUTTONUP;
  event.button.x = x;
  event.button.y = y;
  event.button.button = static_cast<Uint8>(button);
  SDL_PushEvent(&event);
}

void push_key(int symbol, bool down, int repeat, int modifiers) {
  SDL_Event event = {};
  event.type = down ? SDL_KEYDOWN : SDL_KEYUP;
  event.key.repeat = static_cast<Uint8>(repeat);
  event.key.keysym.sym = symbol;
  event.key.keysym.scancode = SDL_GetScancodeFromKey(symbol);
  event.key.keysym.mod = static_cast<Uint16>(modifiers);
  SDL_PushEvent(&event);
}

void push_text(const char* utf8) {
  SDL_Event event = {};
  event.type = SDL_TEXTINPUT;
  std::strncpy(event.text.text, utf8, sizeof event.text.text - 1);
  SDL_PushEvent(&event);
}

void push_window_event(int window_event) {
  SDL_Event event = {};
  event.type = SDL_WINDOWEVENT;
  event.window.event = static_cast<Uint8>(window_event);
  SDL_PushEvent(&event);
}

std::string log_of(const std::function<void()>& body) {
  const log_capture log;
  body();
  return log.text();
}
