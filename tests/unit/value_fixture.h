// What the tests of value widgets share: a page, frame by frame, with a mouse and a keyboard.
#pragma once

#include <functional>
#include <string>

#include "corekit/base/xtim.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_value.h"
#include "corekit/widgets/hl_mnw_menu.h"
#include "corekit/widgets/keys.h"
#include "corekit/window/hl_mnw.h"
#include "tests/unit/gl_fixture.h"

class value_fixture : public gl_fixture {
 protected:
  void SetUp() override {
    gl_fixture::SetUp();
    focus_ring.clear();
    focus_id = 0;
    keys = keys_class();
    xtim = xtim_class();
    MACIBM_clear_menus(1);
    select_popup_code = active_popup_code = 0;
  }

  // One frame of a page.
  int frame(const std::function<int()>& draw) {
    BTN_begin_focus_ring();
    const int result = draw();
    mnw.mouse_clicked = mnw.mouse_released = 0;
    return result;
  }
  // A press in the frame that comes, the `clicks`th in a row; the button stays down until
  // release().
  void press(float x, float y, int clicks = 1, bool shift = false) {
    move(x, y);
    mnw.mouse_clicks = clicks;
    mnw.mouse_shift = shift;
    mnw.mouse_clicked = mnw.mouse_held = 1;
    xtim.mouse_down = xtim.now_sec;
  }
  void release() { mnw.mouse_held = 0; }
};

// A key on its way to the focused widget, as the key handler sends it.
inline void send(int ch, int vkey, int flags = key_down) {
  if (!BTN_dispatch_to_focus(ch, vkey, flags)) BTN_text_shortcut(vkey, flags);
}
inline void type(const std::string& text) {
  for (const char c : text) {
    int vkey, flags;
    keys_class::ascii_to_vkey(static_cast<unsigned char>(c), vkey, flags);
    send(static_cast<unsigned char>(c), vkey, flags | key_down);
  }
}
