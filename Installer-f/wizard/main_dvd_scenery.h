// The scenery flow: which sectors of global scenery an installed copy has, and which it gets.
#pragma once

#include "Installer-f/wizard/main_wizard.h"

extern const wizard_page dvd_pick_scenery;
extern const wizard_page dvd_scan_scenery;
extern const wizard_page dvd_edit_scenery;
extern const wizard_page dvd_install_scenery;
extern const wizard_page dvd_verify_disk_scenery;
extern const wizard_page dvd_switch_disk_scenery;
extern const wizard_page dvd_done_scenery;

extern int scenery_install_is_running;  // the copying has begun and has not finished
