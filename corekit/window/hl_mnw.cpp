// The frame: what happens in one pass of the loop, in order, and how long it waits before.
//
// Main thread. Writes mnw, and the key flags of the frame.

#include "corekit/window/hl_mnw.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "corekit/Platform/PLT_system.h"
#include "corekit/Platform/PLT_window.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_app.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/hl_thread.h"
#include "corekit/base/hl_types.h"
#include "corekit/base/xer.h"
#include "corekit/base/xtim.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/tman.h"
#include "corekit/draw/tman_hardwired.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/hl_mnw_menu.h"
#include "corekit/window/hl_mnw_paint.h"

namespace {

constexpr int tick_ms = 16;         // a sixtieth of a second: the event wait of an ordinary frame
constexpr int alert_tick_ms = 160;  // an alert's frame has nothing to hurry for
constexpr int idle_tick_ms = 100;   // nor has one in which nothing has happened for a while
constexpr uint64_t idle_after_us = 500'000;
// How often the picture is shown at most: while the user does something, while the program does,
// and else. A software renderer takes a core for some 10 ms to do so, which the work would miss.
constexpr uint64_t show_every_input_us = 16'000;
constexpr uint64_t show_every_work_us = 50'000;
constexpr uint64_t show_every_idle_us = 250'000;

// The pace of the frames. Times are of PLT_microseconds.
// Inputs by what they change for those that come behind them in one slow frame. A widget takes its
// keys when it is drawn: by then a Tab behind them must not have moved the focus on, and a key
// behind a press must not have gone to the widget that had the focus before.
enum input_kind { input_other, input_typing, input_focus, input_closing, input_press };

struct frame_pace {
  uint64_t last_shown = 0;           // when the window was last brought up to date
  uint64_t last_input = 0;           // when the user last did something
  uint64_t last_work = 0;            // when a page with work, or a wake-up, last came
  bool is_stale = false;             // what the window shows is older than the last frame
  bool had_motion = false;           // this frame has a movement of the mouse
  bool had_input = false;            // this frame has an event that a page may react to
  bool is_mixed = false;             // the picture being drawn was begun for another window
  bool press_is_set = false;         // the mouse stays where this frame's press was
  input_kind took = input_other;     // the kind of input that this frame has
  std::optional<PLT_event> put_off;  // the first event that must wait for the next frame
};
frame_pace pace;

void set_mouse(int x, int y) {
  mnw.mouse_x = static_cast<float>(x) / mnw.ui_scale - mnw.x_off;
  mnw.mouse_y = static_cast<float>(mnw.pix_dy - y) / mnw.ui_scale - mnw.y_off;
}

void read_mouse() {
  int x, y;
  PLT_mouse(&x, &y);
  set_mouse(x, y);
}

bool is_recent(uint64_t time, uint64_t now) {
  return now - time < idle_after_us;
}

int until_next_show(uint64_t now) {
  const uint64_t since = now - pace.last_shown;
  const uint64_t every = is_recent(pace.last_input, now)  ? show_every_input_us
                         : is_recent(pace.last_work, now) ? show_every_work_us
                                                          : show_every_idle_us;
  return since >= every ? 0 : static_cast<int>((every - since) / 1000 + 1);
}

// How long this frame may wait for an event.
int wait_limit(int soon, uint64_t now) {
  if (soon == frame_at_once) return 0;
  const bool alert = mnw.win_id == win_alert;
  if (!ogl_inited) return alert ? alert_tick_ms : tick_ms;
  if (soon == frame_in_a_tick) return tick_ms;
  const bool quiet = !is_recent(pace.last_input, now) && !is_recent(pace.last_work, now);
  const int limit = !quiet ? tick_ms : alert ? alert_tick_ms : idle_tick_ms;
  return pace.is_stale ? std::min(limit, until_next_show(now)) : limit;
}

input_kind kind_of(const PLT_event& event) {
  if (event.kind == plt_press) return input_press;
  if (event.kind != plt_key || !event.key.down) return input_other;
  switch (event.key.symbol) {
    case plt_key_tab:
      return input_focus;
    case plt_key_return:
    case plt_key_enter:
    case plt_key_escape:
      return input_closing;
    default:
      return input_typing;
  }
}

// Whether an event can come in this frame, behind what the frame has. Return and Escape wait for
// what was typed alone: behind all else they would answer a dialog that nobody has seen yet.
bool fits_into_frame(const PLT_event& event) {
  const input_kind kind = kind_of(event), before = pace.took;
  if (kind == input_other) return true;
  const bool closes = before == input_closing || (kind == input_closing && before != input_typing);
  if (before != input_other && before != kind && !closes) return false;
  pace.took = kind;
  return true;
}

std::optional<PLT_event> next_event() {
  std::optional<PLT_event> next = std::exchange(pace.put_off, std::nullopt);
  if (!next && !PLT_next_event(&next.emplace())) next.reset();
  return next;
}

// Takes the waiting events that one frame can have. False if there were none but movements of the
// mouse.
bool drain_events() {
  bool more_than_motion = false;
  while (const std::optional<PLT_event> event = next_event()) {
    if (event->kind != plt_motion) more_than_motion = true;
    if (!fits_into_frame(*event)) {
      pace.put_off = event;
      break;
    }
    APL_handlewin(*event);
  }
  return more_than_motion;
}

void take_events() {
  const int soon = frame_soon;
  frame_soon = frame_when_needed;
  pace.had_input = pace.had_motion = pace.press_is_set = false;
  pace.took = input_other;
  const uint64_t start = PLT_microseconds();
  if (soon != frame_when_needed) pace.last_work = start;

  if (!pace.put_off) PLT_wait_event(wait_limit(soon, start));
  // A moving mouse sends more events than there are pictures to show: they are gathered until the
  // next one is due.
  while (!drain_events() && pace.had_motion && soon != frame_at_once) {
    const int left = until_next_show(PLT_microseconds());
    if (left == 0) break;
    PLT_wait_event(left);
  }
}

// Textures that are missing, once each.
void report_missing_textures() {
  constexpr UTL_text advice = "Please see the log.txt file for a detailed list of missing files.";
  const auto report = [&](UTL_text text, alert_source source) {
    __MACIBM_alert(win_main, text, advice, "", "", t_alert, source);
  };
  if (tman.has_scene_load_fail()) {
    tman.mute_scene_load_fail();
    report("Some scenery textures could not be loaded.", at_scenery_textures);
  }
  if (tman.has_plane_load_fail()) {
    tman.mute_plane_load_fail();
    report("Some textures for the aircraft you selected could not be loaded.",
           at_aircraft_textures);
  }
  if (tman.has_instl_load_fail()) {
    tman.mute_instl_load_fail();
    report("Some textures could not be loaded.", at_some_textures);
  }
}

// Shows the frame's picture, but not if it comes too soon, nor if it is what the window shows.
void show_page(bool in_dialog) {
  if (pace.is_mixed) {
    // The window has changed in the midst of it, and it is the end of a picture only.
    OGL_drop_picture();
    pace.is_mixed = false;
    frame_soon = frame_at_once;
    return;
  }
  // An input wants an answer at once.
  if (!in_dialog && !pace.had_input && until_next_show(PLT_microseconds()) != 0) {
    OGL_drop_picture();
    pace.is_stale = true;
    return;
  }
  OGL_sbuff();
  pace.last_shown = PLT_microseconds();
  // A dialog answers an input with what it draws after this frame, for the next one to show.
  pace.is_stale = pace.had_input;
}

// `in_dialog` says that a dialog was up when the frame began. Its loop has drawn it, and goes on
// when the frame is over: even if the dialog was closed meanwhile, the page that may have opened it
// is not called from within itself.
void run_page(bool in_dialog) {
  if (!in_dialog && !mnw.modal_up) {
    OGL_drop_picture();
    pace.is_mixed = false;
    APP.update();
  }
  if (!ogl_inited) return;
  mouse_help_per_wind(mnw.win_id);
  standard_gui();
  show_page(in_dialog || mnw.modal_up);
}

void handle_key(const PLT_key_event& key) {
  if (key.down) {
    mnw.key_hit = 1;
    mnw.key_held = 1;
  } else {
    mnw.key_held = 0;
  }
  if (mnw_keys.event) {
    mnw_keys.event(key);
    return;
  }
  if (!key.down) return;
  const int symbol = key.symbol;
  if (symbol == plt_key_return || symbol == plt_key_enter) return_hit = 1;
  if (symbol == plt_key_escape) escape_hit = 1;
  if (symbol == plt_key_delete || symbol == plt_key_backspace) delete_hit = 1;
  if (return_hit && mnw.win_id != win_main) MACIBM_handleclick(1);
}

void handle_press(const PLT_event& event) {
  mnw.press_came_last = 1;
  // Of several presses in one frame the first one counts, with its place; but a double click that
  // fell into one slow frame is one all the same.
  if (!pace.press_is_set || event.clicks > 1) mnw.mouse_clicks = event.clicks;
  if (pace.press_is_set) return;
  set_mouse(event.x, event.y);
  pace.press_is_set = true;
  mnw.mouse_shift = (event.modifiers & plt_shift) != 0;
  mnw.mouse_clicked = 1;
  MACIBM_handleclick(0);
}

// Draws the window anew, which may have another size. The keyboard focus, which a change of window
// takes away, stays: the user may be typing.
void handle_update() {
  const int focus = focus_id, held = mnw.mouse_held, clicked = mnw.mouse_clicked;
  fit_hardwired_textures();
  MACIBM_startwind(mnw.win_id, 0);
  focus_id = focus;
  mnw.mouse_held = held;
  mnw.mouse_clicked = clicked;
}

// The window manager's close button: a dialog goes, as by its own close box; the wizard ends.
void handle_close() {
  if (mnw.modal_up) {
    return_hit = 0;
    MACIBM_startwind(win_main, 0);
  } else {
    APP.quit_request();
  }
}

}  // namespace

