// The demo flow: a new, self-contained copy from the web.
#pragma once

#include "Installer-f/wizard/main_dest.h"
#include "Installer-f/wizard/main_wizard.h"

extern const wizard_page demo_start;
extern const wizard_page demo_eula;
extern const wizard_page demo_get_updates;
extern const wizard_page demo_pick_dest;
extern const wizard_page demo_run_patch;
extern const wizard_page demo_done;

extern int accept_eula_demo;         // the licence box; cleared on entry to demo_start
extern int demo_install_is_running;  // the transfer has begun and has not finished; survives
                                     // leaving the page

extern new_copy_choice demo_dest;  // where the new copy goes
