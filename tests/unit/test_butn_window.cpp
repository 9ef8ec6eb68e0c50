// The browser from the keyboard, by the window library's events.

#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_value.h"
#include "corekit/widgets/keys.h"
#include "corekit/window/butn_file.h"
#include "corekit/window/hl_alert_draw.h"
#include "tests/unit/test_files_scratch.h"
#include "tests/unit/window_fixture.h"

namespace {

using steps = std::vector<std::function<void()>>;

void key(int symbol, const char* text = "") {
  push_key(symbol, true);
  if (*text) push_text(text);
  push_key(symbol, false);
}

class EntryWindow : public window_fixture {
 protected:
  void SetUp() override {
    window_fixture::SetUp();
    keys = keys_class();
    keys.start();
  }
  // A frame of a page, with a step after each of its dialog's pictures but the first; a dialog that
  // then does not end is ended by the program's end.
  static void frame_with(const steps& list) {
    size_t step = 0;
    step_by_step([] { MACIBM_event_proc(); },
                 [&] {
                   if (step > 0 && step <= list.size()) list[step - 1]();
                   if (++step > list.size() + 200) app_done = 1;
                 });
  }
  // A press at a place of the main window, in its units.
  static void click(int x, int y) {
    push_motion(x, 600 - y);
    push_button(x, 600 - y, true);
    push_button(x, 600 - y, false);
  }
};

}  // namespace

TEST_F(EntryWindow, BrowserByTheKeyboard) {
  const scratch_folder here;
  for (const char* name : {"alpha", "beta/inner", "gamma"})
    here.folder(name);
  here.file("beta/leaf");
  here.file("plain.acf", "I\n900 Version\nNAME of no COMM\n");
  const std::string folder = here.path();
  const auto down = [] { key(SDLK_DOWN); };
  const auto enter = [] { key(SDLK_RETURN); };
  const auto escape = [] { key(SDLK_ESCAPE); };
  const auto select = [] { click(800 / 2 + 561 / 2 - 140, 63 + 24); };
  const auto save = [] { click(800 / 2 + 330 / 2 - 140, 63 + 24); };
  const auto new_folder = [] { click(120 + 70, 63 + 51); };
  const auto type = [](const char* text) {
    return [text] {
      for (const char* c = text; *c; ++c)
        key(*c, std::string(1, *c).c_str());
    };
  };
  const struct {
    const char* label;
    steps list;
    int result;
    std::string path;
    int file_type = file_type_folder;
    int open_save = win_file_open;
    const char* begins_with = "";
  } rows[] = {
      {"the window's own button", {[] { push_window_event(SDL_WINDOWEVENT_CLOSE); }}, 0, ""},
      {"this folder", {select}, 1, folder},
      {"by its name", {type("g"), select}, 1, folder + "gamma/"},
      {"Return enters", {down, down, enter, [] {}, select}, 1, folder + "beta/"},
      {"and on", {down, down, enter, down, select}, 1, folder + "beta/inner/"},
      {"a new folder", {new_folder, [] {}, type("new"), enter, [] {}, select}, 1, folder + "new/"},
      {"thought better of", {new_folder, [] {}, type("other"), escape, [] {}, escape}, 0, ""},
      {"shown without a comment", {type("p"), [] {}, enter}, 1, folder + "plain.acf", 3},
      {"Select enters a folder",
       {type("b"), select, [] {}, type("l"), select},
       1,
       folder + "beta/leaf",
       0},
      {"nothing is selected", {select, escape}, 0, "", 0},
      {"saved under its name", {save}, 1, folder + "fresh", 0, win_file_save, "fresh"},
      {"saved under none", {save, escape}, 0, "", 0, win_file_save},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    int result = -1;
    std::string path = folder + row.begins_with;
    page_body = [&] {
      if (result >= 0) return;
      return_hit = escape_hit = 1;  // the keys that led here are not the browser's
      result = BTN_opensave(row.open_save, row.file_type, &path, "Pick", "Select");
    };
    frame_with(row.list);
    EXPECT_EQ(result, row.result);
    EXPECT_EQ(path, row.result ? row.path : folder);
    EXPECT_EQ(mnw.win_id, win_main);
    EXPECT_EQ(app_done, 0) << "it did not end";
    app_done = 0;
  }
  EXPECT_TRUE(is_there(here / "new"));
  EXPECT_FALSE(is_there(here / "other"));
}

TEST_F(EntryWindow, AQuestionWithThreeAnswers) {
  const auto width = [](int i) { return OGL_string_width(alert_texts.nuke_answers[i]) + 21; };
  // At the right edge, the second below the first, and the third beside the second.
  const auto answer = [&](int i) {
    return [&, i] {
      const int x = static_cast<int>(mnw.x_off + mnw.win_dx) - 20 - 8;
      click(i < 2 ? x : x - width(1) - 10, static_cast<int>(mnw.y_off) + (i == 0 ? 63 : 28));
    };
  };
  const struct {
    const char* label;
    int third;
    steps list;
    int result;
  } rows[] = {
      {"the first", 0, {answer(0)}, 1},
      {"the second", 1, {answer(1)}, 2},
      {"the third", 1, {answer(2)}, 3},
      {"a third that is not offered", 0, {answer(2), answer(1)}, 2},
      {"closed", 1, {[] { push_window_event(SDL_WINDOWEVENT_CLOSE); }}, 3},
  };
  for (const auto& row : rows) {
    int result = -1;
    page_body = [&] {
      if (result >= 0) return;
      result = MACIBM_nuke_alert("to be or not", row.third);
    };
    frame_with(row.list);
    EXPECT_EQ(result, row.result) << row.label;
    EXPECT_EQ(mnw.win_id, win_main);
    EXPECT_EQ(app_done, 0) << "it did not end";
    app_done = 0;
  }
}
