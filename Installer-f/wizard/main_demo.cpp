// Main thread. Writes dest_dir_path and the flow's own flags.

#include "Installer-f/wizard/main_demo.h"

#include "Installer-f/engine/utils_copies.h"
#include "Installer-f/engine/utils_grab.h"
#include "Installer-f/engine/utils_registry.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_ask.h"
#include "Installer-f/wizard/main_dest.h"
#include "Installer-f/wizard/main_dvd_util.h"
#include "Installer-f/wizard/main_patch.h"
#include "Installer-f/wizard/main_unattended_answers.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/files/io_utils.h"
#include "corekit/window/hl_init.h"

int accept_eula_demo = 0;
int demo_install_is_running = 0;
new_copy_choice demo_dest;

namespace {

float totl_inst_rat = 0;  // demo_run_patch: smoothed fraction of the whole job done

// The page was left with a transfer suspended: go on with it, or delete what it made? True to go
// on.
bool resume_suspended_transfer() {
  const int answer =
      abort_alert(tr("Are you sure you want to cancel the installation?  This will delete the "
                     "partially installed copy of the Skyvane 9 demo."),
                  tr("Cancel"), tr("the demo installation and delete partial installation."),
                  tr("Continue"), tr("the demo installation process."));
  // The program being ended from outside is no wish to give the job up.
  if (answer == 0 || app_done) return true;
  grab_reset();  // no worker may go on below the folder
  recursive_delete_folder(dest_dir_path);
  demo_install_is_running = 0;
  return false;
}

std::string give_licence() {
  if (answers.accept_eula) accept_eula_demo = 1;
  return "";
}

std::string give_destination() {
  return give_new_copy(demo_dest);
}

int show_start(int first_time, wizard_screen& screen) {
  if (first_time) {
    accept_eula_demo = 0;
    locate_all_skyvanes();
    wizard_set_steps({{"Welcome", demo_start},
                      {"License", demo_eula},
                      {"Check Servers", demo_get_updates},
                      {"Pick Destination", demo_pick_dest},
                      {"Install", demo_run_patch},
                      {"Finish", demo_done}});
    grab_discard_partial();
    grab_reset();
  }
  screen.title = tr("Welcome");
  screen.prefs_enabled = 1;
  screen.text = tr("I will guide you through the process of installing the web demo of Skyvane 9.");
  if (!all_skyroots.empty()) {
    screen.text +=
        tr("\n\nWarning: you already have Skyvane 9 installed on this computer.  Are you sure you "
           "want to install a new demo copy of Skyvane 9?");
  }
  screen.next = demo_eula;
  return 0;
}

int show_eula(int, wizard_screen& screen) {
  return eula_page({demo_start, demo_get_updates, &accept_eula_demo}, screen);
}

int show_get_updates(int first_time, wizard_screen& screen) {
  static constexpr check_flow flow = {
      "Check Servers",
      demo_eula,
      "I am contacting the Skyvane web site to find a demo server.",
      "I am downloading demo info from ",
      "I am processing information about the available demo.",
  };
  if (!check_servers(flow, first_time, screen)) return 0;
  screen.next = demo_pick_dest;
  return 1;
}

int show_pick_dest(int first_time, wizard_screen& screen) {
  if (first_time) {
    // What was there before is not deleted, and so nothing has to be asked.
    if (demo_dest.goes_on) demo_install_is_running = 0;
    if (demo_install_is_running && resume_suspended_transfer()) {
      screen.next = demo_run_patch;
      return 1;
    }
    locate_all_skyvanes();
    grab_discard_partial();
    grab_reset();
    get_OS_abs_path(os_dir_desktop, demo_dest.desktop_f);
    // The manifest may have been read anew since the last visit, which empties all findings.
    demo_dest.changed = 1;
  }
  static constexpr new_copy_flow flow = {
      demo_eula,
      demo_run_patch,
      "Demo",
      "Pick a folder to install the Skyvane 9 demo into.",
      "You have enough free disk space to install the Skyvane9  demo at this location.",
      "You do not have enough free disk space to install the Skyvane 9 demo at this location.  You "
      "can install to a different location, or save disk space by installing only some of the "
      "global scenery.",
      true,
      true,
  };
  return pick_new_copy(flow, demo_dest, screen);
}

int show_run_patch(int first_time, wizard_screen& screen) {
  static constexpr patch_flow flow = {demo_pick_dest, demo_done, &demo_install_is_running,
                                      &totl_inst_rat, true};
  return run_patch(flow, first_time, screen);
}

int show_done(int first_time, wizard_screen& screen) {
  if (first_time && !stg.extract_failed) copy_note_release("demo");
  screen.next = wizard_quit;
  screen.outcome = outcome_good;
  screen.title = tr("Finshed Web Demo Install");
  if (stg.extract_failed) {
    screen.text =
        tr("There were problem installing the Skyvane 9 web demo - it may not be usable.");
    screen.outcome = outcome_bad;
    return 0;
  }
  screen.text = tr("I have finished installing the Skyvane 9 web demo at: ") + dest_dir_path + ".";
  screen.button_names.push_back(tr("Fly Skyvane 9 Now"));
  screen.button_pages.push_back(dvd_do_run_sim);
  return 0;
}

}  // namespace

const wizard_page demo_start = {page_choice, show_start};
const wizard_page demo_eula = {page_choice, show_eula, {"--accept_eula", give_licence}};
const wizard_page demo_get_updates = {page_job, show_get_updates};
const wizard_page demo_pick_dest = {
    page_choice, show_pick_dest, {"--dest=FOLDER, --name=NAME", give_destination}};
const wizard_page demo_run_patch = {page_transfer, show_run_patch};
const wizard_page demo_done = {page_last, show_done};
