// Start and finish of the runtime. The flags that go with them are in corekit/base/hl_run.h.
#pragma once

#include <string>

#include "corekit/base/hl_run.h"

// Brings the runtime up: log, tables, command line, threads, window, textures, language. A failure
// that stops the program is a fatal alert. `argv` must outlive the call only.
void MACIBM_init(int argc, const char* const* argv);

// Takes the runtime down. `save` non-zero writes the preferences and stops the threads.
void MACIBM_finishup(int save);

// Loads the translation table of the language in mnw.
void MACIBM_setupforlang();
