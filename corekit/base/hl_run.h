// The process-wide flags of a run, and the folder that it was started in. Set
// by start and finish (corekit/window/hl_init.h), read everywhere. Main thread.
#pragma once

#include <string>

extern int app_done;      // 0 while the program runs; any code of the main thread may set it
extern int ogl_inited;    // 1 once window, context, textures and palette stand; 0 draws nothing
extern int app_headless;  // 1 when this run was asked to do without a window
extern int app_packaged;  // 1 when a package has put the program where it is: nothing is written
                          // beside it, not even by root, so that a removal leaves nothing behind

// The working folder that the process was started in, with a trailing "/": MACIBM_init leaves it,
// and relative paths on the command line mean this one.
extern std::string start_folder;

// `path` made absolute against start_folder.
std::string from_start_folder(const std::string& path);
// The same for a folder, with a "/" at its end and, where it exists, without "." and ".." in it.
std::string folder_from_start(const std::string& folder);
