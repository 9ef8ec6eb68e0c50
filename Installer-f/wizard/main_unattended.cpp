// The run without a display: the pages are those of the window, and so is the order of a frame;
// only the hand on the mouse is replaced. Each page's record says whether it waits for the user or
// works by itself, and which answers of the command line belong to it.
//
// Main thread. Writes stand_in, and at the end app_done by way of a press on Quit.

#include "Installer-f/wizard/main_unattended.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <vector>

#include "Installer-f/engine/utils_disc.h"
#include "Installer-f/engine/utils_grab.h"
#include "Installer-f/engine/utils_remove.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/engine/utils_trouble.h"
#include "Installer-f/engine/utils_verify.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_remove.h"
#include "Installer-f/wizard/main_unattended_answers.h"
#include "Installer-f/wizard/main_unattended_check.h"
#include "Installer-f/wizard/main_unattended_end.h"
#include "Installer-f/wizard/main_unattended_options.h"
#include "Installer-f/wizard/main_unattended_progress.h"
#include "Installer-f/wizard/main_unattended_say.h"
#include "corekit/base/UTL_cmdline.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_app.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/xtim.h"
#include "corekit/files/io_utils.h"
#include "corekit/net/http.h"
#include "corekit/net/http_env.h"
#include "corekit/window/hl_init.h"
#include "corekit/window/hl_init_log.h"

