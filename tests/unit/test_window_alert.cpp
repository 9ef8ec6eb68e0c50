// Alerts: how they end, and at odd moments.

#include <set>
#include <thread>

#include "corekit/base/UTL_translate.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_thread.h"
#include "corekit/files/UTL_translate_load.h"
#include "tests/unit/test_files_scratch.h"
#include "tests/unit/window_fixture.h"

namespace {

constexpr int alert_x = 190, alert_y = 175;  // of the alert's lower left in the window

class WindowAlert : public window_fixture {
 protected:
  static void click(int x, int y) { push_button(alert_x + x, 600 - (alert_y + y), true); }
  // The first picture of an alert with these lines.
  static std::vector<unsigned char> picture_of(const std::string* lines, int type = t_alert) {
    return next_shown([&] {
      push_key(SDLK_RETURN);
      __MACIBM_alert(win_main, lines[0], lines[1], lines[2], lines[3], type, "tests/alert", 1);
    });
  }
};

TEST_F(WindowAlert, ReturnOrItsButtonLeavesIt) {
  const std::pair<const char*, std::function<void()>> rows[] = {
      {"return", [] { push_key(SDLK_RETURN); }},
      {"enter", [] { push_key(SDLK_KP_ENTER); }},
      {"its button", [] { click(210, 18); }},
      {"the window's close button", [] { push_window_event(SDL_WINDOWEVENT_CLOSE); }},
  };
  const std::string first(5000, '1');
  for (const auto& [label, act] : rows) {
    SCOPED_TRACE(label);
    MACIBM_startwind(win_main, 0);
    mnw.mouse_x = 123;
    mnw.mouse_y = 45;
    // What does not leave it comes first.
    click(30, 120);
    push_key(SDLK_ESCAPE);
    push_key(SDLK_a);
    page_calls = 0;
    const Uint32 start = SDL_GetTicks();
    std::thread later([&end = act] {
      SDL_Delay(60);
      end();
    });
    const std::string log = log_of([&first] {
      __MACIBM_alert(win_main, first, "line two", "line three", "line four", t_alert, "tests/alert",
                     99);
    });
    later.join();
    EXPECT_GE(SDL_GetTicks() - start, 55u) << "something else left it";
    EXPECT_EQ(log, "\n" + first + "\nline two\nline three\nline four\n(tests/alert line 99)\n");
    EXPECT_EQ(mnw.win_id, win_main);
    EXPECT_EQ(page_calls, 0);
    EXPECT_EQ(mnw.mouse_clicked, 0) << "nothing below may take the click";
    EXPECT_EQ(return_hit, 0);
    EXPECT_EQ(app_done, 0);
    settle();
  }
}

TEST_F(WindowAlert, ItGoesBackToTheGivenWindowAndMouse) {
  MACIBM_startwind(win_prefs, 0);
  mnw.mouse_x = 123;
  mnw.mouse_y = 45;
  mnw.mouse_clicked = 1;
  return_hit = 1;  // of the frame that raised it: must not take it away unread
  push_key(SDLK_RETURN);
  const auto picture = next_shown([] {
    __MACIBM_alert(win_prefs, "over the settings", "", "", "", t_alert, "tests/alert", 2);
  });
  EXPECT_FALSE(picture.empty());
  EXPECT_EQ(mnw.win_id, win_prefs);
  EXPECT_EQ(mnw.modal_up, 1);
  EXPECT_FLOAT_EQ(mnw.mouse_x, 123);
  EXPECT_FLOAT_EQ(mnw.mouse_y, 45);
  EXPECT_EQ(mnw.mouse_clicked, 0);
}

TEST_F(WindowAlert, ItIsDrawnWhateverStateTheFailureLeft) {
  const std::string lines[4] = {"A failure", "in the midst of drawing", "", ""};
  const auto sane = picture_of(lines);
  glBegin(GL_QUADS);
  EXPECT_EQ(picture_of(lines), sane);
  OGL_scissors(0, 0, 1, 1);
  OGL_glow_colors();
  glDisable(GL_TEXTURE_2D);
  glBindTexture(GL_TEXTURE_2D, 0);
  EXPECT_EQ(picture_of(lines), sane);
  glNewList(1, GL_COMPILE);
  EXPECT_EQ(picture_of(lines), sane);
}

TEST_F(WindowAlert, TheLanguageChooserSetsTheLanguage) {
  mnw.language = 0;
  static int frames;
  frames = 0;
  mnw_keys.frame = [] {
    ++frames;
    if (frames == 3) click(185, 163);  // the second of three
    if (frames == 6) click(185, 143);  // the third
    if (frames == 9) click(210, 18);
  };
  const std::string log =
      log_of([] { __MACIBM_alert(win_none, "-", "-", "-", "-", 0, "tests/alert", 4); });
  EXPECT_EQ(mnw.language, 2);
  EXPECT_EQ(log, "") << "a choice is no alert";
  EXPECT_EQ(mnw.win_id, win_none);
}

using WindowAlertOdd = window_fixture;
using WindowAlertOddDeathTest = window_fixture;

void raise(const std::string& text, int type = t_alert) {
  __MACIBM_alert(win_main, text, "", "", "", type, "tests/odd", 1);
}

TEST_F(WindowAlertOdd, AlertsOfManyThreadsAreShownOneByOne) {
  constexpr int threads = 4, each = 5;
  const int before = alerts_shown;
  static int answered;
  answered = 0;
  const std::string log = log_of([] {
    std::vector<std::thread> pool;
    for (int t = 0; t < threads; ++t) {
      pool.emplace_back([t] {
        for (int i = 0; i < each; ++i)
          raise("alert " + std::to_string(t * each + i) + ".");
      });
    }
    mnw_keys.frame = [] {
      if (mnw.win_id != win_alert) return;
      ++answered;
      return_hit = 1;
    };
    for (std::thread& thread : pool)
      thread.join();
    for (int i = 0; i < 3; ++i)
      MACIBM_event_proc();
    mnw_keys = key_handlers();
  });
  EXPECT_EQ(alerts_shown - before, threads * each);
  EXPECT_EQ(answered, threads * each);
  for (int i = 0; i < threads * each; ++i) {
    const std::string line = "\nalert " + std::to_string(i) + ".\n";
    const size_t at = log.find(line);
    ASSERT_NE(at, std::string::npos) << line;
    EXPECT_EQ(log.find(line, at + 1), std::string::npos) << "twice: " << line;
  }
  EXPECT_EQ(mnw.win_id, win_main);
}

TEST_F(WindowAlertOddDeathTest, AFatalOneOfAThreadEndsTheProgramWhenItHasBeenShown) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto fatal = [] {
    std::thread([] {
      raise("the worker's end", t_exit);
      std::fputs("the worker goes on\n", stderr);
      std::_Exit(2);
    }).join();
    std::fputs("the main thread goes on\n", stderr);
    mnw_keys.frame = [] { return_hit = mnw.win_id == win_alert; };
    for (int i = 0; i < 5; ++i)
      MACIBM_event_proc();
    std::_Exit(0);
  };
  EXPECT_EXIT(fatal(), testing::ExitedWithCode(1), "the main thread goes on\n(.|\n)*the worker's");
}

