// What the desktop is told of a job while its user looks elsewhere.
#pragma once

#include "Installer-f/wizard/main_page.h"

// Shows the page's progress on the launcher, and a notification when a long job has ended, or waits
// for a disc, and the window is not in front. Once a frame, of what `page` has made of it.
void wizard_tell_desktop(page_function page, const wizard_screen& screen);
