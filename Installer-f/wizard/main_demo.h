// The demo flow: a new, self-contained copy from the web.
#pragma once

#include "Installer-f/wizard/main_dest.h"
#include "Installer-f/wizard/main_wizard.h"

int demo_start(int first_time, wizard_screen& screen);
int demo_eula(int first_time, wizard_screen& screen);
int demo_get_updates(int first_time, wizard_screen& screen);
int demo_pick_dest(int first_time, wizard_screen& screen);
int demo_run_patch(int first_time, wizard_screen& screen);
int demo_done(int first_time, wizard_screen& screen);

extern int accept_eula_demo;         // the licence box; cleared on entry to demo_start
extern int demo_install_is_running;  // the transfer has begun and has not finished; survives
                                     // leaving the page

extern new_copy_choice demo_dest;  // where the new copy goes
