// Popup and scrolling lists and scroll bars, frame by frame.

#include "tests/unit/value_fixture.h"

class ButnList : public value_fixture {};

TEST_F(ButnList, PopupList) {
  const struct {
    const char *label, *items;
    std::vector<std::string> list;
  } rows[] = {
      {"marked", "|Macintosh|Windows|Linux", {"Macintosh", "Windows", "Linux"}},
      {"joined", "Macintosh-Windows-Linux", {"Macintosh", "Windows", "Linux"}},
      {"a separator counts", "|one|-|three", {"one", "-", "three"}},
      {"a hyphen in a marked one", "|a-b|c", {"a-b", "c"}},
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
  }
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
      {"at the end already", 500, 90, 100, 100, 0},
      {"track above the thumb", 500, 280, 50, 40, 0},
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
  for (const auto& [y, to] : {std::pair{400.0f, 0}, {111.0f, 100}, {200.0f, 50}}) {
    move(600, y);
    EXPECT_EQ(frame(draw), 1) << "grabbed wherever the mouse goes";
    EXPECT_EQ(value, to) << y;
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
  EXPECT_EQ(key(ch_return, vk_return), list_chosen);
  key(ch_home, vk_home);
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
  EXPECT_EQ(click_row(0, 1), list_moved);
  EXPECT_EQ(click_row(4, 1), list_moved);
  move(50, 100);
  mnw.wheel = -2;
  frame(draw);
  EXPECT_EQ(top, 6);
  EXPECT_EQ(mnw.wheel, 0);
  EXPECT_EQ(selected, 4) << "the wheel selects nothing";
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
  names.clear();
  frame(draw);
  EXPECT_EQ(selected, -1);
  EXPECT_EQ(key(ch_down, vk_down), list_nothing);
  EXPECT_EQ(key(ch_return, vk_return), list_nothing);
}

TEST(ButnSliderDeathTest, HasPlacesForFour) {
  int value = 0;
  EXPECT_EXIT(BTN_vert_slider(4, 500, 100, 300, 0, 100, &value), testing::ExitedWithCode(1),
              "Too many sliders!");
  EXPECT_EQ(BTN_vert_slider(3, 500, 100, 300, 0, 100, &value), 0);
}
