// Start and finish of the runtime, and the process-wide flags that go with them.
#pragma once

#include <string>

extern int app_done;      // 0 while the program runs; any code of the main thread may set it
extern int ogl_inited;    // 1 once window, context, textures and palette stand; 0 draws nothing
extern int app_headless;  // 1 when this run was asked to do without a window

// Brings the runtime up: log, tables, command line, threads, window, textures, language. A failure
// that stops the program is a fatal alert. `argv` must outlive the call only.
void MACIBM_init(int argc, const char* const* argv);

// Takes the runtime down. `save` non-zero writes the preferences and stops the threads.
void MACIBM_finishup(int save);

// Draws a frame of the start-up splash with a line of text, already translated, and a bar when
// `fraction` is above 0 (to 1). Only while the splash is up: from the window's start to the first
// page.
void MACIBM_show_init(const std::string& text, float fraction = 0.0f);

// Loads the translation table of the language in mnw.
void MACIBM_setupforlang();

// The working folder that the process was started in, with a trailing "/": MACIBM_init leaves it,
// and relative paths on the command line mean this one.
extern std::string start_folder;

// `path` made absolute against start_folder.
std::string from_start_folder(const std::string& path);
// The same for a folder, with a "/" at its end and, where it exists, without "." and ".." in it.
std::string folder_from_start(const std::string& folder);
