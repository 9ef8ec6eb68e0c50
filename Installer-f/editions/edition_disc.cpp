// All that makes this program the edition that it is: the page it starts on, and its title.

#include "Installer-f/wizard/main_dvd.h"
#include "corekit/base/hl_app.h"

page_function g_wizard = dvd_start;

const char* APP_title() {
  return "Skyvane Disc Installer 2.01r1";
}
