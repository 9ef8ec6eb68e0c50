// "--list": the installed copies that this user has. Main thread.
#pragma once

// Prints each with its release, platform and edition, as a line or as an object. Returns the exit
// status.
int unattended_list();
