// The world map's mouse, frame by frame.

#include <gtest/gtest.h>

#include <algorithm>

#include <cstdio>
#include <set>
#include <string>

#include "Installer-f/wizard/main_map.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/keys_codes.h"

namespace {

// Columns and rows of the selected cells.
using cells = std::set<std::pair<int, int>>;

cells selected_of(const int (&table)[sector_count]) {
  cells found;
  for (int column = 0; column < sector_columns; ++column)
    for (int row = 0; row < sector_rows; ++row)
      if (table[sector_cell(column, row)]) found.insert({column, row});
  return found;
}

constexpr float x_of(float column) {
  return map_x + map_cell * column;
}
constexpr float y_of(float row) {
  return map_y + map_cell * row;
}

// "5,4 3,4" as cells.
cells cells_of(const char* text) {
  cells found;
  for (int column, row, used; std::sscanf(text, "%d,%d%n", &column, &row, &used) == 2; text += used)
    found.insert({column, row});
  return found;
}

TEST(DiscMap, Drags) {
  // A frame is the mouse's place in cells and its button: down, when the press arrives in it, tap,
  // when the release does as well, held or up; the number tells whether the
  // last one painted.
  const std::tuple<const char*, const char*, const char*, const char*, int> rows[] = {
      {"a click deselects", "3,4 5,5", "3.5,4.5 down", "5,5", 1},
      {"a click within one frame", "", "3.5,4.5 tap", "3,4", 1},
      {"and it drags nothing", "", "3.5,4.5 tap 5.5,5.5 up", "3,4", 0},
      {"holding still does not toggle", "", "3.5,4.5 down 3.5,4.5 held", "3,4", 1},
      {"a drag paints one value", "4,4", "3.5,4.5 down 5.5,5.5 held", "3,4 4,4 5,4 3,5 4,5 5,5", 1},
      {"from a selected cell it clears", "3,4 5,4 7,7", "5.5,4.5 down 3.5,4.5 held", "7,7", 1},
      {"a band that shrinks leaves what it painted", "", "3.5,4.5 down 4.5,4.5 held 3.6,4.5 held",
       "3,4 4,4", 1},
      {"a corner belongs to the cell above and to the east", "3,4", "3,4 down 3.5,4.5 held", "", 1},
      {"and not to the others", "2,3 2,4 3,3", "3,4 down 2.5,3.5 held", "2,3 2,4 3,3", 1},
      {"a band along an edge touches no cell beyond it", "", "3.5,4.5 down 4,5 held", "3,4", 1},
      {"a press outside keeps the last value", "",
       "9.5,9.5 down 9.5,9.5 up -1,0.5 down 1.5,0.5 held", "9,9 0,0 1,0", 1},
      {"held from before the map was there", "", "3.5,4.5 held 9.5,9.5 held", "", 0},
      {"the far edge", "", "36,18 down 35.9,17.9 held", "35,17", 1},
      {"just beyond it", "", "36.1,18.1 down", "", 0},
  };
  for (const auto& [label, before, frames, after, paints] : rows) {
    int table[sector_count] = {};
    for (const auto& [column, at] : cells_of(before))
      table[sector_cell(column, at)] = 1;
    map_drag drag;
    int painted = 0, used = 0;
    float x, y;
    char button[8];
    for (const char* at = frames; std::sscanf(at, "%f,%f %7s%n", &x, &y, button, &used) == 3;
         at += used) {
      const std::string is = button;
      const map_mouse mouse = {x_of(x), y_of(y), is == "down" || is == "tap",
                               is == "down" || is == "held"};
      painted = map_paint(mouse, drag, table);
    }
    EXPECT_EQ(selected_of(table), cells_of(after)) << label;
    EXPECT_EQ(painted, paints) << label;
  }
}

}  // namespace

TEST(DiscMapKeys, ArrowsSpaceAndShift) {
  // Keys and flags; the cell at last, whether the last key painted, how many are selected.
  const std::tuple<const char*, std::vector<int>, int, int, int, int, long> rows[] = {
      {"Space turns", {vk_space}, key_down, 1, 1, 1, 1},
      {"twice is none", {vk_space, vk_space}, key_down, 1, 1, 1, 0},
      {"a held Space does not", {vk_space}, 0, 1, 1, 0, 0},
      {"arrows paint nothing", {vk_right, vk_up}, key_down, 2, 2, 0, 0},
      {"the edge holds", {vk_left, vk_left, vk_down, vk_down}, key_down, 0, 0, 0, 0},
      {"Shift paints a rectangle", {vk_right, vk_right, vk_up}, key_down | key_shift, 3, 2, 1, 6},
      {"Space begins anew", {vk_right, vk_space, vk_up}, key_down | key_shift, 2, 2, 1, 3},
      {"another key", {vk_home}, key_down, 1, 1, 0, 0},
  };
  for (const auto& [label, vkeys, flags, column, row, paints, selected] : rows) {
    SCOPED_TRACE(label);
    int table[sector_count] = {};
    map_cursor cursor;
    cursor.column = cursor.row = 1;
    int painted = 0;
    for (const int vkey : vkeys)
      painted = map_take_key(vkey, flags, cursor, table);
    EXPECT_EQ(painted, paints);
    EXPECT_EQ(cursor.column, column);
    EXPECT_EQ(cursor.row, row);
    EXPECT_EQ(std::count(std::begin(table), std::end(table), 1), selected);
  }
}
