// The way from the window library's events to the widgets, through a real window: typing, a popup
// list, and the browser from the keyboard.

#include <sys/stat.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "corekit/GenC/hl_init.h"
#include "corekit/GenC/hl_mnw.h"
#include "corekit/OOPS_cpp/butn.h"
#include "corekit/OOPS_cpp/butn_value.h"
#include "corekit/OOPS_cpp/keys.h"
#include "corekit/Platform/PLT_clipboard.h"
#include "corekit/Platform/PLT_gl.h"
#include "corekit/Platform/PLT_system.h"
#include "tests/unit/window_fixture.h"

namespace {

using steps = std::vector<std::function<void()>>;

// One step after each picture that is shown, until all are done; a dialog that then does not end is
// ended by the program's end.
steps to_do;
size_t next_step;
void (*real_swap_hook)();

void swap_and_step() {
  constexpr size_t patience = 200;
  real_swap_hook();
  if (next_step < to_do.size()) to_do[next_step]();
  if (++next_step > to_do.size() + patience) app_done = 1;
}

void key(int symbol, const char* text = "", int modifiers = 0) {
  push_key(symbol, true, 0, modifiers);
  if (*text) push_text(text);
  push_key(symbol, false, 0, modifiers);
}

class EntryWindow : public window_fixture {
 protected:
  void SetUp() override {
    window_fixture::SetUp();
    keys = keys_class();
    keys.start();
    next_step = 0;
    real_swap_hook = PLT_swap_hook;
    PLT_swap_hook = swap_and_step;
  }
  void TearDown() override {
    app_done = 0;
    PLT_swap_hook = real_swap_hook;
    window_fixture::TearDown();
  }

  // Frames of a page until all steps are done and have had their effect.
  static void run(steps list) {
    to_do = std::move(list);
    next_step = 0;
    while (next_step < to_do.size() + 2 && !app_done)
      MACIBM_event_proc();
  }
  // A press at a place of the main window, in its units.
  static void click(int x, int y) {
    push_motion(x, 600 - y);
    push_button(x, 600 - y, true);
    push_button(x, 600 - y, false);
  }
};

}  // namespace

TEST_F(EntryWindow, TypingReachesTheField) {
  std::string text = "abc";
  page_body = [&] { BTN_enterstring(300, 300, &text, 40, "", 200, 0); };
  run({[] { key('x', "x"); }, [] { click(490, 304); },
       [] {
         key('d', "d");
         key(SDLK_e, "\xC3\xA9", KMOD_RALT);
         key(SDLK_5, "\xE2\x82\xAC", KMOD_RALT);
         key('q', "Q", KMOD_SHIFT);
       }});
  EXPECT_EQ(text, "abcd\xE9Q") << "not before the field has the focus, nor what has no byte";
  run({[] {
    key('a', "", KMOD_CTRL);
    key('x', "", KMOD_CTRL);
    key('v', "", KMOD_CTRL);
    key(SDLK_LEFT);
    key(SDLK_BACKSPACE);
    push_text("\xC3\xBC\xC3\xB6");  // of an input method
  }});
  EXPECT_EQ(text, "abcd\xFC\xF6Q");
  EXPECT_EQ(PLT_clipboard_text(), "abcd\xC3\xA9Q");
}

TEST_F(EntryWindow, PopupListTakesAChoice) {
  int value = 0, changes = 0;
  page_body = [&] { changes += BTN_textlist(300, 300, &value, "Macintosh-Windows-Linux", ""); };
  // Items are 14 high, from 10 below the box's middle down.
  run({[] { click(310, 303); }, [] { click(310, 293 - 35); }});
  EXPECT_EQ(value, 2);
  EXPECT_EQ(changes, 1);
  run({[] { click(310, 303); }, [] { click(600, 500); }});
  EXPECT_EQ(value, 2) << "a press elsewhere closes it";
  run({[] { click(310, 303); }, [] { key(SDLK_ESCAPE); }, [] { click(310, 303); },
       [] { click(310, 293 - 7); }});
  EXPECT_EQ(value, 0);
}

TEST_F(EntryWindow, BrowserByTheKeyboard) {
  std::string folder = testing::TempDir() + "browserXXXXXX";
  folder = std::string(mkdtemp(folder.data())) + '/';
  for (const char* name : {"alpha", "beta", "beta/inner", "gamma"})
    mkdir((folder + name).c_str(), 0755);
  const auto down = [] { key(SDLK_DOWN); };
  const auto enter = [] { key(SDLK_RETURN); };
  const auto escape = [] { key(SDLK_ESCAPE); };
  const auto select = [] { click(800 / 2 + 561 / 2 - 140, 63 + 24); };
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
  } rows[] = {
      {"Escape", {down, escape}, 0, ""},
      {"the window's own button", {[] { push_window_event(SDL_WINDOWEVENT_CLOSE); }}, 0, ""},
      {"this folder", {select}, 1, folder},
      {"the second", {down, down, select}, 1, folder + "beta/"},
      {"by its name", {type("g"), select}, 1, folder + "gamma/"},
      {"Return enters", {down, down, enter, [] {}, select}, 1, folder + "beta/"},
      {"and on", {down, down, enter, down, select}, 1, folder + "beta/inner/"},
      {"a new folder", {new_folder, [] {}, type("new"), enter, [] {}, select}, 1, folder + "new/"},
      {"thought better of", {new_folder, [] {}, type("other"), escape, [] {}, escape}, 0, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    int result = -1;
    std::string path = folder;
    page_body = [&] {
      if (result >= 0) return;
      to_do = row.list;
      to_do.insert(to_do.begin(), [] {});  // the browser's first picture
      next_step = 0;
      return_hit = escape_hit = 1;  // the keys that led here are not the browser's
      result = BTN_opensave(win_file_open, file_type_folder, &path, "Pick", "Select");
    };
    MACIBM_event_proc();
    EXPECT_EQ(result, row.result);
    EXPECT_EQ(path, row.result ? row.path : folder);
    EXPECT_EQ(mnw.win_id, win_main);
    EXPECT_EQ(app_done, 0) << "it did not end";
    app_done = 0;
    settle();
  }
  struct stat made;
  EXPECT_EQ(stat((folder + "new").c_str(), &made), 0);
  EXPECT_NE(stat((folder + "other").c_str(), &made), 0);
  PLT_remove_tree(folder);
}
