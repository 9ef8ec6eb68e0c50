// The numbered colours by what they are used for. Any number of the table may be drawn with; these
// are the ones that the toolkit and the wizard know by name. What each looks like is in colr.cpp
// and, from col_back to col_light, in the interface image.
#pragma once

enum colour : int {
  col_as_is = 0,          // a picture in its own colours
  col_gray = 3,           // plain ones, for helping lines and grounds
  col_blue = 15,          //
  col_red = 57,           //
  col_mark = 8,           // behind what is selected: a digit, a row, a piece of text
  col_black = 12,         // the wizard's texts; plates
  col_lit = 20,           // over the face of what the mouse is on
  col_back = 34,          // of the window
  col_menu_edge = 37,     // a menu's edge and separators,
  col_menu_back = 38,     //   its ground, and what is chosen of a popup list,
  col_menu_lit = 44,      //   and the item under the mouse
  col_dialog_title = 40,  // of a box_dialog
  col_tab_on = 41,        // labels of tabs, selected
  col_tab_off = 42,       //   and not
  col_label = 43,         // labels, titles of frames, texts of dialogs
  col_note = 45,          // notes, and values that can be edited
  col_good = 62,          // the ground of a sign that all is well
  col_light = 47,         // on dark frames; a slider that is held
  col_white = 49,         // whatever the light is
  col_state = 58,         // how far the about box has come
  col_step_now = 65,      // the present one in the list of steps
  col_warning = 69,       // that betas are installed
  col_label_on = 81,      // of a button that is on; the application's to assign
  col_picture = 103,      // of background and faces: white, the application's to assign
};
