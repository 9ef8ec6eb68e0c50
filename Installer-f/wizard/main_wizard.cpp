// The wizard engine: one frame at a time, fill the record, draw it, act on its buttons.
//
// Main thread. Writes g_wizard, and at its end app_done.

#include "Installer-f/wizard/main_wizard.h"

#include <algorithm>

#include "Installer-f/engine/utils_servers.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_face.h"
#include "Installer-f/wizard/main_prefs.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/draw/colr.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/tman.h"
#include "corekit/widgets/butn.h"
#include "corekit/window/hl_init.h"
#include "corekit/window/hl_mnw.h"

std::vector<std::string> step_names;
std::vector<page_function> step_funcs;
std::vector<std::string> wizard_notes;
const wizard_stand_in* stand_in = nullptr;

namespace {

std::vector<UTL_text> step_labels;  // step_names before their translation

constexpr float step_x = 30, step_y = 480, step_pitch = 20;

void draw_backdrop() {
  colr.assign(col_picture, 1, 1, 1);
  OGL_2dquad_d(t_background, col_picture, 1, 0, 0, 0, 0, mnw.win_dx, mnw.win_dy,
               mnw.win_dx / 1024.0f, mnw.win_dy / 1024.0f, blend_mix);
  BTN_frame2(box_page, 10, 50, 190, 453, "");
  BTN_frame2(box_page, 210, 50, 580, 453, "");
}

void draw_steps() {
  float y = step_y;
  for (size_t i = 0; i < step_names.size(); ++i) {
    OGL_string(step_funcs[i] == g_wizard ? col_step_now : col_note, step_x, y, step_names[i], 180);
    y -= step_pitch;
  }
  if (stg.beta_flag) {
    OGL_string(col_warning, step_x, y,
               UTL_translate_string("You have chosen to download Skyvane 9 betas.  If you do not "
                                    "want this, choose options and uncheck the beta option."),
               160);
  }
}

void draw_progress(const wizard_screen& screen) {
  if (screen.progress < 0) return;
  // The fill starts where its rounded cap is whole, so that it never looks broken.
  const float p = screen.progress * 0.96f + 0.04f;
  const float fill = p < 0.04f ? 20.8f : p > 1.0f ? 520.0f : p * 520.0f;
  BTN_frame1(strip_trough, 500 - mnw.x_off, 155 - mnw.y_off, 520, col_as_is);
  BTN_frame1(strip_fill, 240 + fill / 2 - mnw.x_off, 155 - mnw.y_off, fill, col_as_is);
  OGL_string(col_black, 242, 120, screen.progress_text, 520);
}

// The mirror chooser grows upward under the step list, and works while a transfer runs.
void draw_servers() {
  for (int i = 0; i < stg.server_count; ++i) {
    const float y = static_cast<float>(stg.server_count * 40 + 38 - 40 * i);
    std::string left, right, help;
    BTN_expand_label(server_desc[i], &left, &right, &help);
    BTN_is_int(step_x, y, &stg.server_index, i, "");
    OGL_string(col_note, 50, y, left.empty() ? right : left, 130);
    if (BTN_click_in(39, y - 4, 180, y + 12)) stg.server_index = i;
  }
}

// Draws the record over what the page drew itself, and returns the extra button pressed, or -1.
int draw_record(const wizard_screen& screen) {
  OGL_string(col_black, 500, 480, screen.title, 540, charset_text, just_centre);
  OGL_string(col_black, 230, 440, screen.text, 540);

  int pressed = -1;
  for (size_t i = 0; i < screen.button_names.size(); ++i) {
    const float y = 350.0f - 25.0f * static_cast<float>(i);
    const std::string& name = screen.button_names[i];
    // The last page is for its button, not for Quit.
    const int hit = screen.next == wizard_quit ? BTN_main_action(500, y, 250, name)
                                               : BTN_action(500, y, 250, 0, 1, name, "");
    if (hit) pressed = static_cast<int>(i);
  }
  draw_progress(screen);
  if (screen.show_servers && stg.server_count >= 1) draw_servers();
  return pressed;
}

constexpr float row_y = 12, row_dy = 22, row_tex = 46;  // the bottom row and its faces

// Draws the bottom row, and adds what was pressed in it to `press`.
void draw_bottom_row(const wizard_screen& screen, wizard_press& press) {
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
  draw_backdrop();
  draw_steps();
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

  wizard_press press;
  press.extra = draw_record(screen);
  draw_bottom_row(screen, press);
  press.next |= return_hit != 0;
  press.back |= escape_hit != 0;
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
  wizard_note(x, y, text, wrap_dx);
  const float dx = std::min(wrap_dx, static_cast<float>(OGL_string_width(text)));
  return BTN_click_in(x, y - 4, x + dx, y + 12);
}

int interface_rect(float x, float y, float tex_x, float tex_y, float dx, float dy, int hot,
                   int state) {
  if (!ogl_inited) return 0;
  BTN_press press = {BTN_click_in(x, y, x + dx, y + dy), 0, 0};
  // A face that is greyed cannot be reached by keys.
  if (hot && state != 2) press = BTN_pressable(BTN_identity(x, y), x, y, x + dx, y + dy);
  // A face is three images: idle on top of the stack, pressed under it, hover at the bottom.
  if (hot && BTN_mouse_in(x, y, x + dx, y + dy)) tex_y -= (mnw.mouse_held ? 1 : 2) * (dy + 1);
  face_draw(x, y, tex_x, tex_y, dx, dy, state == 2 ? 0.5f : 1.0f);
  if (press.focused) BTN_plot_focus(x, y, x + dx, y + dy);
  return press.hit;
}
