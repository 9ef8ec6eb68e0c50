// The drawn form of an alert, and the question with three answers.

#include <cstdlib>
#include <thread>

#include "corekit/GenC/hl_alert.h"
#include "corekit/GenC/hl_init.h"
#include "corekit/GenC/hl_mnw.h"
#include "corekit/GenH/hl_types.h"
#include "corekit/OOPS_cpp/oglp.h"
#include "corekit/Platform/PLT_gl.h"
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

// The rows [from, to) of the alert in two pictures of the window.
bool same_rows(const std::vector<unsigned char>& a, const std::vector<unsigned char>& b, int from,
               int to) {
  const size_t row = 800 * 3;
  return std::equal(a.begin() + (alert_y + from) * row, a.begin() + (alert_y + to) * row,
                    b.begin() + (alert_y + from) * row);
}

TEST_F(WindowAlert, ReturnOrItsButtonLeavesIt) {
  const struct {
    const char* label;
    std::function<void()> act;
  } rows[] = {
      {"return", [] { push_key(SDLK_RETURN); }},
      {"enter", [] { push_key(SDLK_KP_ENTER); }},
      {"its button", [] { click(210, 18); }},
      {"the window's close button", [] { push_window_event(SDL_WINDOWEVENT_CLOSE); }},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    MACIBM_startwind(win_main, 0);
    mnw.mouse_x = 123;
    mnw.mouse_y = 45;
    // What does not leave it comes first.
    click(30, 120);
    push_key(SDLK_ESCAPE);
    push_key(SDLK_a);
    page_calls = 0;
    std::thread later([&row] {
      SDL_Delay(60);
      row.act();
    });
    const Uint32 start = SDL_GetTicks();
    const std::string log = log_of([] {
      __MACIBM_alert(win_main, "line one", "line two", "line three", "line four", t_alert,
                     "tests/alert", 99);
    });
    later.join();
    EXPECT_GE(SDL_GetTicks() - start, 55u) << "something else left it";
    EXPECT_EQ(log, "\nline one\nline two\nline three\nline four\n(tests/alert line 99)\n");
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
  bool shown = false;
  push_key(SDLK_RETURN);
  const auto picture = next_shown([] {
    __MACIBM_alert(win_prefs, "over the settings", "", "", "", t_alert, "tests/alert", 2);
  });
  shown = !picture.empty();
  EXPECT_TRUE(shown);
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
  const auto in_begin = picture_of(lines);
  EXPECT_EQ(in_begin, sane);
  OGL_scissors(0, 0, 1, 1);
  OGL_glow_colors();
  glDisable(GL_TEXTURE_2D);
  glBindTexture(GL_TEXTURE_2D, 0);
  const auto messy = picture_of(lines);
  EXPECT_EQ(messy, sane);
  glNewList(1, GL_COMPILE);
  const auto in_list = picture_of(lines);
  EXPECT_EQ(in_list, sane);
}

TEST_F(WindowAlert, ALongTextStaysInItsPlace) {
  std::string text;
  while (text.size() < 5000)
    text += "all work and no play ";
  const std::string only[4] = {text, "", "", ""}, before[4] = {text, "x", "", ""};
  const std::string last[4] = {"", "", "", text}, none[4] = {" ", "", "", ""};
  const std::string below[4] = {" ", "x", "", ""};
  const auto empty = picture_of(none);
  EXPECT_TRUE(same_rows(picture_of(only), empty, 0, 36)) << "over the button";
  EXPECT_TRUE(same_rows(picture_of(only), empty, 218, 250)) << "over the title";
  EXPECT_FALSE(same_rows(picture_of(only), empty, 60, 100)) << "room that nobody uses is used";
  EXPECT_TRUE(same_rows(picture_of(before), picture_of(below), 0, 171)) << "over the second line";
  EXPECT_TRUE(same_rows(picture_of(last), empty, 0, 36)) << "the last line";
  // The log has all of it.
  const std::string log = log_of([&] { picture_of(only); });
  EXPECT_NE(log.find(text), std::string::npos);
}

TEST_F(WindowAlert, AnEmptyOneIsLoggedAndNotShown) {
  const std::string lines[4];
  std::vector<unsigned char> picture;
  const std::string log = log_of([&] { picture = picture_of(lines); });
  EXPECT_TRUE(picture.empty());
  EXPECT_EQ(log, "\n\n\n\n\n(tests/alert line 1)\n");
}

TEST_F(WindowAlert, AFatalOneShowsItsSourceAndEndsTheProgram) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto fatal = [] {
    push_key(SDLK_RETURN);
    __MACIBM_alert(win_main, "this is the end", "", "", "", t_exit, "tests/alert", 3);
  };
  EXPECT_EXIT(fatal(), testing::ExitedWithCode(1), "this is the end");
}

TEST_F(WindowAlert, TheLanguageChooserSetsTheLanguage) {
  mnw.language = 0;
  std::thread user([] {
    SDL_Delay(250);
    click(185, 163);  // the second of three
    SDL_Delay(250);
    click(185, 143);  // the third
    SDL_Delay(250);
    click(210, 18);
  });
  const std::string log =
      log_of([] { __MACIBM_alert(win_none, "-", "-", "-", "-", 0, "tests/alert", 4); });
  user.join();
  EXPECT_EQ(mnw.language, 2);
  EXPECT_EQ(log, "") << "a choice is no alert";
  EXPECT_EQ(mnw.win_id, win_none);
}

TEST_F(WindowAlert, TheQuestionHasTwoOrThreeAnswers) {
  // Buttons of a window of 300 by 166 whose lower left is at (250, 217): the first at its right
  // edge at height 60, the second below it at 25, the third left of that.
  const auto third_x = [] {
    return 300 - 20 - (OGL_string_width("Do not save") + 21) - 10 -
           (OGL_string_width("Cancel") + 21) / 2;
  };
  const struct {
    const char* label;
    int x, y;
    int offer_third;
    int answer;
  } rows[] = {
      {"first", 265, 60, 0, 1},
      {"second", 265, 25, 0, 2},
      {"third", third_x(), 25, 1, 3},
      {"third, not offered", third_x(), 25, 0, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    std::thread user([&row] {
      SDL_Delay(100);
      push_button(250 + row.x, 600 - (217 + row.y), true);
      SDL_Delay(400);
      if (row.answer == 0) push_button(250 + 265, 600 - (217 + 60), true);
    });
    EXPECT_EQ(MACIBM_nuke_alert("page.txt", row.offer_third), row.answer ? row.answer : 1);
    user.join();
    EXPECT_EQ(mnw.win_id, win_main);
    settle();
  }
  push_window_event(SDL_WINDOWEVENT_CLOSE);
  EXPECT_EQ(MACIBM_nuke_alert("page.txt", 1), 3) << "closed without an answer";
  EXPECT_EQ(app_done, 0);
}

TEST(WindowNoneAlert, TheQuestionCannotBePut) {
  ASSERT_EQ(ogl_inited, 0);
  EXPECT_EQ(MACIBM_nuke_alert("page.txt", 0), 3);
}

}  // namespace
