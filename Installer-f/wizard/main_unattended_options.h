// What may stand on the command line of a run without a display. A slip of an administrator's hand
// is told before anything is done: what is passed over in a window, where the user sees what
// happens, would here install something that nobody asked for.
//
// Pure functions of their arguments.
#pragma once

#include <string>

// What is wrong with the command line, for the user, with the option that is nearest to what was
// written; empty if nothing is. `argv[0]` is the program.
std::string unattended_wrong_argument(int argc, const char* const* argv);

// What is wrong with `name` as that of a new folder, or empty: it is one folder's name, in one
// line, and not longer than the system takes.
std::string unattended_wrong_name(const std::string& name);
