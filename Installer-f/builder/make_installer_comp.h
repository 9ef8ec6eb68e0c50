// From the source tree to the archives and the manifest of a master. Main thread.
#pragma once

#include <string>

// Starts a tree: first disc, nothing compressed.
void start_comp();

// Compresses bld.comp_files and writes their lines, in walk order; breaks to the next disc when one
// is full. Needs the tree's folders and `ouf` open. False after a fault, or when the maker has
// ended the build.
bool comp_files();
