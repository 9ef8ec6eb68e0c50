// Main thread. Writes xtim, and of mnw the held button and the time of the last input.

#include "corekit/base/xtim.h"

#include "corekit/Platform/PLT_system.h"
#include "corekit/base/mnw.h"

xtim_class xtim;

void xtim_class::xtim_update() {
  static const uint64_t first = PLT_microseconds();
  const double now = static_cast<double>(PLT_microseconds() - first) * 1e-6;
  period = static_cast<float>(now - now_sec);
  now_sec = now;

  // Of a press and a release in one frame the last one leaves the button as it is: in a slow frame
  // a drag may begin behind the release of the one before.
  if (mnw.mouse_clicked) {
    mnw.mouse_held = 1;
    mouse_down = now_sec;
  }
  if (mnw.mouse_released && !mnw.press_came_last) mnw.mouse_held = 0;
  if (mnw.mouse_clicked || mnw.mouse_released || mnw.key_hit)
    mnw.last_action = static_cast<float>(now_sec);
}
