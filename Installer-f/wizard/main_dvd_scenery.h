// The scenery flow: which sectors of global scenery an installed copy has, and which it gets.
#pragma once

#include "Installer-f/wizard/main_wizard.h"

int dvd_pick_scenery(int first_time, wizard_screen& screen);
int dvd_scan_scenery(int first_time, wizard_screen& screen);
int dvd_edit_scenery(int first_time, wizard_screen& screen);
int dvd_install_scenery(int first_time, wizard_screen& screen);
int dvd_verify_disk_scenery(int first_time, wizard_screen& screen);
int dvd_switch_disk_scenery(int first_time, wizard_screen& screen);
int dvd_done_scenery(int first_time, wizard_screen& screen);

extern int scenery_install_is_running;  // the copying has begun and has not finished
