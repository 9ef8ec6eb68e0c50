// The wizard as the runtime's application.
#pragma once

#include "Installer-f/wizard/main_wizard.h"

// Fills the runtime's record of its application with the wizard's answers, and stores the page that
// the wizard starts on, and introduces the program to the desktop. `title` and `program`, the name
// of its file, are static texts. Once, before MACIBM_init.
void wizard_serve(page_function start_page, const char* title, const char* program);

// What the console is told where no window can be opened: that the run can do without one, and,
// before that, which of the arguments is misspelt. Valid until the next call.
const char* wizard_no_window(int argc, const char* const* argv);
