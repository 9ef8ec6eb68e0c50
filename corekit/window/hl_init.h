// Start and finish of the runtime. The flags that go with them are in corekit/base/hl_run.h.
#pragma once

#include <string>

#include "corekit/base/hl_run.h"

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