void frame_hurry(bool begins) {
  pace.last_input = PLT_microseconds();
  pace.is_stale = true;
  // Whoever had begun to draw goes on with the rest of it, and so does the page behind a dialog.
  const bool was_begun = OGL_drop_picture() || mnw.modal_up;
  pace.is_mixed = was_begun && !begins;
  OGL_show_next();
}

void APL_handlewin(const PLT_event& event) {
  if (event.kind == plt_woken) {
    pace.last_work = PLT_microseconds();
    return;
  }
  pace.last_input = PLT_microseconds();
  mnw.last_action = static_cast<float>(xtim.now_sec);
  if (event.kind == plt_motion) {
    pace.had_motion = true;
  } else {
    pace.had_input = true;
  }
  switch (event.kind) {
    case plt_motion:
      if (!pace.press_is_set) set_mouse(event.x, event.y);
      break;
    case plt_press:
      handle_press(event);
      break;
    case plt_release:
      mnw.mouse_released = 1;
      mnw.press_came_last = 0;
      break;
    case plt_wheel_turn:
      mnw.wheel += event.wheel;
      break;
    case plt_key:
      handle_key(event.key);
      break;
    case plt_update:
      handle_update();
      break;
    case plt_close:
      handle_close();
      break;
    case plt_quit:
      if (mnw.modal_up) handle_close();
      APP.quit_request();
      break;
    case plt_woken:
      break;
  }
}

void MACIBM_event_proc() {
  return_hit = escape_hit = delete_hit = 0;
  mnw.mouse_clicked = mnw.mouse_released = mnw.key_hit = mnw.wheel = 0;

  static bool first_pass = true;
  if (mnw.win_id == win_none) mnw.win_id = win_main;
  if (first_pass) MACIBM_startwind(mnw.win_id, 0);
  first_pass = false;

  const bool in_dialog = mnw.modal_up != 0;
  read_mouse();
  take_events();

  if (mnw.win_id == win_main) THREAD_check_exception(1);
  if (mnw.win_id == win_main) report_missing_textures();
  xtim.xtim_update();
  if (mnw_keys.frame) mnw_keys.frame();
  mnw.cursor_mode = cursor_arrow;
  if (menu_follow_mouse()) MACIBM_handleclick(0);
  BTN_begin_focus_ring();
  run_page(in_dialog);
  xer.flush();
}
