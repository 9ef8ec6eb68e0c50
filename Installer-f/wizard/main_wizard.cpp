// The wizard engine: one frame at a time, fill the record, have it drawn, act on its buttons.
//
// Main thread. Writes g_wizard, and at its end app_done.

#include "Installer-f/wizard/main_wizard.h"

#include <algorithm>

#include "Installer-f/engine/utils_registry_lock.h"
#include "Installer-f/wizard/main_notice.h"
#include "Installer-f/wizard/main_prefs.h"
#include "Installer-f/wizard/main_wizard_draw.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/draw/oglp.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_lines.h"
#include "corekit/window/hl_init.h"
#include "corekit/window/hl_mnw.h"

std::vector<std::string> step_names;
std::vector<page_function> step_funcs;
std::vector<std::string> wizard_notes;
const wizard_stand_in* stand_in = nullptr;

namespace {

std::vector<UTL_text> step_labels;  // step_names before their translation

void turn_to(page_function target) {
  if (!target->may_enter || target->may_enter()) g_wizard = target;
}

// Acts on what was pressed. Of several targets in one frame the last one to write wins, and a page
// that moves on by itself beats them all.
void act(const wizard_screen& screen, const wizard_press& press, int result) {
  if (press.extra >= 0) turn_to(screen.button_pages[static_cast<size_t>(press.extra)]);
  if (press.quit) {
    if (screen.kill_proc) screen.kill_proc();
    app_done = 1;
  }
  if (press.options && screen.prefs_enabled) {
    handle_prefs();
    wizard_name_steps();  // the language may be another one
  }
  if (press.back && screen.back) turn_to(screen.back);
  if ((press.next || result) && screen.next) turn_to(screen.next);
}

}  // namespace

void APP_update() {
  static page_function last;  // the page of the frame before

  wizard_notes.clear();
  wizard_draw_frame();
  if (!g_wizard) {
    app_done = 1;
    return;
  }

  wizard_screen screen;
  const page_function page = g_wizard;
  const int first_time = page == last ? 0 : 1;
  last = page;
  // A page begins without a focus, so that its own field may take it.
  if (first_time && ogl_inited) BTN_unfocus_any();
  const int result = page(first_time, screen);
  // A window that stands there and tells how it ended keeps no other program from the copy.
  if (first_time && page->kind >= page_last) unlock_copy();

  wizard_press press;
  press.extra = wizard_draw_record(screen);
  wizard_draw_row(screen, press);
  press.next |= return_hit != 0;
  press.back |= escape_hit != 0;
  if (ogl_inited) wizard_tell_desktop(page, screen);
  if (stand_in) press = stand_in->press(page, first_time, screen, result);
  act(screen, press, result);
  if (g_wizard != page) frame_soon = frame_at_once;  // the next page need not be waited for
  if (screen.leave_proc && g_wizard != page) screen.leave_proc();
}

void wizard_quit_request() {
  app_done = 1;
}

const wizard_page wizard_quit = {page_job, [](int, wizard_screen&) {
                                   app_done = 1;
                                   return 1;
                                 }};

void wizard_set_steps(const std::vector<wizard_step>& steps) {
  step_labels.clear();
  step_funcs.clear();
  for (const wizard_step& step : steps) {
    step_labels.push_back(step.label);
    step_funcs.push_back(step.page);
  }
  wizard_name_steps();
}

void wizard_name_steps() {
  step_names.clear();
  for (const UTL_text label : step_labels)
    step_names.push_back(tr(label));
}

void wizard_note(float x, float y, const std::string& text, float wrap_dx) {
  OGL_string(col_note, x, y, text, wrap_dx);
  wizard_notes.push_back(text);
}

int wizard_label(float x, float y, const std::string& text, float wrap_dx) {
  constexpr size_t most_lines = 2;
  constexpr float half_line = 5;
  wizard_notes.push_back(text);
  std::vector<std::string> lines = BTN_lines(text, wrap_dx);
  BTN_cut_middle(lines, most_lines, wrap_dx);
  const float more = lines.size() > 1 ? half_line : 0;
  BTN_plot_lines(col_note, x, y + more, lines);
  const float dx = lines.size() > 1 ? wrap_dx : static_cast<float>(OGL_string_width(text));
  return BTN_click_in(x, y - 4 - more, x + dx, y + 12 + more);
}
