// The disc flow: the simulator and chosen scenery from a set of discs. Its first page is also the
// menu from which the owner of a copy reaches the scenery and repair flows.
#pragma once

#include "Installer-f/wizard/main_dest.h"
#include "Installer-f/wizard/main_dvd_pages.h"

extern int accept_eula;             // the licence box; cleared on entry to dvd_pick_install
extern int dvd_install_is_running;  // the copying has begun and has not finished; survives leaving
                                    // the page
extern new_copy_choice dvd_dest;    // where the new copy goes
