// The wizard as the runtime's application.
#pragma once

#include "Installer-f/wizard/main_wizard.h"

// Fills the runtime's record of its application with the wizard's answers, and stores the page that
// the wizard starts on. `title` is static text. Once, before MACIBM_init.
void wizard_serve(page_function start_page, const char* title);
