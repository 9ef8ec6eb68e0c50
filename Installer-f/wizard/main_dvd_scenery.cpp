// Main thread. Writes the flow's own flag and cursors.

#include "Installer-f/wizard/main_dvd_scenery.h"

#include "Installer-f/engine/utils_select.h"
#include "Installer-f/engine/utils_sizes.h"
#include "Installer-f/engine/utils_verify.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_dvd_job.h"
#include "Installer-f/wizard/main_dvd_pages.h"
#include "Installer-f/wizard/main_dvd_util.h"
#include "Installer-f/wizard/main_map.h"
#include "corekit/base/UTL_translate.h"

int scenery_install_is_running = 0;

namespace {

struct scenery_page_state {
  int next_file = 0;  // dvd_install_scenery: the cursor of install_files
  int scanned = 0;    // dvd_scan_scenery: files handed to the verification so far
} state;

constexpr dvd_job scenery_job = {
    .is_running = &scenery_install_is_running,
    .cursor = &state.next_file,
    .page = dvd_install_scenery,
    .choice = dvd_edit_scenery,
    .no_folders = dvd_edit_scenery,
    .check_disc = dvd_verify_disk_scenery,
    .change_disc = dvd_switch_disk_scenery,
    .done = dvd_done_scenery,
    .cancelled = dvd_done_scenery,
    .cancel_ends_job = true,
    .is_new_copy = false,
    .title = "Installing New Scenery",
    .doing = "I am installing new scenery for ",
    .line = "Installing: ",
    .last_line = "Finishing Up...",
    .error_header = "An error occurred during scenery installation:",
    .error_advice =
        "You can continue with the installation and attempt to reinstall the damaged "
        "files later, or you can stop the installation",
    .stop_label = "Stop",
    .beside = "the scenery install.",
    .change_title = "Installing Scenery - Please change DVDs",
    .check_title = "Installing Scenery - Verifying DVD",
};

// What the job does, as far as it is one thing: the counts are those of the page that chose it.
enum change_kind { change_any, change_both, change_more, change_less };

change_kind kind_of_change() {
  const bool adds = stg.todo_install_count >= 1, removes = stg.todo_delete_count >= 1;
  if (adds && removes) return change_both;
  if (adds) return change_more;
  return removes ? change_less : change_any;
}

int show_pick(int first_time, wizard_screen& screen) {
  if (first_time) {
    checksum_directory_kill();
    wizard_set_steps({{"Welcome", dvd_start},
                      {"Select Skyvane", dvd_pick_scenery},
                      {"Scan Existing Scenery", dvd_scan_scenery},
                      {"Select New Scenery", dvd_edit_scenery},
                      {"Install Scenery", dvd_install_scenery},
                      {"Finish", dvd_done_scenery}});
  }
  static constexpr dvd_pick pick = {
      "Select Skyvane 9 to Add or Remove Scenery",
      dvd_scan_scenery,
      "Please pick which copy of Skyvane 9 you would like to add scenery to.",
  };
  dvd_pick_page(pick, first_time, screen);
  screen.back = dvd_start;
  return 0;
}

int show_scan(int first_time, wizard_screen& screen) {
  if (first_time) {
    state.scanned = 0;
    set_install_filter(0, 1);
  }
  static constexpr dvd_scan scan = {
      "Scanning Skyvane 9 for Installed Scenery",
      dvd_pick_scenery,
      dvd_edit_scenery,
      " to see what scenery you already have installed.\n\nNote: I am only checking for the "
      "scenery already installed from your DVDs.  This scan will not show any custom scenery "
      "downloaded from the internet.",
  };
  return dvd_scan_page(scan, state.scanned, screen);
}

int show_edit(int first_time, wizard_screen& screen) {
  static constexpr dvd_leave_question leave = {
      "Are you sure you want to stop scenery installation?  You can add or remove more scenery "
      "later.",
      "Stop",
      "the scenery install.",
      "the scenery install.",
      false,
  };
  if (first_time) {
    if (dvd_job_goes_on(scenery_job, leave)) {
      screen.next = dvd_install_scenery;
      return 1;
    }
    scenery_from_install();
    recalc_disk_sizes();
  }
  UTIL_world_map();
  screen.title = tr("Select Scenery");
  screen.text =
      tr("Click on the world map to select what scenery you would like to install.  Scenery that "
         "you deselect will be removed; scenery that you select will be installed.  If you fly "
         "into an area with no scenery installed, you will see only ocean.");
  screen.back = dvd_pick_scenery;
  screen.next = dvd_install_scenery;
  if (!UTIL_disk_space(tr("You have enough free disk space to install this scenery."),
                       tr("You do not have enough free disk space to install this scenery."))) {
    screen.next = nullptr;
  }
  return 0;
}

int show_install(int, wizard_screen& screen) {
  return dvd_job_page(scenery_job, screen);
}

int show_verify_disk(int, wizard_screen& screen) {
  return dvd_check_page(scenery_job, screen);
}

int show_switch_disk(int first_time, wizard_screen& screen) {
  return dvd_change_page(scenery_job, first_time, screen);
}

int show_done(int, wizard_screen& screen) {
  static constexpr UTL_text done[] = {"updated", "added and removed", "installed more", "removed"};
  static constexpr UTL_text doing[] = {"updating", "adding and removing", "installing more",
                                       "removing"};
  const change_kind kind = kind_of_change();
  screen.title = tr("Finished With Add/Remove Scenery");
  screen.back = dvd_start;
  screen.next = wizard_quit;
  screen.outcome = outcome_good;
  if (num_install_errors >= 1) {
    screen.text = tr("There were errors while ") + tr(doing[kind]) +
                  tr(" your scenery; your copy of Skyvane may not be usable.\n\nYou can click Go "
                     "Back and use the repair and add-remove scenery functions to try to reinstall "
                     "any missing or damaged files.");
    screen.outcome = outcome_bad;
    return 0;
  }
  screen.text = tr("I have successfully ") + tr(done[kind]) +
                tr(" scenery to match your choices on the map.");
  dvd_offer_run(screen);
  return 0;
}

}  // namespace

const wizard_page dvd_pick_scenery = {page_choice, show_pick, {"--copy=FOLDER", give_copy}};
const wizard_page dvd_scan_scenery = {page_job, show_scan};
const wizard_page dvd_edit_scenery = {page_choice, show_edit, {"--sectors=LIST", give_sectors}};
const wizard_page dvd_install_scenery = {page_install, show_install};
const wizard_page dvd_verify_disk_scenery = {page_job, show_verify_disk};
const wizard_page dvd_switch_disk_scenery = {page_disc, show_switch_disk, dvd_await_disc};
const wizard_page dvd_done_scenery = {page_last, show_done};
