// The wizard's modal questions: every answer, long texts that keep to their place, an alert above.

#include "Installer-f/engine/utils_select.h"
#include "Installer-f/wizard/main_ask.h"
#include "corekit/base/exce.h"
#include "tests/unit/window_fixture.h"

#include <thread>

namespace {

using picture_type = std::vector<unsigned char>;

// Lower left corners of the two windows.
constexpr int ask_x = 50, select_y = 227, abort_y = 197;

class WindowAsk : public window_fixture {
 protected:
  // `question` with `each_frame` done behind each picture; a question that stays is closed.
  template <typename T>
  static int ask(const T& question, const std::function<void()>& each_frame) {
    int frames = 0, answer = 0;
    step_by_step([&] { answer = question(); },
                 [&] {
                   each_frame();
                   if (++frames > 40) push_window_event(SDL_WINDOWEVENT_CLOSE);
                 });
    return answer;
  }

  static void click_select(int x, int y) { push_button(ask_x + x, 600 - (select_y + y), true); }
  static void click_abort(int x, int y) { push_button(ask_x + x, 600 - (abort_y + y), true); }
  // The first picture of a question, which a click then answers.
  static picture_type picture_of(const std::function<int()>& question, void (*click)(int, int),
                                 int x, int y) {
    picture_type first;
    push_motion(1, 1);  // off what would be lit under it
    MACIBM_event_proc();
    ask(question, [&] {
      if (first.empty()) first = last_shown();
      click(x, y);
    });
    return first;
  }
  static picture_type picture_of_select(const std::string& path, int gone) {
    return picture_of([&] { return select_alert(path, gone); }, click_select, 584, 28);
  }
  static picture_type picture_of_abort(const std::string& text) {
    return picture_of([&] { return abort_alert(text, "Stop", "what is done.", "Continue", "."); },
                      click_abort, 96, 31);
  }
};

TEST_F(WindowAsk, EveryAnswerByTheMouse) {
  const struct {
    const char* label;
    int x, y;  // 0, 0 for the window's own close button
    int answer;
  } rows[] = {
      {"this", 96, 53, answer_overwrite},
      {"keep", 96, 28, answer_keep},
      {"all of the folder", 308, 53, answer_overwrite_folder},
      {"keep all of the folder", 308, 28, answer_keep_folder},
      {"cancel", 584, 28, answer_cancel_install},
      {"left edge of the first", 17, 53, answer_overwrite},
      {"right edge of the fourth", 437, 53, answer_overwrite_folder},
      {"beside them", 584, 53, 0},
      {"the close box, which this window has not", 12, 138, 0},
      {"closed", 0, 0, answer_cancel_install},
  };
  for (const int gone : {0, 1}) {
    for (const auto& row : rows) {
      SCOPED_TRACE(std::string(row.label) + (gone ? ", gone" : ""));
      int frames = 0;
      const auto question = [&] { return select_alert("/a/Skyvane 9/Resources/a.txt", gone); };
      const int answer = ask(question, [&] {
        if (++frames == 1) {
          row.x ? click_select(row.x, row.y) : push_window_event(SDL_WINDOWEVENT_CLOSE);
        }
        if (row.answer == 0 && frames == 4) click_select(96, 28);
      });
      EXPECT_EQ(answer, row.answer ? row.answer : answer_keep);
      EXPECT_EQ(mnw.win_id, win_main);
      if (row.answer) {
        EXPECT_LT(frames, 4);
      } else {
        EXPECT_GE(frames, 4) << "it answers nothing";
      }
    }
  }
}

// Whatever closes it goes on: only the first button gives a job up.
TEST_F(WindowAsk, TheOtherQuestionHasTwoAnswersAndClosingItGoesOn) {
  const struct {
    const char* label;
    std::function<void()> act;
    int answer;
  } rows[] = {{"first", [] { click_abort(96, 56); }, 1},
              {"second", [] { click_abort(96, 31); }, 0},
              {"the close box", [] { click_abort(12, 198); }, 0},
              {"Return", [] { push_key(SDLK_RETURN); }, 0},
              {"Escape", [] { push_key(SDLK_ESCAPE); }, 0},
              {"closed", [] { push_window_event(SDL_WINDOWEVENT_CLOSE); }, 0}};
  for (const auto& row : rows) {
    int frames = 0;
    const auto question = [] { return abort_alert("Stop?", "Stop", "it.", "Continue", "it."); };
    EXPECT_EQ(ask(question,
                  [&] {
                    ++frames;
                    row.act();
                  }),
              row.answer)
        << row.label;
    EXPECT_LT(frames, 5) << row.label;
    EXPECT_EQ(mnw.win_id, win_main);
  }
}

TEST_F(WindowAsk, ALongPathMovesTheLinesAndNothingElse) {
  const std::string folder = "/a folder of some length";
  std::string path = folder;
  while (path.size() + folder.size() < 499)
    path += folder;
  const std::string unbroken(499, 'm');
  const auto cut_to = [&](int lines) {
    // A path that needs exactly so many lines of 660 units.
    std::string part;
    while (OGL_string_width(part) < 660 * lines - 200)
      part += part.size() % 30 == 0 ? '/' : 'e';
    return part;
  };
  for (const int gone : {0, 1}) {
    const picture_type one = picture_of_select("/a/b", gone);
    const struct {
      std::string label, path;
      int lines;
      int below_y;  // the line below it
    } rows[] = {
        {"two lines", cut_to(2), 2, 80},
        {"three lines", cut_to(3), 3, 72},
        {"more, of which both ends are shown", path, 3, 72},
        {"no place to break it", unbroken, 3, 72},
    };
    for (const auto& row : rows) {
      SCOPED_TRACE(std::string(row.label) + (gone ? ", gone" : ""));
      const picture_type picture = picture_of_select(row.path, gone);
      ASSERT_EQ(picture.size(), one.size());
      EXPECT_TRUE(same_rows(picture, one, 0, select_y + 66)) << "over the buttons";
      EXPECT_TRUE(same_rows(picture, one, select_y + 122, 600)) << "over the title";
      const int top = row.below_y + 10 * (row.lines + 1);
      EXPECT_FALSE(same_rows(picture, one, select_y + top - 4, select_y + top + 6));
      // The lines above and below read as they always do, at their new places.
      // What lies behind the window is a picture.
      const auto band = [&](const picture_type& from, int y) {
        picture_type rows_of_window;
        for (int at = select_y + y - 1; at < select_y + y + 5; ++at) {
          const auto row_start = from.begin() + at * 800 * 3;
          rows_of_window.insert(rows_of_window.end(), row_start + 60 * 3, row_start + 740 * 3);
        }
        return rows_of_window;
      };
      EXPECT_TRUE(band(picture, row.below_y) == band(one, 80));
      EXPECT_TRUE(band(picture, top) == band(one, 100));
      EXPECT_FALSE(band(picture, row.below_y + 10) == band(one, 100));
    }
  }
}

TEST_F(WindowAsk, ALongQuestionStaysAboveItsButtons) {
  const picture_type plain = picture_of_abort("Stop?");
  std::string lines, text;
  for (int i = 0; i < 10; ++i)
    lines += "A line\n";
  while (text.size() < 5000)
    text += "all work and no play ";
  for (const std::string& question : {lines, text, std::string(5000, 'm'), std::string(50, '\n')}) {
    const picture_type picture = picture_of_abort(question);
    ASSERT_EQ(picture.size(), plain.size());
    EXPECT_TRUE(same_rows(picture, plain, 0, abort_y + 66)) << "over the buttons";
    EXPECT_TRUE(same_rows(picture, plain, abort_y + 183, 600)) << "over the title";
  }
}

// A failure that a thread reports while a question is up waits for the main window; one that the
// main thread itself raises shows above the question, which then stands as before.
TEST_F(WindowAsk, AnAlertAboveAQuestionGoesBackToIt) {
  static int frames;
  frames = 0;
  const int alerts_before = alerts_shown;
  mnw_keys.frame = [] {
    if (mnw.win_id != win_select_alert) return;
    if (++frames == 2) {
      std::thread([] {
        __MACIBM_alert(win_main, "from a thread", "", "", "", t_alert, "tests/ask", 1);
      }).join();
    }
    if (frames == 4) {
      push_key(SDLK_RETURN);
      __MACIBM_alert(win_select_alert, "from above", "", "", "", t_alert, "tests/ask", 2);
      EXPECT_EQ(mnw.win_id, win_select_alert);
    }
  };
  picture_type before, after;
  int alerts_then = 0;
  const int answer = ask([] { return select_alert("/a/Skyvane 9/a.txt", 0); },
                         [&] {
                           if (mnw.win_id != win_select_alert) return;
                           if (frames < 4) before = last_shown();
                           if (frames < 6) return push_motion(1, 1);  // for the next picture
                           if (!after.empty()) return;  // the press draws half a frame
                           after = last_shown();
                           alerts_then = alerts_shown;
                           click_select(96, 28);
                         });
  mnw_keys = key_handlers();
  EXPECT_EQ(answer, answer_keep);
  EXPECT_EQ(alerts_then, alerts_before + 1) << "that of the thread waits";
  EXPECT_TRUE(before == after);
  const pressed_return user;
  for (int i = 0; i < 3 && alerts_shown == alerts_then; ++i)
    MACIBM_event_proc();
  EXPECT_EQ(alerts_shown, alerts_then + 1);
}

}  // namespace
