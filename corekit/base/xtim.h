// The frame clock: seconds since the program began, as of the start of the present frame.
#pragma once

class xtim_class {
 public:
  // Reads the clock; derives the frame's period, and from the window record whether the mouse
  // button is held. Once a frame.
  void xtim_update();

  float now_sec = 0.0f;     // seconds since the first update
  float period = 0.0f;      // seconds that the last frame took; 0 on the first
  float mouse_down = 0.0f;  // now_sec of the last press
};

extern xtim_class xtim;
