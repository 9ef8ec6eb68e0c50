// The frame: what happens in one pass of the loop, in order, and the switch between windows.
//
// Main thread. Writes mnw, and the key flags of the frame.

#include "corekit/GenC/hl_mnw.h"

#include "corekit/GenC/hl_alert.h"
#include "corekit/GenC/hl_init.h"
#include "corekit/GenH/hl_app.h"
#include "corekit/OOPS_cpp/butn.h"
#include "corekit/OOPS_cpp/exce.h"
#include "corekit/OOPS_cpp/xtim.h"
#include "corekit/Platform/PLT_window.h"
#include "corekit/Thread/hl_thread.h"

mnw_record mnw;

int return_hit = 0;
int escape_hit = 0;
int delete_hit = 0;

namespace {

constexpr int tick_ms = 16;         // a sixtieth of a second: the event wait of an ordinary frame
constexpr int alert_tick_ms = 160;  // an alert's frame has nothing to hurry for
constexpr size_t url_limit = 499;

}  // namespace

void MACIBM_startwind(int id, int /*arg*/) {
  // Without a window there is nothing that a dialog could show itself in: win_id stays, and the
  // caller reads from it that its question was not put.
  if (!ogl_inited && id != win_main) return;
  mnw.modal_up = 0;
  BTN_unfocus_any();
  mnw.popup_code = -1;
  mnw.win_id = id;
  mnw.saved_win_id = id;
  mnw.mouse_held = 0;
  mnw.mouse_clicked = 0;
  mnw.wheel = 0;
}

void MACIBM_event_proc() {
  return_hit = escape_hit = delete_hit = 0;
  mnw.mouse_clicked = mnw.mouse_released = mnw.key_hit = 0;
  if (mnw.win_id == win_none) MACIBM_startwind(win_main, 0);

  PLT_wait_event(mnw.win_id == win_alert ? alert_tick_ms : tick_ms);

  if (mnw.win_id == win_main) THREAD_check_exception(1);
  xtim.xtim_update();
  BTN_begin_focus_ring();
  if (!mnw.modal_up) APP_update();
}

void go_to_URL(const std::string& url) {
  if (url.size() > url_limit) {
    __MACIBM_alert(win_main, "String too long!", url.substr(0, url_limit), "", "", t_exit,
                   "GenC/hl_mnw", 412);
  }
  xer << "Web page: " << url << '\n';
  if (ogl_inited) PLT_open_url(url);
}
