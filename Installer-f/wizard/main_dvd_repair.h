// The repair flow: missing and damaged files of an installed copy are put right from the discs.
#pragma once

#include "Installer-f/wizard/main_wizard.h"

extern const wizard_page dvd_pick_repair;
extern const wizard_page dvd_scan_repair;
extern const wizard_page dvd_confirm_repair;
extern const wizard_page dvd_install_repair;
extern const wizard_page dvd_verify_disk_repair;
extern const wizard_page dvd_switch_disk_repair;
extern const wizard_page dvd_done_repair;

extern int repair_is_running;  // the copying has begun and has not finished
