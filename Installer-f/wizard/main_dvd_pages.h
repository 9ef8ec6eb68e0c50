// The pages of the disc flow by name, for those that lead back to them.
#pragma once

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
