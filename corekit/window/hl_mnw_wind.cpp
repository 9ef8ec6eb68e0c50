// Windows and dialogs: the switch between them, their close boxes, tooltip and pointer.
//
// Main thread. Writes mnw, plot_init_lights and stls.

#include <algorithm>
#include <cmath>
#include <iterator>

#include "corekit/Platform/PLT_window.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/hl_types.h"
#include "corekit/base/xtim.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/oglp_watch.h"
#include "corekit/draw/tman.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/hl_mnw_menu.h"
#include "corekit/window/hl_mnw.h"
#include "corekit/window/hl_mnw_paint.h"

int plot_init_lights = 0;

namespace {

struct dialog_row {
  int id;
  float dx, dy;
  UTL_text title;
};
constexpr UTL_text alert_title = "Skyvane";
constexpr UTL_text list_title = "Files";
constexpr dialog_row dialogs[] = {
    {win_eula, 500, 300, "EULA"},
    {win_prefs, 600, 380, "Prefs"},
    {win_livery, 561, 474, "Livery"},
    {win_about, 600, 300, skyvane_version_title},
    {win_alert, 420, 250, alert_title},
    {win_nuke_alert, 300, 166, alert_title},
    {win_select_alert, 700, 146, alert_title},
    {win_abort_alert, 700, 206, alert_title},
    {win_file_open, 561, 474, list_title},
    {win_file_save, 330, 474, list_title},
};

const dialog_row* find_dialog(int id) {
  const auto row = std::find_if(std::begin(dialogs), std::end(dialogs),
                                [id](const dialog_row& d) { return d.id == id; });
  return row == std::end(dialogs) ? nullptr : row;
}

// The space beside a logical window of `units` in `pixels`, halved.
float centred(int pixels, float units) {
  return std::max(0.0f, std::round((static_cast<float>(pixels) / mnw.ui_scale - units) / 2));
}

// Dialogs that want an answer, and those with buttons of their own, have no close boxes.
bool can_be_closed(int id) {
  switch (id) {
    case win_main:
    case win_alert:
    case win_nuke_alert:
    case win_select_alert:
    case win_file_open:
    case win_file_save:
      return false;
    default:
      return id > win_main;
  }
}

bool on_close_box() {
  constexpr float box_dx = 25, box_dy = 20;
  return mnw.mouse_y >= mnw.win_dy - box_dy && mnw.mouse_y <= mnw.win_dy &&
         ((mnw.mouse_x >= 0 && mnw.mouse_x <= box_dx) ||
          (mnw.mouse_x >= mnw.win_dx - box_dx && mnw.mouse_x <= mnw.win_dx));
}

// Seconds that the mouse has rested.
double mouse_rest() {
  static float x = 0, y = 0;
  static double since = 0;
  if (x != mnw.mouse_x || y != mnw.mouse_y || mnw.mouse_clicked) {
    x = mnw.mouse_x;
    y = mnw.mouse_y;
    since = xtim.now_sec;
  }
  return xtim.now_sec - since;
}

void plot_tooltip(const std::string& text) {
  constexpr float panel_dx = 420, away = 16, rim = 10;
  const size_t lines = text.size() / 50;
  const float panel_dy = std::clamp(static_cast<float>(lines) * 10 + 20, 60.0f, 300.0f);
  // Beside the mouse on the side with more room, and inside the window in any case.
  const float left = -mnw.x_off, right = left + static_cast<float>(mnw.pix_dx);
  const float bottom = -mnw.y_off, top = bottom + static_cast<float>(mnw.pix_dy);
  float x = mnw.mouse_x + away;
  if (x + panel_dx > right) x = mnw.mouse_x - away - panel_dx;
  x = std::max(left, std::min(x, right - panel_dx));
  const float y = std::max(bottom, std::min(mnw.mouse_y - panel_dy, top - panel_dy));
  watch_cover();
  BTN_frame2(box_help, x, y, panel_dx, panel_dy, "");
  OGL_string(col_label, x + rim, y + panel_dy - 2 * rim, text, panel_dx - 2 * rim);
}

int pointer_of(int id) {
  constexpr float hide_after = 10;  // seconds without input
  if (id >= win_livery && id <= win_file_save) return plt_arrow;
  switch (mnw.cursor_mode) {
    case cursor_hidden:
      return plt_hidden;
    case cursor_text:
      return plt_text;
    case cursor_busy:
      return plt_busy;
    case cursor_up:
    case cursor_down:
      return plt_up_down;
    default:
      return id == win_main && xtim.now_sec - mnw.last_action > hide_after ? plt_hidden : plt_arrow;
  }
}

}  // namespace

