// The wizard's modal questions. Each is a loop of its own around the frame, in a dialog of its own;
// an unattended run has standing answers instead.
//
// Main thread.

#include "Installer-f/wizard/main_ask.h"

#include <algorithm>
#include <vector>

#include "Installer-f/engine/utils_disc.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/wizard/main_wizard.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/draw/oglp.h"
#include "corekit/files/io_utils.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_lines.h"
#include "corekit/window/hl_mnw.h"

namespace {

constexpr float line_dy = 10, text_x = 20;
// Where a block that stands on `bottom` begins.
float top_of(const std::vector<std::string>& lines, float bottom) {
  return bottom + line_dy * static_cast<float>(lines.size() - 1);
}

struct answer_button {
  float x, y, dx;
  std::string label;
  int answer;
};

// Draws the buttons; the answer of the first one pressed, or 0 for none. Return and Escape press
// the one that destroys nothing.
int pressed_answer(const answer_button* buttons, int count, const answer_button& safe) {
  for (int i = 0; i < count; ++i) {
    const answer_button& button = buttons[i];
    const int hit = &button == &safe
                        ? BTN_main_action(button.x, button.y, button.dx, button.label)
                        : BTN_action(button.x, button.y, button.dx, 0, 1, button.label, "");
    if (hit) return button.answer;
  }
  if (return_hit || escape_hit) {
    return_hit = escape_hit = 0;  // answered, and no key for the page behind
    return safe.answer;
  }
  return 0;
}

// The three texts of the question about a modified file, and where they begin. They stand at 100,
// 90 and 80. A long path moves up what is above it, as far as the title lets it; a third line of it
// moves all down, as far as the buttons do; more are cut.
struct placed_text {
  std::vector<std::string> lines;
  float y;
};
placed_text place_question(const std::string& location, int gone, float wrap) {
  constexpr size_t fit_upward = 4, fit_at_all = 5;
  constexpr float usual_bottom = 80, lowest_bottom = 72;
  std::vector<std::string> text =
      BTN_lines(tr(gone ? "I am about to DELETE:" : "I am about to install:"), wrap);
  std::vector<std::string> path = BTN_lines(location, wrap);
  const std::vector<std::string> rest = BTN_lines(
      tr(gone ? "because we no longer use this file, but it appears you have modified it. "
                "What to do?"
              : "but it appears you have modified this file. What to do?"),
      wrap);
  const size_t others = text.size() + rest.size();
  BTN_cut_middle(path, std::max<size_t>(fit_at_all - std::min(others, fit_at_all - 1), 1), wrap);
  text.insert(text.end(), path.begin(), path.end());
  text.insert(text.end(), rest.begin(), rest.end());
  const float bottom = text.size() > fit_upward ? lowest_bottom : usual_bottom;
  return {text, top_of(text, bottom)};
}

}  // namespace

int abort_alert(const std::string& question, const std::string& label_1, const std::string& line_1,
                const std::string& label_2, const std::string& line_2) {
  if (stand_in) return stand_in->abort(question);

  constexpr int first = 1, second = 2;  // 0 stands for no button, so the answer is mapped below
  const answer_button buttons[] = {{96, 56, 100, label_1, first}, {96, 31, 100, label_2, second}};

  // Below y 66 are the buttons; between 160 and the title a long question finds a line more.
  constexpr float usual_y = 160, highest_y = 170;
  constexpr size_t usual_lines = 9, most_lines = 11;

  return_hit = escape_hit = 0;  // the key that led here answers nothing
  MACIBM_startwind(win_abort_alert, 0);
  if (mnw.win_id != win_abort_alert) return 3;
  const float wrap = mnw.win_dx - 2 * text_x;
  std::vector<std::string> lines = BTN_lines(question, wrap);
  BTN_cut_end(lines, most_lines, wrap);
  const float y = lines.size() > usual_lines ? highest_y : usual_y;
  while (mnw.win_id == win_abort_alert) {
    MACIBM_plot_behind();
    BTN_fillwin(1, inner_none);
    BTN_plot_lines(col_label, text_x, y, lines);
    OGL_string(col_label, 150, 53, line_1, mnw.win_dx - 210);
    OGL_string(col_label, 150, 28, line_2, mnw.win_dx - 210);
    if (const int answer = pressed_answer(buttons, 2, buttons[1])) {
      MACIBM_startwind(win_main, 0);
      return answer == first ? 1 : 0;
    }
    MACIBM_event_proc();
  }
  return 0;  // closed by Return, by its box or by the window's: a slip gives nothing up
}

int UTIL_cancel_install(const std::string& header, const std::string& advice,
                        const std::string& label_1, const std::string& line_1,
                        const std::string& label_2, const std::string& line_2) {
  std::string message;
  const int code = install_files_get_error(message);
  message += " (" + UTL_translate_string(error_str(code)) + ")";
  return abort_alert(header + "\n\n" + message + "\n\n" + advice, label_1, line_1, label_2, line_2);
}

int select_alert(const std::string& location, int gone) {
  if (stand_in) return stand_in->modified(location, gone);

  const answer_button buttons[] = {
      {96, 53, 160, tr(gone ? "DELETE THE OLD FILE" : "OVERWRITE THE OLD FILE"), answer_overwrite},
      {96, 28, 160, tr("KEEP THE OLD FILE"), answer_keep},
      {308, 53, 260,
       tr(gone ? "DELETE EVERY OLD FILE IN THIS DIRECTORY"
               : "OVERWRITE EVERY OLD FILE IN THIS DIRECTORY"),
       answer_overwrite_folder},
      {308, 28, 260, tr("KEEP EVERY OLD FILE IN THIS DIRECTORY"), answer_keep_folder},
      {584, 28, 200, tr("CANCEL THE WHOLE INSTALLATION!"), answer_cancel_install},
  };

  // A question that cannot be put reads as cancel: it must never turn into an overwrite.
  return_hit = escape_hit = 0;
  MACIBM_startwind(win_select_alert, 0);
  const placed_text text = place_question(location, gone, mnw.win_dx - 2 * text_x);
  while (mnw.win_id == win_select_alert) {
    MACIBM_plot_behind();
    BTN_fillwin(1, inner_none);
    BTN_plot_lines(col_label, text_x, text.y, text.lines);
    if (const int answer = pressed_answer(buttons, 5, buttons[1])) {
      MACIBM_startwind(win_main, 0);
      return answer;
    }
    MACIBM_event_proc();
  }
  return answer_cancel_install;
}
