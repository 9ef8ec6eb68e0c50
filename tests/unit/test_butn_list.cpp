// Popup and scrolling lists, sliders and path rows, frame by frame.

#include <string>
#include <vector>

#include "corekit/GenC/hl_init.h"
#include "corekit/OOPS_cpp/oglp.h"
#include "tests/unit/value_fixture.h"

class ButnList : public value_fixture {};

// --- lists and sliders ---------------------------------------------------------------------------

TEST_F(ButnList, PopupList) {
  const struct {
    const char* label;
    const char* items;
    std::vector<std::string> list;
  } rows[] = {
      {"marked", "|Macintosh|Windows|Linux", {"Macintosh", "Windows", "Linux"}},
      {"joined", "Macintosh-Windows-Linux", {"Macintosh", "Windows", "Linux"}},
      {"a separator counts", "|one|-|three", {"one", "-", "three"}},
      {"a hyphen in a marked one", "|a-b|c", {"a-b", "c"}},
      {"one", "|one", {"one"}},
      {"without a mark in front", "one|two", {"one", "two"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    int value = 1;
    mnw.popup_code = -1;
    const auto draw = [&] { return BTN_textlist(200, 300, &value, row.items, "left|right"); };
    press(210, 303);
    EXPECT_EQ(frame(draw), 0);
    EXPECT_EQ(mnw.popup_code, popup_slot);
    EXPECT_EQ(active_popup_code, BTN_identity(200, 300));
    ASSERT_EQ(menu[popup_slot].items.size(), row.list.size());
    for (size_t i = 0; i < row.list.size(); ++i)
      EXPECT_EQ(menu[popup_slot].items[i].text, row.list[i]);
    EXPECT_EQ(frame(draw), 0) << "open";
    mnw.popup_code = -1;
    EXPECT_EQ(frame(draw), 0) << "closed without a choice";
    select_popup_code = BTN_identity(200, 300);
    popup_menu_select = static_cast<int>(row.list.size()) - 1;
    EXPECT_EQ(frame([&] { return BTN_textlist(200, 200, &value, row.items, ""); }), 0)
        << "another's choice";
    EXPECT_EQ(frame(draw), 1);
    EXPECT_EQ(value, popup_menu_select);
    EXPECT_EQ(frame(draw), 0) << "taken once";
    select_popup_code = BTN_identity(200, 300);
    popup_menu_select = 99;
    EXPECT_EQ(frame(draw), 0);
  }
  int value = 7;
  const picture_map map([&] { BTN_textlist(200, 300, &value, "|AB|Ab", "|ri"); });
  EXPECT_EQ(map.text_at(static_cast<int>(200 + BTN_textlist_width("|AB|Ab") + 12), 300), "ri");
  value = 1;
  const picture_map shown([&] { BTN_textlist(200, 300, &value, "|AB|Ab", ""); });
  EXPECT_EQ(shown.text_at(208, 300), "Ab");
  press(210, 309);
  frame([&] { return BTN_textlist(200, 300, &value, "|AB|Ab", ""); });
  EXPECT_EQ(mnw.popup_code, -1) << "just above the box";
}

TEST_F(ButnList, PopupListThroughTheMenuLayer) {
  int value = 0;
  const auto draw = [&] { return BTN_textlist(200, 300, &value, "a-b-c", ""); };
  press(210, 303);
  frame(draw);
  ASSERT_EQ(mnw.popup_code, popup_slot);
  // The list opens below the box; its second item.
  move(210, menu[popup_slot].bottom - 14 * 1.5f);
  mnw.mouse_clicked = 1;
  MACIBM_handleclick(0);
  EXPECT_EQ(mnw.popup_code, -1);
  EXPECT_EQ(frame(draw), 1);
  EXPECT_EQ(value, 1);
}

TEST_F(ButnList, ScrollBar) {
  // Track from 100 to 300; rows 0 to 100, 0 at the top.
  const struct {
    const char* label;
    float x, y;
    int before, after, grabbed;
  } rows[] = {
      {"up arrow", 500, 310, 50, 49, 0},
      {"down arrow", 500, 90, 50, 51, 0},
      {"at the top already", 500, 310, 0, 0, 0},
      {"at the end already", 500, 90, 100, 100, 0},
      {"track above the thumb", 500, 280, 50, 40, 0},
      {"below", 500, 120, 50, 60, 0},
      {"beside it", 512, 310, 50, 50, 0},
      {"above all", 500, 321, 50, 50, 0},
      {"on the thumb", 500, 200, 50, 50, 1},
      {"out of range", 0, 0, 500, 100, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    int value = row.before;
    const auto draw = [&] { return BTN_vert_slider(0, 500, 100, 300, 0, 100, &value); };
    press(row.x, row.y);
    EXPECT_EQ(frame(draw), row.grabbed);
    EXPECT_EQ(value, row.after);
    release();
    EXPECT_EQ(frame(draw), 0);
  }
  int value = 50;
  const auto draw = [&] { return BTN_vert_slider(1, 500, 100, 300, 0, 100, &value); };
  press(500, 200);
  frame(draw);
  const struct {
    float y;
    int value;
  } drags[] = {{289, 0}, {400, 0}, {111, 100}, {0, 100}, {200, 50}};
  for (const auto& drag : drags) {
    move(600, drag.y);
    EXPECT_EQ(frame(draw), 1) << "grabbed wherever the mouse goes";
    EXPECT_EQ(value, drag.value) << drag.y;
  }
  release();
  EXPECT_EQ(frame(draw), 0);

  // A held arrow waits, and then steps again and again.
  press(500, 90);
  frame(draw);
  int steps = 0;
  xtim.period = 0.02f;
  for (int i = 0; i < 70; ++i) {
    xtim.now_sec += xtim.period;
    const int before = value;
    frame(draw);
    if (value != before) {
      EXPECT_GT(xtim.now_sec - xtim.mouse_down, 0.39f);
    }
    steps += value - before;
  }
  EXPECT_NEAR(steps, 11, 1);

  for (const int high : {0, -1}) {
    const picture_map map(
        [&] { EXPECT_EQ(BTN_vert_slider(0, 500, 100, 300, 0, high, &value), 0); });
    EXPECT_EQ(map.times(500, 310), 0) << "no thumb, no arrows";
    EXPECT_EQ(map.times(500, 200), 1);
  }
  ogl_inited = 0;
  for (const int index : {-1, 4})
    EXPECT_EXIT(BTN_vert_slider(index, 500, 100, 300, 0, 9, &value), testing::ExitedWithCode(1),
                "Too many sliders!");
}

TEST_F(ButnList, LevelControl) {
  const struct {
    const char* label;
    float x, y;
    int enabled;
    float low, high, before, after;
    int result;
  } rows[] = {
      {"in the middle", 200, 100, 1, 0, 10, 0, 5, 1},
      {"beyond its end", 315, 100, 1, 0, 10, 0, 10, 1},
      {"before its start", 85, 100, 1, 0, 10, 5, 0, 1},
      {"too far", 325, 100, 1, 0, 10, 5, 5, 0},
      {"too high", 200, 121, 1, 0, 10, 0, 0, 0},
      {"disabled", 200, 100, 0, 0, 10, 0, 0, 0},
      {"falling", 150, 100, 1, 10, 0, 0, 7.5f, 1},
      {"no range", 200, 100, 1, 3, 3, 3, 3.005f, 1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    float value = row.before;
    const auto draw = [&] {
      return BTN_horz_slider(100, 100, 200, 46, row.low, row.high, &value, row.enabled, "", "tip");
    };
    press(row.x, row.y);
    EXPECT_EQ(frame(draw), row.result);
    EXPECT_FLOAT_EQ(value, row.after);
    release();
    EXPECT_EQ(frame(draw), 0);
  }
  float value = 0;
  press(100, 100);
  EXPECT_EQ(frame([&] { return BTN_horz_slider(100, 100, 0, 46, 2, 4, &value, 1, "", ""); }), 1);
  EXPECT_EQ(value, 3) << "without a width, the mean";
  // Two close to each other: one drag is one slider's.
  float first = 0, second = 0;
  const auto both = [&] {
    BTN_horz_slider(100, 100, 200, 46, 0, 10, &first, 1, "", "");
    return BTN_horz_slider(100, 115, 200, 46, 0, 10, &second, 1, "", "");
  };
  release();
  frame(both);
  press(200, 100);
  frame(both);
  move(250, 112);
  frame(both);
  EXPECT_EQ(first, 7.5f);
  EXPECT_EQ(second, 0);
}

TEST_F(ButnList, ScrollingList) {
  std::vector<std::string> names;
  for (int i = 0; i < 40; ++i)
    names.push_back("row " + std::to_string(i));
  names.push_back("Zebra");
  int top = 0, selected = -1;
  std::string search;
  // Panel 28 to 228 high: 13 rows of 14 from 222 down.
  const auto draw = [&] {
    return BTN_list_and_search(2, 10, 0, 300, 228, &top, &selected, 1, &search, names, nullptr);
  };
  const auto key = [&](int ch, int vkey) {
    send(ch, vkey);
    return frame(draw);
  };
  EXPECT_EQ(frame(draw), list_nothing);
  EXPECT_EQ(key(ch_down, vk_down), list_moved);
  EXPECT_EQ(selected, 0);
  EXPECT_EQ(key(ch_up, vk_up), list_nothing) << "at the top";
  EXPECT_EQ(key(ch_page_down, vk_next), list_moved);
  EXPECT_EQ(selected, 12);
  EXPECT_EQ(top, 0);
  key(ch_down, vk_down);
  EXPECT_EQ(top, 1) << "the selection stays in view";
  key(ch_end, vk_end);
  EXPECT_EQ(selected, 40);
  EXPECT_EQ(top, 28);
  EXPECT_EQ(key(ch_down, vk_down), list_nothing);
  EXPECT_EQ(key(ch_return, vk_return), list_chosen);
  key(ch_home, vk_home);
  EXPECT_EQ(selected, 0);
  EXPECT_EQ(top, 0);

  // The mouse: one press selects, two on one row choose; a slow second one does not.
  const auto click_row = [&](int row, int clicks) {
    press(50, 222 - 14 * (static_cast<float>(row) + 0.5f), clicks);
    const int result = frame(draw);
    release();
    return result;
  };
  EXPECT_EQ(click_row(3, 1), list_moved);
  EXPECT_EQ(selected, 3);
  EXPECT_EQ(click_row(3, 2), list_chosen);
  EXPECT_EQ(click_row(3, 3), list_nothing) << "a third begins anew";
  EXPECT_EQ(click_row(3, 1), list_nothing);
  EXPECT_EQ(click_row(4, 2), list_moved) << "not on another row";
  move(50, 100);
  mnw.wheel = -2;
  frame(draw);
  EXPECT_EQ(top, 6);
  EXPECT_EQ(mnw.wheel, 0);
  EXPECT_EQ(selected, 4) << "the wheel selects nothing";
  move(500, 100);
  mnw.wheel = -2;
  frame(draw);
  EXPECT_EQ(top, 6) << "not over the list";
  mnw.wheel = 0;

  // Typing looks for a name, whatever the case; after a pause anew.
  xtim.now_sec += 5;
  type("zE");
  EXPECT_EQ(frame(draw), list_moved);
  EXPECT_EQ(selected, 40);
  EXPECT_EQ(search, "zE");
  xtim.now_sec += 5;
  type("row 1");
  frame(draw);
  EXPECT_EQ(selected, 1);

  names.resize(2);
  frame(draw);
  EXPECT_EQ(top, 0);
  EXPECT_EQ(selected, 1);
  names.clear();
  frame(draw);
  EXPECT_EQ(selected, -1);
  EXPECT_EQ(key(ch_down, vk_down), list_nothing);
  EXPECT_EQ(key(ch_return, vk_return), list_nothing);

  EXPECT_EQ(BTN_list_match({"abc", "abd"}, "ABD"), 1);
  EXPECT_EQ(BTN_list_match({"abc"}, "abcd"), -1);
  EXPECT_EQ(BTN_list_match({"abc"}, ""), -1);
}

// --- paths ---------------------------------------------------------------------------------------

TEST_F(ButnList, PathRowEditsTheLastPart) {
  const struct {
    const char* label;
    const char* before;
    int file_type;
    const char* shown;
    const char* after;  // with all that is shown replaced by "x"
  } rows[] = {
      {"a file", "/home/me/file.txt", 0, "file.txt", "/home/me/x"},
      {"a folder", "/home/me/", 0, "me/", "/home/x"},
      {"a bare name", "name", 0, "name", "x"},
      {"root", "/", 0, "/", "x"},
      {"in the root", "/a", 0, "a", "/x"},
      {"nothing", "", 0, "", "x"},
      {"a prefix is shown whole", "sim/view", 20, "sim/view", "x"},
      {"a command too", "sim/view", 21, "sim/view", "x"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    std::string path = row.before;
    focus_id = 0;
    const auto draw = [&] {
      return BTN_select_path_stl(300, 300, win_file_open, row.file_type, &path, 100, "", 200, 1);
    };
    EXPECT_EQ(frame(draw), 0);
    EXPECT_EQ(path, row.before);
    const picture_map map([&] { frame(draw); });
    EXPECT_TRUE(map.shows(270, 290, 208, 133)) << "the folder button";
    focus_id = 0;
    frame(draw);
    type("x");
    EXPECT_EQ(frame(draw), 1);
    EXPECT_EQ(path, row.after);
    EXPECT_EQ(frame(draw), 0);
  }

  char buffer[12] = "/tmp/abc";
  std::string name;
  focus_id = 0;
  const auto on_buffer = [&] {
    return BTN_select_file_chr(300, 300, win_file_save, 0, buffer, &name, 12, "", 200);
  };
  press(400, 303);
  frame(on_buffer);
  release();
  EXPECT_EQ(name, "abc");
  send(ch_end, vk_end);
  type("defgh");
  EXPECT_EQ(frame(on_buffer), 1);
  EXPECT_STREQ(buffer, "/tmp/abcdef") << "as much as it holds";
  EXPECT_EQ(name, "abcdef");
}

TEST(PathRow, RefusesBadArguments) {
  ogl_inited = 0;
  std::string path, name;
  char buffer[4] = "abc", full[3] = {'a', 'b', 'c'};
  const auto stl = [&](int open_save, int type) {
    BTN_select_path_stl(0, 0, open_save, type, &path, 9, "", 9, 0);
  };
  EXPECT_EXIT(stl(997, 0), testing::ExitedWithCode(1), "Bad open_save arg to BTN_select_file_stl!");
  EXPECT_EXIT(stl(1000, 0), testing::ExitedWithCode(1), "Bad open_save arg");
  EXPECT_EXIT(stl(998, 22), testing::ExitedWithCode(1),
              "Bad file_type arg to BTN_select_file_stl!");
  EXPECT_EXIT(stl(999, -1), testing::ExitedWithCode(1), "Bad file_type arg");
  EXPECT_EXIT(BTN_select_path_chr(0, 0, 0, 0, buffer, 4, "", 9, 0), testing::ExitedWithCode(1),
              "Bad open_save arg to BTN_select_file_chr!");
  EXPECT_EXIT(BTN_select_file_chr(0, 0, 998, 22, buffer, &name, 4, "", 9),
              testing::ExitedWithCode(1), "Bad file_type arg to BTN_select_file_chr!");
  EXPECT_EXIT(BTN_select_path_chr(0, 0, 998, 0, full, 3, "", 9, 0), testing::ExitedWithCode(1),
              "String too long!");
  stl(998, 0);
  stl(999, 21);
}
