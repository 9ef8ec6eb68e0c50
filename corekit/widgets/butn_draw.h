// What the widget files share and nobody else needs.
#pragma once

#include <string>

// Assigns `help` to the hover help while the mouse is in the rectangle.
void BTN_hover(float left, float bottom, float right, float top, const std::string& help);

// Draws the rectangle of the interface image with its lower left at pixel (u, v), 1 to 1, with its
// lower left at (x, y).
void BTN_cell(float x, float y, float u, float v, float dx, float dy, int col);
