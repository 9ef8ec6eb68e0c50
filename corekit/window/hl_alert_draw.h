// The drawn form of an alert. For hl_alert only.
#pragma once

#include <string>

// Shows four lines of text, and for a fatal alert where they came from, in a window of its own
// until the user has left it; then goes back to `window`. Type 0 is the language chooser, which
// writes mnw.language. Of a text that is too long for its place the beginning is shown. REQUIRES: a
// window.
void draw_alert(int window, const std::string* lines, int type, const std::string& where);
