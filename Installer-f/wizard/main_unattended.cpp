// The run without a display: the pages are those of the window, and so is the order of a frame;
// only the hand on the mouse is replaced. A table says of each page whether it waits for the user
// or works by itself, and which answers of the command line belong to it.
//
// Main thread. Writes unattended_on, the page's choices, and at the end app_done.

#include "Installer-f/wizard/main_unattended.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <set>

#include "Installer-f/engine/utils_grab.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/engine/utils_servers.h"
#include "Installer-f/engine/utils_sizes.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_demo.h"
#include "Installer-f/wizard/main_dvd.h"
#include "Installer-f/wizard/main_dvd_repair.h"
#include "Installer-f/wizard/main_dvd_scenery.h"
#include "Installer-f/wizard/main_dvd_util.h"
#include "Installer-f/wizard/main_net.h"
#include "Installer-f/wizard/main_patch.h"
#include "Installer-f/wizard/main_unattended_answers.h"
#include "Installer-f/wizard/main_unattended_say.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/xtim.h"
#include "corekit/net/http.h"
#include "corekit/window/hl_alert.h"
#include "corekit/window/hl_init.h"

int unattended_on = 0;

namespace {

// --- the pages ----------------------------------------------------------------------------------

// page_disc waits for a disc first, and is then a choice.
enum page_kind { page_choice, page_disc, page_job, page_install, page_transfer };

struct page_row {
  page_function page;
  page_kind kind;
  bool (*answer)();           // null for none
  const char* wants;          // the option that a page which will not go on is waiting for
  page_function (*target)();  // where to go from a page that leads to several; null: to its Next
};

constexpr page_row page_table[] = {
    {demo_start, page_choice, nullptr, "", nullptr},
    {demo_eula, page_choice, answer_eula, "--accept_eula", nullptr},
    {demo_get_updates, page_job, nullptr, "", nullptr},
    {demo_pick_dest, page_choice, answer_demo_dest, "--dest=FOLDER and --name=NAME", nullptr},
    {demo_run_patch, page_transfer, nullptr, "", nullptr},
    {net_start, page_choice, nullptr, "--copy=FOLDER", nullptr},
    {net_pick_dest, page_choice, answer_copy, "--copy=FOLDER", nullptr},
    {net_get_updates, page_job, nullptr, "", nullptr},
    {net_check_disk, page_choice, nullptr, "", nullptr},
    {net_run_patch, page_transfer, nullptr, "", nullptr},
    {dvd_start, page_disc, answer_dvd_start, "--do=install, or --copy=FOLDER for the others",
     wanted_flow},
    {dvd_pick_install, page_choice, answer_dvd_dest, "--dest=FOLDER and --name=NAME", nullptr},
    {dvd_eula_install, page_choice, answer_eula, "--accept_eula", nullptr},
    {dvd_scenery_install, page_choice, answer_sectors, "--sectors=LIST", nullptr},
    {dvd_run_install, page_install, nullptr, "", nullptr},
    {dvd_switch_disk_install, page_disc, nullptr, "", nullptr},
    {dvd_pick_scenery, page_choice, answer_copy, "--copy=FOLDER", nullptr},
    {dvd_scan_scenery, page_job, nullptr, "", nullptr},
    {dvd_edit_scenery, page_choice, answer_sectors, "--sectors=LIST", nullptr},
    {dvd_install_scenery, page_install, nullptr, "", nullptr},
    {dvd_switch_disk_scenery, page_disc, nullptr, "", nullptr},
    {dvd_pick_repair, page_choice, answer_copy, "--copy=FOLDER", nullptr},
    {dvd_scan_repair, page_job, nullptr, "", nullptr},
    {dvd_confirm_repair, page_choice, nullptr, "", nullptr},
    {dvd_install_repair, page_install, nullptr, "", nullptr},
    {dvd_switch_disk_repair, page_disc, nullptr, "", nullptr},
};

// A page that is not in the table is taken for one that works, and is given the time limit.
page_row row_of(page_function page) {
  for (const page_row& row : page_table) {
    if (row.page == page) return row;
  }
  return {page, page_job, nullptr, "", nullptr};
}

// --- what is printed ----------------------------------------------------------------------------

std::string megabytes(float kb) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f MB", static_cast<double>(kb) / 1000);
  return text;
}

