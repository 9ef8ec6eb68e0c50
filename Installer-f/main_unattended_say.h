// What a run without a display prints: lines on standard output, complaints on standard error, and
// on a terminal one line that is kept up to date.
//
// Translated texts are ISO Latin-1, a terminal wants UTF-8, and the names and paths between them
// are bytes as the system has them. What is printed is therefore put right byte by byte: a valid
// UTF-8 sequence stays, any other byte above 127 is taken for a Latin-1 character.
//
// Main thread.
#pragma once

#include <string>
#include <string_view>

void say_begin();                        // finds out whether a terminal listens
bool say_has_terminal();                 // whether it does
void say(const std::string& line);       // a line of its own
void complain(const std::string& line);  // the same on standard error, and in the log
void say_live(const std::string& line);  // in place of the live line before
void say_end_live();                     // what follows begins a new line

// `text` as a terminal wants it.
std::string terminal_text(std::string_view text);
// Page texts hold blank lines for the window's sake; a terminal wants them close.
std::string on_one_page(const std::string& text);