namespace {

// --- the end ------------------------------------------------------------------------------------

constexpr int alerts_borne = 3;  // on one page, before the run counts as failed

volatile std::sig_atomic_t interrupted = 0;

void on_signal(int) {
  interrupted = 1;
}

struct run_state {
  int status = unattended_failed;  // a run that ends in any unforeseen way has failed
  bool over = false;
  std::vector<page_function> answered;  // choice pages that Next was pressed on
  double last_progress = 0;             // frame clock of the last progress
  double high_mark = -1;                // measure of what has been reached,
  double before = -1;                   //   of it a frame ago,
  double most = -1;                     //   and the most ever
  int rewinds = 0;                      // since then, transfers that have broken off
  uint64_t worked_on = 0;               // bytes that this machine's disks have brought
  page_function shown;                  // page that was announced,
  std::string title;                    //   and the title that it had
  int patience = 0;                     // frames that a choice page has been given
  bool is_finding_out = false;          // it has shown how far it is
  double looked_at = 0;                 // frame clock of the last look for a disc,
  bool disc_is_in = false;              //   and what was found
  std::string told;                     // what was last said of a disc that is not there
  int alerts_before = 0;                // alerts shown when the present page was entered
  end_figures figures;
} run;

const char* page_kind_word(page_kind kind) {
  switch (kind) {
    case page_choice:
      return "choice";
    case page_disc:
      return "disc";
    case page_job:
      return "job";
    case page_install:
      return "install";
    case page_transfer:
      return "transfer";
    case page_removal:
      return "removal";
    default:
      return "last";
  }
}

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

// A page's text under its title; nothing of a page that says nothing.
std::string titled(const wizard_screen& screen, const std::string& text) {
  if (text.empty()) return "";
  return screen.title + (screen.title.ends_with('.') ? " " : ": ") + text;
}

wizard_press refuse(page_function page, const wizard_screen& screen) {
  const std::string text = titled(screen, whole_text(screen));
  if (!text.empty()) complain(text);
  const char* const wants = page->answer.wants;
  if (*wants) complain(str_fill(tr("This page wants %s."), {wants}));
  return finish(unattended_refused);
}

wizard_press give_up(page_function page, const wizard_screen& screen) {
  end_tell_given_up(page, screen,
                    interrupted
                        ? tr("Given up: interrupted.")
                        : str_fill(tr("Given up: no progress for %d seconds."),
                                   {std::to_string(static_cast<int>(answers.give_up_after))}));
  end_tell_missing();
  return finish(unattended_given_up);
}

// A measure of the run that only grows by real progress: a mirror that stalls in the same place
// over and over does not raise it.
double reached(const wizard_screen& screen) {
  const double transfer = next.done_zip_kb + next.in_flight_kb + next.next_file;
  const double manifest = http.slot_active(1) ? static_cast<double>(http.slot_received(1)) : 0;
  const double page = screen.progress > 0 ? static_cast<double>(screen.progress) : 0;
  return transfer + manifest + page + stg.directory_state + stg.server_count;
}

bool stalled(int first_time, const wizard_screen& screen) {
  // A large file may break off near its end, and be fetched anew by a slow line; not for ever.
  constexpr int most_rewinds = 3;
  const double now = reached(screen);
  const uint64_t worked_on = checksum_bytes() + install_bytes();
  if (first_time) run.high_mark = run.before = run.most = -1;
  if (now > run.most) run.rewinds = 0;
  if (now < run.before && run.rewinds++ < most_rewinds) run.high_mark = now;
  if (first_time || now > run.high_mark || worked_on > run.worked_on) {
    run.high_mark = std::max(run.high_mark, now);
    run.last_progress = xtim.now_sec;
  }
  run.before = now;
  run.most = std::max(run.most, now);
  run.worked_on = worked_on;
  return xtim.now_sec - run.last_progress > answers.give_up_after;
}

// What to press to get on; false while nothing leads there.
bool find_way(page_function page, const wizard_screen& screen, wizard_press& press) {
  const page_function target = page->answer.way ? page->answer.way() : screen.next;
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
bool alerts_pile_up(page_function page) {
  return page->kind == page_job && alerts_shown - run.alerts_before >= alerts_borne;
}

bool was_answered(page_function page) {
  return std::count(run.answered.begin(), run.answered.end(), page) != 0;
}

// Puts the answers into the page's choice; false when they are refused, after saying why.
bool give_answer(page_function page) {
  const std::string wrong = page->answer.give ? page->answer.give() : "";
  if (!wrong.empty()) complain(wrong);
  return wrong.empty();
}

// Whether what comes next would change the copy.
bool leads_to_work(page_function page, const wizard_screen& screen) {
  const page_function target = page->answer.way ? page->answer.way() : screen.next;
  return target->kind == page_transfer || target->kind == page_install ||
         target->kind == page_removal;
}

wizard_press finish_check(page_function page, const wizard_screen& screen) {
  if (page == remove_confirm) {
    say(screen.text);
    return finish(files_to_remove() > 0 ? unattended_would : unattended_done);
  }
  return finish(check_tell(run.figures) ? unattended_would : unattended_done);
}

// A page that waits for the user: give the answers once, then press Next as soon as it opens.
wizard_press press_on_choice(page_function page, int first_time, const wizard_screen& screen) {
  // Coming back to a page that was left by Next means that what followed it was refused there.
  if (first_time && was_answered(page)) {
    complain(titled(screen, tr("the wizard came back to this page.")));
    return refuse(page, screen);
  }
  if (first_time) {
    run.patience = 0;
    run.is_finding_out = false;
    if (page->answer.give) return give_answer(page) ? wizard_press() : refuse(page, screen);
  }
  wizard_press press;
  if (find_way(page, screen, press)) {
    if (answers.check && leads_to_work(page, screen)) return finish_check(page, screen);
    if (run.is_finding_out) say(on_one_page(screen.text));
    run.answered.push_back(page);
    return press;
  }
  // A page that finds something out first shows how far it is, and then what it found.
  run.is_finding_out |= screen.progress >= 0;
  if (screen.progress >= 0) {
    progress_show(page->kind, screen);
    return stalled(first_time, screen) ? give_up(page, screen) : wizard_press();
  }
  // One frame for the page to take the answers in.
  if (++run.patience < 2) return {};
  return refuse(page, screen);
}

// Whether the disc that the page asks for is in.
bool disc_is_in(page_function page, int first_time) {
  constexpr float look_again_after = 0.25f;  // seconds; each look goes to every drive
  if (first_time || xtim.now_sec - run.looked_at >= look_again_after) {
    run.looked_at = xtim.now_sec;
    run.disc_is_in = page->answer.disc_is_in();
  }
  return run.disc_is_in;
}

// A page that asks for a disc: say which, and wait until it is mounted.
wizard_press press_on_disc(page_function page, int first_time, const wizard_screen& screen) {
  if (first_time) {
    run.patience = 0;
    if (!give_answer(page)) return refuse(page, screen);
  }
  if (!disc_is_in(page, first_time)) {
    if (run.told != screen.text) say(whole_text(screen));
    run.told = screen.text;
    return stalled(first_time, screen) ? give_up(page, screen) : wizard_press();
  }
  run.told.clear();
  // The page sees what the answer has changed in the next frame.
  return first_time ? wizard_press() : press_on_choice(page, 0, screen);
}

wizard_press finish_on_last_page(page_function page, const wizard_screen& screen) {
  const bool good =
      page->kind == page_last_removal ? removal.failed == 0 : !screen.button_names.empty();
  const std::string text = titled(screen, whole_text(screen));
  if (page->kind == page_last_update) {
    end_say_summary(run.figures);
  } else if (good) {
    end_say_modified(run.figures);
  }
  if (good) {
    say(text);
  } else {
    complain(text);
    end_tell_failure();
  }
  return finish(good ? unattended_done : unattended_failed);
}

void show_page(page_function page, const wizard_screen& screen) {
  if (run.shown == page) return;
  run.shown = page;
  progress_begin();
  if (say_is_json()) {
    json_line line("kind", page_kind_word(page->kind));
    say_event("page", line.add("title", screen.title));
  } else if (run.title != screen.title) {  // pages of one task may share it
    say(screen.title);
  }
  run.title = screen.title;
}

wizard_press press_for_user(page_function page, int first_time, const wizard_screen& screen,
                            int result) {
  if (run.over || app_done) return {};
  if (interrupted) return give_up(page, screen);
  if (result && screen.next) return {};
  if (screen.next == wizard_quit) return finish_on_last_page(page, screen);

  show_page(page, screen);
  if (screen.copy_is_busy) {
    complain(titled(screen, whole_text(screen)));
    return finish(unattended_busy);
  }
  if (page->kind == page_choice) return press_on_choice(page, first_time, screen);
  if (page->kind == page_disc) return press_on_disc(page, first_time, screen);

  progress_show(page->kind, screen);
  if (first_time) run.alerts_before = alerts_shown;
  const bool is_hopeless = page->kind == page_job && end_is_disk_trouble();
  if (stg.directory_state == manifest_refused || alerts_pile_up(page) || is_hopeless) {
    complain(titled(screen, whole_text(screen)));
    end_tell_failure();
    return finish(unattended_failed);
  }
  if (stalled(first_time, screen)) return give_up(page, screen);
  return {};
}

int standing_modified(const std::string& location, int gone) {
  const bool keep = answers.on_modified == answer_keep;
  const bool cancel = answers.on_modified == answer_cancel_install;
  json_line line("path", location);
  say_event("modified", line.add("action", keep     ? "kept"
                                           : cancel ? "cancelled"
                                           : gone   ? "deleted"
                                                    : "replaced"));
  const UTL_text told = keep     ? "Kept, because you have modified it: "
                        : cancel ? "Cancelled, because you have modified it: "
                        : gone   ? "Deleted, though you have modified it: "
                                 : "Overwritten, though you have modified it: ";
  complain(tr(told) + location);
  (keep ? run.figures.kept : run.figures.overwritten) += cancel ? 0 : 1;
  return answers.on_modified;
}

// To go on after an error, and to go on with a job that was left.
int standing_abort(const std::string& question) {
  complain(on_one_page(question) + "\n" + tr("Going on."));
  return 0;
}

constexpr wizard_stand_in nobody_there = {press_for_user, standing_modified, standing_abort};

}  // namespace

namespace {

int begin(int argc, const char* const* argv) {
  const std::string wrong = unattended_wrong_argument(argc, argv);
  if (!wrong.empty()) {
    complain(wrong + "\n" + tr("Nothing was done. \"--help\" explains every option."));
    return unattended_refused;
  }
  if (!log_refused().empty()) {
    complain(str_fill(tr("The log cannot be written: %s."), {log_refused()}));
    return unattended_refused;
  }
  return unattended_read_answers();
}

// For whoever reads the events: an alert is one as well, and so is the end that comes with it.
void tell_alert(const std::string& message, const std::string& explanation, bool ends) {
  complain(on_one_page(message + " " + explanation));
  if (ends) end_report(unattended_failed, run.figures);
}

// What this machine or user lacks, and the run can do without.
void tell_wants() {
  std::string folder;
  if (get_OS_abs_path(os_dir_prefs, folder) != 0 || access(folder.c_str(), W_OK) != 0)
    say(tr("No settings and no list of copies are kept: no place for them can be written."));
  const UTL_text wrong = http_env_proxy().wrong;
  if (*wrong && http._proxy_host.empty())
    complain(str_fill(tr("http_proxy of the environment is not used: %s."), {tr(wrong)}));
}

}  // namespace

int unattended_begin(int argc, const char* const* argv) {
  stand_in = &nobody_there;
  passes_over_missing = true;
  say_begin();
  if (cmdline.has_option("--json")) report_plainly_by(tell_alert);
  json_line line("program", APP.title);
  say_event("start", line.add("log", log_path()));
  if (const int refused = begin(argc, argv)) {
    end_report(refused, run.figures);
    return refused;
  }
  if (cmdline.has_option("--list")) return 0;  // nothing between the copies and who reads them
  say(log_path().empty() ? tr("There is no log: no place for it can be written.")
                         : str_fill(tr("The log is %s"), {log_path()}));
  tell_wants();
  // One that is ignored at the start, as by nohup, stays so.
  for (const int signal_number : {SIGINT, SIGTERM, SIGHUP})
    if (std::signal(signal_number, on_signal) == SIG_IGN) std::signal(signal_number, SIG_IGN);
  return 0;
}

int unattended_end() {
  say_end_live();
  end_report(run.status, run.figures);
  return run.status;
}
