// What the system needs of an edition, for the benchmarks: no start page, and a title.

#include "Installer-f/wizard/main_wizard.h"
#include "corekit/base/hl_app.h"

page_function g_wizard = nullptr;

const char* APP_title() {
  return "Skyvane Benchmarks";
}
