// The wizard's modal questions. Each is a loop of its own around the frame, in a dialog of its own;
// an unattended run has standing answers instead.
//
// Main thread.

#include "Installer-f/main_ask.h"

#include "Installer-f/main_unattended.h"
#include "Installer-f/utils_disc.h"
#include "corekit/Files/io_utils.h"
#include "corekit/GenC/hl_mnw.h"
#include "corekit/OOPS_cpp/butn.h"
#include "corekit/OOPS_cpp/oglp.h"
#include "corekit/UTL/UTL_translate.h"

namespace {

constexpr int col_label = 43;

struct answer_button {
  float x, y, dx;
  std::string label;
  int answer;
};

// Draws the buttons; the answer of the first one pressed, or 0 for none.
int pressed_answer(const answer_button* buttons, int count) {
  for (int i = 0; i < count; ++i) {
    const answer_button& button = buttons[i];
    if (BTN_action(button.x, button.y, button.dx, 0, 1, button.label, "")) return button.answer;
  }
  return 0;
}

}  // namespace

int abort_alert(const std::string& question, const std::string& label_1, const std::string& line_1,
                const std::string& label_2, const std::string& line_2) {
  if (unattended_on) return unattended_abort(question);

  constexpr int first = 1, second = 2;  // 0 stands for no button, so the answer is mapped below
  const answer_button buttons[] = {{96, 56, 100, label_1, first}, {96, 31, 100, label_2, second}};

  MACIBM_startwind(win_abort_alert, 0);
  while (mnw.win_id == win_abort_alert) {
    OGL_plot_back_col();
    BTN_fillwin(1, 21);
    OGL_string(col_label, 20, 160, question, mnw.win_dx - 40);
    OGL_string(col_label, 150, 53, line_1, mnw.win_dx - 210);
    OGL_string(col_label, 150, 28, line_2, mnw.win_dx - 210);
    if (const int answer = pressed_answer(buttons, 2)) {
      MACIBM_startwind(win_main, 0);
      return answer == first ? 1 : 0;
    }
    MACIBM_event_proc();
  }
  return 3;
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
  if (unattended_on) return unattended_modified(location, gone);

  const auto tr = [](const char* text) { return UTL_translate_string(text); };
  const std::string above = tr(gone ? "I am about to DELETE:" : "I am about to install:");
  const std::string below =
      tr(gone ? "because we no longer use this file, but it appears you have modified it. What to "
                "do?"
              : "but it appears you have modified this file. What to do?");
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
  MACIBM_startwind(win_select_alert, 0);
  while (mnw.win_id == win_select_alert) {
    OGL_plot_back_col();
    BTN_fillwin(1, 21);
    const float wrap = mnw.win_dx - 40;
    OGL_string(col_label, 20, 100, above, wrap);
    const float after_path = OGL_string(col_label, 20, 90, location, wrap);
    // A long path takes more lines than one; what stands below it moves down with it.
    OGL_string(col_label, 20, after_path < 80 ? after_path : 80, below, wrap);
    if (const int answer = pressed_answer(buttons, 5)) {
      MACIBM_startwind(win_main, 0);
      return answer;
    }
    MACIBM_event_proc();
  }
  return answer_cancel_install;
}
