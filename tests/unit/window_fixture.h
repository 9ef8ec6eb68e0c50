// The program's own window, off the screen, as start-up makes it; and events for it.
#pragma once

#include <SDL.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "corekit/Platform/PLT_gl.h"
#include "corekit/Platform/PLT_window.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/hl_types.h"
#include "corekit/draw/oglp.h"
#include "corekit/window/hl_init.h"
#include "corekit/window/hl_mnw.h"

struct wizard_screen;

// A window of 800 by 600 with textures and palette, the main window up, no events waiting, and a
// page that does `page_body` and counts its calls.
class window_fixture : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  static int page_calls;
  static std::function<void()> page_body;

  // Empties the queue of what the window library sends of itself.
  static void settle();
  // Does `body`, and `each_frame` behind every picture; each of its frames is one.
  static void step_by_step(const std::function<void()>& body,
                           const std::function<void()>& each_frame);
  static const std::vector<unsigned char>& last_shown();
  // The whole window as it is shown next, from the lowest row up; RGB.
  static std::vector<unsigned char> next_shown(const std::function<void()>& frame);
};

// Events, in pixels of the window from its upper left.
void push_motion(int x, int y);
void push_button(int x, int y, bool down, int button = SDL_BUTTON_LEFT);
void push_key(int symbol, bool down = true, int repeat = 0, int modifiers = 0);
void push_text(const char* utf8);
void push_window_event(int event);

// While it lives, Return is pressed again and again.
class pressed_return {
 public:
  ~pressed_return() {
    is_over = true;
    hand.join();
  }

 private:
  std::atomic<bool> is_over = false;
  std::thread hand{[this] {
    for (; !is_over; SDL_Delay(20))
      push_key(SDLK_RETURN);
  }};
};

// What the log gets during `body`.
std::string log_of(const std::function<void()>& body);
