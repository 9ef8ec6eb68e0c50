// The frame: what events make of mnw, when the page is called and shown, how a wait ends.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <map>
#include <regex>
#include <thread>

#include "corekit/base/UTL_workers.h"
#include "corekit/base/xtim.h"
#include "corekit/draw/colr.h"
#include "corekit/draw/tman.h"
#include "tests/unit/window_fixture.h"

namespace {

using clock_type = std::chrono::steady_clock;

long milliseconds_of(const std::function<void()>& body) {
  const auto start = clock_type::now();
  body();
  return std::chrono::duration_cast<std::chrono::milliseconds>(clock_type::now() - start).count();
}

// Frames for so many milliseconds.
void run_for(int milliseconds) {
  const auto end = clock_type::now() + std::chrono::milliseconds(milliseconds);
  while (clock_type::now() < end)
    MACIBM_event_proc();
}

// Frames for so many milliseconds, over and over until `often_enough`: what another process takes
// of the machine is no fault, what never comes is.
template <typename Reset, typename Enough>
void run_until(int milliseconds, Reset reset, Enough often_enough) {
  for (int i = 0; i < 40; ++i) {
    reset();
    run_for(milliseconds);
    if (often_enough()) return;
  }
}

class WindowFrame : public window_fixture {};

TEST_F(WindowFrame, MouseIsInUnitsFromTheLowerLeftOfTheDialog) {
  const std::tuple<int, int, int, float, float> rows[] = {
      {win_main, 0, 599, 0.0f, 1.0f},
      {win_main, 799, 0, 799.0f, 600.0f},
      {win_alert, 189, 426, -1.0f, -1.0f},
      {win_prefs, 400, 300, 300.0f, 190.0f},
  };
  for (const auto& [window, x, y, mouse_x, mouse_y] : rows) {
    MACIBM_startwind(window, 0);
    push_motion(x, y);
    MACIBM_event_proc();
    EXPECT_FLOAT_EQ(mnw.mouse_x, mouse_x) << window << " at " << x;
    EXPECT_FLOAT_EQ(mnw.mouse_y, mouse_y) << window << " at " << y;
  }
  push_window_event(SDL_WINDOWEVENT_LEAVE);
  MACIBM_event_proc();
  EXPECT_LT(mnw.mouse_x, 0) << "outside the window it is over nothing";
}

TEST_F(WindowFrame, ButtonFlagsLastTheirFrame) {
  const auto frame = [](const char* label, int clicked, int released, int held) {
    MACIBM_event_proc();
    EXPECT_EQ(mnw.mouse_clicked, clicked) << label;
    EXPECT_EQ(xtim.mouse_down == xtim.now_sec, clicked != 0) << label;
    EXPECT_EQ(mnw.mouse_released, released) << label;
    EXPECT_EQ(mnw.mouse_held, held) << label;
  };
  push_button(100, 100, true);
  push_button(100, 100, false);
  frame("press and release in one frame", 1, 1, 0);
  frame("and the next", 0, 0, 0);
  push_button(100, 100, true);
  frame("press", 1, 0, 1);
  frame("held", 0, 0, 1);
  push_button(100, 100, false);
  push_button(200, 100, true);
  frame("release, and a press that begins a drag", 1, 1, 1);
  push_button(200, 100, false);
  frame("release", 0, 1, 0);
  for (const int button : {SDL_BUTTON_RIGHT, SDL_BUTTON_MIDDLE, SDL_BUTTON_X1}) {
    push_button(100, 100, true, button);
    frame("another button", 0, 0, 0);
  }
}

// A turn that nothing took must not move the next list that the mouse comes to.
TEST_F(WindowFrame, TheWheelLastsItsFrame) {
  for (const int wanted : {2, 0}) {
    if (wanted != 0) {
      SDL_Event event = {};
      event.type = SDL_MOUSEWHEEL;
      event.wheel.y = 1;
      SDL_PushEvent(&event);
      SDL_PushEvent(&event);
    }
    MACIBM_event_proc();
    EXPECT_EQ(mnw.wheel, wanted);
  }
}

TEST_F(WindowFrame, AClickIsWhereThePressWas) {
  push_motion(10, 10);
  push_button(100, 200, true);
  push_motion(700, 500);  // the hand is on its way already
  MACIBM_event_proc();
  EXPECT_EQ(mnw.mouse_clicked, 1);
  EXPECT_FLOAT_EQ(mnw.mouse_x, 100);
  EXPECT_FLOAT_EQ(mnw.mouse_y, 400);
  MACIBM_event_proc();
  EXPECT_FLOAT_EQ(mnw.mouse_x, 700);
}

// Of several presses that fall into one frame.
TEST_F(WindowFrame, ADoubleClickOfOneFrameIsOne) {
  const struct {
    std::vector<Uint8> presses;  // each with how many came in a row
    int clicks;
  } rows[] = {{{1}, 1}, {{2}, 2}, {{1, 2}, 2}, {{1, 1}, 1}, {{2, 1}, 2}, {{3}, 3}, {{1}, 1}};
  for (const auto& row : rows) {
    for (const Uint8 clicks : row.presses) {
      SDL_Event event = {};
      event.type = SDL_MOUSEBUTTONDOWN;
      event.button.x = event.button.y = 100;
      event.button.button = SDL_BUTTON_LEFT;
      event.button.clicks = clicks;
      SDL_PushEvent(&event);
    }
    push_button(100, 100, false);
    MACIBM_event_proc();
    EXPECT_EQ(mnw.mouse_clicks, row.clicks) << row.presses.size();
    MACIBM_event_proc();
  }
}

std::vector<PLT_key_event> keys_seen;
int key_frames = 0;

// What is dragged stops at the picture's edge; without a button down, beside it is nowhere.
TEST_F(WindowFrame, ADragThatLeavesThePictureStopsAtItsEdge) {
  const std::tuple<const char*, std::function<void()>, float, float> rows[] = {
      {"beside it", [] { push_motion(900, 300); }, -1, 601},
      {"the press", [] { push_button(400, 200, true); }, 400, 400},
      {"right and below", [] { push_motion(900, 700); }, 799, 1},
      {"left and above", [] { push_motion(-50, -1); }, 0, 600},
      {"the window says that it is left", [] { push_window_event(SDL_WINDOWEVENT_LEAVE); }, 0, 600},
      {"the release, which moves nothing", [] { push_button(900, 300, false); }, 0, 600},
      {"after it", [] { push_motion(901, 300); }, -1, 601},
  };
  for (const auto& [label, event, x, y] : rows) {
    event();
    MACIBM_event_proc();
    EXPECT_EQ(mnw.mouse_x, x) << label;
    EXPECT_EQ(mnw.mouse_y, y) << label;
  }
}

TEST_F(WindowFrame, AKeyComesWithWhatItTypes) {
  keys_seen.clear();
  key_frames = 0;
  mnw_keys.event = [](const PLT_key_event& key) { keys_seen.push_back(key); };
  mnw_keys.frame = [] { ++key_frames; };
  push_key(SDLK_a, true, 0, KMOD_LSHIFT);
  push_text("A");
  push_key(SDLK_a, true, 1, KMOD_LSHIFT | KMOD_CAPS);
  push_text("A");
  push_key(SDLK_F1, true, 0, KMOD_RCTRL | KMOD_LALT);
  push_motion(5, 5);
  push_text("\xC3\xA9");  // from an input method: no key goes with it
  MACIBM_event_proc();
  EXPECT_EQ(mnw.key_hit, 1);

  ASSERT_EQ(keys_seen.size(), 4u);
  EXPECT_STREQ(keys_seen[0].text, "A");
  EXPECT_EQ(keys_seen[0].symbol, 'a');
  EXPECT_EQ(keys_seen[0].scancode, SDL_SCANCODE_A);
  EXPECT_EQ(keys_seen[0].modifiers, unsigned{plt_shift});
  EXPECT_EQ(keys_seen[1].repeat, 1);
  EXPECT_EQ(keys_seen[1].modifiers, unsigned{plt_shift | plt_caps_lock});
  EXPECT_STREQ(keys_seen[2].text, "") << "the text of another key is not this one's";
  EXPECT_EQ(keys_seen[2].modifiers, unsigned{plt_control | plt_alt});
  EXPECT_EQ(keys_seen[3].symbol, 0);
  EXPECT_STREQ(keys_seen[3].text, "\xC3\xA9");
  EXPECT_EQ(key_frames, 1);
  EXPECT_EQ(return_hit, 0) << "with a handler the flags are its business";
}

// A slow frame finds all of them waiting. T is Tab, R Return, E Escape, P a press of the mouse.
TEST_F(WindowFrame, AnInputThatMovesTheFocusLeavesTheOthersTheirs) {
  static std::string seen;
  mnw_keys.event = [](const PLT_key_event& key) {
    if (key.down) seen += static_cast<char>(key.symbol);
  };
  const std::map<char, int> symbols = {{'T', SDLK_TAB}, {'R', SDLK_RETURN}, {'E', SDLK_ESCAPE}};
  for (const std::string wanted :
       {"ab", "PP", "ab|T|cd|P|e", "TT|a|RREb|P", "P|a|P|T", "a|RP", "ERT|P"}) {
    for (const char c : wanted) {
      if (c == '|') continue;
      if (c == 'P') push_button(400, 300, true);
      if (c != 'P') push_key(symbols.contains(c) ? symbols.at(c) : c);
      c == 'P' ? push_button(400, 300, false) : push_key('z', false);
    }
    std::string frames;
    for (size_t i = 0; i <= wanted.size(); ++i) {
      seen.clear();
      MACIBM_event_proc();
      for (const auto& [letter, symbol] : symbols)
        std::replace(seen.begin(), seen.end(), static_cast<char>(symbol), letter);
      if (mnw.mouse_clicked) seen += 'P';
      if (!seen.empty()) frames += (frames.empty() ? "" : "|") + seen;
    }
    EXPECT_EQ(frames, std::regex_replace(wanted, std::regex("PP"), "P")) << "two presses are one";
  }
}

TEST_F(WindowFrame, ClosingTheWindowQuitsOrClosesTheDialog) {
  // The end of the session, or else the close button; and whether the program ends.
  const std::tuple<int, bool, int> rows[] = {
      {win_main, false, 1}, {win_prefs, false, 0}, {win_abort_alert, true, 1}};
  for (const auto& [window, quit, done] : rows) {
    SCOPED_TRACE(window);
    app_done = 0;
    MACIBM_startwind(window, 0);
    if (quit) {
      SDL_Event event = {};
      event.type = SDL_QUIT;
      SDL_PushEvent(&event);
    } else {
      push_window_event(SDL_WINDOWEVENT_CLOSE);
    }
    MACIBM_event_proc();
    EXPECT_EQ(mnw.win_id, win_main);
    EXPECT_EQ(mnw.modal_up, 0);
    EXPECT_EQ(app_done, done);
    EXPECT_EQ(page_calls, window == win_main ? 1 : 0) << "a dialog's loop comes back first";
    page_calls = 0;
  }
}

int times_shown = 0;
void (*real_swap)() = nullptr;

void count_shown() {
  times_shown = 0;
  real_swap = PLT_swap_hook;
  PLT_swap_hook = [] {
    ++times_shown;
    real_swap();
  };
}

// A page whose every picture is another one.
void draw_another() {
  static int step = 0;
  OGL_fillrect(12, 1, static_cast<float>(++step % 500), 100, 10, 10);
}

TEST_F(WindowFrame, APageWithWorkRunsFasterThanThePictureIsShown) {
  count_shown();
  page_body = [] {
    draw_another();
    frame_soon = frame_at_once;
  };
  const auto run = [](bool input) {
    const auto reset = [input] {
      if (input) push_motion(5, 5);
      times_shown = page_calls = 0;
    };
    run_until(480, reset, [] { return times_shown >= 3 && page_calls > 2 * times_shown; });
  };
  run(true);
  EXPECT_LE(times_shown, 31) << "sixty times a second after an input";
  EXPECT_GE(times_shown, 3);
  EXPECT_GT(page_calls, 2 * times_shown) << "frames between are not painted";
  SDL_Delay(50);
  run(false);
  EXPECT_LE(times_shown, 12) << "twenty times a second for work";
  EXPECT_GE(times_shown, 3);
  const int shown = times_shown;
  push_button(5, 5, true);
  MACIBM_event_proc();
  EXPECT_EQ(times_shown, shown + 1);
}

TEST_F(WindowFrame, APictureIsShownWhenItDiffers) {
  float x = 300;
  page_body = [&x] { OGL_fillrect(12, 1, x, 300, 10, 10); };
  run_for(300);
  count_shown();
  const std::tuple<const char*, std::function<void()>, int> rows[] = {
      {"nothing happens", [] {}, 0},
      {"the pointer moves where nothing is", [] { push_motion(400, 200); }, 0},
      {"a key that nobody wants", [] { push_key(SDLK_F5); }, 0},
      {"a click where nothing is", [] { push_button(400, 200, true); }, 0},
      {"it is let go", [] { push_button(400, 200, false); }, 0},
      {"a rectangle moves", [&x] { x = 301; }, 1},
      {"the pointer comes upon a face", [] { push_motion(50, 578); }, 1},
      {"the window was covered", [] { push_window_event(SDL_WINDOWEVENT_EXPOSED); }, 1},
      {"and nothing since", [] {}, 0},
  };
  for (const auto& [label, event, shown] : rows) {
    times_shown = 0;
    event();
    for (int i = 0; i < 500 && times_shown < shown; ++i)
      MACIBM_event_proc();
    run_for(300);  // longer than the longest pause between two looks
    EXPECT_EQ(times_shown, shown) << label;
  }
}

TEST_F(WindowFrame, AnIdlePageIsStillCalled) {
  const struct {
    const char* label;
    int least, most;
    std::function<void()> body;
  } rows[] = {
      {"ten times a second is enough", 4, 12, nullptr},
      {"waiting for an answer is no reason to spin", 12, 40, [] { frame_soon = frame_in_a_tick; }},
  };
  run_for(700);
  for (const auto& row : rows) {
    page_body = row.body;
    run_for(20);
    run_until(
        500, [] { page_calls = 0; }, [&row] { return page_calls >= row.least; });
    EXPECT_GE(page_calls, row.least) << row.label;
    EXPECT_LE(page_calls, row.most) << row.label;
  }
}

// One that a page opens in a frame too soon to be shown is seen, and not what is drawn behind it.
TEST_F(WindowFrame, ADialogFromAFrameThatIsNotShownIsSeen) {
  constexpr int marker = 102, other = 101;
  colr.assign(marker, 1, 0, 1);
  colr.assign(other, 0, 1, 0);
  MACIBM_event_proc();
  std::vector<unsigned char> in_dialog;
  page_body = [&] {
    frame_soon = frame_at_once;
    if (!in_dialog.empty()) return;
    OGL_fillrect(other, 1, 0, 0, 800, 600);
    MACIBM_startwind(win_abort_alert, 0);
    in_dialog = next_shown([] {
      OGL_fillrect(marker, 1, 0, 0, 700, 206);
      MACIBM_event_proc();
    });
    MACIBM_startwind(win_main, 0);
    OGL_fillrect(other, 1, 0, 0, 800, 600);
  };
  MACIBM_event_proc();  // at once behind the one before
  ASSERT_FALSE(in_dialog.empty()) << "the dialog was not shown";
  const size_t middle = (size_t{300} * 800 + 400) * 3;
  EXPECT_EQ(in_dialog[middle], 255);
  EXPECT_EQ(in_dialog[middle + 1], 0);
  count_shown();
  const auto end = clock_type::now() + std::chrono::seconds(10);
  while (!times_shown && clock_type::now() < end)
    MACIBM_event_proc();
  EXPECT_EQ(times_shown, 1) << "the page is seen again";
}

void check_wake() {
  std::thread other([] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    PLT_wake();
  });
  EXPECT_LT(milliseconds_of([] { PLT_wait_event(5000); }), 2000);
  other.join();
  PLT_event event;
  while (PLT_next_event(&event))
    EXPECT_EQ(event.kind, plt_woken);
  // One that comes before the wait is not lost, and many are one.
  for (int i = 0; i < 100000; ++i)
    PLT_wake();
  EXPECT_LT(milliseconds_of([] { PLT_wait_event(5000); }), 2000);
  int woken = 0;
  while (PLT_next_event(&event))
    ++woken;
  EXPECT_LE(woken, 1);
  EXPECT_GE(milliseconds_of([] { PLT_wait_event(30); }), 25) << "nothing is left over";
}

