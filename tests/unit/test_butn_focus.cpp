// The keyboard focus: the ring, which keys a widget gets, and how its queue is drained. And labels.

#include <gtest/gtest.h>

#include "corekit/GenC/hl_mnw.h"
#include "corekit/OOPS_cpp/butn.h"

namespace {

constexpr int tab = 9;
constexpr int everything = 1023;

BTN_key_queue queue;

// One frame with widgets 1 to `count`, none of which wants Tab.
void ring_of(int count, int accept = everything & ~accept_tab) {
  BTN_begin_focus_ring();
  for (int id = 1; id <= count; ++id)
    BTN_register_queue(id, queue, accept, 0);
}

class ButnFocus : public testing::Test {
 protected:
  void SetUp() override {
    queue = BTN_key_queue();
    mnw.win_id = win_main;
    focus_id = 0;
    BTN_begin_focus_ring();
  }
};

}  // namespace

TEST_F(ButnFocus, TabGoesRoundTheRing) {
  const struct {
    const char* label;
    int widgets, from, flags, result, to;
  } rows[] = {
      {"no widgets", 0, 0, key_down, 0, 0},
      {"no widgets, a lost focus", 0, 7, key_down, 0, 0},
      {"first", 3, 0, key_down, 1, 1},
      {"key up does not enter", 3, 0, key_up, 0, 0},
      {"next", 3, 1, key_down, 1, 2},
      {"last to first", 3, 3, key_down, 1, 1},
      {"back", 3, 3, key_down | key_shift, 1, 2},
      {"first back to last", 3, 1, key_down | key_shift, 1, 3},
      {"one alone", 1, 1, key_down, 1, 1},
      {"one alone, back", 1, 1, key_down | key_shift, 1, 1},
      {"key up moves nothing", 3, 2, key_up, 0, 2},
      {"unknown widget: to the first", 3, 99, key_down, 1, 1},
      {"unknown widget, key up", 3, 99, key_up, 0, 0},
  };
  for (const auto& row : rows) {
    ring_of(row.widgets);
    focus_id = row.from;
    EXPECT_EQ(BTN_dispatch_to_focus(tab, tab, row.flags), row.result) << row.label;
    EXPECT_EQ(focus_id, row.to) << row.label;
    EXPECT_EQ(queue.count, 0) << row.label;
  }
}

TEST_F(ButnFocus, MaskSaysWhichKeysAreWanted) {
  const struct {
    const char* label;
    int ch, vkey, bit;
  } rows[] = {
      {"Tab", tab, tab, 1},
      {"Return", 13, 13, 2},
      {"Enter", 3, 187, 2},
      {"Backspace", 8, 8, 4},
      {"Delete", 127, 46, 4},
      {"Escape", 27, 27, 8},
      {"Page Up", 11, 33, 16},
      {"Home", 1, 36, 16},
      {"Down", 31, 40, 16},
      {"below the moves", 0, 32, 512},
      {"above the moves", 0, 41, 512},
      {"A", 'A', 65, 32},
      {"z", 'z', 90, 32},
      {"at", '@', 50, 256},
      {"bracket", '[', 184, 256},
      {"backquote", '`', 180, 256},
      {"brace", '{', 184, 256},
      {"0", '0', 48, 64},
      {"9", '9', 105, 64},
      {"colon", ':', 181, 256},
      {"slash", '/', 182, 256},
      {"plus", '+', 107, 128},
      {"minus", '-', 109, 128},
      {"blank", ' ', 32, 256},
      {"tilde", '~', 180, 256},
      {"DEL", 127, 0, 512},
      {"control", 1, 65, 512},
      {"e acute", 0xE9, 0, 256},
      {"C1 control", 0x9F, 0, 512},
      {"no-break blank", 0xA0, 0, 256},
      {"beyond a byte", 0x20AC, 1, 512},
      {"F1", 0, 112, 512},
  };
  for (const auto& row : rows) {
    for (int bit = 1; bit <= 512; bit *= 2) {
      queue = BTN_key_queue();
      BTN_begin_focus_ring();
      BTN_register_queue(1, queue, bit, 1);
      const int used = BTN_dispatch_to_focus(row.ch, row.vkey, key_down);
      if (row.bit == 1 && bit != 1) {
        EXPECT_EQ(used, 1) << row.label << " goes along the ring";
        EXPECT_EQ(queue.count, 0) << row.label;
        continue;
      }
      EXPECT_EQ(used, bit == row.bit) << row.label << ", mask " << bit;
      EXPECT_EQ(queue.count, bit == row.bit) << row.label << ", mask " << bit;
    }
  }
}

TEST_F(ButnFocus, KeysGoToTheWidgetThatHasTheFocus) {
  ring_of(2);
  EXPECT_EQ(BTN_dispatch_to_focus('a', 65, key_down), 0);  // nobody has it
  focus_id = 2;
  EXPECT_EQ(BTN_dispatch_to_focus('a', 65, key_down | key_shift), 1);
  ASSERT_EQ(queue.count, 1);
  EXPECT_EQ(queue.chars[0], 'a');
  EXPECT_EQ(queue.vkeys[0], 65);
  EXPECT_EQ(queue.flags[0], key_down | key_shift);
  EXPECT_EQ(queue.ids[0], 2);

  // A widget that is gone: its key finds nobody, and clears the focus.
  ring_of(1);
  EXPECT_EQ(BTN_dispatch_to_focus('b', 66, key_down), 0);
  EXPECT_EQ(focus_id, 0);
  EXPECT_EQ(queue.count, 1);

  // No key reaches a widget under an alert.
  ring_of(1);
  focus_id = 1;
  mnw.win_id = win_alert;
  EXPECT_EQ(BTN_dispatch_to_focus('c', 67, key_down), 0);
  EXPECT_EQ(BTN_dispatch_to_focus(tab, tab, key_down), 0);
  EXPECT_EQ(focus_id, 1);
  EXPECT_EQ(queue.count, 1);
}

