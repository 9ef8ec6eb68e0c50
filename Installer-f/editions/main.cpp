// The program's start and its one loop.
//
// main brings the runtime up, moves the program off the disc if it was started from one, reads the
// settings, finds the installed copies, and then turns the loop in which everything happens: one
// frame a pass. Nothing runs outside that loop but worker threads.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <utility>

#include "Installer-f/builder/make_installer_cmdline.h"
#include "Installer-f/editions/edition.h"
#include "Installer-f/engine/utils_disc.h"
#include "Installer-f/engine/utils_grab.h"
#include "Installer-f/engine/utils_registry.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/engine/utils_verify.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_app.h"
#include "Installer-f/wizard/main_ask.h"
#include "Installer-f/wizard/main_dvd_util.h"
#include "Installer-f/wizard/main_launch.h"
#include "Installer-f/wizard/main_remove.h"
#include "Installer-f/wizard/main_unattended.h"
#include "Installer-f/wizard/main_unattended_list.h"
#include "Installer-f/wizard/main_usage.h"
#include "corekit/base/UTL_cmdline.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_app.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/pref.h"
#include "corekit/window/hl_init.h"
#include "corekit/window/hl_mnw.h"

namespace {

void log_folders() {
  constexpr struct {
    const char* key;
    os_dir_type folder;
  } rows[] = {
      {"os_dir_this_app\t\t=", os_dir_this_app},       {"os_dir_desktop\t\t=", os_dir_desktop},
      {"os_dir_default_apps\t=", os_dir_default_apps}, {"os_dir_temp\t\t\t=", os_dir_temp},
      {"os_dir_prefs\t\t\t=", os_dir_prefs},
  };
  for (const auto& row : rows) {
    std::string path;
    get_OS_abs_path(row.folder, path);
    xer << row.key << path << '\n';
  }
  xer << '\n';
}

// The settings' defaults; the preference file is read over them. The target system is not kept from
// run to run, on purpose: one that was chosen for another computer once would be a trap.
void set_defaults() {
  stg = stg_record();
  install_name = no_install_name;
}

// "-path FOLDER", in this order and first, is how a program of the family hands over its folder.
void take_handed_over_path(int argc, char** argv) {
  if (argc > 2 && std::strcmp(argv[1], "-path") == 0 && *argv[2]) {
    cmd_line_path = folder_from_start(argv[2]);
  }
}

void take_platform() {
  if (!cmdline.has_option("--platform")) return;
  const std::string word = cmdline.get_option("--platform");
  if (const int platform = platform_named(word)) {
    stg.new_copy_os = platform;
  } else {
    xer << "WARNING: --platform wants mac, windows or linux, not '" << word << "'.\n";
  }
}

int run_wizard(int argc, char** argv) {
  take_platform();
  engine_ask.modified = select_alert;
  const bool unattended = wizard_unattended();
  if (unattended) {
    if (const int refused = unattended_begin(argc, argv)) return refused;
    if (cmdline.has_option("--list")) return unattended_list();
    if (cmdline.has_option("--uninstall")) g_wizard = remove_start;
  }
  while (!app_done)
    MACIBM_event_proc();
  // Not every way out leads over Quit: no thread may be at work while all is taken down.
  grab_kill();
  install_files_kill();
  checksum_directory_kill();
  return unattended ? unattended_end() : 0;
}

// The makers speak English, whatever the user of this machine has chosen.
int run_builder() {
  const int language = std::exchange(mnw.language, 0);
  MACIBM_setupforlang();
  const int status = run_master_builder();
  mnw.language = language;
  return status;
}

int run(int argc, char** argv) {
  MACIBM_init(argc, argv);
  if (get_OS_abs_path(os_dir_temp, temp_path) != 0) {
    __MACIBM_alert(win_main, "I could not make a temporary folder to work in!",
                   "Neither the folder that TMPDIR names nor /tmp can be written.", "", "", t_exit,
                   at_no_temporary_folder);
  }
  UTIL_scan_volumes(disc_label_file);
  leave_disc(argc, argv);
  log_folders();
  set_defaults();
  pref.IO_set(11, 0);
  MACIBM_setupforlang();
  take_handed_over_path(argc, argv);
  locate_all_skyvanes();

  bool is_for_makers = false;
  for (const char* const flag :
       {"--build_master", "--write_server_list", "--sign_master", "--sign_list"})
    is_for_makers |= cmdline.has_option(flag);
  const int status = is_for_makers ? run_builder() : run_wizard(argc, argv);
  MACIBM_finishup(1);
  return status;
}

// Where not even the failure could be shown, such as for want of memory.
[[noreturn]] void end_without_memory() {
  constexpr char text[] = "Out of memory, or another failure in the middle of one.\n";
  const ssize_t written = write(STDERR_FILENO, text, sizeof text - 1);
  std::_Exit(written > 0 ? 1 : 2);
}

}  // namespace

// Nothing here throws to report a failure; what arrives all the same, such as memory that has run
// out, is shown like any other.
int main(int argc, char** argv) {
  std::set_terminate(end_without_memory);
  wizard_serve(edition.start_page, edition.title, edition.program);
  APP.no_window = wizard_no_window(argc, argv);
  try {
    return run(argc, argv);
  } catch (const std::bad_alloc&) {
    no_memory_failure(at_stray_exception).Report();
  } catch (const std::exception& e) {
    MACIBM_fault(at_stray_exception, "Caught an unhandled C++ exception", e.what());
  } catch (...) {
    MACIBM_fault(at_stray_throw, "Caught an unhandled unknown exception");
  }
  return 1;
}