std::string clock_time(float seconds) {
  const long whole = std::min(static_cast<long>(seconds), 359999L);
  char text[32];
  std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60, whole % 60);
  return text;
}

std::string transfer_line(float fraction) {
  const patch_figures figures = patch_progress();
  char percent[16];
  std::snprintf(percent, sizeof percent, "%3d %%", static_cast<int>(fraction * 100));
  std::string line = percent;
  line += "  " + megabytes(figures.done_kb) + " of " + megabytes(stg.todo_zip_kb);
  line += "  " + std::to_string(static_cast<long>(figures.kb_per_second)) + " kB/s";
  line += "  " + clock_time(figures.seconds_left) + " left";
  return line;
}

std::string progress_line(const page_row& row, float fraction) {
  if (row.kind == page_transfer) return transfer_line(fraction);
  char percent[16];
  std::snprintf(percent, sizeof percent, "%3d %%", static_cast<int>(fraction * 100));
  if (row.kind != page_install) return percent;
  return std::string(percent) + "  " + megabytes(fraction * stg.todo_raw_kb) + " of " +
         megabytes(stg.todo_raw_kb);
}

int last_step = -1;  // last 5 % step printed of the present page

// One line that is kept up to date on a terminal; elsewhere a line every 5 %.
void show_progress(const page_row& row, const wizard_screen& screen) {
  float fraction = screen.progress;
  if (row.kind == page_transfer) {
    // The page's own figure is smoothed for the eye; a log wants the plain one.
    fraction = stg.todo_raw_kb > 0 ? std::min(next.done_raw_kb / stg.todo_raw_kb, 1.0f) : 0.0f;
  }
  if (fraction < 0) return;
  if (say_has_terminal()) {
    say_live(progress_line(row, fraction));
    return;
  }
  const int step = static_cast<int>(fraction * 20);
  if (step == last_step) return;
  last_step = step;
  if (row.kind == page_transfer || row.kind == page_install) say(progress_line(row, fraction));
}

// --- the end ------------------------------------------------------------------------------------

constexpr int alerts_borne = 3;  // on one page, before the run counts as failed

volatile std::sig_atomic_t interrupted = 0;

void on_signal(int) {
  interrupted = 1;
}

struct run_state {
  int status = unattended_failed;  // a run that ends in any unforeseen way has failed
  bool over = false;
  std::set<page_function> answered;  // choice pages that Next was pressed on
  float last_progress = 0;           // frame clock of the last progress
  double high_mark = -1;             // measure of what has been reached
  page_function shown = nullptr;     // page whose title was printed
  int patience = 0;                  // frames that a choice page has been given
  float looked_at = 0;               // frame clock of the last look for a disc
  std::string told;                  // what was last said of a disc that is not there
  int alerts_before = 0;             // alerts shown when the present page was entered
  int kept = 0, overwritten = 0;     // modified files, by the standing answer
} run;

wizard_press finish(int status) {
  run.status = status;
  run.over = true;
  wizard_press press;
  press.quit = true;
  return press;
}

std::string whole_text(const wizard_screen& screen) {
  std::string text = screen.text;
  for (const std::string& note : wizard_notes)
    text += "\n" + note;
  return on_one_page(text);
}

wizard_press refuse(const page_row& row, const wizard_screen& screen) {
  complain(screen.title + ": " + whole_text(screen));
  if (*row.wants) complain(std::string("This page wants ") + row.wants + ".");
  return finish(unattended_refused);
}