TEST_F(WindowFrame, AWakeUpEndsTheWait) {
  check_wake();
}

TEST(WindowNone, AWakeUpEndsTheWaitWithoutADisplayToo) {
  check_wake();
}

// An idle page does not sleep on while a worker's task waits to be taken.
TEST_F(WindowFrame, AFinishedTaskEndsTheWait) {
  struct short_task : UTL_work_task {
    void do_it() override { SDL_Delay(20); }
    int check_error(std::string&) override { return 0; }
  } task;
  UTL_worker_threads pool(1, 1);
  pool.enqueue_task(&task);
  EXPECT_LT(milliseconds_of([] { PLT_wait_event(5000); }), 2000);
  EXPECT_EQ(pool.wait_retired_tasks(), &task);
}

TEST_F(WindowFrame, EachKindOfMissingTextureIsToldOnce) {
  const std::pair<tex_fail_mode, const char*> rows[] = {
      {tex_fail_scene, "Some scenery textures could not be loaded."},
      {tex_fail_plane, "Some textures for the aircraft you selected could not be loaded."},
      {tex_fail_installed, "Some textures could not be loaded."},
  };
  const pressed_return reader;
  for (const auto& [mode, told] : rows) {
    for (const char* const name : {".png", " too.png"})
      tman.load_texture(mode, 0, tex_rgb, tex_load_now, std::to_string(mode) + name);
    const std::string log = log_of([] {
      for (int frame = 0; frame < 3; ++frame)
        MACIBM_event_proc();
    });
    const size_t first = log.find(told);
    EXPECT_NE(first, log.npos) << log;
    EXPECT_EQ(log.find("could not be loaded", first + std::strlen(told)), log.npos) << log;
  }
}

// A thread that loads draws on nothing, and what it makes is there for the window.
TEST_F(WindowFrame, ALoaderSharesTheWindowsTextures) {
  SDL_Window* const window = SDL_GL_GetCurrentWindow();
  void* const loader = PLT_make_loader_context();
  ASSERT_NE(loader, nullptr) << PLT_window_error();
  EXPECT_EQ(SDL_GL_GetCurrentWindow(), window);
  unsigned made = 0;
  std::thread([&] {
    EXPECT_TRUE(PLT_bind_loader_context(loader));
    glGenTextures(1, &made);
    glBindTexture(GL_TEXTURE_2D, made);
    glFinish();
    SDL_GL_MakeCurrent(nullptr, nullptr);
  }).join();
  EXPECT_TRUE(glIsTexture(made));
  EXPECT_FALSE(PLT_bind_loader_context(nullptr));
  glDeleteTextures(1, &made);
}

}  // namespace
