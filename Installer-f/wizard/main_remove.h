// "--uninstall": a copy is taken away. Pages for a run without a display; nothing in a window leads
// to them. They need the newest manifest, which knows the files of every release, and fetch it as
// an update does.
#pragma once

#include "Installer-f/wizard/main_wizard.h"

extern const wizard_page remove_start;    // which copy
extern const wizard_page remove_scan;     // the manifest, and what of it is on the disk
extern const wizard_page remove_confirm;  // how much there is to do
extern const wizard_page remove_files;    // does it
extern const wizard_page remove_done;     // lists what is left
