// Where the log of this run lies. Main thread.
#pragma once

#include <string>

// Opens the log, as the first step of the start: at the path of the last "--log=" among the
// arguments, or under its own name beside the program, or, where that cannot be or must not be
// (app_packaged), in the user's state folder. Under its own name the log of the run before is set
// aside first: it gets the time of its last line in its name, and the last four such are kept, and
// those of runs that are still at work.
void log_begin(int argc, const char* const* argv, const std::string& app_folder);

// Closes the log, and leaves a copy of it in the state folder, as one of the five, for a program
// that removes its own folder. Nothing where it is elsewhere already.
void log_keep();

// Absolute path of the log; empty when there is none.
const std::string& log_path();
// The log that "--log=" asked for and why it is not kept; empty when all is well.
// The run then has its log where it would have been without.
std::string log_refused();
