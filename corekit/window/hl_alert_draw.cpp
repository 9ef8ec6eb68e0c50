// The drawn form of an alert, and the question with three answers.
//
// Each is a loop of its own around the frame. Main thread. Writes mnw's mouse and language, and
// stls.

#include "corekit/window/hl_alert_draw.h"

#include <cmath>

#include "corekit/Platform/PLT_gl.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/hl_types.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/tman.h"
#include "corekit/widgets/butn.h"
#include "corekit/window/hl_mnw.h"

alert_texts_record alert_texts;

namespace {

constexpr float line_ys[] = {205, 165, 125, 85};
constexpr float where_y = 45, button_y = 18;
constexpr float panel_y = 35;
constexpr float line_dy = 10, ink_above = 6, ink_below = 4;  // of a line of text, from its y
constexpr float above_next = ink_above + line_dy;            // an empty line sets texts apart

// Whatever the failure left OpenGL in, drawing can begin.
void restore_sane_state() {
  constexpr int errors_read = 30;
  // Outside a glBegin and outside a list these two only leave an error to be read.
  gl.End();
  gl.EndList();
  for (int i = 0; i < errors_read; ++i)
    gl.GetError();
  OGL_reset_state();
  TEX_reset_bind();
  OGL_nrml_colors();
  OGL_scissors_end();
}

// Draws the lines at their places. A long one may run on over the places of empty ones behind it;
// of one that is longer still the whole lines are shown that end above the next text, or `bottom`.
void plot_lines(const std::string* lines, float bottom) {
  const float half = mnw.win_dx / 2, wrap = 0.9f * mnw.win_dx;
  for (int i = 0; i < 4; ++i) {
    if (lines[i].empty()) continue;
    int next = i + 1;
    while (next < 4 && lines[next].empty())
      ++next;
    const float y = line_ys[i];
    const float limit = next < 4 ? line_ys[next] + above_next : bottom;
    const float end = y - ink_below - std::floor((y - ink_below - limit) / line_dy) * line_dy;
    OGL_scissors(0, end, mnw.win_dx, y + ink_above - end);
    OGL_string(col_label, half, y, lines[i], wrap, charset_text, just_centre);
  }
  OGL_scissors_end();
}

void plot_message(const std::string* lines, int type, const std::string& where) {
  plot_lines(lines, type == t_exit ? where_y + above_next : panel_y);
  if (type == t_exit) {
    OGL_string(col_label, mnw.win_dx / 2, where_y, where, 0.9f * mnw.win_dx, charset_text,
               just_centre);
  }
}

void plot_languages() {
  constexpr const char* labels[] = {"|English", "|French", "|German"};
  for (int i = 0; i < 3; ++i) {
    BTN_is_int(mnw.win_dx / 2 - 25, static_cast<float>(180 - 20 * i), &mnw.language, i, labels[i]);
  }
}

void plot_backdrop() {
  MACIBM_plot_behind();
  BTN_fillwin(1, inner_none);
}

}  // namespace

void draw_alert(const exce_class& failure, const std::string& where) {
  const int type = failure.severity;
  const std::string lines[4] = {failure.line_1.shown(), failure.line_2.shown(),
                                failure.line_3.shown(), failure.line_4.shown()};
  restore_sane_state();
  const float mouse_x = mnw.mouse_x, mouse_y = mnw.mouse_y;
  const std::string label = UTL_translate_string(type == 0 ? alert_texts.accept : alert_texts.ok);
  // A key or a click that belongs to what went before must not take the alert away unread.
  return_hit = escape_hit = 0;
  MACIBM_startwind(win_alert, 0);
  if (type == 0) stls.window_title = UTL_translate_string("Language/");
  while (mnw.win_id == win_alert) {
    plot_backdrop();
    BTN_subwin(0, box_panel, -1, panel_y, -1, -1, "", nullptr, nullptr);
    if (type == 0) {
      plot_languages();
    } else {
      plot_message(lines, type, where);
    }
    if (BTN_main_action(mnw.win_dx / 2, button_y, 0, label) || return_hit || escape_hit) {
      return_hit = escape_hit = 0;
      if (type == t_exit) return;
      MACIBM_startwind(failure.window, 0);
      mnw.mouse_x = mouse_x;
      mnw.mouse_y = mouse_y;
      return;
    }
    MACIBM_event_proc();
  }
}

int MACIBM_nuke_alert(const std::string& text, int offer_third) {
  constexpr float rim = 20, gap = 10, label_rim = 21, first_y = 60, others_y = 25;
  MACIBM_startwind(win_nuke_alert, 0);
  if (mnw.win_id != win_nuke_alert) return 3;

  std::string labels[3];
  for (int i = 0; i < 3; ++i)
    labels[i] = UTL_translate_string(alert_texts.nuke_answers[i]);
  const std::string question = UTL_translate_string(alert_texts.nuke_prefix) + " " + text + " " +
                               UTL_translate_string(alert_texts.nuke_suffix);
  const auto width = [&labels](int i) {
    return static_cast<float>(OGL_string_width(labels[i])) + label_rim;
  };
  while (mnw.win_id == win_nuke_alert) {
    plot_backdrop();
    OGL_string(col_label, rim, mnw.win_dy - 40, question, mnw.win_dx - 2 * rim);
    // The first answer stands alone at the right edge; the second under it, the third beside that.
    const float right = mnw.win_dx - rim;
    const float xs[] = {right - width(0) / 2, right - width(1) / 2,
                        right - width(1) - gap - width(2) / 2};
    for (int i = 0; i < (offer_third ? 3 : 2); ++i) {
      if (!BTN_action(xs[i], i == 0 ? first_y : others_y, width(i), 0, 1, labels[i], "")) continue;
      MACIBM_startwind(win_main, 0);
      return i + 1;
    }
    MACIBM_event_proc();
  }
  return 3;
}
