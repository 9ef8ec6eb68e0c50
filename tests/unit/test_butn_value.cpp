// Number entry, frame by frame.

#include <cmath>
#include <limits>

#include "tests/unit/value_fixture.h"

class ButnValue : public value_fixture {
 protected:
  // Characters, and "<>^v" for the arrows.
  static void press_keys(const std::string& names) {
    const std::string arrows = "<>^v";
    constexpr int vkeys[] = {vk_left, vk_right, vk_up, vk_down};
    for (const char c : names) {
      const size_t arrow = arrows.find(c);
      if (arrow == arrows.npos)
        type(std::string(1, c));
      else
        send(ch_left + static_cast<int>(arrow), vkeys[arrow]);
    }
  }
};

// --- numbers -------------------------------------------------------------------------------------

TEST_F(ButnValue, NumbersTakeKeys) {
  const struct {
    const char* label;
    float before;
    int digits, decimals;
    float low, high;
    int cell;  // clicked
    std::string keys;
    float after;
  } rows[] = {
      {"a digit in its cell", 123, 3, 0, 0, 999, 1, "7", 173},
      {"the cursor moves on and wraps", 0, 3, 0, 0, 999, 1, "123", 312},
      {"sign is kept", -25, 3, 0, -99, 99, 1, "4", -45},
      {"hundredths too", 1.23f, 3, 2, 0, 9.99f, 2, "9", 1.29f},
      {"left from the first cell", 100, 3, 0, 0, 999, 0, "<5", 105},
      {"up is clamped", 950, 3, 0, 0, 980, 0, "^", 980},
      {"a digit is clamped", 100, 3, 0, 0, 500, 0, "9", 500},
      {"minus", 12, 3, 0, -99, 99, 0, "-", -12},
      {"minus is no toggle", -12, 3, 0, -99, 99, 0, "-", -12},
      {"minus clamps at low", 12, 3, 0, 0, 99, 0, "-", 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    focus_id = 0;
    float value = row.before;
    const auto draw = [&] {
      return BTN_flt_range(100, 100, &value, row.digits, row.decimals, row.low, row.high, "");
    };
    press(static_cast<float>(100 + row.cell * 10 + 6), 103);
    EXPECT_EQ(frame(draw), 0);
    release();
    press_keys(row.keys);
    const int result = frame(draw);
    EXPECT_FLOAT_EQ(value, row.after);
    EXPECT_EQ(result, row.after != row.before);
    EXPECT_EQ(frame(draw), 0) << "nothing is done twice";
  }
}

TEST_F(ButnValue, NumbersTakeClicksOnTheirArrows) {
  const struct {
    const char* label;
    float x, y;
    int digits, clicked, popup;
    float after;  // of 100
    int cursor;
  } rows[] = {
      {"last cell down", 125, 90, 3, 1, -1, 99, cursor_down},
      {"only over it", 105, 118, 3, 0, -1, 100, cursor_up},
      {"under a menu", 105, 118, 3, 1, 3, 100, cursor_arrow},
      {"highest", 115, 124, 3, 1, -1, 110, cursor_up},
      {"above that", 115, 124.5f, 3, 1, -1, 100, cursor_arrow},
      {"below that", 115, 81.5f, 3, 1, -1, 100, cursor_arrow},
      {"left of all", 99.5f, 118, 3, 1, -1, 100, cursor_arrow},
      {"tenth cell of twelve", 195, 118, 12, 1, -1, 200, cursor_up},
      {"eleventh does not respond", 205, 118, 12, 1, -1, 100, cursor_up},
      {"on the right edge", 130, 118, 3, 1, -1, 100, cursor_up},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    focus_id = 0;
    float value = 100;
    mnw.cursor_mode = cursor_arrow;
    mnw.popup_code = row.popup;
    move(row.x, row.y);
    mnw.mouse_clicked = row.clicked;
    frame([&] { return BTN_flt_range(100, 100, &value, row.digits, 0, 0, 1e9f, ""); });
    EXPECT_EQ(value, row.after);
    EXPECT_EQ(mnw.cursor_mode, row.cursor);
    EXPECT_EQ(focus_id, 0) << "arrows take no focus";
  }
}

TEST_F(ButnValue, NumbersAreCorrectedByBeingShown) {
  float value = 1.23f;
  EXPECT_EQ(frame([&] { return BTN_flt_range(100, 100, &value, 4, 1, 0, 9, ""); }), 1);
  EXPECT_FLOAT_EQ(value, 1.2f);
  for (const float wild : {std::numeric_limits<float>::infinity(), 1e30f}) {
    value = wild;
    frame([&] { return BTN_flt_range(100, 100, &value, 3, 1, -5, 50, ""); });
    EXPECT_EQ(value, 50);
  }
  value = std::nanf("");
  frame([&] { return BTN_flt_range(100, 100, &value, 3, 1, -5, 50, ""); });
  EXPECT_EQ(value, 0);
  value = -2.5f;
  frame([&] { return BTN_flt_range(100, 100, &value, 3, 0, -5, 50, ""); });
  EXPECT_EQ(value, -3) << "half away from zero";
  int n = 0;
  EXPECT_EQ(frame([&] { return BTN_int_range(100, 100, &n, 1, 1, 4, ""); }), 1);
  EXPECT_EQ(n, 1) << "the stream count of a box that was just ticked";
}

TEST_F(ButnValue, LimitsGoByTheDigitsAndPlacesByTheGrid) {
  const struct {
    int digits, decimals, negative;
    float before, after;
  } rows[] = {{3, 2, 1, -100, -9.99f}, {3, 2, 0, -1, 0}, {3, 0, 0, 1e9f, 999}, {1, 0, 1, 50, 9}};
  for (const auto& row : rows) {
    float value = row.before;
    const auto flt = [&] {
      return BTN_flt(100, 100, &value, row.digits, row.decimals, row.negative, "");
    };
    EXPECT_EQ(frame(flt), 1);
    EXPECT_FLOAT_EQ(value, row.after);
    int number = static_cast<int>(row.before);
    frame([&] { return BTN_int(100, 100, &number, row.digits, row.negative, ""); });
    if (row.decimals == 0) {
      EXPECT_EQ(number, static_cast<int>(row.after));
    }
  }
  // Three digits at (2, 3) of the grid end 75 units right of its line.
  for (const bool limited : {false, true}) {
    float value = 0;
    focus_id = 0;
    const auto draw = [&] {
      return limited ? BTN_flt_rangeij(2, 3, &value, 3, 0, 0, 500, "")
                     : BTN_fltij(2, 3, &value, 3, 0, 1, "");
    };
    press(2 * 75 + 75 - 30 + 6, 3 * 50 + 25 + 3);
    frame(draw);
    release();
    type("-7");
    EXPECT_EQ(frame(draw), 1);
    EXPECT_EQ(value, limited ? 500 : 700) << "there is no -0";
  }
  float lat = 95, lon = -190;
  EXPECT_EQ(frame([&] { return enter_lat_lon(&lat, &lon, 100, 100, 2); }), 1);
  EXPECT_EQ(lat, 90);
  EXPECT_EQ(lon, -180);
  focus_id = 0;
  press(100 + 4 * 10 + 70 + 16, 103);  // the second of three digits before the point
  const auto draw = [&] { return enter_lat_lon(&lat, &lon, 100, 100, 2); };
  frame(draw);
  release();
  type("2");
  EXPECT_EQ(frame(draw), 1);
  EXPECT_EQ(lon, -120);
}

TEST_F(ButnValue, CharactersTurnAndAreTyped) {
  const struct {
    const char *label, *before;
    int cell;
    std::string keys;
    const char* after;
  } rows[] = {
      {"typed, and on to the next", "AAA", 1, "b-", "AB-"},
      {"round to the first", "AAA", 2, "9Z", "ZA9"},
      {"nothing of it", "AAA", 1, "!", "AAA"},
      {"the first", "AAA", 0, "b", "BAA"},
      {"left, and left round", "AAA", 1, "<<x", "AAX"},
      {"right", "AAA", 1, ">0", "AA0"},
      {"up", "A99", 1, "^^", "AB9"},
      {"down", " 01", 1, "vv", " -1"},
      {"up and round", "A-A", 1, "^", "A A"},
      {"from a small letter", "aaa", 1, "^", "aBa"},
      {"what is not on it is 0", "a?a", 1, "^", "a1a"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    focus_id = 0;
    char text[] = "...";
    std::copy_n(row.before, 3, text);
    const auto draw = [&] { return BTN_chars(100, 100, text, 3, ""); };
    press(static_cast<float>(100 + row.cell * 10 + 6), 103);
    EXPECT_EQ(frame(draw), 0);
    release();
    press_keys(row.keys);
    EXPECT_EQ(frame(draw), std::string(row.before) != row.after);
    EXPECT_STREQ(text, row.after);
  }
  char text[] = "A9";
  for (const float y : {118.0f, 90.0f}) {
    press(116, y);
    EXPECT_EQ(frame([&] { return BTN_chars(100, 100, text, 2, ""); }), 1);
    EXPECT_STREQ(text, y > 100 ? "AA" : "A9");
  }
}
