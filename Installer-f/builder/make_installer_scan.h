// The walk over the source tree, which looks at all of it before anything is written. Main thread.
#pragma once

#include <string>

// Walks `dir` (full path, trailing "/") and adds to what bld has found; what may not be in the tree
// becomes a fault. Gives up early when the maker ends the build.
void pref_level(const std::string& dir);

// What only the whole tree shows: missing places, a type without a file of its own, archives
// without a place, more discs than there can be. To be called behind the walk.
void check_tree();