// The file that the run is waiting for, with its server; empty when it waits for none.
std::string file_in_the_way(const page_row& row) {
  const std::string mirror = stg.server_count > 0 ? server_name[stg.server_index] : "";
  if (row.kind == page_disc || row.kind == page_install) return "";
  if (row.kind == page_transfer) return crnt_file_path.empty() ? "" : mirror + crnt_file_path;
  if (stg.server_count == -1) return std::string(product_web_host) + "/serverlist9.txt";
  if (stg.directory_state == manifest_none) {
    return mirror + server_path[stg.server_index] + "directory.txt.zip";
  }
  return "";
}

wizard_press give_up(const page_row& row, const wizard_screen& screen, const char* why) {
  std::string line = std::string("Given up: ") + why + ".";
  const std::string file = file_in_the_way(row);
  line +=
      file.empty() ? " " + screen.title + ": " + whole_text(screen) : " The file was " + file + ".";
  if (row.kind == page_install) line += " " + screen.progress_text;
  complain(line);
  return finish(unattended_given_up);
}

// A measure of the run that only grows by real progress: a mirror that stalls in the same place
// over and over does not raise it.
double reached(const wizard_screen& screen) {
  const double transfer = static_cast<double>(next.done_zip_kb + next.in_flight_kb) +
                          static_cast<double>(next.next_file);
  const double manifest = http.slot_active(1) ? static_cast<double>(http.slot_received(1)) : 0;
  const double page = screen.progress > 0 ? static_cast<double>(screen.progress) : 0;
  return transfer + manifest + page + stg.directory_state + stg.server_count;
}

bool stalled(int first_time, const wizard_screen& screen) {
  const double now = reached(screen);
  if (first_time) run.high_mark = -1;
  if (first_time || now > run.high_mark) {
    run.high_mark = now;
    run.last_progress = xtim.now_sec;
  }
  return xtim.now_sec - run.last_progress > answers.give_up_after;
}

// What to press to get on; false while nothing leads there.
bool find_way(const page_row& row, const wizard_screen& screen, wizard_press& press) {
  const page_function target = row.target ? row.target() : screen.next;
  if (!target) return false;
  press.next = screen.next == target;
  if (press.next) return true;
  const auto found = std::find(screen.button_pages.begin(), screen.button_pages.end(), target);
  if (found == screen.button_pages.end()) return false;
  press.extra = static_cast<int>(found - screen.button_pages.begin());
  return true;
}

// A page that tries again for ever after an alert leaves it to its user to stop; here nobody reads
// the same alert over and over.
bool alerts_pile_up(const page_row& row) {
  return row.kind == page_job && alerts_shown - run.alerts_before >= alerts_borne;
}

// A page that waits for the user: give the answers once, then press Next as soon as it opens.
wizard_press press_on_choice(const page_row& row, int first_time, const wizard_screen& screen) {
  // Coming back to a page that was left by Next means that what followed it was refused there.
  if (first_time && run.answered.count(row.page)) {
    complain(screen.title + ": the wizard came back to this page.");
    return refuse(row, screen);
  }
  if (first_time) {
    run.patience = 0;
    if (row.answer) return row.answer() ? wizard_press() : refuse(row, screen);
  }
  wizard_press press;
  if (find_way(row, screen, press)) {
    run.answered.insert(row.page);
    return press;
  }
  // One frame for the page to take the answers in, and one because some pages alternate.
  if (++run.patience < 3) return {};
  return refuse(row, screen);
}

// Whether the disc that the page asks for is in: the first one at the start, later the wanted one.
bool disc_is_in(const page_row& row) {
  constexpr float look_again_after = 0.25f;  // seconds; each look goes to every drive
  if (row.page == dvd_start) return !dvd_path.empty();
  if (xtim.now_sec - run.looked_at < look_again_after) return false;
  run.looked_at = xtim.now_sec;
  return UTIL_wanted_disk_is_in();
}

