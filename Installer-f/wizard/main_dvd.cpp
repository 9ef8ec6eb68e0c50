// Main thread. Writes dest_dir_path and the flow's own flags.

#include "Installer-f/wizard/main_dvd.h"

#include "Installer-f/engine/utils_copies.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_registry.h"
#include "Installer-f/engine/utils_registry_lock.h"
#include "Installer-f/engine/utils_sizes.h"
#include "Installer-f/engine/utils_verify.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_dvd_job.h"
#include "Installer-f/wizard/main_dvd_repair.h"
#include "Installer-f/wizard/main_dvd_scenery.h"
#include "Installer-f/wizard/main_dvd_util.h"
#include "Installer-f/wizard/main_map.h"
#include "Installer-f/wizard/main_unattended_answers.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"

int accept_eula = 0;
int dvd_install_is_running = 0;
new_copy_choice dvd_dest;

namespace {

int next_file = 0;  // dvd_run_install: the cursor of install_files

struct {
  bool is_on = false;
  int next = 0;  // the next history to hand out
} scan;          // dvd_scenery_install: the verification of a folder that is there already

constexpr dvd_job install_job = {
    .is_running = &dvd_install_is_running,
    .cursor = &next_file,
    .page = dvd_run_install,
    .choice = dvd_scenery_install,
    .no_folders = dvd_pick_install,
    .check_disc = dvd_verify_disk_install,
    .change_disc = dvd_switch_disk_install,
    .done = dvd_done_install,
    .cancelled = dvd_scenery_install,
    .cancel_ends_job = false,
    .is_new_copy = true,
    .title = "Installing Skyvane",
    .doing = "I am installing Skyvane in ",
    .line = "Installing: ",
    .last_line = "Finishing up...",
    .error_header = "An error occurred during installation:",
    .error_advice =
        "You can continue with the installation and attempt to repair the damaged "
        "files later, or you can cancel the installation.",
    .stop_label = "Cancel",
    .beside = "the install.",
    .change_title = "Installing Skyvane - Please Change DVDs",
    .check_title = "Installing Skyvane - Checking DVD...",
};

void set_steps() {
  wizard_set_steps({{"Welcome", dvd_start},
                    {"Pick Destination", dvd_pick_install},
                    {"License", dvd_eula_install},
                    {"Select Scenery", dvd_scenery_install},
                    {"Install", dvd_run_install},
                    {"Finish", dvd_done_install}});
}

// What the owner of a copy can do.
void offer_menu(wizard_screen& screen) {
  const struct {
    UTL_text label;
    page_function page;
    int shown;
  } rows[] = {
      {"Run Skyvane Now", dvd_pick_run_sim, 1},
      {"Add Or Remove Scenery", dvd_pick_scenery, stg.has_global_files},
      {"Repair Skyvane", dvd_pick_repair, stg.has_sim_files},
      {"Install A Second Copy of Skyvane", dvd_pick_install, stg.has_sim_files},
  };
  for (const auto& row : rows) {
    if (!row.shown) continue;
    screen.button_names.push_back(tr(row.label));
    screen.button_pages.push_back(row.page);
  }
}

int show_start(int first_time, wizard_screen& screen) {
  if (first_time) {
    unlock_copy();
    locate_all_skyvanes();
    set_steps();
    // The other flows leave their own filter, sectors and findings behind.
    dvd_dest.changed = 1;
  }
  screen.title = tr("Skyvane 9 Installer");
  screen.prefs_enabled = 1;
  UTIL_scan_dvd();  // every frame, so that a disc that is put in now is noticed

  if (dvd_path.empty()) {
    screen.text = tr("Please insert Skyvane 9 DVD number one to begin.");
    return 0;
  }
  if (install_name == no_install_name || stg.directory_state == manifest_refused) {
    screen.text = tr("This DVD does not appear to be an Skyvane 9 DVD.");
    return 0;
  }
  if (stg.directory_state != manifest_loaded) return 0;

  if (!all_skyroots.empty()) {
    screen.text =
        tr("You already have Skyvane 9 installed on this computer.  What would you like "
           "to do?");
    offer_menu(screen);
  } else if (stg.has_sim_files) {
    screen.text = tr("Welcome to the Skyvane 9 Installer.  I will guide you through the proess of "
                     "installing ") +
                  install_name + ".";
    screen.next = dvd_pick_install;
  } else {
    screen.text = tr("This DVD (") + install_name +
                  tr(") contains global scenery.  You must install the sim before you install the "
                     "global scenery.");
  }
  return 0;
}

int show_pick_install(int first_time, wizard_screen& screen) {
  if (first_time) {
    get_OS_abs_path(os_dir_desktop, dvd_dest.desktop_f);
    accept_eula = 0;
    set_steps();
  }
  // Too little space does not shut Next: the scenery page asks again, with the real selection.
  static constexpr new_copy_flow flow = {
      dvd_start,
      dvd_eula_install,
      nullptr,
      "Pick a folder to install Skyvane 9 into.",
      "You have enough free disk space to install Skyvane 9 at this location.",
      "You do not have enough free disk space to install Skyvane 9 at this location.  You can "
      "install to a different location, or save disk space by installing only some of the global "
      "scenery.",
      false,
      false,
  };
  return pick_new_copy(flow, dvd_dest, screen);
}

int show_eula(int, wizard_screen& screen) {
  return eula_page({dvd_pick_install, dvd_scenery_install, &accept_eula}, screen);
}

// A step a frame; true when the sizes are known. A new copy has nothing to scan, but for what an
// attempt before this one may have left.
bool scan_existing_files(wizard_screen& screen) {
  screen.kill_proc = screen.leave_proc = checksum_directory_kill;
  if (checksum_directory(scan.next, screen.progress)) {
    scan.is_on = false;
    screen.progress = -1;
    recalc_disk_sizes();
    return true;
  }
  screen.text = tr("I am scanning ") + dest_dir_path + tr(" to see what files need updating.");
  screen.progress_text = str_fill(tr("Scanning %d of %d files."),
                                  {std::to_string(scan.next), std::to_string(sim_info.size())});
  return false;
}

int show_scenery(int first_time, wizard_screen& screen) {
  static constexpr dvd_leave_question leave = {
      "Are you sure you want to cancel the installation?  This will delete the partially installed "
      "copy of Skyvane 9.",
      "Cancel",
      "the installation and delete partial installation.",
      "the installation process.",
      true,
  };
  if (first_time) {
    if (dvd_job_goes_on(install_job, leave)) {
      screen.next = dvd_run_install;
      return 1;
    }
    scan = {true, 0};
  }
  screen.title = tr("Select Scenery");
  screen.back = dvd_eula_install;
  if (scan.is_on && !scan_existing_files(screen)) return 0;
  UTIL_world_map();
  screen.text =
      tr("Please pick the scenery you would like to install now.  You can use this installer to "
         "add more scenery or remove scenery later.  If you fly into an area with no scenery "
         "installed, you will see only ocean.\n\nClick on the world map to pick select regions to "
         "install.");
  screen.next = dvd_run_install;
  if (!UTIL_disk_space(
          tr("You have enough free disk space to install Skyvane 9 with the selected scenery."),
          tr("You do not have enough free disk space to install Skyvane 9 with the selected "
             "scenery; change the install location to another hard driver or select less "
             "scenery."))) {
    screen.next = nullptr;
  }
  return 0;
}

int show_run_install(int, wizard_screen& screen) {
  return dvd_job_page(install_job, screen);
}

int show_verify_disk(int, wizard_screen& screen) {
  return dvd_check_page(install_job, screen);
}

int show_switch_disk(int first_time, wizard_screen& screen) {
  return dvd_change_page(install_job, first_time, screen);
}

int show_done(int first_time, wizard_screen& screen) {
  if (first_time && num_install_errors == 0) copy_note_release("full");
  screen.title = tr("Finished Installing Skyvane");
  screen.back = dvd_start;
  screen.next = wizard_quit;
  screen.outcome = outcome_good;
  if (num_install_errors > 0) {
    screen.text =
        tr("There were errors during the install; your copy of Skyvane may not be usable.\n\nYou "
           "can click Go Back and use the repair and add-remove scenery functions to try to "
           "reinstall any missing or damaged files.");
    screen.outcome = outcome_bad;
    return 0;
  }
  screen.text = tr("Installation was successful.");
  dvd_offer_run(screen);
  return 0;
}

int show_pick_run_sim(int first_time, wizard_screen& screen) {
  static constexpr dvd_pick pick = {
      "Run Skyvane",
      dvd_do_run_sim,
      "Please pick which copy of Skyvane 9 you would like to run.",
  };
  screen.back = dvd_start;
  if (all_skyroots.size() == 1) {  // nothing to pick, so not even a frame of the list
    dest_dir_path = all_skyroots[0];
    screen.title = tr(pick.title);
    screen.next = UTIL_sim_can_start() ? pick.next : screen.back;
    return 1;
  }
  dvd_pick_page(pick, first_time, screen);
  return 0;
}

// --- without a user ------------------------------------------------------------------------------

bool first_disc_is_in() {
  return !dvd_path.empty();
}

std::string give_task() {
  return answers.copy.empty() || answers.task == task_install ? "" : give_listed_copy();
}

page_function task_page() {
  switch (answers.task) {
    case task_scenery:
      return dvd_pick_scenery;
    case task_repair:
      return dvd_pick_repair;
    default:
      return dvd_pick_install;
  }
}

std::string give_licence() {
  if (answers.accept_eula) accept_eula = 1;
  return "";
}

std::string give_destination() {
  return give_new_copy(dvd_dest);
}

}  // namespace

const wizard_page dvd_start = {
    page_disc, show_start, {"--do=install, --copy=FOLDER", give_task, task_page, first_disc_is_in}};
const wizard_page dvd_pick_install = {
    page_choice, show_pick_install, {"--dest=FOLDER, --name=NAME", give_destination}};
const wizard_page dvd_eula_install = {page_choice, show_eula, {"--accept_eula", give_licence}};
const wizard_page dvd_scenery_install = {
    page_choice, show_scenery, {"--sectors=LIST", give_sectors}};
const wizard_page dvd_run_install = {page_install, show_run_install};
const wizard_page dvd_verify_disk_install = {page_job, show_verify_disk};
const wizard_page dvd_switch_disk_install = {page_disc, show_switch_disk, dvd_await_disc};
const wizard_page dvd_done_install = {page_last, show_done};
const wizard_page dvd_pick_run_sim = {page_choice, show_pick_run_sim, {"--copy=FOLDER", give_copy}};
