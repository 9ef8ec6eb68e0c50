// Main thread. Writes stg.sector_selected and, through recalc_disk_sizes, the totals.

#include "Installer-f/wizard/main_map.h"

#include <algorithm>

#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_sizes.h"
#include "Installer-f/wizard/main_face.h"
#include "Installer-f/wizard/main_unattended_answers.h"
#include "Installer-f/wizard/main_unattended_disc.h"
#include "Installer-f/wizard/main_wizard.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_string.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/oglp_draw.h"
#include "corekit/draw/oglp_watch.h"
#include "corekit/draw/tman.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/keys_codes.h"
#include "corekit/window/hl_init.h"
#include "corekit/window/hl_mnw.h"

namespace {

constexpr float texels = 512;
constexpr float map_dx = map_cell * sector_columns, map_dy = map_cell * sector_rows;
constexpr float overlay_row = map_dy;  // the highlighted map stands above the plain one

constexpr float mark_alpha = 0.8f;

map_drag drag;
map_cursor cursor;
BTN_key_queue map_queue;

float left_of(int column) {
  return map_x + map_cell * static_cast<float>(column);
}
float bottom_of(int row) {
  return map_y + map_cell * static_cast<float>(row);
}

// A piece of the map at its own place; `first_row` of the image holds the map's lowest one.
void piece(float x, float y, float dx, float dy, float first_row) {
  const float s = (x - map_x) / texels, t = (y - map_y + first_row) / texels;
  x += mnw.x_off;
  y += mnw.y_off;
  OGL_put_quad(x, y, x + dx, y + dy, s, t, s + dx / texels, t + dy / texels);
}

// The highlight of the sectors that are selected, or of those that are not.
void put_sectors(bool selected) {
  for (int column = 0; column < sector_columns; ++column) {
    for (int row = 0; row < sector_rows; ++row) {
      const int cell = sector_cell(column, row);
      if (!stg.sector_available[cell] || (stg.sector_selected[cell] != 0) != selected) continue;
      piece(left_of(column), bottom_of(row), map_cell, map_cell, overlay_row);
    }
  }
}

// A dark frame and a tick in every sector that will be installed: the highlight alone is too near
// to that of the others to be told from it.
void mark_selected() {
  constexpr float side = map_cell - 1;
  constexpr float lines[][4] = {{0, 0, side, 0}, {side, 0, side, side}, {side, side, 0, side},
                                {0, side, 0, 0}, {3, 7, 5, 4},          {5, 4, 10, 10}};
  OGL_put_as(shape_line, 0, blend_mix, 0, col_black, mark_alpha);
  for (int cell = 0; cell < sector_count; ++cell) {
    if (!stg.sector_available[cell] || !stg.sector_selected[cell]) continue;
    const float x = left_of(cell / sector_rows) + mnw.x_off + 0.5f;
    const float y = bottom_of(cell % sector_rows) + mnw.y_off + 0.5f;
    for (const auto& [x1, y1, x2, y2] : lines)
      OGL_put_line(x + x1, y + y1, x + x2, y + y2);
  }
}

void draw_map() {
  OGL_put_as(shape_quad, 1, blend_mix, t_map, col_white, 1.0f);
  piece(map_x, map_y, map_dx, map_dy, 0);
  put_sectors(true);
  OGL_put_as(shape_quad, 1, blend_mix, t_map, col_white, 0.5f);
  put_sectors(false);
  mark_selected();
}

void draw_band(const map_mouse& mouse) {
  const float x = mouse.x + mnw.x_off, y = mouse.y + mnw.y_off;
  const float o_x = drag.o_x + mnw.x_off, o_y = drag.o_y + mnw.y_off;
  OGL_put_as(shape_line, 0, blend_mix, 0, col_black, 0.5f);
  OGL_put_line(x, y, o_x, y);
  OGL_put_line(o_x, y, o_x, o_y);
  OGL_put_line(o_x, o_y, x, o_y);
  OGL_put_line(x, o_y, x, y);
}

// The cell's name, and what its scenery takes; worked out when the cell is another.
std::string words_of_cell(int column, int row) {
  static int known = -1;
  static size_t known_of = 0;
  static std::string words;
  const int cell = sector_cell(column, row);
  if (cell == known && known_of == sim_info.size()) return words;
  known = cell;
  known_of = sim_info.size();
  words = unattended_sector_name(column, row) + "  " + size_string(sector_kb(column, row));
  return words;
}

void draw_cursor() {
  constexpr float gap = 8, text_rise = 4, box_dy = 16, rim = 5;
  const float x = left_of(cursor.column), y = bottom_of(cursor.row);
  BTN_plot_focus(x, y, x + map_cell, y + map_cell);
  const std::string words = words_of_cell(cursor.column, cursor.row);
  const float dx = static_cast<float>(OGL_string_width(words)) + 2 * rim;
  // On the side where there is room.
  const float left = cursor.column < sector_columns / 2 ? x + map_cell + gap : x - gap - dx;
  OGL_fillrect(col_black, 1, left, y - 1, dx, box_dy);
  OGL_string(col_light, left + rim, y - 1 + text_rise, words, 0);
}

// The keyboard's frame: its place in the ring, and its keys. 1 if it painted any cell.
int take_keys() {
  const int id = BTN_identity(map_x, map_y);
  int painted = 0;
  BTN_register_queue(id, map_queue, accept_moves | accept_printable, 0);
  BTN_key key;
  for (int at = 0; BTN_take_key(map_queue, id, &at, &key);)
    painted |= map_take_key(key.vkey, key.flags, cursor, stg.sector_selected);
  return painted;
}

void select_all(int value) {
  std::fill(std::begin(stg.sector_selected), std::end(stg.sector_selected), value);
}

}  // namespace

