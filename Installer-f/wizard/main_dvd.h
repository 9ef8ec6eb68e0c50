// The disc flow: the simulator and chosen scenery from a set of discs. Its first page is also the
// menu from which the owner of a copy reaches the scenery and repair flows.
#pragma once

#include "Installer-f/wizard/main_dest.h"
#include "Installer-f/wizard/main_wizard.h"

int dvd_start(int first_time, wizard_screen& screen);
int dvd_pick_install(int first_time, wizard_screen& screen);
int dvd_eula_install(int first_time, wizard_screen& screen);
int dvd_scenery_install(int first_time, wizard_screen& screen);
int dvd_run_install(int first_time, wizard_screen& screen);
int dvd_done_install(int first_time, wizard_screen& screen);

// In no step list: the two pages that a job turns to when it needs another disc.
int dvd_verify_disk_install(int first_time, wizard_screen& screen);
int dvd_switch_disk_install(int first_time, wizard_screen& screen);

// From the menu: which of several copies to start.
int dvd_pick_run_sim(int first_time, wizard_screen& screen);

extern int accept_eula;             // the licence box; cleared on entry to dvd_pick_install
extern int dvd_install_is_running;  // the copying has begun and has not finished; survives leaving
                                    // the page
extern new_copy_choice dvd_dest;    // where the new copy goes
