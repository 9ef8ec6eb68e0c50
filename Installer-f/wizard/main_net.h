// The web update flow: an installed copy is compared with the newest manifest and brought up to it.
#pragma once

#include "Installer-f/wizard/main_wizard.h"

extern const wizard_page net_start;
extern const wizard_page net_pick_dest;
extern const wizard_page net_get_updates;
extern const wizard_page net_check_disk;
extern const wizard_page net_run_patch;
extern const wizard_page net_done;
