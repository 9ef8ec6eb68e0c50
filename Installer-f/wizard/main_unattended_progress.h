// How far a page has got, for the console of a run without a display: one line that is kept up to
// date on a terminal; elsewhere a line every 5 % of a job.
//
// Main thread.
#pragma once

#include "Installer-f/wizard/main_wizard.h"

void progress_begin();  // of another page
void progress_show(page_kind kind, const wizard_screen& screen);
