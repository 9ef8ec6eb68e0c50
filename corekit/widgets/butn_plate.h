// Plates of buttons, cut from the faces in the elements image. For whoever draws buttons.
#pragma once

// A face's picture: its lower left in the elements image, and its width; pixels.
struct BTN_face {
  float u, v, dx;
};
inline constexpr float plate_dy = 22;
inline constexpr float plate_cap = 5;  // of an end with its rounded corners; no letter is there

// Draws the face without its words, dx wide, with its lower left at (x, y).
void BTN_plot_plate(const BTN_face& face, float x, float y, float dx, float alpha);
// The row of the elements image for a face that the mouse is on, with its button down or not: three
// images are stacked there, idle on top, pressed below it, hover at the bottom.
float BTN_face_row(bool under, bool held);
