// The world map: a flat map cut into 10-degree sectors, on which the user paints the scenery to
// install.
//
//   frame            mouse                     what happens
//   press in a cell  clicked, held             the drag paints the opposite of that cell's value;
//                                              the cell takes it at once
//   drag             held                      every cell that the rubber band between the press
//                                              and the mouse overlaps takes the value
//   press, release   clicked                   as a press; the drag ends with the frame
//   release          neither                   the rubber band goes; the table stays
//
// With the keyboard, once Tab has brought it here, arrows move a frame from cell to cell, and Space
// turns the cell in it. An arrow with Shift paints the rectangle from where Shift began to the cell
// it leads to, with the opposite of the first one's value, as a drag does. The cell's name and the
// size of its scenery stand beside it.
//
// A press on an edge between cells belongs to the upper or the eastern one, and paints none until
// the mouse moves. A press outside the map keeps the value of the press before, at first 0.
//
// Main thread only.
#pragma once

#include <string>

#include "Installer-f/settings/main_stg.h"

// One frame of the widget: draws the map, and edits stg.sector_selected by the mouse and the "all"
// and "none" faces. Works the sizes out anew after each edit.
void UTIL_world_map();
// The choice by the answers of a run without a display. Returns what is wrong with them, or empty.
std::string give_sectors();

// --- the same without drawing --------------------------------------------------------------------

inline constexpr float map_x = 248, map_y = 150;  // lower left corner, window units
inline constexpr float map_cell = 14;             // side of a sector

struct map_mouse {
  float x, y;   // window units
  int clicked;  // the press arrived in this frame
  int held;
};

struct map_drag {
  float o_x = 0, o_y = 0;  // where the mouse was pressed
  int o_use = 0;           // the value that the drag paints
  int on = 0;              // the map has seen the press of this drag
};

struct map_cursor {
  int column = 18, row = 13;                   // the cell in the frame
  int from_column = 0, from_row = 0, use = 0;  // where Shift began, and the value that it paints
  int spans = 0;                               // Shift is held since then
};

// Takes a key with its flags (butn.h). 1 if it painted any cell.
int map_take_key(int vkey, int flags, map_cursor& cursor, int (&selected)[sector_count]);
// Takes one frame of the mouse into the table. 1 if it painted any cell, with whatever value.
int map_paint(const map_mouse& mouse, map_drag& drag, int (&selected)[sector_count]);
