// All that makes this program the edition that it is: the page it starts on, and its title.

#include "Installer-f/editions/edition.h"

#include "Installer-f/wizard/main_dvd.h"

const edition_record edition = {dvd_start, "Skyvane Disc Installer 2.01r1",
                                "skyvane-disc-installer"};
