// The wizard's modal questions: every answer, and an alert above.

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
