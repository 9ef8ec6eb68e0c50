// Frames: boxes of any size, cut from small pictures of the interface image. An axis is cut in a
// low cap, a middle that is repeated, and a high cap; a strip is cut along one axis, a box along
// both. The picture of each type is a row of a table.
//
// Main thread. Reads mnw and stls; writes no global.

#include <algorithm>
#include <cmath>
#include <iterator>
#include <vector>

#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_types.h"
#include "corekit/base/mnw.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/oglp_draw.h"
#include "corekit/draw/oglp_watch.h"
#include "corekit/draw/tman.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_draw.h"

namespace {

constexpr float no_wrap = 9999.0f;

// --- the cutting of an axis ---------------------------------------------------------------------

// A piece of an axis: from where to where on the screen, and in the picture.
struct axis_piece {
  float d0, d1, s0, s1;
};

// How the picture is cut along an axis: [0, cap) the low cap, [cap, tile) the part that is
// repeated, [tile, src) the high cap. `squeeze` is the picture length that one unit of a cut tile
// shows.
struct axis_cut {
  float cap, tile, src;
  float squeeze;
};

// The pieces of an axis `length` units long, ends meeting without gap or overlap. In a length that
// the caps alone overfill there is no middle, and the high cap lies over the low one.
void cut_axis(const axis_cut& cut, float length, std::vector<axis_piece>& pieces) {
  constexpr float longest = 16384;  // beyond any screen: a wild size must not tile for ever
  length = std::clamp(std::isfinite(length) ? length : 0.0f, 0.0f, longest);
  const float strip = cut.tile - cut.cap, stop = length - (cut.src - cut.tile);
  pieces.clear();
  pieces.push_back({0, cut.cap, 0, cut.cap});
  for (int i = 0;; ++i) {
    const float d0 = cut.cap + static_cast<float>(i) * strip;
    if (d0 >= stop) break;
    const bool whole = d0 + strip <= stop;
    const float shown = whole ? strip : std::min((stop - d0) * cut.squeeze, strip);
    pieces.push_back({d0, whole ? d0 + strip : stop, cut.cap, cut.cap + shown});
  }
  pieces.push_back({stop, length, cut.tile, cut.src});
}

// Pieces of the frame being drawn; kept, so that a frame allocates nothing.
std::vector<axis_piece> across, upward;

// A picture in a texture: the reference, the size of the texture, and the lower left pixel.
struct frame_picture {
  int ref;
  float tex_dx, tex_dy;
  float u, v;
};

// Draws `across` by `upward`, lower left at (x, y).
void plot_pieces(const frame_picture& picture, float x, float y, int col) {
  x += mnw.x_off;
  y += mnw.y_off;
  OGL_put_as(shape_quad, 1, blend_mix, picture.ref, col, 1.0f);
  for (const axis_piece& row : upward) {
    const float t0 = (picture.v + row.s0) / picture.tex_dy;
    const float t1 = (picture.v + row.s1) / picture.tex_dy;
    for (const axis_piece& column : across) {
      OGL_put_quad(x + column.d0, y + row.d0, x + column.d1, y + row.d1,
                   (picture.u + column.s0) / picture.tex_dx, t0,
                   (picture.u + column.s1) / picture.tex_dx, t1);
    }
  }
}

frame_picture interface_at(float u, float v) {
  return {t_interface, interface_side, interface_side, u, v};
}

// The even length nearest to `length`, so that a strip centred on whole units has whole ends.
float even_length(float length) {
  return 2.0f * std::round(length / 2.0f);
}

void bad_call(const char* text, alert_source source) {
  MACIBM_fault(source, text);
}

// --- strips -------------------------------------------------------------------------------------

// A strip's picture, src by h pixels at (u, v): a cap, the tile from there up to `tile`, a cap.
// Types 0 and 1 reach one row beyond the image, and wrap to its lowest, the blank foot of the
// glyphs.
struct frame1_row {
  int type;
  float cap, src, h, u, v, tile;
  float extra;  // added to the width
  float lower;  // taken off y
};
constexpr float half_seen = 10;  // of a strip's height; the rest is shadow
constexpr frame1_row frame1_rows[] = {
    {strip_plain, 10, 100, 26, 1, 487, 90, 0, 3},
    {strip_bottom, 20, 100, 26, 102, 487, 80, 0, 3},
    {strip_button_up, 10, 52, 26, 304, 486, 42, 0, 0},
    {strip_button_down, 10, 52, 26, 304, 459, 42, 0, 0},
    {strip_trough, 10, 28, 16, 112, 161, 18, 0, 0},
    {strip_fill, 10, 28, 16, 83, 161, 18, 0, 0},
    {strip_track, 10, 65, 24, 240, 242, 55, 0, 0},
    {strip_level, 7, 16, 16, 289, 219, 9, 0, 0},
    {strip_value, 10, 51, 26, 262, 133, 41, 4, 0},
    {strip_list, 26, 68, 24, 357, 488, 42, 4, 0},
};

// The vertical bar: 20 pixels wide, caps of 10, tiles of 20.
constexpr float frame0_width = 20, frame0_u = 102, frame0_v = 248, frame0_extra = 8;
// Kept as it stands: a cut tile shows tile - cap of `tile`, which squeezes it a little.
constexpr axis_cut frame0_cut = {10, 30, 40, (30.0f - 10.0f) / 30.0f};

// --- boxes --------------------------------------------------------------------------------------

// A box's picture, a square of `side` pixels at (u, v), and how far its shadow reaches out.
struct frame2_row {
  int type;
  float u, v, side;
  float margin, below, above;  // left and right; bottom; top
  int title_colour;
};
constexpr frame2_row frame2_rows[] = {
    {box_dialog, 1, 358, 100, 9, 14, 4, col_dialog_title},
    {box_window, 102, 358, 100, 9, 14, 4, col_label},
    {box_group, 203, 358, 100, 9, 14, 4, col_label},
    {box_panel, 304, 358, 100, 9, 14, 4, col_label},
    {box_dark, 405, 358, 100, 9, 14, 4, col_light},
    {box_list, 1, 289, 68, 2, 2, 2, col_label},
    {box_corners, 70, 315, 42, 8, 13, 2, col_label},
    {box_help, 113, 315, 42, 8, 13, 2, col_label},
    {box_small, 440, 12, 44, 6, 9, 4, col_label},
    {box_page, 982, 2, 41, 1, 1, 1, col_label},  // in the elements image
};

axis_cut frame2_cut_across(const frame2_row& row) {
  if (row.type == box_corners) return {20, 22, 42, 1};
  return {0.35f * row.side, 0.65f * row.side, row.side, 1};
}

axis_cut frame2_cut_upward(const frame2_row& row) {
  if (row.type == box_corners) return {26, 28, 42, 1};
  return {0.3f * row.side, 0.7f * row.side, row.side, 1};
}

template <typename row_type, size_t count>
const row_type* find_row(const row_type (&rows)[count], int type) {
  const auto row = std::find_if(std::begin(rows), std::end(rows),
                                [type](const row_type& r) { return r.type == type; });
  return row == std::end(rows) ? nullptr : row;
}

// --- close boxes --------------------------------------------------------------------------------

constexpr float zap_side = 18, zap_u = 120, zap_v = 178, zap_v_pressed = 197;
constexpr float zap_rim = 7, zap_rim_top = 1;

// Draws both boxes; bit 0 of the result is a click on the left one, bit 1 on the right one.
int plot_zap_boxes(bool pressed) {
  const float y = mnw.win_dy - zap_rim_top - zap_side;
  const float xs[] = {zap_rim, mnw.win_dx - zap_rim - zap_side};
  int hits = 0;
  for (int i = 0; i < 2; ++i) {
    BTN_cell(xs[i], y, zap_u, pressed ? zap_v_pressed : zap_v, zap_side, zap_side, 0);
    if (BTN_click_in(xs[i], y, xs[i] + zap_side, y + zap_side)) hits |= 1 << i;
  }
  return hits;
}

bool window_has_zap_boxes() {
  return mnw.win_id != win_main && !(mnw.win_id >= win_alert && mnw.win_id <= win_file_save);
}

}  // namespace

