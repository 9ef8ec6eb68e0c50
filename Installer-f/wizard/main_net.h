// The web update flow: an installed copy is compared with the newest manifest and brought up to it.
#pragma once

#include "Installer-f/wizard/main_wizard.h"

int net_start(int first_time, wizard_screen& screen);
int net_pick_dest(int first_time, wizard_screen& screen);
int net_get_updates(int first_time, wizard_screen& screen);
int net_check_disk(int first_time, wizard_screen& screen);
int net_run_patch(int first_time, wizard_screen& screen);
int net_done(int first_time, wizard_screen& screen);
