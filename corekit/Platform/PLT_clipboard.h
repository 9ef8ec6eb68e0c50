// The desktop's clipboard. Without a window it is empty, and nothing is put there. Main thread
// only.
#pragma once

#include <string>

bool PLT_clipboard_put(const std::string& utf8);  // false if it could not be put there
std::string PLT_clipboard_text();                 // UTF-8; empty if there is no text
