// What is said when a build has ended. Main thread.
#pragma once

#include <string>

// Of a build that has come to its end: what it has made, and the makers' checklist.
void close_build();

// The whole run as one object of JSON on standard output, for a script that builds. `status` is the
// run's exit status, `why` what is wrong with its flags.
void print_summary(int status, const std::string& why);
