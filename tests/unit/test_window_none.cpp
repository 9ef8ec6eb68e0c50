// A run without a display: the window library is not touched unless it may be.

#include <cstdlib>

#include "corekit/Platform/PLT_keys.h"
#include "corekit/window/hl_mnw_context.h"
#include "tests/unit/window_fixture.h"

namespace {

// Each case needs a process in which nothing has been opened yet.
#define EXPECT_IN_NEW_PROCESS(body)                        \
  do {                                                     \
    GTEST_FLAG_SET(death_test_style, "threadsafe");        \
    EXPECT_EXIT(                                           \
        {                                                  \
          body;                                            \
          std::_Exit(testing::Test::HasFailure() ? 1 : 0); \
        },                                                 \
        testing::ExitedWithCode(0), "");                   \
  } while (0)

void clear_environment() {
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "SDL_VIDEODRIVER"})
    unsetenv(name);
}

void touch_nothing() {
  setenv("DISPLAY", ":0", 1);
  setenv("SDL_VIDEODRIVER", "offscreen", 1);
  EXPECT_FALSE(PLT_has_display()) << "nobody has allowed one";
  EXPECT_FALSE(PLT_open_window("none", 800, 600, 1, {}));
  int dx, dy, depth;
  EXPECT_FALSE(PLT_screen_figures(&dx, &dy, &depth));
  PLT_wake();
  PLT_wait_event(1);
  PLT_event event;
  EXPECT_FALSE(PLT_next_event(&event));
  PLT_plain_alert("message", "explanation");
  EXPECT_FALSE(PLT_open_url("http://www.skyvane.example/"));
  EXPECT_EQ(PLT_gl_lookup("glBegin"), nullptr);
  EXPECT_EQ(PLT_layout_source(SDL_SCANCODE_A), 0);
  PLT_set_pointer(plt_busy);
  PLT_swap_buffers();
  EXPECT_EQ(MACIBM_make_context_loader(), nullptr);
  EXPECT_EQ(MACIBM_set_context_loader(nullptr), 0);
  MACIBM_nuke_context(0);
  EXPECT_EQ(SDL_WasInit(0), 0u) << "the window library was started";
}

TEST(WindowNone, NothingIsStartedUnlessAllowed) {
  EXPECT_IN_NEW_PROCESS(touch_nothing());
}

void silent_driver() {
  clear_environment();
  setenv("SDL_VIDEODRIVER", "dummy", 1);  // can open windows, but has no OpenGL
  PLT_use_display();
  EXPECT_TRUE(PLT_has_display()) << "it was asked for by name";
  int made = -1;
  const std::string log = log_of([&] { made = MACIBM_make_context(0); });
  EXPECT_EQ(made, 0);
  EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 5) << "five attempts:\n" << log;
  PLT_plain_alert("nobody", "sees a box");  // must not wait for anyone
  EXPECT_FALSE(PLT_open_url("http://www.skyvane.example/"));
}

void no_display() {
  clear_environment();
  PLT_use_display();
  EXPECT_FALSE(PLT_open_window("none", 800, 600, 1, {}));
  EXPECT_EQ(PLT_window_error(), "no display is named in the environment");
}

TEST(WindowNone, NoDisplayIsNamed) {
  EXPECT_IN_NEW_PROCESS(no_display());
}

TEST(WindowNone, ADriverWithoutOpenGLIsTriedFiveTimes) {
  EXPECT_IN_NEW_PROCESS(silent_driver());
}

}  // namespace
