// The gallery's sections of live widgets.
//
// Main thread. What the widgets edit is in the structs below.

#include <string>
#include <vector>

#include "corekit/draw/oglp.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_value.h"
#include "corekit/window/butn_file.h"
#include "corekit/window/hl_mnw.h"
#include "gallery/gallery.h"

namespace {

struct action_values {
  int pressed = 1;  // the push buttons that stay down
  int ticked = 1, clear = 0;
  int one_of_three = 1;
  int tab = 1;
  int presses = 0;
} actions;

struct number_values {
  float plain = 123.4f, below_zero = -12.5f;
  int whole = 42, streams = 2;
  float latitude = 47.45f, longitude = -122.3f;
  char tail[7] = "N172SP";
  std::string name = "Skyvane 9 Demo", empty;
  std::string path = "/opt/games/Skyvane 9/";
} numbers;

struct choice_values {
  int system = 2;
  float level = 30;
  int row = 12;
  int list_top = 0, list_selected = 3;
  std::string search;
} choices;

// The tabs stand in rows counted from the window's top: the row nearest to y, above it or on it.
int tab_row_at(float y) {
  constexpr float first_y = 38, pitch = 32;
  return -static_cast<int>((y - (mnw.win_dy - first_y)) / pitch + 1);
}

}  // namespace

void draw_actions(float top) {
  const float left = content_left;
  if (BTN_action(left + 60, top - 20, -1, 0, 1, "Automatic width", "")) ++actions.presses;
  if (BTN_action(left + 200, top - 20, 100, 0, 1, "|{?A button that only has help", "")) {
    ++actions.presses;
  }
  if (BTN_action(left + 330, top - 20, 120, actions.pressed == 1, 0, "Mode 0", "")) {
    actions.pressed = 1;
  }
  if (BTN_action(left + 460, top - 20, 120, actions.pressed == 2, 2, "Mode 2", "")) {
    actions.pressed = 2;
  }
  BTN_action(left + 80, top - 55, 160, 0, 1, "With a note",
             "The note stands beside the button, on as many lines as it needs.\nThis is its second "
             "line.");
  OGL_string(col_label, left + 600, top - 24, "pressed: " + std::to_string(actions.presses), 200);

  BTN_bool(left + 60, top - 90, &actions.ticked, "left|right{?Help of a box", 0);
  BTN_bool(left + 180, top - 90, &actions.clear, "a long label on two lines|and another one here",
           0);
  for (int i = 0; i < 3; ++i) {
    BTN_is_int(left + 400 + static_cast<float>(i) * 100, top - 90, &actions.one_of_three, i,
               "|radio " + std::to_string(i));
  }
  const int row = tab_row_at(top - 150);
  for (int i = 0; i < 4; ++i)
    BTN_tab(i, row, &actions.tab, i, "tab " + std::to_string(i));
}

void draw_values(float top) {
  const float left = content_left;
  BTN_flt_range(left + 120, top - 30, &numbers.plain, 6, 2, 0, 999, "flt_range|0 to 999");
  BTN_flt(left + 440, top - 30, &numbers.below_zero, 5, 2, 1, "with a sign|any");
  BTN_int(left + 120, top - 80, &numbers.whole, 3, 0, "int|no sign");
  BTN_int_range(left + 320, top - 80, &numbers.streams, 1, 1, 4, "int_range|1 to 4");
  BTN_display_number(left + 560, top - 80, 9876.5f, 6, 1, "shown|only");
  enter_lat_lon(&numbers.latitude, &numbers.longitude, left + 120, top - 130, 3);
  BTN_chars(left + 440, top - 130, numbers.tail, 6, "chars|wheel");
  BTN_enterstring(left + 120, top - 180, &numbers.name, 256, "enterstring:", 200, 0);
  BTN_enterstring(left + 440, top - 180, &numbers.empty, 256, "empty:", 200, 0);
  BTN_select_path_stl(left + 120, top - 225, win_file_open, file_type_folder, &numbers.path, 256,
                      "last part:", 200, 0);
  BTN_select_path_stl(left + 440, top - 225, win_file_open, file_type_prefix, &numbers.path, 256,
                      "whole path:", 200, 0);
}

void draw_choices(float top) {
  const float left = content_left;
  BTN_textlist(left + 80, top - 30, &choices.system, "|Macintosh|Windows|Linux|-|Others",
               "textlist|of five items");
  BTN_horz_slider(left + 80, top - 90, 200, 15, 0, 100, &choices.level, 1, "level|15",
                  std::to_string(static_cast<int>(choices.level)));
  BTN_horz_slider(left + 80, top - 140, 200, 12, 0, 100, &choices.level, 0, "off|12", "");
  OGL_string(col_label, left + 340, top - 24, "vert_slider " + std::to_string(choices.row), 120);
  BTN_vert_slider(1, left + 370, top - 240, top - 60, 0, 40, &choices.row);
  int nothing = 0;
  BTN_vert_slider(2, left + 400, top - 240, top - 60, 0, 0, &nothing);

  static const std::vector<std::string> names = {
      "Aircraft",  "Custom Scenery", "Global Scenery",  "Instructions", "Output",
      "Resources", "Skyvane 9",      "Airfoil Builder", "Cockpit.png",  "Eagle.acf",
      "Log.txt",   "Plane Builder",  "Readme",          "Weather"};
  static const std::vector<int> types = {1, 1, 1, 1, 1, 1};
  BTN_list_and_search(3, left + 460, top - 270, 240, 250, &choices.list_top, &choices.list_selected,
                      0, &choices.search, names, &types);
}