TEST_F(WindowAlertOddDeathTest, OneInsideAnotherEndsTheProgram) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  static std::string inner;
  for (const size_t size : {size_t{5}, size_t{499}, size_t{5000}}) {
    inner = std::string(size, 'i');
    const auto nested = [] {
      mnw_keys.frame = [] {
        mnw_keys.frame = nullptr;
        raise(inner);
      };
      raise("outer");
      std::_Exit(0);
    };
    EXPECT_EXIT(nested(), testing::ExitedWithCode(1), "outer\n(.|\n)*iiiii") << size;
  }
}

// The plain form joins two lines and takes 499 characters of them.
TEST(WindowNoneAlertDeathTest, BeforeTheWindowIsThere) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  ASSERT_EQ(ogl_inited, 0);
  const auto lines = [](size_t first, size_t third) {
    const std::string log = log_of([&] {
      __MACIBM_alert(win_main, std::string(first, 'a'), "b", std::string(third, 'c'), "d", t_alert,
                     "tests/odd", 2);
    });
    EXPECT_TRUE(str_holds(log, "\nb\n"));
    EXPECT_TRUE(str_holds(log, "\nd\n(tests/odd line 2)\n"));
  };
  lines(1, 1);
  lines(497, 497);
  EXPECT_EXIT(lines(498, 1), testing::ExitedWithCode(1), "String too long!");
  EXPECT_EXIT(lines(1, 5000), testing::ExitedWithCode(1), "String too long!");
}

TEST(WindowNoneAlert, LiteralsAreTranslatedWhenTheyAreShown) {
  const scratch_folder here;
  UTL_translate_load(here.file("words.txt",
                               "I\n900 version\nTRANSLATION\nSTRING Bread====pa\xF1 \xE1\n"
                               "STRING made====no\n"));
  testing::internal::CaptureStderr();
  const std::string log = log_of([] {
    __MACIBM_alert(0, "Bread", std::string("made"), "", "", t_alert, "tests/odd", 3);
    // A thread's alert comes as a record, in English.
    exce_class("", "", "Bread", "/Brot\xC3\xA9", "tests/odd", 4, t_alert).Report();
  });
  UTL_translate_clear();
  const std::string shown = testing::internal::GetCapturedStderr();
  EXPECT_TRUE(str_holds(shown, "pañ á made\n")) << shown;
  EXPECT_TRUE(str_holds(shown, "pañ á /Broté\n")) << shown;
  EXPECT_TRUE(str_holds(log, "\nBread\nmade\n")) << log;
  EXPECT_TRUE(str_holds(log, "\nBread\n/Broté\n")) << log;
}

}  // namespace
