// Paths and long texts in lines, and what scrolls.

#include "corekit/Platform/PLT_text.h"
#include "corekit/base/hl_string.h"
#include "corekit/widgets/butn_lines.h"
#include "corekit/widgets/keys_codes.h"
#include "tests/unit/value_fixture.h"

#include <numeric>

class ButnLines : public value_fixture {};

namespace {

std::string joined(const std::vector<std::string>& lines) {
  return std::accumulate(lines.begin(), lines.end(), std::string());
}

}  // namespace

// What is shown of a path is the path: nothing is lost at a break, and no line runs out of its
// place.
TEST_F(ButnLines, ALongPathIsShownInFull) {
  const std::string deep = "/home/user/a folder/With-a-hyphen/and one more/";
  std::string long_path;
  while (long_path.size() + deep.size() < 499)
    long_path += deep;
  const std::string paths[] = {
      "/",
      "/home/user/Desktop/Skyvane 9 Demo/",
      long_path,
      '/' + std::string(255, 'W') + '/',
      '/' + std::string(60, 'i') + '/' + std::string(120, 'M') + '/',
      "/home/J\xC3\xBCrgen/" + std::string(90, 'e') + "/\xC3\x84" + std::string(90, 'm') + '/',
      std::string(300, ' ') + "/after blanks/",
  };
  for (const std::string& path : paths) {
    for (const float wrap : {130.0f, 330.0f, 540.0f}) {
      SCOPED_TRACE(path + ", " + std::to_string(wrap));
      const std::vector<std::string> lines = BTN_lines(path, wrap);
      EXPECT_EQ(joined(lines), PLT_font_text(path));
      for (const std::string& line : lines) {
        const size_t ink = line.find_last_not_of(' ') + 1;
        EXPECT_LE(OGL_string_width(line.substr(0, ink)), wrap) << line;
      }
      for (const size_t most : {1u, 2u, 4u}) {
        std::vector<std::string> cut = lines;
        BTN_cut_middle(cut, most, wrap);
        EXPECT_EQ(cut.size(), std::min(most, lines.size()));
        if (lines.size() <= most) {
          EXPECT_EQ(cut, lines);
          continue;
        }
        EXPECT_TRUE(str_holds(joined(cut), "..."));
        EXPECT_EQ(cut.back().back(), lines.back().back());
        if (most > 1) {
          EXPECT_EQ(cut.front(), lines.front());
        }
        for (const std::string& line : cut)
          EXPECT_LE(OGL_string_width(line), wrap) << line;
      }
    }
  }
  EXPECT_EQ(BTN_lines("a\n\nb c", 540), (std::vector<std::string>{"a", "", "b c"}));
}

// Twenty rows, six shown, in a rectangle from (100, 100) to (300, 220).
TEST_F(ButnLines, WhatScrolls) {
  const auto area = [](int count, int* top) {
    BTN_scroll_area(0, 100, 100, 200, 120, count, 6, top);
    return 0;
  };
  const struct {
    const char* label;
    int vkey, wheel;
    float x, y;  // of the mouse
    int count, before, after;
  } rows[] = {
      {"down", vk_down, 0, 0, 0, 20, 3, 4},
      {"up, at the top", vk_up, 0, 0, 0, 20, 0, 0},
      {"a page down", vk_next, 0, 0, 0, 20, 3, 8},
      {"a page down, near the end", vk_next, 0, 0, 0, 20, 12, 14},
      {"the end", vk_end, 0, 0, 0, 20, 3, 14},
      {"the start", vk_home, 0, 0, 0, 20, 9, 0},
      {"a key for somebody else", vk_left, 0, 0, 0, 20, 3, 3},
      {"the wheel", 0, -2, 150, 150, 20, 3, 5},
      {"the wheel elsewhere", 0, -2, 350, 150, 20, 3, 3},
      {"out of range", 0, 0, 0, 0, 20, 90, 14},
      {"there is room for all", vk_down, -1, 150, 150, 6, 3, 0},
      {"there is nothing", vk_down, -1, 150, 150, 0, 3, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    int top = row.before;
    focus_id = BTN_identity(100, 100);
    frame([&] { return area(row.count, &top); });
    EXPECT_EQ(focus_ring.size(), row.count > 6 ? 1u : 0u);
    if (row.vkey) send(0, row.vkey);
    move(row.x, row.y);
    mnw.wheel = row.wheel;
    frame([&] { return area(row.count, &top); });
    EXPECT_EQ(top, row.after);
    mnw.wheel = 0;
  }
}

TEST_F(ButnLines, ALevelIsMovedByKeys) {
  const struct {
    int vkey;
    float before, after;
    int enabled;
  } rows[] = {{vk_right, 50, 55, 1}, {vk_left, 2, 0, 1},   {vk_prior, 50, 75, 1},
              {vk_next, 10, 0, 1},   {vk_end, 50, 100, 1}, {vk_home, 50, 0, 1},
              {vk_tab, 50, 50, 1},   {vk_right, 50, 50, 0}};
  for (const auto& row : rows) {
    float value = row.before;
    const auto draw = [&] {
      return BTN_horz_slider(100, 300, 200, 15, 0, 100, &value, row.enabled, "", "");
    };
    focus_id = BTN_identity(100, 300);
    frame(draw);
    send(0, row.vkey);
    focus_id = row.enabled ? BTN_identity(100, 300) : focus_id;
    EXPECT_EQ(frame(draw), row.before != row.after);
    EXPECT_FLOAT_EQ(value, row.after) << row.vkey;
  }
  float value = 50;
  mnw.mouse_x = 200;
  mnw.mouse_y = 300;
  BTN_horz_slider(100, 300, 200, 15, 0, 100, &value, 1, "low|high{?what it does", "");
  EXPECT_EQ(stls.hover_help, "what it does");
}