int map_paint(const map_mouse& mouse, map_drag& of, int (&selected)[sector_count]) {
  if (mouse.clicked) {
    of.o_x = mouse.x;
    of.o_y = mouse.y;
    for (int column = 0; column < sector_columns; ++column) {
      if (mouse.x < left_of(column) || mouse.x > left_of(column + 1)) continue;
      for (int row = 0; row < sector_rows; ++row) {
        if (mouse.y < bottom_of(row) || mouse.y > bottom_of(row + 1)) continue;
        of.o_use = !selected[sector_cell(column, row)];
      }
    }
  }
  // The button may be down from the press that led to this page, which is no drag over the map.
  // A short click on a busy machine is over within its first frame, and counts all the same.
  of.on = mouse.clicked || (mouse.held && of.on);
  if (!of.on) return 0;

  int painted = 0;
  const auto [west, east] = std::minmax(mouse.x, of.o_x);
  const auto [south, north] = std::minmax(mouse.y, of.o_y);
  for (int column = 0; column < sector_columns; ++column) {
    if (left_of(column) >= east || left_of(column + 1) <= west) continue;
    for (int row = 0; row < sector_rows; ++row) {
      if (bottom_of(row) >= north || bottom_of(row + 1) <= south) continue;
      selected[sector_cell(column, row)] = of.o_use;
      painted = 1;
    }
  }
  return painted;
}

int map_take_key(int vkey, int flags, map_cursor& of, int (&selected)[sector_count]) {
  if (vkey == vk_space && (flags & key_down)) {
    of.spans = 0;
    int& cell = selected[sector_cell(of.column, of.row)];
    cell = !cell;
    return 1;
  }
  const int east = (vkey == vk_right) - (vkey == vk_left),
            north = (vkey == vk_up) - (vkey == vk_down);
  if (!east && !north) return 0;
  const int spans = flags & key_shift;
  if (spans && !of.spans) {
    of.from_column = of.column;
    of.from_row = of.row;
    of.use = !selected[sector_cell(of.column, of.row)];
  }
  of.spans = spans;
  of.column = std::clamp(of.column + east, 0, sector_columns - 1);
  of.row = std::clamp(of.row + north, 0, sector_rows - 1);
  if (!spans) return 0;
  const auto [west_most, east_most] = std::minmax(of.column, of.from_column);
  const auto [south_most, north_most] = std::minmax(of.row, of.from_row);
  for (int column = west_most; column <= east_most; ++column)
    for (int row = south_most; row <= north_most; ++row)
      selected[sector_cell(column, row)] = of.use;
  return 1;
}

std::string give_sectors() {
  if (!answers.sectors_given) return "";
  // "all" means all that there are.
  const bool all = std::count(std::begin(answers.sectors), std::end(answers.sectors), 0) == 0;
  const std::string missing =
      all ? "" : unattended_missing_sector(answers.sectors, stg.sector_available);
  if (!missing.empty()) {
    return str_fill(tr("These discs have no scenery for %s."), {missing});
  }
  std::copy(std::begin(answers.sectors), std::end(answers.sectors), stg.sector_selected);
  recalc_disk_sizes();
  return "";
}

void UTIL_world_map() {
  const map_mouse mouse = {mnw.mouse_x, mnw.mouse_y, mnw.mouse_clicked, mnw.mouse_held};
  int changed = map_paint(mouse, drag, stg.sector_selected);
  if (ogl_inited) {
    changed |= take_keys();
    watch_frame({left_of(0), bottom_of(0), left_of(sector_columns), bottom_of(sector_rows)});
    draw_map();
    if (drag.on) draw_band(mouse);
    if (focus_id == BTN_identity(map_x, map_y)) draw_cursor();
  }
  if (interface_rect(470, 120, 255, 46, 114, 22, 1, 0)) {
    select_all(1);
    changed = 1;
  }
  if (interface_rect(620, 120, 374, 46, 132, 22, 1, 0)) {
    select_all(0);
    changed = 1;
  }
  if (changed) recalc_disk_sizes();
}
