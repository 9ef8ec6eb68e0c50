// The text field, frame by frame: focus, keys, clipboard, limits, what is drawn.

#include <algorithm>
#include <cstring>

#include "corekit/Platform/PLT_clipboard.h"
#include "corekit/widgets/butn_text.h"
#include "corekit/window/butn_file.h"
#include "tests/unit/value_fixture.h"

namespace {

class TextField : public value_fixture {
 protected:
  std::string text = "hello world", other = "second";
  int limit = 40;
  float dx = 200;

  int draw() {
    return frame([&] {
      const int edit = BTN_enterstring(300, 300, &text, limit, "", dx, 0);
      return edit | BTN_enterstring(300, 250, &other, 40, "", 200, 0) << 1;
    });
  }
  // Focus by the keyboard: all of it selected.
  void focus_first() {
    focus_id = 0;
    draw();
    send(ch_tab, vk_tab);
    draw();
  }
  std::string selected() const {
    int start, end;
    OGLE_GetSelection(BTN_enterstring_ogle, &start, &end);
    return std::to_string(start) + "-" + std::to_string(end);
  }
  void put_caret(int start, int end) {
    focus_first();
    // Between frames the editor has no text to hold a selection against.
    BTN_enterstring_ogle->sel_start = start;
    BTN_enterstring_ogle->sel_end = end;
  }
};

}  // namespace

TEST_F(TextField, FocusAndSelection) {
  focus_first();
  EXPECT_EQ(selected(), "0-11") << "by the keyboard: all of it";
  send(ch_tab, vk_tab);
  draw();
  EXPECT_EQ(selected(), "0-6") << "and of the next";
  type("x");
  EXPECT_EQ(draw(), 2);
  EXPECT_EQ(other, "x");
  send(ch_tab, vk_tab, key_down | key_shift);
  draw();
  // A click puts the caret there. h and e are some units wide.
  const float h = static_cast<float>(OGL_string_width("h"));
  press(300 + h, 304);
  draw();
  EXPECT_EQ(selected(), "1-1");
  move(300 + static_cast<float>(OGL_string_width("hello")), 304);
  draw();
  EXPECT_EQ(selected(), "1-5") << "dragging selects";
  release();
  draw();
  mnw.popup_code = 7;
  press(300, 304);
  draw();
  EXPECT_EQ(selected(), "1-5") << "and so does one under a menu";
  mnw.popup_code = -1;
  focus_id = 0;
  const auto automatic = [&] { return BTN_enterstring(300, 300, &text, 40, "", 200, 1); };
  release();
  frame([&] {
    BTN_window_has_focus();
    return automatic();
  });
  EXPECT_EQ(focus_id, 0) << "a page has claimed the keyboard";
  frame(automatic);
  EXPECT_EQ(focus_id, BTN_identity(300, 300));
  EXPECT_EQ(selected(), "0-11");
  // Another page's field at the same place is another field.
  std::string third = "abc";
  BTN_enterstring_ogle->sel_start = BTN_enterstring_ogle->sel_end = 1;
  frame([&] { return BTN_enterstring(300, 300, &third, 40, "", 200, 1); });
  EXPECT_EQ(selected(), "0-3");
}

TEST_F(TextField, TheMouseSelects) {
  const struct {
    const char *label, *to,
        *dragged_to;  // the press and the drag's end are behind these; null is no drag
    int clicks;
    bool shift;
    const char* selected;
  } rows[] = {
      // from a caret at 3
      {"Shift extends on", "/one/two", nullptr, 1, true, "3-8"},
      {"and back", "/", nullptr, 1, true, "1-3"},
      {"with a drag", "/one/two", "/one/two thr", 1, true, "3-12"},
      {"a word", "/one/t", nullptr, 2, false, "5-8"},
      {"by its first letter", "/o", nullptr, 2, false, "1-4"},
      {"by its last", "/one", nullptr, 2, false, "1-4"},
      {"behind the text", "/one/two three", nullptr, 2, false, "9-14"},
      {"between words", "/one/two ", nullptr, 2, false, "0-14"},
      {"before them", "", nullptr, 2, false, "0-14"},
      {"all", "/one/t", nullptr, 3, false, "0-14"},
      {"all it stays", "/one/t", "/o", 3, false, "0-14"},
      {"by words, on", "/one/t", "/one/two t", 2, false, "5-14"},
      {"and back", "/one/t", "/o", 2, false, "1-8"},
      {"on a gap", "/one/t", "/one/two ", 2, false, "5-9"},
      {"and home again", "/one/t", "/one/tw", 2, false, "5-8"},
      {"Shift goes first", "/one/two", nullptr, 2, true, "3-8"},
  };
  text = "/one/two three";
  const auto behind = [](const char* part) { return 300 + (float)OGL_string_width(part) - 0.5f; };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    put_caret(3, 3);
    draw();
    press(std::max(behind(row.to), 300.0f), 304, row.clicks, row.shift);
    draw();
    draw();  // held at rest
    if (row.dragged_to) {
      move(behind(row.dragged_to), 304);
      draw();
      draw();
    }
    release();
    draw();
    EXPECT_EQ(selected(), row.selected);
  }
  press(300 + (float)OGL_string_width("seco"), 254, 1, true);
  draw();
  EXPECT_EQ(selected(), "4-4") << "into another field Shift has nothing to extend";
  release();
  // A word that reaches beyond the field does not scroll under a hand at rest.
  dx = 60;
  text = "first " + std::string(30, 'W') + " last";
  put_caret(0, 0);
  press(355, 304, 2);
  for (int i = 0; i < 5; ++i)
    draw();
  EXPECT_EQ(selected(), "6-36");
  EXPECT_LT(OGLE_dx, 20);
}

