// The keyboard focus: the ring, which keys a widget gets, and how its queue is drained. And labels.

#include <gtest/gtest.h>

#include "corekit/widgets/butn.h"
#include "corekit/window/hl_mnw.h"

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
      {"no widgets, a lost focus", 0, 7, key_down, 0, 0},
      {"first", 3, 0, key_down, 1, 1},
      {"key up does not enter", 3, 0, key_up, 0, 0},
      {"nor go on", 3, 2, key_up, 0, 2},
      {"last to first", 3, 3, key_down, 1, 1},
      {"first back to last", 3, 1, key_down | key_shift, 1, 3},
      {"unknown widget: to the first", 3, 99, key_down, 1, 1},
  };
  for (const auto& row : rows) {
    ring_of(row.widgets);
    focus_id = row.from;
    EXPECT_EQ(BTN_dispatch_to_focus(tab, tab, row.flags), row.result) << row.label;
    EXPECT_EQ(focus_id, row.to) << row.label;
    EXPECT_EQ(queue.count, 0) << row.label;
    BTN_focus_any();
    EXPECT_EQ(focus_id, row.widgets ? 1 : 0) << row.label;
  }
}

TEST_F(ButnFocus, MaskSaysWhichKeysAreWanted) {
  const struct {
    const char* label;
    int ch, vkey, bit;
  } rows[] = {
      {"Tab", tab, tab, 1},
      {"Backspace", 8, 8, 4},
      {"Escape", 27, 27, 8},
      {"Down", 31, 40, 16},
      {"below the moves", 0, 32, 512},
      {"above the moves", 0, 41, 512},
      {"brace", '{', 184, 256},
      {"9", '9', 105, 64},
      {"plus", '+', 107, 128},
      {"e acute", 0xE9, 0, 256},
      {"C1 control", 0x9F, 0, 512},
      {"no-break blank", 0xA0, 0, 256},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    for (int bit = 1; bit <= 512; bit *= 2) {
      queue = BTN_key_queue();
      BTN_begin_focus_ring();
      BTN_register_queue(1, queue, bit, 1);
      const int used = BTN_dispatch_to_focus(row.ch, row.vkey, key_down);
      if (row.bit == 1 && bit != 1) {
        EXPECT_EQ(used, 1) << "it goes along the ring";
        EXPECT_EQ(queue.count, 0);
        continue;
      }
      EXPECT_EQ(used, bit == row.bit) << bit;
      EXPECT_EQ(queue.count, bit == row.bit) << bit;
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

TEST(ButnLabels, SplitAtTheLastBarAndTheLastBrace) {
  const struct {
    const char *label, *left, *right, *help;
  } rows[] = {
      {"", "", "", ""},
      {"left|right{?help", "left", "right", "help"},
      {"|right{ help text", "", "right", "help text"},
      {"a|b|c", "a|b", "c", ""},
      {"a{?x{?y", "a{?x", "", "y"},
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
  const std::vector<int> types = {7, 8};
  const std::vector<std::string> names = {"a", "b"};
  for (const auto& [i, type, name] :
       {std::tuple{-1, 0, ""}, {0, 7, "a"}, {1, 8, "b"}, {2, 0, ""}}) {
    EXPECT_EQ(BTN_type_from_vector(i, &types), type) << i;
    EXPECT_EQ(BTN_name_from_vector(i, &names), name) << i;
  }
}