void BTN_cell(float x, float y, float u, float v, float dx, float dy, int col) {
  OGL_2dquad_d(t_interface, col, 1.0f, x, y, u / interface_side, v / interface_side, dx, dy,
               dx / interface_side, dy / interface_side, blend_mix);
}

void BTN_util_element(float x, float y, float s, float t, float half_dx, float half_dy, int col) {
  BTN_cell(x - half_dx, y - half_dy, s - half_dx, t - half_dy, 2 * half_dx, 2 * half_dy, col);
}

void BTN_frame0(int type, float x, float y, float length) {
  if (type != bar_scroll) return bad_call("Bad BTN_frame0 call!", at_frame0_type);
  if (x != std::round(x)) return bad_call("BTN_frame0 non-int x_center!", at_frame0_x);
  if (y != std::round(y)) return bad_call("BTN_frame0 non-int y_center!", at_frame0_y);
  if (!ogl_inited) return;
  const float height = even_length(length) + frame0_extra;
  across.assign(1, {0, frame0_width, 0, frame0_width});
  cut_axis(frame0_cut, height, upward);
  plot_pieces(interface_at(frame0_u, frame0_v), x - frame0_width / 2, y - height / 2, 0);
}

void BTN_frame1(int type, float x, float y, float width, int col) {
  const frame1_row* row = find_row(frame1_rows, type);
  if (!row) return bad_call("Bad BTN_frame1 call!", at_frame1_type);
  if (!ogl_inited) return;
  width = even_length(width) + row->extra;
  // Kept as it stands: the divisor is `tile` and not the tile's length, so that the last tile is a
  // little squeezed.
  cut_axis({row->cap, row->tile, row->src, (row->tile - row->cap) / row->tile}, width, across);
  upward.assign(1, {0, row->h, 0, row->h});
  plot_pieces(interface_at(row->u, row->v), x - width / 2, y - row->lower - row->h / 2, col);
  const float left = x - width / 2 + mnw.x_off, half = std::min(row->h / 2, half_seen);
  watch_frame({left, y - half + mnw.y_off, left + width, y + half + mnw.y_off});
}

