// Main thread. Writes the flow's own flag, cursors and count.

#include "Installer-f/wizard/main_dvd_repair.h"

#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/engine/utils_sizes.h"
#include "Installer-f/engine/utils_verify.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_dvd_job.h"
#include "Installer-f/wizard/main_dvd_pages.h"
#include "Installer-f/wizard/main_dvd_util.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_string.h"

int repair_is_running = 0;

namespace {

struct repair_page_state {
  int next_file = 0;         // dvd_install_repair: the cursor of install_files
  int scanned = 0;           // dvd_scan_repair: files handed to the verification so far
  int num_file_install = 0;  // dvd_confirm_repair: the count shown to the user
} state;

constexpr dvd_job repair_job = {
    .is_running = &repair_is_running,
    .cursor = &state.next_file,
    .page = dvd_install_repair,
    .choice = dvd_confirm_repair,
    .no_folders = dvd_confirm_repair,
    .check_disc = dvd_verify_disk_repair,
    .change_disc = dvd_switch_disk_repair,
    .done = dvd_done_repair,
    .cancelled = dvd_done_repair,
    .cancel_ends_job = true,
    .is_new_copy = false,
    .title = "Repairing Skyvane",
    .doing = "I am repairing ",
    .line = "Repairing: ",
    .last_line = "Finishing up...",
    .error_header = "An error occurred during the repair:",
    .error_advice =
        "Skyvane may not be usable until you are able to repair the sim without "
        "errors.",
    .stop_label = "Stop",
    .beside = "the repair.",
    .change_title = "Repairing Skyvane - Please Change DVDs",
    .check_title = "Repairing Skyvane - Checking DVD",
};

// A little too high where the release has dropped files: hence the word "approximately".
int count_files_to_install() {
  int count = 0;
  for (int i = 0; i < static_cast<int>(sim_info.size()); ++i) {
    const int newest = static_cast<int>(sim_info[i].versions.size()) - 1;
    if (!sim_info[i].current().sig_match && want_this_f(i, newest)) ++count;
  }
  return count;
}

int show_pick(int first_time, wizard_screen& screen) {
  if (first_time) {
    checksum_directory_kill();
    wizard_set_steps({{"Welcome", dvd_start},
                      {"Select Skyvane", dvd_pick_repair},
                      {"Scan For Problems", dvd_scan_repair},
                      {"Confirm Repairs", dvd_confirm_repair},
                      {"Repair Skyvane", dvd_install_repair},
                      {"Finish", dvd_done_repair}});
  }
  static constexpr dvd_pick pick = {
      "Repair Skyvane 9",
      dvd_scan_repair,
      "Please pick which copy of Skyvane 9 you would like to repair.",
  };
  dvd_pick_page(pick, first_time, screen);
  screen.back = dvd_start;
  return 0;
}

int show_scan(int first_time, wizard_screen& screen) {
  if (first_time) {
    state.scanned = 0;
    set_install_filter(1, 0);
  }
  static constexpr dvd_scan scan = {
      "Scanning Skyvane for Problems",
      dvd_pick_repair,
      dvd_confirm_repair,
      " for missing or damaged files.\n\nNote: if you have updated this copy of Skyvane from the "
      "Internet, the repair operation will remove the updates.  Once the repair has finished, you "
      "should reapply the updates from the web.",
  };
  return dvd_scan_page(scan, state.scanned, screen);
}

int show_confirm(int first_time, wizard_screen& screen) {
  static constexpr dvd_leave_question leave = {
      "Are you sure you want to stop the repair operation?  Skyvane may not be usable until "
      "repairs are complete.  You can run the repair operation on Skyvane again later to complete "
      "repairs.",
      "Stop",
      "the repair operation.",
      "the repair operation.",
      false,
  };
  if (first_time) {
    if (dvd_job_goes_on(repair_job, leave)) {
      screen.next = dvd_install_repair;
      return 1;
    }
    recalc_disk_sizes();
    state.num_file_install = count_files_to_install();
  }
  screen.title = tr("Confirm Repairs");
  screen.text = str_fill(tr("I need to install approximately %d files to repair "),
                         {std::to_string(state.num_file_install)}) +
                dest_dir_path + ".";
  screen.back = dvd_pick_repair;
  screen.next = dvd_install_repair;
  if (UTIL_disk_space(
          tr("You have enough free disk space to repair this copy of Skyvane."),
          tr("You do not have enough free disk space to repair this copy of Skyvane."))) {
    screen.text += tr("\n\nClick continue to begin repairing Skyvane.");
  } else {
    screen.next = nullptr;
  }
  return 0;
}

int show_install(int, wizard_screen& screen) {
  return dvd_job_page(repair_job, screen);
}

int show_verify_disk(int, wizard_screen& screen) {
  return dvd_check_page(repair_job, screen);
}

int show_switch_disk(int first_time, wizard_screen& screen) {
  return dvd_change_page(repair_job, first_time, screen);
}

int show_done(int, wizard_screen& screen) {
  screen.title = tr("Finished Repairing Skyvane.");
  screen.back = dvd_start;
  screen.next = wizard_quit;
  screen.outcome = outcome_good;
  if (num_install_errors > 0) {
    screen.text =
        tr("There were errors during the repair; your copy of Skyvane may not be usable.\n\nYou "
           "can click Go Back and use the repair and add-remove scenery functions to try to "
           "reinstall any missing or damaged files.");
    screen.outcome = outcome_bad;
    return 0;
  }
  screen.text = tr("I have finished repairing ") + dest_dir_path +
                tr(" - click Go Back to return to the main menu.");
  dvd_offer_run(screen);
  return 0;
}

}  // namespace

const wizard_page dvd_pick_repair = {page_choice, show_pick, {"--copy=FOLDER", give_copy}};
const wizard_page dvd_scan_repair = {page_job, show_scan};
const wizard_page dvd_confirm_repair = {page_choice, show_confirm};
const wizard_page dvd_install_repair = {page_install, show_install};
const wizard_page dvd_verify_disk_repair = {page_job, show_verify_disk};
const wizard_page dvd_switch_disk_repair = {page_disc, show_switch_disk, dvd_await_disc};
const wizard_page dvd_done_repair = {page_last, show_done};
