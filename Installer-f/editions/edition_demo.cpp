// All that makes this program the edition that it is: the page it starts on, and its title.

#include "Installer-f/editions/edition.h"

#include "Installer-f/wizard/main_demo.h"

const edition_record edition = {demo_start, "Skyvane Web Demo Installer 2.01r1",
                                "skyvane-demo-installer"};