void MACIBM_startwind(int id, int /*arg*/) {
  // Without a window there is nothing that a dialog could show itself in: win_id stays, and the
  // caller reads from it that its question was not put.
  if (!ogl_inited && id > win_main) return;
  plot_init_lights = mnw.pix_dx > 0;
  // Below an alert there may be a dialog that is up already.
  frame_hurry(find_dialog(id) && id != mnw.win_id && mnw.win_id != win_alert);
  mouse_help_per_wind(id);
  OGL_viewport(2, mnw.ortho_left, mnw.ortho_bottom, mnw.ortho_right, mnw.ortho_top);

  mnw.win_dx = static_cast<float>(mnw.pix_dx) / mnw.ui_scale;
  mnw.win_dy = static_cast<float>(mnw.pix_dy) / mnw.ui_scale;
  mnw.modal_up = 0;
  stls.window_title.clear();
  if (const dialog_row* dialog = find_dialog(id)) {
    mnw.win_dx = dialog->dx;
    mnw.win_dy = dialog->dy;
    mnw.modal_up = 1;
    stls.window_title = UTL_translate_string(dialog->title);
  }
  BTN_unfocus_any();
  BTN_begin_focus_ring();  // what was drawn before is out of reach
  mnw.popup_code = -1;
  mnw.win_id = id;
  mnw.saved_win_id = id;

  // A window wider than twice its height spans two monitors: the dialog keeps to the first.
  const bool two_wide = mnw.pix_dx > 2 * mnw.pix_dy;
  mnw.x_off = centred(two_wide ? mnw.pix_dx / 2 : mnw.pix_dx, mnw.win_dx);
  mnw.y_off = centred(mnw.pix_dy, mnw.win_dy);
  if (id == win_main || id == win_none) mnw.x_off = mnw.y_off = 0;

  mnw.mouse_held = 0;
  mnw.mouse_clicked = 0;
  mnw.wheel = 0;
  if (menu.size() >= menu_slots) {
    menu_record& popup = menu[popup_slot];
    popup.left = popup.bottom = popup.right = popup.top = 0;
  }
}

void MACIBM_plot_behind() {
  constexpr float alpha = 0.45f, texels = 1024;
  if (!ogl_inited) return;
  OGL_plot_back_col();
  // An alert may come before the pictures.
  if (tman.record(t_background).load_time != tex_load_now) return;
  const float dx = static_cast<float>(mnw.pix_dx), dy = static_cast<float>(mnw.pix_dy);
  OGL_2dquad_d(t_background, col_white, alpha, -mnw.x_off, -mnw.y_off, 0, 0, dx, dy, dx / texels,
               dy / texels, blend_mix);
}

void MACIBM_handleclick(int force) {
  if (!force && menu_take_press()) {
    mnw.mouse_clicked = 0;  // nothing under the menu may take it too
    return;
  }
  if (can_be_closed(mnw.win_id) && (force || on_close_box())) {
    if (ogl_inited) {
      BTN_zap_boxes(1);
      OGL_sbuff();
    }
    return_hit = 0;
    MACIBM_startwind(win_main, force);
  }
}

void mouse_help_per_wind(int id) {
  constexpr float rest_before_help = 1;  // seconds
  const double rest = mouse_rest();
  if (ogl_inited && !stls.hover_help.empty() && rest > rest_before_help) {
    plot_tooltip(stls.hover_help);
  }
  stls.hover_help.clear();
  if (ogl_inited) PLT_set_pointer(pointer_of(id));
}
