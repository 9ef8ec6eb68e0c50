// The frame clock: seconds since the program began, as of the start of the present frame.
#pragma once

class xtim_class {
 public:
  // Reads the clock; derives the frame's period, and from the window record whether the mouse
  // button is held. Once a frame.
  void xtim_update();

  // Doubles: a float counts in steps of 1/64 s after two days, and of half a second after seven
  // weeks.
  double now_sec = 0;     // seconds since the first update
  float period = 0.0f;    // seconds that the last frame took; 0 on the first
  double mouse_down = 0;  // now_sec of the last press
};

extern xtim_class xtim;
