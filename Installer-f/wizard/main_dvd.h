// The disc flow: the simulator and chosen scenery from a set of discs. Its first page is also the
// menu from which the owner of a copy reaches the scenery and repair flows.
#pragma once

#include "Installer-f/wizard/main_dest.h"
#include "Installer-f/wizard/main_wizard.h"

extern const wizard_page dvd_start;
extern const wizard_page dvd_pick_install;
extern const wizard_page dvd_eula_install;
extern const wizard_page dvd_scenery_install;
extern const wizard_page dvd_run_install;
extern const wizard_page dvd_done_install;

// In no step list: the two pages that a job turns to when it needs another disc.
extern const wizard_page dvd_verify_disk_install;
extern const wizard_page dvd_switch_disk_install;

// From the menu: which of several copies to start.
extern const wizard_page dvd_pick_run_sim;

extern int accept_eula;             // the licence box; cleared on entry to dvd_pick_install
extern int dvd_install_is_running;  // the copying has begun and has not finished; survives leaving
                                    // the page
extern new_copy_choice dvd_dest;    // where the new copy goes