TEST_F(TextField, KeysOfADesktop) {
  const struct {
    const char* label;
    int start, end;
    int ch, vkey, flags;
    const char *text, *selected;
    int edit;
  } rows[] = {
      {"over a selection", 0, 5, 'X', 88, key_shift, "X world", "1-1", 1},
      {"Backspace", 5, 5, ch_back, vk_back, 0, "hell world", "4-4", 1},
      {"Delete", 5, 5, ch_delete, vk_delete, 0, "helloworld", "5-5", 1},
      {"Delete a selection", 0, 6, ch_delete, vk_delete, 0, "world", "0-0", 1},
      {"a word back", 11, 11, 0, vk_back, key_control, "hello ", "6-6", 1},
      {"End", 5, 5, ch_end, vk_end, 0, "hello world", "11-11", 0},
      {"and extending", 0, 0, 0, vk_right, key_control | key_shift, "hello world", "0-5", 0},
      {"all", 3, 3, 0, vk_a, key_control, "hello world", "0-11", 0},
      {"Option types nothing", 3, 3, 0, vk_a, key_option, "hello world", "3-3", 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    text = "hello world";
    put_caret(row.start, row.end);
    send(row.ch, row.vkey, row.flags | key_down);
    EXPECT_EQ(draw(), row.edit);
    EXPECT_EQ(text, row.text);
    EXPECT_EQ(selected(), row.selected);
    send(row.ch, row.vkey, row.flags | key_up);
    EXPECT_EQ(draw(), 0) << "a release does nothing";
  }
}

TEST_F(TextField, Clipboard) {
  put_caret(0, 5);
  send(0, vk_c, key_control | key_down);
  EXPECT_EQ(draw(), 0);
  EXPECT_EQ(PLT_clipboard_text(), "hello");
  send(0, vk_end, key_down);
  send(0, vk_v, key_control | key_down);
  type("!");
  EXPECT_EQ(draw(), 1);
  EXPECT_EQ(text, "hello worldhello!") << "in the order of the keys";
  put_caret(0, 6);
  send(0, vk_x, key_control | key_down);
  EXPECT_EQ(draw(), 1);
  EXPECT_EQ(text, "worldhello!");
  put_caret(3, 3);
  send(0, vk_x, key_control | key_down);
  EXPECT_EQ(draw(), 0) << "nothing selected, nothing cut";
  put_caret(0, 5);
  send(ch_delete, vk_delete, key_shift | key_down);
  send(0, vk_end, key_down);
  send(0, vk_insert, key_shift | key_down);
  draw();
  EXPECT_EQ(text, "hello!world");

  const struct {
    std::string label, clipboard, text;
  } rows[] = {
      {"accents", "\xC3\xA9t\xC3\xA9", "\xE9t\xE9"},
      {"no byte for it", "1\xE2\x82\xAC", "1?"},
      {"lines become one", "one\r\ntwo\n", "one two"},
      {"a blank at the end is no break", "one \ttwo ", "one two "},
      {"control characters go", "a\x1B[1mb\x7F", "a[1mb"},
      {"too long", std::string(100, 'x'), std::string(40, 'x')},
      {"nothing", "", "old"},
  };
  for (const auto& row : rows) {
    text = "old";
    put_caret(0, 3);
    PLT_clipboard_put(row.clipboard);
    send(0, vk_v, key_control | key_down);
    draw();
    EXPECT_EQ(text, row.text) << row.label;
  }
  // Whatever bytes a path has, cut and pasted they are the same.
  const std::string path = "/home/\xC3\xA9\x80\x9F\xFF/x";
  text = path;
  put_caret(0, static_cast<int>(path.size()));
  send(0, vk_x, key_control | key_down);
  send(0, vk_v, key_control | key_down);
  draw();
  EXPECT_EQ(text, path);
}

TEST_F(TextField, KeepsItsLimitAndTheCallersChanges) {
  limit = 5;
  text = "1234";
  focus_first();
  send(ch_end, vk_end);
  type("56");
  draw();
  EXPECT_EQ(text, "12345");
  send(ch_home, vk_home);
  type("0");
  EXPECT_EQ(draw(), 0);
  EXPECT_EQ(text, "12345") << "a full field loses nothing at its end";
  text = "1234567";  // the caller's own
  EXPECT_EQ(draw(), 0);
  EXPECT_EQ(text, "1234567") << "not cut before an edit";
  send(ch_back, vk_back);
  send(ch_end, vk_end);
  send(ch_back, vk_back);
  draw();
  EXPECT_EQ(text, "12345");
  text = "";
  draw();
  send(ch_back, vk_back);
  send(ch_delete, vk_delete);
  EXPECT_EQ(draw(), 0);
}

TEST_F(TextField, ScrollsToTheCaret) {
  dx = 60;
  text = std::string(30, 'W');
  focus_first();
  EXPECT_EQ(OGLE_dx, 0);
  send(ch_end, vk_end);
  draw();
  EXPECT_FLOAT_EQ(OGLE_dx, static_cast<float>(OGL_string_width(text)) - 60);
  const picture_map map([&] { draw(); });
  EXPECT_EQ(map.times(290, 304), 0);
  EXPECT_EQ(map.times(375, 304), 0);
}

// A row for a path edits its last part, or the whole of what is no file.
TEST_F(TextField, PathRowsEditTheLastPart) {
  const struct {
    const char* label;
    int file_type;
    const char* before;
    bool at_end;
    const char* after;
  } rows[] = {
      {"behind the name", 3, "Custom/Aircraft/a", true, "Custom/Aircraft/aX"},
      {"before the name", 3, "Custom/Aircraft/a", false, "Custom/Aircraft/Xa"},
      {"no folder", 3, "a", false, "Xa"},
      {"a folder is its own last part", file_type_folder, "Custom/b/", false, "Custom/Xb/"},
      {"a prefix", file_type_prefix, "Custom/a", false, "XCustom/a"},
      {"a command", file_type_command, "view/zoom", false, "Xview/zoom"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    for (const bool plain : {false, true}) {
      char chars[64] = {};
      std::strcpy(chars, row.before);
      std::string name;
      text = row.before;
      const auto draw = [&] {
        return plain ? BTN_select_file_chr(100, 100, win_file_open, row.file_type, chars, &name, 64,
                                           "", 200)
                     : BTN_select_path_stl(100, 100, win_file_save, row.file_type, &text, 64, "",
                                           200, 0);
      };
      focus_id = 0;
      press(105, 103);
      EXPECT_EQ(frame(draw), 0);
      release();
      send(0, row.at_end ? vk_end : vk_home);
      type("X");
      EXPECT_EQ(frame(draw), 1);
      EXPECT_EQ(plain ? std::string(chars) : text, row.after);
      if (plain && row.file_type == 3) {
        EXPECT_TRUE(name == "aX" || name == "Xa") << name;
      }
    }
  }
  ogl_inited = 0;
  EXPECT_EXIT(BTN_select_path_stl(1, 1, win_main, 3, &text, 9, "", 9, 0),
              testing::ExitedWithCode(1), "Bad open_save arg to BTN_select_file_stl!");
  for (const int file_type : {-1, 22})
    EXPECT_EXIT(BTN_select_path_stl(1, 1, win_file_open, file_type, &text, 9, "", 9, 0),
                testing::ExitedWithCode(1), "Bad file_type arg to BTN_select_file_stl!");
  char full[] = "no room for its end";
  for (const int max_length : {0, 19})
    EXPECT_EXIT(BTN_select_path_chr(1, 1, win_file_open, 3, full, max_length, "", 9, 0),
                testing::ExitedWithCode(1), "String too long!");
  EXPECT_EQ(BTN_select_path_chr(1, 1, win_file_open, 3, full, 20, "", 9, 0), 0);
  ogl_inited = 1;
}