int BTN_frame2(int type, float x, float y, float dx, float dy, const std::string& title) {
  const frame2_row* row = find_row(frame2_rows, type);
  if (!row) {
    bad_call("Bad BTN_frame2 call!", at_frame2_type);
    return 0;
  }
  if (!ogl_inited) return 0;
  cut_axis(frame2_cut_across(*row), dx + 2 * row->margin, across);
  cut_axis(frame2_cut_upward(*row), dy + row->below + row->above, upward);
  frame_picture picture = interface_at(row->u, row->v);
  if (type == box_page) picture = {t_elements, 1024, 128, row->u, row->v};
  plot_pieces(picture, x - row->margin, y - row->below, 0);
  watch_frame({x + mnw.x_off, y + mnw.y_off, x + mnw.x_off + dx, y + mnw.y_off + dy});

  if (!title.empty()) {
    const float title_y = y + dy - (type == box_dialog ? 13 : 16);
    if (type == box_page) {
      OGL_string(row->title_colour, x + 10, title_y, title, no_wrap);
    } else {
      OGL_string(row->title_colour, x + dx / 2, title_y, title, no_wrap, charset_text, just_centre);
    }
  }
  if (type != box_dialog || !window_has_zap_boxes()) return 0;
  return plot_zap_boxes(false) & 1;
}

int BTN_zap_boxes(int state) {
  return plot_zap_boxes(state != 0) != 0;
}

void BTN_fillwin(int titled, int inner) {
  BTN_frame2(titled ? box_dialog : box_window, 0, 0, mnw.win_dx, mnw.win_dy, stls.window_title);
  if (inner == inner_bar) {
    BTN_frame1(strip_bottom, mnw.win_dx / 2, mnw.win_dy - 50, mnw.win_dx, col_as_is);
  } else if (inner != inner_none) {
    BTN_frame2(inner, 10, 10, mnw.win_dx - 20, mnw.win_dy - 40, "");
  }
}

void BTN_subwin(float title_dy, int type, float x, float y, float dx, float dy,
                const std::string& title, float* next_x, float* next_y) {
  constexpr float rim = 10, top_rim = 28;
  if (x < 0) x = rim;
  if (y < 0) y = rim;
  if (dx < 0) dx = mnw.win_dx - rim - x;
  if (dy < 0) dy = mnw.win_dy - top_rim - y - title_dy;
  BTN_frame2(type, x, y, dx, dy, title);
  if (next_x) *next_x = x + dx + rim;
  if (next_y) *next_y = y + dy + rim;
}
