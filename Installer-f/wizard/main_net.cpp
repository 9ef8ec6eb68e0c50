// Main thread. Writes dest_dir_path.

#include "Installer-f/wizard/main_net.h"

#include "Installer-f/engine/utils_copies.h"
#include "Installer-f/engine/utils_grab.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_registry.h"
#include "Installer-f/engine/utils_registry_lock.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/engine/utils_sizes.h"
#include "Installer-f/engine/utils_verify.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_busy.h"
#include "Installer-f/wizard/main_dvd_util.h"
#include "Installer-f/wizard/main_patch.h"
#include "Installer-f/wizard/main_patch_answers.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"

namespace {

constexpr UTL_text no_copy_known = "You do not appear to have Skyvane 9 installed.";

struct net_page_state {
  bool is_no_copy = false;  // net_start: what was handed over is no copy
  int scanned = 0;          // net_get_updates: files handed to the verification so far
  bool is_current = false;  // net_get_updates found nothing to do
  float totl_inst_rat = 0;  // net_run_patch: smoothed fraction of the whole job done
} state;

void forget_transfer() {
  grab_discard_partial();
  grab_reset();
}

// An update of any other folder would fill it with a whole copy. One of the marks is enough: a copy
// that has lost the others is what an update is there to heal.
bool looks_like_a_copy(const std::string& folder) {
  for (const char* const mark : {"Airfoils", "Instructions", "Output", "Resources"})
    if (dir_exists(folder + mark)) return true;
  return false;
}

// With one copy and nothing handed over, the choice alternates from visit to visit: the first leads
// to the update with the copy set, and who comes back is led to the list with none chosen. So is
// who comes back with a choice made on the list, which is dropped.
void choose_copy() {
  if (!cmd_line_path.empty()) {
    dest_dir_path = cmd_line_path;
  } else if (!dest_dir_path.empty()) {
    dest_dir_path.clear();
  } else if (all_skyroots.size() == 1) {
    dest_dir_path = all_skyroots[0];
  }
}

// The totals count in kilobytes, so small files weigh nothing there, and they leave out what is
// only to be deleted. Either may be all that an interrupted update has left to do.
bool copy_is_current() {
  return stg.todo_raw_kb == 0 && stg.todo_install_count == 0 && dropped_files_left() == 0;
}

int show_start(int first_time, wizard_screen& screen) {
  if (first_time) {
    locate_all_skyvanes();
    std::vector<wizard_step> steps = {{"Welcome", net_start}};
    if (cmd_line_path.empty() && all_skyroots.size() != 1) {
      steps.push_back({"Pick Destination", net_pick_dest});
    }
    steps.insert(steps.end(), {{"Search for Updates", net_get_updates},
                               {"Check Disk Space", net_check_disk},
                               {"Install Updates", net_run_patch},
                               {"Finish", net_done}});
    wizard_set_steps(steps);
    forget_transfer();
    unlock_copy();
    choose_copy();
    state.is_no_copy = !cmd_line_path.empty() && !looks_like_a_copy(cmd_line_path);
  }
  screen.title = tr("Skyvane 9 Web Updater");
  screen.prefs_enabled = 1;
  if (state.is_no_copy) {
    screen.text = tr("You selected the folder path:") + "\n" + cmd_line_path + "\n\n" +
                  tr("But it does not appear to be an installed copy of Skyvane 9.") + "\n\n" +
                  tr("Please be sure to select the folder that contains the Skyvane application.");
    return 0;
  }
  if (dest_dir_path.empty() && all_skyroots.empty()) {
    // The next page can find one that is on no list.
    screen.text = tr(no_copy_known);
    screen.next = net_pick_dest;
    return 0;
  }
  screen.text =
      tr("I will guide you through the process of updating your copy of Skyvane 9 to the latest "
         "version.");
  screen.next = dest_dir_path.empty() ? net_pick_dest : net_get_updates;
  return 0;
}

int show_pick_dest(int first_time, wizard_screen& screen) {
  if (first_time) {
    forget_transfer();
    unlock_copy();
  }
  screen.title = tr("Pick Destination");
  screen.prefs_enabled = 1;
  if (all_skyroots.empty()) {
    screen.text = tr(no_copy_known) + "\n\n";
  } else if (all_skyroots.size() > 1) {
    screen.text = tr("You have more than one copy of Skyvane 9 installed on this computer.  ");
  }
  screen.text += tr("Please select which copy of Skyvane 9 you would like to update.");
  UTIL_pick_install();
  screen.back = net_start;
  if (!dest_dir_path.empty()) screen.next = net_get_updates;
  return 0;
}

int show_get_updates(int first_time, wizard_screen& screen) {
  static constexpr check_flow flow = {
      "Search for Updates",
      net_pick_dest,
      "I am contacting the Skyvane web site to find an update server.",
      "I am downloading patch info from ",
      "I am processing information about the available patches.",
  };
  if (first_time) {
    state.scanned = 0;
    forget_answers();
  }
  if (!check_servers(flow, first_time, screen)) return 0;
  if (!copy_is_free(flow.back, screen)) return 0;

  screen.kill_proc = screen.leave_proc = checksum_directory_kill;
  float fraction = 0;
  if (checksum_directory(state.scanned, fraction)) {
    screen.next = net_check_disk;
    // The scenery that is installed is what the user wants; a sector left unselected would be
    // deleted.
    set_install_filter(1, 1);
    scenery_from_install();
    recalc_disk_sizes();
    state.is_current = copy_is_current();
    return 1;
  }
  screen.text = tr("I am scanning ") + dest_dir_path + tr(" to see what files need updating.");
  screen.progress_text = str_fill(tr("Scanning %d of %d files."),
                                  {std::to_string(state.scanned), std::to_string(sim_info.size())});
  screen.progress = fraction;
  return 0;
}

int show_check_disk(int first_time, wizard_screen& screen) {
  if (first_time) {
    forget_transfer();
    recalc_disk_sizes();  // what remains, when the user comes back from the transfer
  }
  screen.title = tr("Check Disk Space");
  screen.back = net_get_updates;
  screen.next = net_run_patch;
  screen.show_servers = 1;
  if (state.is_current) {
    screen.next = net_done;
    return 1;
  }
  if (UTIL_disk_space(tr("You have enough free disk space to update Skyvane 9"),
                      tr("You do not have enough free disk space to update Skyvane 9."))) {
    screen.text = tr("You are about to download ") + size_string(stg.todo_zip_kb) +
                  tr(" of compressed data to update to ") + install_name + ".";
    return 0;
  }
  screen.next = nullptr;
  screen.text =
      tr("There is a newer version of Skyvane 9 available, but you do not have enough free disk "
         "space to download and install the update.\n\nPlease free some space on your hard drive.");
  return 0;
}

int show_run_patch(int first_time, wizard_screen& screen) {
  static constexpr patch_flow flow = {net_check_disk, net_done, nullptr, &state.totl_inst_rat};
  return run_patch(flow, first_time, screen);
}

int show_done(int first_time, wizard_screen& screen) {
  if (first_time && !stg.extract_failed) copy_note_release("");
  screen.next = wizard_quit;
  screen.outcome = outcome_good;
  screen.title = tr("Finshed Web Update");
  if (state.is_current) {
    screen.text = tr("This copy of Skyvane (") + dest_dir_path + tr(") is already up to date.");
  } else if (stg.extract_failed) {
    screen.text = tr(
        "There were problems updating Skyvane.  You can try this updater again using a different "
        "server.");
    screen.outcome = outcome_bad;
    return 0;
  } else {
    screen.text = tr("I have finished updating ") + dest_dir_path + ".";
  }
  screen.button_names.push_back(tr("Fly Skyvane Now"));
  screen.button_pages.push_back(dvd_do_run_sim);
  return 0;
}

}  // namespace

const wizard_page net_start = {page_choice, show_start, {"--copy=FOLDER"}};
const wizard_page net_pick_dest = {page_choice, show_pick_dest, {"--copy=FOLDER", give_copy}};
const wizard_page net_get_updates = {page_job, show_get_updates};
const wizard_page net_check_disk = {page_choice, show_check_disk};
const wizard_page net_run_patch = {page_transfer, show_run_patch};
const wizard_page net_done = {page_last_update, show_done};
