// The walk over the source tree. Main thread.
#pragma once

#include <string>

// Walks `dir` (full path, trailing "/") and adds to what bld has found. Ends the build at the first
// thing that may not be in the tree.
void pref_level(const std::string& dir);
