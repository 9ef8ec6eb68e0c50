// All that makes this program the edition that it is: the page it starts on, and its title.

#include "Installer-f/editions/edition.h"

#include "Installer-f/wizard/main_net.h"

const edition_record edition = {net_start, "Skyvane Web Updater 2.01r1", "skyvane-web-updater"};