TEST_F(ButnFocus, QueueIsDrainedByItsOwner) {
  ring_of(2);
  const auto send = [](int id, int ch, int flags) {
    focus_id = id;
    ASSERT_EQ(BTN_dispatch_to_focus(ch, ch, flags), 1);
  };
  const auto drain = [](int id) {
    std::string got;
    BTN_key key;
    for (int at = 0; BTN_take_key(queue, id, &at, &key);)
      got += static_cast<char>(key.ch);
    return got;
  };
  send(1, 'A', key_down);
  send(1, 'A', key_up);  // discarded by whoever drains it
  send(2, 'B', key_down);
  send(1, 'C', key_down);
  EXPECT_EQ(drain(1), "AC");
  EXPECT_EQ(queue.count, 4) << "a key for another widget is still there";
  EXPECT_EQ(drain(1), "");
  send(1, 'D', key_down);
  EXPECT_EQ(drain(2), "B");
  EXPECT_EQ(drain(1), "D");
  EXPECT_EQ(queue.count, 0);
  EXPECT_EQ(drain(1), "");
}

TEST_F(ButnFocus, FullQueueDropsItsOldestKey) {
  ring_of(1);
  focus_id = 1;
  for (int i = 0; i < 70; ++i)
    EXPECT_EQ(BTN_dispatch_to_focus('A' + i % 26, 65, key_down), 1);
  EXPECT_EQ(queue.count, key_queue_size);
  EXPECT_EQ(queue.chars[0], 'A' + 6);
  EXPECT_EQ(queue.chars[63], 'A' + 69 % 26);
}

TEST_F(ButnFocus, WhoHasTheFocus) {
  EXPECT_EQ(BTN_no_focus_yet(), 1);
  BTN_focus_any();
  EXPECT_EQ(focus_id, 0);
  ring_of(2);
  BTN_focus_any();
  EXPECT_EQ(focus_id, 1);
  EXPECT_EQ(BTN_no_focus_yet(), 0);
  BTN_unfocus_any();
  EXPECT_EQ(BTN_no_focus_yet(), 1);
  BTN_window_has_focus();
  EXPECT_EQ(BTN_no_focus_yet(), 0);
  BTN_begin_focus_ring();
  EXPECT_EQ(BTN_no_focus_yet(), 1);
  EXPECT_TRUE(focus_ring.empty());
  EXPECT_EQ(BTN_register_queue(5, queue, everything, 0), 0);
  EXPECT_EQ(BTN_register_queue(6, queue, everything, 1), 1);
  EXPECT_EQ(BTN_register_queue(6, queue, everything, 0), 1);
}

TEST(ButnLabels, SplitAtTheLastBarAndTheLastBrace) {
  const struct {
    const char *label, *left, *right, *help;
  } rows[] = {
      {"", "", "", ""},
      {"left", "left", "", ""},
      {"|right", "", "right", ""},
      {"left|", "left", "", ""},
      {"left|right", "left", "right", ""},
      {"left|right{?help", "left", "right", "help"},
      {"left{?help", "left", "", "help"},
      {"|right{ help text", "", "right", "help text"},
      {"a|b|c", "a|b", "c", ""},
      {"a{?x{?y", "a{?x", "", "y"},
      {"left|right{", "left", "right", ""},
      {"left|right{?", "left", "right", ""},
      {"left|right{?h", "left", "right", "h"},
      {"{?help", "", "", "help"},
      {"left{?help|right", "left{?help", "right", "help|right"},
  };
  for (const auto& row : rows) {
    std::string left = "old", right = "old", help = "old";
    BTN_expand_label(row.label, &left, &right, &help);
    EXPECT_EQ(left, row.left) << row.label;
    EXPECT_EQ(right, row.right) << row.label;
    EXPECT_EQ(help, row.help) << row.label;
  }
  EXPECT_EQ(BTN_identity(3.9f, 5.9f), 5 + 3 * 8192);
  const std::vector<int> types = {4, 5};
  const std::vector<std::string> names = {"a", "b"};
  EXPECT_EQ(BTN_type_from_vector(1, &types), 5);
  EXPECT_EQ(BTN_type_from_vector(2, &types), 0);
  EXPECT_EQ(BTN_name_from_vector(0, &names), "a");
  EXPECT_EQ(BTN_name_from_vector(-1, &names), "");
}

TEST(ButnLabels, WrongFramesAreFatal) {
  EXPECT_EXIT(BTN_frame0(5, 0, 0, 10), testing::ExitedWithCode(1), "Bad BTN_frame0 call!");
  EXPECT_EXIT(BTN_frame0(6, 0.5f, 0, 10), testing::ExitedWithCode(1),
              "BTN_frame0 non-int x_center!");
  EXPECT_EXIT(BTN_frame0(6, 0, 0.5f, 10), testing::ExitedWithCode(1),
              "BTN_frame0 non-int y_center!");
  EXPECT_EXIT(BTN_frame1(6, 0, 0, 10, 0), testing::ExitedWithCode(1), "Bad BTN_frame1 call!");
  EXPECT_EXIT(BTN_frame1(11, 0, 0, 10, 0), testing::ExitedWithCode(1), "Bad BTN_frame1 call!");
  EXPECT_EXIT(BTN_frame2(10, 0, 0, 10, 10, ""), testing::ExitedWithCode(1), "Bad BTN_frame2 call!");
  EXPECT_EXIT(BTN_frame2(21, 0, 0, 10, 10, ""), testing::ExitedWithCode(1), "Bad BTN_frame2 call!");
}
