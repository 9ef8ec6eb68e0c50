// Number entry and the character wheel, frame by frame.

#include <cmath>
#include <limits>
#include <string>

#include "corekit/OOPS_cpp/oglp.h"
#include "tests/unit/value_fixture.h"

class ButnValue : public value_fixture {};

// --- numbers -------------------------------------------------------------------------------------

TEST_F(ButnValue, NumbersTakeKeys) {
  enum { l = 1, r, u, d };  // arrows
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
      {"tenths are what is shown", 0.7f, 3, 1, 0, 99, 2, "5", 0.5f},
      {"hundredths too", 1.23f, 3, 2, 0, 9.99f, 2, "9", 1.29f},
      {"up", 123, 3, 0, 0, 999, 0, "\3", 223},
      {"down", 123, 3, 0, 0, 999, 2, "\4", 122},
      {"up a tenth", 1.9f, 3, 1, 0, 99, 2, "\3", 2.0f},
      {"left from the first cell", 100, 3, 0, 0, 999, 0,
       "\1"
       "5",
       105},
      {"right from the last cell", 100, 3, 0, 0, 999, 2,
       "\2"
       "5",
       500},
      {"up is clamped", 950, 3, 0, 0, 980, 0, "\3", 980},
      {"a digit is clamped", 100, 3, 0, 0, 500, 0, "9", 500},
      {"minus", 12, 3, 0, -99, 99, 0, "-", -12},
      {"minus is no toggle", -12, 3, 0, -99, 99, 0, "-", -12},
      {"plus", -12, 3, 0, -99, 99, 0, "+", 12},
      {"minus clamps at low", 12, 3, 0, 0, 99, 0, "-", 0},
      {"minus with high below 0", -5, 3, 0, -99, -1, 0, "-", -5},
      {"plus with low not below 0", 5, 3, 0, 0, 99, 0, "+", 5},
      {"letters do nothing", 5, 3, 0, 0, 99, 0, "a.x", 5},
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
    for (const char c : row.keys) {
      constexpr int arrows[] = {0, vk_left, vk_right, vk_up, vk_down};
      if (c <= d) {
        send(27 + c, arrows[static_cast<int>(c)]);
      } else {
        type(std::string(1, c));
      }
    }
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
      {"first cell up", 105, 118, 3, 1, -1, 200, cursor_up},
      {"last cell down", 125, 90, 3, 1, -1, 99, cursor_down},
      {"only over it", 105, 118, 3, 0, -1, 100, cursor_up},
      {"under a menu", 105, 118, 3, 1, 3, 100, cursor_arrow},
      {"highest", 115, 124, 3, 1, -1, 110, cursor_up},
      {"above that", 115, 124.5f, 3, 1, -1, 100, cursor_arrow},
      {"lowest", 115, 82, 3, 1, -1, 90, cursor_down},
      {"below that", 115, 81.5f, 3, 1, -1, 100, cursor_arrow},
      {"just above the cells", 115, 108.5f, 3, 1, -1, 110, cursor_up},
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
  EXPECT_EQ(frame([&] { return BTN_flt(100, 100, &value, 4, 1, 0, ""); }), 1);
  EXPECT_FLOAT_EQ(value, 1.2f);
  for (const float wild : {std::numeric_limits<float>::infinity(), 1e30f}) {
    value = wild;
    frame([&] { return BTN_flt_range(100, 100, &value, 3, 1, -5, 50, ""); });
    EXPECT_EQ(value, 50);
  }
  value = std::nanf("");
  frame([&] { return BTN_flt_range(100, 100, &value, 3, 1, -5, 50, ""); });
  EXPECT_EQ(value, 0);
  value = 2.5f;
  frame([&] { return BTN_flt_range(100, 100, &value, 3, 0, -5, 50, ""); });
  EXPECT_EQ(value, 3) << "half away from zero";
  value = -2.5f;
  frame([&] { return BTN_flt_range(100, 100, &value, 3, 0, -5, 50, ""); });
  EXPECT_EQ(value, -3);

  const struct {
    int before, digits, negative, after;
  } ints[] = {{1234, 3, 0, 999}, {-1, 3, 0, 0},     {-1234, 3, 1, -999}, {999, 3, 0, 999},
              {15, 1, 0, 9},     {-150, 2, 1, -99}, {0, 3, 0, 0}};
  for (const auto& row : ints) {
    int n = row.before;
    const int changed = frame([&] { return BTN_int(100, 100, &n, row.digits, row.negative, ""); });
    EXPECT_EQ(n, row.after) << row.before;
    EXPECT_EQ(changed, row.after != row.before);
  }
  int n = 0;
  EXPECT_EQ(frame([&] { return BTN_int_range(100, 100, &n, 1, 1, 4, ""); }), 1);
  EXPECT_EQ(n, 1) << "the stream count of a box that was just ticked";

  double fine = 0.1 + 1e-12;
  EXPECT_EQ(frame([&] { return BTN_dob_range(100, 100, &fine, 3, 1, 0, 9, ""); }), 0);
  EXPECT_EQ(fine, 0.1 + 1e-12) << "not written while unchanged";
  fine = 20;
  EXPECT_EQ(frame([&] { return BTN_dob_range(100, 100, &fine, 3, 1, 0, 9, ""); }), 1);
  EXPECT_EQ(fine, 9);

  float lat = 100, lon = -200;
  EXPECT_EQ(frame([&] { return enter_lat_lon(&lat, &lon, 100, 100, 2); }), 1);
  EXPECT_EQ(lat, 90);
  EXPECT_EQ(lon, -180);
}

