// What the runtime asks of its application, answered by the wizard.
//
// Main thread, once. Writes APP and g_wizard.

#include "Installer-f/wizard/main_app.h"

#include <algorithm>
#include <string>

#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_launch.h"
#include "Installer-f/wizard/main_prefs.h"
#include "Installer-f/wizard/main_unattended_options.h"
#include "Installer-f/wizard/main_usage.h"
#include "corekit/Platform/PLT_notice.h"
#include "corekit/base/hl_app.h"

page_function g_wizard = nullptr;

namespace {

constexpr int icon_side = 64;
extern "C" const unsigned char g_icon[icon_side * icon_side * 4];

// The name of the program's menu entry: reversed as the desktop wants it, and no "-" in it.
const char* desktop_id(const std::string& program) {
  static std::string id;
  id = "example.skyvane." + program;
  std::replace(id.begin(), id.end(), '-', '_');
  return id.c_str();
}

}  // namespace

void wizard_serve(page_function start_page, const char* title, const char* program) {
  PLT_introduce({desktop_id(program), title, program, g_icon, icon_side});
  g_wizard = start_page;
  APP.title = title;
  APP.web_host = product_web_host;
  APP.update = APP_update;
  APP.quit_request = wizard_quit_request;
  APP.usage = wizard_usage;
  APP.without_window = wizard_without_window;
  APP.prefs_io = wizard_prefs_io;
  APP.launch = launch_app;
}

const char* wizard_no_window(int argc, const char* const* argv) {
  static std::string text;
  text = unattended_wrong_argument(argc, argv);
  if (!text.empty()) text += "\n";
  text +=
      "Where there is no display, \"--unattended\" runs this program without one; \"--help\" tells "
      "how.";
  return text.c_str();
}
