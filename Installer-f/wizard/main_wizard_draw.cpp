// How the wizard's record is drawn.
//
// Main thread. Writes stg.server_index, which the list of mirrors edits.

#include "Installer-f/wizard/main_wizard_draw.h"

#include <algorithm>
#include <cmath>

#include "Installer-f/engine/utils_servers.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_face.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/xtim.h"
#include "corekit/draw/colr.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/tman.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_lines.h"
#include "corekit/widgets/butn_value.h"
#include "corekit/window/hl_mnw.h"

namespace {

constexpr float step_x = 30, step_y = 480, step_pitch = 20;
constexpr float text_x = 230, text_y = 440, text_dx = 540, line_dy = 10;
constexpr float middle_x = 500, title_y = 480, title_dx = 540;

// Bars of one page, by the numbers that tell them apart.
enum page_bar { bar_mirrors = 1, bar_text = 3 };

// --- marks ---------------------------------------------------------------------------------------

// Cells of the interface image that stand for something: their middles.
constexpr float tick_u = 148, tick_v = 206, dot_u = 92, dot_v = 151, ring_u = 92, ring_v = 132;
constexpr float cross_u = 129, cross_v = 206, half_cell = 9;

void draw_cell(float x, float y, float u, float v, int col) {
  BTN_util_element(x, y, u, v, half_cell, half_cell, col);
}

// A white tick, with edges that fade out.
void draw_white_tick(float x, float y) {
  constexpr float halves[] = {1.5f, 1.1f, 0.7f};  // of its thickness
  const auto bar = [&](float x1, float y1, float x2, float y2, float half) {
    const float length = std::hypot(x2 - x1, y2 - y1);
    const float dx = (y1 - y2) / length * half, dy = (x2 - x1) / length * half;
    OGL_2dquad(0, col_white, 0.6f, x + x1 - dx, y + y1 - dy, 0, 0, x + x1 + dx, y + y1 + dy, 0, 0,
               x + x2 + dx, y + y2 + dy, 0, 0, x + x2 - dx, y + y2 - dy, 0, 0, 0, blend_mix);
  };
  for (const float half : halves) {
    bar(-3.5f, 0.2f, -1, -2.5f, half);
    bar(-1.4f, -2.5f, 3.5f, 2.8f, half);
  }
}

// The sign beside the heading of a page that tells how it ended.
void draw_outcome(const wizard_screen& screen) {
  constexpr float gap = 16, rise = 2;
  if (screen.outcome == outcome_none) return;
  const float x = middle_x - static_cast<float>(OGL_string_width(screen.title)) / 2 - gap;
  if (screen.outcome == outcome_bad)
    return draw_cell(x, title_y + rise, cross_u, cross_v, col_as_is);
  draw_cell(x, title_y + rise, ring_u, ring_v, col_good);
  draw_white_tick(x, title_y + rise);
}

// --- the left panel ------------------------------------------------------------------------------

float steps_end = 0;  // the y below the list of steps and the word on betas

// Which step the flow has come to. Pages that are in no list, such as those that wait for a disc,
// leave it where it was.
size_t reached_step() {
  static size_t reached = 0;
  const auto found = std::find(step_funcs.begin(), step_funcs.end(), g_wizard);
  if (found != step_funcs.end()) reached = static_cast<size_t>(found - step_funcs.begin());
  return std::min(reached, step_funcs.size());
}

// Its red cannot be read on a light ground, so it stands on a dark plate, as a warning in a
// cockpit. Returns the y below it.
float draw_beta_warning(float y) {
  constexpr float rim = 8, rise = 6, ink = 8, wrap_dx = 160;
  const std::string text = UTL_translate_string(
      "You have chosen to download Skyvane 9 betas.  If you do not "
      "want this, choose options and uncheck the beta option.");
  const float dy = line_dy * static_cast<float>(OGL_string_lines(text, wrap_dx));
  // Clear of the last step's name above.
  OGL_fillrect(col_black, 1, step_x - rim, y - dy + line_dy - rise, wrap_dx + 2 * rim,
               dy - line_dy + ink + 2 * rise);
  return OGL_string(col_warning, step_x, y, text, wrap_dx);
}

void draw_steps() {
  constexpr float mark_x = 19, mark_rise = 3;
  const size_t reached = reached_step();
  float y = step_y;
  for (size_t i = 0; i < step_names.size(); ++i) {
    const bool is_now = step_funcs[i] == g_wizard;
    if (i < reached) draw_cell(mark_x, y + mark_rise, tick_u, tick_v, col_as_is);
    if (i == reached && is_now) draw_cell(mark_x, y + mark_rise, dot_u, dot_v, col_as_is);
    OGL_string(is_now ? col_step_now : col_note, step_x, y, step_names[i], 180);
    y -= step_pitch;
  }
  if (stg.beta_flag) y = draw_beta_warning(y);
  steps_end = y;
}

// The mirror chooser grows upward under the step list, as far as that lets it; more of them scroll.
// It works while a transfer runs.
void draw_servers() {
  constexpr float pitch = 40, lowest_y = 78, ink_above = 14, label_x = 50, label_dx = 130;
  static int top = 0, shown_index = -1;
  const int count = stg.server_count;
  const int room = static_cast<int>((steps_end + step_pitch - ink_above - lowest_y) / pitch) + 1;
  const int shown = std::clamp(room, 1, count);
  // The one that is used is in sight when it changes.
  if (stg.server_index != shown_index) {
    shown_index = stg.server_index;
    top = std::clamp(top, shown_index - shown + 1, shown_index);
  }
  const float dy = pitch * static_cast<float>(shown);
  BTN_scroll_area(bar_mirrors, 14, lowest_y - 14, 182, dy, count, shown, &top);
  for (int i = 0; i < shown; ++i) {
    const size_t server = static_cast<size_t>(top) + static_cast<size_t>(i);
    const float y = lowest_y + pitch * static_cast<float>(shown - 1 - i);
    std::string left, right, help;
    BTN_expand_label(server_desc[server], &left, &right, &help);
    int index = stg.server_index;
    BTN_is_int(step_x, y, &index, top + i, "");
    OGL_string(col_note, label_x, y, left.empty() ? right : left, label_dx);
    if (BTN_click_in(39, y - 4, label_x + label_dx, y + 12)) index = top + i;
    if (index != stg.server_index) stg.server_index = shown_index = index;
  }
}

// --- the right panel -----------------------------------------------------------------------------

void draw_heading(const wizard_screen& screen) {
  constexpr float line_y = 464;
  OGL_string(col_black, middle_x, title_y, screen.title, title_dx, charset_text, just_centre);
  if (screen.title.empty()) return;
  draw_outcome(screen);
  OGL_fillrect(col_label, 0.25f, text_x, line_y, text_dx, 1);
}

void draw_text(const wizard_screen& screen) {
  constexpr float rim = 10, bar_room = 14, below = 130, above = 456;
  if (!screen.text_is_framed) {
    BTN_plot_lines(col_black, text_x, text_y, BTN_lines(screen.text, text_dx));
    return;
  }
  static int top = 0;
  constexpr int shown = static_cast<int>((text_y - below - rim) / line_dy) + 1;
  std::vector<std::string> lines = BTN_lines(screen.text, text_dx - bar_room);
  const int count = static_cast<int>(lines.size());
  const float left = text_x - rim, dx = text_dx + 2 * rim;
  BTN_frame2(box_list, left, below, dx, above - below, "");
  BTN_scroll_area(bar_text, left, below, dx, above - below, count, shown, &top);
  lines.erase(lines.begin(), lines.begin() + top);
  if (lines.size() > static_cast<size_t>(shown)) lines.resize(static_cast<size_t>(shown));
  BTN_plot_lines(col_black, text_x, text_y, lines);
}

// Where the fill of the bar begins and how long it is, from the bar's left end.
struct bar_fill {
  float x, dx;
};
constexpr float bar_dx = 520, bar_x = 240, bar_y = 155;

bar_fill fill_of(float progress) {
  // The fill starts where its rounded cap is whole, so that it never looks broken.
  const float p = progress * 0.96f + 0.04f;
  const float fill = p < 0.04f ? 20.8f : p > 1.0f ? bar_dx : p * bar_dx;
  return {0, 2 * std::round(fill / 2)};
}

// A piece that goes to and fro, ten steps a second, while nobody knows how long it takes.
bar_fill wandering_fill() {
  constexpr float dx = 120, step = 20, steps_a_second = 10;
  constexpr int steps = static_cast<int>((bar_dx - dx) / step);
  const int at = static_cast<int>(xtim.now_sec * steps_a_second) % (2 * steps);
  return {step * static_cast<float>(at <= steps ? at : 2 * steps - at), dx};
}

void draw_progress(const wizard_screen& screen) {
  if (screen.progress < 0 && !screen.is_busy) return;
  const bar_fill fill = screen.progress < 0 ? wandering_fill() : fill_of(screen.progress);
  const float x = bar_x - mnw.x_off, y = bar_y - mnw.y_off;
  BTN_frame1(strip_trough, x + bar_dx / 2, y, bar_dx, col_as_is);
  BTN_frame1(strip_fill, x + fill.x + fill.dx / 2, y, fill.dx, col_as_is);
  OGL_string(col_black, 242, 120, screen.progress_text, bar_dx);
}

}  // namespace