TEST_F(ButnValue, NumbersAreDrawnInCells) {
  float value = 42;
  const picture_map map([&] {
    focus_ring.clear();
    BTN_flt_range(100, 100, &value, 3, 0, 0, 999, "le|ri{?help");
  });
  EXPECT_EQ(map.text_at(103, 100, 10), "042");
  EXPECT_TRUE(map.shows(99, 109, 83, 197)) << "up arrow of the first cell";
  EXPECT_TRUE(map.shows(132, 81, 96, 178)) << "down arrow of the last, its right lower pixel";
  EXPECT_EQ(map.text_at(142, 100), "ri");
  EXPECT_EQ(map.text_at(88 - OGL_string_width("le"), 100).substr(0, 2), "le");
  const picture_map read_only([&] { BTN_display_number(100, 100, 42, 3, 0, "|ri"); });
  EXPECT_EQ(read_only.text_at(103, 100, 10), "042");
  EXPECT_EQ(read_only.text_at(142, 100), "ri");
  EXPECT_EQ(read_only.times(106, 118), 0) << "no arrows";
  EXPECT_TRUE(focus_ring.size() == 1) << "and no place in the ring";
}

TEST_F(ButnValue, CharacterWheel) {
  char text[] = {'A', 'z', '9', '-', ' ', '?'};
  const auto draw = [&] { return BTN_chars(100, 100, text, 6, ""); };
  const auto shown = [&] { return std::string(text, 6); };
  const auto click_at = [&](int cell, float y) {
    press(static_cast<float>(100 + cell * 10 + 5), y);
    return frame(draw);
  };
  for (int cell = 0; cell < 6; ++cell)
    EXPECT_EQ(click_at(cell, 118), 1);
  EXPECT_EQ(shown(), "B-A 01") << "round the end, lower case as upper, what is unknown as 0";
  for (int cell = 0; cell < 6; ++cell)
    EXPECT_EQ(click_at(cell, 90), 1);
  EXPECT_EQ(shown(), "AZ9- 0");

  click_at(1, 103);
  type("q-7.x");
  EXPECT_EQ(frame(draw), 1);
  EXPECT_EQ(shown(), "AQ-7X0") << "in upper case, moving on; a stop is not on the wheel";
  send(28, vk_left);
  send(30, vk_up);
  EXPECT_EQ(frame(draw), 1);
  EXPECT_EQ(shown(), "AQ-7Y0");
  EXPECT_EQ(frame(draw), 0);
}
