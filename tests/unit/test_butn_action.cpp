// The plain widgets, frame by frame, and labels as they are drawn.

#include "tests/unit/gl_fixture.h"

class ButnAction : public gl_fixture {};

namespace {

std::vector<std::vector<unsigned char>> swapped;  // the pictures that were shown

}  // namespace

TEST_F(ButnAction, PushButtonFollowsItsTable) {
  PLT_swap_hook = [] { swapped.push_back(read_buffer()); };
  const struct {
    const char* label;
    float x, y;
    int clicked, popup_code, on, mode;
    size_t swaps;
    int result;
    const char* help;
  } rows[] = {
      {"outside, on", 460, 300, 1, -1, 1, 1, 0, 0, ""},
      {"on it, no click", 400, 300, 0, -1, 0, 1, 0, 0, "help"},
      {"under a menu", 400, 300, 1, 3, 0, 1, 0, 0, ""},
      {"shows itself pressed", 400, 300, 1, -1, 0, 1, 1, 1, "help"},
      {"also in mode 2", 400, 300, 1, -1, 0, 2, 1, 1, "help"},
      {"is pressed already", 400, 300, 1, -1, 1, 1, 0, 1, "help"},
      {"lower left corner", 350, 290, 1, -1, 0, 0, 0, 1, "help"},
      {"just left", 349.5f, 300, 1, -1, 0, 0, 0, 0, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    clear();
    swapped.clear();
    stls.hover_help = "";
    move(row.x, row.y);
    mnw.mouse_clicked = row.clicked;
    mnw.popup_code = row.popup_code;
    EXPECT_EQ(BTN_action(400, 300, 100, row.on, row.mode, "{?help", ""), row.result);
    EXPECT_EQ(swapped.size(), row.swaps);
    EXPECT_EQ(stls.hover_help, row.help);
    if (row.swaps == 0) continue;
    clear();
    BTN_action(400, 300, 100, 1, row.mode, "{?help", "");
    EXPECT_EQ(swapped[0], read_picture()) << "its face is down";
  }
}

TEST_F(ButnAction, CheckBoxFollowsItsTable) {
  const struct {
    const char* label;
    float x, y;
    int clicked, popup_code, before, after, result;
    const char* help;
  } rows[] = {
      {"elsewhere", 120, 100, 1, -1, 0, 0, 0, ""},
      {"over it", 100, 103, 0, -1, 1, 1, 0, "help"},
      {"under a menu", 100, 103, 1, 1519, 0, 0, 0, ""},
      {"off", 100, 103, 1, -1, 1, 0, 1, "help"},
      {"off from any value", 100, 103, 1, -1, 7, 0, 1, "help"},
      {"lower left corner", 92, 96, 1, -1, 0, 1, 1, "help"},
      {"just below", 100, 95.5f, 1, -1, 0, 0, 0, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    move(row.x, row.y);
    mnw.mouse_clicked = row.clicked;
    mnw.popup_code = row.popup_code;
    stls.hover_help = "";
    int value = row.before;
    EXPECT_EQ(BTN_bool(100, 100, &value, "{?help", 0), row.result);
    EXPECT_EQ(value, row.after);
    EXPECT_EQ(stls.hover_help, row.help);
  }
  mnw.popup_code = -1;
  click(100, 103);
  int choice = 1;
  EXPECT_EQ(BTN_is_int(100, 100, &choice, 2, "|two"), 1);
  EXPECT_EQ(BTN_is_int(100, 100, &choice, 2, "|two"), 1);
  EXPECT_EQ(choice, 2) << "a radio button stays set";
}

TEST_F(ButnAction, LongLabelsBreakNearTheirMiddle) {
  const struct {
    const char* text;
    int side;
    const char *upper, *middle, *lower;
  } rows[] = {
      {"twelve chars", 2, "", "twelve chars", ""},
      {"thirteen char", 2, "thirteen", "", "char"},
      {"one two three four", 2, "one two", "", "three four"},  // 7 and 13 from 9: the nearer
      {"abcde fghij-klmno", 2, "abcde", "", "fghij-klmno"},    // 5 and 11 round 8: both 3 away
      {"-one two three four", 2, "", "one two three four", ""},
      {"one two three four", 1, "", "one two three four", ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    const picture_map map([&] { BTN_util_draw_label(300, 300, row.side, row.text, 0); });
    const int x = row.side == 1 ? 300 - (OGL_string_width(row.text) + 1) / 2 : 300;
    EXPECT_EQ(map.text_at(x, 305), row.upper);
    EXPECT_EQ(map.text_at(x, 300), row.middle);
    EXPECT_EQ(map.text_at(x, 295), row.lower);
  }
}

TEST_F(ButnAction, SpaceAndWordsPressABox) {
  const struct {
    const char* label;
    float x;  // of a click; 0 none
    int ch, flags, hit;
  } rows[] = {
      {"Space", 0, ' ', key_down, 1},
      {"Space held", 0, ' ', 0, 0},
      {"Space let go", 0, ' ', key_up, 0},
      {"another key", 0, 'x', key_down, 0},
      {"its words", 440, 0, 0, 1},
      {"beyond them", 700, 0, 0, 0},
      {"no words at its left", 380, 0, 0, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    clear();
    int value = 0;
    const auto draw = [&] {
      BTN_begin_focus_ring();
      return BTN_bool(400, 300, &value, "|some words beside", 0);
    };
    mnw.mouse_x = row.x;
    mnw.mouse_y = 303;
    mnw.mouse_clicked = 0;
    draw();
    focus_id = BTN_identity(400, 300);
    if (row.ch) BTN_dispatch_to_focus(row.ch, 0, row.flags);
    mnw.mouse_clicked = row.x != 0;
    EXPECT_EQ(draw(), row.hit);
    mnw.mouse_clicked = 0;
    EXPECT_EQ(draw(), 0) << "once";
    EXPECT_EQ(value, row.hit);
  }
  focus_id = 0;
}

TEST_F(ButnAction, TabsChooseTheirValue) {
  const struct {
    const char* label;
    float x, y;
    int hit;
  } rows[] = {
      {"its lower left", 180, 518, 1}, {"its upper right", 268, 542, 1},
      {"left of it", 178, 530, 0},     {"right of it", 270, 530, 0},
      {"above it", 200, 544, 0},       {"below it", 200, 516, 0},
  };
  for (const auto& row : rows) {
    int value = 1;
    click(row.x, row.y);
    BTN_begin_focus_ring();
    stls.hover_help.clear();
    EXPECT_EQ(BTN_tab(2, 1, &value, 7, "tab{ help"), row.hit) << row.label;
    EXPECT_EQ(value, row.hit ? 7 : 1) << row.label;
    EXPECT_EQ(stls.hover_help, row.hit ? "help" : "") << row.label;
  }
  char as_char = 0;
  unsigned char as_byte = 1;
  click(400, 303);
  EXPECT_EQ(BTN_xchr(400, 300, &as_char, "") + BTN_xbyt(400, 300, &as_byte, ""), 2);
  EXPECT_EQ(as_char, 1);
  EXPECT_EQ(as_byte, 0);
}

TEST_F(ButnAction, CloseBoxesOfADialog) {
  mnw.win_dx = 600;
  mnw.win_dy = 380;
  const struct {
    const char* label;
    int win_id, type, popup_code;
    float x;
    int hit;
  } rows[] = {
      {"the left one closes", win_prefs, box_dialog, -1, 8, 1},
      {"the right one does not", win_prefs, box_dialog, -1, 580, 0},
      {"under a menu", win_prefs, box_dialog, 3, 8, 0},
      {"the main window has none", win_main, box_dialog, -1, 8, 0},
      {"other frames have none", win_prefs, box_window, -1, 8, 0},
  };
  for (const auto& row : rows) {
    mnw.win_id = row.win_id;
    mnw.popup_code = row.popup_code;
    click(row.x, 370);
    EXPECT_EQ(BTN_frame2(row.type, 0, 0, 600, 380, ""), row.hit) << row.label;
  }
  for (const auto& [x, hit] : {std::pair{8.0f, 1}, {580.0f, 1}, {300.0f, 0}}) {
    click(x, 370);
    EXPECT_EQ(BTN_zap_boxes(1), hit);
  }
}

// The pictures that are kept have all else.
TEST_F(ButnAction, WhatNoPageDraws) {
  stls.window_title = "AB";
  const picture_map window([] { BTN_fillwin(1, inner_bar); });
  EXPECT_EQ(window.text_at(392, 587), "AB");
  EXPECT_EQ(window.times(0, 550 - 3), 2) << "the bar, over the panel";
  EXPECT_EQ(window.times(0, 550 - 30), 1);
  const picture_map box([] { OGL_boxed_string(400, 300, "|ri", "boxed", charset_fixed, 49); });
  EXPECT_EQ(box.text_at(372 + 4, 300, 10).substr(0, 5), "boxed");
  EXPECT_EQ(box.text_at(400 + 29 + 8, 300), "ri");
}
