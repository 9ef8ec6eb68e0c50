// The pages that the three disc flows share, each one body with the differences as data: picking
// and scanning a copy, the install itself, and the change of discs in the middle of it.
//
// A job is started by the first frame of its page, and lives until it is done or given up, also
// while the user is on another page. Between, it turns to the disc-check page whenever it needs
// another disc, and that to the disc-change page while the disc is not there.
#pragma once

#include "Installer-f/wizard/main_dvd_util.h"
#include "Installer-f/wizard/main_wizard.h"
#include "corekit/base/UTL_translate.h"

// --- the job -------------------------------------------------------------------------------------

struct dvd_job {
  int* is_running;
  int* cursor;  // of install_files

  page_function page;
  page_function choice;      // the page before: where Back leads, and a refusal by the user
  page_function no_folders;  // where a folder that could not be made leads
  page_function check_disc;
  page_function change_disc;
  page_function done;
  page_function cancelled;  // where giving up at an error leads
  bool cancel_ends_job;     // giving up there is final; otherwise `choice` asks once more

  bool is_new_copy;  // the copy is registered, so that it is known even if the install stops midway

  UTL_text title;
  UTL_text doing;  // before the copy's path
  UTL_text line;   // before a file's name
  UTL_text last_line;
  UTL_text error_header;
  UTL_text error_advice;
  UTL_text stop_label;  // the button that gives up
  UTL_text beside;      // the line beside both buttons
  UTL_text change_title;
  UTL_text check_title;
};

// One frame of the install page. Its result is the page's.
int dvd_job_page(const dvd_job& job, wizard_screen& screen);
// One frame of the page that looks for the wanted disc; it always leads on.
int dvd_check_page(const dvd_job& job, wizard_screen& screen);
// One frame of the page that asks for another disc.
int dvd_change_page(const dvd_job& job, int first_time, wizard_screen& screen);
// How a run without a user gets on from there.
inline constexpr page_answer dvd_await_disc = {.disc_is_in = UTIL_wanted_disk_is_in};

extern int num_install_errors;  // failures of the present job, or of the last

// --- leaving a job behind ------------------------------------------------------------------------

// The question that the page before a job puts when the user comes back to it.
struct dvd_leave_question {
  UTL_text question;
  UTL_text stop_label;
  UTL_text stop_line;
  UTL_text go_on_line;
  bool deletes_copy;  // giving up a new copy leaves nothing of it
};

// Asks, if the job is running. True: go on with it. False: it is not running (any more).
bool dvd_job_goes_on(const dvd_job& job, const dvd_leave_question& leave);

// --- picking and scanning a copy -----------------------------------------------------------------

struct dvd_pick {
  UTL_text title;
  page_function next;
  UTL_text question;
};
// Shows the installed copies; a sole one is chosen without asking. Leaves dest_dir_path.
void dvd_pick_page(const dvd_pick& pick, int first_time, wizard_screen& screen);

struct dvd_scan {
  UTL_text title;
  page_function back;
  page_function next;
  UTL_text note;  // behind the copy's path
};
// One frame of the scan of dest_dir_path; its result is the page's. `counter` is 0 at the start.
int dvd_scan_page(const dvd_scan& scan, int& counter, wizard_screen& screen);

// --- the last page -------------------------------------------------------------------------------

// The button of a job that went well.
void dvd_offer_run(wizard_screen& screen);
