// What the system needs of an edition, for the targets that read pictures: no start page, and a
// title.

#include "Installer-f/main_wizard.h"
#include "corekit/GenH/hl_app.h"

page_function g_wizard = nullptr;

const char* APP_title() {
  return "Skyvane Fuzz Targets";
}
