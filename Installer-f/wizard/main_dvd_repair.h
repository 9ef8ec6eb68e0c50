// The repair flow: missing and damaged files of an installed copy are put right from the discs.
#pragma once

#include "Installer-f/wizard/main_wizard.h"

int dvd_pick_repair(int first_time, wizard_screen& screen);
int dvd_scan_repair(int first_time, wizard_screen& screen);
int dvd_confirm_repair(int first_time, wizard_screen& screen);
int dvd_install_repair(int first_time, wizard_screen& screen);
int dvd_verify_disk_repair(int first_time, wizard_screen& screen);
int dvd_switch_disk_repair(int first_time, wizard_screen& screen);
int dvd_done_repair(int first_time, wizard_screen& screen);

extern int repair_is_running;  // the copying has begun and has not finished
