// Start and finish of the runtime.
//
// Main thread. Steps of the start: paths, log, tables, log header, command line, threads, window
// (hl_init_window.cpp), language. The finish takes the same down in reverse.

#include "corekit/window/hl_init.h"

#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <iterator>

#include "corekit/Platform/PLT_locale.h"
#include "corekit/Platform/PLT_system.h"
#include "corekit/Platform/PLT_window.h"
#include "corekit/base/UTL_cmdline.h"
#include "corekit/base/UTL_debug.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_app.h"
#include "corekit/base/hl_math.h"
#include "corekit/base/hl_thread.h"
#include "corekit/base/hl_types.h"
#include "corekit/draw/oglp_watch.h"
#include "corekit/files/UTL_translate_load.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/pref.h"
#include "corekit/widgets/keys.h"
#include "corekit/window/hl_alert_draw.h"
#include "corekit/window/hl_init_log.h"
#include "corekit/window/hl_init_window.h"
#include "corekit/window/hl_mnw.h"
#include "corekit/window/hl_mnw_context.h"

namespace {

constexpr int english = 0;

// In the order of mnw.language. A code of ISO 639, by which a user's locale asks for the language;
// none where there are no letters to show it with.
constexpr struct {
  const char* folder;
  const char* code;
} languages[] = {
    {"text/english/", "en"}, {"text/french/", "fr"},  {"text/german/", "de"},
    {"text/italian/", "it"}, {"text/spanish/", "es"}, {"text/portugese/", "pt"},
    {"text/korean/", ""},
};
constexpr int language_count = static_cast<int>(std::size(languages));

// What a user reads who has chosen nothing yet: the first language of his locale that there is.
int language_of_user() {
  for (const std::string& code : PLT_user_languages())
    for (int i = 0; i < language_count; ++i)
      if (code == languages[i].code) return i;
  return english;
}

// The English file puts right some of the texts that are its keys, and lacks none.
bool load_language(int language) {
  return UTL_translate_load(
      std::string("Resources/") + languages[language].folder + "Installer2.txt",
      language != english);
}

void remember_start_folder() {
  char folder[PATH_MAX];
  start_folder = getcwd(folder, sizeof folder) ? folder : "/";
  if (start_folder.back() != '/') start_folder += '/';
}

// The program's files, "Resources/" and the log, are found relative to the folder that holds it.
std::string enter_app_folder() {
  std::string folder;
  get_OS_abs_path(os_dir_this_app, folder);
  if (folder.empty() || chdir(folder.c_str()) != 0) return start_folder;
  return folder;
}

// Whether it lies as the packages put it: in .../lib/NAME/, under that name.
bool is_packaged(const std::string& app_folder) {
  const std::string program = PLT_executable_path();
  const std::string name = program.substr(program.rfind('/') + 1);
  return app_folder.ends_with("/lib/" + name + "/");
}

}  // namespace

void MACIBM_init(int argc, const char* const* argv) {
  static constexpr failure_sink sink = {draw_alert, MACIBM_finishup};
  report_to(&sink);
  UTL_debug_init();
  // Without TZ the C library looks the zone up again for the date of every file that is unpacked,
  // on all threads at once.
  setenv("TZ", ":/etc/localtime", 0);
  remember_start_folder();
  // The working folder, not a stored prefix, locates the program's files: app_path ends up empty
  // on purpose, and so the log names an empty folder below.
  app_path.clear();
  if (is_build) g_case_sensitive = 0;
  const std::string app_folder = enter_app_folder();
  app_packaged = is_packaged(app_folder) ? 1 : 0;
  log_begin(argc, argv, app_folder);

  hl_math_init();
  xer_header();
  xer << "\nSky-Root folder:'" << app_path << "', case sensitive=" << g_case_sensitive << "\n\n";
  xer.flush();
  xer.keep_time();

  cmdline.init_unix(argc, argv);
  layout_watched = cmdline.has_option("--check_layout");
  const std::string list = cmdline.get_option("--list_texts");
  if (!list.empty()) watch_list(list);
  app_headless = APP.without_window() ? 1 : 0;
  // From here on an alert may open a message box, and not before it is known that one may be shown.
  if (!app_headless) PLT_use_display();
  THREAD_init();

  mnw.req_dx = 800;
  mnw.req_dy = 600;
  mnw.req_depth = 32;
  mnw.alias_req = 0;
  mnw.language = language_of_user();  // the preferences are read over it
  if (app_headless) {
    THREAD_make_workers();
  } else {
    init_window();
  }
  MACIBM_setupforlang();
  MACIBM_show_init(UTL_translate_string("Will init plugins."));
  MACIBM_show_init(UTL_translate_string("Starting application."));
}

void MACIBM_setupforlang() {
  const bool is_known = mnw.language > english && mnw.language < language_count;
  if (!is_known || !load_language(mnw.language)) load_language(english);
}

void MACIBM_finishup(int save) {
  // A window belongs to the main thread; a failing worker that ends the program leaves it alone.
  const bool may_close = !THREAD_is_inited() || THREAD_is_main_thread();
  if (save) {
    // A frame-rate test leaves no trace in the user's settings.
    if (!cmdline.has_option("--fps_test")) {
      pref.IO_set(11, 1);
      keys.keys_io(1);
    }
    THREAD_shutdown();
  }
  if (may_close) MACIBM_nuke_context(0);
  PLT_drop_temp_folder();
  xer.close();
}
