// Main thread. Writes dest_dir_path, num_install_errors, want_file_disk, and a job's own flag and
// cursor.

#include "Installer-f/wizard/main_dvd_job.h"

#include <algorithm>

#include "Installer-f/engine/utils_dirs.h"
#include "Installer-f/engine/utils_disc.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_registry.h"
#include "Installer-f/engine/utils_registry_lock.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/engine/utils_verify.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_ask.h"
#include "Installer-f/wizard/main_busy.h"
#include "Installer-f/wizard/main_dvd_util.h"
#include "corekit/Platform/PLT_system.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"
#include "corekit/window/hl_init.h"

int num_install_errors = 0;

namespace {

// Null when the job has begun, else the page that the refusal leads to.
page_function begin_job(const dvd_job& job) {
  *job.cursor = 0;
  xer << "Starting install at " << static_cast<double>(PLT_microseconds()) / 1e6 << '\n';
  if (!choose_files()) return job.choice;
  if (make_dirs() != 0) return job.no_folders;
  if (lock_copy(dest_dir_path) == copy_lock_busy) return job.choice;  // it has just been made
  if (job.is_new_copy) register_new_skyvane();
  delete_files();
  *job.is_running = 1;
  num_install_errors = 0;
  UTIL_notice_lost_disk(0);
  return nullptr;
}

void show_work(const dvd_job& job, wizard_screen& screen) {
  const int count = static_cast<int>(sim_info.size());
  const int f = *job.cursor;
  screen.back = job.choice;
  screen.text = tr(job.doing) + dest_dir_path + ".";
  if (f >= count) {
    screen.progress = 1;
    screen.progress_text = tr(job.last_line);
    return;
  }
  const file_version_struct& file = sim_info[f].current();
  screen.progress = file.progress_start;
  screen.progress_text = tr(job.line) + std::string(file.path);
}

// A file failed. Returns the page's result.
int ask_after_error(const dvd_job& job, wizard_screen& screen) {
  ++num_install_errors;
  const std::string beside = tr(job.beside);
  if (UTIL_cancel_install(tr(job.error_header), tr(job.error_advice), tr(job.stop_label), beside,
                          tr("Continue"), beside) == 0) {
    // One question for a disc that was taken out, not one for each of its files.
    UTIL_notice_lost_disk(*job.cursor);
    return 0;
  }
  if (job.cancel_ends_job) {
    install_files_kill();
    remove_unused_folders();
    *job.is_running = 0;
  }
  screen.next = job.cancelled;
  return 1;
}

}  // namespace

int dvd_job_page(const dvd_job& job, wizard_screen& screen) {
  screen.title = tr(job.title);
  if (!*job.is_running) {
    if (!copy_is_free(job.choice, screen)) return 0;
    if (const page_function refused = begin_job(job)) {
      screen.next = refused;
      return 1;
    }
  }
  screen.kill_proc = install_files_kill;

  const int step = install_files(*job.cursor, current_disk);
  show_work(job, screen);
  switch (step) {
    case install_done:
      *job.is_running = 0;
      screen.next = job.done;
      return 1;
    case install_needs_disc:
      want_file_disk = *job.cursor;
      screen.next = job.check_disc;
      return 1;
    case install_failed:
      return ask_after_error(job, screen);
    default:
      return 0;
  }
}

int dvd_check_page(const dvd_job& job, wizard_screen& screen) {
  screen.title = tr(job.check_title);
  screen.kill_proc = install_files_kill;
  screen.next = UTIL_verify_disk() ? job.page : job.change_disc;
  return 1;
}

int dvd_change_page(const dvd_job& job, int first_time, wizard_screen& screen) {
  const int disk = UTIL_switch_disk(first_time);
  screen.title = tr(job.change_title);
  screen.text =
      str_fill(tr("Please insert DVD number %d and click continue."), {std::to_string(disk + 1)});
  screen.kill_proc = install_files_kill;
  screen.back = job.choice;
  screen.next = job.check_disc;
  return 0;
}

bool dvd_job_goes_on(const dvd_job& job, const dvd_leave_question& leave) {
  if (!*job.is_running) return false;
  const int answer = abort_alert(tr(leave.question), tr(leave.stop_label), tr(leave.stop_line),
                                 tr("Continue"), tr(leave.go_on_line));
  // The program being ended from outside is no wish to give the job up.
  if (answer == 0 || app_done) return true;
  install_files_kill();
  if (leave.deletes_copy) {
    recursive_delete_folder(dest_dir_path);
  } else {
    remove_unused_folders();
  }
  *job.is_running = 0;
  return false;
}

void dvd_pick_page(const dvd_pick& pick, int first_time, wizard_screen& screen) {
  // The place of a new copy that was never made is no choice among those that are there.
  if (first_time &&
      std::find(all_skyroots.begin(), all_skyroots.end(), dest_dir_path) == all_skyroots.end()) {
    dest_dir_path.clear();
  }
  screen.title = tr(pick.title);
  screen.next = pick.next;
  if (all_skyroots.size() == 1) dest_dir_path = all_skyroots[0];
  UTIL_pick_install();
  if (dest_dir_path.empty()) screen.next = nullptr;
  if (all_skyroots.size() > 1) {
    screen.text = tr("You have more than one copy of Skyvane 9 installed on this computer.  ");
  }
  screen.text += tr(pick.question);
}

int dvd_scan_page(const dvd_scan& scan, int& counter, wizard_screen& screen) {
  screen.title = tr(scan.title);
  if (!copy_is_free(scan.back, screen)) return 0;
  screen.text = tr("I am scanning ") + dest_dir_path + tr(scan.note);
  screen.kill_proc = screen.leave_proc = checksum_directory_kill;
  float fraction = 0;
  if (checksum_directory(counter, fraction)) {
    screen.next = scan.next;
    return 1;
  }
  screen.progress_text = str_fill(tr("Scanning %d of %d files."),
                                  {std::to_string(counter), std::to_string(sim_info.size())});
  screen.progress = fraction;
  screen.back = scan.back;
  return 0;
}

void dvd_offer_run(wizard_screen& screen) {
  screen.button_names.push_back(tr("Run Skyvane Now"));
  screen.button_pages.push_back(dvd_do_run_sim);
}
