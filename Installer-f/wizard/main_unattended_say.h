// What a run without a display prints: lines on standard output, complaints on standard error, and
// on a terminal one line that is kept up to date.
//
// Main thread.
#pragma once

#include <string>

void say_begin();                        // finds out whether a terminal listens
bool say_has_terminal();                 // whether it does
void say(const std::string& line);       // a line of its own
void complain(const std::string& line);  // the same on standard error, and in the log
void say_live(const std::string& line);  // in place of the live line before
void say_end_live();                     // what follows begins a new line

// Page texts hold blank lines for the window's sake; a terminal wants them close.
std::string on_one_page(const std::string& text);
