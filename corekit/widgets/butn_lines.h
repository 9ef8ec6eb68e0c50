// Text cut into lines by its real widths, for what may hold a path: no line is wider than asked.
// Without a window too. What comes out is in the font's characters. Any thread but while the main
// one changes the language.
#pragma once

#include <string>
#include <vector>

// `text` in lines of at most `wrap` units: broken at LF, else behind a blank, "-" or "/", and where
// there is none in time, wherever the line is full. A blank at a line's end may hang over.
std::vector<std::string> BTN_lines(const std::string& text, float wrap);
// Takes out lines of the middle, and marks the cut, so that at most `most` are left: both ends of a
// path say more than its middle.
void BTN_cut_middle(std::vector<std::string>& lines, size_t most, float wrap);
// Keeps the first `most` lines, and marks the cut.
void BTN_cut_end(std::vector<std::string>& lines, size_t most, float wrap);
// Draws lines one below the other, the first at `y`; the y of the next one.
float BTN_plot_lines(int col, float x, float y, const std::vector<std::string>& lines);