void wizard_draw_frame() {
  colr.assign(col_picture, 1, 1, 1);
  OGL_2dquad_d(t_background, col_picture, 1, 0, 0, 0, 0, mnw.win_dx, mnw.win_dy,
               mnw.win_dx / 1024.0f, mnw.win_dy / 1024.0f, blend_mix);
  BTN_frame2(box_page, 10, 50, 190, 453, "");
  BTN_frame2(box_page, 210, 50, 580, 453, "");
  draw_steps();
}

int wizard_draw_record(const wizard_screen& screen) {
  draw_heading(screen);
  draw_text(screen);

  int pressed = -1;
  for (size_t i = 0; i < screen.button_names.size(); ++i) {
    const float y = 350.0f - 25.0f * static_cast<float>(i);
    const std::string& name = screen.button_names[i];
    // The last page is for its button, not for Quit.
    const int hit = screen.next == wizard_quit ? BTN_main_action(middle_x, y, 250, name)
                                               : BTN_action(middle_x, y, 250, 0, 1, name, "");
    if (hit) pressed = static_cast<int>(i);
  }
  draw_progress(screen);
  if (screen.show_servers && stg.server_count >= 1) draw_servers();
  return pressed;
}

void wizard_draw_row(const wizard_screen& screen, wizard_press& press) {
  constexpr float row_y = 12, row_dy = 22, row_tex = 46;  // the bottom row and its faces
  const bool last_page = screen.next == wizard_quit;
  const int back_set = screen.back ? 1 : 0;
  const int next_set = screen.next ? 1 : 0;
  const auto face = [](float x, float tex_x, float dx, int hot, int enabled) {
    return interface_rect(x, row_y, tex_x, row_tex, dx, row_dy, hot, enabled ? 0 : 2) != 0;
  };
  // The last page has one Quit button only: its Next, which wears the Quit face.
  if (!last_page) press.quit |= face(30, 1, 50, 1, 1);
  press.options |= face(100, 628, 90, 1, screen.prefs_enabled);
  press.back |= face(560, 54, 89, back_set, back_set);
  press.next |= last_page ? face(670, 1, 50, 1, 1) : face(670, 150, 100, next_set, next_set);
}
