// What a page says when another program of the family is at work on the same copy.
#pragma once

#include "Installer-f/wizard/main_wizard.h"

// Whether dest_dir_path is this program's to work on, in a page that is about to. If it is not, the
// record says so, leads back to `back` alone, and the page returns 0: in the next frame it asks
// again, and goes on once the other program has finished. A run without a display ends there.
bool copy_is_free(page_function back, wizard_screen& screen);
