// "--check": what a run would do, instead of doing it. Main thread.
#pragma once

#include "Installer-f/wizard/main_unattended_end.h"

// Decides as the job at hand would, and tells what would be fetched, deleted and left alone, by the
// standing answer for modified files. Counts the latter in `figures`. True if there is something to
// do. Nothing is written.
bool check_tell(end_figures& figures);