// A page that asks for a disc: say which, and wait until it is mounted.
wizard_press press_on_disc(const page_row& row, int first_time, const wizard_screen& screen) {
  if (first_time) {
    run.patience = 0;
    if (row.answer && !row.answer()) return refuse(row, screen);
  }
  if (!disc_is_in(row)) {
    if (run.told != screen.text) say(whole_text(screen));
    run.told = screen.text;
    return stalled(first_time, screen) ? give_up(row, screen, "no progress") : wizard_press();
  }
  run.told.clear();
  // The menu sees what the answer has changed in the next frame.
  if (row.page == dvd_start) return first_time ? wizard_press() : press_on_choice(row, 0, screen);
  wizard_press press;
  press.next = true;
  return press;
}

// What an update did, a figure a line, for a reader and for a script.
void say_summary() {
  long checked = 0;
  for (const file_history_struct& history : sim_info)
    checked += history.current().sig_have.empty() ? 0 : 1;
  say(std::to_string(checked) + " files checked");
  say(std::to_string(grab_totals.fetched) + " files fetched");
  say(std::to_string(grab_totals.deleted) + " files deleted");
  say(std::to_string(run.kept) + " files kept, because you have modified them");
  say(std::to_string(run.overwritten) + " files replaced or deleted, though you had modified them");
  say(std::to_string(http.total_received()) + " bytes moved");
  say(str_format("%.1f seconds", static_cast<double>(xtim.now_sec)));
}

wizard_press finish_on_last_page(page_function page, const wizard_screen& screen) {
  const bool good = !screen.button_names.empty();
  const std::string text = screen.title + ": " + whole_text(screen);
  if (page == net_done) say_summary();
  if (good) {
    if (page != net_done && run.kept) {
      say(std::to_string(run.kept) + " files that you have modified were kept.");
    }
    if (page != net_done && run.overwritten) {
      say(std::to_string(run.overwritten) + " files that you had modified were replaced.");
    }
    say(text);
  } else {
    complain(text);
  }
  return finish(good ? unattended_done : unattended_failed);
}

void show_page(page_function page, const wizard_screen& screen) {
  if (run.shown == page) return;
  run.shown = page;
  last_step = -1;
  say(screen.title);
}

}  // namespace

int unattended_begin() {
  say_begin();
  if (const int refused = unattended_read_answers()) return refused;
  for (const int signal_number : {SIGINT, SIGTERM, SIGHUP})
    std::signal(signal_number, on_signal);
  return 0;
}

wizard_press unattended_press(page_function page, int first_time, const wizard_screen& screen,
                              int result) {
  if (run.over || app_done) return {};
  const page_row row = row_of(page);
  if (interrupted) return give_up(row, screen, "interrupted");
  if (result && screen.next) return {};
  if (screen.next == wizard_quit) return finish_on_last_page(page, screen);

  show_page(page, screen);
  if (row.kind == page_choice) return press_on_choice(row, first_time, screen);
  if (row.kind == page_disc) return press_on_disc(row, first_time, screen);

  show_progress(row, screen);
  if (first_time) run.alerts_before = alerts_shown;
  if (stg.directory_state == manifest_refused || alerts_pile_up(row)) {
    complain(screen.title + ": " + whole_text(screen));
    return finish(unattended_failed);
  }
  if (stalled(first_time, screen)) return give_up(row, screen, "no progress");
  return {};
}

int unattended_end() {
  say_end_live();
  return run.status;
}

int unattended_modified(const std::string& location, int gone) {
  const bool keep = answers.on_modified == answer_keep;
  const bool cancel = answers.on_modified == answer_cancel_install;
  complain(std::string(keep     ? "Kept, because you have modified it: "
                       : cancel ? "Cancelled, because you have modified it: "
                       : gone   ? "Deleted, though you have modified it: "
                                : "Overwritten, though you have modified it: ") +
           location);
  (keep ? run.kept : run.overwritten) += cancel ? 0 : 1;
  return answers.on_modified;
}

int unattended_abort(const std::string& question) {
  complain(on_one_page(question) + "\nGoing on.");
  return 0;
}
