// The disc flow: the simulator and chosen scenery from a set of discs. Its first page is also the
// menu from which the owner of a copy reaches the scenery and repair flows.
#pragma once

#include "Installer-f/main_wizard.h"

int dvd_start(int first_time, wizard_screen& screen);
