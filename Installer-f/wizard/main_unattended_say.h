// What a run without a display prints: lines on standard output, complaints on standard error, and
// on a terminal one line that is kept up to date. What is said is in the log as well.
//
// --quiet leaves the lines out, --timestamps puts the time before each, and --json replaces all of
// them by objects on standard output. docs/unattended.md lists the objects. Main thread.
#pragma once

#include <string>

#include "corekit/base/hl_json.h"

void say_begin();                        // reads the flags, finds out whether a terminal listens
bool say_has_terminal();                 // whether there is a live line
bool say_is_json();                      //
void say(const std::string& line);       // a line of its own
void complain(const std::string& line);  // the same on standard error
void say_live(const std::string& line);  // in place of the live line before
void say_end_live();                     // what follows begins a new line

// An object for a script: one with this "event" and the time in front of what `line` holds. Nothing
// where none are wanted.
void say_event(const char* event, const json_line& line);

// Page texts hold blank lines for the window's sake; a terminal wants them close.
std::string on_one_page(const std::string& text);
