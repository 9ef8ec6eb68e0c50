// What the runtime asks of its application, answered by the wizard.
//
// Main thread, once. Writes APP and g_wizard.

#include "Installer-f/wizard/main_app.h"

#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_launch.h"
#include "Installer-f/wizard/main_prefs.h"
#include "Installer-f/wizard/main_usage.h"
#include "corekit/base/hl_app.h"

page_function g_wizard = nullptr;

void wizard_serve(page_function start_page, const char* title) {
  g_wizard = start_page;
  APP.title = title;
  APP.web_host = product_web_host;
  APP.no_window =
      "Where there is no display, \"--unattended\" runs this program without one; \"--help\" tells "
      "how.";
  APP.update = APP_update;
  APP.quit_request = wizard_quit_request;
  APP.usage = wizard_usage;
  APP.without_window = wizard_without_window;
  APP.prefs_io = wizard_prefs_io;
  APP.launch = launch_app;
}
